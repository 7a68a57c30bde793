#include "QuillmereCore/DSP/BandMaps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "Support/InstructionSets.h"
#include "Support/Signals.h"

namespace quillmere {
namespace {

using testing::InstructionSet;

struct Size {
    int sampleRate, nFFT, nMels;
};
constexpr Size sizes[] = {{8000, 256, 32}, {44100, 1024, 96}, {44100, 4096, 384}};

std::vector<float> positiveNoise(std::uint64_t seed, std::size_t count) {
    std::vector<float> values = testing::noise(seed, count);
    for (float& value : values)
        value = std::abs(value) + 0.01F;
    return values;
}

TEST(BandMaps, MapAsTheFilterBankDoes) {
    for (const Size& size : sizes) {
        const MelFilterBank bank(size.sampleRate, size.nFFT, size.nMels);
        BandMaps maps(bank);
        constexpr std::size_t frames = 19;  // more than a vector holds, and no multiple of it
        const std::vector<float> spectra = positiveNoise(1, frames * maps.bins());
        std::vector<float> mel(frames * maps.bands());
        std::vector<float> back(spectra.size());
        maps.forward(spectra, mel);
        maps.inverse(mel, back);
        std::vector<float> expectedMel(maps.bands());
        std::vector<float> expectedBack(maps.bins());
        for (std::size_t t = 0; t < frames; ++t) {
            bank.forward(std::span(spectra).subspan(t * maps.bins()), expectedMel);
            bank.inverse(std::span(mel).subspan(t * maps.bands()), expectedBack);
            for (std::size_t m = 0; m < maps.bands(); ++m)
                ASSERT_NEAR(mel[t * maps.bands() + m], expectedMel[m], 2e-6F) << t << " " << m;
            for (std::size_t k = 0; k < maps.bins(); ++k)
                ASSERT_NEAR(back[t * maps.bins() + k], expectedBack[k], 2e-6F) << t << " " << k;
        }
    }
}

double worstLevel(BandMaps& maps, const std::vector<float>& spectra, const std::vector<float>& wanted) {
    std::vector<float> levels(wanted.size());
    maps.forward(spectra, levels);
    double worst = 0;
    for (std::size_t i = 0; i < levels.size(); ++i)
        worst = std::max(worst, std::abs(std::log(static_cast<double>(levels[i] / wanted[i]))));
    return worst;
}

TEST(BandMaps, RefinementBringsTheLevelsNearer) {
    for (const Size& size : sizes) {
        BandMaps maps(MelFilterBank(size.sampleRate, size.nFFT, size.nMels));
        std::vector<float> original = positiveNoise(2, 3 * maps.bins());
        std::vector<float> wanted(3 * maps.bands());
        maps.forward(original, wanted);
        std::vector<float> spectra = positiveNoise(3, original.size());
        const double before = worstLevel(maps, spectra, wanted);
        maps.refine(spectra, wanted, 1);
        const double afterOne = worstLevel(maps, spectra, wanted);
        maps.refine(spectra, wanted, 60);
        EXPECT_LT(afterOne, before) << size.nFFT;
        EXPECT_LT(worstLevel(maps, spectra, wanted), 0.2 * before) << size.nFFT;
    }
}

TEST(BandMaps, RefinementLeavesRightLevelsAlone) {
    BandMaps maps(MelFilterBank(8000, 256, 32));
    const std::vector<float> original = positiveNoise(4, 5 * maps.bins());
    std::vector<float> levels(5 * maps.bands());
    maps.forward(original, levels);
    std::vector<float> spectra = original;
    maps.refine(spectra, levels, 8);
    for (std::size_t i = 0; i < spectra.size(); ++i)
        EXPECT_NEAR(spectra[i], original[i], 1e-5F) << i;
}

TEST(BandMaps, RefinementKeepsUncoveredBinsAndZeros) {
    BandMaps maps(MelFilterBank(8000, 256, 32));
    std::vector<float> spectra(maps.bins(), 0.5F);
    spectra[40] = 0;
    const std::vector<float> levels(maps.bands(), 2.0F);
    maps.refine(spectra, levels, 3);
    EXPECT_EQ(spectra.front(), 0.5F);  // DC
    EXPECT_EQ(spectra.back(), 0.5F);   // Nyquist
    EXPECT_EQ(spectra[40], 0.0F);
    EXPECT_NEAR(spectra[80], 2.0F, 0.5F);
}

TEST(BandMaps, SilentLevelsSilenceTheCoveredBins) {
    BandMaps maps(MelFilterBank(8000, 256, 32));
    std::vector<float> spectra(maps.bins(), 0.5F);
    maps.refine(spectra, std::vector<float>(maps.bands()), 1);
    EXPECT_TRUE(std::all_of(spectra.begin() + 1, spectra.end() - 1, [](float x) { return x == 0; }));
}

TEST(BandMaps, AFrameDoesNotDependOnItsNeighbours) {
    BandMaps maps(MelFilterBank(8000, 256, 32));
    const std::vector<float> levels = positiveNoise(5, 21 * maps.bands());
    const std::vector<float> start = positiveNoise(6, 21 * maps.bins());
    std::vector<float> together = start;
    maps.refine(together, levels, 4);
    for (std::size_t t = 0; t < 21; ++t) {
        std::vector<float> alone(start.begin() + static_cast<std::ptrdiff_t>(t * maps.bins()),
                                 start.begin() + static_cast<std::ptrdiff_t>((t + 1) * maps.bins()));
        maps.refine(alone, std::span(levels).subspan(t * maps.bands(), maps.bands()), 4);
        EXPECT_TRUE(std::ranges::equal(alone, std::span(together).subspan(t * maps.bins(), maps.bins())))
            << t;
    }
}

TEST(BandMaps, ProcessorsWithFusedMultiplyAddGiveTheSameBits) {
    std::vector<float> first;
    for (const std::int64_t target : InstructionSet::fused()) {
        const InstructionSet set(target);
        BandMaps maps(MelFilterBank(8000, 256, 32));
        std::vector<float> spectra = positiveNoise(7, 9 * maps.bins());
        maps.refine(spectra, positiveNoise(8, 9 * maps.bands()), 8);
        if (first.empty()) first = spectra;
        EXPECT_EQ(spectra, first) << InstructionSet::name(target);
    }
}

TEST(BandMaps, EveryInstructionSetAgrees) {
    const std::vector<float> levels = positiveNoise(8, 9 * 32);
    const auto refined = [&] {
        BandMaps maps(MelFilterBank(8000, 256, 32));
        std::vector<float> spectra = positiveNoise(7, 9 * maps.bins());
        maps.refine(spectra, levels, 8);
        return spectra;
    };
    const std::vector<float> expected = refined();
    for (const std::int64_t target : InstructionSet::available()) {
        const InstructionSet set(target);
        const std::vector<float> found = refined();
        for (std::size_t i = 0; i < found.size(); ++i)
            ASSERT_NEAR(found[i], expected[i], 1e-4F * expected[i]) << InstructionSet::name(target) << i;
    }
}

TEST(BandMapsDeathTest, SizesThatDoNotFitStopTheProgram) {
    BandMaps maps(MelFilterBank(8000, 256, 32));
    std::vector<float> spectra(2 * maps.bins());
    std::vector<float> mel(maps.bands());
    EXPECT_DEATH(maps.forward(spectra, mel), "fit");
}

}  // namespace
}  // namespace quillmere
