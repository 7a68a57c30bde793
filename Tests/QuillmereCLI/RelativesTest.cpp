#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Audio/AudioIO.h"

namespace quillmere::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

class Relatives : public CommandTest {
protected:
    [[nodiscard]] Outcome relatives(const fs::path& file, const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"relatives", file.string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }
    [[nodiscard]] fs::path generateOne(const std::string& seed) const {
        const Outcome made =
            runCommand(withModels({"generate", corpus.string(), "--output", output.string(), "--seed", seed,
                                   "--count", "1", "--set", "phase-iterations=2", "--json"}));
        EXPECT_EQ(made.exitCode, 0) << made.err;
        return made.event("result")["files"][0]["path"].get<std::string>();
    }
};

TEST_F(Relatives, OfASoundFromElsewhereAreThoseOfTheFolder) {
    const fs::path foreign = folder / "foreign.wav";
    fs::copy_file(corpus / "two.wav", foreign);
    const Outcome words = relatives(foreign, {"--in", corpus.string()});
    EXPECT_EQ(words.exitCode, 0) << words.err;
    EXPECT_THAT(words.out, HasSubstr("Verdict: a copy of two.wav."));
    const cli::JSON result =
        relatives(foreign, {"--in", corpus.string(), "--count", "2", "--json"}).event("result");
    EXPECT_EQ(result["verdict"], "copy");
    ASSERT_EQ(result["samples"].size(), 2U);
    EXPECT_EQ(result["samples"][0]["name"], "two.wav");
    EXPECT_EQ(result["samples"][0]["distance"], 0);
    EXPECT_GT(result["samples"][1]["distance"], 2);
    EXPECT_TRUE(result["sources"].empty());
}

TEST_F(Relatives, OfASampleLeaveItselfOut) {
    const cli::JSON result =
        relatives(corpus / "one.wav", {"--in", corpus.string(), "--json"}).event("result");
    ASSERT_EQ(result["samples"].size(), 2U);
    for (const cli::JSON& sample : result["samples"])
        EXPECT_NE(sample["name"], "one.wav");
}

TEST_F(Relatives, OfAResultAreFoundByItsRecipe) {
    trainModel();
    const fs::path first = generateOne("1");
    const fs::path second = generateOne("2");
    const fs::path moved = folder / "moved.wav";
    fs::rename(second, moved);
    const Outcome words = relatives(moved);
    EXPECT_EQ(words.exitCode, 0) << words.err;
    EXPECT_THAT(words.out, HasSubstr("Made of "));
    EXPECT_THAT(words.out, HasSubstr("Nearest earlier results:"));
    const cli::JSON result = relatives(moved, {"--json"}).event("result");
    EXPECT_EQ(result["corpus"], corpus.string());
    EXPECT_EQ(result["samples"].size(), 3U);
    EXPECT_EQ(result["sources"].size(), 2U);
    ASSERT_EQ(result["results"].size(), 1U) << "not itself";
    EXPECT_EQ(result["results"][0]["name"], first.string());
    EXPECT_TRUE(relatives(moved, {"--results", "0", "--json"}).event("result")["results"].empty());
}

TEST_F(Relatives, TroubleNamesTheFile) {
    const fs::path foreign = folder / "foreign.wav";
    fs::copy_file(corpus / "two.wav", foreign);
    EXPECT_THAT(relatives(foreign).err, HasSubstr("foreign.wav: nothing is known"));
    EXPECT_THAT(relatives(foreign).err, HasSubstr("--in"));
    EXPECT_THAT(relatives(folder / "no.wav", {"--in", corpus.string()}).err, HasSubstr("no.wav"));
    AudioIO::write(std::vector<float>(1000), folder / "silent.wav", 44100, OutputFormat::wav16);
    EXPECT_THAT(relatives(folder / "silent.wav", {"--in", corpus.string()}).err,
                HasSubstr("silent.wav is silent"));
    EXPECT_THAT(relatives(foreign, {"--in", (folder / "nowhere").string()}).err,
                HasSubstr("nowhere is not a folder"));
    fs::create_directories(folder / "empty");
    const Outcome empty = relatives(foreign, {"--in", (folder / "empty").string()});
    EXPECT_EQ(empty.exitCode, 1);
    EXPECT_THAT(empty.err, HasSubstr("has no other sound"));
}

TEST_F(Relatives, PassOverFilesThatCannotBeRead) {
    writeText(corpus / "noise.wav", "no sound");
    const fs::path foreign = folder / "foreign.wav";
    fs::copy_file(corpus / "two.wav", foreign);
    EXPECT_EQ(relatives(foreign, {"--in", corpus.string(), "--json"}).event("result")["samples"].size(), 3U);
}

TEST_F(Relatives, CanBeCancelled) {
    const Outcome outcome = runCommandCancelledAt(
        "\"phase\":\"comparing\"",
        {"relatives", (corpus / "one.wav").string(), "--in", corpus.string(), "--json"});
    EXPECT_EQ(outcome.exitCode, 130);
}

}  // namespace
}  // namespace quillmere::testing
