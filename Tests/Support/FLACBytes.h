#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Hand-made FLAC files whose samples are all equal: eleven bytes stand for 65535 frames. RFC 9639.
namespace quillmere::testing {

inline std::string bigEndianBytes(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = bytes - 1; i >= 0; --i)
        text.push_back(static_cast<char>(value >> (8 * i)));
    return text;
}

// The remainder of the bytes by a polynomial of so many bits, without reflection.
inline std::uint32_t cyclicCheck(std::string_view bytes, std::uint32_t polynomial, int bits) {
    const std::uint32_t mask = (1U << bits) - 1;
    std::uint32_t remainder = 0;
    for (const char byte : bytes) {
        remainder ^= static_cast<std::uint32_t>(static_cast<unsigned char>(byte)) << (bits - 8);
        for (int i = 0; i < 8; ++i)
            remainder = ((remainder << 1) ^ ((remainder >> (bits - 1) & 1) != 0 ? polynomial : 0)) & mask;
    }
    return remainder;
}

inline std::string flacNumber(std::uint32_t number) {
    if (number < 0x80) return {static_cast<char>(number)};
    if (number < 0x800)
        return {static_cast<char>(0xC0 | number >> 6), static_cast<char>(0x80 | (number & 0x3F))};
    return {static_cast<char>(0xE0 | number >> 12), static_cast<char>(0x80 | (number >> 6 & 0x3F)),
            static_cast<char>(0x80 | (number & 0x3F))};
}

inline std::string constantFLACFrame(std::uint32_t number, std::uint32_t blockFrames, std::int16_t sample) {
    std::string frame("\xFF\xF8\x70\x08", 4);  // length at the end of the header, mono, 16 bits
    frame += flacNumber(number) + bigEndianBytes(blockFrames - 1, 2);
    frame += bigEndianBytes(cyclicCheck(frame, 0x07, 8), 1);
    frame += std::string(1, '\0') + bigEndianBytes(static_cast<std::uint16_t>(sample), 2);
    return frame + bigEndianBytes(cyclicCheck(frame, 0x8005, 16), 2);
}

// Mono, 16 bits.
inline std::string constantFLAC(std::uint32_t rate, std::uint64_t frames, std::int16_t sample = 8192) {
    constexpr std::uint32_t longestBlock = 65535;
    const std::uint64_t format = std::uint64_t{rate} << 44 | std::uint64_t{15} << 36 | frames;
    std::string bytes = "fLaC" + bigEndianBytes(0x80000022, 4) + bigEndianBytes(longestBlock, 2) +
                        bigEndianBytes(longestBlock, 2) + std::string(6, '\0') + bigEndianBytes(format, 8) +
                        std::string(16, '\0');
    for (std::uint32_t number = 0; frames > 0; ++number) {
        const auto length = static_cast<std::uint32_t>(std::min<std::uint64_t>(frames, longestBlock));
        bytes += constantFLACFrame(number, length, sample);
        frames -= length;
    }
    return bytes;
}

}  // namespace quillmere::testing
