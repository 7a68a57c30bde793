#include "QuillmereCore/Model/ClipPreparation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "Support/Signals.h"
#include "Support/TempFolder.h"
#include "Support/WAVBytes.h"

namespace quillmere {
namespace {

using testing::floatWAV;
using testing::noise;
using testing::sine;
using testing::TempFolder;
using testing::writeText;

constexpr int rate = 22050;

std::vector<float> operator+(std::vector<float> head, const std::vector<float>& tail) {
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

std::vector<float> silence(std::size_t count) {
    return std::vector<float>(count, 0.0F);
}

DecodedClip clipOf(std::vector<float> samples) {
    return {"clip", std::move(samples), 0};
}

// What decode makes of a mono float file.
std::optional<DecodedClip> decoded(const std::vector<float>& samples, int fileRate, int targetRate) {
    const TempFolder folder;
    writeText(folder / "x.wav", floatWAV({samples}, static_cast<std::uint32_t>(fileRate)));
    CorpusFile file;
    file.url = folder / "x.wav";
    file.relativePath = "sub/x.wav";
    return ClipPreparation::decode(file, targetRate);
}

TEST(ClipDecode, SilenceGivesNothing) {
    EXPECT_FALSE(decoded(silence(1000), rate, rate));
    EXPECT_FALSE(decoded(std::vector(100, 1.0e-4F), rate, rate));
    EXPECT_TRUE(decoded(std::vector(100, 1.01e-4F), rate, rate));
}

TEST(ClipDecode, TheLoudestSampleBecomesOne) {
    std::vector<float> samples = sine(440, rate, 2000, 0.4);
    samples[700] = -0.5F;
    const auto clip = decoded(samples, rate, rate);
    ASSERT_TRUE(clip);
    EXPECT_EQ(clip->samples[700], -1.0F);
    EXPECT_EQ(clip->samples[100], 2 * samples[100]);
}

TEST(ClipDecode, NamesTheClipAndKeepsTheFilesLength) {
    const auto clip = decoded(silence(11025) + sine(440, rate, 22050, 0.4), rate, 44100);
    ASSERT_TRUE(clip);
    EXPECT_EQ(clip->name, "sub/x.wav");
    EXPECT_EQ(clip->originalSeconds, 1.5);
}

TEST(ClipDecode, ConvertsToTheModelsRate) {
    const auto clip = decoded(sine(440, 48000, 48000, 0.4), 48000, rate);
    ASSERT_TRUE(clip);
    EXPECT_NEAR(static_cast<double>(clip->samples.size()), rate, 2);
}

TEST(ClipDecode, AnUnreadableFileIsAFailure) {
    const TempFolder folder;
    writeText(folder / "x.wav", "text");
    CorpusFile file;
    file.url = folder / "x.wav";
    EXPECT_THROW((void)ClipPreparation::decode(file, rate), AudioIOError);
}

// One such sample would spoil every weight of the network.
TEST(ClipDecode, SamplesThatAreNotNumbersAreAFailure) {
    for (const float bad : {std::nanf(""), std::numeric_limits<float>::infinity()}) {
        std::vector<float> samples = sine(440, rate, 2000);
        samples[500] = bad;
        for (const int target : {rate, 44100}) {
            try {
                (void)decoded(samples, rate, target);
                ADD_FAILURE() << "was decoded";
            } catch (const AudioIOError& error) {
                EXPECT_STREQ(error.what(), "Could not read x.wav: it holds samples that are not numbers");
            }
        }
    }
}

TEST(TrimAndNormalise, KeepsOneMillisecondBeforeTheOnset) {
    // 22050 / 1000 is 22: the sound at 30 keeps the samples from 8.
    const auto samples = ClipPreparation::trimAndNormalise(silence(30) + std::vector(70, 0.5F), rate);
    EXPECT_EQ(samples, silence(22) + std::vector(70, 1.0F));
}

TEST(TrimAndNormalise, AnOnsetBeforeThePreRollKeepsEverything) {
    const auto samples = ClipPreparation::trimAndNormalise(silence(21) + std::vector(70, 0.5F), rate);
    EXPECT_EQ(samples, silence(21) + std::vector(70, 1.0F));
}

TEST(TrimAndNormalise, TheOnsetIsAHundredthOfThePeak) {
    const std::vector<float> quiet(100, 0.0099F);
    const std::vector<float> exact(100, 0.01F);
    const std::vector<float> loud{1.0F};
    EXPECT_EQ(ClipPreparation::trimAndNormalise(quiet + loud, 1000)->size(), 2U);
    EXPECT_EQ(ClipPreparation::trimAndNormalise(exact + loud, 1000)->size(), 101U);
}

TEST(TrimAndNormalise, NothingIsCutAtTheEnd) {
    const auto samples = ClipPreparation::trimAndNormalise(std::vector(10, 0.5F) + silence(1000), rate);
    EXPECT_EQ(samples->size(), 1010U);
}

TEST(TrimAndNormalise, NoSamplesAreSilent) {
    EXPECT_FALSE(ClipPreparation::trimAndNormalise({}, rate));
}

TEST(EffectiveSeconds, EndsWithTheBlockThatStillHoldsSound) {
    // Blocks of 220 samples; the one from 22000 to 22220 holds the last 50 of the tone.
    const DecodedClip clip = clipOf(sine(440, rate, rate) + silence(rate));
    EXPECT_EQ(clip.effectiveSeconds(rate), 22220.0 / rate);
}

TEST(EffectiveSeconds, GapsInTheMiddleCount) {
    const DecodedClip clip =
        clipOf(std::vector(220, 1.0F) + silence(22000) + std::vector(220, 1.0F) + silence(500));
    EXPECT_EQ(clip.effectiveSeconds(rate), 22440.0 / rate);
}

TEST(EffectiveSeconds, TheThresholdIsStrict) {
    EXPECT_EQ(clipOf(std::vector(220, 0.0055F)).effectiveSeconds(rate), 0.0);
    EXPECT_EQ(clipOf(std::vector(220, 0.0057F)).effectiveSeconds(rate), 220.0 / rate);
}

TEST(EffectiveSeconds, TheLastBlockMayBeShorter) {
    // Ten loud samples are loud enough in a block of ten.
    const DecodedClip clip = clipOf(silence(220) + std::vector(10, 0.01F));
    EXPECT_EQ(clip.effectiveSeconds(rate), 230.0 / rate);
}

TEST(EffectiveSeconds, IsZeroForSilenceAndForNothing) {
    EXPECT_EQ(clipOf(silence(1000)).effectiveSeconds(rate), 0.0);
    EXPECT_EQ(clipOf({}).effectiveSeconds(rate), 0.0);
}

TEST(EffectiveSeconds, BlocksAreOneSampleBelowAHundredHertz) {
    EXPECT_EQ(clipOf({1.0F, 0.0F, 1.0F, 0.0F}).effectiveSeconds(50), 3.0 / 50);
}

// exp(-gamma / 2) * 2 / sqrt(pi): geometric over arithmetic mean of Rayleigh-distributed magnitudes.
TEST(Flatness, OfLongNoiseIsThatOfRayleighMagnitudes) {
    EXPECT_NEAR(clipOf(noise(1, 20 * rate)).flatness(rate), 0.845, 0.005);
}

TEST(Flatness, OfASineIsCloseToZero) {
    EXPECT_LT(clipOf(sine(1000, 44100, 2 * 44100)).flatness(44100), 0.02);
}

// The definition, in double precision and with one transform of the whole signal.
double flatnessByDefinition(std::span<const float> samples, int sampleRate) {
    STFT stft(4096, 1024);
    const STFT::Spectrum spectrum = stft.forward(samples);
    const auto low = static_cast<std::size_t>(245760 / sampleRate);
    const auto high = std::min<std::size_t>(2048, static_cast<std::size_t>(24576000 / sampleRate));
    std::vector<double> energies;
    std::vector<double> ratios;
    for (std::size_t start = 0; start < spectrum.re.size(); start += 2049) {
        double energy = 0;
        double sum = 0;
        double logSum = 0;
        for (std::size_t k = start + low; k <= start + high; ++k) {
            const double magnitude = std::hypot(spectrum.re[k], spectrum.im[k]);
            energy += magnitude * magnitude;
            sum += magnitude + 1e-9;
            logSum += std::log(magnitude + 1e-9);
        }
        const auto count = static_cast<double>(high - low + 1);
        energies.push_back(energy);
        ratios.push_back(std::exp(logSum / count) / (sum / count));
    }
    const double threshold = 0.001 * *std::max_element(energies.begin(), energies.end());
    double total = 0;
    int loud = 0;
    for (std::size_t t = 0; t < energies.size(); ++t) {
        if (energies[t] <= threshold) continue;
        total += ratios[t];
        ++loud;
    }
    return total / loud;
}

TEST(Flatness, FollowsItsDefinitionForAnyLength) {
    for (const std::size_t length : {4095U, 64U * 1024, 65U * 1024 + 1, 300000U}) {
        std::vector<float> samples = noise(2, length);
        for (std::size_t i = 0; i < length; ++i)  // swells, so that some frames are too quiet to count
            samples[i] *= std::exp(-8.0F * static_cast<float>(length - i) / static_cast<float>(length));
        for (const int sampleRate : {8000, 22050, 44100}) {
            EXPECT_NEAR(clipOf(samples).flatness(sampleRate), flatnessByDefinition(samples, sampleRate), 1e-5)
                << length << " samples at " << sampleRate;
        }
    }
}

// One sample has a flat spectrum. Adding two thousand equal terms in single precision leans to one side.
TEST(Flatness, OfASingleSampleIsOne) {
    EXPECT_NEAR(clipOf({1.0F}).flatness(8000), 1.0, 5e-4);
}

TEST(Flatness, QuietFramesDoNotCount) {
    const std::vector<float> tone = sine(1000, rate, 2 * rate);
    std::vector<float> hiss = noise(3, 4 * rate, 0.003F);
    const double toneAlone = clipOf(tone).flatness(rate);
    EXPECT_NEAR(clipOf(tone + hiss).flatness(rate), toneAlone, 0.02);
    // The same hiss as loud as the tone does.
    for (float& sample : hiss)
        sample *= 300;
    EXPECT_GT(clipOf(tone + hiss).flatness(rate), 0.4);
}

// Loud frames late in a long clip decide which of the early ones count.
TEST(Flatness, TheLoudestFrameMayComeLast) {
    const std::vector<float> hiss = noise(4, 10 * rate, 0.003F);
    const std::vector<float> tone = sine(1000, rate, 2 * rate);
    EXPECT_LT(clipOf(hiss + tone).flatness(rate), 0.2);
}

TEST(Flatness, OnlySixtyToSixThousandHertzCount) {
    // Inaudible to the measure, yet louder than the tone.
    std::vector<float> samples = sine(1000, 44100, 44100, 0.1);
    const std::vector<float> high = sine(15000, 44100, 44100, 0.9);
    std::transform(samples.begin(), samples.end(), high.begin(), samples.begin(), std::plus<>());
    EXPECT_LT(clipOf(samples).flatness(44100), 0.05);
}

TEST(Flatness, IsOneWithoutALoudFrame) {
    EXPECT_EQ(clipOf(silence(20000)).flatness(rate), 1.0);
    EXPECT_EQ(clipOf({}).flatness(rate), 1.0);
}

TEST(Flatness, IsOneWhenTheBandIsEmpty) {
    // At 100 Hz the band would begin at bin 2457 of 2048.
    EXPECT_EQ(clipOf(noise(5, 5000)).flatness(100), 1.0);
}

TEST(Flatness, OfAClipShorterThanAFrameIsMeasured) {
    const double flatness = clipOf(sine(1000, rate, 500)).flatness(rate);
    EXPECT_GT(flatness, 0.0);
    EXPECT_LT(flatness, 1.0);
}

TEST(CutAndFade, FadesTheLastTwentyMilliseconds) {
    const std::vector<float> clip = ClipPreparation::cutAndFade(std::vector(3 * rate, 1.0F), 65536, rate);
    ASSERT_EQ(clip.size(), 65536U);
    constexpr std::size_t fade = 441;
    const std::size_t start = clip.size() - fade;
    EXPECT_EQ(clip[start - 1], 1.0F);
    EXPECT_EQ(clip[start], 1.0F);  // gain 1 at first
    for (std::size_t j = 0; j < fade; ++j) {
        const double gain = 0.5 + 0.5 * std::cos(3.1415925 * static_cast<double>(j) / fade);
        ASSERT_NEAR(clip[start + j], gain, 1e-6) << "sample " << j;
    }
    EXPECT_GT(clip.back(), 0.0F);
    EXPECT_LT(clip.back(), 2e-5F);
}

TEST(CutAndFade, AClipThatFitsIsUnchanged) {
    const std::vector<float> samples = noise(6, 1000);
    EXPECT_EQ(ClipPreparation::cutAndFade(samples, 1000, rate), samples);
    EXPECT_EQ(ClipPreparation::cutAndFade(samples, 2000, rate), samples);
    EXPECT_NE(ClipPreparation::cutAndFade(samples, 999, rate),
              std::vector<float>(samples.begin(), samples.end() - 1));
}

TEST(CutAndFade, AVeryShortClipFadesFromItsStart) {
    const std::vector<float> clip = ClipPreparation::cutAndFade(std::vector(1000, 1.0F), 4, rate);
    ASSERT_EQ(clip.size(), 4U);
    EXPECT_EQ(clip[0], 1.0F);
    EXPECT_NEAR(clip[2], 0.5F, 1e-6F);
}

TEST(CutAndFade, NoSamplesMayBeLeft) {
    EXPECT_TRUE(ClipPreparation::cutAndFade(noise(7, 10), 0, rate).empty());
}

TEST(Prepare, MakesTheImageOfTheCutClip) {
    const ModelConfig config = ModelConfig::forSeconds(rate, 0.5, AnalysisProfile::percussive, 64);
    const FeatureExtractor extractor(config);
    STFT stft = extractor.makeSTFT();
    DecodedClip clip = clipOf(noise(8, 2 * static_cast<std::size_t>(config.clipSamples())));
    clip.originalSeconds = 7.5;
    const PreparedClip prepared = ClipPreparation::prepare(clip, config, extractor, stft);
    EXPECT_EQ(prepared.name, clip.name);
    EXPECT_EQ(prepared.originalSeconds, 7.5);
    const std::vector<float> cut = ClipPreparation::cutAndFade(clip.samples, config.clipSamples(), rate);
    EXPECT_EQ(prepared.image, extractor.features(cut, stft));
    EXPECT_EQ(prepared.image.size(), static_cast<std::size_t>(config.nMels * config.frames));
}

TEST(Prepare, AShortClipIsPassedUnchanged) {
    const ModelConfig config = ModelConfig::forSeconds(rate, 2.0, AnalysisProfile::percussive, 64);
    const FeatureExtractor extractor(config);
    STFT stft = extractor.makeSTFT();
    const DecodedClip clip = clipOf(noise(9, rate));
    EXPECT_EQ(ClipPreparation::prepare(clip, config, extractor, stft).image,
              extractor.features(clip.samples, stft));
}

TEST(ResolveProfile, LongSustainedNotesAreTonal) {
    EXPECT_EQ(ClipPreparation::resolveProfile({2.0, 1.0, 3.0}, {0.1, 0.05, 0.02}), AnalysisProfile::tonal);
}

TEST(ResolveProfile, ShortNoisySoundsArePercussive) {
    EXPECT_EQ(ClipPreparation::resolveProfile({0.2, 0.1, 0.15}, {0.5, 0.6, 0.4}),
              AnalysisProfile::percussive);
}

TEST(ResolveProfile, NeedsBothLengthAndLowFlatness) {
    EXPECT_EQ(ClipPreparation::resolveProfile({0.3}, {0.1499}), AnalysisProfile::tonal);
    EXPECT_EQ(ClipPreparation::resolveProfile({0.2999}, {0.1499}), AnalysisProfile::percussive);
    EXPECT_EQ(ClipPreparation::resolveProfile({0.3}, {0.15}), AnalysisProfile::percussive);
}

TEST(ResolveProfile, TakesTheUpperMedianOfAnEvenNumber) {
    EXPECT_EQ(ClipPreparation::resolveProfile({0.1, 0.4}, {0.1, 0.1}), AnalysisProfile::tonal);
    EXPECT_EQ(ClipPreparation::resolveProfile({0.4, 0.4}, {0.2, 0.1}), AnalysisProfile::percussive);
}

TEST(SuggestClipSeconds, TakesTheNinetiethPercentileWithSomeRoom) {
    EXPECT_EQ(ClipPreparation::suggestClipSeconds({1.0}), 1.0 * 1.05 + 0.05);
    EXPECT_EQ(ClipPreparation::suggestClipSeconds({3.0, 1.0, 2.0}), 3.0 * 1.05 + 0.05);
    // Eleven values: index trunc(9.9) = 9, the second largest.
    EXPECT_EQ(ClipPreparation::suggestClipSeconds({9, .1, .2, .3, .4, .5, .6, .7, .8, .9, 1.0}),
              1.0 * 1.05 + 0.05);
}

TEST(SuggestClipSeconds, StaysBetweenAQuarterAndFourSeconds) {
    EXPECT_EQ(ClipPreparation::suggestClipSeconds({0.0}), 0.25);
    EXPECT_EQ(ClipPreparation::suggestClipSeconds({100.0}), 4.0);
}

TEST(ClipPreparationDeathTest, NoClipsAreAProgrammingError) {
    EXPECT_DEATH((void)ClipPreparation::suggestClipSeconds({}), "clip length");
    EXPECT_DEATH((void)ClipPreparation::resolveProfile({}, {}), "median");
}

}  // namespace
}  // namespace quillmere
