#include "QuillmereCore/Generate/Detail/Sameness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "Support/Signals.h"

namespace quillmere::Detail {
namespace {

using Signal = std::vector<float>;

Signal late(const Signal& samples, std::size_t by) {
    Signal result(by);
    result.insert(result.end(), samples.begin(), samples.end());
    return result;
}

TEST(Sameness, OfASoundWithItselfIsOne) {
    const Signal noise = testing::noise(3, 20000);
    EXPECT_NEAR(sameness(noise, noise), 1, 1e-4);
}

TEST(Sameness, AsksNeitherForLevelNorForSign) {
    const Signal noise = testing::noise(3, 8000);
    Signal other = noise;
    for (float& sample : other)
        sample *= -0.01F;
    EXPECT_NEAR(sameness(noise, other), 1, 1e-4);
}

TEST(Sameness, FindsWhatIsALittleLate) {
    const Signal noise = testing::noise(3, 12000);
    EXPECT_GT(sameness(noise, late(noise, 37)), 0.99F);
    EXPECT_GT(sameness(late(noise, 63), noise), 0.99F);
    EXPECT_LT(sameness(noise, late(noise, 100)), 0.1F);
}

TEST(Sameness, OfStrangersIsSmall) {
    EXPECT_LT(sameness(testing::noise(3, 16384), testing::noise(4, 16384)), 0.05F);
}

TEST(Sameness, IsTheShareThatIsCommon) {
    const Signal noise = testing::noise(3, 16384);
    const Signal other = testing::noise(4, 16384);
    Signal mix(noise.size());
    for (std::size_t i = 0; i < mix.size(); ++i)
        mix[i] = 0.8F * noise[i] + 0.6F * other[i];
    EXPECT_NEAR(sameness(mix, noise), 0.8, 0.03);
}

TEST(Sameness, OfSilenceIsNone) {
    EXPECT_EQ(sameness(Signal(1000), testing::noise(3, 1000)), 0);
    EXPECT_EQ(sameness({}, {}), 0);
}

TEST(Sameness, LooksAtTheBeginningOnly) {
    Signal noise = testing::noise(3, 2 * samplesCompared);
    Signal other = testing::noise(4, 2 * samplesCompared);
    std::copy_n(noise.begin(), samplesCompared, other.begin());
    EXPECT_NEAR(sameness(noise, other), 1, 1e-4);
}

}  // namespace
}  // namespace quillmere::Detail
