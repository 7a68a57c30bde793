#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Model/ModelStore.h"

namespace quillmere::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

class Continue : public CommandTest {
protected:
    [[nodiscard]] Outcome goOn(const std::vector<std::string>& more = {}) const {
        std::vector<std::string> arguments{"train", corpus.string(), "--continue", "3", "--batch-size", "2"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runCommand(withModels(arguments));
    }
};

TEST_F(Continue, GoesOnFromTheStoredModelAndTellsWhatItBought) {
    trainModel();
    const Outcome words = goOn();
    EXPECT_EQ(words.exitCode, 0) << words.err;
    EXPECT_THAT(words.out, HasSubstr("Went on from 2 steps to 5: error "));
    EXPECT_THAT(words.out, HasSubstr("That bought "));
    const cli::JSON result = goOn({"--seed", "9", "--json"}).event("result");
    EXPECT_EQ(result["continued"], 3);
    EXPECT_EQ(result["steps"], 8);
    EXPECT_GT(result["errorBefore"], 0);
    const ModelMetadata stored = ModelStore::open(modelFolder()).metadata;
    ASSERT_EQ(stored.continued.size(), 2U);
    EXPECT_EQ(stored.continued[0].batchSize, 2);
    EXPECT_EQ(stored.continued[1].seed, 9U);
}

TEST_F(Continue, KeepsTheSoundsWithTheModel) {
    ASSERT_EQ(runCommand(trainArguments({"--keep-sounds"})).exitCode, 0);
    ASSERT_EQ(goOn().exitCode, 0);
    EXPECT_TRUE(fs::exists(modelFolder() / "sounds.bin"));
}

TEST_F(Continue, NeedsAModelToGoOnFrom) {
    const Outcome outcome = goOn();
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.err, HasSubstr("has not been learned"));
}

TEST_F(Continue, WhatTheModelHasDecidedCannotBeChosenAgain) {
    for (const std::vector<std::string>& more : {std::vector<std::string>{"--steps", "5"},
                                                 {"--quality", "quick"},
                                                 {"--latent-dim", "8"},
                                                 {"--clip-seconds", "1"},
                                                 {"--analysis", "tonal"},
                                                 {"--retrain"},
                                                 {"--start", "fresh"}}) {
        const Outcome outcome = goOn(more);
        EXPECT_EQ(outcome.exitCode, 2) << more[0];
        EXPECT_THAT(outcome.err, HasSubstr(more[0]));
    }
}

TEST_F(Continue, CanBeCancelledAndLeavesTheModel) {
    trainModel();
    const std::string before = readText(modelFolder() / "weights.bin");
    const Outcome outcome = runCommandCancelledAt(
        "\"phase\":\"training\"",
        withModels({"train", corpus.string(), "--continue", "100000", "--batch-size", "2", "--json"}));
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_EQ(readText(modelFolder() / "weights.bin"), before);
}

}  // namespace
}  // namespace quillmere::testing
