#include "QuillmereCore/Model/Training/Augmentation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <vector>

#include "QuillmereCore/Model/Training/TrainingTestData.h"

namespace quillmere {
namespace {

using ModelTrainer::Augmentation;
using ::testing::ElementsAre;
using testing::randomImage;
using testing::smallest;

ModelConfig tonal(ModelConfig config) {
    config.profile = AnalysisProfile::tonal;
    return config;
}

TEST(Augmentation, ShiftsByAtMost35Milliseconds) {
    ModelConfig config = smallest;
    config.sampleRate = 44100;
    config.hop = 256;
    EXPECT_EQ(ModelTrainer::maxShift(config), 6);
    config.hop = 1024;
    EXPECT_EQ(ModelTrainer::maxShift(config), 1);
    config.sampleRate = 22050;
    EXPECT_EQ(ModelTrainer::maxShift(config), 0);
}

TEST(Augmentation, CoversItsRangesAndNothingElse) {
    SeededRNG rng(6);
    std::set<std::int64_t> shifts, melShifts;
    float lowest = 0, highest = 0;
    for (int i = 0; i < 2000; ++i) {
        const Augmentation drawn = ModelTrainer::drawAugmentation(smallest, rng);
        shifts.insert(drawn.shift);
        melShifts.insert(drawn.melShift);
        lowest = std::min(lowest, drawn.gain);
        highest = std::max(highest, drawn.gain);
    }
    EXPECT_THAT(shifts, ElementsAre(0, 1, 2, 3, 4));  // 35 ms are 4.375 frames here
    EXPECT_THAT(melShifts, ElementsAre(-1, 0, 1));
    EXPECT_NEAR(lowest, -0.12F, 0.002F);
    EXPECT_NEAR(highest, 0.12F, 0.002F);
}

TEST(Augmentation, MayShiftByOneFrameEvenWhere35MillisecondsHoldNone) {
    ModelConfig config = smallest;
    config.hop = 1024;
    SeededRNG rng(6);
    std::set<std::int64_t> shifts;
    for (int i = 0; i < 100; ++i)
        shifts.insert(ModelTrainer::drawAugmentation(config, rng).shift);
    EXPECT_THAT(shifts, ElementsAre(0, 1));
}

// Repeats the draws of one augmentation by hand, in their order.
void expectDrawOrder(const ModelConfig& config, std::uint64_t seed) {
    SeededRNG rng(seed);
    SeededRNG copy = rng;
    const Augmentation drawn = ModelTrainer::drawAugmentation(config, rng);
    const std::int64_t shift = 0.7F > copy.uniform() ? copy.intBelow(5) : 0;
    std::int64_t melShift = 0;
    if (config.profile == AnalysisProfile::percussive && 0.5F > copy.uniform())
        melShift = copy.intBelow(3) - 1;
    const float gain = (2.0F * copy.uniform() - 1.0F) * 6.0F / 50.0F;
    EXPECT_EQ(drawn.shift, shift) << "seed " << seed;
    EXPECT_EQ(drawn.melShift, melShift) << "seed " << seed;
    EXPECT_EQ(drawn.gain, gain) << "seed " << seed;
    EXPECT_EQ(rng, copy) << "seed " << seed;
}

TEST(Augmentation, DrawsInAFixedOrder) {
    for (std::uint64_t seed = 0; seed < 50; ++seed)
        expectDrawOrder(smallest, seed);
}

TEST(Augmentation, OfTonalClipsNeverDrawsTheMelShift) {
    bool differs = false;
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        expectDrawOrder(tonal(smallest), seed);
        SeededRNG percussiveRNG(seed), tonalRNG(seed);
        (void)ModelTrainer::drawAugmentation(smallest, percussiveRNG);
        EXPECT_EQ(ModelTrainer::drawAugmentation(tonal(smallest), tonalRNG).melShift, 0);
        differs = differs || percussiveRNG != tonalRNG;
    }
    EXPECT_TRUE(differs) << "the same seed gives another sequence";
}

std::vector<float> applied(const Augmentation& augmentation, const std::vector<float>& image) {
    std::vector<float> out(image.size(), 99.0F);
    ModelTrainer::applyAugmentation(augmentation, smallest, image, out);
    return out;
}

TEST(Augmentation, WithoutShiftsAndGainChangesNothing) {
    const std::vector<float> image = randomImage(1);
    EXPECT_EQ(applied({}, image), image);
}

TEST(Augmentation, MovesTheContentLaterAndUp) {
    const std::vector<float> image = randomImage(2);
    const std::vector<float> out = applied({.shift = 3, .melShift = 1, .gain = 0}, image);
    for (std::size_t row = 0; row < 32; ++row) {
        for (std::size_t column = 0; column < 32; ++column) {
            const bool uncovered = row < 1 || column < 3;
            const float expected = uncovered ? -1.0F : image[(row - 1) * 32 + column - 3];
            ASSERT_EQ(out[row * 32 + column], expected) << row << ", " << column;
        }
    }
}

TEST(Augmentation, MovesTheContentDown) {
    const std::vector<float> image = randomImage(3);
    const std::vector<float> out = applied({.shift = 0, .melShift = -1, .gain = 0}, image);
    EXPECT_TRUE(std::equal(out.begin(), out.end() - 32, image.begin() + 32));
    EXPECT_EQ(std::vector<float>(out.end() - 32, out.end()), std::vector<float>(32, -1.0F));
}

TEST(Augmentation, ShiftedBeyondTheImageLeavesSilence) {
    EXPECT_EQ(applied({.shift = 40, .melShift = 0, .gain = 0.1F}, randomImage(4)),
              std::vector<float>(32 * 32, -1.0F));
}

TEST(Augmentation, KeepsSilenceAndHasALowerLimitOnly) {
    std::vector<float> image(32 * 32, -1.0F);
    image[1] = -0.99F;
    image[2] = -0.98F;
    image[3] = 1.2F;
    image[4] = -1.5F;
    const std::vector<float> louder = applied({.shift = 0, .melShift = 0, .gain = 0.1F}, image);
    EXPECT_EQ(louder[0], -1.0F);
    EXPECT_EQ(louder[1], -0.99F) << "at the limit counts as silence";
    EXPECT_EQ(louder[2], -0.98F + 0.1F);
    EXPECT_EQ(louder[3], 1.2F + 0.1F) << "no upper limit";
    EXPECT_EQ(louder[4], -1.5F);
    const std::vector<float> softer = applied({.shift = 0, .melShift = 0, .gain = -0.1F}, image);
    EXPECT_EQ(softer[1], -0.99F);
    EXPECT_EQ(softer[2], -1.0F);
}

TEST(Augmentation, IsDrawnAndApplied) {
    const std::vector<float> image = randomImage(5);
    SeededRNG rng(77);
    SeededRNG copy = rng;
    const Augmentation drawn = ModelTrainer::drawAugmentation(smallest, copy);
    EXPECT_EQ(ModelTrainer::augment(image, smallest, rng), applied(drawn, image));
    EXPECT_EQ(rng, copy);
}

}  // namespace
}  // namespace quillmere
