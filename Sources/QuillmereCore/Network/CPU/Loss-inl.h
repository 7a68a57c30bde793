// The loss of a reconstruction. Included once per instruction set.
#if defined(QUILLMERE_NETWORK_LOSS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_LOSS_INL_H_
#undef QUILLMERE_NETWORK_LOSS_INL_H_
#else
#define QUILLMERE_NETWORK_LOSS_INL_H_
#endif

#include <cstddef>

#include "QuillmereCore/Network/CPU/PaddedTensor.h"
#include "QuillmereCore/Network/CPU/Simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

inline HWY_ATTR double reconstructionLoss(const LossTerm& loss, PaddedView x, int image, const float* recon,
                                          float scale, PaddedView dRecon, double* gradientSum) {
    const FullTag d;
    const auto threshold = hn::Set(d, loss.threshold);
    const auto light = hn::Set(d, 1.0F);
    const auto heavy = hn::Set(d, 1.0F + loss.extraWeight);
    const auto factor = hn::Set(d, scale);
    double total = 0;
    double gradientTotal = 0;
    for (int y = 0; y < x.height; ++y) {
        const float* const target = x.at(image, y, 0);
        const float* const r = recon + static_cast<std::size_t>(y) * x.width;
        float* const out = dRecon.at(0, y, 0);
        auto errors = hn::Zero(d);
        auto gradients = hn::Zero(d);
        for (int i = 0; i < x.width; i += lanesOf<FullTag>) {
            const auto t = hn::LoadU(d, target + i);
            const auto difference = hn::Sub(hn::LoadU(d, r + i), t);
            const auto weighted = hn::Mul(difference, hn::IfThenElse(hn::Gt(t, threshold), heavy, light));
            errors = hn::MulAdd(weighted, difference, errors);
            const auto gradient = hn::Mul(weighted, factor);
            gradients = hn::Add(gradients, gradient);
            hn::StoreU(gradient, d, out + i);
        }
        // Rows are short enough for single precision, images are not.
        total += static_cast<double>(hn::GetLane(hn::SumOfLanes(d, errors)));
        gradientTotal += static_cast<double>(hn::GetLane(hn::SumOfLanes(d, gradients)));
    }
    *gradientSum = gradientTotal;
    return total;
}

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
