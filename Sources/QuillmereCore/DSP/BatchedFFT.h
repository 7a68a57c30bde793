#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace quillmere {

// The steps of a real FFT of n points, shared by everything that runs the vector code of BatchedFFT-inl.h.
// Immutable.
//
// The n real samples of a frame are read as half = n / 2 complex ones; after their transform the spectra of
// the even and the odd samples are told apart. The complex transform is one butterfly across `blocks` blocks
// and then a transform of blockLength points in each block, which at the usual sizes fits the first-level
// cache. Within a block it takes Stockham passes of radix 8, 4 and 2, whose order needs no bit reversal.
struct RealFFTPlan {
    struct Root {
        float re, im;
    };
    struct Pass {
        std::size_t radix, columns, stride;
        std::size_t firstTwiddle;  // in twiddles, [columns][radix - 1]
    };

    // n: a power of two >= 1; anything else is a programming error and stops the program.
    explicit RealFFTPlan(int n);

    std::size_t n, half, blocks, blockLength;
    std::vector<Root> roots;          // [half], e^(-2 pi i k / n)
    std::vector<Root> blockTwiddles;  // [blockLength][blocks - 1], e^(-2 pi i p k / half) for k = 1, 2, ...
    std::vector<Pass> passes;
    std::vector<Root> twiddles;

    // Floats of scratch memory that the transform of a batch needs, on a 64-byte boundary.
    [[nodiscard]] std::size_t workSize() const;
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
