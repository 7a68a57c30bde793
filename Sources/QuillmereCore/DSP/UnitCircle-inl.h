// Points of the unit circle as vector code. Included once per instruction set, after foreach_target.h.
#if defined(QUILLMERE_DSP_UNIT_CIRCLE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_DSP_UNIT_CIRCLE_INL_H_
#undef QUILLMERE_DSP_UNIT_CIRCLE_INL_H_
#else
#define QUILLMERE_DSP_UNIT_CIRCLE_INL_H_
#endif

#include <hwy/highway.h>

#include "QuillmereCore/DSP/BatchedFFT-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::HWY_NAMESPACE {

using Integers = hn::Vec<hn::RebindToSigned<Tag>>;

// e^(i r), turned on by a number of quarter turns (of which the lowest two bits count), to about one unit in
// the last place for r within +-pi / 4: Cephes' polynomials.
HWY_INLINE Complex onCircle(Vector r, Integers quarters) {
    const Tag d;
    const hn::RebindToSigned<Tag> di;
    const Vector r2 = hn::Mul(r, r);
    Vector sin = hn::MulAdd(r2, hn::Set(d, -1.9515295891e-4F), hn::Set(d, 8.3321608736e-3F));
    sin = hn::MulAdd(r2, sin, hn::Set(d, -1.6666654611e-1F));
    sin = hn::MulAdd(hn::Mul(r2, r), sin, r);
    Vector cos = hn::MulAdd(r2, hn::Set(d, 2.443315711809948e-5F), hn::Set(d, -1.388731625493765e-3F));
    cos = hn::MulAdd(r2, cos, hn::Set(d, 4.166664568298827e-2F));
    cos = hn::MulAdd(hn::Mul(r2, r2), cos, hn::NegMulAdd(r2, hn::Set(d, 0.5F), hn::Set(d, 1.0F)));
    // Each quarter turn takes (cos, sin) to (-sin, cos).
    const auto one = hn::Set(di, 1);
    const auto odd = hn::RebindMask(d, hn::Eq(hn::And(quarters, one), one));
    const auto signOfSin = hn::ShiftLeft<30>(hn::And(quarters, hn::Set(di, 2)));
    const auto signOfCos = hn::ShiftLeft<30>(hn::And(hn::Add(quarters, one), hn::Set(di, 2)));
    return {hn::Xor(hn::IfThenElse(odd, sin, cos), hn::BitCast(d, signOfCos)),
            hn::Xor(hn::IfThenElse(odd, cos, sin), hn::BitCast(d, signOfSin))};
}

}  // namespace quillmere::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
