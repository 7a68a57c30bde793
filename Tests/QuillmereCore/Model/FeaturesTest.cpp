#include "QuillmereCore/Model/Features.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <thread>

#include "Support/InstructionSets.h"
#include "Support/Signals.h"

namespace quillmere {
namespace {

using testing::noise;

ModelConfig smallConfig() {
    ModelConfig config;
    config.sampleRate = 8000;
    config.nFFT = 256;
    config.hop = 64;
    config.nMels = 32;
    config.frames = 32;
    return config;
}

std::vector<float> features(const ModelConfig& config, const std::vector<float>& samples) {
    const FeatureExtractor extractor(config);
    STFT stft = extractor.makeSTFT();
    return extractor.features(samples, stft);
}

TEST(Level, ToNetworkMapsTheRangeOfDecibels) {
    EXPECT_EQ(Level::toNetwork(-100), -1.0F);
    EXPECT_EQ(Level::toNetwork(-50), 0.0F);
    EXPECT_EQ(Level::toNetwork(0), 1.0F);
    EXPECT_FLOAT_EQ(Level::toNetwork(10), 1.2F);
}

TEST(Level, ToNetworkClampsAtBothEnds) {
    EXPECT_FLOAT_EQ(Level::toNetwork(25), 1.2F);
    EXPECT_EQ(Level::toNetwork(-300), -1.0F);
    EXPECT_EQ(Level::toNetwork(-std::numeric_limits<float>::infinity()), -1.0F);
    EXPECT_EQ(Level::toNetwork(std::numeric_limits<float>::infinity()), Level::toNetwork(10));
}

TEST(Level, ToDBIsLinearAndDoesNotClamp) {
    EXPECT_FLOAT_EQ(Level::toDB(1.2F), 10.0F);
    EXPECT_EQ(Level::toDB(-1), -100.0F);
    EXPECT_EQ(Level::toDB(2), 50.0F);
    EXPECT_EQ(Level::toDB(-3), -200.0F);
}

TEST(Level, ToDBUndoesToNetwork) {
    for (float dB = -100; dB <= 10; dB += 0.5F)
        EXPECT_NEAR(Level::toDB(Level::toNetwork(dB)), dB, 1e-5F);
}

TEST(FeatureExtractor, MakesTheTransformOfItsConfiguration) {
    const STFT stft = FeatureExtractor(smallConfig()).makeSTFT();
    EXPECT_EQ(stft.nFFT(), 256);
    EXPECT_EQ(stft.hop(), 64);
}

TEST(FeatureExtractor, ItsFilterBankFitsTheConfiguration) {
    const FeatureExtractor extractor(smallConfig());
    EXPECT_EQ(extractor.config(), smallConfig());
    EXPECT_EQ(extractor.bank().sampleRate(), 8000);
    EXPECT_EQ(extractor.bank().nMels(), 32);
    EXPECT_EQ(extractor.bank().bins(), 129);
}

TEST(FeatureExtractor, SilenceIsMinusOneEverywhere) {
    EXPECT_EQ(features(smallConfig(), std::vector<float>(2048)), std::vector<float>(32 * 32, -1.0F));
    EXPECT_EQ(features(smallConfig(), {}), std::vector<float>(32 * 32, -1.0F));
}

TEST(FeatureExtractor, FramesBeyondAShortSignalAreSilent) {
    const std::vector<float> image = features(smallConfig(), noise(1, 700));
    ASSERT_EQ(image.size(), 32U * 32);
    // Frame 12 begins at sample 640, under the signal's end; frame 13 begins at 704.
    for (std::size_t m = 0; m < 32; ++m) {
        EXPECT_GT(image[m * 32 + 12], -1.0F) << "band " << m;
        for (std::size_t t = 13; t < 32; ++t)
            EXPECT_EQ(image[m * 32 + t], -1.0F) << "band " << m << " frame " << t;
    }
}

TEST(FeatureExtractor, TheFrameCountIsTheConfigurations) {
    std::vector<float> longer = noise(2, 5000);
    const std::vector<float> image = features(smallConfig(), longer);
    ASSERT_EQ(image.size(), 32U * 32);
    longer.resize(31 * 64 + 128);  // the last frame ends here
    EXPECT_EQ(features(smallConfig(), longer), image);
}

// A tone that lasts for the first half: its band's row is loud there, and the row is contiguous in time.
TEST(FeatureExtractor, ImagesAreBandMajorWithTheLowestBandFirst) {
    std::vector<float> signal = testing::sine(1000, 8000, 2048);
    std::fill(signal.begin() + 1024, signal.end(), 0.0F);
    const std::vector<float> image = features(smallConfig(), signal);
    const FeatureExtractor extractor(smallConfig());
    const auto centers = extractor.bank().centers();
    const auto above = std::ranges::lower_bound(centers, 1000.0F);
    const auto band = static_cast<std::size_t>(above - centers.begin());
    const float loudest = std::max(image[band * 32 + 5], image[(band - 1) * 32 + 5]);
    EXPECT_GT(loudest, 0.8F);
    EXPECT_GT(loudest, image[5] + 0.5F);
    EXPECT_EQ(image[band * 32 + 25], -1.0F);
}

// A full-scale sine on a bin centre has magnitude 1 there, and half of it in the bins beside it.
TEST(FeatureExtractor, ValuesAreTheLevelOfTheBandsAverage) {
    const ModelConfig config = smallConfig();
    const FeatureExtractor extractor(config);
    STFT stft = extractor.makeSTFT();
    const std::vector<float> image = extractor.features(testing::sine(40 * 31.25, 8000, 2048), stft);
    std::vector<float> spectrum(129);
    spectrum[39] = 0.5F;
    spectrum[40] = 1.0F;
    spectrum[41] = 0.5F;
    std::vector<float> mel(32);
    extractor.bank().forward(spectrum, mel);
    for (std::size_t m = 0; m < 32; ++m) {
        if (mel[m] < 1e-3F) continue;
        const float expected = (20 * std::log10(mel[m]) + 50) / 50;
        EXPECT_NEAR(image[m * 32 + 15], expected, 1e-5F) << "band " << m;
    }
}

TEST(FeatureExtractor, FeaturesFollowTheirDefinition) {
    const ModelConfig config = smallConfig();
    const FeatureExtractor extractor(config);
    STFT stft = extractor.makeSTFT();
    const std::vector<float> signal = noise(3, 2048, 0.3F);
    const std::vector<float> image = extractor.features(signal, stft);
    const STFT::Spectrum spectrum = stft.forward(signal, 32);
    std::vector<float> magnitude(129);
    std::vector<float> mel(32);
    for (std::size_t t = 0; t < 32; ++t) {
        for (std::size_t k = 0; k < 129; ++k)
            magnitude[k] = std::hypot(spectrum.re[t * 129 + k], spectrum.im[t * 129 + k]) *
                           stft.magnitudeNormalization();
        extractor.bank().forward(magnitude, mel);
        for (std::size_t m = 0; m < 32; ++m) {
            const double dB = 20 * std::log10(std::max(static_cast<double>(mel[m]), 1e-7));
            ASSERT_NEAR(image[m * 32 + t], (dB + 50) / 50, 1e-6) << "band " << m << " frame " << t;
        }
    }
}

// Squares of these magnitudes leave the range of single precision.
TEST(FeatureExtractor, VeryLoudAndVeryQuietSignalsStayInRange) {
    const std::vector<float> loud = features(smallConfig(), noise(4, 2048, 1e30F));
    EXPECT_TRUE(std::ranges::all_of(loud, [](float v) { return v == Level::toNetwork(10); }));
    const std::vector<float> quiet = features(smallConfig(), noise(4, 2048, 1e-30F));
    EXPECT_TRUE(std::ranges::all_of(quiet, [](float v) { return v == -1.0F; }));
}

TEST(FeatureExtractor, SeveralThreadsMayShareOne) {
    const FeatureExtractor extractor(smallConfig());
    const std::vector<float> signal = noise(5, 2048);
    const auto extract = [&] {
        STFT stft = extractor.makeSTFT();
        return extractor.features(signal, stft);
    };
    const std::vector<float> expected = extract();
    std::vector<std::vector<float>> results(4);
    std::vector<std::thread> threads;
    for (std::vector<float>& result : results)
        threads.emplace_back([&] { result = extract(); });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::vector<float>& result : results)
        EXPECT_EQ(result, expected);
}

TEST(FeatureExtractor, SameBitsForAnyNumberOfLanes) {
    const std::vector<float> signal = noise(6, 2048);
    const std::vector<float> levels = noise(7, 32 * 9, 60);
    for (const auto& group : {testing::InstructionSet::fused(), testing::InstructionSet::plain()}) {
        std::vector<float> firstImage;
        std::vector<float> firstMagnitude;
        for (const std::int64_t target : group) {
            const testing::InstructionSet set(target);
            const FeatureExtractor extractor(smallConfig());
            const std::vector<float> image = features(smallConfig(), signal);
            const std::vector<float> magnitude = extractor.linearMagnitude(levels, 9, extractor.makeSTFT());
            if (target == group.front()) {
                firstImage = image;
                firstMagnitude = magnitude;
            }
            EXPECT_EQ(image, firstImage) << testing::InstructionSet::name(target);
            EXPECT_EQ(magnitude, firstMagnitude) << testing::InstructionSet::name(target);
        }
    }
}

TEST(FeatureExtractor, LinearMagnitudeOfAFlatImageIsFlatButForDC) {
    const FeatureExtractor extractor(smallConfig());
    const STFT stft = extractor.makeSTFT();
    const std::vector<float> linear = extractor.linearMagnitude(std::vector<float>(32 * 5, -50.0F), 5, stft);
    ASSERT_EQ(linear.size(), 5U * 129);
    const double expected = std::pow(10, -2.5) / static_cast<double>(stft.magnitudeNormalization());
    for (std::size_t t = 0; t < 5; ++t) {
        EXPECT_EQ(linear[t * 129], 0.0F);
        for (std::size_t k = 1; k < 129; ++k)
            EXPECT_NEAR(linear[t * 129 + k], expected, 1e-6 * expected) << "frame " << t << " bin " << k;
    }
}

TEST(FeatureExtractor, LinearMagnitudeOfNoFramesIsEmpty) {
    const FeatureExtractor extractor(smallConfig());
    EXPECT_TRUE(extractor.linearMagnitude({}, 0, extractor.makeSTFT()).empty());
}

// The frame count is the image's own, not the configuration's.
TEST(FeatureExtractor, LinearMagnitudeFollowsItsDefinition) {
    const FeatureExtractor extractor(smallConfig());
    const STFT stft = extractor.makeSTFT();
    const std::vector<float> image = noise(8, 32 * 7, 60);
    const std::vector<float> linear = extractor.linearMagnitude(image, 7, stft);
    std::vector<float> column(32);
    std::vector<float> row(129);
    for (std::size_t t = 0; t < 7; ++t) {
        for (std::size_t m = 0; m < 32; ++m)
            column[m] = static_cast<float>(std::pow(10, static_cast<double>(image[m * 7 + t]) / 20));
        extractor.bank().inverse(column, row);
        for (std::size_t k = 0; k < 129; ++k) {
            const double expected =
                static_cast<double>(row[k]) / static_cast<double>(stft.magnitudeNormalization());
            ASSERT_NEAR(linear[t * 129 + k], expected, 2e-6 * expected) << "frame " << t << " bin " << k;
        }
    }
}

// Decoded images are not clamped; absurd levels must not become NaN.
TEST(FeatureExtractor, LinearMagnitudeOfExtremeLevelsIsNotNaN) {
    const FeatureExtractor extractor(smallConfig());
    for (const float dB : {-2000.0F, -100.0F, 10.0F, 700.0F}) {
        const std::vector<float> image(32, dB);
        const std::vector<float> linear = extractor.linearMagnitude(image, 1, extractor.makeSTFT());
        EXPECT_TRUE(std::ranges::none_of(linear, [](float v) { return std::isnan(v) || v < 0; })) << dB;
    }
}

TEST(FeatureExtractorDeathTest, ATransformOfAnotherConfigurationIsRefused) {
    const FeatureExtractor extractor(smallConfig());
    STFT other(512, 64);
    STFT otherHop(256, 128);
    EXPECT_DEATH((void)extractor.features({}, other), "another configuration");
    EXPECT_DEATH((void)extractor.features({}, otherHop), "another configuration");
    EXPECT_DEATH((void)extractor.linearMagnitude({}, 0, other), "another configuration");
}

TEST(FeatureExtractorDeathTest, AnImageThatIsTooSmallIsRefused) {
    const FeatureExtractor extractor(smallConfig());
    const std::vector<float> image(32 * 3 - 1);
    EXPECT_DEATH((void)extractor.linearMagnitude(image, 3, extractor.makeSTFT()), "too small");
}

}  // namespace
}  // namespace quillmere
