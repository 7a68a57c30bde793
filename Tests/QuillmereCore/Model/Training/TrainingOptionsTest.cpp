#include "QuillmereCore/Model/Training/TrainingOptions.h"

#include <gtest/gtest.h>

#include <optional>

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
}

}  // namespace
}  // namespace quillmere
