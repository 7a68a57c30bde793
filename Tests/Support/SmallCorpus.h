#pragma once

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace quillmere::testing {

// Writes a mono 16-bit WAV file, independently of the code under test.
inline void writeWAV(const std::filesystem::path& file, const std::vector<float>& samples, int sampleRate) {
    std::string bytes;
    const auto append = [&bytes](std::uint32_t value, int count) {
        for (int i = 0; i < count; ++i)
            bytes += static_cast<char>((value >> (8 * i)) & 0xFFU);
    };
    const auto dataSize = static_cast<std::uint32_t>(samples.size() * 2);
    const auto rate = static_cast<std::uint32_t>(sampleRate);
    bytes += "RIFF";
    append(36 + dataSize, 4);
    bytes += "WAVEfmt ";
    append(16, 4);
    append(1, 2);  // PCM
    append(1, 2);  // channels
    append(rate, 4);
    append(rate * 2, 4);
    append(2, 2);
    append(16, 2);
    bytes += "data";
    append(dataSize, 4);
    for (const float sample : samples)
        append(static_cast<std::uint32_t>(static_cast<std::int32_t>(std::lrint(sample * 32767))), 2);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream stream(file, std::ios::binary);
    stream << bytes;
    if (!stream.flush()) throw std::runtime_error("cannot write " + file.string());
}

// A decaying sine, like a struck bar.
inline std::vector<float> struckTone(double frequency, double seconds, int sampleRate) {
    std::vector<float> samples(static_cast<std::size_t>(seconds * sampleRate));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double t = static_cast<double>(i) / sampleRate;
        samples[i] = static_cast<float>(0.8 * std::exp(-8 * t) * std::sin(6.283185307179586 * frequency * t));
    }
    return samples;
}

// Three short tones, a corpus that trains in a moment.
inline void writeSmallCorpus(const std::filesystem::path& folder) {
    constexpr int sampleRate = 22050;
    writeWAV(folder / "one.wav", struckTone(220, 0.20, sampleRate), sampleRate);
    writeWAV(folder / "two.wav", struckTone(330, 0.25, sampleRate), sampleRate);
    writeWAV(folder / "three.wav", struckTone(470, 0.30, sampleRate), sampleRate);
}

}  // namespace quillmere::testing
