// The first layer. Included once per instruction set.
#if defined(QUILLMERE_NETWORK_STEM_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_STEM_INL_H_
#undef QUILLMERE_NETWORK_STEM_INL_H_
#else
#define QUILLMERE_NETWORK_STEM_INL_H_
#endif

#include <cstddef>

#include "QuillmereCore/Network/CPU/PaddedTensor.h"
#include "QuillmereCore/Network/CPU/Simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

// Calls body<vectors>(first channel) for blocks of three vectors of channels, then for single ones: 24
// channels, the size in use, are one block of eight-lane vectors.
template <class Body>
HWY_INLINE void forEachChannelBlock(int channels, Body body) {
    constexpr int lanes = lanesOf<EightTag>;
    int c = 0;
    for (; c + 3 * lanes <= channels; c += 3 * lanes)
        body.template operator()<3>(c);
    for (; c < channels; c += lanes)
        body.template operator()<1>(c);
}

// Pre-activations of four neighbouring pixels.
template <int vectors>
HWY_INLINE void stemPixels(const float* x, std::size_t rowStride, const float* weight, const float* bias,
                           int channels, float* out) {
    constexpr int pixels = 4;
    constexpr int lanes = lanesOf<EightTag>;
    const EightTag d;
    hn::Vec<EightTag> sum[pixels][vectors];
#pragma GCC unroll 4
    for (int u = 0; u < pixels; ++u) {
#pragma GCC unroll 4
        for (int v = 0; v < vectors; ++v)
            sum[u][v] = hn::LoadU(d, bias + v * lanes);
    }
#pragma GCC unroll 16
    for (int k = 0; k < 16; ++k) {
        const float* const in = x + (k / 4) * rowStride + k % 4;
#pragma GCC unroll 4
        for (int v = 0; v < vectors; ++v) {
            const auto w = hn::LoadU(d, weight + k * channels + v * lanes);
#pragma GCC unroll 4
            for (int u = 0; u < pixels; ++u)
                sum[u][v] = hn::MulAdd(hn::Set(d, in[2 * u]), w, sum[u][v]);
        }
    }
#pragma GCC unroll 4
    for (int u = 0; u < pixels; ++u) {
#pragma GCC unroll 4
        for (int v = 0; v < vectors; ++v)
            hn::StoreU(sum[u][v], d, out + u * channels + v * lanes);
    }
}

inline HWY_ATTR void siluInPlace(std::size_t count, float* act, float* derivative) {
    const FullTag d;
    for (std::size_t i = 0; i < count; i += lanesOf<FullTag>) {
        const auto result = silu(d, hn::LoadU(d, act + i));
        hn::StoreU(result.value, d, act + i);
        if (derivative) hn::StoreU(result.derivative, d, derivative + i);
    }
}

inline HWY_ATTR void stemForward(PaddedView x, const float* weight, const float* bias, PaddedView act,
                                 PaddedView derivative, int image) {
    const int channels = act.channels;
    for (int y = 0; y < act.height; ++y) {
        const float* const in = x.at(image, 2 * y - 1, -1);
        float* const out = act.at(image, y, 0);
        for (int column = 0; column < act.width; column += 4) {
            forEachChannelBlock(channels, [&]<int vectors>(int c) HWY_ATTR {
                stemPixels<vectors>(in + 2 * column, x.rowStride, weight + c, bias + c, channels,
                                    out + static_cast<std::size_t>(column) * channels + c);
            });
        }
        siluInPlace(static_cast<std::size_t>(act.width) * channels, out,
                    derivative.data ? derivative.at(image, y, 0) : nullptr);
    }
}

// One kernel row: four taps at a time stay in registers.
template <int vectors>
HWY_INLINE void stemGradientRow(const PaddedView& x, const PaddedView& gradient, int image, int kernelRow,
                                int c, float* dWeight) {
    constexpr int lanes = lanesOf<EightTag>;
    const EightTag d;
    const int channels = gradient.channels;
    hn::Vec<EightTag> sum[4][vectors];
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
#pragma GCC unroll 4
        for (int v = 0; v < vectors; ++v)
            sum[k][v] = hn::LoadU(d, dWeight + k * channels + v * lanes);
    }
    for (int y = 0; y < gradient.height; ++y) {
        const float* const in = x.at(image, 2 * y - 1 + kernelRow, -1);
        const float* const g = gradient.at(image, y, 0) + c;
        for (int column = 0; column < gradient.width; ++column) {
#pragma GCC unroll 4
            for (int v = 0; v < vectors; ++v) {
                const auto value = hn::LoadU(d, g + static_cast<std::size_t>(column) * channels + v * lanes);
#pragma GCC unroll 4
                for (int k = 0; k < 4; ++k) {
                    sum[k][v] = hn::MulAdd(hn::Set(d, in[2 * column + k]), value, sum[k][v]);
                }
            }
        }
    }
#pragma GCC unroll 4
    for (int k = 0; k < 4; ++k) {
#pragma GCC unroll 4
        for (int v = 0; v < vectors; ++v)
            hn::StoreU(sum[k][v], d, dWeight + k * channels + v * lanes);
    }
}

inline HWY_ATTR void stemGradient(PaddedView x, PaddedView gradient, float* dWeight, int image) {
    for (int kernelRow = 0; kernelRow < 4; ++kernelRow) {
        forEachChannelBlock(gradient.channels, [&]<int vectors>(int c) HWY_ATTR {
            stemGradientRow<vectors>(
                x, gradient, image, kernelRow, c,
                dWeight + static_cast<std::size_t>(4) * kernelRow * gradient.channels + c);
        });
    }
}

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
