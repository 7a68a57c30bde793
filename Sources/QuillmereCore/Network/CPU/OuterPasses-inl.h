// The passes of outer layers (TileGeometry.h): a chunk at a time. Included once per instruction set.
#if defined(QUILLMERE_NETWORK_OUTER_PASSES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_OUTER_PASSES_INL_H_
#undef QUILLMERE_NETWORK_OUTER_PASSES_INL_H_
#else
#define QUILLMERE_NETWORK_OUTER_PASSES_INL_H_
#endif

#include <cstddef>

#include "QuillmereCore/Network/CPU/Chunks-inl.h"
#include "QuillmereCore/Network/CPU/Epilogues-inl.h"
#include "QuillmereCore/Network/CPU/Gemm-inl.h"
#include "QuillmereCore/Network/CPU/TileScatter-inl.h"
#include "QuillmereCore/Network/CPU/TileTransforms-inl.h"
#include "QuillmereCore/Network/CPU/WeightPanels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

// The next panel of as many floats; the padding between planes is too little to matter.
HWY_INLINE BlockAhead panelAfter(const float* panel, int size) {
    return {panel + size, panel + static_cast<std::size_t>(2) * size};
}

// M[p] = V[p] * U[p].
inline HWY_ATTR void multiplyDown(const LayerCall& call, int tiles, const TileMatrix& V,
                                  const TileMatrix& M) {
    const TileGeometry& g = call.geometry;
    for (int p = 0; p < planes; ++p) {
        const float* const U = call.weights.U + p * g.downPlane();
        forEachWeightPanel(0, g.loChannelsPadded, [&](int column, int columns) HWY_ATTR {
            const float* const panel = U + static_cast<std::size_t>(column) * g.groupChannels;
            multiplyPanels<Product::plain>(tiles, columns, g.groupChannels, V.ofPlane(p), g.groupChannels,
                                           panel, columns, M.ofPlane(p) + column, g.loChannelsPadded,
                                           panelAfter(panel, columns * g.groupChannels));
        });
    }
}

// M[p] = Z[p] * U[p]^T.
inline HWY_ATTR void multiplyUp(const LayerCall& call, int tiles, const TileMatrix& Z, const TileMatrix& M) {
    const TileGeometry& g = call.geometry;
    for (int p = 0; p < planes; ++p) {
        const float* const UT = call.weights.UT + p * g.weightPlane();
        forEachWeightPanel(0, g.groupChannels, [&](int column, int columns) HWY_ATTR {
            const float* const panel = UT + static_cast<std::size_t>(column) * g.loChannels;
            multiplyPanels<Product::plain>(tiles, columns, g.loChannels, Z.ofPlane(p), g.loChannels, panel,
                                           columns, M.ofPlane(p) + column, g.groupChannels,
                                           panelAfter(panel, columns * g.loChannels));
        });
    }
}

// dU[p] += Z[p]^T * V[p].
inline HWY_ATTR void accumulateWeightGradient(const TileGeometry& g, int tiles, const TileMatrix& V,
                                              const TileMatrix& Z, float* dU) {
    for (int p = 0; p < planes; ++p) {
        addTransposedA(g.loChannels, g.groupChannels, tiles, Z.ofPlane(p), g.loChannels, V.ofPlane(p),
                       g.groupChannels, dU + p * g.weightPlane(), g.groupChannels);
    }
}

inline HWY_ATTR void downForward(const LayerCall& call, PaddedView hi, PaddedView act,
                                 PaddedView derivative) {
    forEachChunk(call, [&](const Chunk& chunk) HWY_ATTR {
        const TileMatrix V = hiTiles(call, chunk);
        const TileMatrix M = loProducts(call, chunk);
        transformHiChunk(call, chunk, hi, V);
        multiplyDown(call, chunk.tiles(), V, M);
        scatterLo(call, chunk, M, act, SiluEpilogue{act.data, derivative.data, call.weights.bias});
    });
}

inline HWY_ATTR void upForward(const LayerCall& call, PaddedView lo, PaddedView act, PaddedView derivative) {
    forEachChunk(call, [&](const Chunk& chunk) HWY_ATTR {
        const TileMatrix Z = loTiles(call, chunk);
        const TileMatrix M = hiProducts(call, chunk);
        transformLoChunk(call, chunk, lo, Z);
        multiplyUp(call, chunk.tiles(), Z, M);
        scatterHi(call, chunk, M, act, SiluEpilogue{act.data, derivative.data, call.weights.bias});
    });
    clearSideBorders(call, act, derivative);
}

inline HWY_ATTR void downBackward(const LayerCall& call, PaddedView dLo, PaddedView hiAct, PaddedView dHi,
                                  float* biasGradient, float* dU) {
    forEachChunk(call, [&](const Chunk& chunk) HWY_ATTR {
        const TileMatrix V = hiTiles(call, chunk);
        const TileMatrix Z = loTiles(call, chunk);
        const TileMatrix M = hiProducts(call, chunk);
        transformLoChunk(call, chunk, dLo, Z);
        if (dU) {  // otherwise the forward pass has left V among the kept tiles
            transformHiChunk(call, chunk, hiAct, V);
            accumulateWeightGradient(call.geometry, chunk.tiles(), V, Z, dU);
        }
        multiplyUp(call, chunk.tiles(), Z, M);
        scatterHi(call, chunk, M, dHi, GradientEpilogue{dHi.data, biasGradient});
    });
}

inline HWY_ATTR void upBackward(const LayerCall& call, PaddedView dHi, PaddedView loAct, PaddedView dLo,
                                float* biasGradient, float* dU) {
    forEachChunk(call, [&](const Chunk& chunk) HWY_ATTR {
        const TileMatrix V = hiTiles(call, chunk);
        const TileMatrix Z = loTiles(call, chunk);
        const TileMatrix M = loProducts(call, chunk);
        transformHiChunk(call, chunk, dHi, V);
        if (dU) {  // otherwise the forward pass has left Z among the kept tiles
            transformLoChunk(call, chunk, loAct, Z);
            accumulateWeightGradient(call.geometry, chunk.tiles(), V, Z, dU);
        }
        multiplyDown(call, chunk.tiles(), V, M);
        scatterLo(call, chunk, M, dLo, GradientEpilogue{dLo.data, biasGradient});
    });
}

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
