#include "QuillmereCore/DSP/MelFilterBank.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "Support/Guarded.h"
#include "Support/Signals.h"

namespace quillmere {
namespace {

using testing::Guarded;

std::vector<float> forward(const MelFilterBank& bank, const std::vector<float>& spectrum) {
    std::vector<float> mel(static_cast<std::size_t>(bank.nMels()));
    bank.forward(spectrum, mel);
    return mel;
}

std::vector<float> inverse(const MelFilterBank& bank, const std::vector<float>& mel) {
    std::vector<float> spectrum(static_cast<std::size_t>(bank.bins()));
    bank.inverse(mel, spectrum);
    return spectrum;
}

std::vector<float> filled(int count, float value) {
    return std::vector<float>(static_cast<std::size_t>(count), value);
}

std::vector<float> positiveNoise(int count) {
    std::vector<float> values = testing::noise(3, static_cast<std::size_t>(count));
    for (float& value : values)
        value = std::abs(value);
    return values;
}

// Edge i of nMels + 2 equally spaced in mel, in Hz.
double edge(int i, int nMels, double nyquist) {
    const double top = 2595 * std::log10(1 + nyquist / 700);
    return 700 * (std::pow(10, i * top / (nMels + 1) / 2595) - 1);
}

TEST(MelFilterBank, CentresAreEquallySpacedInMel) {
    const MelFilterBank bank(22050, 1024, 80);
    ASSERT_EQ(bank.centers().size(), 80U);
    for (int m = 0; m < 80; ++m)
        EXPECT_NEAR(bank.centers()[static_cast<std::size_t>(m)], edge(m + 1, 80, 11025), 1e-3)
            << "band " << m;
}

TEST(MelFilterBank, CentresAreStrictlyIncreasing) {
    for (const int nMels : {2, 32, 96, 384}) {
        const MelFilterBank bank(44100, 1024, nMels);
        EXPECT_TRUE(std::ranges::is_sorted(bank.centers(), std::ranges::less_equal{})) << nMels << " bands";
        for (std::size_t m = 1; m < bank.centers().size(); ++m)
            EXPECT_LT(bank.centers()[m - 1], bank.centers()[m]) << "band " << m << " of " << nMels;
    }
}

// The last filter ends at Nyquist: one band more, at 11025 Hz, would be edge 81.
TEST(MelFilterBank, TheTopEdgeIsNyquist) {
    EXPECT_NEAR(edge(81, 80, 11025), 11025, 1e-9);
    const MelFilterBank bank(22050, 1024, 80);
    const MelFilterBank::Row& last = bank.rows().back();
    EXPECT_EQ(last.start + static_cast<int>(last.weights.size()), 512);
    const double centre = edge(80, 80, 11025);
    const double lastBin = 511 * 22050.0 / 1024;
    EXPECT_NEAR(last.weights.back(), (11025 - lastBin) / (11025 - centre), 1e-6);
}

TEST(MelFilterBank, NoFilterCoversDCOrNyquist) {
    const MelFilterBank bank(22050, 1024, 80);
    ASSERT_EQ(bank.binSum().size(), 513U);
    EXPECT_EQ(bank.binSum()[0], 0.0F);
    EXPECT_EQ(bank.binSum()[512], 0.0F);
}

TEST(MelFilterBank, WeightsAreContiguousAndPositive) {
    const MelFilterBank bank(22050, 1024, 80);
    for (int m = 0; m < 80; ++m) {
        const MelFilterBank::Row& row = bank.rows()[static_cast<std::size_t>(m)];
        ASSERT_FALSE(row.weights.empty()) << "band " << m;
        EXPECT_TRUE(std::ranges::all_of(row.weights, [](float w) { return w > 0 && w <= 1; }))
            << "band " << m;
        // The neighbours on both sides lie outside the triangle.
        const double binHz = 22050.0 / 1024;
        EXPECT_LE((row.start - 1) * binHz, edge(m, 80, 11025)) << "band " << m;
        EXPECT_GE((row.start + static_cast<int>(row.weights.size())) * binHz, edge(m + 2, 80, 11025))
            << "band " << m;
    }
}

TEST(MelFilterBank, WeightsAreTrianglesThatPeakAtOne) {
    const MelFilterBank bank(44100, 4096, 96);
    const double binHz = 44100.0 / 4096;
    for (int m = 20; m < 96; ++m) {
        const MelFilterBank::Row& row = bank.rows()[static_cast<std::size_t>(m)];
        const double left = edge(m, 96, 22050);
        const double centre = edge(m + 1, 96, 22050);
        const double right = edge(m + 2, 96, 22050);
        float sum = 0;
        for (std::size_t j = 0; j < row.weights.size(); ++j) {
            const double f = (row.start + static_cast<double>(j)) * binHz;
            const double expected =
                f <= centre ? (f - left) / (centre - left) : (right - f) / (right - centre);
            EXPECT_NEAR(row.weights[j], expected, 1e-6) << "band " << m << " weight " << j;
            sum += row.weights[j];
        }
        EXPECT_EQ(row.sum, sum) << "band " << m;
    }
}

TEST(MelFilterBank, BinSumsAddTheWeightsOfAllFilters) {
    const MelFilterBank bank(44100, 1024, 96);
    std::vector<double> sums(513);
    for (const MelFilterBank::Row& row : bank.rows()) {
        for (std::size_t j = 0; j < row.weights.size(); ++j)
            sums[static_cast<std::size_t>(row.start) + j] += static_cast<double>(row.weights[j]);
    }
    for (std::size_t k = 0; k < sums.size(); ++k)
        EXPECT_NEAR(bank.binSum()[k], sums[k], 1e-6) << "bin " << k;
}

TEST(MelFilterBank, BandsNarrowerThanABinTakeTheBinNearestToTheirCentre) {
    const MelFilterBank bank(22050, 256, 96);
    const double binHz = 22050.0 / 256;
    int narrow = 0;
    for (int m = 0; m < 96; ++m) {
        const double left = edge(m, 96, 11025);
        const double right = edge(m + 2, 96, 11025);
        const bool containsBin = std::floor(left / binHz + 1) * binHz < right;
        if (containsBin) continue;
        ++narrow;
        const MelFilterBank::Row& row = bank.rows()[static_cast<std::size_t>(m)];
        EXPECT_EQ(row.start, static_cast<int>(std::round(edge(m + 1, 96, 11025) / binHz))) << "band " << m;
        EXPECT_EQ(row.weights, std::vector<float>{1.0F}) << "band " << m;
        EXPECT_EQ(row.sum, 1.0F) << "band " << m;
    }
    EXPECT_GT(narrow, 5);
}

// The first band is centred nearer to 0 Hz than to the first bin, so bin 0 stands for it and is covered.
TEST(MelFilterBank, AtHighRatesTheFirstBandMayFallOnBinZero) {
    const MelFilterBank bank(88200, 1024, 96);
    EXPECT_EQ(bank.rows()[0].start, 0);
    EXPECT_EQ(bank.rows()[0].weights, std::vector<float>{1.0F});
    EXPECT_EQ(bank.binSum()[0], 1.0F);
    EXPECT_EQ(inverse(bank, filled(96, 1.0F))[0], 1.0F);
}

TEST(MelFilterBank, ForwardKeepsAFlatSpectrumFlat) {
    for (const float level : {1.0F, 0.25F}) {
        const MelFilterBank bank(44100, 1024, 96);
        for (const float value : forward(bank, filled(513, level)))
            EXPECT_NEAR(value, level, 1e-6F * level);
    }
}

TEST(MelFilterBank, ForwardIsTheWeightedAverage) {
    const MelFilterBank bank(44100, 1024, 96);
    const std::vector<float> spectrum = positiveNoise(513);
    const std::vector<float> mel = forward(bank, spectrum);
    for (std::size_t m = 0; m < 96; ++m) {
        const MelFilterBank::Row& row = bank.rows()[m];
        double total = 0;
        double weights = 0;
        for (std::size_t j = 0; j < row.weights.size(); ++j) {
            const double weight = row.weights[j];
            total += weight * static_cast<double>(spectrum[static_cast<std::size_t>(row.start) + j]);
            weights += weight;
        }
        EXPECT_NEAR(mel[m], total / weights, 2e-6) << "band " << m;
    }
}

TEST(MelFilterBank, InverseOfOnesIsOneInEveryBinButDC) {
    const MelFilterBank bank(22050, 1024, 80);
    const std::vector<float> spectrum = inverse(bank, filled(80, 1.0F));
    EXPECT_EQ(spectrum[0], 0.0F);
    for (std::size_t k = 1; k <= 512; ++k)  // Nyquist repeats the bin below
        EXPECT_NEAR(spectrum[k], 1.0F, 1e-6F) << "bin " << k;
}

TEST(MelFilterBank, InverseSpreadsBandsByTheirWeights) {
    const MelFilterBank bank(44100, 2048, 64);
    const std::vector<float> mel = positiveNoise(64);
    std::vector<double> spread(1025);
    for (std::size_t m = 0; m < 64; ++m) {
        const MelFilterBank::Row& row = bank.rows()[m];
        for (std::size_t j = 0; j < row.weights.size(); ++j)
            spread[static_cast<std::size_t>(row.start) + j] +=
                static_cast<double>(row.weights[j]) * static_cast<double>(mel[m]);
    }
    const std::vector<float> spectrum = inverse(bank, mel);
    for (std::size_t k = 0; k < 1025; ++k) {
        const double weight = bank.binSum()[k];
        if (weight > 1e-6) {
            EXPECT_NEAR(spectrum[k], spread[k] / weight, 1e-5) << "bin " << k;
        }
    }
}

TEST(MelFilterBank, UncoveredBinsRepeatTheCoveredBinBelow) {
    const MelFilterBank bank(44100, 4096, 8);
    const std::vector<float> spectrum = inverse(bank, positiveNoise(8));
    EXPECT_LE(bank.binSum()[2048], 1e-6F);  // rounding may leave a trace of the last triangle
    EXPECT_EQ(spectrum[2048], spectrum[2047]);
    EXPECT_NE(spectrum[2047], 0.0F);
}

TEST(MelFilterBank, BinsBelowTheFirstCoveredOneAreZero) {
    const MelFilterBank bank(8000, 8, 1);  // one triangle; bin 0 is at 0 Hz
    const std::vector<float> spectrum = inverse(bank, {5.0F});
    EXPECT_EQ(spectrum[0], 0.0F);
    EXPECT_FLOAT_EQ(spectrum[1], 5.0F);
}

TEST(MelFilterBank, WithoutBandsThereIsNothingToMap) {
    const MelFilterBank bank(22050, 64, 0);
    EXPECT_TRUE(bank.rows().empty());
    EXPECT_TRUE(bank.centers().empty());
    EXPECT_TRUE(std::ranges::all_of(bank.binSum(), [](float sum) { return sum == 0; }));
    EXPECT_TRUE(forward(bank, filled(33, 1.0F)).empty());
    EXPECT_EQ(inverse(bank, {}), filled(33, 0.0F));
}

TEST(MelFilterBank, AFrameOfOneSampleHasOneBin) {
    const MelFilterBank bank(8000, 1, 4);
    EXPECT_EQ(bank.bins(), 1);
    for (const MelFilterBank::Row& row : bank.rows()) {
        EXPECT_EQ(row.start, 0);
        EXPECT_EQ(row.weights, std::vector<float>{1.0F});
    }
}

TEST(MelFilterBank, MapsWriteTheirOutputAndNothingElse) {
    const MelFilterBank bank(44100, 1024, 96);
    Guarded mel(96);
    bank.forward(filled(513, 1.0F), mel.span());
    EXPECT_TRUE(mel.intact() && mel.filled());
    Guarded spectrum(513);
    bank.inverse(mel.span(), spectrum.span());
    EXPECT_TRUE(spectrum.intact() && spectrum.filled());
}

TEST(MelFilterBankDeathTest, ImpossibleSizesAreRefused) {
    EXPECT_DEATH(MelFilterBank(0, 1024, 80), "impossible");
    EXPECT_DEATH(MelFilterBank(22050, 0, 80), "impossible");
    EXPECT_DEATH(MelFilterBank(22050, 1024, -1), "impossible");
}

TEST(MelFilterBankDeathTest, ShortBuffersAreRefused) {
    const MelFilterBank bank(22050, 64, 8);
    std::vector<float> spectrum(33);
    std::vector<float> mel(8);
    EXPECT_DEATH(bank.forward(std::span(spectrum).first(32), mel), "too small");
    EXPECT_DEATH(bank.forward(spectrum, std::span(mel).first(7)), "too small");
    EXPECT_DEATH(bank.inverse(mel, std::span(spectrum).first(32)), "too small");
}

}  // namespace
}  // namespace quillmere
