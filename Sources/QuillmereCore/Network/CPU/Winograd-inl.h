// The passes of one layer, tile by tile (Kernels.h has the algorithm). Included once per instruction set.
#if defined(QUILLMERE_NETWORK_WINOGRAD_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_WINOGRAD_INL_H_
#undef QUILLMERE_NETWORK_WINOGRAD_INL_H_
#else
#define QUILLMERE_NETWORK_WINOGRAD_INL_H_
#endif

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>

#include "QuillmereCore/Network/CPU/Gemm-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

inline constexpr int planes = transformPlanes;

// Calls body with the widest tag whose lanes divide the number of channels.
template <class Body>
HWY_INLINE void withChannelTag(int channels, Body body) {
    if (channels % lanesOf<FullTag> == 0) {
        body(FullTag());
    } else {
        body(EightTag());
    }
}

// ---- Chunks: the tiles that are transformed together. Tile t of a chunk is row t of its matrices.

struct Chunk {
    int firstImage, lastImage;  // several images only with all their tile rows
    int firstRow, lastRow;      // tile rows
    int tileCols;

    [[nodiscard]] int rows() const { return lastRow - firstRow; }
    [[nodiscard]] int tiles() const { return (lastImage - firstImage) * rows() * tileCols; }
};

template <class Body>
HWY_INLINE void forEachChunk(const LayerCall& call, Body body) {
    const TileGeometry& g = call.geometry;
    if (g.staged) {
        body(Chunk{call.firstImage, call.lastImage, 0, g.tileRows, g.tileCols});
        return;
    }
    for (int n = call.firstImage; n < call.lastImage; ++n) {
        for (int row = 0; row < g.tileRows; row += g.rowsPerChunk) {
            body(Chunk{n, n + 1, row, std::min(g.tileRows, row + g.rowsPerChunk), g.tileCols});
        }
    }
}

// body(first tile of the row within the chunk, image, tile row)
template <class Body>
HWY_INLINE void forEachTileRow(const Chunk& chunk, Body body) {
    std::size_t tile = 0;
    for (int n = chunk.firstImage; n < chunk.lastImage; ++n) {
        for (int row = chunk.firstRow; row < chunk.lastRow; ++row, tile += chunk.tileCols)
            body(tile, n, row);
    }
}

// A matrix [planes][tiles][width] of transformed tiles or of products: a chunk's own scratch or its rows in
// the matrices of the whole batch.
struct TileMatrix {
    float* data;
    std::size_t plane;  // floats from one plane to the next
    std::size_t width;
    [[nodiscard]] float* row(std::size_t tile) const { return data + tile * width; }
    [[nodiscard]] float* ofPlane(int p) const { return data + static_cast<std::size_t>(p) * plane; }
};

HWY_INLINE TileMatrix tileMatrix(const LayerCall& call, const Chunk& chunk, float* scratch, float* ofBatch,
                                 int width) {
    const auto columns = static_cast<std::size_t>(width);
    if (!ofBatch) return {scratch, planeStride(chunk.tiles() * columns), columns};
    const std::size_t firstTile = chunk.firstImage * call.geometry.tilesPerImage();
    return {ofBatch + firstTile * columns, planeStride(call.geometry.batchTiles() * columns), columns};
}

HWY_INLINE TileMatrix hiTiles(const LayerCall& call, const Chunk& chunk) {
    return tileMatrix(call, chunk, call.scratch.V, call.batchTiles.V, call.geometry.groupChannels);
}
HWY_INLINE TileMatrix loTiles(const LayerCall& call, const Chunk& chunk) {
    return tileMatrix(call, chunk, call.scratch.Z, call.batchTiles.Z, call.geometry.loChannels);
}
HWY_INLINE TileMatrix hiProducts(const LayerCall& call, const Chunk& chunk) {
    return tileMatrix(call, chunk, call.scratch.M, call.batchTiles.M, call.geometry.groupChannels);
}
HWY_INLINE TileMatrix loProducts(const LayerCall& call, const Chunk& chunk) {
    return tileMatrix(call, chunk, call.scratch.M, call.batchTiles.M, call.geometry.loChannelsPadded);
}

// ---- Transforms of one row of tiles.

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
                const auto outer = hn::Add(y0, y2);
                e[0][x] = y0;
                e[1][x] = hn::Add(outer, y1);
                e[2][x] = hn::Sub(outer, y1);
                e[3][x] = hn::Neg(y2);
            }
#pragma GCC unroll 4
            for (int y = 0; y < 4; ++y) {
                float* const o = out + 4 * y * plane + c;
                const auto outer = hn::Add(e[y][0], e[y][2]);
                hn::StoreU(e[y][0], d, o);
                hn::StoreU(hn::Add(outer, e[y][1]), d, o + plane);
                hn::StoreU(hn::Sub(outer, e[y][1]), d, o + 2 * plane);
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

// ---- What happens to each output vector. An epilogue makes a Lane for each vector of channels; the lane
// sees every pixel's value and its offset in the output tensor.

struct SiluEpilogue {
    float* act;
    float* derivative;  // may be null
    const float* bias;

    template <class D>
    class Lane {
    public:
        HWY_INLINE Lane(D, const SiluEpilogue& e, int channel)
            : epilogue_(e), bias_(hn::LoadU(D(), e.bias + channel)) {}
        HWY_INLINE void operator()(hn::Vec<D> x, std::size_t offset) {
            const D d;
            const auto result = silu(d, hn::Add(x, bias_));
            hn::StoreU(result.value, d, epilogue_.act + offset);
            if (epilogue_.derivative) hn::StoreU(result.derivative, d, epilogue_.derivative + offset);
        }
        HWY_INLINE void finish() {}

    private:
        const SiluEpilogue& epilogue_;
        hn::Vec<D> bias_;
    };
};

// gradient = incoming * SiLU', in place of SiLU'; its sum over pixels is the bias gradient.
struct GradientEpilogue {
    float* derivative;
    float* biasGradient;

    template <class D>
    class Lane {
    public:
        HWY_INLINE Lane(D d, const GradientEpilogue& e, int channel)
            : derivative_(e.derivative), total_(e.biasGradient + channel), sum_(hn::Zero(d)) {}
        HWY_INLINE void operator()(hn::Vec<D> x, std::size_t offset) {
            const D d;
            const auto gradient = hn::Mul(x, hn::LoadU(d, derivative_ + offset));
            hn::StoreU(gradient, d, derivative_ + offset);
            sum_ = hn::Add(sum_, gradient);
        }
        HWY_INLINE void finish() {
            const D d;
            hn::StoreU(hn::Add(hn::LoadU(d, total_), sum_), d, total_);
        }

    private:
        float* derivative_;
        float* total_;
        hn::Vec<D> sum_;
    };
};

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

// ---- Products and whole passes.

// Calls body(first column, columns) for the panels of columns [begin, end); begin is that of a panel.
template <class Body>
HWY_INLINE void forEachWeightPanel(int begin, int end, Body body) {
    for (int column = begin; column < end; column += panelWidth)
        body(column, std::min(panelWidth, end - column));
}

// Where row `row`, column `column` of a matrix [rows][columns] in panels lies.
HWY_INLINE std::size_t inPanels(int rows, int columns, int row, int column) {
    const int first = column / panelWidth * panelWidth;
    const int width = std::min(panelWidth, columns - first);
    return static_cast<std::size_t>(first) * rows + static_cast<std::size_t>(row) * width + (column - first);
}

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

// ---- Outer layers: a chunk at a time.

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

// ---- Staged layers: every stage for the whole batch.

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

// ---- Weights.

// One row of lo channels, per axis k0, (k0 + k1) / 2, (k0 - k1) / 2, k1; tap (a, b) of quarter (qy, qx) is
// K[2a + qy][2b + qx].
template <class D>
HWY_INLINE void transformWeightRow(D d, const TileGeometry& g, const float* K, float* UT, int row) {
    const std::size_t tap = static_cast<std::size_t>(g.loChannels) * g.hiChannels;
    const std::size_t plane = g.weightPlane();
    const auto half = hn::Set(d, 0.5F);
    for (int q = 0; q < 4; ++q) {
        const int qy = q / 2;
        const int qx = q % 2;
        for (int c = 0; c < g.hiChannels; c += lanesOf<D>) {
            const float* const k = K + static_cast<std::size_t>(row) * g.hiChannels + c;
            hn::Vec<D> r[4][2];
#pragma GCC unroll 2
            for (int b = 0; b < 2; ++b) {
                const auto k0 = hn::Mul(half, hn::LoadU(d, k + (qy * 4 + 2 * b + qx) * tap));
                const auto k1 = hn::Mul(half, hn::LoadU(d, k + ((2 + qy) * 4 + 2 * b + qx) * tap));
                r[0][b] = hn::Add(k0, k0);
                r[1][b] = hn::Add(k0, k1);
                r[2][b] = hn::Sub(k0, k1);
                r[3][b] = hn::Add(k1, k1);
            }
            float* const out = UT + inPanels(g.loChannels, g.groupChannels, row, q * g.hiChannels + c);
#pragma GCC unroll 4
            for (int a = 0; a < 4; ++a) {
                hn::StoreU(r[a][0], d, out + (4 * a) * plane);
                hn::StoreU(hn::Mul(half, hn::Add(r[a][0], r[a][1])), d, out + (4 * a + 1) * plane);
                hn::StoreU(hn::Mul(half, hn::Sub(r[a][0], r[a][1])), d, out + (4 * a + 2) * plane);
                hn::StoreU(r[a][1], d, out + (4 * a + 3) * plane);
            }
        }
    }
}

// Rows [rows][columns] to columns [columns][rows], inStride and outStride floats apart.
template <int rows>
HWY_INLINE void transposeRows(const float* in, std::size_t inStride, int columns, float* out,
                              std::size_t outStride) {
    using D = hn::CappedTag<float, 4>;
    const D d;
    constexpr int lanes = lanesOf<D>;
    constexpr int quads = rows / 4;
    HWY_ALIGN float block[quads][4 * lanes] = {};  // [four rows][column][row]
    for (int k = 0; k < columns; k += lanes, in += lanes) {
#pragma GCC unroll 4
        for (int quad = 0; quad < quads; ++quad) {
            const float* const row = in + 4 * quad * inStride;
            hn::StoreInterleaved4(hn::LoadU(d, row), hn::LoadU(d, row + inStride),
                                  hn::LoadU(d, row + 2 * inStride), hn::LoadU(d, row + 3 * inStride), d,
                                  block[quad]);
        }
#pragma GCC unroll 4
        for (int i = 0; i < lanes; ++i, out += outStride) {
#pragma GCC unroll 4
            for (int quad = 0; quad < quads; ++quad)
                std::memcpy(out + 4 * quad, block[quad] + 4 * i, 4 * sizeof(float));
        }
    }
}

// Calls body<16>(row), which makes whole 64-byte lines, and body<8>(row) for what is left.
template <class Body>
HWY_INLINE void forEachRowBlock(int row, int rows, Body body) {
    const int end = row + rows;
    for (; row % 16 == 0 && row + 16 <= end; row += 16)
        body.template operator()<16>(row);
    for (; row < end; row += 8)
        body.template operator()<8>(row);
}

inline HWY_ATTR void transformWeights(const TileGeometry& g, const float* K, float* UT, float* U, int row,
                                      int rows) {
    withChannelTag(g.hiChannels, [&](auto d) HWY_ATTR {
        for (int r = row; r < row + rows; ++r)
            transformWeightRow(d, g, K, UT, r);
    });
    if (!U) return;
    for (int p = 0; p < planes; ++p) {
        const float* const from = UT + p * g.weightPlane();
        float* const to = U + p * g.downPlane();
        forEachRowBlock(row, rows, [&]<int block>(int r) HWY_ATTR {
            const int panel = std::min(panelWidth, g.loChannelsPadded - r / panelWidth * panelWidth);
            forEachWeightPanel(0, g.groupChannels, [&](int column, int columns) HWY_ATTR {
                transposeRows<block>(from + inPanels(g.loChannels, g.groupChannels, r, column), columns,
                                     columns, to + inPanels(g.groupChannels, g.loChannelsPadded, column, r),
                                     panel);
            });
        });
    }
}

inline HWY_ATTR void transposeWeights(const TileGeometry& g, const float* K, float* KT, int row, int rows) {
    for (std::size_t tap = 0; tap < 16; ++tap) {
        const float* const from = K + tap * g.loChannels * g.hiChannels;
        float* const to = KT + tap * g.hiChannels * g.loChannelsPadded;
        forEachRowBlock(row, rows, [&]<int block>(int r) HWY_ATTR {
            transposeRows<block>(from + static_cast<std::size_t>(r) * g.hiChannels, g.hiChannels,
                                 g.hiChannels, to + r, g.loChannelsPadded);
        });
    }
}

// One vector of dK from the sixteen planes of dU: dk0 = u0 + (u1 + u2) / 2, dk1 = u3 + (u1 - u2) / 2 per
// axis. u(plane) gives dU in column `column` of row `row`.
template <class D, class Planes>
HWY_INLINE void untransform(D d, const TileGeometry& g, int row, int column, float* dK, Planes u) {
    const auto half = hn::Set(d, 0.5F);
    const std::size_t tap = static_cast<std::size_t>(g.loChannels) * g.hiChannels;
    const int q = column / g.hiChannels;
    const int qy = q / 2;
    const int qx = q % 2;
    float* const out = dK + static_cast<std::size_t>(row) * g.hiChannels + column % g.hiChannels;
    hn::Vec<D> r[2][4];
#pragma GCC unroll 4
    for (int x = 0; x < 4; ++x) {
        const auto u1 = u(4 + x);
        const auto u2 = u(8 + x);
        r[0][x] = hn::MulAdd(half, hn::Add(u1, u2), u(x));
        r[1][x] = hn::MulAdd(half, hn::Sub(u1, u2), u(12 + x));
    }
#pragma GCC unroll 2
    for (int a = 0; a < 2; ++a) {
        const auto sum = hn::Add(r[a][1], r[a][2]);
        const auto difference = hn::Sub(r[a][1], r[a][2]);
        hn::StoreU(hn::MulAdd(half, sum, r[a][0]), d, out + ((2 * a + qy) * 4 + qx) * tap);
        hn::StoreU(hn::MulAdd(half, difference, r[a][3]), d, out + ((2 * a + qy) * 4 + 2 + qx) * tap);
    }
}

inline HWY_ATTR void untransformGradient(const TileGeometry& g, std::span<float* const> parts, float* dK,
                                         int row, int rows) {
    const std::size_t plane = g.weightPlane();
    withChannelTag(g.hiChannels, [&](auto d) HWY_ATTR {
        for (int r = row; r < row + rows; ++r) {
            for (int column = 0; column < g.groupChannels; column += lanesOf<decltype(d)>) {
                const std::size_t at = static_cast<std::size_t>(r) * g.groupChannels + column;
                untransform(d, g, r, column, dK, [&](int p) HWY_ATTR {
                    auto sum = hn::Zero(d);
                    for (float* const part : parts) {
                        sum = hn::Add(sum, hn::LoadU(d, part + p * plane + at));
                        hn::StoreU(hn::Zero(d), d, part + p * plane + at);
                    }
                    return sum;
                });
            }
        }
    });
}

inline HWY_ATTR void weightGradientColumns(const TileGeometry& g, const BatchTiles& tiles, float* scratch,
                                           float* dK, int column, int columns) {
    const std::size_t count = g.batchTiles();
    const std::size_t planeV = planeStride(count * g.groupChannels);
    const std::size_t planeZ = planeStride(count * g.loChannels);
    const std::size_t plane = planeStride(static_cast<std::size_t>(g.loChannels) * panelWidth);
    // A block of tiles at a time, so that its part of V is still in the first-level cache for the next rows
    // of dU.
    constexpr std::size_t block = 96;
    for (int p = 0; p < planes; ++p) {
        for (std::size_t tile = 0; tile < count; tile += block) {
            const float* const Z = tiles.Z + p * planeZ + tile * g.loChannels;
            const float* const V = tiles.V + p * planeV + tile * g.groupChannels + column;
            const bool last = tile + block >= count;  // then the next plane follows
            const RowsAhead ahead{
                {last ? V - tile * g.groupChannels + planeV : V + block * g.groupChannels,
                 last ? Z - tile * g.loChannels + planeZ : Z + block * g.loChannels},
                {static_cast<std::size_t>(g.groupChannels), static_cast<std::size_t>(g.loChannels)},
                {static_cast<std::size_t>(columns) / 16, static_cast<std::size_t>(g.loChannels) / 16}};
            const int depth = static_cast<int>(std::min(block, count - tile));
            if (tile == 0) {
                multiplyPanels<Product::transposedA>(g.loChannels, columns, depth, Z, g.loChannels, V,
                                                     g.groupChannels, scratch + p * plane, columns, ahead);
            } else {
                multiplyPanels<Product::transposedASum>(g.loChannels, columns, depth, Z, g.loChannels, V,
                                                        g.groupChannels, scratch + p * plane, columns, ahead);
            }
        }
    }
    withChannelTag(g.hiChannels, [&](auto d) HWY_ATTR {
        for (int r = 0; r < g.loChannels; ++r) {
            for (int c = 0; c < columns; c += lanesOf<decltype(d)>) {
                const float* const at = scratch + static_cast<std::size_t>(r) * columns + c;
                untransform(d, g, r, column + c, dK,
                            [&](int p) HWY_ATTR { return hn::LoadU(d, at + p * plane); });
            }
        }
    });
}

// Per axis the four taps are w2, w1 + w2, w0 + w1, w0.
inline HWY_ATTR void foldKernel(const TileGeometry& g, const float* kernel3, float* K, int row, int rows) {
    static constexpr int first[4] = {2, 1, 0, 0};
    static constexpr int count[4] = {1, 2, 2, 1};
    const hn::CappedTag<float, 8> d;
    const std::size_t tap = static_cast<std::size_t>(g.loChannels) * g.hiChannels;
    const std::size_t begin = static_cast<std::size_t>(row) * g.hiChannels;
    const std::size_t end = begin + static_cast<std::size_t>(rows) * g.hiChannels;
    for (std::size_t i = begin; i < end; i += lanesOf<EightTag>) {
        for (int y = 0; y < 4; ++y) {
            for (int x = 0; x < 4; ++x) {
                auto sum = hn::Zero(d);
                for (int a = first[y]; a < first[y] + count[y]; ++a) {
                    for (int b = first[x]; b < first[x] + count[x]; ++b) {
                        sum = hn::Add(sum, hn::LoadU(d, kernel3 + (a * 3 + b) * tap + i));
                    }
                }
                hn::StoreU(sum, d, K + (y * 4 + x) * tap + i);
            }
        }
    }
}

// dw[j] = dK[2 - j] + dK[3 - j] per axis.
inline HWY_ATTR void unfoldGradient(const TileGeometry& g, const float* dK, float* dKernel3, int row,
                                    int rows) {
    const EightTag d;
    const std::size_t tap = static_cast<std::size_t>(g.loChannels) * g.hiChannels;
    const std::size_t begin = static_cast<std::size_t>(row) * g.hiChannels;
    const std::size_t end = begin + static_cast<std::size_t>(rows) * g.hiChannels;
    for (std::size_t i = begin; i < end; i += lanesOf<EightTag>) {
        const auto at = [&](int y, int x) HWY_ATTR { return hn::LoadU(d, dK + (y * 4 + x) * tap + i); };
        for (int y = 0; y < 3; ++y) {
            for (int x = 0; x < 3; ++x) {
                const auto upper = hn::Add(at(2 - y, 2 - x), at(2 - y, 3 - x));
                const auto lower = hn::Add(at(3 - y, 2 - x), at(3 - y, 3 - x));
                hn::StoreU(hn::Add(upper, lower), d, dKernel3 + (y * 3 + x) * tap + i);
            }
        }
    }
}

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
