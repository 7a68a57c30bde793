#include "Schooling/Sounds/Sounds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Model/ClipPreparation.h"
#include "Schooling/Sounds/Tonal.h"
#include "Tools/Schooling/Sounds/SoundMeasures.h"

namespace quillmere::schooling {
namespace {

using testing::meanFrequency;
using testing::rootMeanSquare;

// Draws of one family as they are before anything happens to them.
std::vector<Samples> drawsOf(const Family& family, int count, double seconds) {
    std::vector<Samples> draws;
    for (int i = 0; i < count; ++i) {
        Dice dice(static_cast<std::uint64_t>(100 + i));
        draws.push_back(family.make(dice, samplesIn(seconds)));
        bringToPeak(draws.back(), 1);
    }
    return draws;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

double medianFrequency(std::string_view name) {
    for (const Family& family : percussiveFamilies) {
        if (family.name != name) continue;
        std::vector<double> values;
        for (const Samples& draw : drawsOf(family, 15, 0.4))
            values.push_back(meanFrequency(draw));
        return median(values);
    }
    return 0;
}

double medianFlatness(const Family& family) {
    std::vector<double> values;
    for (const Samples& draw : drawsOf(family, 7, 0.5))
        values.push_back(DecodedClip{.name = {}, .samples = draw}.flatness(sampleRate));
    return median(values);
}

// ---- Families

std::vector<Family> allFamilies() {
    std::vector<Family> families(percussiveFamilies.begin(), percussiveFamilies.end());
    families.insert(families.end(), tonalFamilies.begin(), tonalFamilies.end());
    return families;
}

TEST(Families, GiveFiniteSoundsOfTheLengthAskedFor) {
    for (const Family& family : allFamilies()) {
        for (const double seconds : {0.05, 0.4}) {
            for (const Samples& draw : drawsOf(family, 5, seconds)) {
                ASSERT_EQ(draw.size(), samplesIn(seconds)) << family.name;
                for (const float sample : draw)
                    ASSERT_TRUE(std::isfinite(sample) && std::abs(sample) <= 1.0001F) << family.name;
            }
        }
    }
}

TEST(Families, AreNeverSilentAndDifferFromDrawToDraw) {
    for (const Family& family : allFamilies()) {
        const auto draws = drawsOf(family, 5, 0.3);
        for (const Samples& draw : draws)
            EXPECT_GT(rootMeanSquare(draw), 1e-3) << family.name;
        EXPECT_NE(draws[0], draws[1]) << family.name;
    }
}

TEST(PercussiveFamilies, LieWhereDrumsDo) {
    EXPECT_LT(medianFrequency("kick"), 700);
    EXPECT_GT(medianFrequency("snare"), medianFrequency("kick"));
    EXPECT_GT(medianFrequency("hat"), 5000);
    EXPECT_GT(medianFrequency("shaker"), 4000);
    EXPECT_LT(medianFrequency("hand drum"), medianFrequency("hat"));
}

TEST(TonalFamilies, HavePartialsAndNotNoise) {
    for (const Family& family : tonalFamilies) {
        if (family.name != "texture" && family.name != "sentence") {
            EXPECT_LT(medianFlatness(family), 0.2) << family.name;
        }
    }
}

// ---- Whole sounds

class Sounds : public ::testing::TestWithParam<AnalysisProfile> {};

TEST_P(Sounds, AreTheSameBytesForTheSameNumbers) {
    for (const std::uint64_t index : {0, 7, 4000})
        EXPECT_EQ(makeSound(GetParam(), 1, index), makeSound(GetParam(), 1, index));
    EXPECT_NE(makeSound(GetParam(), 1, 7), makeSound(GetParam(), 1, 8));
    EXPECT_NE(makeSound(GetParam(), 1, 7), makeSound(GetParam(), 2, 7));
}

TEST_P(Sounds, HaveFullLevelAndNoDamage) {
    for (std::uint64_t index = 0; index < 60; ++index) {
        const Samples samples = makeSound(GetParam(), 3, index);
        float peak = 0;
        for (const float sample : samples) {
            ASSERT_TRUE(std::isfinite(sample));
            peak = std::max(peak, std::abs(sample));
        }
        EXPECT_NEAR(peak, 1, 1e-5) << index;
        EXPECT_TRUE(ClipPreparation::trimAndNormalise(samples, sampleRate)) << index;
    }
}

TEST_P(Sounds, HaveManyLengths) {
    std::set<std::size_t> lengths;
    for (std::uint64_t index = 0; index < 40; ++index)
        lengths.insert(makeSound(GetParam(), 4, index).size() / 4410);
    EXPECT_GT(lengths.size(), 8U);
}

INSTANTIATE_TEST_SUITE_P(Both, Sounds, ::testing::Values(AnalysisProfile::percussive, AnalysisProfile::tonal),
                         [](const auto& of) { return std::string(rawValue(of.param)); });

TEST(Treatment, RoomGoesOnWhereTheSoundHasEnded) {
    Dice dice(1);
    Samples samples(22050);
    samples[0] = 1;
    addRoom(dice, samples);
    EXPECT_GT(rootMeanSquare(std::span(samples).subspan(2205)), 1e-6);
    EXPECT_LT(rootMeanSquare(std::span(samples).last(2205)), rootMeanSquare(std::span(samples).first(4410)));
}

TEST(Treatment, HissStaysLow) {
    Dice dice(1);
    Samples samples(44100);
    addHiss(dice, samples);
    const double level = 20 * std::log10(rootMeanSquare(samples));
    EXPECT_GT(level, -80);
    EXPECT_LT(level, -40);
}

TEST(Treatment, ACutSoundEndsInSilence) {
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        Dice dice(seed);
        Samples samples(22050, 1.0F);
        cutAndFade(dice, samples);
        EXPECT_LE(samples.size(), 22050U);
        EXPECT_GE(samples.size(), 22050U * 3 / 10);
        EXPECT_EQ(samples.back(), 0);
        EXPECT_EQ(samples.front(), 1);
    }
}

}  // namespace
}  // namespace quillmere::schooling
