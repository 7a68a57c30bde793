// From transformed tiles, or the gradients of transformed weights, to the gradients of kernels. Included once
// per instruction set.
#if defined(QUILLMERE_NETWORK_WEIGHT_GRADIENTS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_WEIGHT_GRADIENTS_INL_H_
#undef QUILLMERE_NETWORK_WEIGHT_GRADIENTS_INL_H_
#else
#define QUILLMERE_NETWORK_WEIGHT_GRADIENTS_INL_H_
#endif

#include <algorithm>
#include <cstddef>
#include <span>

#include "QuillmereCore/Network/CPU/Chunks-inl.h"
#include "QuillmereCore/Network/CPU/Gemm-inl.h"
#include "QuillmereCore/Network/CPU/Simd-inl.h"
#include "QuillmereCore/Network/CPU/TileGeometry.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

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
