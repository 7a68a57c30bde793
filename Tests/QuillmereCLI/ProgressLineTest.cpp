#include "QuillmereCLI/ProgressLine.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "QuillmereCLI/Wording.h"

namespace quillmere::cli {
namespace {

WorkProgress trainingAt(std::int64_t step, std::int64_t total) {
    TrainingProgress progress;
    progress.phase = TrainingProgress::Phase::training;
    progress.message = Message("Training model…");
    progress.step = step;
    progress.totalSteps = total;
    progress.loss = 0.03125F;
    progress.fraction = static_cast<double>(step) / static_cast<double>(total);
    progress.secondsRemaining = 83;
    return workProgress(progress);
}

WorkProgress savingProgress() {
    WorkProgress progress;
    progress.phase = "saving";
    progress.message = Message("Saving the model…");
    return progress;
}

class ProgressLineTest : public ::testing::Test {
protected:
    std::ostringstream out_;
    std::ostringstream err_;
    std::optional<std::size_t> width_;
    Console console_{{out_, err_, [this] { return width_; }}};
};

TEST(ProgressText, NamesPhaseShareStepLossAndTimeLeft) {
    EXPECT_EQ(progressText(trainingAt(500, 2000), 70),
              "Training model…  25 %  step 500/2000  loss 0.0312  1 min 23 s left");
}

TEST(ProgressText, DrawsABarWhereThereIsRoom) {
    const std::string text = progressText(trainingAt(1000, 2000), 200);
    EXPECT_NE(text.find("[###############...............]"), std::string::npos) << text;
}

TEST(ProgressText, NeverExceedsTheWidth) {
    for (std::size_t width = 0; width < 130; ++width)
        EXPECT_LE(columns(progressText(trainingAt(500, 2000), width)), width);
}

TEST(ProgressText, CopesWithFractionsOutsideTheirRange) {
    WorkProgress progress = trainingAt(1, 2);
    for (const double fraction : {-1.0, 7.0, std::numeric_limits<double>::quiet_NaN()}) {
        progress.fraction = fraction;
        EXPECT_LE(columns(progressText(progress, 100)), 100U);
    }
}

TEST_F(ProgressLineTest, WritesOneLinePerPhaseOffATerminal) {
    ProgressLine line(console_);
    for (std::int64_t step = 1; step <= 5; ++step)
        line.report(trainingAt(step, 5));
    line.report(savingProgress());
    line.finish();
    EXPECT_EQ(err_.str(), "Training model… 5 steps\nSaving the model…\n");
    EXPECT_EQ(out_.str(), "");
}

TEST_F(ProgressLineTest, RedrawsInPlaceOnATerminalAndLeavesNothingBehind) {
    width_ = 40;
    {
        ProgressLine line(console_);
        line.report(trainingAt(1, 5));
    }
    const std::string shown = err_.str();
    EXPECT_EQ(shown.find('\n'), std::string::npos);
    EXPECT_NE(shown.find("Training"), std::string::npos);
    EXPECT_TRUE(shown.ends_with("\r\x1b[K")) << shown;
}

TEST_F(ProgressLineTest, WritesEveryReportAsAnEventWithJSON) {
    console_.useJSON();
    ProgressLine line(console_);
    line.report(trainingAt(1, 5));
    line.report(trainingAt(5, 5));
    line.finish();
    EXPECT_EQ(err_.str(), "");
    std::istringstream lines(out_.str());
    std::string first;
    ASSERT_TRUE(std::getline(lines, first));
    const JSON event = JSON::parse(first);
    EXPECT_EQ(event["event"], "progress");
    EXPECT_EQ(event["phase"], "training");
    EXPECT_EQ(event["step"], 1);
    EXPECT_EQ(event["totalSteps"], 5);
    EXPECT_EQ(event["loss"], 0.03125);
    EXPECT_EQ(event["secondsRemaining"], 83);
}

TEST_F(ProgressLineTest, MeasuresThePhasesInOrder) {
    ProgressLine line(console_);
    line.report(trainingAt(1, 5));
    line.report(savingProgress());
    line.finish();
    ASSERT_EQ(line.times().size(), 2U);
    EXPECT_EQ(line.times()[0].phase, "training");
    EXPECT_EQ(line.times()[1].phase, "saving");
    EXPECT_GE(line.totalSeconds(), line.times()[0].seconds);
}

}  // namespace
}  // namespace quillmere::cli
