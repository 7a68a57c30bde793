#include "QuillmereCore/Audio/WAVWriter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "Support/WAVBytes.h"

namespace quillmere {
namespace {

using testing::floatBytes;
using testing::littleEndian;
using testing::littleEndianAt;

std::string encoded(const std::vector<float>& samples, OutputFormat format, int rate = 44100) {
    const std::vector<std::byte> bytes = WAVWriter::encode(samples, rate, format);
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// The integers stored after the 44 bytes of a PCM header, sign extended.
std::vector<int> codes(const std::vector<float>& samples, OutputFormat format) {
    const std::string bytes = encoded(samples, format);
    const int width = bitDepth(format) / 8;
    std::vector<int> values;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const auto raw = littleEndianAt(bytes, 44 + i * static_cast<std::size_t>(width), width);
        const int shift = 32 - 8 * width;
        values.push_back(static_cast<std::int32_t>(static_cast<std::uint32_t>(raw) << shift) >> shift);
    }
    return values;
}

TEST(WAVWriter, IntegerFilesHaveThePlainHeader) {
    const std::string expected = "RIFF" + littleEndian(36 + 4, 4) + "WAVEfmt " + littleEndian(16, 4) +
                                 littleEndian(1, 2) + littleEndian(1, 2) + littleEndian(22050, 4) +
                                 littleEndian(44100, 4) + littleEndian(2, 2) + littleEndian(16, 2) + "data" +
                                 littleEndian(4, 4) + littleEndian(0x4000, 2) + littleEndian(0xC000, 2);
    EXPECT_EQ(encoded({0.5F, -0.5F}, OutputFormat::wav16, 22050), expected);
}

TEST(WAVWriter, FloatFilesHaveAnExtensionSizeAndAFactChunk) {
    const std::vector<float> samples{0.25F, -1.5F, 1e-40F};
    const std::string expected = "RIFF" + littleEndian(4 + 26 + 12 + 8 + 12, 4) + "WAVEfmt " +
                                 littleEndian(18, 4) + littleEndian(3, 2) + littleEndian(1, 2) +
                                 littleEndian(48000, 4) + littleEndian(192000, 4) + littleEndian(4, 2) +
                                 littleEndian(32, 2) + littleEndian(0, 2) + "fact" + littleEndian(4, 4) +
                                 littleEndian(3, 4) + "data" + littleEndian(12, 4) + floatBytes(samples);
    EXPECT_EQ(encoded(samples, OutputFormat::wav32float, 48000), expected);
}

TEST(WAVWriter, AnOddNumberOfBytesIsPadded) {
    const std::string bytes = encoded({0.5F}, OutputFormat::wav24);
    EXPECT_EQ(bytes.size(), 44U + 3 + 1);
    EXPECT_EQ(littleEndianAt(bytes, 4, 4), bytes.size() - 8);
    EXPECT_EQ(littleEndianAt(bytes, 40, 4), 3U);
    EXPECT_EQ(bytes.back(), '\0');
}

TEST(WAVWriter, RoundsToTheNearestCode) {
    const auto code = [](double value) { return static_cast<float>(value / 32768); };
    EXPECT_EQ(codes({0.0F, code(0.25), code(0.75), code(-0.75), code(1.5), code(2.5), code(-1.5)},
                    OutputFormat::wav16),
              (std::vector{0, 0, 1, -1, 2, 2, -2}));
}

TEST(WAVWriter, SaturatesBeyondFullScale) {
    const float infinity = std::numeric_limits<float>::infinity();
    const std::vector<float> samples{1.0F, -1.0F, 1.5F, -1.5F, 0.99999999F, infinity, -infinity};
    EXPECT_EQ(codes(samples, OutputFormat::wav16),
              (std::vector{32767, -32768, 32767, -32768, 32767, 32767, -32768}));
    EXPECT_EQ(codes(samples, OutputFormat::wav24),
              (std::vector{8388607, -8388608, 8388607, -8388608, 8388607, 8388607, -8388608}));
}

TEST(WAVWriter, NotANumberIsSilenceInIntegerFormats) {
    EXPECT_EQ(codes({std::nanf("")}, OutputFormat::wav16), std::vector{0});
    EXPECT_EQ(codes({std::nanf("")}, OutputFormat::wav24), std::vector{0});
}

TEST(WAVWriter, EverySixteenBitCodeSurvives) {
    std::vector<float> samples;
    std::vector<int> expected;
    for (int code = -32768; code <= 32767; ++code) {
        samples.push_back(static_cast<float>(code) * 0x1p-15F);
        expected.push_back(code);
    }
    EXPECT_EQ(codes(samples, OutputFormat::wav16), expected);
}

TEST(WAVWriter, FitsUpToFourGibibytes) {
    // 4 GiB - 1 less the 36 bytes of header that the RIFF size counts.
    constexpr std::size_t largest16 = (0xFFFFFFFFU - 36) / 2;
    EXPECT_TRUE(WAVWriter::fits(largest16, OutputFormat::wav16));
    EXPECT_FALSE(WAVWriter::fits(largest16 + 1, OutputFormat::wav16));
    constexpr std::size_t largestFloat = (0xFFFFFFFFU - 50) / 4;
    EXPECT_TRUE(WAVWriter::fits(largestFloat, OutputFormat::wav32float));
    EXPECT_FALSE(WAVWriter::fits(largestFloat + 1, OutputFormat::wav32float));
    EXPECT_FALSE(WAVWriter::fits(std::numeric_limits<std::size_t>::max(), OutputFormat::wav24));
}

}  // namespace
}  // namespace quillmere
