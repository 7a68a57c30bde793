// From products of tiles to the pixels of hi and lo (Kernels.h has the algorithm). Included once per
// instruction set.
#if defined(QUILLMERE_NETWORK_TILE_SCATTER_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_TILE_SCATTER_INL_H_
#undef QUILLMERE_NETWORK_TILE_SCATTER_INL_H_
#else
#define QUILLMERE_NETWORK_TILE_SCATTER_INL_H_
#endif

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "QuillmereCore/Network/CPU/Chunks-inl.h"
#include "QuillmereCore/Network/CPU/Epilogues-inl.h"
#include "QuillmereCore/Network/CPU/PaddedTensor.h"
#include "QuillmereCore/Network/CPU/Simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

// Products M of one tile row to the pixels of lo: m0 + m1 + m2, m1 - m2, m1 + m2 - m3 per axis.
template <class D, class Epilogue>
HWY_INLINE void scatterLoRowWith(D, const TileGeometry& g, const float* M, std::size_t plane, int tileRow,
                                 const PaddedView& lo, int n, const Epilogue& epilogue) {
    const D d;
    const int rows = std::min(tileExtent, g.loHeight - tileExtent * tileRow);
    for (int c = 0; c < g.loChannels; c += lanesOf<D>) {
        typename Epilogue::template Lane<D> lane(d, epilogue, c);
        for (int tile = 0; tile < g.tileCols; ++tile) {
            const float* const m = M + static_cast<std::size_t>(tile) * g.loChannelsPadded + c;
            hn::Vec<D> r[3][4];
#pragma GCC unroll 4
            for (int x = 0; x < 4; ++x) {
                const auto m1 = hn::LoadU(d, m + (4 + x) * plane);
                const auto m2 = hn::LoadU(d, m + (8 + x) * plane);
                const auto sum = hn::Add(m1, m2);
                r[0][x] = hn::Add(hn::LoadU(d, m + x * plane), sum);
                r[1][x] = hn::Sub(m1, m2);
                r[2][x] = hn::Sub(sum, hn::LoadU(d, m + (12 + x) * plane));
            }
            const int columns = std::min(tileExtent, g.loWidth - tileExtent * tile);
#pragma GCC unroll 3
            for (int a = 0; a < 3; ++a) {
                if (a >= rows) continue;
                const std::size_t offset =
                    lo.at(n, tileExtent * tileRow + a, tileExtent * tile) - lo.data + c;
                const auto sum = hn::Add(r[a][1], r[a][2]);
                lane(hn::Add(r[a][0], sum), offset);
                if (columns > 1) lane(hn::Sub(r[a][1], r[a][2]), offset + g.loChannels);
                if (columns > 2) lane(hn::Sub(sum, r[a][3]), offset + 2 * g.loChannels);
            }
        }
        lane.finish();
    }
}

// Products of the tile row above that reach into the current one: the last four planes.
struct RowAbove {
    const float* data = nullptr;  // null at the top of the image
    std::size_t plane = 0;
};

// Transposed output transform of one tile row. Group row 3t of hi gets m0(t) - m3(t - 1), group row 3t + 1
// gets m1 - m2 + m3, group row 3t + 2 gets m1 + m2 - m0, and the same along columns. M null: the group row
// below the last tile row.
template <class Epilogue>
HWY_ATTR void scatterHiRow(const TileGeometry& g, const float* M, std::size_t plane, RowAbove above,
                           int tileRow, const PaddedView& hi, int n, const Epilogue& epilogue) {
    const FullTag d;
    using V = hn::Vec<FullTag>;
    const int pair = 2 * g.hiChannels;
    // Group g of loHeight + 1 is pixel rows 2g - 1 and 2g.
    const int groupRows = M ? std::min(tileExtent, g.loHeight + 1 - tileExtent * tileRow) : 1;
    for (int qy = 0; qy < 2; ++qy) {
        bool wanted[tileExtent];
        std::size_t offset[tileExtent];
        for (int a = 0; a < tileExtent; ++a) {
            const int row = 2 * (tileExtent * tileRow + a) - 1 + qy;
            wanted[a] = a < groupRows && row >= 0 && row < 2 * g.loHeight;
            offset[a] = hi.image(n) - hi.data + (row + 1) * hi.rowStride;
        }
        for (int c = 0; c < pair; c += lanesOf<FullTag>) {
            typename Epilogue::template Lane<FullTag> lane(d, epilogue, c);
            V left[tileExtent];  // the last plane of the tile to the left
#pragma GCC unroll 3
            for (int a = 0; a < tileExtent; ++a)
                left[a] = hn::Zero(d);
            for (int tile = 0; tile < g.tileCols; ++tile) {
                const std::size_t column = static_cast<std::size_t>(tileExtent) * tile * pair + c;
                const std::size_t at = static_cast<std::size_t>(tile) * g.groupChannels + qy * pair + c;
                V r[tileExtent][4];
#pragma GCC unroll 4
                for (int x = 0; x < 4; ++x) {
                    const V carried =
                        above.data ? hn::LoadU(d, above.data + x * above.plane + at) : hn::Zero(d);
                    if (M) {
                        const V m0 = hn::LoadU(d, M + x * plane + at);
                        const V m1 = hn::LoadU(d, M + (4 + x) * plane + at);
                        const V m2 = hn::LoadU(d, M + (8 + x) * plane + at);
                        const V m3 = hn::LoadU(d, M + (12 + x) * plane + at);
                        r[0][x] = hn::Sub(m0, carried);
                        r[1][x] = hn::Add(hn::Sub(m1, m2), m3);
                        r[2][x] = hn::Sub(hn::Add(m1, m2), m0);
                    } else {
                        r[0][x] = hn::Neg(carried);
                        r[1][x] = r[2][x] = hn::Zero(d);
                    }
                }
                const bool third = tileExtent * tile + 2 <= g.loWidth;
#pragma GCC unroll 3
                for (int a = 0; a < tileExtent; ++a) {
                    if (!wanted[a]) continue;
                    const std::size_t to = offset[a] + column;
                    lane(hn::Sub(r[a][0], left[a]), to);
                    lane(hn::Add(hn::Sub(r[a][1], r[a][2]), r[a][3]), to + pair);
                    if (third) lane(hn::Sub(hn::Add(r[a][1], r[a][2]), r[a][0]), to + 2 * pair);
                    left[a] = r[a][3];
                }
            }
            // Full tiles leave one group to the right of the last one.
            if (tileExtent * g.tileCols <= g.loWidth) {
                const std::size_t column = static_cast<std::size_t>(tileExtent) * g.tileCols * pair + c;
#pragma GCC unroll 3
                for (int a = 0; a < tileExtent; ++a)
                    if (wanted[a]) lane(hn::Neg(left[a]), offset[a] + column);
            }
            lane.finish();
        }
    }
}

template <class Epilogue>
HWY_ATTR void scatterLo(const LayerCall& call, const Chunk& chunk, const TileMatrix& M, const PaddedView& lo,
                        const Epilogue& epilogue) {
    const TileGeometry& g = call.geometry;
    withChannelTag(g.loChannels, [&](auto d) HWY_ATTR {
        forEachTileRow(chunk, [&](std::size_t tile, int n, int row) HWY_ATTR {
            scatterLoRowWith(d, g, M.row(tile), M.plane, row, lo, n, epilogue);
        });
    });
}

// Tile rows add to the group row they share with the next one; across chunks that part waits in `carry`.
template <class Epilogue>
HWY_ATTR void scatterHi(const LayerCall& call, const Chunk& chunk, const TileMatrix& M, const PaddedView& hi,
                        const Epilogue& epilogue) {
    const TileGeometry& g = call.geometry;
    const std::size_t rowSize = static_cast<std::size_t>(g.tileCols) * g.groupChannels;
    // Where full tiles end at the last pixel row, a group row remains below them.
    const bool below = tileExtent * g.tileRows <= g.loHeight;
    forEachTileRow(chunk, [&](std::size_t tile, int n, int row) HWY_ATTR {
        const float* const m = M.row(tile);
        RowAbove above;
        if (row > chunk.firstRow) {
            above = {m - rowSize + 12 * M.plane, M.plane};
        } else if (row > 0) {
            above = {call.scratch.carry, rowSize};
        }
        scatterHiRow(g, m, M.plane, above, row, hi, n, epilogue);
        if (row == g.tileRows - 1) {
            if (below) scatterHiRow(g, nullptr, 0, {m + 12 * M.plane, M.plane}, g.tileRows, hi, n, epilogue);
        } else if (row == chunk.lastRow - 1) {
            for (int x = 0; x < 4; ++x) {
                std::memcpy(call.scratch.carry + x * rowSize, m + (12 + x) * M.plane,
                            rowSize * sizeof(float));
            }
        }
    });
}

// The groups at both ends of a row reach into the border, which must read as zero.
inline void clearSideBorders(const PaddedView& view, int n) {
    const std::size_t pixel = static_cast<std::size_t>(view.channels) * sizeof(float);
    for (int y = 0; y < view.height; ++y) {
        std::memset(view.at(n, y, -1), 0, pixel);
        std::memset(view.at(n, y, view.width), 0, pixel);
    }
}

inline void clearSideBorders(const LayerCall& call, const PaddedView& act, const PaddedView& derivative) {
    for (int n = call.firstImage; n < call.lastImage; ++n) {
        clearSideBorders(act, n);
        if (derivative.data) clearSideBorders(derivative, n);
    }
}

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
