#include <gtest/gtest.h>

#include "QuillmereCLI/RunCommand.h"
#include "Support/HeadStartFiles.h"

namespace quillmere::testing {
namespace {

class Audition : public CommandTest {
protected:
    Audition() { trainModel(); }

    [[nodiscard]] Outcome audition(const std::filesystem::path& file,
                                   const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"audition", corpus.string(), "--output", file.string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }
};

TEST_F(Audition, EqualsVariationZeroOfAGenerationWithTheSameSeed) {
    const std::vector<std::string> parameters{"--seed", "77",      "--preset", "Extreme",
                                              "--set",  "pitch=3", "--format", "wav16"};
    const Outcome single = audition(folder / "single.wav", parameters);
    ASSERT_EQ(single.exitCode, 0) << single.err;
    std::vector<std::string> arguments{"generate",      corpus.string(), "--output",
                                       output.string(), "--count",       "3"};
    arguments.insert(arguments.end(), parameters.begin(), parameters.end());
    const Outcome many = runCommand(withModels(arguments));
    ASSERT_EQ(many.exitCode, 0) << many.err;
    EXPECT_EQ(readText(folder / "single.wav"), readText(output / "Struck_Bars_var_0001.wav"));
    EXPECT_NE(readText(folder / "single.wav"), readText(output / "Struck_Bars_var_0002.wav"));
}

TEST_F(Audition, ReportsFileDurationAndSeed) {
    const Outcome outcome = audition(folder / "a.wav", {"--json"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.err, "");
    const cli::JSON result = outcome.event("result");
    EXPECT_EQ(result["command"], "audition");
    EXPECT_EQ(result["path"], (folder / "a.wav").string());
    EXPECT_EQ(result["format"], "wav24");
    EXPECT_TRUE(result["seed"].is_number_unsigned());
    EXPECT_GT(result["durationSeconds"].get<double>(), 0.0);
    const Outcome human = audition(folder / "a.wav");
    EXPECT_NE(human.out.find("use --seed "), std::string::npos) << human.out;
}

TEST_F(Audition, ReplacesTheFile) {
    writeText(folder / "a.wav", "old");
    ASSERT_EQ(audition(folder / "a.wav", {"--seed", "1"}).exitCode, 0);
    EXPECT_TRUE(readText(folder / "a.wav").starts_with("RIFF"));
}

TEST_F(Audition, IsKnownAfterwardsAndMadeAgain) {
    const std::filesystem::path file = folder / "a.wav";
    ASSERT_EQ(audition(file, {"--preset", "Wild", "--seed", "3"}).exitCode, 0);
    EXPECT_EQ(runCommand({"verify", file.string(), "--models", models.string()}).exitCode, 0);
    ASSERT_EQ(runCommand(withModels({"generate", "--recipe", file.string(), "--output", output.string(),
                                     "--prefix", "again"}))
                  .exitCode,
              0);
    EXPECT_EQ(readText(output / "again_var_0001.wav"), readText(file));
    ASSERT_EQ(audition(file, {"--no-journal", "--seed", "4"}).exitCode, 0);
    EXPECT_EQ(runCommand({"recipe", file.string()}).exitCode, 1);
    ASSERT_EQ(audition(file, {"--no-journal", "--embed-recipe", "--seed", "4"}).exitCode, 0);
    EXPECT_EQ(runCommand({"recipe", file.string()}).exitCode, 0);
}

TEST_F(Audition, TheFolderAboveALinkIsThatOfWhatItLeadsTo) {
    std::filesystem::create_directories(folder / "far/away");
    std::filesystem::create_directory_symlink(folder / "far/away", folder / "link");
    ASSERT_EQ(audition(folder / "link/../a.wav").exitCode, 0);
    EXPECT_TRUE(std::filesystem::exists(folder / "far/a.wav"));
    EXPECT_FALSE(std::filesystem::exists(folder / "a.wav"));
}

TEST_F(Audition, FailsWhenTheFileIsAFolder) {
    std::filesystem::create_directory(folder / "taken.wav");
    const Outcome outcome = audition(folder / "taken.wav");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("quillmere-cli: " + (folder / "taken.wav").string()), std::string::npos)
        << outcome.err;
}

TEST_F(Audition, FailsWhenTheFoldersParentIsAFile) {
    writeText(folder / "file", "in the way");
    const Outcome outcome = audition(folder / "file" / "a.wav");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("quillmere-cli: " + (folder / "file").string()), std::string::npos)
        << outcome.err;
}

TEST_F(Audition, WritesNothingWhenCancelled) {
    cli::CancelFlag cancel;
    cancel.request(SIGINT);
    const Outcome outcome = runCommand(
        withModels({"audition", corpus.string(), "--output", (folder / "a.wav").string()}), cancel);
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_FALSE(std::filesystem::exists(folder / "a.wav"));
}

// ---- Before learning

class AuditionBeforeLearning : public CommandTest {
protected:
    AuditionBeforeLearning() { writeHeadStart(headStart); }
    [[nodiscard]] Outcome audition(const std::string& start,
                                   const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"audition",     corpus.string(),
                                           "--output",     (folder / "a.wav").string(),
                                           "--start",      start,
                                           "--head-start", headStart.string(),
                                           "--seed",       "5"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }

    const std::filesystem::path headStart = folder / "head start";
};

TEST_F(AuditionBeforeLearning, HearsTheHeadStartAndStoresNothing) {
    const Outcome outcome = audition("head-start");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("Before learning: what head start test makes of the folder.\n"),
              std::string::npos)
        << outcome.out;
    EXPECT_TRUE(readText(folder / "a.wav").starts_with("RIFF"));
    EXPECT_FALSE(std::filesystem::exists(models) && entriesIn(models) > 0);
    EXPECT_EQ(audition("head-start", {"--json"}).event("result")["beforeLearning"], true);
    EXPECT_FALSE(std::filesystem::exists(journal)) << "nobody could make it again";
}

TEST_F(AuditionBeforeLearning, GivesTheSameBytesForTheSameSeed) {
    ASSERT_EQ(audition("head-start", {"--threads", "1"}).exitCode, 0);
    const std::string once = readText(folder / "a.wav");
    ASSERT_EQ(audition("head-start", {"--threads", "2"}).exitCode, 0);
    EXPECT_EQ(readText(folder / "a.wav"), once);
}

TEST_F(AuditionBeforeLearning, HearsTheModelWhereThereIsOne) {
    trainModel();
    const Outcome outcome = audition("head-start", {"--json"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_FALSE(outcome.event("result").contains("beforeLearning"));
}

}  // namespace
}  // namespace quillmere::testing
