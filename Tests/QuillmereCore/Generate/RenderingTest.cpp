#include "QuillmereCore/Generate/Rendering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

namespace quillmere {
namespace {

using Image = std::vector<float>;

constexpr ModelConfig smallConfig{.sampleRate = 8000,
                                  .nFFT = 256,
                                  .hop = 64,
                                  .nMels = 32,
                                  .frames = 32,
                                  .latentDim = 4,
                                  .profile = AnalysisProfile::percussive};

Image randomImage(std::size_t count, float low, float high, std::uint64_t seed = 5) {
    SeededRNG rng(seed);
    Image image(count);
    for (float& value : image)
        value = low + (high - low) * rng.uniform();
    return image;
}

SeededRNG after(SeededRNG rng, int draws) {
    for (int i = 0; i < draws; ++i)
        (void)rng.next();
    return rng;
}

int framesAfter(int frames, double stretch, double jitter = 0) {
    SeededRNG rng(11);
    return Rendering::stretchedFrames(frames, stretch, jitter, rng);
}

// One pass by its definition, one pixel at a time.
Image slowPass(const Image& in, int rows, int cols, const Image& taps, bool alongTime) {
    const auto at = [&](int r, int c) { return in[static_cast<std::size_t>(r) * cols + c]; };
    const int radius = static_cast<int>(taps.size()) / 2;
    Image out;
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < cols; ++c) {
            float sum = 0;
            for (int k = -radius; k <= radius; ++k) {
                const float value =
                    alongTime ? at(r, std::clamp(c + k, 0, cols - 1)) : at(std::clamp(r + k, 0, rows - 1), c);
                sum += taps[static_cast<std::size_t>(k + radius)] * value;
            }
            out.push_back(sum);
        }
    }
    return out;
}

TEST(ToDecibels, MapsNetworkUnitsAndLimitsThem) {
    EXPECT_EQ(Rendering::toDecibels(Image{-1, 0, 1, 1.2F, 2, -5}), (Image{-100, -50, 0, 10, 10, -100}));
}

TEST(Contrast, MovesLevelsAwayFromAPivot30DecibelsBelowThePeak) {
    Image image{-10, -40, -50, -100};
    Rendering::applyContrast(image, 4);
    EXPECT_EQ(image, (Image{80, -40, -80, -100}));
}

TEST(Contrast, BelowOneFillsTheValleys) {
    Image image{-10, -40, -100};
    Rendering::applyContrast(image, 0.5);
    EXPECT_EQ(image, (Image{-25, -40, -70}));
}

TEST(Contrast, OfOneChangesNothing) {
    const Image original = randomImage(64, -140, 30);
    Image image = original;
    Rendering::applyContrast(image, 1);
    EXPECT_EQ(image, original);
}

TEST(Contrast, AnEmptyImageStaysEmpty) {
    Image image;
    Rendering::applyContrast(image, 4);
    EXPECT_TRUE(image.empty());
}

TEST(BlurKernel, HasOneTapUpToASigmaOfATwentieth) {
    for (const float sigma : {0.0F, 0.05F, -3.0F, std::nanf("")})
        EXPECT_EQ(Rendering::kernel(sigma), Image{1}) << sigma;
}

TEST(BlurKernel, ReachesThreeSigmasRoundedUp) {
    EXPECT_EQ(Rendering::kernel(0.0501F).size(), 3U);
    EXPECT_EQ(Rendering::kernel(1).size(), 7U);
    EXPECT_EQ(Rendering::kernel(1.7F).size(), 13U);
}

TEST(BlurKernel, IsASymmetricGaussianOfSumOne) {
    const Image taps = Rendering::kernel(2);
    ASSERT_EQ(taps.size(), 13U);
    float sum = 0;
    for (std::size_t k = 0; k < taps.size(); ++k) {
        EXPECT_EQ(taps[k], taps[taps.size() - 1 - k]) << k;
        sum += taps[k];
    }
    EXPECT_NEAR(sum, 1, 1e-6);
    EXPECT_NEAR(taps[8] / taps[6], std::exp(-0.5F), 1e-6);  // one sigma off the middle
}

TEST(BlurKernel, StaysOfBoundedLengthForAnAbsurdSigma) {
    EXPECT_EQ(Rendering::kernel(std::numeric_limits<float>::infinity()).size(), 2U * 3 * 4096 + 1);
}

TEST(Blur, FollowsItsDefinitionBitForBit) {
    const Image image = randomImage(20 * 30, -100, 10);
    for (const float sigmaRows : {0.0F, 0.7F, 3.0F, 20.0F}) {
        for (const float sigmaCols : {0.0F, 0.4F, 2.2F, 30.0F}) {
            const Image inTime = slowPass(image, 20, 30, Rendering::kernel(sigmaCols), true);
            const Image expected = slowPass(inTime, 20, 30, Rendering::kernel(sigmaRows), false);
            EXPECT_EQ(Rendering::blur(image, 20, 30, sigmaRows, sigmaCols), expected)
                << sigmaRows << " x " << sigmaCols;
        }
    }
}

TEST(Blur, KeepsAFlatImageFlat) {
    const Image blurred = Rendering::blur(Image(12 * 8, -40.0F), 12, 8, 2, 3);
    for (const float value : blurred)
        EXPECT_NEAR(value, -40, 1e-4);
}

TEST(Blur, OfAnEmptyImageIsEmpty) {
    EXPECT_TRUE(Rendering::blur({}, 0, 0, 2, 3).empty());
}

TEST(Smear, SoSmallThatBothSigmasVanishLeavesTheImage) {
    const Image original = randomImage(32 * 32, -100, 10);
    Image image = original;
    Rendering::applySmear(image, 32, 32, 256, 0.008);  // 0.048 frames, 0.005 bands
    EXPECT_EQ(image, original);
}

// 96 bands and a hop of 256: 2 * smear bands, 6 * smear frames.
TEST(Smear, BlursByBandsAndFramesOfTheAnalysis) {
    const Image original = randomImage(96 * 40, -100, 10);
    Image image = original;
    Rendering::applySmear(image, 96, 40, 256, 0.5);
    EXPECT_EQ(image, Rendering::blur(original, 96, 40, 1, 3));
    image = original;
    Rendering::applySmear(image, 96, 40, 128, 0.5);
    EXPECT_EQ(image, Rendering::blur(original, 96, 40, 1, 6));
}

TEST(Smear, OfZeroOrLessDoesNothing) {
    const Image original = randomImage(64, -100, 10);
    for (const double smear : {0.0, -1.0}) {
        Image image = original;
        Rendering::applySmear(image, 8, 8, 256, smear);
        EXPECT_EQ(image, original);
    }
}

TEST(Grit, OfOneRoundsToMultiplesOf24Point001Decibels) {
    Image image = randomImage(500, -100, 10);
    const Image original = image;
    Rendering::applyGrit(image, 1);
    for (std::size_t i = 0; i < image.size(); ++i) {
        EXPECT_NEAR(image[i] / 24.001F, std::round(image[i] / 24.001F), 1e-5F) << i;
        EXPECT_LE(std::abs(image[i] - original[i]), 12.001F) << i;
    }
}

TEST(Grit, RoundsHalvesAwayFromZero) {
    const float step = 0.5F * 24.0F + 0.001F;
    Image image{1.5F * step, -2.5F * step};
    Rendering::applyGrit(image, 0.5);
    EXPECT_FLOAT_EQ(image[0], 2 * step);
    EXPECT_FLOAT_EQ(image[1], -3 * step);
}

TEST(Roughness, DrawsForValuesAboveTheFloorOnly) {
    Image image{-100, -99, -98.99F, -50, -99.5F, 0};
    SeededRNG rng(9);
    SeededRNG expected(9);
    Rendering::applyRoughness(image, 1, rng);
    EXPECT_EQ(image[0], -100);
    EXPECT_EQ(image[1], -99);
    EXPECT_FLOAT_EQ(image[2], -98.99F + 8 * expected.gaussian());
    EXPECT_FLOAT_EQ(image[3], -50 + 8 * expected.gaussian());
    EXPECT_EQ(image[4], -99.5F);
    EXPECT_FLOAT_EQ(image[5], 8 * expected.gaussian());
    EXPECT_EQ(rng, expected);
}

TEST(Roughness, OfZeroDrawsNothing) {
    Image image{-50, 0};
    SeededRNG rng(9);
    Rendering::applyRoughness(image, 0, rng);
    EXPECT_EQ(image, (Image{-50, 0}));
    EXPECT_EQ(rng, SeededRNG(9));
}

TEST(Tilt, PivotsAtOneKilohertzAndLevelsOffBelowTwenty) {
    const std::vector<float> centers{5, 20, 1000, 4000};
    Image image(8, -50.0F);  // four bands, two frames
    Rendering::applyTilt(image, 2, centers, 3);
    const float lowest = -50 + 3 * std::log2(0.02F);
    EXPECT_EQ(image[0], image[2]);
    EXPECT_FLOAT_EQ(image[1], lowest);
    EXPECT_FLOAT_EQ(image[3], lowest);
    EXPECT_EQ(image[4], -50);
    EXPECT_FLOAT_EQ(image[6], -44);
    EXPECT_FLOAT_EQ(image[7], -44);
}

TEST(Tilt, OfOneRaisesAnOctaveByADecibel) {
    Image image{-50, -60};
    Rendering::applyTilt(image, 1, std::vector<float>{1000, 2000}, 1);
    EXPECT_EQ(image, (Image{-50, -59}));
}

TEST(Tilt, OfZeroDoesNothing) {
    Image image{-50, -60};
    Rendering::applyTilt(image, 1, std::vector<float>{100, 5000}, 0);
    EXPECT_EQ(image, (Image{-50, -60}));
}

TEST(StretchedFrames, AreAtMost4096) {
    EXPECT_EQ(framesAfter(4096, 8), 4096);
    EXPECT_EQ(framesAfter(32, 1e200), 4096);
}

TEST(StretchedFrames, AreAtLeast8) {
    EXPECT_EQ(framesAfter(64, 0.1), 8);
    EXPECT_EQ(framesAfter(64, 0), 8);
    EXPECT_EQ(framesAfter(64, -1e200), 8);
}

TEST(StretchedFrames, RoundHalvesAwayFromZero) {
    EXPECT_EQ(framesAfter(33, 0.5), 17);
    EXPECT_EQ(framesAfter(32, 1), 32);
}

TEST(StretchedFrames, TakeOneDrawEvenWhenNeutral) {
    SeededRNG rng(4);
    EXPECT_EQ(Rendering::stretchedFrames(32, 1, 0, rng), 32);
    EXPECT_EQ(rng, after(SeededRNG(4), 1));
}

TEST(StretchedFrames, JitterByOctaves) {
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
        SeededRNG rng(seed);
        const double u = SeededRNG(seed).uniform();
        const double expected = std::round(100 * std::pow(2.0, (2 * u - 1) * 1.5) * 0.8);
        EXPECT_EQ(Rendering::stretchedFrames(100, 0.8, 1.5, rng), static_cast<int>(expected)) << seed;
    }
}

TEST(StretchedFramesDeathTest, AFactorThatIsNotFiniteStopsTheProgram) {
    EXPECT_DEATH((void)framesAfter(32, std::numeric_limits<double>::quiet_NaN()), "not finite");
    EXPECT_DEATH((void)framesAfter(32, 1e308), "not finite");
}

TEST(TimeStretch, InterpolatesBetweenFramesAndRepeatsTheLast) {
    EXPECT_EQ(Rendering::timeStretch(Image{0, 10, 100, 80}, 2, 2, 4), (Image{0, 5, 10, 10, 100, 90, 80, 80}));
}

TEST(TimeStretch, RepeatsASingleFrame) {
    EXPECT_EQ(Rendering::timeStretch(Image{-10, -20}, 2, 1, 3), (Image{-10, -10, -10, -20, -20, -20}));
}

TEST(TimeStretch, PicksEverySecondFrameAtHalfTheLength) {
    EXPECT_EQ(Rendering::timeStretch(Image{1, 2, 3, 4}, 1, 4, 2), (Image{1, 3}));
}

TEST(TimeStretch, ToTheSameLengthChangesNothing) {
    const Image image = randomImage(4 * 9, -100, 0);
    EXPECT_EQ(Rendering::timeStretch(image, 4, 9, 9), image);
}

TEST(WarpFrequency, AnOctaveUpDoublesEveryFrequency) {
    const int bins = 9;
    const Image mag = randomImage(2 * bins, 0, 1);
    const Image warped = Rendering::warpFrequency(mag, 2, bins, 2);
    for (std::size_t t = 0; t < 2; ++t) {
        const float* const in = &mag[t * bins];
        const float* const out = &warped[t * bins];
        for (std::size_t k = 0; k < bins; k += 2)
            EXPECT_EQ(out[k], in[k / 2]) << k;
        for (std::size_t k = 1; k < bins; k += 2)
            EXPECT_FLOAT_EQ(out[k], (in[k / 2] + in[k / 2 + 1]) / 2) << k;
    }
}

TEST(WarpFrequency, AnOctaveUpLosesTheUpperHalfOfTheBand) {
    Image mag(9, 0.0F);
    mag[2] = 1;
    mag[6] = 1;
    EXPECT_EQ(Rendering::warpFrequency(mag, 1, 9, 2), (Image{0, 0, 0, 0.5F, 1, 0.5F, 0, 0, 0}));
}

TEST(WarpFrequency, AnOctaveDownLeavesTheUpperHalfEmpty) {
    EXPECT_EQ(Rendering::warpFrequency(Image(9, 1.0F), 1, 9, 0.5), (Image{1, 1, 1, 1, 0, 0, 0, 0, 0}));
}

TEST(WarpFrequency, TheLastBinHasNoSourceAtRatioOne) {
    EXPECT_EQ(Rendering::warpFrequency(Image(9, 1.0F), 1, 9, 1), (Image{1, 1, 1, 1, 1, 1, 1, 1, 0}));
}

TEST(WarpFrequency, SurvivesRatiosThatOverflowOrVanish) {
    Image mag(9, 0.0F);
    mag[0] = 0.25F;
    EXPECT_EQ(Rendering::warpFrequency(mag, 1, 9, std::numeric_limits<double>::infinity()), Image(9, 0.25F));
    EXPECT_EQ(Rendering::warpFrequency(mag, 1, 9, 0), Image(9, 0.0F));
    EXPECT_EQ(Rendering::warpFrequency(mag, 1, 9, 1e-300), Image(9, 0.0F));
}

class RenderingChain : public ::testing::Test {
protected:
    FeatureExtractor extractor{smallConfig};
    STFT stft = extractor.makeSTFT();
    Image image = randomImage(32 * 32, -1, 1.2F);
};

TEST_F(RenderingChain, DefaultsOnlyConvertAndDrawTwice) {
    SeededRNG rng(21);
    const auto shaped = Rendering::shape(image, {}, extractor, rng);
    EXPECT_EQ(shaped.frames, 32);
    EXPECT_EQ(shaped.dB, Rendering::toDecibels(image));
    EXPECT_EQ(rng, after(SeededRNG(21), 1));
    const Image mag = Rendering::magnitude(shaped, {}, extractor, stft, rng);
    EXPECT_EQ(mag, extractor.linearMagnitude(shaped.dB, 32, stft));
    EXPECT_EQ(rng, after(SeededRNG(21), 2));
}

TEST_F(RenderingChain, PhaseReconstructionFollowsWithOneDrawPerEntry) {
    SeededRNG rng(21);
    const auto samples = Rendering::waveform(image, {.phaseIterations = 1}, extractor, stft, rng);
    EXPECT_EQ(samples.size(), 64U * 32);
    EXPECT_EQ(rng, after(SeededRNG(21), 2 + 32 * 129));
}

TEST_F(RenderingChain, PhasePassesRoundHalvesUpAndMayBeNegative) {
    const auto withPasses = [&](double passes) {
        SeededRNG rng(3);
        return Rendering::waveform(image, {.phaseIterations = passes}, extractor, stft, rng);
    };
    EXPECT_EQ(withPasses(1.5), withPasses(2));
    EXPECT_NE(withPasses(1.49), withPasses(2));
    EXPECT_EQ(withPasses(-5), withPasses(0));
}

TEST_F(RenderingChain, StretchChangesTheLengthOnly) {
    SeededRNG rng(3);
    const auto shaped = Rendering::shape(image, {.stretch = 2.5}, extractor, rng);
    EXPECT_EQ(shaped.frames, 80);
    EXPECT_EQ(shaped.dB.size(), 80U * 32);
    EXPECT_EQ(rng, after(SeededRNG(3), 1));
}

TEST_F(RenderingChain, AnOctaveOfPitchHalvesTheSourceBin) {
    SeededRNG rng(3);
    const auto shaped = Rendering::shape(image, {}, extractor, rng);
    const Image plain = extractor.linearMagnitude(shaped.dB, 32, stft);
    const Image up = Rendering::magnitude(shaped, {.pitch = 12}, extractor, stft, rng);
    EXPECT_EQ(up, Rendering::warpFrequency(plain, 32, 129, 2));
}

TEST_F(RenderingChain, PitchOfAHundredthOfASemitoneIsInTune) {
    SeededRNG rng(3);
    const auto shaped = Rendering::shape(image, {}, extractor, rng);
    const Image plain = extractor.linearMagnitude(shaped.dB, 32, stft);
    EXPECT_EQ(Rendering::magnitude(shaped, {.pitch = 0.01}, extractor, stft, rng), plain);
    EXPECT_NE(Rendering::magnitude(shaped, {.pitch = 0.02}, extractor, stft, rng), plain);
}

TEST_F(RenderingChain, StepsComeInTheirOrder) {
    const Aesthetics a{
        .stretch = 1.5, .tilt = 2, .contrast = 1.4, .smear = 0.3, .grit = 0.2, .roughness = 0.5};
    SeededRNG rng(8);
    SeededRNG expectedRng(8);
    Image dB = Rendering::toDecibels(image);
    Rendering::applyContrast(dB, a.contrast);
    Rendering::applySmear(dB, 32, 32, 64, a.smear);
    Rendering::applyGrit(dB, a.grit);
    Rendering::applyRoughness(dB, a.roughness, expectedRng);
    Rendering::applyTilt(dB, 32, extractor.bank().centers(), a.tilt);
    dB = Rendering::timeStretch(dB, 32, 32, Rendering::stretchedFrames(32, a.stretch, 0, expectedRng));
    EXPECT_EQ(Rendering::shape(image, a, extractor, rng).dB, dB);
    EXPECT_EQ(rng, expectedRng);
}

TEST(RenderingDeathTest, ASizeThatDoesNotMatchItsBufferStopsTheProgram) {
    const char* const message = "size does not match";
    const Image five(5);
    EXPECT_DEATH((void)Rendering::timeStretch(five, 2, 3, 8), message);
    EXPECT_DEATH((void)Rendering::timeStretch(five, 3, 2, 2), message);
    EXPECT_DEATH((void)Rendering::timeStretch(Image(6), -2, -3, -3), message);
    EXPECT_DEATH((void)Rendering::warpFrequency(five, 2, 3, 1), message);
    EXPECT_DEATH((void)Rendering::blur(five, 2, 3, 1, 1), message);
    Image image(5);
    EXPECT_DEATH(Rendering::applyTilt(image, 3, std::vector<float>{100, 200}, 1), message);
}

TEST_F(RenderingChain, AnImageOfAnotherSizeStopsTheProgram) {
    SeededRNG rng(3);
    const Image shorter(image.begin(), image.end() - 1);
    EXPECT_DEATH((void)Rendering::shape(shorter, {}, extractor, rng), "size does not match");
}

TEST_F(RenderingChain, PhasePassesThatAreNoCountStopTheProgram) {
    SeededRNG rng(3);
    EXPECT_DEATH((void)Rendering::waveform(image, {.phaseIterations = std::nan("")}, extractor, stft, rng),
                 "count");
}

}  // namespace
}  // namespace quillmere
