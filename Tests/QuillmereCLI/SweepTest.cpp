#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Origin/Recipe.h"

namespace quillmere::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

class SweepCommand : public CommandTest {
protected:
    SweepCommand() { trainModel(); }

    [[nodiscard]] Outcome sweep(const std::vector<std::string>& more) const {
        std::vector<std::string> arguments{
            "sweep", corpus.string(), "--output",          output.string(), "--seed",
            "5",     "--set",         "phase-iterations=2"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }
    [[nodiscard]] static Recipe recipeOf(const fs::path& file) {
        const Outcome outcome = runCommand({"recipe", file.string(), "--json"});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        return decodeRecipe(outcome.event("result")["files"][0]["recipes"][0].dump());
    }
};

TEST_F(SweepCommand, WritesOneSoundAlongARange) {
    const Outcome outcome = sweep({"--set", "pitch=-12:12:3", "--json"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const cli::JSON result = outcome.event("result");
    EXPECT_EQ(result["seed"], 5);
    EXPECT_EQ(result["ranges"][0]["id"], "pitch");
    ASSERT_EQ(result["files"].size(), 3U);
    EXPECT_EQ(result["files"][0]["values"]["pitch"], -12);
    std::vector<Recipe> recipes;
    for (const char* name :
         {"Struck_Bars_pitch_-12.wav", "Struck_Bars_pitch_0.wav", "Struck_Bars_pitch_12.wav"})
        recipes.push_back(recipeOf(output / name));
    for (const Recipe& recipe : recipes) {
        EXPECT_EQ(recipe.latent, recipes[0].latent) << "the same sound";
        EXPECT_EQ(recipe.state, recipes[0].state);
        EXPECT_EQ(recipe.seed, 5U);
    }
    EXPECT_EQ(recipes[2].aesthetics.pitch, 12);
    EXPECT_EQ(runCommand(withModels({"verify", output.string()})).exitCode, 0);
}

TEST_F(SweepCommand, IsTheFirstVariationOfItsSeedAtEachStep) {
    ASSERT_EQ(sweep({"--set", "drift=0:2:2"}).exitCode, 0);
    const fs::path generated = folder / "generated";
    ASSERT_EQ(runCommand(withModels({"generate", corpus.string(), "--output", generated.string(), "--seed",
                                     "5", "--count", "1", "--set", "phase-iterations=2", "--set", "drift=2"}))
                  .exitCode,
              0);
    EXPECT_EQ(readText(output / "Struck_Bars_drift_2.wav"), readText(generated / "Struck_Bars_var_0001.wav"));
}

TEST_F(SweepCommand, TwoRangesAreAGrid) {
    const fs::path svg = folder / "sheet.svg";
    const Outcome outcome = sweep(
        {"--set", "pitch=0:12:3", "--set", "drive=0:6:2", "--prefix", "Bar", "--picture", svg.string()});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(entriesIn(output), 6U);
    EXPECT_TRUE(fs::exists(output / "Bar_pitch_6_drive_6.wav"));
    EXPECT_THAT(readText(svg), HasSubstr("pitch 12, drive 6"));
    EXPECT_THAT(readText(svg), HasSubstr("seed 5"));
    EXPECT_THAT(outcome.out, HasSubstr("sheet.svg"));
}

TEST_F(SweepCommand, NothingIsOverwrittenOrHalfDone) {
    ASSERT_EQ(sweep({"--set", "pitch=0:12:3"}).exitCode, 0);
    const Outcome again = sweep({"--set", "pitch=-12:12:3"});
    EXPECT_EQ(again.exitCode, 1);
    EXPECT_THAT(again.err, HasSubstr("Struck_Bars_pitch_0.wav"));
    EXPECT_EQ(entriesIn(output), 3U);
}

TEST_F(SweepCommand, DetailIsTakenAndSaid) {
    const cli::JSON result = sweep({"--set", "pitch=0:1:2", "--detail", "1", "--json"}).event("result");
    EXPECT_EQ(result["detail"]["sounds"], "folder");
    EXPECT_EQ(result["files"][1]["detail"], "sources");
    EXPECT_EQ(runCommand(withModels({"verify", output.string()})).exitCode, 0);
}

TEST_F(SweepCommand, CanBeCancelled) {
    const Outcome outcome = runCommandCancelledAt(
        "\"phase\":\"generating\"", withModels({"sweep", corpus.string(), "--output", output.string(),
                                                "--set", "pitch=-12:12:100", "--json"}));
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_LT(entriesIn(output), 100U);
}

}  // namespace
}  // namespace quillmere::testing
