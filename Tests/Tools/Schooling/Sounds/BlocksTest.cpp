#include "Schooling/Sounds/Blocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <vector>

#include "Tools/Schooling/Sounds/SoundMeasures.h"

namespace quillmere::schooling {
namespace {

using testing::levelAt;
using testing::rootMeanSquare;

TEST(Dice, StaysWithinItsBounds) {
    Dice dice(1);
    for (int i = 0; i < 2000; ++i) {
        const double even = dice.between(-2, 3);
        EXPECT_TRUE(even >= -2 && even < 3) << even;
        const double logarithmic = dice.logBetween(20, 2000);
        EXPECT_TRUE(logarithmic >= 20 * (1 - 1e-12) && logarithmic < 2000) << logarithmic;
        const int whole = dice.from(2, 4);
        EXPECT_TRUE(whole >= 2 && whole <= 4) << whole;
    }
}

TEST(Dice, IsEvenOverTheLogarithm) {
    Dice dice(2);
    int below = 0;
    for (int i = 0; i < 4000; ++i)
        below += dice.logBetween(10, 1000) < 100 ? 1 : 0;
    EXPECT_NEAR(below, 2000, 130) << "four standard deviations";
}

TEST(Envelope, RisesHoldsAndDecays) {
    const Envelope envelope{.attack = 0.1, .hold = 0.2, .decay = 0.5};
    EXPECT_DOUBLE_EQ(envelope.at(0.05), 0.5);
    EXPECT_DOUBLE_EQ(envelope.at(0.1), 1);
    EXPECT_DOUBLE_EQ(envelope.at(0.25), 1);
    EXPECT_NEAR(envelope.at(0.8), std::exp(-1), 1e-12);
}

TEST(Glide, ArrivesExponentially) {
    const Glide glide{900, 100, 0.02};
    EXPECT_DOUBLE_EQ(glide.at(0), 900);
    EXPECT_NEAR(glide.at(0.02), 100 + 800 * std::exp(-1), 1e-9);
    EXPECT_NEAR(glide.at(1), 100, 1e-9);
}

TEST(Partial, IsADecayingSine) {
    Samples samples(4000);
    const Partial partial{1234, 0.7, 0.05, 0.4};
    partial.addTo(samples);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double seconds = static_cast<double>(i) / sampleRate;
        const double expected = 0.7 * std::exp(-seconds / 0.05) * std::sin(2 * M_PI * 1234 * seconds + 0.4);
        ASSERT_NEAR(samples[i], expected, 1e-6) << i;
    }
}

TEST(Partial, BeyondHalfTheRateIsNotThere) {
    Samples samples(100);
    Partial{.hz = 23000}.addTo(samples);
    EXPECT_EQ(samples, Samples(100));
}

TEST(Saw, HasHarmonicsThatFallByTheirNumber) {
    Saw saw(0);
    Samples samples(44100);
    for (float& sample : samples)
        sample = saw.next(441);
    const double first = levelAt(samples, 441);
    EXPECT_NEAR(levelAt(samples, 882), first - 6.02, 0.5);
    EXPECT_NEAR(levelAt(samples, 4410), first - 20, 1);
}

TEST(Saw, FoldsLittleBack) {
    Saw saw(0);
    Samples samples(44100);
    for (float& sample : samples)
        sample = saw.next(3001);
    // The eighth harmonic, 24008 Hz, would fold to 20092 Hz at 18 dB below the first.
    EXPECT_LT(levelAt(samples, 20092), levelAt(samples, 3001) - 25);
}

TEST(Filter, PassesWhatItShould) {
    const auto gainAt = [](Filter::Kind kind, double hz) {
        Samples samples(44100);
        Partial{hz, 1, 1e6, 0}.addTo(samples);
        Filter(kind, 1000, 0.7071).run(samples);
        return levelAt(samples, hz) - 20 * std::log10(0.5);
    };
    EXPECT_NEAR(gainAt(Filter::Kind::low, 100), 0, 0.1);
    EXPECT_NEAR(gainAt(Filter::Kind::low, 1000), -3, 0.1);
    EXPECT_LT(gainAt(Filter::Kind::low, 8000), -35);
    EXPECT_NEAR(gainAt(Filter::Kind::high, 8000), 0, 0.1);
    EXPECT_LT(gainAt(Filter::Kind::high, 100), -39);
    EXPECT_NEAR(gainAt(Filter::Kind::band, 1000), 0, 0.1);
    EXPECT_LT(gainAt(Filter::Kind::band, 50), -20);
}

TEST(Filter, StaysSteadyWhileItIsSwept) {
    Dice dice(3);
    Samples samples = noise(dice, 44100);
    Filter filter(Filter::Kind::low, 100, 8);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (i % 16 == 0) filter.tune(i % 32 == 0 ? 30 : 20000, 8);
        samples[i] = filter.next(samples[i]);
    }
    for (const float sample : samples)
        ASSERT_LT(std::abs(sample), 200);
}

TEST(BandNoise, LiesBetweenItsFrequencies) {
    Dice dice(4);
    const Samples samples = bandNoise(dice, 44100, 1000, 4000);
    const auto inBand = [&](double from, double to) {
        double sum = 0;
        for (int i = 0; i < 50; ++i)
            sum += std::pow(10, levelAt(samples, from + (to - from) * i / 50) / 10);
        return 10 * std::log10(sum / 50);
    };
    EXPECT_LT(inBand(50, 200), inBand(1500, 3000) - 15);
    EXPECT_LT(inBand(12000, 20000), inBand(1500, 3000) - 8);
}

TEST(StringLoop, SoundsAtItsPitch) {
    Dice dice(5);
    const Samples samples = StringLoop{.hz = 220, .loss = 0.999}.pluck(dice, 44100);
    double bestHz = 200;
    for (int i = 0; i < 80; ++i) {
        const double hz = 200 + 0.5 * i;
        if (levelAt(samples, 3 * hz) > levelAt(samples, 3 * bestHz)) bestHz = hz;
    }
    EXPECT_NEAR(bestHz, 220, 1.5);
    EXPECT_LT(rootMeanSquare(std::span(samples).subspan(40000)),
              rootMeanSquare(std::span(samples).first(4000)))
        << "it dies away";
}

TEST(Mixing, BringsToAPeakAndLeavesSilence) {
    Samples samples{0.1F, -0.4F, 0.2F};
    bringToPeak(samples, 1);
    EXPECT_FLOAT_EQ(samples[1], -1);
    Samples silent(3);
    bringToPeak(silent, 1);
    EXPECT_EQ(silent, Samples(3));
    add(samples, Samples{1, 1}, 0.5);
    EXPECT_FLOAT_EQ(samples[1], -0.5F);
}

}  // namespace
}  // namespace quillmere::schooling
