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
    const std::vector<float> dB{-100, -60, -20, 0, 6.0206F, 10, 1e9F, -1e9F, 20};
    std::vector<float> linear(dB.size());
    fromDecibels(dB, 2, linear);
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_NEAR(linear[i] / (2 * std::pow(10.0, dB[i] / 20.0)), 1, 2e-6) << dB[i];
    EXPECT_GT(linear[6], 1e37F);
    EXPECT_EQ(linear[7], 0.0F);
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

}  // namespace
}  // namespace quillmere::Detail
