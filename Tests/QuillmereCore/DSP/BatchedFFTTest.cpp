#include "QuillmereCore/DSP/BatchedFFT.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <numbers>

#include "QuillmereCore/DSP/AlignedFloats.h"
#include "Support/Guarded.h"
#include "Support/InstructionSets.h"
#include "Support/NaiveTransform.h"
#include "Support/Signals.h"

namespace quillmere {
namespace {

using testing::Guarded;
using testing::InstructionSet;
using testing::noise;

struct Spectra {
    std::vector<float> re, im;
    bool operator==(const Spectra&) const = default;
};

Spectra forward(int n, std::span<const float> frames) {
    BatchedFFT fft(n);
    const std::size_t count = frames.size() / static_cast<std::size_t>(n);
    const std::size_t size = count * (static_cast<std::size_t>(n) / 2 + 1);
    Spectra spectra{std::vector<float>(size), std::vector<float>(size)};
    fft.forward(frames, count, spectra.re, spectra.im);
    return spectra;
}

std::vector<float> inverse(int n, const Spectra& spectra) {
    BatchedFFT fft(n);
    const std::size_t count = spectra.re.size() / (static_cast<std::size_t>(n) / 2 + 1);
    std::vector<float> frames(count * static_cast<std::size_t>(n));
    fft.inverse(spectra.re, spectra.im, count, frames);
    return frames;
}

Spectra randomSpectra(int n, std::size_t count) {
    const std::size_t size = count * (static_cast<std::size_t>(n) / 2 + 1);
    return {noise(21, size), noise(22, size)};
}

class BatchedFFTLength : public ::testing::TestWithParam<int> {
protected:
    // Rounding errors of single precision grow with the number of passes; values with sqrt(n).
    static double tolerance(int n) { return 6e-8 * (2 + std::log2(n)) * std::sqrt(n); }
};

TEST_P(BatchedFFTLength, ForwardIsThePlainDFT) {
    const int n = GetParam();
    const auto size = static_cast<std::size_t>(n);
    const std::size_t bins = size / 2 + 1;
    const std::vector<float> frames = noise(5, 2 * size);
    for (const std::int64_t target : InstructionSet::available()) {
        const InstructionSet set(target);
        const Spectra spectra = forward(n, frames);
        for (std::size_t t = 0; t < 2; ++t) {
            const auto expected = testing::naiveDFT(std::span(frames).subspan(t * size, size));
            for (std::size_t k = 0; k < bins; ++k) {
                const std::complex<double> bin(spectra.re[t * bins + k], spectra.im[t * bins + k]);
                ASSERT_LE(std::abs(bin - expected[k]), tolerance(n))
                    << InstructionSet::name(target) << " frame " << t << " bin " << k;
            }
            EXPECT_EQ(spectra.im[t * bins], 0.0F);
            EXPECT_EQ(spectra.im[t * bins + size / 2], 0.0F);
        }
    }
}

TEST_P(BatchedFFTLength, InverseIsNTimesTheInverseDFT) {
    const int n = GetParam();
    const auto size = static_cast<std::size_t>(n);
    const Spectra spectra = randomSpectra(n, 1);
    const std::vector<double> expected = testing::naiveInverseDFT(spectra.re, spectra.im, size);
    for (const std::int64_t target : InstructionSet::available()) {
        const InstructionSet set(target);
        const std::vector<float> frame = inverse(n, spectra);
        for (std::size_t i = 0; i < size; ++i) {
            ASSERT_NEAR(frame[i], expected[i] * n, 2 * tolerance(n))
                << InstructionSet::name(target) << " sample " << i;
        }
    }
}

TEST_P(BatchedFFTLength, InverseOfForwardIsNTimesTheFrame) {
    const int n = GetParam();
    const std::vector<float> frames = noise(6, 19 * static_cast<std::size_t>(n));
    const std::vector<float> back = inverse(n, forward(n, frames));
    for (std::size_t i = 0; i < frames.size(); ++i)
        ASSERT_NEAR(back[i] / static_cast<float>(n), frames[i], 1.5e-6F) << "sample " << i;
}

// Whatever the place of a frame in the batch, and however full the last batch is.
TEST_P(BatchedFFTLength, AFrameDoesNotDependOnItsNeighbours) {
    const int n = GetParam();
    const auto size = static_cast<std::size_t>(n);
    const std::size_t bins = size / 2 + 1;
    const std::vector<float> frames = noise(7, 37 * size);
    const Spectra together = forward(n, frames);
    const std::vector<float> backTogether = inverse(n, together);
    for (const std::size_t t : {0U, 1U, 15U, 16U, 20U, 36U}) {
        const Spectra alone = forward(n, std::span(frames).subspan(t * size, size));
        for (std::size_t k = 0; k < bins; ++k) {
            ASSERT_EQ(alone.re[k], together.re[t * bins + k]) << "frame " << t << " bin " << k;
            ASSERT_EQ(alone.im[k], together.im[t * bins + k]) << "frame " << t << " bin " << k;
        }
        const auto expected = std::span(backTogether).subspan(t * size, size);
        EXPECT_TRUE(std::ranges::equal(inverse(n, alone), expected)) << "frame " << t;
    }
}

TEST_P(BatchedFFTLength, SameBitsForAnyNumberOfLanes) {
    const int n = GetParam();
    const std::vector<float> frames = noise(8, 21 * static_cast<std::size_t>(n));
    for (const auto& group : {InstructionSet::fused(), InstructionSet::plain()}) {
        Spectra first;
        std::vector<float> firstBack;
        for (const std::int64_t target : group) {
            const InstructionSet set(target);
            const Spectra spectra = forward(n, frames);
            const std::vector<float> back = inverse(n, spectra);
            if (target == group.front()) {
                first = spectra;
                firstBack = back;
            }
            EXPECT_EQ(spectra, first) << InstructionSet::name(target);
            EXPECT_EQ(back, firstBack) << InstructionSet::name(target);
        }
    }
}

TEST_P(BatchedFFTLength, WritesItsOutputAndNothingElse) {
    const int n = GetParam();
    const auto size = static_cast<std::size_t>(n);
    BatchedFFT fft(n);
    for (const std::size_t count : {std::size_t{1}, std::size_t{3}, std::size_t{16}, std::size_t{18}}) {
        Guarded re(count * (size / 2 + 1));
        Guarded im(count * (size / 2 + 1));
        fft.forward(noise(9, count * size), count, re.span(), im.span());
        EXPECT_TRUE(re.intact() && re.filled() && im.intact() && im.filled()) << count << " frames";
        Guarded frames(count * size);
        fft.inverse(re.span(), im.span(), count, frames.span());
        EXPECT_TRUE(frames.intact() && frames.filled()) << count << " frames";
    }
}

TEST_P(BatchedFFTLength, InverseIgnoresTheImaginaryPartsOfDCAndNyquist) {
    const int n = GetParam();
    Spectra spectra = randomSpectra(n, 1);
    const std::vector<float> expected = inverse(n, spectra);
    spectra.im.front() = 1000;
    spectra.im.back() = -1000;
    EXPECT_EQ(inverse(n, spectra), expected);
}

INSTANTIATE_TEST_SUITE_P(PowersOfTwo, BatchedFFTLength,
                         ::testing::Values(1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192),
                         [](const auto& test) { return "n" + std::to_string(test.param); });

TEST(BatchedFFT, ForwardOfAnImpulseIsFlat) {
    std::vector<float> frame(64);
    frame[0] = 1;
    const Spectra spectra = forward(64, frame);
    for (std::size_t k = 0; k < 33; ++k) {
        EXPECT_FLOAT_EQ(spectra.re[k], 1.0F) << "bin " << k;
        EXPECT_FLOAT_EQ(spectra.im[k], 0.0F) << "bin " << k;
    }
}

// A sine of amplitude 1 on bin 5: -i n / 2 there, because the exponent of the transform is negative.
TEST(BatchedFFT, ForwardOfASineIsOneImaginaryBin) {
    const Spectra spectra = forward(64, testing::sine(5, 64, 64));
    for (std::size_t k = 0; k < 33; ++k) {
        EXPECT_NEAR(spectra.re[k], 0.0F, 1e-5F) << "bin " << k;
        EXPECT_NEAR(spectra.im[k], k == 5 ? -32.0F : 0.0F, 1e-5F) << "bin " << k;
    }
}

TEST(BatchedFFT, ForwardOfAlternatingSignsIsNyquist) {
    std::vector<float> frame(32);
    for (std::size_t i = 0; i < 32; ++i)
        frame[i] = i % 2 == 0 ? 1.0F : -1.0F;
    const Spectra spectra = forward(32, frame);
    for (std::size_t k = 0; k < 17; ++k)
        EXPECT_NEAR(spectra.re[k], k == 16 ? 32.0F : 0.0F, 1e-5F) << "bin " << k;
}

TEST(BatchedFFT, NoFramesAreNoWork) {
    BatchedFFT fft(16);
    Guarded out(0);
    fft.forward({}, 0, out.span(), out.span());
    fft.inverse({}, {}, 0, out.span());
    EXPECT_TRUE(out.intact());
}

// Every bin but DC and Nyquist once, with the root that belongs to it.
TEST(RealFFTPlan, PairsCoverEveryBinOnce) {
    for (const int n : {2, 4, 8, 16, 32, 64, 128, 512, 1024, 2048, 4096, 16384}) {
        const RealFFTPlan plan(n);
        std::vector<int> visits(plan.half + 1);
        std::vector<int> rows(plan.half);
        for (const RealFFTPlan::BinPair& pair : plan.pairs) {
            ++visits[pair.k];
            ++rows[pair.first];
            if (pair.first != pair.second) {
                ++visits[plan.half - pair.k];
                ++rows[pair.second];
            }
            const double angle = 2 * std::numbers::pi * pair.k / n;
            EXPECT_NEAR(pair.root.re, std::cos(angle), 3e-8) << "bin " << pair.k << " of " << n;
            EXPECT_NEAR(pair.root.im, -std::sin(angle), 3e-8) << "bin " << pair.k << " of " << n;
        }
        for (std::size_t k = 1; k < plan.half; ++k) {
            EXPECT_EQ(visits[k], 1) << "bin " << k << " of " << n;
            EXPECT_EQ(rows[k], 1) << "row " << k << " of " << n;
        }
        EXPECT_EQ(rows[0], 0) << n;
    }
}

TEST(RealFFTPlan, BlocksFitTheCache) {
    for (const int n : {2, 16, 256, 1024, 2048, 4096, 8192, 65536}) {
        const RealFFTPlan plan(n);
        EXPECT_LE(plan.blockLength, RealFFTPlan::maxBlock) << n;
        EXPECT_EQ(plan.blockPairs.back().pairsEnd, plan.pairs.size()) << n;
    }
}

TEST(BatchedFFTDeathTest, OtherLengthsAreRefused) {
    for (const int n : {0, -1, -8, 3, 1000})
        EXPECT_DEATH(BatchedFFT{n}, "power of two") << n;
}

TEST(BatchedFFTDeathTest, ShortBuffersAreRefused) {
    BatchedFFT fft(8);
    std::vector<float> frames(16);
    std::vector<float> spectrum(10);
    std::vector<float> tooShort(9);
    EXPECT_DEATH(fft.forward(frames, 2, spectrum, tooShort), "too small");
    EXPECT_DEATH(fft.forward(frames, 2, tooShort, spectrum), "too small");
    EXPECT_DEATH(fft.forward(std::span(frames).first(15), 2, spectrum, spectrum), "too small");
    EXPECT_DEATH(fft.inverse(spectrum, tooShort, 2, frames), "too small");
    EXPECT_DEATH(fft.inverse(spectrum, spectrum, 2, std::span(frames).first(15)), "too small");
}

TEST(AlignedFloats, FailedAllocationIsBadAlloc) {
    EXPECT_THROW((void)allocateFloats(std::numeric_limits<std::size_t>::max()), std::bad_alloc);
}

}  // namespace
}  // namespace quillmere
