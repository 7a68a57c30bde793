#pragma once

#include <bit>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

// Hand-made WAV files, sound or broken, and the parts of written ones.
namespace quillmere::testing {

inline std::string littleEndian(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i)
        text.push_back(static_cast<char>(value >> (8 * i)));
    return text;
}

inline std::uint64_t littleEndianAt(const std::string& bytes, std::size_t at, int count) {
    std::uint64_t value = 0;
    for (int i = count - 1; i >= 0; --i)
        value = value << 8 | static_cast<unsigned char>(bytes.at(at + static_cast<std::size_t>(i)));
    return value;
}

struct WAVHeader {
    std::uint32_t tag = 1;  // 1 integer PCM, 3 float
    std::uint32_t channels = 1;
    std::uint32_t rate = 44100;
    std::uint32_t bits = 16;
    std::optional<std::uint32_t> dataSize = {};  // what the header claims; absent: the truth
    std::optional<std::uint32_t> riffSize = {};
};

inline std::string wavBytes(const WAVHeader& header, const std::string& data) {
    const std::uint32_t frameBytes = header.channels * header.bits / 8;
    const auto dataSize = header.dataSize.value_or(static_cast<std::uint32_t>(data.size()));
    return "RIFF" + littleEndian(header.riffSize.value_or(36 + dataSize), 4) + "WAVEfmt " +
           littleEndian(16, 4) + littleEndian(header.tag, 2) + littleEndian(header.channels, 2) +
           littleEndian(header.rate, 4) + littleEndian(std::uint64_t{header.rate} * frameBytes, 4) +
           littleEndian(frameBytes, 2) + littleEndian(header.bits, 2) + "data" + littleEndian(dataSize, 4) +
           data;
}

inline std::string floatBytes(std::span<const float> samples) {
    std::string bytes;
    for (const float sample : samples)
        bytes += littleEndian(std::bit_cast<std::uint32_t>(sample), 4);
    return bytes;
}

inline std::string int16Bytes(std::span<const int> samples) {
    std::string bytes;
    for (const int sample : samples)
        bytes += littleEndian(static_cast<std::uint32_t>(sample), 2);
    return bytes;
}

// A float WAV with one array per channel, all of one length.
inline std::string floatWAV(const std::vector<std::vector<float>>& channels, std::uint32_t rate = 44100) {
    std::vector<float> frames;
    for (std::size_t i = 0; i < channels.at(0).size(); ++i) {
        for (const std::vector<float>& channel : channels)
            frames.push_back(channel.at(i));
    }
    const auto count = static_cast<std::uint32_t>(channels.size());
    return wavBytes({.tag = 3, .channels = count, .rate = rate, .bits = 32}, floatBytes(frames));
}

}  // namespace quillmere::testing
