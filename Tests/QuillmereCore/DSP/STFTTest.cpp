#include "QuillmereCore/DSP/STFT.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <thread>
#include <utility>

#include "Support/Guarded.h"
#include "Support/InstructionSets.h"
#include "Support/NaiveTransform.h"
#include "Support/Signals.h"

namespace quillmere {
namespace {

using testing::Guarded;
using testing::InstructionSet;
using testing::noise;

double hann(int i, int n) {
    return 0.5 - 0.5 * std::cos(2 * std::numbers::pi * i / n);
}

// Frame t of the signal by the definition, windowed.
std::vector<float> windowedFrame(const STFT& stft, const std::vector<float>& signal, int t) {
    std::vector<float> frame(static_cast<std::size_t>(stft.nFFT()));
    for (int i = 0; i < stft.nFFT(); ++i) {
        const long long n = static_cast<long long>(t) * stft.hop() - stft.nFFT() / 2 + i;
        if (n < 0 || n >= static_cast<long long>(signal.size())) continue;
        frame[static_cast<std::size_t>(i)] = static_cast<float>(
            static_cast<double>(signal[static_cast<std::size_t>(n)]) * hann(i, stft.nFFT()));
    }
    return frame;
}

// The inverse by its definition, in double.
std::vector<double> naiveInverse(const STFT& stft, const STFT::Spectrum& spectrum, int frames,
                                 std::size_t length) {
    const auto bins = static_cast<std::size_t>(stft.bins());
    std::vector<double> samples(length);
    std::vector<double> weights(length);
    for (int t = 0; t < frames; ++t) {
        const std::size_t row = static_cast<std::size_t>(t) * bins;
        const std::vector<double> frame = testing::naiveInverseDFT(std::span(spectrum.re).subspan(row, bins),
                                                                   std::span(spectrum.im).subspan(row, bins),
                                                                   static_cast<std::size_t>(stft.nFFT()));
        for (int i = 0; i < stft.nFFT(); ++i) {
            const long long n = static_cast<long long>(t) * stft.hop() - stft.nFFT() / 2 + i;
            if (n < 0 || n >= static_cast<long long>(length)) continue;
            const double w = hann(i, stft.nFFT());
            samples[static_cast<std::size_t>(n)] += frame[static_cast<std::size_t>(i)] * w;
            weights[static_cast<std::size_t>(n)] += w * w;
        }
    }
    const double floor = 0.075 * stft.nFFT() / stft.hop();
    for (std::size_t n = 0; n < length; ++n)
        samples[n] /= std::max(weights[n], floor);
    return samples;
}

STFT::Spectrum randomSpectrum(const STFT& stft, int frames) {
    const auto size = static_cast<std::size_t>(frames * stft.bins());
    return {noise(31, size), noise(32, size)};
}

TEST(STFT, FrameCountIsOneMoreThanTheWholeHops) {
    const STFT stft(1024, 256);
    EXPECT_EQ(stft.frameCount(0), 1);
    EXPECT_EQ(stft.frameCount(1000), 4);
    EXPECT_EQ(stft.frameCount(255), 1);
    EXPECT_EQ(stft.frameCount(256), 2);
}

TEST(STFT, BinsCountDCAndNyquist) {
    EXPECT_EQ(STFT(1024, 256).bins(), 513);
    EXPECT_EQ(STFT(2, 1).bins(), 2);
    EXPECT_EQ(STFT(1, 1).bins(), 1);
}

TEST(STFT, WindowIsAPeriodicHannWindow) {
    for (const int n : {2, 8, 256, 4096}) {
        const STFT stft(n, 1);
        ASSERT_EQ(stft.window().size(), static_cast<std::size_t>(n));
        EXPECT_EQ(stft.window()[0], 0.0F);
        EXPECT_EQ(stft.window()[static_cast<std::size_t>(n / 2)], 1.0F);
        for (int i = 0; i < n; ++i)
            EXPECT_NEAR(stft.window()[static_cast<std::size_t>(i)], hann(i, n), 5e-7) << i << " of " << n;
        if (n > 2) {
            EXPECT_GT(stft.window().back(), 0.0F) << "a second zero at the end of " << n;
        }
    }
}

TEST(STFT, MagnitudeNormalizationIsTwoOverTheWindowSum) {
    for (const int n : {8, 512, 1024, 4096})
        EXPECT_NEAR(STFT(n, n / 4).magnitudeNormalization() * static_cast<float>(n), 4.0F, 1e-4F) << n;
}

TEST(STFT, AFullScaleSineOnABinCentreHasMagnitudeOne) {
    STFT stft(1024, 256);
    const STFT::Spectrum spectrum = stft.forward(testing::sine(100, 1024, 4096), 9);
    const std::size_t at = 5 * 513 + 100;
    EXPECT_NEAR(std::hypot(spectrum.re[at], spectrum.im[at]) * stft.magnitudeNormalization(), 1.0F, 1e-5F);
}

// A unit impulse under the window's peak (w[4] = 1): every bin has magnitude 1, unscaled.
TEST(STFT, ForwardOfCentredImpulseIsFlat) {
    STFT stft(8, 2);
    const STFT::Spectrum spectrum = stft.forward(std::vector<float>{1.0F}, 1);
    ASSERT_EQ(spectrum.re.size(), 5U);
    for (std::size_t k = 0; k < 5; ++k) {
        EXPECT_NEAR(std::hypot(spectrum.re[k], spectrum.im[k]), 1.0F, 1e-6F) << "bin " << k;
        // At position 4 of 8 the phase alternates.
        EXPECT_NEAR(spectrum.re[k], k % 2 == 0 ? 1.0F : -1.0F, 1e-6F) << "bin " << k;
    }
}

// The Hann window's own spectrum: nFFT / 2 at DC, -nFFT / 4 beside it, nothing elsewhere.
TEST(STFT, ForwardOfOnesIsTheWindowsSpectrum) {
    STFT stft(256, 64);
    const STFT::Spectrum spectrum = stft.forward(std::vector<float>(2000, 1.0F));
    for (std::size_t t = 2; t < 28; ++t) {
        const float* const re = &spectrum.re[t * 129];
        const float* const im = &spectrum.im[t * 129];
        EXPECT_NEAR(re[0], 128.0F, 1e-4F) << "frame " << t;
        EXPECT_NEAR(re[1], -64.0F, 1e-4F) << "frame " << t;
        for (std::size_t k = 2; k < 129; ++k)
            EXPECT_NEAR(std::hypot(re[k], im[k]), 0.0F, 1e-4F) << "frame " << t << " bin " << k;
    }
}

TEST(STFT, ForwardLeavesDCAndNyquistReal) {
    STFT stft(64, 16);
    const STFT::Spectrum spectrum = stft.forward(noise(1, 1000));
    for (std::size_t t = 0; t < spectrum.im.size() / 33; ++t) {
        EXPECT_EQ(spectrum.im[t * 33], 0.0F);
        EXPECT_EQ(spectrum.im[t * 33 + 32], 0.0F);
    }
}

TEST(STFT, ForwardOfNothingIsOneSilentFrame) {
    STFT stft(64, 16);
    const STFT::Spectrum spectrum = stft.forward({});
    EXPECT_EQ(spectrum.re, std::vector<float>(33));
    EXPECT_EQ(spectrum.im, std::vector<float>(33));
}

TEST(STFT, FramesBeyondTheSignalAreSilent) {
    STFT stft(64, 16);
    const STFT::Spectrum spectrum = stft.forward(noise(1, 100), 20);
    // Frame 8 reaches from 96 to 159; frame 9 begins at 112, past the end.
    const auto silent = [&](std::size_t t) {
        return std::ranges::all_of(std::span(spectrum.re).subspan(t * 33, 33),
                                   [](float v) { return v == 0; });
    };
    EXPECT_FALSE(silent(8));
    for (std::size_t t = 9; t < 20; ++t)
        EXPECT_TRUE(silent(t)) << "frame " << t;
}

TEST(STFT, FewerFramesAreTheFirstOfAll) {
    STFT stft(128, 32);
    const std::vector<float> signal = noise(2, 3000);
    const STFT::Spectrum all = stft.forward(signal);
    const STFT::Spectrum few = stft.forward(signal, 5);
    ASSERT_EQ(few.re.size(), 5U * 65);
    EXPECT_TRUE(std::ranges::equal(few.re, std::span(all.re).first(5 * 65)));
    EXPECT_TRUE(std::ranges::equal(few.im, std::span(all.im).first(5 * 65)));
}

TEST(STFT, NoFramesGiveEmptySpectra) {
    STFT stft(128, 32);
    const STFT::Spectrum spectrum = stft.forward(noise(2, 300), 0);
    EXPECT_TRUE(spectrum.re.empty());
    EXPECT_TRUE(spectrum.im.empty());
}

TEST(STFT, TheFillingFormGivesTheSameBitsAndWritesNothingElse) {
    STFT stft(256, 64);
    const std::vector<float> signal = noise(3, 5000);
    const STFT::Spectrum expected = stft.forward(signal, 21);
    Guarded re(21 * 129);
    Guarded im(21 * 129);
    stft.forward(signal, 21, re.span(), im.span());
    EXPECT_TRUE(re.intact() && im.intact());
    EXPECT_TRUE(std::ranges::equal(re.span(), expected.re));
    EXPECT_TRUE(std::ranges::equal(im.span(), expected.im));
}

TEST(STFT, TheFillingFormLeavesTheRestOfLargerArraysAlone) {
    STFT stft(64, 16);
    std::vector<float> re(5 * 33, 7.0F);
    std::vector<float> im(5 * 33, 7.0F);
    stft.forward(noise(3, 200), 3, re, im);
    for (std::size_t i = 3 * 33; i < re.size(); ++i) {
        EXPECT_EQ(re[i], 7.0F);
        EXPECT_EQ(im[i], 7.0F);
    }
}

struct Shape {
    int nFFT, hop;
    std::size_t samples;
};

std::string shapeName(const ::testing::TestParamInfo<Shape>& test) {
    return "nFFT" + std::to_string(test.param.nFFT) + "hop" + std::to_string(test.param.hop) + "samples" +
           std::to_string(test.param.samples);
}

class STFTShape : public ::testing::TestWithParam<Shape> {};

TEST_P(STFTShape, ForwardIsThePlainDFTOfEachWindowedFrame) {
    const auto [nFFT, hop, samples] = GetParam();
    const std::vector<float> signal = noise(4, samples);
    STFT stft(nFFT, hop);
    const int frames = std::min(stft.frameCount(static_cast<long long>(samples)) + 1, 4);
    const STFT::Spectrum spectrum = stft.forward(signal, frames);
    const auto bins = static_cast<std::size_t>(stft.bins());
    // The window itself is rounded: 6e-8 per sample, which adds up like noise.
    const double tolerance = 2e-7 * (2 + std::log2(nFFT)) * std::sqrt(nFFT);
    for (int t = 0; t < frames; ++t) {
        const auto expected = testing::naiveDFT(windowedFrame(stft, signal, t));
        for (std::size_t k = 0; k < bins; ++k) {
            const std::size_t at = static_cast<std::size_t>(t) * bins + k;
            const std::complex<double> bin(spectrum.re[at], spectrum.im[at]);
            ASSERT_LE(std::abs(bin - expected[k]), tolerance) << "frame " << t << " bin " << k;
        }
    }
}

TEST_P(STFTShape, InverseIsTheNormalisedOverlapAdd) {
    const auto [nFFT, hop, samples] = GetParam();
    STFT stft(nFFT, hop);
    const int frames = std::min(stft.frameCount(static_cast<long long>(samples)), 4);
    const STFT::Spectrum spectrum = randomSpectrum(stft, frames);
    const std::vector<double> expected = naiveInverse(stft, spectrum, frames, samples);
    const std::vector<float> actual =
        stft.inverse(spectrum.re, spectrum.im, frames, static_cast<long long>(samples));
    ASSERT_EQ(actual.size(), samples);
    for (std::size_t n = 0; n < samples; ++n)
        ASSERT_NEAR(actual[n], expected[n], 4e-6) << "sample " << n;
}

// At a quarter of a frame or less the squared windows cover every sample well above the floor, half a frame
// from the ends.
TEST_P(STFTShape, RoundTripReproducesTheInterior) {
    const auto [nFFT, hop, samples] = GetParam();
    if (hop > nFFT / 4 || samples <= static_cast<std::size_t>(nFFT)) return;
    STFT stft(nFFT, hop);
    const std::vector<float> signal = noise(5, samples);
    const STFT::Spectrum spectrum = stft.forward(signal);
    const std::vector<float> back =
        stft.inverse(spectrum.re, spectrum.im, stft.frameCount(static_cast<long long>(samples)),
                     static_cast<long long>(samples));
    const auto half = static_cast<std::size_t>(nFFT / 2);
    for (std::size_t n = half; n + half < samples; ++n)
        ASSERT_NEAR(back[n], signal[n], 1e-5) << "sample " << n;
}

TEST_P(STFTShape, SameBitsForAnyNumberOfLanes) {
    const auto [nFFT, hop, samples] = GetParam();
    const std::vector<float> signal = noise(6, samples);
    for (const auto& group : {InstructionSet::fused(), InstructionSet::plain()}) {
        std::vector<float> first;
        for (const std::int64_t target : group) {
            const InstructionSet set(target);
            STFT stft(nFFT, hop);
            const int frames = stft.frameCount(static_cast<long long>(samples));
            const STFT::Spectrum spectrum = stft.forward(signal, frames);
            std::vector<float> all =
                stft.inverse(spectrum.re, spectrum.im, frames, static_cast<long long>(samples));
            all.insert(all.end(), spectrum.re.begin(), spectrum.re.end());
            all.insert(all.end(), spectrum.im.begin(), spectrum.im.end());
            if (target == group.front()) first = all;
            EXPECT_EQ(all, first) << InstructionSet::name(target);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Shapes, STFTShape,
                         ::testing::Values(Shape{1, 1, 9}, Shape{2, 1, 9}, Shape{4, 1, 20}, Shape{8, 2, 50},
                                           Shape{16, 4, 100}, Shape{32, 8, 300}, Shape{64, 16, 1},
                                           Shape{128, 48, 1000}, Shape{256, 64, 2048}, Shape{256, 160, 900},
                                           Shape{256, 300, 2000}, Shape{512, 128, 100},
                                           Shape{1024, 256, 6000}, Shape{2048, 512, 7000},
                                           Shape{4096, 1024, 9000}, Shape{8192, 2048, 9000}),
                         shapeName);

TEST(STFT, RoundTripOfWhiteNoiseReproducesTheInterior) {
    STFT stft(1024, 256);
    const std::vector<float> signal = noise(77, 22050);
    const STFT::Spectrum spectrum = stft.forward(signal);
    const std::vector<float> back = stft.inverse(spectrum.re, spectrum.im, stft.frameCount(22050), 22050);
    for (std::size_t n = 512; n < 22050 - 512; ++n)
        ASSERT_NEAR(back[n], signal[n], 1e-5) << "sample " << n;
}

TEST(STFT, InverseOfNoFramesIsSilence) {
    STFT stft(64, 16);
    EXPECT_EQ(stft.inverse({}, {}, 0, 50), std::vector<float>(50));
}

TEST(STFT, InverseToLengthZeroIsEmpty) {
    STFT stft(64, 16);
    const STFT::Spectrum spectrum = randomSpectrum(stft, 3);
    EXPECT_TRUE(stft.inverse(spectrum.re, spectrum.im, 3, 0).empty());
}

TEST(STFT, InverseIsAsLongAsAskedWhateverTheFrames) {
    STFT stft(64, 16);
    const STFT::Spectrum spectrum = randomSpectrum(stft, 6);
    const std::vector<float> shorter = stft.inverse(spectrum.re, spectrum.im, 6, 30);
    const std::vector<float> longer = stft.inverse(spectrum.re, spectrum.im, 6, 500);
    ASSERT_EQ(shorter.size(), 30U);
    ASSERT_EQ(longer.size(), 500U);
    EXPECT_TRUE(std::ranges::equal(shorter, std::span(longer).first(30)));
    // The last frame ends at 5 * 16 + 32.
    EXPECT_TRUE(std::ranges::all_of(std::span(longer).subspan(112), [](float v) { return v == 0; }));
}

TEST(STFT, InverseIgnoresTheImaginaryPartsOfDCAndNyquist) {
    STFT stft(64, 16);
    STFT::Spectrum spectrum = randomSpectrum(stft, 6);
    const std::vector<float> expected = stft.inverse(spectrum.re, spectrum.im, 6, 96);
    for (std::size_t t = 0; t < 6; ++t) {
        spectrum.im[t * 33] = 100;
        spectrum.im[t * 33 + 32] = -100;
    }
    EXPECT_EQ(stft.inverse(spectrum.re, spectrum.im, 6, 96), expected);
}

// One frame of ones (bin 0 only, of value nFFT) gives w / max(w * w, floor) under the window w.
TEST(STFT, InverseDividesByNoLessThanTheFloor) {
    STFT stft(8, 2);
    std::vector<float> re(5);
    re[0] = 8;
    const std::vector<float> samples = stft.inverse(re, std::vector<float>(5), 1, 4);
    const double floor = 8 * 0.075 / 2;
    bool floored = false;
    for (int n = 0; n < 4; ++n) {
        const double w = hann(4 + n, 8);
        floored = floored || w * w < floor;
        EXPECT_NEAR(samples[static_cast<std::size_t>(n)], w / std::max(w * w, floor), 1e-6) << "sample " << n;
    }
    EXPECT_TRUE(floored);
}

TEST(STFT, GapsBetweenFramesAreSilent) {
    STFT stft(8, 20);
    const STFT::Spectrum spectrum = randomSpectrum(stft, 3);
    const std::vector<float> samples = stft.inverse(spectrum.re, spectrum.im, 3, 60);
    for (const std::size_t n : {4U, 10U, 15U, 24U, 35U, 44U, 59U})
        EXPECT_EQ(samples[n], 0.0F) << "sample " << n;
}

TEST(STFT, InverseReadsOnlyTheFramesAskedFor) {
    STFT stft(64, 16);
    STFT::Spectrum spectrum = randomSpectrum(stft, 6);
    const std::vector<float> expected = stft.inverse(spectrum.re, spectrum.im, 3, 96);
    for (std::size_t i = 3 * 33; i < spectrum.re.size(); ++i)
        spectrum.re[i] = std::nanf("");
    EXPECT_EQ(stft.inverse(spectrum.re, spectrum.im, 3, 96), expected);
}

TEST(STFT, RepeatedCallsGiveTheSameBits) {
    STFT stft(512, 128);
    const std::vector<float> signal = noise(8, 6000);
    const STFT::Spectrum first = stft.forward(signal);
    const std::vector<float> back = stft.inverse(first.re, first.im, 47, 6000);
    (void)stft.forward(noise(9, 100));  // leaves something else in the scratch memory
    const STFT::Spectrum second = stft.forward(signal);
    EXPECT_EQ(first.re, second.re);
    EXPECT_EQ(first.im, second.im);
    EXPECT_EQ(stft.inverse(second.re, second.im, 47, 6000), back);
}

TEST(STFT, InstancesOnSeveralThreadsGiveTheSameBits) {
    const std::vector<float> signal = noise(10, 6000);
    const auto transform = [&] { return STFT(256, 64).forward(signal).re; };
    const std::vector<float> expected = transform();
    std::vector<std::vector<float>> results(4);
    std::vector<std::thread> threads;
    for (std::vector<float>& result : results)
        threads.emplace_back([&] { result = transform(); });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::vector<float>& result : results)
        EXPECT_EQ(result, expected);
}

TEST(STFT, AMovedTransformKeepsWorking) {
    STFT original(64, 16);
    const std::vector<float> signal = noise(11, 300);
    const std::vector<float> expected = original.forward(signal).re;
    STFT moved(std::move(original));
    EXPECT_EQ(moved.forward(signal).re, expected);
    STFT assigned(8, 2);
    assigned = std::move(moved);
    EXPECT_EQ(assigned.nFFT(), 64);
    EXPECT_EQ(assigned.forward(signal).re, expected);
}

TEST(STFTDeathTest, LengthsThatAreNoPowerOfTwoAreRefused) {
    for (const int nFFT : {1000, 0, -8, 3})
        EXPECT_DEATH(STFT(nFFT, 256), "power of two") << nFFT;
}

TEST(STFTDeathTest, AHopBelowOneIsRefused) {
    EXPECT_DEATH(STFT(1024, 0), "hop");
    EXPECT_DEATH(STFT(1024, -1), "hop");
}

TEST(STFTDeathTest, ImpossibleSizesAreRefused) {
    STFT stft(64, 16);
    std::vector<float> enough(66);
    std::vector<float> tooShort(65);
    EXPECT_DEATH(stft.forward({}, 2, enough, tooShort), "too small");
    EXPECT_DEATH(stft.forward({}, 2, tooShort, enough), "too small");
    EXPECT_DEATH((void)stft.forward({}, -1), "negative");
    EXPECT_DEATH((void)stft.inverse(enough, tooShort, 2, 10), "too small");
    EXPECT_DEATH((void)stft.inverse(enough, enough, 2, -1), "negative");
    EXPECT_DEATH((void)stft.frameCount(-1), "out of range");
    EXPECT_DEATH((void)stft.frameCount(1LL << 60), "out of range");
}

TEST(STFT, FramesAtAnyCentresAreThoseOfTheShiftedSignal) {
    STFT stft(64, 16);
    const std::vector<float> signal = testing::noise(77, 400);
    const std::vector<long long> centres{0, 3, 17, 16 * 5, -20, 399, 431, 1000, -1000, 200,
                                         1, 2, 4,  5,      6,   7,   8,   9,    10,    11};
    const std::size_t bins = 33;
    std::vector<float> re(centres.size() * bins);
    std::vector<float> im(re.size());
    stft.forwardAt(signal, centres, re, im);
    for (std::size_t i = 0; i < centres.size(); ++i) {
        // The same samples around the centre of frame 2.
        std::vector<float> shifted(64);
        for (long long n = 0; n < 64; ++n) {
            const long long at = n + centres[i] - 32;
            if (at >= 0 && at < 400)
                shifted[static_cast<std::size_t>(n)] = signal[static_cast<std::size_t>(at)];
        }
        const STFT::Spectrum expected = stft.forward(shifted, 3);
        for (std::size_t k = 0; k < bins; ++k) {
            EXPECT_EQ(re[i * bins + k], expected.re[2 * bins + k]) << centres[i] << " " << k;
            EXPECT_EQ(im[i * bins + k], expected.im[2 * bins + k]) << centres[i] << " " << k;
        }
    }
}

}  // namespace
}  // namespace quillmere
