// The passes of inner layers (TileGeometry.h): every stage for the whole batch. Included once per instruction
// set.
#if defined(QUILLMERE_NETWORK_INNER_PASSES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_INNER_PASSES_INL_H_
#undef QUILLMERE_NETWORK_INNER_PASSES_INL_H_
#else
#define QUILLMERE_NETWORK_INNER_PASSES_INL_H_
#endif

#include <cstddef>
#include <utility>

#include "QuillmereCore/Network/CPU/Chunks-inl.h"
#include "QuillmereCore/Network/CPU/Epilogues-inl.h"
#include "QuillmereCore/Network/CPU/Gemm-inl.h"
#include "QuillmereCore/Network/CPU/TileScatter-inl.h"
#include "QuillmereCore/Network/CPU/TileTransforms-inl.h"
#include "QuillmereCore/Network/CPU/WeightPanels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

inline HWY_ATTR void transformHi(const LayerCall& call, PaddedView hi) {
    forEachChunk(
        call, [&](const Chunk& chunk) HWY_ATTR { transformHiChunk(call, chunk, hi, hiTiles(call, chunk)); });
}

inline HWY_ATTR void transformLo(const LayerCall& call, PaddedView lo) {
    forEachChunk(
        call, [&](const Chunk& chunk) HWY_ATTR { transformLoChunk(call, chunk, lo, loTiles(call, chunk)); });
}

// Per axis k0, (k0 + k1) / 2, (k0 - k1) / 2, k1; k(i) gives tap i.
template <int kind, class D, class Tap>
HWY_INLINE hn::Vec<D> combineTaps(D d, Tap k) {
    const auto half = hn::Set(d, 0.5F);
    if constexpr (kind == 0) {
        return k(0);
    } else if constexpr (kind == 1) {
        return hn::Mul(half, hn::Add(k(0), k(1)));
    } else if constexpr (kind == 2) {
        return hn::Mul(half, hn::Sub(k(0), k(1)));
    } else {
        return k(1);
    }
}

// Transformed weights of one plane from those taps of one quarter that it needs. kernel: the quarter's first
// tap.
template <int plane, class D>
HWY_INLINE hn::Vec<D> transformedWeight(D d, const float* kernel, std::size_t tap) {
    return combineTaps<plane / 4>(d, [&](int a) HWY_ATTR {
        return combineTaps<plane % 4>(
            d, [&](int b) HWY_ATTR { return hn::LoadU(d, kernel + (8 * a + 2 * b) * tap); });
    });
}

// Calls body<p>().
template <class Body, int... p>
HWY_INLINE void withPlane(int plane, Body body, std::integer_sequence<int, p...>) {
    ((plane == p ? body.template operator()<p>() : void()), ...);
}
template <class Body>
HWY_INLINE void withPlane(int plane, Body body) {
    withPlane(plane, body, std::make_integer_sequence<int, planes>());
}

// Tap (a, b) of quarter (qy, qx) is K[2a + qy][2b + qx].
constexpr std::size_t firstTap(int quarter) {
    return static_cast<std::size_t>(quarter / 2) * 4 + quarter % 2;
}

// Columns of U[plane] from KT.
template <int plane>
HWY_ATTR void makeDownPanel(const TileGeometry& g, const float* KT, int column, int columns, float* panel) {
    const FullTag d;
    const std::size_t tap = static_cast<std::size_t>(g.hiChannels) * g.loChannelsPadded;
    for (int quarter = 0; quarter < 4; ++quarter) {
        const float* in = KT + firstTap(quarter) * tap + column;
        for (int channel = 0; channel < g.hiChannels; ++channel, in += g.loChannelsPadded) {
            for (int c = 0; c < columns; c += lanesOf<FullTag>, panel += lanesOf<FullTag>)
                hn::Store(transformedWeight<plane>(d, in + c, tap), d, panel);
        }
    }
}

// Columns of U[plane]^T from K.
template <int plane, class D>
HWY_ATTR void makeUpPanel(D d, const TileGeometry& g, const float* K, int column, int columns, float* panel) {
    const std::size_t tap = static_cast<std::size_t>(g.loChannels) * g.hiChannels;
    const float* in[panelWidth / lanesOf<D>];
    const int vectors = columns / lanesOf<D>;
    for (int v = 0; v < vectors; ++v) {
        const int at = column + v * lanesOf<D>;
        in[v] = K + firstTap(at / g.hiChannels) * tap + at % g.hiChannels;
    }
    for (int row = 0; row < g.loChannels; ++row) {
        for (int v = 0; v < vectors; ++v, panel += lanesOf<D>) {
            hn::Store(transformedWeight<plane>(d, in[v], tap), d, panel);
            in[v] += g.hiChannels;
        }
    }
}

// Some whole panels of columns of M[p].
inline HWY_ATTR void productsDown(const LayerCall& call, int p, int begin, int end) {
    const TileGeometry& g = call.geometry;
    forEachChunk(call, [&](const Chunk& chunk) HWY_ATTR {
        const TileMatrix M = loProducts(call, chunk);
        forEachWeightPanel(begin, end, [&](int column, int columns) HWY_ATTR {
            withPlane(p, [&]<int plane>() HWY_ATTR {
                makeDownPanel<plane>(g, call.weights.KT, column, columns, call.scratch.panel);
            });
            const float* const V = hiTiles(call, chunk).ofPlane(p);
            multiplyPanels<Product::plain>(chunk.tiles(), columns, g.groupChannels, V, g.groupChannels,
                                           call.scratch.panel, columns, M.ofPlane(p) + column,
                                           g.loChannelsPadded, RowsBelow{V});
        });
    });
}

inline HWY_ATTR void productsUp(const LayerCall& call, int p, int begin, int end) {
    const TileGeometry& g = call.geometry;
    forEachChunk(call, [&](const Chunk& chunk) HWY_ATTR {
        const TileMatrix M = hiProducts(call, chunk);
        forEachWeightPanel(begin, end, [&](int column, int columns) HWY_ATTR {
            withChannelTag(g.hiChannels, [&](auto d) HWY_ATTR {
                withPlane(p, [&]<int plane>() HWY_ATTR {
                    makeUpPanel<plane>(d, g, call.weights.K, column, columns, call.scratch.panel);
                });
            });
            const float* const Z = loTiles(call, chunk).ofPlane(p);
            multiplyPanels<Product::plain>(chunk.tiles(), columns, g.loChannels, Z, g.loChannels,
                                           call.scratch.panel, columns, M.ofPlane(p) + column,
                                           g.groupChannels, RowsBelow{Z});
        });
    });
}

inline HWY_ATTR void activateLo(const LayerCall& call, PaddedView act, PaddedView derivative) {
    forEachChunk(call, [&](const Chunk& chunk) HWY_ATTR {
        scatterLo(call, chunk, loProducts(call, chunk), act,
                  SiluEpilogue{act.data, derivative.data, call.weights.bias});
    });
}

inline HWY_ATTR void activateHi(const LayerCall& call, PaddedView act, PaddedView derivative) {
    forEachChunk(call, [&](const Chunk& chunk) HWY_ATTR {
        scatterHi(call, chunk, hiProducts(call, chunk), act,
                  SiluEpilogue{act.data, derivative.data, call.weights.bias});
    });
    clearSideBorders(call, act, derivative);
}

inline HWY_ATTR void gradientLo(const LayerCall& call, PaddedView dLo, float* biasGradient) {
    forEachChunk(call, [&](const Chunk& chunk) HWY_ATTR {
        scatterLo(call, chunk, loProducts(call, chunk), dLo, GradientEpilogue{dLo.data, biasGradient});
    });
}

inline HWY_ATTR void gradientHi(const LayerCall& call, PaddedView dHi, float* biasGradient) {
    forEachChunk(call, [&](const Chunk& chunk) HWY_ATTR {
        scatterHi(call, chunk, hiProducts(call, chunk), dHi, GradientEpilogue{dHi.data, biasGradient});
    });
}

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
