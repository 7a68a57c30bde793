#include "QuillmereCore/Model/Training/Schedule.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quillmere {
namespace {

TEST(TrainingSchedule, ASingleStepHasALowLearningRateAndTheFullKLWeight) {
    const auto only = ModelTrainer::schedule(1, 1, 0.001F, 0.002F);
    EXPECT_EQ(only.warm, 0.01F);
    EXPECT_FLOAT_EQ(only.decay, 0.05F);
    EXPECT_NEAR(only.bias, std::sqrt(0.001) / 0.1, 1e-5);
    EXPECT_EQ(only.learningRate, 0.001F * only.warm * only.decay * only.bias);
    EXPECT_EQ(only.klWeight, 0.002F);
}

TEST(TrainingSchedule, WarmsUpOver100Steps) {
    EXPECT_EQ(ModelTrainer::schedule(50, 1000, 1, 1).warm, 0.5F);
    EXPECT_EQ(ModelTrainer::schedule(100, 1000, 1, 1).warm, 1.0F);
    EXPECT_EQ(ModelTrainer::schedule(1000, 1000, 1, 1).warm, 1.0F);
}

TEST(TrainingSchedule, DecaysToFivePercentAlongACosine) {
    EXPECT_NEAR(ModelTrainer::schedule(1, 1'000'000, 1, 1).decay, 1.0, 1e-6);
    EXPECT_NEAR(ModelTrainer::schedule(500, 1000, 1, 1).decay, 0.525, 1e-6);
    EXPECT_NEAR(ModelTrainer::schedule(1000, 1000, 1, 1).decay, 0.05, 1e-6);
}

TEST(TrainingSchedule, RampsTheKLWeightOverTheFirst30Percent) {
    EXPECT_NEAR(ModelTrainer::schedule(150, 1000, 1, 1).klWeight, 0.5, 1e-6);
    EXPECT_EQ(ModelTrainer::schedule(301, 1000, 1, 1).klWeight, 1.0F);
    EXPECT_EQ(ModelTrainer::schedule(1000, 1000, 1, 0).klWeight, 0.0F);
}

TEST(TrainingSchedule, AdamsBiasCorrectionTendsToOne) {
    EXPECT_NEAR(ModelTrainer::schedule(50'000, 50'000, 1, 1).bias, 1.0, 1e-6);
}

}  // namespace
}  // namespace quillmere
