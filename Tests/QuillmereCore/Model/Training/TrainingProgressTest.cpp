#include "QuillmereCore/Model/Training/TrainingProgress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace quillmere {
namespace {

using ::testing::ElementsAre;
using Phase = TrainingProgress::Phase;

TEST(TrainingProgress, StartsWithEveryNumberAtZero) {
    const TrainingProgress record;
    EXPECT_EQ(record.step, 0);
    EXPECT_EQ(record.totalSteps, 0);
    EXPECT_EQ(record.loss, 0);
    EXPECT_EQ(record.reconstruction, 0);
    EXPECT_EQ(record.kl, 0);
    EXPECT_EQ(record.fraction, 0);
    EXPECT_EQ(record.secondsRemaining, std::nullopt);
}

TEST(TrainingProgress, PhasesHaveRawValues) {
    EXPECT_EQ(rawValue(Phase::analysing), "analysing");
    EXPECT_EQ(rawValue(Phase::training), "training");
    EXPECT_EQ(rawValue(Phase::finishing), "finishing");
}

TEST(TrainingReports, ComeAtTheFirstEveryTenthAndTheLastStep) {
    std::vector<int> reported;
    for (int t = 1; t <= 25; ++t) {
        if (ModelTrainer::isReported(t, 25)) reported.push_back(t);
    }
    EXPECT_THAT(reported, ElementsAre(1, 10, 20, 25));
    EXPECT_TRUE(ModelTrainer::isReported(1, 1));
}

TEST(TrainingReports, CoverFractionsFromTenTo95Percent) {
    EXPECT_DOUBLE_EQ(ModelTrainer::trainingFraction(1, 25), 0.134);
    EXPECT_DOUBLE_EQ(ModelTrainer::trainingFraction(25, 25), 0.95);
}

TEST(TrainingReports, NameTheProfileAndTheClipLength) {
    EXPECT_EQ(ModelTrainer::analysisStarted(AnalysisProfile::percussive, 1.5).message,
              "Analysing (percussive, 1.5 s per sample)…");
    EXPECT_EQ(ModelTrainer::analysisStarted(AnalysisProfile::tonal, 4).message,
              "Analysing (tonal, 4.0 s per sample)…");
}

TEST(Smoothing, TakesTheFirstValueAndThenFivePercentOfEach) {
    ModelTrainer::Smoothing smoothing;
    EXPECT_EQ(smoothing.value(), 0.0F);
    EXPECT_EQ(smoothing.add(2.0F), 2.0F);
    EXPECT_FLOAT_EQ(smoothing.add(4.0F), 2.1F);
    EXPECT_FLOAT_EQ(smoothing.value(), 2.1F);
}

}  // namespace
}  // namespace quillmere
