#include "QuillmereCore/Util/Text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "Support/CommaLocale.h"

namespace quillmere {
namespace {

TEST(Text, FixedWritesTheGivenNumberOfDecimals) {
    EXPECT_EQ(Text::fixed(3.14159, 2), "3.14");
    EXPECT_EQ(Text::fixed(44.1, 1), "44.1");
    EXPECT_EQ(Text::fixed(-2, 3), "-2.000");
    EXPECT_EQ(Text::fixed(7, 0), "7");
}

// The exact value decides; a tie goes to the even digit, as printf does.
TEST(Text, FixedRoundsAsPrintfDoes) {
    EXPECT_EQ(Text::fixed(0.5, 0), "0");
    EXPECT_EQ(Text::fixed(1.5, 0), "2");
    EXPECT_EQ(Text::fixed(2.675, 2), "2.67");  // the double lies below 2.675
    EXPECT_EQ(Text::fixed(-0.001, 2), "-0.00");
}

TEST(Text, FixedHoldsTheLargestNumbers) {
    const std::string text = Text::fixed(std::numeric_limits<double>::max(), 6);
    EXPECT_EQ(text.size(), 309U + 1U + 6U);
    EXPECT_EQ(text.substr(0, 5), "17976");
    EXPECT_EQ(Text::fixed(std::numeric_limits<double>::infinity(), 2), "inf");
    EXPECT_EQ(Text::fixed(std::nan(""), 2), "nan");
}

TEST(Text, NumbersIgnoreTheGlobalLocale) {
    const testing::CommaLocale locale;
    EXPECT_EQ(Text::fixed(1234.5, 1), "1234.5");
    EXPECT_EQ(Text::parseDouble("1234.5"), 1234.5);
    EXPECT_EQ(Text::parseDouble("1234,5"), std::nullopt);
}

TEST(Text, LowercaseChangesAsciiLettersOnly) {
    EXPECT_EQ(Text::lowercase("Kick_01.WAV"), "kick_01.wav");
    EXPECT_EQ(Text::lowercase("ÄÖÜ [@]"), "ÄÖÜ [@]");
    EXPECT_EQ(Text::lowercase(""), "");
}

TEST(Text, Utf8KeepsTheBytesOfAPath) {
    const std::string name = "/tmp/Flöte \"新\"\n.wav";
    EXPECT_EQ(Text::utf8(std::filesystem::path(name)), name);
}

TEST(Text, ParseDoubleTakesTheWholeTextOrNothing) {
    EXPECT_EQ(Text::parseDouble("-1.5e3"), -1500.0);
    EXPECT_EQ(Text::parseDouble("42"), 42.0);
    for (const char* const text : {"", " 1", "1 ", "+1", "1x", "x", "1.5.2", "1e999", "0x10"})
        EXPECT_EQ(Text::parseDouble(text), std::nullopt) << '"' << text << '"';
}

TEST(Text, ParseDoubleAcceptsTheNamesOfNonFiniteNumbers) {
    EXPECT_TRUE(std::isinf(Text::parseDouble("inf").value()));
    EXPECT_TRUE(std::isnan(Text::parseDouble("nan").value()));
}

TEST(Text, ParseIntegerCoversExactly64Bits) {
    EXPECT_EQ(Text::parseInteger("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(Text::parseInteger("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
    for (const char* const text : {"9223372036854775808", "", "1.0", " 1", "1 ", "+1", "--1"})
        EXPECT_EQ(Text::parseInteger(text), std::nullopt) << '"' << text << '"';
}

TEST(Text, ParseUnsignedRefusesSigns) {
    EXPECT_EQ(Text::parseUnsigned("18446744073709551615"), std::numeric_limits<std::uint64_t>::max());
    for (const char* const text : {"18446744073709551616", "-1", "+1", "", "abc"})
        EXPECT_EQ(Text::parseUnsigned(text), std::nullopt) << '"' << text << '"';
}

TEST(Text, HexadecimalIsTwoDigitsAByteAndBack) {
    const std::vector<std::uint8_t> bytes{0x00, 0x0F, 0xA7, 0xFF};
    EXPECT_EQ(Text::hexadecimal(bytes), "000fa7ff");
    EXPECT_EQ(Text::parseHexadecimal("000fa7ff"), bytes);
    EXPECT_EQ(Text::parseHexadecimal("000FA7FF"), bytes);
    EXPECT_EQ(Text::hexadecimal({}), "");
    EXPECT_EQ(Text::parseHexadecimal(""), std::vector<std::uint8_t>());
    for (const char* const text : {"0", "000", "0g", "g0", " 1", "-1", "+1", "0x", "1 "})
        EXPECT_EQ(Text::parseHexadecimal(text), std::nullopt) << '"' << text << '"';
}

}  // namespace
}  // namespace quillmere
