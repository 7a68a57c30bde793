// The FFT of a batch of frames as vector code. Included once per instruction set, after foreach_target.h.
#if defined(QUILLMERE_DSP_BATCHED_FFT_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_DSP_BATCHED_FFT_INL_H_
#undef QUILLMERE_DSP_BATCHED_FFT_INL_H_
#else
#define QUILLMERE_DSP_BATCHED_FFT_INL_H_
#endif

#include <hwy/highway.h>

#include <cstddef>

#include "QuillmereCore/DSP/BatchedFFT.h"
#include "QuillmereCore/DSP/VectorLanes.h"

// For loops of known length over a small array that is to live in registers.
#undef QUILLMERE_UNROLL
#if defined(__clang__)
#define QUILLMERE_UNROLL _Pragma("unroll")
#else
#define QUILLMERE_UNROLL _Pragma("GCC unroll 16")
#endif

HWY_BEFORE_NAMESPACE();
namespace quillmere::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using Tag = hn::CappedTag<float, maxLanes>;
using Vector = hn::Vec<Tag>;
inline constexpr std::size_t lanes = hn::MaxLanes(Tag());

// One complex number of every frame.
struct Complex {
    Vector re, im;
};

HWY_INLINE Complex operator+(Complex a, Complex b) {
    return {hn::Add(a.re, b.re), hn::Add(a.im, b.im)};
}
HWY_INLINE Complex operator-(Complex a, Complex b) {
    return {hn::Sub(a.re, b.re), hn::Sub(a.im, b.im)};
}
HWY_INLINE Complex addTurned(Complex a, Complex b) {  // a + i b
    return {hn::Sub(a.re, b.im), hn::Add(a.im, b.re)};
}
HWY_INLINE Complex subTurned(Complex a, Complex b) {  // a - i b
    return {hn::Add(a.re, b.im), hn::Sub(a.im, b.re)};
}
HWY_INLINE Complex product(Complex a, RealFFTPlan::Root root) {
    const Vector c = hn::Set(Tag(), root.re);
    const Vector d = hn::Set(Tag(), root.im);
    return {hn::NegMulAdd(a.im, d, hn::Mul(a.re, c)), hn::MulAdd(a.im, c, hn::Mul(a.re, d))};
}

// A row of memory holds one Complex: the real vector, then the imaginary one.
inline constexpr std::size_t rowSize = 2 * lanes;

HWY_INLINE Complex loadRow(const float* rows, std::size_t index) {
    const float* const row = rows + index * rowSize;
    return {hn::Load(Tag(), row), hn::Load(Tag(), row + lanes)};
}
HWY_INLINE void storeRow(Complex value, float* rows, std::size_t index) {
    float* const row = rows + index * rowSize;
    hn::Store(value.re, Tag(), row);
    hn::Store(value.im, Tag(), row + lanes);
}

// Discrete Fourier transforms of 1, 2, 4 and 8 points, in place.
HWY_INLINE void butterfly(Complex (&)[1]) {}
HWY_INLINE void butterfly(Complex (&x)[2]) {
    const Complex sum = x[0] + x[1];
    x[1] = x[0] - x[1];
    x[0] = sum;
}
HWY_INLINE void butterfly(Complex (&x)[4]) {
    const Complex a = x[0] + x[2];
    const Complex b = x[0] - x[2];
    const Complex c = x[1] + x[3];
    const Complex d = x[1] - x[3];
    x[0] = a + c;
    x[1] = subTurned(b, d);
    x[2] = a - c;
    x[3] = addTurned(b, d);
}
HWY_INLINE void butterfly(Complex (&x)[8]) {
    Complex even[4] = {x[0], x[2], x[4], x[6]};
    Complex odd[4] = {x[1], x[3], x[5], x[7]};
    butterfly(even);
    butterfly(odd);
    x[0] = even[0] + odd[0];
    x[4] = even[0] - odd[0];
    x[2] = subTurned(even[2], odd[2]);
    x[6] = addTurned(even[2], odd[2]);
    // Odd terms 1 and 3 are turned by an eighth and by three eighths of a circle: (1 - i) / sqrt 2 and
    // (-1 - i) / sqrt 2. The factor is left to the additions.
    const Vector h = hn::Set(Tag(), 0.70710678F);
    const Complex u = {hn::Add(odd[1].re, odd[1].im), hn::Sub(odd[1].im, odd[1].re)};
    x[1] = {hn::MulAdd(u.re, h, even[1].re), hn::MulAdd(u.im, h, even[1].im)};
    x[5] = {hn::NegMulAdd(u.re, h, even[1].re), hn::NegMulAdd(u.im, h, even[1].im)};
    const Complex v = {hn::Sub(odd[3].re, odd[3].im), hn::Add(odd[3].re, odd[3].im)};
    x[3] = {hn::NegMulAdd(v.re, h, even[3].re), hn::NegMulAdd(v.im, h, even[3].im)};
    x[7] = {hn::MulAdd(v.re, h, even[3].re), hn::MulAdd(v.im, h, even[3].im)};
}

// Multiplies x[k] by twiddles[k - 1]; x[0] stays.
template <std::size_t R>
HWY_INLINE void turn(Complex (&x)[R], const RealFFTPlan::Root* twiddles) {
    QUILLMERE_UNROLL
    for (std::size_t k = 1; k < R; ++k)
        x[k] = product(x[k], twiddles[k - 1]);
}

// x[r] = row first + r * distance.
template <std::size_t R>
HWY_INLINE void loadRows(Complex (&x)[R], const float* rows, std::size_t first, std::size_t distance) {
    QUILLMERE_UNROLL
    for (std::size_t r = 0; r < R; ++r)
        x[r] = loadRow(rows, first + r * distance);
}
template <std::size_t R>
HWY_INLINE void storeRows(const Complex (&x)[R], float* rows, std::size_t first, std::size_t distance) {
    QUILLMERE_UNROLL
    for (std::size_t r = 0; r < R; ++r)
        storeRow(x[r], rows, first + r * distance);
}

template <std::size_t R>
HWY_INLINE void stockhamPass(const RealFFTPlan::Pass& pass, const RealFFTPlan::Root* twiddles,
                             const float* from, float* to) {
    const std::size_t stride = pass.stride;
    const std::size_t distance = stride * pass.columns;
    Complex x[R];
    for (std::size_t q = 0; q < stride; ++q) {  // the first column needs no twiddles
        loadRows(x, from, q, distance);
        butterfly(x);
        storeRows(x, to, q, stride);
    }
    for (std::size_t p = 1; p < pass.columns; ++p) {
        for (std::size_t q = 0; q < stride; ++q) {
            loadRows(x, from, p * stride + q, distance);
            butterfly(x);
            turn(x, twiddles + p * (R - 1));
            storeRows(x, to, p * R * stride + q, stride);
        }
    }
}

// The transform of as many frames as a vector has lanes, in steps that callers combine. Requires n >= 2.
//
//   split       samples to blocks: the first butterfly of the forward transform
//   analyse     blocks to spectra
//   synthesise  spectra to blocks
//   refine      analyse and synthesise in one, block by block; the caller replaces the spectrum in between
//   join        blocks to samples: the last butterfly of the inverse transform
//
// analyse and refine hand out twice the DFT, and join hands out n times the inverse DFT; callers fold these
// factors into their own. Bins are visited in an order that is not ascending but always the same.
class FrameBatch {
public:
    // work: plan.workSize() floats on a 64-byte boundary. Keeps references to both.
    FrameBatch(const RealFFTPlan& plan, float* work) : plan_(plan), blocks_(work) {
        spares_[0] = work + plan.blocks * blockStride(plan);
        spares_[1] = spares_[0] + blockStride(plan);
    }

    // load(i) returns sample i of every frame.
    template <class Load>
    HWY_INLINE void split(const Load& load) {
        switch (plan_.blocks) {
            case 1:
                return splitInto<1>(load);
            case 2:
                return splitInto<2>(load);
            case 4:
                return splitInto<4>(load);
            default:
                return splitInto<8>(load);
        }
    }

    // store(i, value) takes sample i of every frame.
    template <class Store>
    HWY_INLINE void join(const Store& store) {
        switch (plan_.blocks) {
            case 1:
                return joinFrom<1>(store);
            case 2:
                return joinFrom<2>(store);
            case 4:
                return joinFrom<4>(store);
            default:
                return joinFrom<8>(store);
        }
    }

    // bin(k, value) takes bin k of every frame; what it returns is ignored.
    template <class Bin>
    HWY_INLINE void analyse(Bin& bin) {
        eachBlockPair<true, false>(bin);
    }

    // bin(k, ignored) returns bin k of every frame. Imaginary parts of DC and Nyquist are ignored.
    template <class Bin>
    HWY_INLINE void synthesise(Bin& bin) {
        eachBlockPair<false, true>(bin);
    }

    // bin(k, value) takes bin k of every frame and returns what replaces it.
    template <class Bin>
    HWY_INLINE void refine(Bin& bin) {
        eachBlockPair<true, true>(bin);
    }

private:
    // One row more than needed keeps the blocks from competing for the same lines of the cache.
    static std::size_t blockStride(const RealFFTPlan& plan) { return (plan.blockLength + 1) * rowSize; }
    HWY_INLINE float* block(std::size_t index) const { return blocks_ + index * blockStride(plan_); }

    template <std::size_t R, class Load>
    HWY_INLINE void splitInto(const Load& load) {
        const std::size_t length = plan_.blockLength;
        for (std::size_t p = 0; p < length; ++p) {
            Complex x[R];
            QUILLMERE_UNROLL
            for (std::size_t r = 0; r < R; ++r) {
                const std::size_t i = 2 * (p + r * length);
                x[r] = {load(i), load(i + 1)};
            }
            butterfly(x);
            turn(x, plan_.blockTwiddles.data() + p * (R - 1));
            QUILLMERE_UNROLL
            for (std::size_t r = 0; r < R; ++r)
                storeRow(x[r], block(r), p);
        }
    }

    // The inverse transform is the forward one with real and imaginary parts exchanged at both ends; between
    // synthesise and join the rows hold them that way.
    template <std::size_t R, class Store>
    HWY_INLINE void joinFrom(const Store& store) {
        const std::size_t length = plan_.blockLength;
        for (std::size_t p = 0; p < length; ++p) {
            Complex x[R];
            QUILLMERE_UNROLL
            for (std::size_t r = 0; r < R; ++r)
                x[r] = loadRow(block(r), p);
            turn(x, plan_.blockTwiddles.data() + p * (R - 1));
            butterfly(x);
            QUILLMERE_UNROLL
            for (std::size_t r = 0; r < R; ++r) {
                const std::size_t i = 2 * (p + r * length);
                store(i, x[r].im);
                store(i + 1, x[r].re);
            }
        }
    }

    // The passes of one block; they alternate between the two buffers. Returns the one with the result.
    HWY_NOINLINE float* transformBlock(float* from, float* to) const {
        for (const RealFFTPlan::Pass* pass = passes_; pass != passesEnd_; ++pass) {
            const RealFFTPlan::Root* const twiddles = twiddles_ + pass->firstTwiddle;
            switch (pass->radix) {
                case 2:
                    stockhamPass<2>(*pass, twiddles, from, to);
                    break;
                case 4:
                    stockhamPass<4>(*pass, twiddles, from, to);
                    break;
                default:
                    stockhamPass<8>(*pass, twiddles, from, to);
                    break;
            }
            float* const result = to;
            to = from;
            from = result;
        }
        return from;
    }

    // Block a holds bins a + blocks * i; the bins half - k that belong to them lie in block (blocks - a).
    template <bool kAnalyse, bool kSynthesise, class Bin>
    HWY_INLINE void eachBlockPair(Bin& bin) {
        const std::size_t count = plan_.blocks;
        for (std::size_t a = 0; a <= count / 2; ++a)
            blockPair<kAnalyse, kSynthesise>(a, (count - a) % count, bin);
    }

    template <bool kAnalyse, bool kSynthesise, class Bin>
    HWY_INLINE void blockPair(std::size_t a, std::size_t b, Bin& bin) {
        // Spectra lie where the passes leave them, and the passes back end in the block itself.
        const bool inSpare = plan_.passes.size() % 2 != 0;
        float* const first = inSpare ? spares_[0] : block(a);
        float* const second = a == b ? first : inSpare ? spares_[1] : block(b);
        if constexpr (kAnalyse) {
            transformBlock(block(a), spares_[0]);
            if (a != b) transformBlock(block(b), spares_[1]);
        }
        eachBinPair<kAnalyse, kSynthesise>(a, a == b, first, second, bin);
        if constexpr (kSynthesise) {
            transformBlock(first, inSpare ? block(a) : spares_[0]);
            if (a != b) transformBlock(second, inSpare ? block(b) : spares_[1]);
        }
    }

    template <bool kAnalyse, bool kSynthesise, class Bin>
    HWY_INLINE void eachBinPair(std::size_t a, bool sameBlock, float* first, float* second, Bin& bin) {
        if (a == 0) edgeBins<kAnalyse, kSynthesise>(first, bin);
        // Row i of the first block goes with row last - i of the second.
        const std::size_t last = a == 0 ? plan_.blockLength : plan_.blockLength - 1;
        for (std::size_t i = a == 0 ? 1 : 0; sameBlock ? 2 * i <= last : i <= last; ++i) {
            const std::size_t k = a + plan_.blocks * i;
            const RealFFTPlan::Root root = roots_[k];
            Complex x = loadRow(first, i);
            Complex y = loadRow(second, last - i);
            if constexpr (kAnalyse) separate(x, y, root);
            x = bin(k, x);
            y = 2 * k == plan_.half ? x : bin(plan_.half - k, y);
            if constexpr (kSynthesise) {
                merge(x, y, root);
                storeRow(x, first, i);
                storeRow(y, second, last - i);
            }
        }
    }

    // DC and Nyquist, which are real: sum and difference of the even and odd samples' sums.
    template <bool kAnalyse, bool kSynthesise, class Bin>
    HWY_INLINE void edgeBins(float* rows, Bin& bin) {
        const Vector zero = hn::Zero(Tag());
        Complex dc{zero, zero};
        Complex nyquist{zero, zero};
        if constexpr (kAnalyse) {
            const Complex z = loadRow(rows, 0);
            const Vector two = hn::Set(Tag(), 2.0F);
            dc.re = hn::Mul(two, hn::Add(z.re, z.im));
            nyquist.re = hn::Mul(two, hn::Sub(z.re, z.im));
        }
        dc = bin(0, dc);
        nyquist = bin(plan_.half, nyquist);
        if constexpr (kSynthesise)
            storeRow({hn::Sub(dc.re, nyquist.re), hn::Add(dc.re, nyquist.re)}, rows, 0);
    }

    // From the half-length transform z of even + i odd samples, x = z[k] and y = z[half - k], to twice the
    // spectrum's bins k and half - k: bin k is even + root * odd with even = (z[k] + conj z[half - k]) / 2
    // and odd = (z[k] - conj z[half - k]) / 2i.
    static HWY_INLINE void separate(Complex& x, Complex& y, RealFFTPlan::Root root) {
        const Complex even = {hn::Add(x.re, y.re), hn::Sub(x.im, y.im)};
        const Complex odd = {hn::Add(x.im, y.im), hn::Sub(y.re, x.re)};
        const Complex turned = product(odd, root);
        x = even + turned;
        y = {hn::Sub(even.re, turned.re), hn::Sub(turned.im, even.im)};
    }

    // The opposite, with real and imaginary parts of the results exchanged.
    static HWY_INLINE void merge(Complex& x, Complex& y, RealFFTPlan::Root root) {
        const Complex even = {hn::Add(x.re, y.re), hn::Sub(x.im, y.im)};
        const Complex turned = {hn::Sub(x.re, y.re), hn::Add(x.im, y.im)};
        const Complex odd = product(turned, {root.re, -root.im});
        x = {hn::Add(even.im, odd.re), hn::Sub(even.re, odd.im)};
        y = {hn::Sub(odd.re, even.im), hn::Add(even.re, odd.im)};
    }

    const RealFFTPlan& plan_;
    const RealFFTPlan::Root* roots_ = plan_.roots.data();
    const RealFFTPlan::Root* twiddles_ = plan_.twiddles.data();
    const RealFFTPlan::Pass* passes_ = plan_.passes.data();
    const RealFFTPlan::Pass* passesEnd_ = passes_ + plan_.passes.size();
    float* blocks_;
    float* spares_[2];  // for the passes of two blocks
};

// out[i * stride + l] = rows[l][i] for i < count and every lane l.
inline void interleave(const float* const* rows, std::size_t count, float* out, std::size_t stride) {
    std::size_t done = 0;
#if HWY_TARGET != HWY_SCALAR
    const hn::FixedTag<float, 4> four;
    for (; done + 4 <= count; done += 4) {
        for (std::size_t l = 0; l < lanes; l += 4) {
            const auto a = hn::LoadU(four, rows[l] + done);
            const auto b = hn::LoadU(four, rows[l + 1] + done);
            const auto c = hn::LoadU(four, rows[l + 2] + done);
            const auto d = hn::LoadU(four, rows[l + 3] + done);
            const auto acLow = hn::InterleaveLower(four, a, c);
            const auto acHigh = hn::InterleaveUpper(four, a, c);
            const auto bdLow = hn::InterleaveLower(four, b, d);
            const auto bdHigh = hn::InterleaveUpper(four, b, d);
            float* const to = out + done * stride + l;
            hn::Store(hn::InterleaveLower(four, acLow, bdLow), four, to);
            hn::Store(hn::InterleaveUpper(four, acLow, bdLow), four, to + stride);
            hn::Store(hn::InterleaveLower(four, acHigh, bdHigh), four, to + 2 * stride);
            hn::Store(hn::InterleaveUpper(four, acHigh, bdHigh), four, to + 3 * stride);
        }
    }
#endif
    for (; done < count; ++done) {
        for (std::size_t l = 0; l < lanes; ++l)
            out[done * stride + l] = rows[l][done];
    }
}

// rows[l][i] = in[i * stride + l] for i < count and every lane l.
inline void deinterleave(const float* in, std::size_t stride, std::size_t count, float* const* rows) {
    std::size_t done = 0;
#if HWY_TARGET != HWY_SCALAR
    const hn::FixedTag<float, 4> four;
    for (; done + 4 <= count; done += 4) {
        for (std::size_t l = 0; l < lanes; l += 4) {
            const float* const from = in + done * stride + l;
            const auto a = hn::Load(four, from);
            const auto b = hn::Load(four, from + stride);
            const auto c = hn::Load(four, from + 2 * stride);
            const auto d = hn::Load(four, from + 3 * stride);
            const auto acLow = hn::InterleaveLower(four, a, c);
            const auto acHigh = hn::InterleaveUpper(four, a, c);
            const auto bdLow = hn::InterleaveLower(four, b, d);
            const auto bdHigh = hn::InterleaveUpper(four, b, d);
            hn::StoreU(hn::InterleaveLower(four, acLow, bdLow), four, rows[l] + done);
            hn::StoreU(hn::InterleaveUpper(four, acLow, bdLow), four, rows[l + 1] + done);
            hn::StoreU(hn::InterleaveLower(four, acHigh, bdHigh), four, rows[l + 2] + done);
            hn::StoreU(hn::InterleaveUpper(four, acHigh, bdHigh), four, rows[l + 3] + done);
        }
    }
#endif
    for (; done < count; ++done) {
        for (std::size_t l = 0; l < lanes; ++l)
            rows[l][done] = in[done * stride + l];
    }
}

}  // namespace quillmere::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
