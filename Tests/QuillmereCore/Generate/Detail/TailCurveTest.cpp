#include "QuillmereCore/Generate/Detail/TailCurve.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace quillmere::Detail {
namespace {

using ::testing::ElementsAre;
using Levels = std::vector<TailCurve::Levels>;

Levels repeated(std::size_t count, float decoded, float real) {
    return Levels(count, {decoded, real});
}

// The cell around -0.6.
constexpr std::size_t cell = 15;

// The curve of these frames where quieter ones are silent, so that it may be low in that cell.
TailCurve curveAbove(Levels levels) {
    for (std::size_t quieter = 0; quieter < cell; ++quieter) {
        const Levels silent = repeated(8, TailCurve::middle(quieter), -1.0F);
        levels.insert(levels.end(), silent.begin(), silent.end());
    }
    return TailCurve(levels);
}

TEST(TailCurve, GivesTheMedianOfTheRealLevels) {
    Levels levels = repeated(4, TailCurve::middle(cell), -0.9F);
    levels.insert(levels.end(), {{TailCurve::middle(cell), -0.7F},
                                 {TailCurve::middle(cell), -0.95F},
                                 {TailCurve::middle(cell), -0.65F},
                                 {TailCurve::middle(cell), -0.8F},
                                 {TailCurve::middle(cell), -0.75F}});
    EXPECT_FLOAT_EQ(curveAbove(levels).values()[cell], -0.9F);
}

TEST(TailCurve, TheMedianOfAnEvenNumberIsTheMeanOfTheMiddleTwo) {
    Levels levels = repeated(4, TailCurve::middle(cell), -0.9F);
    const Levels upper = repeated(4, TailCurve::middle(cell), -0.8F);
    levels.insert(levels.end(), upper.begin(), upper.end());
    EXPECT_FLOAT_EQ(curveAbove(levels).values()[cell], -0.85F);
}

TEST(TailCurve, NeverLiesAboveTheDecodedLevel) {
    const TailCurve curve(repeated(20, TailCurve::middle(cell), 0.5F));
    EXPECT_FLOAT_EQ(curve.values()[cell], TailCurve::middle(cell));
}

TEST(TailCurve, FewFramesSayNothing) {
    const TailCurve few(repeated(7, TailCurve::middle(cell), -1.0F));
    EXPECT_FLOAT_EQ(few.values()[cell], TailCurve::middle(cell));
    const TailCurve none(Levels{});
    EXPECT_EQ(none.values().front(), -1.0F);  // silence below -0.9
    EXPECT_FLOAT_EQ(none.values().back(), TailCurve::middle(31));
}

TEST(TailCurve, LoudFramesStay) {
    const TailCurve curve(repeated(100, -0.2F, -1.0F));
    EXPECT_EQ(curve.change(-0.2F), 0.0F);
    EXPECT_EQ(curve.change(0.0F), 0.0F);
    EXPECT_EQ(curve.change(1.1F), 0.0F);
}

TEST(TailCurve, NeverFalls) {
    Levels levels = repeated(20, TailCurve::middle(10), -0.85F);
    const Levels higher = repeated(20, TailCurve::middle(11), -1.0F);
    levels.insert(levels.end(), higher.begin(), higher.end());
    const TailCurve curve(levels);
    EXPECT_TRUE(std::is_sorted(curve.values().begin(), curve.values().end()));
    EXPECT_FLOAT_EQ(curve.values()[11], curve.values()[10]);
}

TEST(TailCurve, OfLoudFramesInTheFirstCellBeginsAtItsMiddle) {
    Levels levels = repeated(20, TailCurve::middle(0), 0.5F);
    const Levels next = repeated(20, TailCurve::middle(1), -3.0F);
    levels.insert(levels.end(), next.begin(), next.end());
    EXPECT_FLOAT_EQ(TailCurve(levels).values()[1], TailCurve::middle(0));
}

TEST(TailCurve, LowersToTheRealLevelAndBetweenTheCellsLinearly) {
    std::array<float, TailCurve::cells> values{};
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = TailCurve::middle(i) - 0.2F;
    const TailCurve curve(values);
    for (const float level : {-1.15F, -0.7F, -0.35F, -0.033F})
        EXPECT_NEAR(curve.change(level), -0.2F, 1e-6F) << level;
    EXPECT_NEAR(curve.change(-3), 0, 1e-6F);  // clamped below the first cell: nothing is raised
    EXPECT_EQ(curve.change(0.2F), 0.0F);
}

TEST(TailCurve, LowersWholeFramesByTheirLoudestBand) {
    std::array<float, TailCurve::cells> values{};
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = TailCurve::middle(i) - 0.2F;
    std::vector<float> image{-0.5F, 0.3F,  -0.9F,  //
                             -0.7F, -0.9F, -0.6F};
    TailCurve(values).apply(image, 3, 0.5F);
    const std::vector<float> expected{-0.6F, 0.3F, -1.0F, -0.8F, -0.9F, -0.7F};
    for (std::size_t i = 0; i < image.size(); ++i)
        EXPECT_NEAR(image[i], expected[i], 1e-6F) << i;
}

TEST(TailCurve, PeaksAreThoseOfTheFrames) {
    EXPECT_THAT(framePeaks(std::vector<float>{1, 5, -2, 3, 2, -3}, 3), ElementsAre(3, 5, -2));
}

TEST(TailCurveDeathTest, SizesThatDoNotFitStopTheProgram) {
    EXPECT_DEATH((void)framePeaks(std::vector<float>(4), 3), "size");
    EXPECT_DEATH((void)framePeaks(std::vector<float>(4), 0), "size");
    EXPECT_DEATH((void)framePeaks({}, 4), "size");
}

}  // namespace
}  // namespace quillmere::Detail
