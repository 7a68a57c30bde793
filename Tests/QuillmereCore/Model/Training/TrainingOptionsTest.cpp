#include "QuillmereCore/Model/Training/TrainingOptions.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

#include "QuillmereCore/Model/Training/Quality.h"
#include "QuillmereCore/Model/Training/TrainingStart.h"

namespace quillmere {
namespace {

TEST(TrainingOptions, HasTheDefaultsOfAStandardRun) {
    const TrainingOptions options;
    EXPECT_EQ(options.steps, 2500);
    EXPECT_EQ(options.batchSize, 16);
    EXPECT_EQ(options.learningRate, 0.001F);
    EXPECT_EQ(options.klWeight, 0.002F);
    EXPECT_EQ(options.latentDim, 64);
    EXPECT_EQ(options.clipSeconds, std::nullopt);
    EXPECT_EQ(options.profile, AnalysisProfile::automatic);
    EXPECT_EQ(options.seed, 1U);
    EXPECT_EQ(options.start, nullptr);
}

TEST(Quality, GivesTheStepsOfAFreshTraining) {
    for (const QualityInfo& quality : allQualities) {
        const TrainingOptions options = quality.training(nullptr);
        EXPECT_EQ(options.steps, quality.steps);
        EXPECT_EQ(options.learningRate, 0.001F);
        EXPECT_EQ(options.start, nullptr);
    }
}

TEST(Quality, GivesFewerAndSmallerStepsFromAStart) {
    const ModelConfig config{8000, 256, 64, 32, 32, 4, AnalysisProfile::percussive};
    const auto start =
        std::make_shared<const TrainingStart>(ModelStart{}, std::vector<TaughtNetwork>{{config, {}}});
    for (const QualityInfo& quality : allQualities) {
        const TrainingOptions options = quality.training(start);
        EXPECT_EQ(options.steps, quality.stepsFromStart);
        EXPECT_LT(options.steps, quality.steps);
        EXPECT_EQ(options.learningRate, startLearningRate);
        EXPECT_LT(options.learningRate, 0.001F);
        EXPECT_EQ(options.start, start);
    }
}

}  // namespace
}  // namespace quillmere
