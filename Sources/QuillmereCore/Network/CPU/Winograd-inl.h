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

#include "QuillmereCore/Network/CPU/Gemm-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

inline constexpr int planes = 9;

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
    if (g.wholeBatch) {
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

// A matrix [9][tiles][width] of transformed tiles: a chunk's own scratch or its rows in the kept tiles of the
// whole batch.
struct TileMatrix {
    float* data;
    std::size_t plane;  // floats from one plane to the next
    std::size_t width;
    [[nodiscard]] float* row(std::size_t tile) const { return data + tile * width; }
};

HWY_INLINE TileMatrix tileMatrix(const LayerCall& call, const Chunk& chunk, float* scratch, float* kept,
                                 int width) {
    const auto columns = static_cast<std::size_t>(width);
    if (!kept) return {scratch, chunk.tiles() * columns, columns};
    const std::size_t firstTile = chunk.firstImage * call.geometry.tilesPerImage();
    return {kept + firstTile * columns, call.geometry.batchTiles() * columns, columns};
}

HWY_INLINE TileMatrix hiTiles(const LayerCall& call, const Chunk& chunk) {
    return tileMatrix(call, chunk, call.scratch.V, call.kept.V, call.geometry.groupChannels);
}
HWY_INLINE TileMatrix loTiles(const LayerCall& call, const Chunk& chunk) {
    return tileMatrix(call, chunk, call.scratch.Z, call.kept.Z, call.geometry.loChannels);
}

// ---- Transforms of one row of tiles.

// V: three groups per axis of hi, from group row 2 * tileRow on, to m0 = d0 - d1, d1, d1 - d2.
inline HWY_ATTR void transformHiRow(const TileGeometry& g, const PaddedView& hi, int n, int tileRow, float* V,
                                    std::size_t plane) {
    const FullTag d;
    const std::size_t rowStride = hi.rowStride;
    const int pair = 2 * g.hiChannels;  // one row of a group: two pixels
    for (int tile = 0; tile < g.tileCols; ++tile) {
        for (int qy = 0; qy < 2; ++qy) {
            const float* const in = hi.image(n) + (4 * tileRow + qy) * rowStride +
                                    static_cast<std::size_t>(4) * tile * g.hiChannels;
            float* const out = V + static_cast<std::size_t>(tile) * g.groupChannels + qy * pair;
            for (int c = 0; c < pair; c += lanesOf<FullTag>) {
                hn::Vec<FullTag> e[3][3];
#pragma GCC unroll 4
                for (int x = 0; x < 3; ++x) {
                    const auto d0 = hn::LoadU(d, in + x * pair + c);
                    const auto d1 = hn::LoadU(d, in + 2 * rowStride + x * pair + c);
                    const auto d2 = hn::LoadU(d, in + 4 * rowStride + x * pair + c);
                    e[0][x] = hn::Sub(d0, d1);
                    e[1][x] = d1;
                    e[2][x] = hn::Sub(d1, d2);
                }
#pragma GCC unroll 4
                for (int y = 0; y < 3; ++y) {
                    float* const o = out + y * 3 * plane + c;
                    hn::StoreU(hn::Sub(e[y][0], e[y][1]), d, o);
                    hn::StoreU(e[y][1], d, o + plane);
                    hn::StoreU(hn::Sub(e[y][1], e[y][2]), d, o + 2 * plane);
                }
            }
        }
    }
}

// Z: two pixels per axis of lo to z0 = y0, y0 + y1, -y1.
template <class D>
HWY_INLINE void transformLoRowWith(D d, const TileGeometry& g, const PaddedView& lo, int n, int tileRow,
                                   float* Z, std::size_t plane) {
    for (int tile = 0; tile < g.tileCols; ++tile) {
        const float* const top = lo.at(n, 2 * tileRow, 2 * tile);
        const float* const bottom = top + lo.rowStride;
        float* const out = Z + static_cast<std::size_t>(tile) * g.loChannels;
        for (int c = 0; c < g.loChannels; c += lanesOf<D>) {
            const auto y00 = hn::LoadU(d, top + c);
            const auto y01 = hn::LoadU(d, top + g.loChannels + c);
            const auto y10 = hn::LoadU(d, bottom + c);
            const auto y11 = hn::LoadU(d, bottom + g.loChannels + c);
            const auto s0 = hn::Add(y00, y10);
            const auto s1 = hn::Add(y01, y11);
            float* const o = out + c;
            hn::StoreU(y00, d, o);
            hn::StoreU(hn::Add(y00, y01), d, o + plane);
            hn::StoreU(hn::Neg(y01), d, o + 2 * plane);
            hn::StoreU(s0, d, o + 3 * plane);
            hn::StoreU(hn::Add(s0, s1), d, o + 4 * plane);
            hn::StoreU(hn::Neg(s1), d, o + 5 * plane);
            hn::StoreU(hn::Neg(y10), d, o + 6 * plane);
            hn::StoreU(hn::Neg(hn::Add(y10, y11)), d, o + 7 * plane);
            hn::StoreU(y11, d, o + 8 * plane);
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

// Products M of one tile row to the pixels of lo: y0 = m0 + m1, y1 = m1 - m2 per axis.
template <class D, class Epilogue>
HWY_INLINE void scatterLoRowWith(D, const TileGeometry& g, const float* M, std::size_t plane, int tileRow,
                                 const PaddedView& lo, int n, const Epilogue& epilogue) {
    const D d;
    for (int c = 0; c < g.loChannels; c += lanesOf<D>) {
        typename Epilogue::template Lane<D> lane(d, epilogue, c);
        for (int tile = 0; tile < g.tileCols; ++tile) {
            const float* const m = M + static_cast<std::size_t>(tile) * g.loChannelsPadded + c;
            hn::Vec<D> r[2][3];
#pragma GCC unroll 4
            for (int x = 0; x < 3; ++x) {
                const auto m1 = hn::LoadU(d, m + (3 + x) * plane);
                r[0][x] = hn::Add(hn::LoadU(d, m + x * plane), m1);
                r[1][x] = hn::Sub(m1, hn::LoadU(d, m + (6 + x) * plane));
            }
#pragma GCC unroll 2
            for (int a = 0; a < 2; ++a) {
                if (2 * tileRow + a >= g.loHeight) continue;
                const std::size_t offset = lo.at(n, 2 * tileRow + a, 2 * tile) - lo.data + c;
                lane(hn::Add(r[a][0], r[a][1]), offset);
                if (2 * tile + 1 < g.loWidth) lane(hn::Sub(r[a][1], r[a][2]), offset + g.loChannels);
            }
        }
        lane.finish();
    }
}

// Products of the tile row above that reach into the current one: planes 6 ... 8.
struct RowAbove {
    const float* data = nullptr;  // null at the top of the image
    std::size_t plane = 0;
};

// Transposed output transform of one tile row. Group row 2t of hi gets m0(t) - m2(t - 1), group row 2t + 1
// gets m1 + m2 - m0, and the same along columns. M null: the half row below the last tile row.
template <class Epilogue>
HWY_ATTR void scatterHiRow(const TileGeometry& g, const float* M, std::size_t plane, RowAbove above,
                           int tileRow, const PaddedView& hi, int n, const Epilogue& epilogue) {
    const FullTag d;
    using V = hn::Vec<FullTag>;
    const int pair = 2 * g.hiChannels;
    const int hiHeight = 2 * g.loHeight;
    const int hiWidth = 2 * g.loWidth;
    for (int qy = 0; qy < 2; ++qy) {
        const int evenRow = 4 * tileRow - 1 + qy;
        const int oddRow = evenRow + 2;
        const bool even = evenRow >= 0 && evenRow < hiHeight;
        const bool odd = M && oddRow < hiHeight;
        if (!even && !odd) continue;
        const std::size_t evenOffset = hi.image(n) - hi.data + (evenRow + 1) * hi.rowStride;
        const std::size_t oddOffset = evenOffset + 2 * hi.rowStride;
        for (int c = 0; c < pair; c += lanesOf<FullTag>) {
            typename Epilogue::template Lane<FullTag> lane(d, epilogue, c);
            V evenLeft = hn::Zero(d);  // plane 2 of the tile to the left
            V oddLeft = hn::Zero(d);
            for (int tile = 0; tile < g.tileCols; ++tile) {
                const std::size_t column = static_cast<std::size_t>(4) * tile * g.hiChannels + c;
                const std::size_t at = static_cast<std::size_t>(tile) * g.groupChannels + qy * pair + c;
                V e[3];
                V o[3];
#pragma GCC unroll 4
                for (int x = 0; x < 3; ++x) {
                    const V carried =
                        above.data ? hn::LoadU(d, above.data + x * above.plane + at) : hn::Zero(d);
                    if (M) {
                        const V m0 = hn::LoadU(d, M + x * plane + at);
                        const V m1 = hn::LoadU(d, M + (3 + x) * plane + at);
                        const V m2 = hn::LoadU(d, M + (6 + x) * plane + at);
                        e[x] = hn::Sub(m0, carried);
                        o[x] = hn::Sub(hn::Add(m1, m2), m0);
                    } else {
                        e[x] = hn::Neg(carried);
                        o[x] = hn::Zero(d);
                    }
                }
                if (even) {
                    lane(hn::Sub(e[0], evenLeft), evenOffset + column);
                    lane(hn::Sub(hn::Add(e[1], e[2]), e[0]), evenOffset + column + pair);
                }
                if (odd) {
                    lane(hn::Sub(o[0], oddLeft), oddOffset + column);
                    lane(hn::Sub(hn::Add(o[1], o[2]), o[0]), oddOffset + column + pair);
                }
                evenLeft = e[2];
                oddLeft = o[2];
            }
            // An even number of lo columns leaves one group to the right of the last tile.
            if (4 * g.tileCols - 1 < hiWidth) {
                const std::size_t column = static_cast<std::size_t>(4) * g.tileCols * g.hiChannels + c;
                if (even) lane(hn::Neg(evenLeft), evenOffset + column);
                if (odd) lane(hn::Neg(oddLeft), oddOffset + column);
            }
            lane.finish();
        }
    }
}

// ---- Products and whole passes.

// M[p] = V[p] * U[p]; leading dimension of M: loChannelsPadded.
inline HWY_ATTR void multiplyDown(const LayerCall& call, int tiles, const TileMatrix& V) {
    const TileGeometry& g = call.geometry;
    const std::size_t productPlane = static_cast<std::size_t>(tiles) * g.loChannelsPadded;
    for (int p = 0; p < planes; ++p) {
        multiply(tiles, g.loChannelsPadded, g.groupChannels, V.data + p * V.plane, g.groupChannels,
                 call.weights.U + static_cast<std::size_t>(p) * g.groupChannels * g.loChannelsPadded,
                 g.loChannelsPadded, call.scratch.M + p * productPlane, g.loChannelsPadded);
    }
}

// M[p] = Z[p] * U[p]^T; leading dimension of M: groupChannels.
inline HWY_ATTR void multiplyUp(const LayerCall& call, int tiles, const TileMatrix& Z) {
    const TileGeometry& g = call.geometry;
    const std::size_t productPlane = static_cast<std::size_t>(tiles) * g.groupChannels;
    for (int p = 0; p < planes; ++p) {
        multiply(tiles, g.groupChannels, g.loChannels, Z.data + p * Z.plane, g.loChannels,
                 call.weights.UT + p * g.weightPlane(), g.groupChannels, call.scratch.M + p * productPlane,
                 g.groupChannels);
    }
}

// dU[p] += Z[p]^T * V[p].
inline HWY_ATTR void accumulateWeightGradient(const TileGeometry& g, int tiles, const TileMatrix& V,
                                              const TileMatrix& Z, float* dU) {
    for (int p = 0; p < planes; ++p) {
        multiplyTransposedA(g.loChannels, g.groupChannels, tiles, Z.data + p * Z.plane, g.loChannels,
                            V.data + p * V.plane, g.groupChannels, dU + p * g.weightPlane(), g.groupChannels);
    }
}

template <class Epilogue>
HWY_ATTR void scatterLo(const LayerCall& call, const Chunk& chunk, const PaddedView& lo,
                        const Epilogue& epilogue) {
    const TileGeometry& g = call.geometry;
    const std::size_t plane = static_cast<std::size_t>(chunk.tiles()) * g.loChannelsPadded;
    withChannelTag(g.loChannels, [&](auto d) HWY_ATTR {
        forEachTileRow(chunk, [&](std::size_t tile, int n, int row) HWY_ATTR {
            scatterLoRowWith(d, g, call.scratch.M + tile * g.loChannelsPadded, plane, row, lo, n, epilogue);
        });
    });
}

// Tile rows add to the group row they share with the next one; across chunks that part waits in `carry`.
template <class Epilogue>
HWY_ATTR void scatterHi(const LayerCall& call, const Chunk& chunk, const PaddedView& hi,
                        const Epilogue& epilogue) {
    const TileGeometry& g = call.geometry;
    const std::size_t plane = static_cast<std::size_t>(chunk.tiles()) * g.groupChannels;
    const std::size_t rowSize = static_cast<std::size_t>(g.tileCols) * g.groupChannels;
    forEachTileRow(chunk, [&](std::size_t tile, int n, int row) HWY_ATTR {
        const float* const M = call.scratch.M + tile * g.groupChannels;
        RowAbove above;
        if (row > chunk.firstRow) {
            above = {M - rowSize + 6 * plane, plane};
        } else if (row > 0) {
            above = {call.scratch.carry, rowSize};
        }
        scatterHiRow(g, M, plane, above, row, hi, n, epilogue);
        if (row == g.tileRows - 1) {
            scatterHiRow(g, nullptr, 0, {M + 6 * plane, plane}, g.tileRows, hi, n, epilogue);
        } else if (row == chunk.lastRow - 1) {
            for (int x = 0; x < 3; ++x) {
                std::memcpy(call.scratch.carry + x * rowSize, M + (6 + x) * plane, rowSize * sizeof(float));
            }
        }
    });
}

inline HWY_ATTR void transformHi(const LayerCall& call, const Chunk& chunk, const PaddedView& hi,
                                 const TileMatrix& V) {
    forEachTileRow(chunk, [&](std::size_t tile, int n, int row)
                              HWY_ATTR { transformHiRow(call.geometry, hi, n, row, V.row(tile), V.plane); });
}

inline HWY_ATTR void transformLo(const LayerCall& call, const Chunk& chunk, const PaddedView& lo,
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

inline HWY_ATTR void downForward(const LayerCall& call, PaddedView hi, PaddedView act,
                                 PaddedView derivative) {
    forEachChunk(call, [&](const Chunk& chunk) HWY_ATTR {
        const TileMatrix V = hiTiles(call, chunk);
        transformHi(call, chunk, hi, V);
        multiplyDown(call, chunk.tiles(), V);
        scatterLo(call, chunk, act, SiluEpilogue{act.data, derivative.data, call.weights.bias});
    });
}

inline HWY_ATTR void upForward(const LayerCall& call, PaddedView lo, PaddedView act, PaddedView derivative) {
    forEachChunk(call, [&](const Chunk& chunk) HWY_ATTR {
        const TileMatrix Z = loTiles(call, chunk);
        transformLo(call, chunk, lo, Z);
        multiplyUp(call, chunk.tiles(), Z);
        scatterHi(call, chunk, act, SiluEpilogue{act.data, derivative.data, call.weights.bias});
    });
    for (int n = call.firstImage; n < call.lastImage; ++n) {
        clearSideBorders(act, n);
        if (derivative.data) clearSideBorders(derivative, n);
    }
}

inline HWY_ATTR void downBackward(const LayerCall& call, PaddedView dLo, PaddedView hiAct, PaddedView dHi,
                                  float* biasGradient, float* dU) {
    forEachChunk(call, [&](const Chunk& chunk) HWY_ATTR {
        const TileMatrix Z = loTiles(call, chunk);
        transformLo(call, chunk, dLo, Z);
        if (dU) {  // otherwise the forward pass has left V among the kept tiles
            const TileMatrix V = hiTiles(call, chunk);
            transformHi(call, chunk, hiAct, V);
            accumulateWeightGradient(call.geometry, chunk.tiles(), V, Z, dU);
        }
        multiplyUp(call, chunk.tiles(), Z);
        scatterHi(call, chunk, dHi, GradientEpilogue{dHi.data, biasGradient});
    });
}

inline HWY_ATTR void upBackward(const LayerCall& call, PaddedView dHi, PaddedView loAct, PaddedView dLo,
                                float* biasGradient, float* dU) {
    forEachChunk(call, [&](const Chunk& chunk) HWY_ATTR {
        const TileMatrix V = hiTiles(call, chunk);
        transformHi(call, chunk, dHi, V);
        if (dU) {  // otherwise the forward pass has left Z among the kept tiles
            const TileMatrix Z = loTiles(call, chunk);
            transformLo(call, chunk, loAct, Z);
            accumulateWeightGradient(call.geometry, chunk.tiles(), V, Z, dU);
        }
        multiplyDown(call, chunk.tiles(), V);
        scatterLo(call, chunk, dLo, GradientEpilogue{dLo.data, biasGradient});
    });
}

inline HWY_ATTR void weightGradientRows(const TileGeometry& g, const BatchTiles& kept, float* dU, int row) {
    const std::size_t tiles = g.batchTiles();
    for (int p = 0; p < planes; ++p) {
        float* const out = dU + p * g.weightPlane() + static_cast<std::size_t>(row) * g.groupChannels;
        std::memset(out, 0, static_cast<std::size_t>(channelMultiple) * g.groupChannels * sizeof(float));
        multiplyTransposedA(channelMultiple, g.groupChannels, static_cast<int>(tiles),
                            kept.Z + p * tiles * g.loChannels + row, g.loChannels,
                            kept.V + p * tiles * g.groupChannels, g.groupChannels, out, g.groupChannels);
    }
}

// ---- Weights.

// One row of lo channels; tap (a, b) of quarter (qy, qx) is K[2a + qy][2b + qx].
template <class D>
HWY_INLINE void transformWeightRow(D d, const TileGeometry& g, const float* K, float* UT, int row) {
    const std::size_t tap = static_cast<std::size_t>(g.loChannels) * g.hiChannels;
    const std::size_t plane = g.weightPlane();
    for (int q = 0; q < 4; ++q) {
        const int qy = q / 2;
        const int qx = q % 2;
        for (int c = 0; c < g.hiChannels; c += lanesOf<D>) {
            const float* const k = K + static_cast<std::size_t>(row) * g.hiChannels + c;
            hn::Vec<D> r[3][2];
#pragma GCC unroll 2
            for (int b = 0; b < 2; ++b) {
                const auto k0 = hn::LoadU(d, k + (qy * 4 + 2 * b + qx) * tap);
                const auto k1 = hn::LoadU(d, k + ((2 + qy) * 4 + 2 * b + qx) * tap);
                r[0][b] = k0;
                r[1][b] = hn::Add(k0, k1);
                r[2][b] = k1;
            }
            float* const out = UT + static_cast<std::size_t>(row) * g.groupChannels + q * g.hiChannels + c;
#pragma GCC unroll 3
            for (int a = 0; a < 3; ++a) {
                hn::StoreU(r[a][0], d, out + (3 * a) * plane);
                hn::StoreU(hn::Add(r[a][0], r[a][1]), d, out + (3 * a + 1) * plane);
                hn::StoreU(r[a][1], d, out + (3 * a + 2) * plane);
            }
        }
    }
}

// Eight rows [8][groupChannels] to eight columns of [groupChannels][loChannelsPadded].
inline HWY_ATTR void transposeRows(const TileGeometry& g, const float* rows, float* columns) {
    using D = hn::CappedTag<float, 4>;
    const D d;
    const auto stride = static_cast<std::size_t>(g.groupChannels);
    constexpr int lanes = lanesOf<D>;
    HWY_ALIGN float quads[2][4 * lanes] = {};  // [half][k][four rows]
    for (int k = 0; k < g.groupChannels; k += lanes) {
#pragma GCC unroll 2
        for (int half = 0; half < 2; ++half) {
            const float* const in = rows + static_cast<std::size_t>(4) * half * stride + k;
            hn::StoreInterleaved4(hn::LoadU(d, in), hn::LoadU(d, in + stride), hn::LoadU(d, in + 2 * stride),
                                  hn::LoadU(d, in + 3 * stride), d, quads[half]);
        }
#pragma GCC unroll 4
        for (int i = 0; i < lanes; ++i) {
            float* const out = columns + static_cast<std::size_t>(k + i) * g.loChannelsPadded;
            std::memcpy(out, quads[0] + 4 * i, 4 * sizeof(float));
            std::memcpy(out + 4, quads[1] + 4 * i, 4 * sizeof(float));
        }
    }
}

inline HWY_ATTR void transformWeights(const TileGeometry& g, const float* K, float* UT, float* U, int row) {
    withChannelTag(g.hiChannels, [&](auto d) HWY_ATTR {
        for (int r = row; r < row + channelMultiple; ++r)
            transformWeightRow(d, g, K, UT, r);
    });
    if (!U) return;
    for (int p = 0; p < planes; ++p) {
        transposeRows(g, UT + p * g.weightPlane() + static_cast<std::size_t>(row) * g.groupChannels,
                      U + static_cast<std::size_t>(p) * g.groupChannels * g.loChannelsPadded + row);
    }
}

template <class D>
HWY_INLINE void untransformGradientRow(D d, const TileGeometry& g, std::span<float* const> parts, float* dK,
                                       int row) {
    const std::size_t tap = static_cast<std::size_t>(g.loChannels) * g.hiChannels;
    for (int q = 0; q < 4; ++q) {
        const int qy = q / 2;
        const int qx = q % 2;
        for (int c = 0; c < g.hiChannels; c += lanesOf<D>) {
            hn::Vec<D> u[3][3];
#pragma GCC unroll 16
            for (int p = 0; p < planes; ++p) {
                const std::size_t at = p * g.weightPlane() + static_cast<std::size_t>(row) * g.groupChannels +
                                       q * g.hiChannels + c;
                auto sum = hn::LoadU(d, parts[0] + at);
                for (std::size_t part = 1; part < parts.size(); ++part) {
                    sum = hn::Add(sum, hn::LoadU(d, parts[part] + at));
                }
                if (parts.size() > 1) {
                    for (float* const part : parts)
                        hn::StoreU(hn::Zero(d), d, part + at);
                }
                u[p / 3][p % 3] = sum;
            }
            float* const out = dK + static_cast<std::size_t>(row) * g.hiChannels + c;
#pragma GCC unroll 2
            for (int a = 0; a < 2; ++a) {
                const auto r0 = hn::Add(u[a][0], u[a + 1][0]);
                const auto r1 = hn::Add(u[a][1], u[a + 1][1]);
                const auto r2 = hn::Add(u[a][2], u[a + 1][2]);
                hn::StoreU(hn::Add(r0, r1), d, out + ((2 * a + qy) * 4 + qx) * tap);
                hn::StoreU(hn::Add(r1, r2), d, out + ((2 * a + qy) * 4 + 2 + qx) * tap);
            }
        }
    }
}

inline HWY_ATTR void untransformGradient(const TileGeometry& g, std::span<float* const> parts, float* dK,
                                         int row) {
    withChannelTag(g.hiChannels, [&](auto d) HWY_ATTR {
        for (int r = row; r < row + channelMultiple; ++r)
            untransformGradientRow(d, g, parts, dK, r);
    });
}

// Per axis the four taps are w2, w1 + w2, w0 + w1, w0.
inline HWY_ATTR void foldKernel(const TileGeometry& g, const float* kernel3, float* K, int row) {
    static constexpr int first[4] = {2, 1, 0, 0};
    static constexpr int count[4] = {1, 2, 2, 1};
    const hn::CappedTag<float, 8> d;
    const std::size_t tap = static_cast<std::size_t>(g.loChannels) * g.hiChannels;
    const std::size_t begin = static_cast<std::size_t>(row) * g.hiChannels;
    const std::size_t end = begin + static_cast<std::size_t>(channelMultiple) * g.hiChannels;
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
inline HWY_ATTR void unfoldGradient(const TileGeometry& g, const float* dK, float* dKernel3, int row) {
    const EightTag d;
    const std::size_t tap = static_cast<std::size_t>(g.loChannels) * g.hiChannels;
    const std::size_t begin = static_cast<std::size_t>(row) * g.hiChannels;
    const std::size_t end = begin + static_cast<std::size_t>(channelMultiple) * g.hiChannels;
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
