// From kernels to the forms of them that the products read. Included once per instruction set.
#if defined(QUILLMERE_NETWORK_WEIGHTS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_WEIGHTS_INL_H_
#undef QUILLMERE_NETWORK_WEIGHTS_INL_H_
#else
#define QUILLMERE_NETWORK_WEIGHTS_INL_H_
#endif

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "QuillmereCore/Network/CPU/Chunks-inl.h"
#include "QuillmereCore/Network/CPU/Simd-inl.h"
#include "QuillmereCore/Network/CPU/TileGeometry.h"
#include "QuillmereCore/Network/CPU/WeightPanels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

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

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
