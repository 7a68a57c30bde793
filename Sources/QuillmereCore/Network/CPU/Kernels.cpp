#include "QuillmereCore/Network/CPU/Kernels.h"

#include <algorithm>

#define HWY_TARGET_INCLUDE "QuillmereCore/Network/CPU/Kernels.cpp"
#include "QuillmereCore/Util/VectorTargets.h"

#include "QuillmereCore/Network/CPU/Gemm-inl.h"
#include "QuillmereCore/Network/CPU/InnerPasses-inl.h"
#include "QuillmereCore/Network/CPU/Loss-inl.h"
#include "QuillmereCore/Network/CPU/OuterPasses-inl.h"
#include "QuillmereCore/Network/CPU/Output-inl.h"
#include "QuillmereCore/Network/CPU/Simd-inl.h"
#include "QuillmereCore/Network/CPU/Stem-inl.h"
#include "QuillmereCore/Network/CPU/WeightGradients-inl.h"
#include "QuillmereCore/Network/CPU/Weights-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

const KernelTable* table() {
    static constexpr KernelTable instance{
        .name = HWY_STR(HWY_NAMESPACE),
        .downForward = downForward,
        .upForward = upForward,
        .downBackward = downBackward,
        .upBackward = upBackward,
        .transformHi = transformHi,
        .transformLo = transformLo,
        .productsDown = productsDown,
        .productsUp = productsUp,
        .activateLo = activateLo,
        .activateHi = activateHi,
        .gradientLo = gradientLo,
        .gradientHi = gradientHi,
        .weightGradientColumns = weightGradientColumns,
        .transformWeights = transformWeights,
        .transposeWeights = transposeWeights,
        .untransformGradient = untransformGradient,
        .foldKernel = foldKernel,
        .unfoldGradient = unfoldGradient,
        .stemForward = stemForward,
        .stemGradient = stemGradient,
        .outputForward = outputForward,
        .reconstructionLoss = reconstructionLoss,
        .outputBackward = outputBackward,
        .multiply = multiply,
        .multiplyTransposedA = multiplyTransposedA,
        .multiplyTransposedB = multiplyTransposedB,
        .biasSilu = biasSilu,
        .multiplyAccumulate = multiplyAccumulate,
        .adam = adam,
    };
    return &instance;
}

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere::network::cpu {

HWY_EXPORT(table);

const KernelTable& kernels() {
    return *HWY_DYNAMIC_DISPATCH(table)();
}

std::size_t outputStrip(int width, int channels) {
    const auto taps = static_cast<std::size_t>(channels);
    return std::max((3 * (static_cast<std::size_t>(width) + 2) + taps) * outputTapLanes, 2 * (9 + 10) * taps);
}

}  // namespace quillmere::network::cpu
#endif
