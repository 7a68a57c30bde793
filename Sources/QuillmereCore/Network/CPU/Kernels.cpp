#include "QuillmereCore/Network/CPU/Kernels.h"

#include <algorithm>

// Compiled once for each instruction set worth having; the baseline is always among them.
#define HWY_DISABLED_TARGETS \
    (HWY_SSSE3 | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "QuillmereCore/Network/CPU/Kernels.cpp"
#include <hwy/foreach_target.h>  // must come before highway.h

#include <hwy/highway.h>

#include "QuillmereCore/Network/CPU/Gemm-inl.h"
#include "QuillmereCore/Network/CPU/Outer-inl.h"
#include "QuillmereCore/Network/CPU/Simd-inl.h"
#include "QuillmereCore/Network/CPU/Winograd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

const KernelTable* table() {
    static constexpr KernelTable instance{
        .name = HWY_STR(HWY_NAMESPACE),
        .downForward = downForward,
        .upForward = upForward,
        .downBackward = downBackward,
        .upBackward = upBackward,
        .weightGradientRows = weightGradientRows,
        .transformWeights = transformWeights,
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
    return (3 * (static_cast<std::size_t>(width) + 2) + static_cast<std::size_t>(channels)) * outputTapLanes;
}

TileGeometry::TileGeometry(const ConvLayer& layer, int batchSize, bool whole)
    : batch(batchSize),
      hiChannels(layer.hiChannels),
      loChannels(layer.loChannels),
      loHeight(layer.loHeight),
      loWidth(layer.loWidth),
      tileRows((layer.loHeight + 1) / 2),
      tileCols((layer.loWidth + 1) / 2),
      groupChannels(4 * layer.hiChannels),
      loChannelsPadded(roundUp(layer.loChannels, widthMultiple)),
      wholeBatch(whole) {
    // About 48 tiles at a time keep all nine planes of a chunk in the second-level cache.
    constexpr int goodChunk = 48;
    rowsPerChunk = whole ? tileRows : std::min(tileRows, std::max(1, goodChunk / tileCols));
}

std::size_t TileGeometry::chunkTiles(int images) const {
    return static_cast<std::size_t>(wholeBatch ? images : 1) * rowsPerChunk * tileCols;
}

}  // namespace quillmere::network::cpu
#endif
