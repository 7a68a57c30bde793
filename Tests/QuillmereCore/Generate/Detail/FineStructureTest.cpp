#include "QuillmereCore/Generate/Detail/FineStructure.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "Support/InstructionSets.h"
#include "Support/Signals.h"

namespace quillmere::Detail {
namespace {

using ::testing::Each;
using testing::InstructionSet;

TEST(FineStructure, DecibelsBecomeLinear) {
    // Several vectors of the widest registers, and single values behind them.
    std::vector<float> dB{1e9F, -1e9F};
    for (int i = 0; i < 71; ++i)
        dB.push_back(-100 + 1.7F * static_cast<float>(i));
    std::vector<float> linear(dB.size());
    fromDecibels(dB, 2, linear);
    EXPECT_GT(linear[0], 1e37F);
    EXPECT_EQ(linear[1], 0.0F);
    for (std::size_t i = 2; i < dB.size(); ++i)
        EXPECT_NEAR(linear[i] / (2 * std::pow(10.0, dB[i] / 20.0)), 1, 2e-6) << dB[i];
}

TEST(FineStructure, MagnitudesAreLengths) {
    const std::vector<float> re = testing::noise(1, 37);
    const std::vector<float> im = testing::noise(2, 37);
    std::vector<float> found(37);
    magnitudes(re, im, found);
    for (std::size_t i = 0; i < found.size(); ++i)
        EXPECT_NEAR(found[i], std::hypot(re[i], im[i]), 2e-7F) << i;
}

TEST(FineStructure, TrustEndsBetweenSixtyAndEightyDecibelsBelowTheLoudest) {
    const auto below = [](double dB) { return static_cast<float>(5 * std::pow(10, -dB / 20)); };
    const std::vector<float> levels{5, below(59.9), below(65), below(70), below(80.1), 0, below(200)};
    std::vector<float> trust(levels.size());
    trustOf(levels, 5, trust);
    const std::vector<float> expected{1, 1, 0.75F, 0.5F, 0, 0, 0};
    for (std::size_t i = 0; i < trust.size(); ++i)
        EXPECT_NEAR(trust[i], expected[i], 1e-4F) << i;
}

TEST(FineStructure, ASilentDonorIsNotTrusted) {
    std::vector<float> trust(9, 0.5F);
    trustOf(std::vector<float>(9), 0, trust);
    EXPECT_THAT(trust, Each(0.0F));
    constexpr float silence = 1e-12F;
    trustOf(std::vector<float>(9, silence), silence, trust);
    EXPECT_THAT(trust, Each(0.0F));
    const float audible = std::nextafter(silence, 1.0F);
    trustOf(std::vector<float>(9, audible), audible, trust);
    EXPECT_THAT(trust, Each(1.0F));
}

float applied(float donor, float envelope, float trust, float amount) {
    std::vector<float> magnitude{2};
    applyFineStructure(magnitude, std::vector<float>{donor}, std::vector<float>{envelope},
                       std::vector<float>{trust}, amount);
    return magnitude[0];
}

TEST(FineStructure, IsTheRatioOfTheDonorToItsEnvelope) {
    EXPECT_NEAR(applied(3, 1, 1, 1), 6, 1e-5F);
    EXPECT_NEAR(applied(0.1F, 1, 1, 1), 0.2F, 1e-6F);
    EXPECT_NEAR(applied(0.25F, 1, 1, 0.5F), 1, 1e-6F);
    EXPECT_NEAR(applied(0.25F, 1, 0.5F, 1), 1, 1e-6F);
    EXPECT_NEAR(applied(0.25F, 1, 0, 1), 2, 1e-6F);
    EXPECT_NEAR(applied(0.25F, 1, 7, 1), 0.5F, 1e-6F);  // trust counts up to 1
}

TEST(FineStructure, IsLimited) {
    EXPECT_NEAR(applied(1e6F, 1, 1, 1), 2 * std::exp(2.3F), 1e-4F);
    EXPECT_NEAR(applied(0, 1, 1, 1), 2 * std::exp(-4.6F), 1e-6F);
    EXPECT_NEAR(applied(0, 0, 1, 1), 2, 1e-6F);
}

TEST(FineStructure, NoMagnitudeIsZero) {
    std::vector<float> magnitude{0, 1e-12F};
    const std::vector<float> ones(2, 1.0F);
    applyFineStructure(magnitude, ones, ones, ones, 1);
    EXPECT_THAT(magnitude, Each(1e-9F));
}

// A value's place in the array decides whether a whole vector or a single lane computes it.
TEST(FineStructure, AValueDoesNotDependOnItsPlace) {
    for (const std::int64_t target : InstructionSet::available()) {
        const InstructionSet set(target);
        for (const std::size_t count : {1U, 7U, 16U, 37U}) {
            std::vector<float> magnitude(count, 0.7F);
            applyFineStructure(magnitude, std::vector<float>(count, 0.3F), std::vector<float>(count, 1.1F),
                               std::vector<float>(count, 0.9F), 0.8F);
            EXPECT_THAT(magnitude, Each(magnitude[0])) << InstructionSet::name(target);
        }
    }
}

TEST(FineStructure, EachValueIsMadeOfThoseOfItsOwnPlace) {
    const auto levels = [](std::uint64_t seed) {
        std::vector<float> values = testing::noise(seed, 53);
        for (float& value : values)
            value = std::abs(value) + 0.01F;
        return values;
    };
    const std::vector<float> donor = levels(1);
    const std::vector<float> envelope = levels(2);
    const std::vector<float> before = levels(3);
    std::vector<float> trust(donor.size());
    trustOf(donor, 100, trust);
    std::vector<float> after = before;
    applyFineStructure(after, donor, envelope, trust, 0.8F);
    for (std::size_t i = 0; i < donor.size(); ++i) {
        std::vector<float> alone(1);
        trustOf(std::span(donor).subspan(i, 1), 100, alone);
        EXPECT_EQ(trust[i], alone[0]) << i;
        alone[0] = before[i];
        applyFineStructure(alone, std::span(donor).subspan(i, 1), std::span(envelope).subspan(i, 1),
                           std::span(trust).subspan(i, 1), 0.8F);
        EXPECT_EQ(after[i], alone[0]) << i;
    }
}

TEST(FineStructureDeathTest, SizesThatDoNotFitStopTheProgram) {
    const std::vector<float> three(3);
    std::vector<float> two(2);
    const std::vector<float> alsoTwo(2);
    EXPECT_DEATH(fromDecibels(three, 1, two), "size");
    EXPECT_DEATH(magnitudes(three, alsoTwo, two), "size");
    EXPECT_DEATH(magnitudes(alsoTwo, three, two), "size");
    EXPECT_DEATH(trustOf(three, 1, two), "size");
    EXPECT_DEATH(applyFineStructure(two, three, alsoTwo, alsoTwo, 1), "size");
    EXPECT_DEATH(applyFineStructure(two, alsoTwo, three, alsoTwo, 1), "size");
    EXPECT_DEATH(applyFineStructure(two, alsoTwo, alsoTwo, three, 1), "size");
}

}  // namespace
}  // namespace quillmere::Detail
