// From the pixels of hi and lo to transformed tiles (Kernels.h has the algorithm). Included once per
// instruction set.
#if defined(QUILLMERE_NETWORK_TILE_TRANSFORMS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_TILE_TRANSFORMS_INL_H_
#undef QUILLMERE_NETWORK_TILE_TRANSFORMS_INL_H_
#else
#define QUILLMERE_NETWORK_TILE_TRANSFORMS_INL_H_
#endif

#include <cstddef>

#include "QuillmereCore/Network/CPU/Chunks-inl.h"
#include "QuillmereCore/Network/CPU/PaddedTensor.h"
#include "QuillmereCore/Network/CPU/Simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

// V: four groups per axis of hi, from group row 3 * tileRow on, to d0 - d2, d1 + d2, d2 - d1, d1 - d3.
inline HWY_ATTR void transformHiRow(const TileGeometry& g, const PaddedView& hi, int n, int tileRow, float* V,
                                    std::size_t plane) {
    const FullTag d;
    const std::size_t rowStride = hi.rowStride;
    const int pair = 2 * g.hiChannels;  // one row of a group: two pixels
    for (int tile = 0; tile < g.tileCols; ++tile) {
        for (int qy = 0; qy < 2; ++qy) {
            const float* const in = hi.image(n) + (2 * tileExtent * tileRow + qy) * rowStride +
                                    static_cast<std::size_t>(tileExtent) * tile * pair;
            float* const out = V + static_cast<std::size_t>(tile) * g.groupChannels + qy * pair;
            for (int c = 0; c < pair; c += lanesOf<FullTag>) {
                hn::Vec<FullTag> e[4][4];
#pragma GCC unroll 4
                for (int x = 0; x < 4; ++x) {
                    const float* const column = in + x * pair + c;
                    const auto d0 = hn::LoadU(d, column);
                    const auto d1 = hn::LoadU(d, column + 2 * rowStride);
                    const auto d2 = hn::LoadU(d, column + 4 * rowStride);
                    const auto d3 = hn::LoadU(d, column + 6 * rowStride);
                    e[0][x] = hn::Sub(d0, d2);
                    e[1][x] = hn::Add(d1, d2);
                    e[2][x] = hn::Sub(d2, d1);
                    e[3][x] = hn::Sub(d1, d3);
                }
#pragma GCC unroll 4
                for (int y = 0; y < 4; ++y) {
                    float* const o = out + 4 * y * plane + c;
                    hn::StoreU(hn::Sub(e[y][0], e[y][2]), d, o);
                    hn::StoreU(hn::Add(e[y][1], e[y][2]), d, o + plane);
                    hn::StoreU(hn::Sub(e[y][2], e[y][1]), d, o + 2 * plane);
                    hn::StoreU(hn::Sub(e[y][1], e[y][3]), d, o + 3 * plane);
                }
            }
        }
    }
}

// Z: three pixels per axis of lo to y0, y0 + y1 + y2, y0 - y1 + y2, -y2.
template <class D>
HWY_INLINE void transformLoRowWith(D d, const TileGeometry& g, const PaddedView& lo, int n, int tileRow,
                                   float* Z, std::size_t plane) {
    for (int tile = 0; tile < g.tileCols; ++tile) {
        const float* const in = lo.at(n, tileExtent * tileRow, tileExtent * tile);
        float* const out = Z + static_cast<std::size_t>(tile) * g.loChannels;
        for (int c = 0; c < g.loChannels; c += lanesOf<D>) {
            hn::Vec<D> e[4][3];
#pragma GCC unroll 3
            for (int x = 0; x < 3; ++x) {
                const float* const column = in + x * g.loChannels + c;
                const auto y0 = hn::LoadU(d, column);
                const auto y1 = hn::LoadU(d, column + lo.rowStride);
                const auto y2 = hn::LoadU(d, column + 2 * lo.rowStride);
                const auto ends = hn::Add(y0, y2);
                e[0][x] = y0;
                e[1][x] = hn::Add(ends, y1);
                e[2][x] = hn::Sub(ends, y1);
                e[3][x] = hn::Neg(y2);
            }
#pragma GCC unroll 4
            for (int y = 0; y < 4; ++y) {
                float* const o = out + 4 * y * plane + c;
                const auto ends = hn::Add(e[y][0], e[y][2]);
                hn::StoreU(e[y][0], d, o);
                hn::StoreU(hn::Add(ends, e[y][1]), d, o + plane);
                hn::StoreU(hn::Sub(ends, e[y][1]), d, o + 2 * plane);
                hn::StoreU(hn::Neg(e[y][2]), d, o + 3 * plane);
            }
        }
    }
}

inline HWY_ATTR void transformLoRow(const TileGeometry& g, const PaddedView& lo, int n, int tileRow, float* Z,
                                    std::size_t plane) {
    withChannelTag(g.loChannels,
                   [&](auto d) HWY_ATTR { transformLoRowWith(d, g, lo, n, tileRow, Z, plane); });
}

inline HWY_ATTR void transformHiChunk(const LayerCall& call, const Chunk& chunk, const PaddedView& hi,
                                      const TileMatrix& V) {
    forEachTileRow(chunk, [&](std::size_t tile, int n, int row)
                              HWY_ATTR { transformHiRow(call.geometry, hi, n, row, V.row(tile), V.plane); });
}

inline HWY_ATTR void transformLoChunk(const LayerCall& call, const Chunk& chunk, const PaddedView& lo,
                                      const TileMatrix& Z) {
    forEachTileRow(chunk, [&](std::size_t tile, int n, int row)
                              HWY_ATTR { transformLoRow(call.geometry, lo, n, row, Z.row(tile), Z.plane); });
}

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
