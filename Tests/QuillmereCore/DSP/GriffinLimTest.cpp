#include "QuillmereCore/DSP/GriffinLim.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <optional>
#include <thread>
#include <utility>

#include "Support/InstructionSets.h"
#include "Support/NaiveTransform.h"
#include "Support/Signals.h"

namespace quillmere {
namespace {

using testing::InstructionSet;
using testing::noise;

constexpr float momentum = 0.99F;

std::vector<float> positiveNoise(std::size_t count) {
    std::vector<float> values = noise(3, count);
    for (float& value : values)
        value = std::abs(value);
    return values;
}

struct Shape {
    int nFFT, hop, frames;
    long long length;

    [[nodiscard]] std::vector<float> magnitude() const {
        return positiveNoise(static_cast<std::size_t>(frames * (nFFT / 2 + 1)));
    }
};

constexpr Shape usual{256, 64, 24, 24 * 64};

std::vector<float> reconstruct(const Shape& shape, std::span<const float> mag, long long iterations,
                               float factor = momentum, std::uint64_t seed = 11) {
    STFT stft(shape.nFFT, shape.hop);
    SeededRNG rng(seed);
    return GriffinLim::reconstruct(mag, shape.frames, shape.length, iterations, stft, rng, factor);
}

// The same computation step by step, through the transform, with the random phases in double.
std::vector<float> reference(const Shape& shape, std::span<const float> mag, long long iterations,
                             float factor = momentum, std::uint64_t seed = 11) {
    STFT stft(shape.nFFT, shape.hop);
    SeededRNG rng(seed);
    STFT::Spectrum estimate{std::vector<float>(mag.size()), std::vector<float>(mag.size())};
    for (std::size_t i = 0; i < mag.size(); ++i) {
        const float u = rng.uniform();
        const double phase = (u + u) * 3.1415927F;
        estimate.re[i] = static_cast<float>(static_cast<double>(mag[i]) * std::cos(phase));
        estimate.im[i] = static_cast<float>(static_cast<double>(mag[i]) * std::sin(phase));
    }
    STFT::Spectrum previous{std::vector<float>(mag.size()), std::vector<float>(mag.size())};
    for (long long pass = 0; pass < iterations; ++pass) {
        const STFT::Spectrum fresh =
            stft.forward(stft.inverse(estimate.re, estimate.im, shape.frames, shape.length), shape.frames);
        const float m = pass == 0 ? 0.0F : factor;
        for (std::size_t i = 0; i < mag.size(); ++i) {
            const float a = (fresh.re[i] - previous.re[i]) * m + fresh.re[i];
            const float b = (fresh.im[i] - previous.im[i]) * m + fresh.im[i];
            const float r = std::sqrt(a * a + b * b);
            estimate.re[i] = r > 1e-12F ? a * (mag[i] / r) : mag[i];
            estimate.im[i] = r > 1e-12F ? b * (mag[i] / r) : 0.0F;
        }
        previous = fresh;
    }
    return stft.inverse(estimate.re, estimate.im, shape.frames, shape.length);
}

// | |STFT(samples)| - mag | / | mag |.
double spectralConvergence(const Shape& shape, std::span<const float> mag, std::span<const float> samples) {
    STFT stft(shape.nFFT, shape.hop);
    const STFT::Spectrum spectrum = stft.forward(samples, shape.frames);
    double error = 0;
    double total = 0;
    for (std::size_t i = 0; i < mag.size(); ++i) {
        const double difference = std::hypot(spectrum.re[i], spectrum.im[i]) - mag[i];
        error += difference * difference;
        total += static_cast<double>(mag[i]) * mag[i];
    }
    return std::sqrt(error / total);
}

void expectClose(const std::vector<float>& actual, const std::vector<float>& expected, double tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t n = 0; n < actual.size(); ++n)
        ASSERT_NEAR(actual[n], expected[n], tolerance) << "sample " << n;
}

class GriffinLimShape : public ::testing::TestWithParam<Shape> {};

// Errors grow from pass to pass, because small entries take their phase from rounding noise; three passes
// keep them near the rounding of the samples.
TEST_P(GriffinLimShape, AgreesWithTheDefinition) {
    const Shape shape = GetParam();
    const std::vector<float> mag = shape.magnitude();
    for (const long long iterations : {0, 1, 3}) {
        const std::vector<float> expected = reference(shape, mag, iterations);
        for (const std::int64_t target : InstructionSet::available()) {
            const InstructionSet set(target);
            SCOPED_TRACE(InstructionSet::name(target) + ", passes " + std::to_string(iterations));
            const double scale = testing::rms(mag) / std::sqrt(shape.nFFT);  // of a frame's samples
            const double tolerance = (iterations == 0 ? 4e-6 : 2e-4) * scale;
            expectClose(reconstruct(shape, mag, iterations), expected, tolerance);
        }
    }
}

TEST_P(GriffinLimShape, SameBitsForAnyNumberOfLanes) {
    const Shape shape = GetParam();
    const std::vector<float> mag = shape.magnitude();
    for (const auto& group : {InstructionSet::fused(), InstructionSet::plain()}) {
        std::optional<std::vector<float>> first;
        for (const std::int64_t target : group) {
            const InstructionSet set(target);
            const std::vector<float> samples = reconstruct(shape, mag, 7);
            if (!first) first = samples;
            EXPECT_EQ(samples, *first) << InstructionSet::name(target);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, GriffinLimShape,
    ::testing::Values(Shape{256, 64, 24, 1536}, Shape{256, 64, 1, 64}, Shape{256, 64, 16, 1024},
                      Shape{256, 64, 17, 1088}, Shape{256, 64, 50, 3200},
                      Shape{256, 64, 24, 1000},  // shorter than the frames
                      Shape{256, 64, 24, 2000},  // longer
                      Shape{256, 64, 24, 0}, Shape{256, 64, 24, 1}, Shape{256, 160, 20, 3200},  // uneven hop
                      Shape{256, 300, 20, 6000},                                                // gaps
                      Shape{256, 7, 40, 280}, Shape{64, 1, 40, 40}, Shape{32, 16, 33, 528},
                      Shape{16, 4, 20, 80}, Shape{8, 2, 20, 40}, Shape{4, 1, 20, 20}, Shape{2, 1, 20, 20},
                      Shape{1, 1, 20, 20}, Shape{1024, 256, 40, 10240}, Shape{4096, 1024, 18, 18432}),
    [](const auto& test) {
        return "nFFT" + std::to_string(test.param.nFFT) + "hop" + std::to_string(test.param.hop) + "frames" +
               std::to_string(test.param.frames) + "length" + std::to_string(test.param.length);
    });

TEST(GriffinLim, WithoutPassesTheResultIsTheInverseOfRandomPhases) {
    const std::vector<float> mag = usual.magnitude();
    SeededRNG rng(11);
    STFT stft(256, 64);
    STFT::Spectrum estimate;
    for (const float value : mag) {
        const double u = rng.uniform();
        const double phase = 2 * std::numbers::pi * u;
        estimate.re.push_back(static_cast<float>(static_cast<double>(value) * std::cos(phase)));
        estimate.im.push_back(static_cast<float>(static_cast<double>(value) * std::sin(phase)));
    }
    expectClose(reconstruct(usual, mag, 0), stft.inverse(estimate.re, estimate.im, 24, 1536), 5e-7);
}

TEST(GriffinLim, DrawsOnceForEachEntryWhateverThePasses) {
    const std::vector<float> mag = usual.magnitude();
    SeededRNG expected(11);
    for (std::size_t i = 0; i < mag.size(); ++i)
        expected.next();
    for (const long long iterations : {-2, 0, 1, 5}) {
        STFT stft(256, 64);
        SeededRNG rng(11);
        (void)GriffinLim::reconstruct(mag, 24, 1536, iterations, stft, rng, momentum);
        EXPECT_EQ(rng, expected) << iterations << " passes";
    }
}

TEST(GriffinLim, NegativePassesAreNone) {
    const std::vector<float> mag = usual.magnitude();
    const std::vector<float> none = reconstruct(usual, mag, 0);
    EXPECT_EQ(reconstruct(usual, mag, -1), none);
    EXPECT_EQ(reconstruct(usual, mag, -1000000), none);
}

// The momentum has no say in the first pass.
TEST(GriffinLim, OnePassIsTheClassicStep) {
    const std::vector<float> mag = usual.magnitude();
    const std::vector<float> onePass = reconstruct(usual, mag, 1);
    EXPECT_EQ(onePass, reconstruct(usual, mag, 1, 0.0F));
    expectClose(onePass, reference(usual, mag, 1, 0.0F), 4e-5 * testing::rms(onePass));
}

TEST(GriffinLim, WithoutMomentumEveryPassIsTheClassicStep) {
    const std::vector<float> mag = usual.magnitude();
    const std::vector<float> expected = reference(usual, mag, 4, 0.0F);
    expectClose(reconstruct(usual, mag, 4, 0.0F), expected, 4e-5 * testing::rms(expected));
}

TEST(GriffinLim, TheSameSeedGivesTheSameBits) {
    const std::vector<float> mag = usual.magnitude();
    EXPECT_EQ(reconstruct(usual, mag, 48), reconstruct(usual, mag, 48));
    EXPECT_NE(reconstruct(usual, mag, 48), reconstruct(usual, mag, 48, momentum, 12));
}

TEST(GriffinLim, ReconstructionsOnSeveralThreadsGiveTheSameBits) {
    const std::vector<float> mag = usual.magnitude();
    const std::vector<float> expected = reconstruct(usual, mag, 10);
    std::vector<std::vector<float>> results(4);
    std::vector<std::thread> threads;
    for (std::vector<float>& result : results)
        threads.emplace_back([&] { result = reconstruct(usual, mag, 10); });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::vector<float>& result : results)
        EXPECT_EQ(result, expected);
}

TEST(GriffinLim, SilenceStaysSilent) {
    const std::vector<float> mag(24 * 129);
    for (const long long iterations : {0, 1, 48})
        EXPECT_EQ(reconstruct(usual, mag, iterations), std::vector<float>(1536)) << iterations << " passes";
}

// Frames 8 to 15 are silent; their entries have r = 0 wherever no other frame reaches.
TEST(GriffinLim, EntriesThatVanishTakeTheTargetWithoutPhase) {
    const Shape shape{64, 64, 16, 1024};
    std::vector<float> mag = shape.magnitude();
    std::fill(mag.begin() + 8 * 33, mag.end(), 0.0F);
    const std::vector<float> expected = reference(shape, mag, 2);
    expectClose(reconstruct(shape, mag, 2), expected, 4e-5 * testing::rms(expected));
}

// A NaN makes every entry near it NaN, and these fall back to their own magnitudes.
TEST(GriffinLim, NotANumberStaysWhereItIs) {
    const Shape shape{64, 16, 40, 600};  // ends within the frames
    std::vector<float> mag = shape.magnitude();
    mag[20 * 33 + 5] = std::nanf("");
    mag[39 * 33 + 5] = std::nanf("");  // beyond the end, where the signal counts as 0
    for (const long long iterations : {0, 1, 2, 5}) {
        const std::vector<float> expected = reference(shape, mag, iterations);
        for (const std::int64_t target : InstructionSet::available()) {
            const InstructionSet set(target);
            const std::vector<float> actual = reconstruct(shape, mag, iterations);
            for (std::size_t n = 0; n < actual.size(); ++n) {
                ASSERT_EQ(std::isnan(actual[n]), std::isnan(expected[n]))
                    << "sample " << n << ", " << InstructionSet::name(target) << ", passes " << iterations;
            }
        }
    }
}

TEST(GriffinLim, AnEmptyMagnitudeDrawsNothingAndIsSilent) {
    STFT stft(256, 64);
    SeededRNG rng(11);
    EXPECT_EQ(GriffinLim::reconstruct({}, 0, 100, 48, stft, rng, momentum), std::vector<float>(100));
    EXPECT_EQ(rng, SeededRNG(11));
}

TEST(GriffinLim, MorePassesComeCloserToTheMagnitude) {
    const Shape shape{256, 64, 40, 2560};
    STFT stft(256, 64);
    std::vector<float> signal = noise(4, 2560);
    for (std::size_t n = 0; n < signal.size(); ++n)
        signal[n] *= std::exp(-static_cast<float>(n) / 600);
    const STFT::Spectrum spectrum = stft.forward(signal, 40);
    std::vector<float> mag;
    for (std::size_t i = 0; i < spectrum.re.size(); ++i)
        mag.push_back(std::hypot(spectrum.re[i], spectrum.im[i]));
    const double random = spectralConvergence(shape, mag, reconstruct(shape, mag, 0));
    const double few = spectralConvergence(shape, mag, reconstruct(shape, mag, 8));
    const double many = spectralConvergence(shape, mag, reconstruct(shape, mag, 48));
    EXPECT_LT(few, 0.5 * random);
    EXPECT_LT(many, 0.7 * few);
    EXPECT_LT(many, 0.2);
}

TEST(GriffinLim, LeavesTheTransformAsItWas) {
    STFT stft(256, 64);
    const std::vector<float> signal = noise(5, 2000);
    const std::vector<float> before = stft.forward(signal).re;
    SeededRNG rng(1);
    (void)GriffinLim::reconstruct(usual.magnitude(), 24, 1536, 3, stft, rng, momentum);
    EXPECT_EQ(stft.forward(signal).re, before);
}

TEST(GriffinLimDeathTest, ImpossibleSizesAreRefused) {
    STFT stft(64, 16);
    SeededRNG rng(1);
    const std::vector<float> mag(66);
    EXPECT_DEATH((void)GriffinLim::reconstruct(mag, 3, 10, 1, stft, rng, momentum), "too small");
    EXPECT_DEATH((void)GriffinLim::reconstruct(mag, -1, 10, 1, stft, rng, momentum), "negative");
    EXPECT_DEATH((void)GriffinLim::reconstruct(mag, 2, -1, 1, stft, rng, momentum), "negative");
}

}  // namespace
}  // namespace quillmere
