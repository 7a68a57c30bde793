#include "QuillmereCore/Generate/Finishing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <string>
#include <vector>

#include "Support/TempFolder.h"

namespace quillmere {
namespace {

using Signal = std::vector<float>;
using testing::TempFolder;

constexpr int sampleRate = 22050;

Signal noise(std::size_t count, std::uint64_t seed = 7) {
    SeededRNG rng(seed);
    Signal x(count);
    for (float& value : x)
        value = 0.7F * rng.signedUniform();
    return x;
}

Signal constant(std::size_t count, float value) {
    return Signal(count, value);
}

Signal operator+(Signal first, const Signal& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

float peakOf(std::span<const float> x) {
    float peak = 0;
    for (const float value : x)
        peak = std::max(peak, std::abs(value));
    return peak;
}

Signal finished(Signal x, const Aesthetics& aesthetics, std::uint64_t seed = 1) {
    SeededRNG rng(seed);
    Finishing::finish(x, aesthetics, sampleRate, rng);
    return x;
}

Signal crushed(Signal x, double bits) {
    Finishing::crush(x, bits);
    return x;
}

Signal held(Signal x, double factor) {
    Finishing::decimate(x, factor);
    return x;
}

Signal reversed(Signal x) {
    std::ranges::reverse(x);
    return x;
}

std::size_t firstFree(const std::vector<std::string>& names, std::string_view prefix) {
    return Finishing::firstFreeIndex(names, prefix);
}

TEST(DCBlocker, LetsAConstantDieAwayBySteps) {
    Signal x = constant(4, 0.5F);
    Finishing::blockDC(x);
    EXPECT_FLOAT_EQ(x[0], 0.5F);
    EXPECT_FLOAT_EQ(x[1], 0.5F * 0.995F);
    EXPECT_FLOAT_EQ(x[2], 0.5F * 0.995F * 0.995F);
    EXPECT_FLOAT_EQ(x[3], 0.5F * 0.995F * 0.995F * 0.995F);
}

TEST(DCBlocker, AnswersAnImpulseWithItsFormula) {
    Signal x{1, 0, 0};
    Finishing::blockDC(x);
    EXPECT_FLOAT_EQ(x[0], 1.0F);
    EXPECT_NEAR(x[1], 0.995F - 1.0F, 1e-7F);
    EXPECT_NEAR(x[2], 0.995F * (0.995F - 1.0F), 1e-7F);
}

TEST(TrimSilence, LeavesFewerThan384SamplesAlone) {
    EXPECT_EQ(Finishing::trimSilence(constant(383, 0), sampleRate).size(), 383U);
    EXPECT_TRUE(Finishing::trimSilence({}, sampleRate).empty());
}

TEST(TrimSilence, ShortensSilenceTo128Samples) {
    EXPECT_EQ(Finishing::trimSilence(constant(384, 0), sampleRate).size(), 128U);
    EXPECT_EQ(Finishing::trimSilence(constant(100000, 1e-10F), sampleRate).size(), 128U);
}

TEST(TrimSilence, ReturnsSoundThroughoutUnchanged) {
    const Signal x = noise(1500);
    EXPECT_EQ(Finishing::trimSilence(x, sampleRate), x);
}

// Sound in block 10 only: 1280 - 32 samples of silence go, 10 ms (80 samples at 8 kHz) stay after the block.
TEST(TrimSilence, KeepsALeadInAndATail) {
    const Signal x = constant(1280, 0) + constant(20, 0.5F) + constant(3000, 0);
    const auto range = Finishing::audibleRange(x, 8000);
    EXPECT_EQ(range.start, 1248U);
    EXPECT_EQ(range.end, 1408U + 80U);
    const Signal trimmed = Finishing::trimSilence(x, 8000);
    ASSERT_EQ(trimmed.size(), 240U);
    EXPECT_EQ(trimmed[31], 0.0F);
    EXPECT_EQ(trimmed[32], 0.5F);
}

TEST(TrimSilence, LeadInAndTailEndWithTheSignal) {
    const Signal x = noise(128) + constant(256, 0) + noise(128);
    const auto range = Finishing::audibleRange(x, sampleRate);
    EXPECT_EQ(range.start, 0U);
    EXPECT_EQ(range.end, x.size());
}

TEST(TrimSilence, DoesNotMeasureTheTailOfLessThanABlock) {
    EXPECT_EQ(Finishing::trimSilence(constant(512, 0) + constant(100, 0.5F), sampleRate), constant(128, 0));
}

TEST(TrimSilence, CutsBelow55Decibels) {
    const Signal loud = constant(128, 1.0F);
    const auto tooQuiet = Finishing::audibleRange(loud + constant(640, 0.0017F), 100);
    EXPECT_EQ(tooQuiet.end, 129U);
    const auto loudEnough = Finishing::audibleRange(loud + constant(640, 0.0019F), 100);
    EXPECT_EQ(loudEnough.end, 768U);
}

float levelOf(const Signal& block) {
    float sum = 0;
    for (const float value : block)
        sum += value * value;
    return std::sqrt(sum / static_cast<float>(block.size()));
}

TEST(TrimSilence, CutsWhatIsJustAsQuietAsTheLimit) {
    constexpr float quiet = 9.0F / 4096;  // one of the levels that the limit of another can be
    float loud = 1.22F;
    while (levelOf(constant(128, loud)) * 0.0018F < quiet)
        loud = std::nextafter(loud, 2.0F);
    ASSERT_EQ(levelOf(constant(128, loud)) * 0.0018F, quiet);
    EXPECT_EQ(Finishing::audibleRange(constant(128, loud) + constant(640, quiet), 100).end, 129U);
}

TEST(TrimSilence, SurvivesValuesThatAreNotFinite) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(Finishing::trimSilence(constant(500, infinity), sampleRate).size(), 500U);
    EXPECT_EQ(Finishing::trimSilence(constant(500, std::nanf("")), sampleRate).size(), 128U);
}

TEST(Normalize, ScalesTheLargestMagnitudeToThePeak) {
    Signal x{0.1F, -0.4F, 0.2F};
    Finishing::normalize(x, 0.95F);
    EXPECT_FLOAT_EQ(x[0], 0.2375F);
    EXPECT_FLOAT_EQ(x[1], -0.95F);
    EXPECT_FLOAT_EQ(x[2], 0.475F);
}

TEST(Normalize, FindsThePeakAtAnyPlace) {
    for (std::size_t place = 0; place < 40; ++place) {
        Signal x = constant(40, 0.1F);
        x[place] = -0.5F;
        Finishing::normalize(x, 1);
        EXPECT_FLOAT_EQ(x[place], -1) << place;
        EXPECT_FLOAT_EQ(x[(place + 1) % 40], 0.2F) << place;
    }
}

TEST(Normalize, LeavesSilenceAndNextToNothingAlone) {
    Signal x = constant(5, 1e-9F);
    Finishing::normalize(x, 0.95F);
    EXPECT_EQ(x, constant(5, 1e-9F));
    Signal empty;
    Finishing::normalize(empty, 0.95F);
    EXPECT_TRUE(empty.empty());
}

TEST(Decay, FallsToOneOverEAfterItsTime) {
    Signal x = constant(2000, 1.0F);
    Finishing::applyDecay(x, 100, 10000);  // tau = 1000 samples
    EXPECT_EQ(x[0], 1.0F);
    EXPECT_NEAR(x[1000], std::exp(-1.0F), 1e-6F);
}

TEST(Decay, IsOffAtZeroAndBelow) {
    const Signal original = noise(100);
    for (const double time : {0.0, -5.0}) {
        Signal x = original;
        Finishing::applyDecay(x, time, sampleRate);
        EXPECT_EQ(x, original) << time;
    }
}

TEST(Decay, ATimeOfNextToNothingLeavesOneSample) {
    Signal x = constant(3, 0.5F);
    Finishing::applyDecay(x, 1e-300, sampleRate);
    EXPECT_EQ(x, (Signal{0.5F, 0, 0}));
}

TEST(Drive, SaturatesAndReturnsToTheWorkingPeak) {
    Signal x{0.01F, -0.95F};
    Finishing::applyDrive(x, 20);
    EXPECT_FLOAT_EQ(x[1], -0.95F);
    EXPECT_NEAR(x[0], std::tanh(0.1F) / std::tanh(9.5F) * 0.95F, 1e-6F);
}

TEST(Drive, OfHalfADecibelIsOn) {
    Signal x{0.5F, -0.95F};
    Finishing::applyDrive(x, 0.5);
    const double gain = std::pow(10, 0.5 / 20);
    EXPECT_NEAR(x[0], std::tanh(gain * 0.5) / std::tanh(gain * 0.95) * 0.95, 1e-6);
}

TEST(Drive, IsOffAtZeroAndBelow) {
    const Signal original = noise(100);
    for (const double dB : {0.0, -12.0}) {
        Signal x = original;
        Finishing::applyDrive(x, dB);
        EXPECT_EQ(x, original) << dB;
    }
}

TEST(Decimate, FactorThatRoundsToOneDoesNothing) {
    const Signal x = noise(20);
    EXPECT_EQ(held(x, 1.4), x);
    EXPECT_EQ(held(x, 0), x);
    EXPECT_EQ(held(x, -3), x);
}

TEST(Decimate, OneAndAHalfRoundsToTwo) {
    EXPECT_EQ(held({1, 2, 3, 4}, 1.5), (Signal{1, 1, 3, 3}));
}

TEST(Decimate, TheLastBlockMayBeShorter) {
    EXPECT_EQ(held({1, 2, 3, 4, 5}, 3), (Signal{1, 1, 1, 4, 4}));
}

TEST(Decimate, AFactorBeyondTheLengthHoldsTheFirstSample) {
    EXPECT_EQ(held({1, 2, 3}, 64), (Signal{1, 1, 1}));
    EXPECT_EQ(held({1, 2, 3}, 1e300), (Signal{1, 1, 1}));
    EXPECT_EQ(held({}, 1e300), Signal{});
}

TEST(Crush, IsOffFrom23AndAHalfBits) {
    const Signal x = noise(100);
    EXPECT_EQ(crushed(x, 23.5), x);
    EXPECT_EQ(crushed(x, 24), x);
}

TEST(Crush, JustBelow23AndAHalfBitsRoundsTo23) {
    const float steps = 4194303;  // 2^22 - 1
    const Signal x = noise(100);
    const Signal result = crushed(x, 23.4);
    EXPECT_NE(result, x);
    for (std::size_t n = 0; n < x.size(); ++n)
        EXPECT_EQ(result[n], std::round(x[n] * steps) / steps) << n;
}

TEST(Crush, EightBitsGive127StepsPerPolarity) {
    EXPECT_EQ(crushed({1.0F, -1.0F, 0.5F / 127, -0.4F / 127}, 8), (Signal{1, -1, 1.0F / 127, -0.0F}));
}

TEST(Crush, RoundsHalvesAwayFromZero) {
    EXPECT_EQ(crushed({0.5F, -0.5F, 0.49F, 1.5F, -1.5F}, 2), (Signal{1, -1, 0, 2, -2}));
}

TEST(Crush, FewerThanTwoBitsAreTakenAsTwo) {
    const Signal x{0.9F, 0.4F, -0.6F};
    for (const double bits : {1.4, 1.0, 0.0, -7.0, -1e300})
        EXPECT_EQ(crushed(x, bits), (Signal{1, 0, -1})) << bits;
}

TEST(Fades, StartAndEndAtZero) {
    Signal x = constant(4000, 1.0F);
    Finishing::applyFades(x, sampleRate);
    EXPECT_EQ(x.front(), 0.0F);
    EXPECT_EQ(x.back(), 0.0F);
}

// 22 samples (1 ms) in, 441 (20 ms) out.
TEST(Fades, LastOneMillisecondInAndTwentyOut) {
    Signal x = constant(4000, 1.0F);
    Finishing::applyFades(x, sampleRate);
    EXPECT_FLOAT_EQ(x[11], 0.5F);
    EXPECT_FLOAT_EQ(x[21], 21.0F / 22);
    EXPECT_EQ(x[22], 1.0F);
    EXPECT_EQ(x[4000 - 442], 1.0F);
    EXPECT_FLOAT_EQ(x[4000 - 441], 440.0F / 441);
}

TEST(Fades, TakeAtMostAQuarterEach) {
    Signal x = constant(40, 1.0F);
    Finishing::applyFades(x, sampleRate);
    EXPECT_FLOAT_EQ(x[1], 0.1F);
    EXPECT_EQ(x[10], 1.0F);
    EXPECT_EQ(x[29], 1.0F);
    EXPECT_FLOAT_EQ(x[38], 0.1F);
}

TEST(Fades, LeaveFewerThanFourSamplesAlone) {
    for (std::size_t count = 0; count < 4; ++count) {
        Signal x = constant(count, 1.0F);
        Finishing::applyFades(x, sampleRate);
        EXPECT_EQ(x, constant(count, 1.0F));
    }
}

TEST(Finish, EndsAtTheRequestedPeak) {
    for (const double level : {-1.0, -12.0, 0.0}) {
        const float peak = peakOf(finished(noise(4000), {.normalize = level}));
        EXPECT_NEAR(peak, std::pow(10.0, level / 20), 1e-6) << level;
    }
}

TEST(Finish, TakesExactlyOneDraw) {
    for (const Aesthetics& aesthetics :
         {Aesthetics{}, Aesthetics{.reverseChance = 1}, Preset::named("Extreme")->aesthetics}) {
        SeededRNG rng(3);
        SeededRNG expected(3);
        Signal x = noise(1000);
        Finishing::finish(x, aesthetics, sampleRate, rng);
        (void)expected.uniform();
        EXPECT_EQ(rng, expected);
    }
}

// Without fades (three samples), trim or decay a reversal shows in the result directly.
TEST(Finish, AChanceOfOneAlwaysReverses) {
    const Signal forwards = finished({0.1F, 0.2F, 0.3F}, {});
    for (std::uint64_t seed = 0; seed < 50; ++seed)
        EXPECT_EQ(finished({0.1F, 0.2F, 0.3F}, {.reverseChance = 1}, seed), reversed(forwards)) << seed;
}

TEST(Finish, AChanceOfZeroNeverReverses) {
    const Signal forwards = finished({0.1F, 0.2F, 0.3F}, {});
    for (std::uint64_t seed = 0; seed < 50; ++seed)
        EXPECT_EQ(finished({0.1F, 0.2F, 0.3F}, {.reverseChance = 0}, seed), forwards) << seed;
}

TEST(Finish, ReversesWhenTheChanceIsAboveTheDraw) {
    const Signal forwards = finished({0.1F, 0.2F, 0.3F}, {});
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        const bool expected = SeededRNG(seed).uniform() < 0.5F;
        const Signal result = finished({0.1F, 0.2F, 0.3F}, {.reverseChance = 0.5}, seed);
        EXPECT_EQ(result, expected ? reversed(forwards) : forwards) << seed;
    }
}

TEST(Finish, ReversesBeforeTheDecay) {
    const Signal result =
        finished(constant(400, 0) + noise(4000), {.decay = 20, .reverseChance = 1, .normalize = 0});
    EXPECT_GT(peakOf(std::span(result).first(400)), 0.5F);
    EXPECT_LT(peakOf(std::span(result).last(400)), 1e-3F);
}

TEST(Finish, SilenceBecomes128SilentSamples) {
    EXPECT_EQ(finished(constant(5000, 0), {}), constant(128, 0));
    EXPECT_EQ(finished(constant(5000, 0), Preset::named("Extreme")->aesthetics), constant(128, 0));
}

TEST(Finish, NothingStaysNothing) {
    EXPECT_TRUE(finished({}, Preset::named("Extreme")->aesthetics).empty());
}

TEST(SanitisedPrefix, ReplacesWhatFileSystemsRefuseAndBlanks) {
    EXPECT_EQ(Finishing::sanitisedPrefix("my loop: v2"), "my_loop__v2");
    EXPECT_EQ(Finishing::sanitisedPrefix("a/b\\c:d*e?f\"g<h>i|j k"), "a_b_c_d_e_f_g_h_i_j_k");
}

// A system call would end the name there, and no number would ever make it a free one.
TEST(SanitisedPrefix, ReplacesNullCharacters) {
    EXPECT_EQ(Finishing::sanitisedPrefix(std::string("a\0b", 3)), "a_b");
}

TEST(SanitisedPrefix, KeepsEverythingElse) {
    EXPECT_EQ(Finishing::sanitisedPrefix("Größe-🥁.'\n"), "Größe-🥁.'\n");
    EXPECT_EQ(Finishing::sanitisedPrefix(""), "");
}

TEST(FileName, PadsTheNumberToFourDigits) {
    EXPECT_EQ(Finishing::fileName("kick_var", 11), "kick_var_0011.wav");
    EXPECT_EQ(Finishing::fileName("kick_var", 9999), "kick_var_9999.wav");
}

TEST(VariationName, IsWhatAGenerationGives) {
    EXPECT_TRUE(Finishing::isVariationName(Finishing::fileName("Kick_var", 1)));
    EXPECT_TRUE(Finishing::isVariationName("below/Kick_var_123456.wav"));
    EXPECT_TRUE(Finishing::isVariationName("_var_0000.wav"));
    for (const char* name : {"", ".wav", "_var_.wav", "Kick_var_001.wav", "Kick_var_0001.WAV",
                             "Kick_var_0001.wav.wav", "Kick_var0001.wav", "Kick_0001.wav", "0001.wav"})
        EXPECT_FALSE(Finishing::isVariationName(name)) << name;
}

TEST(FileName, WritesNumbersAbove9999WithAllDigits) {
    EXPECT_EQ(Finishing::fileName("kick_var", 12345), "kick_var_12345.wav");
}

TEST(FirstFreeIndex, FollowsTheLargestNumberAndFillsNoGaps) {
    EXPECT_EQ(firstFree({"kick_var_0003.wav", "kick_var_0010.wav"}, "kick_var"), 11U);
}

TEST(FirstFreeIndex, IgnoresNamesWithoutANumber) {
    EXPECT_EQ(firstFree({"kick_var_0010.wav", "kick_var_x.wav", "kick_var.wav", "kick_var_"}, "kick_var"),
              11U);
    EXPECT_EQ(firstFree({"kick_var_-7.wav", "kick_var_+7.wav", "kick_var_ 7.wav"}, "kick_var"), 1U);
}

TEST(FirstFreeIndex, IgnoresOtherPrefixes) {
    EXPECT_EQ(firstFree({"kick_var2_0099.wav", "kick_variation_5.wav", "akick_var_50.wav"}, "kick_var"), 1U);
}

TEST(FirstFreeIndex, TakesTheLeadingDigitsOfAnyEnding) {
    EXPECT_EQ(firstFree({"a_var_12abc.wav", "a_var_7", "a_var_0013.txt"}, "a_var"), 14U);
}

TEST(Fit, CutsLongerSoundsWithAFadeAndFillsShorterOnes) {
    std::vector<float> longer(4000, 0.5F);
    Finishing::fit(longer, 1000, 2, 8000);
    ASSERT_EQ(longer.size(), 1000U);
    EXPECT_EQ(longer[0], 1);
    EXPECT_EQ(longer[959], 1) << "5 ms are 40 samples";
    EXPECT_EQ(longer[979], 0.5F);
    EXPECT_EQ(longer[999], 0);
    std::vector<float> shorter(10, 0.5F);
    Finishing::fit(shorter, 20, 0.5F, 8000);
    EXPECT_EQ(shorter[9], 0.25F) << "no fade";
    EXPECT_EQ(shorter[10], 0);
    std::vector<float> same{0.25F, 0.5F};
    Finishing::fit(same, 2, 1, 8000);
    EXPECT_EQ(same, (std::vector{0.25F, 0.5F}));
}

TEST(Fit, FadesAtMostAQuarterOfAShortSound) {
    std::vector<float> sound(100, 1.0F);
    Finishing::fit(sound, 20, 1, 8000);
    EXPECT_EQ(sound[14], 1) << "5 ms would be 40 samples";
    EXPECT_EQ(sound[15], 0.8F);
    EXPECT_EQ(sound[19], 0);
}

TEST(FirstFreeIndex, IsOneForAnEmptyFolder) {
    EXPECT_EQ(firstFree({}, "kick_var"), 1U);
    const TempFolder folder;
    EXPECT_EQ(Finishing::firstFreeIndex(folder.path(), "kick_var"), 1U);
}

TEST(FirstFreeIndex, IsOneForAFolderThatCannotBeListed) {
    const TempFolder folder;
    EXPECT_EQ(Finishing::firstFreeIndex(folder / "missing", "kick_var"), 1U);
    testing::writeText(folder / "file", "");
    EXPECT_EQ(Finishing::firstFreeIndex(folder / "file", "kick_var"), 1U);
}

TEST(FirstFreeIndex, SkipsNumbersThatFitNoInteger) {
    EXPECT_EQ(firstFree({"kick_var_99999999999999999999.wav", "kick_var_0002.wav"}, "kick_var"), 3U);
    EXPECT_EQ(firstFree({"kick_var_" + std::string(5000, '9')}, "kick_var"), 1U);
    EXPECT_EQ(firstFree({"kick_var_" + std::string(200, '0') + "8.wav"}, "kick_var"), 9U);
}

TEST(FirstFreeIndex, TheLargestIntegerHasASuccessor) {
    EXPECT_EQ(firstFree({"kick_var_9223372036854775807.wav"}, "kick_var"), 9223372036854775808U);
}

TEST(FirstFreeIndex, ReadsTheNamesOfFilesAndFolders) {
    const TempFolder folder;
    testing::writeText(folder / "Größe_var_0004.wav", "");
    std::filesystem::create_directory(folder / "Größe_var_0006");
    EXPECT_EQ(Finishing::firstFreeIndex(folder.path(), "Größe_var"), 7U);
}

}  // namespace
}  // namespace quillmere
