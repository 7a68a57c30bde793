#include "QuillmereCore/Generate/Detail/Donor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "Support/Signals.h"

namespace quillmere::Detail {
namespace {

using ::testing::ElementsAre;
using ::testing::FloatEq;

TEST(Donor, MixesWhatThereIs) {
    std::vector<float> mix(4);
    addScaled(std::vector<float>{1, 2}, 0.5F, mix);
    addScaled(std::vector<float>{0, 1, 1, 1, 1, 1}, 0.25F, mix);
    EXPECT_THAT(mix, ElementsAre(FloatEq(0.5F), FloatEq(1.25F), FloatEq(0.25F), FloatEq(0.25F)));
}

TEST(Donor, ReadTwiceAsFastASineIsAnOctaveHigher) {
    const std::vector<float> faster = readFaster(testing::sine(200, 8000, 4000), 2);
    const std::vector<float> expected = testing::sine(400, 8000, 2000);
    ASSERT_EQ(faster.size(), expected.size());
    for (std::size_t i = 2; i + 3 < faster.size(); ++i)
        ASSERT_NEAR(faster[i], expected[i], 2e-4F) << i;
}

TEST(Donor, ReadSlowlyItPassesThroughItsSamples) {
    const std::vector<float> samples = testing::noise(1, 50);
    const std::vector<float> slower = readFaster(samples, 0.25);
    ASSERT_EQ(slower.size(), 200U);
    for (std::size_t i = 0; i < samples.size(); ++i)
        EXPECT_EQ(slower[4 * i], samples[i]) << i;
}

TEST(Donor, HasAtLeastOneSample) {
    EXPECT_EQ(readFaster(std::vector<float>(3), 4).size(), 1U);
    EXPECT_EQ(readFaster({}, 0.25).size(), 1U);
}

TEST(Donor, WithoutStretchIsPassedHopByHop) {
    SeededRNG rng(3);
    const std::vector<long long> centres = donorCentres(40, 64, 40 * 64, rng);
    for (std::size_t t = 0; t < centres.size(); ++t)
        EXPECT_EQ(centres[t], static_cast<long long>(t) * 64) << t;
}

TEST(Donor, StretchedItsAttackKeepsItsPace) {
    SeededRNG rng(3);
    const std::vector<long long> centres = donorCentres(320, 64, 40 * 64, rng);
    EXPECT_THAT(std::vector(centres.begin(), centres.begin() + 5), ElementsAre(0, 64, 128, 192, 256));
    EXPECT_GE(*std::min_element(centres.begin() + 4, centres.end()), 256);
}

TEST(Donor, StretchedItGoesToAndFroAroundItsPlace) {
    SeededRNG rng(3);
    const std::vector<long long> centres = donorCentres(320, 64, 40 * 64, rng);
    long long forwards = 0;
    long long farthest = 0;
    for (std::size_t t = 5; t < centres.size(); ++t) {
        const long long step = centres[t] - centres[t - 1];
        EXPECT_LE(std::abs(step), 64);
        forwards += step == 64 ? 1 : 0;
        const long long place = 256 + (static_cast<long long>(t) - 4) * 36 * 64 / 316;
        farthest = std::max(farthest, std::abs(centres[t] - place));
    }
    // At its own pace nearly always, as often forwards as its place needs.
    EXPECT_NEAR(static_cast<double>(forwards) / 315, 0.56, 0.08);
    EXPECT_GT(farthest, 4 * 64);
    EXPECT_LE(farthest, 13 * 64);
}

TEST(Donor, AnotherStretchTurnsElsewhere) {
    SeededRNG one(3);
    SeededRNG same(3);
    SeededRNG other(4);
    const auto centres = donorCentres(320, 64, 40 * 64, one);
    EXPECT_EQ(centres, donorCentres(320, 64, 40 * 64, same));
    EXPECT_NE(centres, donorCentres(320, 64, 40 * 64, other));
}

TEST(Donor, ShortenedItIsPassedInLongerSteps) {
    SeededRNG rng(3);
    EXPECT_THAT(donorCentres(8, 64, 2048, rng), ElementsAre(0, 64, 128, 192, 256, 704, 1152, 1600));
}

TEST(Donor, ShorterThanItsAttackItEndsThere) {
    SeededRNG rng(3);
    EXPECT_THAT(donorCentres(8, 64, 100, rng), ElementsAre(0, 64, 128, 192, 256, 256, 256, 256));
    EXPECT_THAT(donorCentres(1, 64, 100, rng), ElementsAre(0));
}

TEST(Donor, NoiseStandsInAfterAClick) {
    SeededRNG rng(3);
    const std::vector<float> donor = syntheticDonor(44100, 44100, rng);
    EXPECT_TRUE(std::all_of(donor.begin(), donor.begin() + 44, [](float x) { return x == 0; }));
    EXPECT_NEAR(donor[44], 1, 0.3F);
    double power = 0;
    for (std::size_t i = 45; i < donor.size(); ++i)
        power += static_cast<double>(donor[i]) * static_cast<double>(donor[i]);
    EXPECT_NEAR(std::sqrt(power / 44055), 0.05, 0.001);
}

TEST(DonorDeathTest, AnImpossibleRatioStopsTheProgram) {
    EXPECT_DEATH((void)readFaster(std::vector<float>(3), 0), "ratio");
    EXPECT_DEATH((void)readFaster(std::vector<float>(3), INFINITY), "ratio");
}

}  // namespace
}  // namespace quillmere::Detail
