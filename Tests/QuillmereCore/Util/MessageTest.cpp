#include "QuillmereCore/Util/Message.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <sstream>
#include <string>
#include <utility>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

// A catalogue that has what it is asked for in capitals, and takes any count but none for a plural.
const char* loud(const char* singular, const char* plural, std::uint64_t count) {
    const std::string_view text = singular;
    if (text == "{0} of {1} files are silent.") return "SILENT: {1}, THEREOF {0}.";
    if (text == "{0}: {1}") return "{0} - {1}";
    if (text == "it is too long") return "TOO LONG";
    if (text == "{0} sample in {1}") return count == 0 ? "NO SAMPLE IN {1}" : "SAMPLES IN {1}: {0}";
    return plural == nullptr || count == 1 ? singular : plural;
}

TEST(Message, IsItsPatternWithTheArgumentsInTheirPlaces) {
    const Message message("{0} of {1} files are silent.", 3, std::string("ten"));
    EXPECT_EQ(message.english(), "3 of ten files are silent.");
    EXPECT_EQ(message.translated(loud), "SILENT: ten, THEREOF 3.");
}

TEST(Message, TakesPathsNumbersAndTextsAsTheyAre) {
    EXPECT_EQ(Message("{0} {1} {2}", std::filesystem::path("/a/Flöte"), -4, "x"), "/a/Flöte -4 x");
    EXPECT_EQ(Message("{0}", std::uint64_t{18446744073709551615U}), "18446744073709551615");
}

TEST(Message, MayUseAnArgumentTwice) {
    EXPECT_EQ(Message("Seed {0}; --seed {0}", 7), "Seed 7; --seed 7");
}

TEST(Message, TranslatesWhatItContains) {
    const Message inner("it is too long");
    const Message outer("{0}: {1}", "kick.wav", inner);
    EXPECT_EQ(outer, "kick.wav: it is too long");
    EXPECT_EQ(outer.translated(loud), "kick.wav - TOO LONG");
}

TEST(Message, LeavesWhatStandsInAnArgumentAlone) {
    EXPECT_EQ(Message("{0}: {1}", "{1}", "{0}"), "{1}: {0}");
}

TEST(Message, HasASingularAndAPlural) {
    const auto samples = [](std::int64_t count) {
        return Message::counted(count, "{0} sample in {1}", "{0} samples in {1}", "kicks");
    };
    EXPECT_EQ(samples(1), "1 sample in kicks");
    EXPECT_EQ(samples(2), "2 samples in kicks");
    EXPECT_EQ(samples(0), "0 samples in kicks");
    EXPECT_EQ(samples(0).translated(loud), "NO SAMPLE IN kicks");
    EXPECT_EQ(samples(1).translated(loud), "SAMPLES IN kicks: 1");
}

TEST(Message, OfOneMaySayItWithoutANumber) {
    EXPECT_EQ(Message::counted(1, "One file was left out.", "{0} files were left out."),
              "One file was left out.");
    EXPECT_EQ(Message::counted(4, "One file was left out.", "{0} files were left out."),
              "4 files were left out.");
}

TEST(Message, VerbatimIsTheSameInEveryLanguage) {
    EXPECT_EQ(Message::verbatim("it is too long").translated(loud), "it is too long");
    EXPECT_EQ(Message::fromTable("it is too long").translated(loud), "TOO LONG");
    EXPECT_EQ(Message().translated(loud), "");
    EXPECT_TRUE(Message().empty());
}

TEST(Message, HasTheSystemsWordsInEnglish) {
    for (int number = 1; number < 134; ++number) {
        const std::error_code error(number, std::generic_category());
        EXPECT_EQ(Message::system(error), std::strerror(number)) << number;
    }
    EXPECT_EQ(Message::system({ENOENT, std::system_category()}), "No such file or directory");
    EXPECT_EQ(Message::system({123456, std::generic_category()}), "Unknown error 123456");
}

TEST(Message, IsWrittenInEnglish) {
    std::ostringstream out;
    out << Message("{0} is silent", "a.wav");
    EXPECT_EQ(out.str(), "a.wav is silent");
    const std::string text = Message("{0} is silent", "a.wav");
    EXPECT_EQ(text, "a.wav is silent");
}

TEST(Message, OfAFailureIsWhatItSays) {
    const Failure failure("{0}: {1}", "kick.wav", Message("it is too long"));
    EXPECT_STREQ(failure.what(), "kick.wav: it is too long");
    EXPECT_EQ(failure.message().translated(loud), "kick.wav - TOO LONG");
    EXPECT_EQ(Failure(failure.message()).message(), failure.what());
}

TEST(Message, AsATextOutlivesIt) {
    const auto made = [] {
        return Message("{0} is silent", "a file whose name is too long to be kept in place");
    };
    const std::string& text = made();
    EXPECT_EQ(text, "a file whose name is too long to be kept in place is silent");
    const std::string& english = made().english();
    EXPECT_EQ(english, text);
}

TEST(Message, OfAFailureIsThereAfterItWasMoved) {
    Failure failure("{0} is silent", "a.wav");
    const Failure moved = std::move(failure);  // NOLINT(performance-move-const-arg): as anybody may write it
    EXPECT_EQ(moved.message(), "a.wav is silent");
    EXPECT_EQ(failure.message(), "a.wav is silent");  // NOLINT(bugprone-use-after-move): this is the test
}

}  // namespace
}  // namespace quillmere
