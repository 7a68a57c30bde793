#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "QuillmereCore/DSP/VectorLanes.h"

namespace quillmere {

// The steps of a real FFT of n points, shared by everything that runs the vector code of BatchedFFT-inl.h.
// Immutable.
//
// The n real samples of a frame are read as half = n / 2 complex ones; after their transform the spectra of
// the even and the odd samples are told apart. The complex transform decimates in frequency, in place, with
// passes of radix 8, 4 and 2; its inverse runs the same passes backwards, decimating in time. Neither puts
// its spectrum in order: `pairs` tells where each bin lies.
//
// The last passes work on blocks of at most maxBlock points. A pair of blocks, which fits the first-level
// cache, holds both bins k and half - k that belong together, so it can be transformed, changed and
// transformed back before the next pair is touched.
struct RealFFTPlan {
    struct Root {
        float re, im;
    };
    // Butterflies across `radix` rows that are `columns` rows apart, in every group of columns * radix rows.
    struct Pass {
        std::size_t radix, columns;
        std::vector<Root> twiddles;  // [columns][radix - 1], e^(-2 pi i column k / (columns * radix)), k >= 1
    };
    // Bins k and half - k lie in rows first and second, which for k = half / 2 are the same.
    struct BinPair {
        std::uint32_t k, first, second;
        Root root;  // e^(-2 pi i k / n)
    };
    // Two blocks that hold each other's partners, or one that holds its own.
    struct BlockPair {
        std::size_t first, second;  // first rows
        std::size_t pairsEnd;       // in pairs; the range begins where that of the block pair before ends
    };

    static constexpr std::size_t maxBlock = 256;

    // n: a power of two >= 1; anything else is a programming error and stops the program.
    explicit RealFFTPlan(int n);

    std::size_t n, half;
    std::size_t blockLength = 1;  // rows
    std::vector<Pass> passes;     // of the forward transform; the first one takes the samples
    std::size_t blockPasses = 0;  // how many of them, the last ones, stay within a block
    std::vector<BlockPair> blockPairs;
    std::vector<BinPair> pairs;  // all but DC and Nyquist, which share row 0

    // Floats of scratch memory that the transform of a batch needs, on a 64-byte boundary.
    [[nodiscard]] std::size_t workSize() const { return half * 2 * maxLanes; }

private:
    void pairBins();
};

// Real FFT of many frames at once. The frames lie in the lanes of the processor's vectors, so a frame's
// result depends neither on its neighbours nor on the number of lanes: all processors with fused
// multiply-add give the same bits.
// Threads: an instance owns scratch memory; one thread at a time.
class BatchedFFT {
public:
    // n: points, a power of two >= 1; anything else is a programming error and stops the program.
    explicit BatchedFFT(int n);
    ~BatchedFFT();
    BatchedFFT(BatchedFFT&&) noexcept;
    BatchedFFT& operator=(BatchedFFT&&) noexcept;

    // frames: [count][n]. Overwrites the first count * bins values of re and im, [count][n / 2 + 1], with the
    // plain DFT (negative exponent, no 1/n). Allocates nothing.
    void forward(std::span<const float> frames, std::size_t count, std::span<float> re, std::span<float> im);

    // re and im: [count][n / 2 + 1]; the imaginary parts of DC and Nyquist are ignored. Overwrites the first
    // count * n values of frames with n times the inverse DFT. Allocates nothing.
    void inverse(std::span<const float> re, std::span<const float> im, std::size_t count,
                 std::span<float> frames);

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace quillmere
