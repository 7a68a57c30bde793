// Vector types and element-wise functions. Included once per instruction set.
#if defined(QUILLMERE_NETWORK_SIMD_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_SIMD_INL_H_
#undef QUILLMERE_NETWORK_SIMD_INL_H_
#else
#define QUILLMERE_NETWORK_SIMD_INL_H_
#endif

#include <hwy/highway.h>

#include <cstddef>

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Whole registers, and at most eight lanes for channel counts that are no multiple of sixteen.
using FullTag = hn::ScalableTag<float>;
using EightTag = hn::CappedTag<float, 8>;

// By the register and not by hn::MaxLanes, which GCC 14 does not evaluate in a variable template.
template <class D>
inline constexpr int lanesOf = static_cast<int>(sizeof(hn::Vec<D>) / sizeof(hn::TFromD<D>));

// Calls body with the widest tag whose lanes divide the number of channels.
template <class Body>
HWY_INLINE void withChannelTag(int channels, Body body) {
    // NOLINTNEXTLINE(bugprone-branch-clone): the same only where eight lanes are the widest
    if (channels % lanesOf<FullTag> == 0) {
        body(FullTag());
    } else {
        body(EightTag());
    }
}

// e^x with a relative error of about 2e-7: 2^n times a polynomial for 2^f, |f| <= 1/2, with a relative error
// of 9.2e-8. x is limited to the range in which results and their reciprocals are normal numbers: never
// infinity, never a denormal.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V boundedExp(D d, V x) {
    x = hn::Min(hn::Max(x, hn::Set(d, -87.0F)), hn::Set(d, 87.0F));
    // 1 / ln 2 in two parts: what the first one lacks.
    const V scale = hn::Set(d, 1.44269502F);
    const V n = hn::Round(hn::Mul(x, scale));
    const V f = hn::MulAdd(x, hn::Set(d, 1.92596299e-8F), hn::MulSub(x, scale, n));
    V p = hn::Set(d, 1.3264727e-3F);
    p = hn::MulAdd(p, f, hn::Set(d, 9.6715127e-3F));
    p = hn::MulAdd(p, f, hn::Set(d, 5.5507337e-2F));
    p = hn::MulAdd(p, f, hn::Set(d, 2.4022242e-1F));
    p = hn::MulAdd(p, f, hn::Set(d, 6.9314698e-1F));
    p = hn::MulAdd(p, f, hn::Set(d, 1.0F));
    const hn::RebindToSigned<D> di;
    // p is in [0.7, 1.5]: adding n to its exponent multiplies by 2^n.
    return hn::BitCast(d, hn::Add(hn::BitCast(di, p), hn::ShiftLeft<23>(hn::ConvertTo(di, n))));
}

// 1 / x for normal positive x whose reciprocal is normal, to about one unit in the last place: a first guess
// from the exponent, off by at most an eighth, and two steps that take the error to its third power. All
// processors give the same bits, and none waits for its divider, which would take a third of all time spent
// on SiLU.
template <class D, class V = hn::Vec<D>>
HWY_INLINE V reciprocal(D d, V x) {
    const V one = hn::Set(d, 1.0F);
    const hn::RebindToSigned<D> di;
    const auto improved = [&](V r) HWY_ATTR {
        const V error = hn::NegMulAdd(x, r, one);
        return hn::MulAdd(r, hn::MulAdd(error, error, error), r);
    };
    return improved(improved(hn::BitCast(d, hn::Sub(hn::Set(di, 0x7EF127EA), hn::BitCast(di, x)))));
}

template <class D, class V = hn::Vec<D>>
HWY_INLINE V sigmoid(D d, V x) {
    return reciprocal(d, hn::Add(hn::Set(d, 1.0F), boundedExp(d, hn::Neg(x))));
}

// SiLU(x) = x * sigmoid(x); its derivative is s + SiLU(x) * (1 - s).
template <class V>
struct SiluResult {
    V value, derivative;
};
template <class D, class V = hn::Vec<D>>
HWY_INLINE SiluResult<V> silu(D d, V x) {
    const V s = sigmoid(d, x);
    const V value = hn::Mul(x, s);
    return {value, hn::MulAdd(value, hn::Sub(hn::Set(d, 1.0F), s), s)};
}

inline HWY_ATTR void biasSilu(std::size_t count, const float* HWY_RESTRICT x, const float* HWY_RESTRICT bias,
                              float* act, float* derivative) {
    const FullTag d;
    for (std::size_t i = 0; i < count; i += lanesOf<FullTag>) {
        const auto result = silu(d, hn::Add(hn::LoadU(d, x + i), hn::LoadU(d, bias + i)));
        hn::StoreU(result.value, d, act + i);
        if (derivative) hn::StoreU(result.derivative, d, derivative + i);
    }
}

inline HWY_ATTR void multiplyAccumulate(std::size_t count, const float* HWY_RESTRICT x, float* HWY_RESTRICT y,
                                        float* HWY_RESTRICT sum) {
    const FullTag d;
    for (std::size_t i = 0; i < count; i += lanesOf<FullTag>) {
        const auto product = hn::Mul(hn::LoadU(d, x + i), hn::LoadU(d, y + i));
        hn::StoreU(product, d, y + i);
        hn::StoreU(hn::Add(hn::LoadU(d, sum + i), product), d, sum + i);
    }
}

inline HWY_ATTR void adam(const Optimiser& settings, float learningRate, std::size_t count,
                          const float* HWY_RESTRICT gradient, float* HWY_RESTRICT first,
                          float* HWY_RESTRICT second, float* HWY_RESTRICT value) {
    const FullTag d;
    const auto beta1 = hn::Set(d, settings.beta1);
    const auto beta2 = hn::Set(d, settings.beta2);
    const auto rest1 = hn::Set(d, 1.0F - settings.beta1);
    const auto rest2 = hn::Set(d, 1.0F - settings.beta2);
    const auto epsilon = hn::Set(d, settings.epsilon);
    const auto rate = hn::Set(d, learningRate);
    for (std::size_t i = 0; i < count; i += lanesOf<FullTag>) {
        const auto g = hn::LoadU(d, gradient + i);
        const auto m = hn::MulAdd(beta1, hn::LoadU(d, first + i), hn::Mul(rest1, g));
        const auto v = hn::MulAdd(beta2, hn::LoadU(d, second + i), hn::Mul(rest2, hn::Mul(g, g)));
        hn::StoreU(m, d, first + i);
        hn::StoreU(v, d, second + i);
        const auto change = hn::Div(hn::Mul(rate, m), hn::Add(hn::Sqrt(v), epsilon));
        hn::StoreU(hn::Sub(hn::LoadU(d, value + i), change), d, value + i);
    }
}

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
