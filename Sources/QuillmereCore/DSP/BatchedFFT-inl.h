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

// One pass over `count` rows, in place: forward the twiddles come after the butterflies, backward before. The
// first column needs none.
template <bool kForward, std::size_t R>
HWY_INLINE void passInPlace(const RealFFTPlan::Pass& pass, float* rows, std::size_t count) {
    const std::size_t columns = pass.columns;
    const RealFFTPlan::Root* const twiddles = pass.twiddles.data();
    for (std::size_t group = 0; group < count; group += R * columns) {
        Complex x[R];
        loadRows(x, rows, group, columns);
        butterfly(x);
        storeRows(x, rows, group, columns);
        for (std::size_t p = 1; p < columns; ++p) {
            loadRows(x, rows, group + p, columns);
            if constexpr (!kForward) turn(x, twiddles + p * (R - 1));
            butterfly(x);
            if constexpr (kForward) turn(x, twiddles + p * (R - 1));
            storeRows(x, rows, group + p, columns);
        }
    }
}

template <bool kForward>
HWY_NOINLINE void runPass(const RealFFTPlan::Pass& pass, float* rows, std::size_t count) {
    switch (pass.radix) {
        case 2:
            return passInPlace<kForward, 2>(pass, rows, count);
        case 4:
            return passInPlace<kForward, 4>(pass, rows, count);
        default:
            return passInPlace<kForward, 8>(pass, rows, count);
    }
}

// The transform of as many frames as a vector has lanes, in steps that callers combine. Requires n >= 2.
//
//   split       samples to blocks: the first passes of the forward transform
//   analyse     blocks to spectra
//   synthesise  spectra to blocks
//   refine      analyse and synthesise in one, block by block; the caller replaces the spectrum in between
//   join        blocks to samples: the last passes of the inverse transform
//
// analyse and refine hand out twice the DFT, and join hands out n times the inverse DFT; callers fold these
// factors into their own. Bins are visited in an order that is not ascending but always the same.
class FrameBatch {
public:
    // work: plan.workSize() floats on a 64-byte boundary. Keeps references to both.
    FrameBatch(const RealFFTPlan& plan, float* work) : plan_(plan), rows_(work) {}

    // load(i) returns sample i of every frame.
    template <class Load>
    HWY_INLINE void split(const Load& load) {
        switch (plan_.passes.front().radix) {
            case 1:
                splitBy<1>(load);
                break;
            case 2:
                splitBy<2>(load);
                break;
            case 4:
                splitBy<4>(load);
                break;
            default:
                splitBy<8>(load);
                break;
        }
        for (const RealFFTPlan::Pass* pass = passesBegin() + 1; pass < blockPassesBegin(); ++pass)
            runPass<true>(*pass, rows_, plan_.half);
    }

    // store(i, value) takes sample i of every frame.
    template <class Store>
    HWY_INLINE void join(const Store& store) {
        for (const RealFFTPlan::Pass* pass = blockPassesBegin(); pass-- > passesBegin() + 1;)
            runPass<false>(*pass, rows_, plan_.half);
        switch (plan_.passes.front().radix) {
            case 1:
                return joinBy<1>(store);
            case 2:
                return joinBy<2>(store);
            case 4:
                return joinBy<4>(store);
            default:
                return joinBy<8>(store);
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
    [[nodiscard]] const RealFFTPlan::Pass* passesBegin() const { return plan_.passes.data(); }
    [[nodiscard]] const RealFFTPlan::Pass* passesEnd() const { return passesBegin() + plan_.passes.size(); }
    [[nodiscard]] const RealFFTPlan::Pass* blockPassesBegin() const {
        return passesEnd() - plan_.blockPasses;
    }

    template <std::size_t R, class Load>
    HWY_INLINE void splitBy(const Load& load) {
        const std::size_t columns = plan_.passes.front().columns;
        const RealFFTPlan::Root* const twiddles = plan_.passes.front().twiddles.data();
        for (std::size_t p = 0; p < columns; ++p) {
            Complex x[R];
            QUILLMERE_UNROLL
            for (std::size_t r = 0; r < R; ++r) {
                const std::size_t i = 2 * (p + r * columns);
                x[r] = {load(i), load(i + 1)};
            }
            butterfly(x);
            turn(x, twiddles + p * (R - 1));
            storeRows(x, rows_, p, columns);
        }
    }

    // The inverse transform is the forward one with real and imaginary parts exchanged at both ends; between
    // synthesise and join the rows hold them that way.
    template <std::size_t R, class Store>
    HWY_INLINE void joinBy(const Store& store) {
        const std::size_t columns = plan_.passes.front().columns;
        const RealFFTPlan::Root* const twiddles = plan_.passes.front().twiddles.data();
        for (std::size_t p = 0; p < columns; ++p) {
            Complex x[R];
            loadRows(x, rows_, p, columns);
            turn(x, twiddles + p * (R - 1));
            butterfly(x);
            QUILLMERE_UNROLL
            for (std::size_t r = 0; r < R; ++r) {
                const std::size_t i = 2 * (p + r * columns);
                store(i, x[r].im);
                store(i + 1, x[r].re);
            }
        }
    }

    HWY_INLINE void analyseBlock(std::size_t firstRow) {
        for (const RealFFTPlan::Pass* pass = blockPassesBegin(); pass != passesEnd(); ++pass)
            runPass<true>(*pass, rows_ + firstRow * rowSize, plan_.blockLength);
    }
    HWY_INLINE void synthesiseBlock(std::size_t firstRow) {
        for (const RealFFTPlan::Pass* pass = passesEnd(); pass-- != blockPassesBegin();)
            runPass<false>(*pass, rows_ + firstRow * rowSize, plan_.blockLength);
    }

    template <bool kAnalyse, bool kSynthesise, class Bin>
    HWY_INLINE void eachBlockPair(Bin& bin) {
        const RealFFTPlan::BinPair* pair = plan_.pairs.data();
        const RealFFTPlan::BlockPair* const begin = plan_.blockPairs.data();
        const RealFFTPlan::BlockPair* const end = begin + plan_.blockPairs.size();
        for (const RealFFTPlan::BlockPair* blocks = begin; blocks != end; ++blocks) {
            if constexpr (kAnalyse) {
                analyseBlock(blocks->first);
                if (blocks->second != blocks->first) analyseBlock(blocks->second);
            }
            if (blocks == begin) edgeBins<kAnalyse, kSynthesise>(bin);
            for (const RealFFTPlan::BinPair* last = plan_.pairs.data() + blocks->pairsEnd; pair != last;
                 ++pair)
                binPair<kAnalyse, kSynthesise>(*pair, bin);
            if constexpr (kSynthesise) {
                synthesiseBlock(blocks->first);
                if (blocks->second != blocks->first) synthesiseBlock(blocks->second);
            }
        }
    }

    template <bool kAnalyse, bool kSynthesise, class Bin>
    HWY_INLINE void binPair(const RealFFTPlan::BinPair& pair, Bin& bin) {
        Complex x = loadRow(rows_, pair.first);
        Complex y = loadRow(rows_, pair.second);
        if constexpr (kAnalyse) separate(x, y, pair.root);
        x = bin(pair.k, x);
        y = pair.first == pair.second ? x : bin(plan_.half - pair.k, y);
        if constexpr (kSynthesise) {
            merge(x, y, pair.root);
            storeRow(x, rows_, pair.first);
            storeRow(y, rows_, pair.second);
        }
    }

    // DC and Nyquist, which are real: sum and difference of the even and odd samples' sums.
    template <bool kAnalyse, bool kSynthesise, class Bin>
    HWY_INLINE void edgeBins(Bin& bin) {
        const Vector zero = hn::Zero(Tag());
        Complex dc{zero, zero};
        Complex nyquist{zero, zero};
        if constexpr (kAnalyse) {
            const Complex z = loadRow(rows_, 0);
            const Vector two = hn::Set(Tag(), 2.0F);
            dc.re = hn::Mul(two, hn::Add(z.re, z.im));
            nyquist.re = hn::Mul(two, hn::Sub(z.re, z.im));
        }
        dc = bin(0, dc);
        nyquist = bin(plan_.half, nyquist);
        if constexpr (kSynthesise)
            storeRow({hn::Sub(dc.re, nyquist.re), hn::Add(dc.re, nyquist.re)}, rows_, 0);
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
    float* rows_;
};

#if HWY_TARGET != HWY_SCALAR
// to[c][r] = from[r][c] for four rows of four.
HWY_INLINE void transposeFour(const float* const (&from)[4], float* const (&to)[4]) {
    const hn::FixedTag<float, 4> d;
    const auto row0 = hn::LoadU(d, from[0]);
    const auto row1 = hn::LoadU(d, from[1]);
    const auto row2 = hn::LoadU(d, from[2]);
    const auto row3 = hn::LoadU(d, from[3]);
    const auto even01 = hn::InterleaveLower(d, row0, row2);
    const auto even23 = hn::InterleaveUpper(d, row0, row2);
    const auto odd01 = hn::InterleaveLower(d, row1, row3);
    const auto odd23 = hn::InterleaveUpper(d, row1, row3);
    hn::StoreU(hn::InterleaveLower(d, even01, odd01), d, to[0]);
    hn::StoreU(hn::InterleaveUpper(d, even01, odd01), d, to[1]);
    hn::StoreU(hn::InterleaveLower(d, even23, odd23), d, to[2]);
    hn::StoreU(hn::InterleaveUpper(d, even23, odd23), d, to[3]);
}
#endif

// Rows are moved four at a time over short stretches: they are often a power of two apart, and then the cache
// has room for few of them at once.
inline constexpr std::size_t stretch = 64;

// out[i * stride + l] = rows[l][i] for i < count and every lane l.
inline void interleave(const float* const* rows, std::size_t count, float* out, std::size_t stride) {
    std::size_t done = 0;
#if HWY_TARGET != HWY_SCALAR
    while (done + 4 <= count) {
        const std::size_t end = HWY_MIN(done + stretch, count / 4 * 4);
        for (std::size_t l = 0; l < lanes; l += 4) {
            for (std::size_t i = done; i < end; i += 4) {
                float* const to = out + i * stride + l;
                transposeFour({rows[l] + i, rows[l + 1] + i, rows[l + 2] + i, rows[l + 3] + i},
                              {to, to + stride, to + 2 * stride, to + 3 * stride});
            }
        }
        done = end;
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
    while (done + 4 <= count) {
        const std::size_t end = HWY_MIN(done + stretch, count / 4 * 4);
        for (std::size_t l = 0; l < lanes; l += 4) {
            for (std::size_t i = done; i < end; i += 4) {
                const float* const from = in + i * stride + l;
                transposeFour({from, from + stride, from + 2 * stride, from + 3 * stride},
                              {rows[l] + i, rows[l + 1] + i, rows[l + 2] + i, rows[l + 3] + i});
            }
        }
        done = end;
    }
#endif
    for (; done < count; ++done) {
        for (std::size_t l = 0; l < lanes; ++l)
            rows[l][done] = in[done * stride + l];
    }
}

// The rows of a matrix with the given number of columns, one per lane; lanes without a row repeat the first.
struct InputRows {
    InputRows(const float* matrix, std::size_t columns, std::size_t count) {
        for (std::size_t l = 0; l < lanes; ++l)
            rows[l] = matrix + (l < count ? l : 0) * columns;
    }
    const float* rows[lanes];
};

struct OutputRows {
    OutputRows(float* matrix, std::size_t columns, std::size_t count, float* unused) {
        for (std::size_t l = 0; l < lanes; ++l)
            rows[l] = l < count ? matrix + l * columns : unused;
    }
    float* rows[lanes];
};

}  // namespace quillmere::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
