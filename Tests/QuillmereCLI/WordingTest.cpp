#include "QuillmereCLI/Wording.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quillmere::cli {
namespace {

TEST(Wording, PrintableEscapesControlCharactersOnly) {
    EXPECT_EQ(printable("kick\n\t\x1b[2J\x7f drüm"), "kick\\n\\t\\x1b[2J\\x7f drüm");
}

TEST(Wording, PrintableEscapesWhatHidesOrReordersAName) {
    EXPECT_EQ(printable("a\u202egnp.wav"), "a\\u202egnp.wav");
    EXPECT_EQ(printable("\u2066a\u2069\u061c\u200f"), "\\u2066a\\u2069\\u061c\\u200f");
    EXPECT_EQ(printable("a\u2028b\u2029c\u0085d"), "a\\u2028b\\u2029c\\u0085d");
    EXPECT_EQ(printable("\ufeffx\u200by\U000e0041"), "\\ufeffx\\u200by\\U000e0041");
    // What joins letters and emoji belongs to them.
    EXPECT_EQ(printable("\U0001f469\u200d\U0001f3a4 \u0646\u200c\u0645"),
              "\U0001f469\u200d\U0001f3a4 \u0646\u200c\u0645");
}

TEST(Wording, PrintableEscapesBytesThatAreNoText) {
    EXPECT_EQ(printable("a\xff\xfe z"), "a\\xff\\xfe z");
    EXPECT_EQ(printable("cut \xe2\x82"), "cut \\xe2\\x82");
    EXPECT_EQ(printable("\xed\xa0\x80"), "\\xed\\xa0\\x80") << "half a surrogate pair";
    EXPECT_EQ(printable("\xc0\xaf"), "\\xc0\\xaf") << "longer than need be";
}

TEST(Wording, ShellWordQuotesOnlyWhatNeedsIt) {
    EXPECT_EQ(shellWord("/music/kicks-2"), "/music/kicks-2");
    EXPECT_EQ(shellWord("/music/my kicks"), "'/music/my kicks'");
    EXPECT_EQ(shellWord("it's"), "'it'\\''s'");
}

TEST(Wording, DurationChangesUnitsWithoutSixtySeconds) {
    EXPECT_EQ(duration(0.519), "0.52 s");
    EXPECT_EQ(duration(9.999), "10.0 s");
    EXPECT_EQ(duration(59.99), "1 min 0 s");
    EXPECT_EQ(duration(119.6), "2 min 0 s");
    EXPECT_EQ(duration(3599.7), "1 h 0 min");
    EXPECT_EQ(duration(3720), "1 h 2 min");
    EXPECT_EQ(duration(std::nan("")), "?");
    EXPECT_EQ(roughDuration(9.4), "9 s");
    EXPECT_EQ(roughDuration(59.7), "1 min 0 s");
}

TEST(Wording, ByteSizeUsesDecimalUnits) {
    EXPECT_EQ(byteSize(999), "999 B");
    EXPECT_EQ(byteSize(48'120), "48.1 kB");
    EXPECT_EQ(byteSize(999'999), "1.0 MB");
    EXPECT_EQ(byteSize(2'300'000'000), "2.3 GB");
}

TEST(Wording, CutToWidthCountsCharactersNotBytes) {
    EXPECT_EQ(cutToWidth("Grüße…", 4), "Grüß");
    EXPECT_EQ(columns("Grüße…"), 6U);
    EXPECT_EQ(cutToWidth("short", 80), "short");
}

TEST(Wording, TableAlignsColumnsByCharacters) {
    const auto lines = table({{"ü", "x", "end"}, {"long", "y", ""}});
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], "ü     x  end");
    EXPECT_EQ(lines[1], "long  y");
}

TEST(Wording, WideCharactersTakeTwoColumns) {
    EXPECT_EQ(columns("学習 1/3"), 8U);
    EXPECT_EQ(columns("ｶﾅ"), 2U) << "the narrow ones";
    EXPECT_EQ(cutToWidth("学習中", 5), "学習") << "half a character is none";
    EXPECT_EQ(padded("学習", 6), "学習  ");
    const auto lines = table({{"学", "x"}, {"abc", "y"}});
    EXPECT_EQ(lines[0], "学   x");
    EXPECT_EQ(lines[1], "abc  y");
}

TEST(Wording, ALabelThatIsTooLongStaysApart) {
    EXPECT_EQ(labelled("size", 8, "3 MB"), "size    3 MB");
    EXPECT_EQ(labelled("fingerprint", 8, "1f"), "fingerprint 1f");
}

TEST(Wording, EnumerationEndsWithAnd) {
    EXPECT_EQ(enumeration({"a", "b", "c"}), "a, b and c");
    EXPECT_EQ(enumeration({"a"}), "a");
    EXPECT_EQ(enumeration({}), "");
}

}  // namespace
}  // namespace quillmere::cli
