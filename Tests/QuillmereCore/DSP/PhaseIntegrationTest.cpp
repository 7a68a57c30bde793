#include "QuillmereCore/DSP/PhaseIntegration.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <set>
#include <vector>

#include "QuillmereCore/DSP/RankQueue.h"
#include "QuillmereCore/DSP/STFT.h"
#include "QuillmereCore/Util/RNG.h"
#include "Support/InstructionSets.h"
#include "Support/Signals.h"

namespace quillmere {
namespace {

using PhaseIntegration::Phase;
using PhaseIntegration::Shape;
using testing::InstructionSet;

std::vector<Phase> randomPhases(std::size_t count, std::uint64_t seed = 9) {
    SeededRNG rng(seed);
    std::vector<Phase> phases(count);
    for (Phase& phase : phases)
        phase = static_cast<Phase>(rng.next());
    return phases;
}

std::vector<float> magnitudesOf(const STFT::Spectrum& spectrum) {
    std::vector<float> magnitudes(spectrum.re.size());
    for (std::size_t i = 0; i < magnitudes.size(); ++i)
        magnitudes[i] = std::hypot(spectrum.re[i], spectrum.im[i]);
    return magnitudes;
}

// How far the transform of the sound with these phases is from the magnitudes, relative to them.
double inconsistency(const std::vector<float>& mag, const std::vector<Phase>& phases, STFT& stft,
                     int frames) {
    std::vector<float> re(mag.size());
    std::vector<float> im(mag.size());
    PhaseIntegration::toSpectrum(mag, phases, re, im);
    const std::vector<float> sound =
        stft.inverse(re, im, frames, static_cast<long long>(frames) * stft.hop());
    const std::vector<float> found = magnitudesOf(stft.forward(sound, frames));
    double error = 0;
    double norm = 0;
    for (std::size_t i = 0; i < mag.size(); ++i) {
        error += std::pow(static_cast<double>(found[i]) - static_cast<double>(mag[i]), 2);
        norm += std::pow(static_cast<double>(mag[i]), 2);
    }
    return std::sqrt(error / norm);
}

TEST(RankQueue, GivesTheLowestFirst) {
    for (const std::size_t size : {1U, 63U, 64U, 65U, 4096U, 4097U, 300000U}) {
        RankQueue queue(size);
        std::set<std::uint32_t> expected;
        SeededRNG rng(size);
        for (int i = 0; i < 5000; ++i) {
            const auto number = static_cast<std::uint32_t>(rng.next() % size);
            if (rng.uniform() < 0.6F) {
                if (expected.insert(number).second) queue.insert(number);
            } else if (!expected.empty()) {
                ASSERT_EQ(queue.takeLowest(), *expected.begin());
                expected.erase(expected.begin());
            }
            ASSERT_EQ(queue.isEmpty(), expected.empty());
        }
    }
}

TEST(RankQueue, WithoutRoomIsEmpty) {
    EXPECT_TRUE(RankQueue(0).isEmpty());
}

// Phases from the magnitudes alone, against random ones.
TEST(PhaseIntegration, FindsPhasesThatFitTheMagnitudesOfRealSounds) {
    constexpr int frames = 60;
    for (const int hop : {64, 128}) {
        STFT stft(256, hop);
        std::vector<float> sound = testing::sine(440, 8000, static_cast<std::size_t>(frames * hop));
        const std::vector<float> noise = testing::noise(4, sound.size(), 0.2F);
        for (std::size_t i = 0; i < sound.size(); ++i)
            sound[i] = (sound[i] + noise[i]) * std::exp(-0.0005F * static_cast<float>(i));
        const std::vector<float> mag = magnitudesOf(stft.forward(sound, frames));
        std::vector<Phase> phases = randomPhases(mag.size());
        const double random = inconsistency(mag, phases, stft, frames);
        PhaseIntegration::integrate(mag, {frames, 256, hop}, {}, phases);
        EXPECT_LT(inconsistency(mag, phases, stft, frames), 0.45 * random) << hop;
    }
}

TEST(PhaseIntegration, FollowsASinusoid) {
    constexpr int frames = 40;
    STFT stft(256, 64);
    const STFT::Spectrum spectrum = stft.forward(testing::sine(1000, 8000, frames * 64), frames);
    const std::vector<float> mag = magnitudesOf(spectrum);
    std::vector<Phase> phases = randomPhases(mag.size());
    PhaseIntegration::integrate(mag, {frames, 256, 64}, {}, phases);
    constexpr std::size_t bin = 32;  // 1 kHz
    for (std::size_t t = 6; t + 6 < frames; ++t) {
        const std::size_t here = t * 129 + bin;
        const auto advance = static_cast<std::int32_t>(phases[here + 129] - phases[here]);
        EXPECT_NEAR(advance, 0, 1 << 22) << t;  // 64 samples of 1 kHz at 8 kHz: eight turns
    }
}

TEST(PhaseIntegration, KnownPhasesStayAndSpread) {
    const Shape shape{12, 64, 16};
    const std::vector<float> mag = testing::noise(1, 12 * 33);
    std::vector<float> positive(mag);
    for (float& value : positive)
        value = std::abs(value) + 0.1F;
    const std::vector<std::uint8_t> known(2 * 33, 1);
    const std::vector<Phase> given = randomPhases(positive.size(), 3);
    std::vector<Phase> first = given;
    PhaseIntegration::integrate(positive, shape, known, first);
    EXPECT_TRUE(std::equal(given.begin(), given.begin() + 66, first.begin()));
    // With nothing left to start from, the other phases on entry do not matter.
    std::vector<Phase> second = randomPhases(positive.size(), 4);
    std::copy_n(given.begin(), 66, second.begin());
    PhaseIntegration::integrate(positive, shape, known, second);
    EXPECT_EQ(first, second);
}

TEST(PhaseIntegration, BinsBelowTheRangeKeepTheirPhases) {
    const Shape shape{6, 32, 8};
    std::vector<float> mag(6 * 17, 1e-5F);
    mag[2 * 17 + 5] = 1;
    const std::vector<Phase> before = randomPhases(mag.size());
    std::vector<Phase> phases = before;
    PhaseIntegration::integrate(mag, shape, {}, phases);
    EXPECT_EQ(phases, before);
}

TEST(PhaseIntegration, EachRegionStartsFromItsLoudestBin) {
    const Shape shape{5, 32, 8};
    std::vector<float> mag(5 * 17, 1e-6F);
    for (const std::size_t row : {0U, 4U}) {
        for (std::size_t k = 3; k < 9; ++k)
            mag[row * 17 + k] = 0.2F + 0.1F * static_cast<float>(k == 6);
    }
    const std::vector<Phase> before = randomPhases(mag.size());
    std::vector<Phase> phases = before;
    PhaseIntegration::integrate(mag, shape, {}, phases);
    for (const std::size_t row : {0U, 4U}) {
        EXPECT_EQ(phases[row * 17 + 6], before[row * 17 + 6]);
        EXPECT_NE(phases[row * 17 + 5], before[row * 17 + 5]);
    }
}

TEST(PhaseIntegration, DCAndNyquistTakePartAsTheirNeighbours) {
    const Shape shape{8, 32, 8};
    std::vector<float> mag = testing::noise(2, 8 * 17);
    for (float& value : mag)
        value = std::abs(value) + 0.1F;
    std::vector<float> other = mag;
    for (std::size_t t = 0; t < 8; ++t)
        other[t * 17] = other[t * 17 + 16] = 100;
    std::vector<Phase> phases = randomPhases(mag.size());
    std::vector<Phase> otherPhases = phases;
    PhaseIntegration::integrate(mag, shape, {}, phases);
    PhaseIntegration::integrate(other, shape, {}, otherPhases);
    EXPECT_EQ(phases, otherPhases);
}

TEST(PhaseIntegration, LeavesWhatIsNotFiniteAndSilenceAlone) {
    const Shape shape{4, 32, 8};
    const std::vector<Phase> before = randomPhases(4 * 17);
    for (const float value :
         {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(), 0.0F}) {
        std::vector<float> mag(4 * 17, value == 0 ? 0.0F : 0.5F);
        mag[30] = value;
        std::vector<Phase> phases = before;
        PhaseIntegration::integrate(mag, shape, {}, phases);
        EXPECT_EQ(phases, before) << value;
    }
    std::vector<Phase> none;
    PhaseIntegration::integrate({}, {0, 32, 8}, {}, none);
}

TEST(PhaseIntegration, SpectrumHasTheMagnitudesAndPhases) {
    const std::vector<float> mag = testing::noise(5, 103);
    const std::vector<Phase> phases = randomPhases(mag.size());
    std::vector<float> re(mag.size());
    std::vector<float> im(mag.size());
    PhaseIntegration::toSpectrum(mag, phases, re, im);
    for (std::size_t i = 0; i < mag.size(); ++i) {
        const double radians = 2 * std::numbers::pi * static_cast<double>(phases[i]) / 4294967296.0;
        EXPECT_NEAR(re[i], static_cast<double>(mag[i]) * std::cos(radians), 2e-7) << i;
        EXPECT_NEAR(im[i], static_cast<double>(mag[i]) * std::sin(radians), 2e-7) << i;
    }
}

TEST(PhaseIntegration, PhaseOfIsTheOneOfTheSpectrum) {
    for (const Phase phase : {0U, 1U << 29, 1U << 30, 3U << 30, 0xF0000000U, 0x12345678U}) {
        std::vector<float> re(1);
        std::vector<float> im(1);
        PhaseIntegration::toSpectrum(std::vector<float>{2.5F}, std::vector<Phase>{phase}, re, im);
        const auto off = static_cast<std::int32_t>(PhaseIntegration::phaseOf(re[0], im[0]) - phase);
        EXPECT_LT(std::abs(off), 1 << 9) << phase;
    }
    EXPECT_EQ(PhaseIntegration::phaseOf(0, 0), 0U);
}

TEST(PhaseIntegration, ProcessorsWithFusedMultiplyAddGiveTheSameBits) {
    std::vector<float> mag = testing::noise(6, 30 * 129);
    for (float& value : mag)
        value = std::abs(value);
    std::vector<Phase> first;
    for (const std::int64_t target : InstructionSet::fused()) {
        const InstructionSet set(target);
        std::vector<Phase> phases = randomPhases(mag.size());
        PhaseIntegration::integrate(mag, {30, 256, 64}, {}, phases);
        if (first.empty()) first = phases;
        EXPECT_EQ(phases, first) << InstructionSet::name(target);
    }
}

TEST(PhaseIntegrationDeathTest, ImpossibleSizesStopTheProgram) {
    std::vector<Phase> phases(34);
    const std::vector<float> mag(34);
    EXPECT_DEATH(PhaseIntegration::integrate(mag, {3, 32, 8}, {}, phases), "size");
    EXPECT_DEATH(PhaseIntegration::integrate(mag, {2, 33, 8}, {}, phases), "shape");
    EXPECT_DEATH(PhaseIntegration::integrate(mag, {2, 32, 0}, {}, phases), "shape");
}

}  // namespace
}  // namespace quillmere
