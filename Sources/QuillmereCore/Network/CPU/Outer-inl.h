// First and last layer, and the loss. Included once per instruction set.
#if defined(QUILLMERE_NETWORK_OUTER_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_OUTER_INL_H_
#undef QUILLMERE_NETWORK_OUTER_INL_H_
#else
#define QUILLMERE_NETWORK_OUTER_INL_H_
#endif

#include <algorithm>
#include <cstring>

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

// ---- Output layer. Each input pixel is multiplied with all nine taps at once; a strip of three rows of
// those products is enough to add up one output row.

inline constexpr int tapLanes = outputTapLanes;

inline HWY_ATTR void outputTapProducts(const float* act, int width, int channels, const float* taps,
                                       float* strip) {
    using D = hn::CappedTag<float, tapLanes>;
    const D d;
    constexpr int vectors = tapLanes / lanesOf<D>;
    constexpr int pixels = 8;
    for (int x = 0; x < width; x += pixels) {
#pragma GCC unroll 4
        for (int v = 0; v < vectors; ++v) {
            hn::Vec<D> sum[pixels];
#pragma GCC unroll 8
            for (int u = 0; u < pixels; ++u)
                sum[u] = hn::Zero(d);
            for (int c = 0; c < channels; ++c) {
                const auto w = hn::Load(d, taps + c * tapLanes + v * lanesOf<D>);
#pragma GCC unroll 8
                for (int u = 0; u < pixels; ++u) {
                    const float a = act[static_cast<std::size_t>(x + u) * channels + c];
                    sum[u] = hn::MulAdd(hn::Set(d, a), w, sum[u]);
                }
            }
#pragma GCC unroll 8
            for (int u = 0; u < pixels; ++u) {
                hn::StoreU(sum[u], d,
                           strip + static_cast<std::size_t>(x + u + 1) * tapLanes + v * lanesOf<D>);
            }
        }
    }
}

inline HWY_ATTR void outputForward(PaddedView act, const float* weight, float bias, float* strip,
                                   float* recon, int image) {
    const int channels = act.channels;
    const int width = act.width;
    const std::size_t rowSize = static_cast<std::size_t>(width + 2) * tapLanes;
    // The transposed weights live behind the three rows.
    float* const taps = strip + 3 * rowSize;
    std::fill(strip, taps + static_cast<std::size_t>(channels) * tapLanes, 0.0F);
    for (int c = 0; c < channels; ++c) {
        for (int k = 0; k < 9; ++k)
            taps[c * tapLanes + k] = weight[k * channels + c];
    }
    const auto stripRow = [&](int y) { return strip + static_cast<std::size_t>((y + 3) % 3) * rowSize; };
    for (int y = 0; y <= act.height; ++y) {
        if (y < act.height) {
            outputTapProducts(act.at(image, y, 0), width, channels, taps, stripRow(y));
        } else {
            std::fill(stripRow(y), stripRow(y) + rowSize, 0.0F);
        }
        if (y == 0) continue;
        // Row y - 1 takes the upper taps of row y - 2, the middle ones of row y - 1, the lower ones of row y.
        const float* above = stripRow(y - 2);
        const float* middle = stripRow(y - 1);
        const float* below = stripRow(y);
        float* const out = recon + static_cast<std::size_t>(y - 1) * width;
        for (int x = 0; x < width; ++x, above += tapLanes, middle += tapLanes, below += tapLanes) {
            const float upper = above[0] + above[tapLanes + 1] + above[2 * tapLanes + 2];
            const float centre = middle[3] + middle[tapLanes + 4] + middle[2 * tapLanes + 5];
            const float lower = below[6] + below[tapLanes + 7] + below[2 * tapLanes + 8];
            out[x] = bias + upper + centre + lower;
        }
    }
}

inline HWY_ATTR double reconstructionLoss(const LossTerm& loss, PaddedView x, int image, const float* recon,
                                          float scale, PaddedView dRecon, double* gradientSum) {
    const FullTag d;
    const auto threshold = hn::Set(d, loss.threshold);
    const auto light = hn::Set(d, 1.0F);
    const auto heavy = hn::Set(d, 1.0F + loss.extraWeight);
    const auto factor = hn::Set(d, scale);
    double total = 0;
    double gradientTotal = 0;
    for (int y = 0; y < x.height; ++y) {
        const float* const target = x.at(image, y, 0);
        const float* const r = recon + static_cast<std::size_t>(y) * x.width;
        float* const out = dRecon.at(0, y, 0);
        auto errors = hn::Zero(d);
        auto gradients = hn::Zero(d);
        for (int i = 0; i < x.width; i += lanesOf<FullTag>) {
            const auto t = hn::LoadU(d, target + i);
            const auto difference = hn::Sub(hn::LoadU(d, r + i), t);
            const auto weighted = hn::Mul(difference, hn::IfThenElse(hn::Gt(t, threshold), heavy, light));
            errors = hn::MulAdd(weighted, difference, errors);
            const auto gradient = hn::Mul(weighted, factor);
            gradients = hn::Add(gradients, gradient);
            hn::StoreU(gradient, d, out + i);
        }
        // Rows are short enough for single precision, images are not.
        total += static_cast<double>(hn::GetLane(hn::SumOfLanes(d, errors)));
        gradientTotal += static_cast<double>(hn::GetLane(hn::SumOfLanes(d, gradients)));
    }
    *gradientSum = gradientTotal;
    return total;
}

// Pixels are taken in pairs, whose channels fill whole vectors where those of one pixel may not. Of one
// vector of a pair, `fromFirst` lanes belong to the first pixel.
enum class PairPart { first, mixed, second };

// One row of output pixels' gradients times one vector of a pair, all nine taps at once. weight and sums:
// rows of 2 * channels; the last row of sums is the bias gradient.
template <PairPart part>
HWY_INLINE void outputBackwardRow(const PaddedView& dRecon, int y, const float* act, float* derivative,
                                  int width, int channels, int fromFirst, const float* weight, float* sums) {
    const FullTag d;
    using V = hn::Vec<FullTag>;
    const std::size_t pair = static_cast<std::size_t>(2) * channels;
    const auto ofFirst = hn::FirstN(d, part == PairPart::mixed ? static_cast<std::size_t>(fromFirst) : 0);
    const float* const in = dRecon.at(0, y - 1, -1);
    V w[9];
    V dw[9];
#pragma GCC unroll 9
    for (int k = 0; k < 9; ++k) {
        w[k] = hn::LoadU(d, weight + k * pair);
        dw[k] = hn::LoadU(d, sums + k * pair);
    }
    V sum = hn::LoadU(d, sums + 9 * pair);
    for (int x = 0; x < width; x += 2) {
        const std::size_t offset = static_cast<std::size_t>(x) * channels;
        const V value = hn::LoadU(d, act + offset);
        V even = hn::Zero(d);
        V odd = hn::Zero(d);
#pragma GCC unroll 9
        for (int k = 0; k < 9; ++k) {
            // Output pixel (y + 1 - k / 3, x + 1 - k % 3) used this pixel with tap k.
            const float* const e0 = in + (2 - k / 3) * dRecon.rowStride + x + 2 - k % 3;
            V e = hn::Set(d, part == PairPart::second ? e0[1] : e0[0]);
            if constexpr (part == PairPart::mixed) e = hn::IfThenElse(ofFirst, e, hn::Set(d, e0[1]));
            if (k % 2 == 0) {
                even = hn::MulAdd(e, w[k], even);
            } else {
                odd = hn::MulAdd(e, w[k], odd);
            }
            dw[k] = hn::MulAdd(e, value, dw[k]);
        }
        const V gradient = hn::Mul(hn::Add(even, odd), hn::LoadU(d, derivative + offset));
        hn::StoreU(gradient, d, derivative + offset);
        sum = hn::Add(sum, gradient);
    }
#pragma GCC unroll 9
    for (int k = 0; k < 9; ++k)
        hn::StoreU(dw[k], d, sums + k * pair);
    hn::StoreU(sum, d, sums + 9 * pair);
}

inline HWY_ATTR void outputBackward(PaddedView dRecon, const float* weight, PaddedView act,
                                    PaddedView derivative, float* strip, float* dWeight, float* dBias,
                                    int image) {
    constexpr int lanes = lanesOf<FullTag>;
    const int channels = act.channels;
    const std::size_t pair = static_cast<std::size_t>(2) * channels;
    float* const weights = strip;          // [9][2][channels]
    float* const sums = strip + 9 * pair;  // [10][2][channels]
    for (std::size_t i = 0; i < 18; ++i)
        std::copy_n(weight + i / 2 * channels, channels, weights + i * channels);
    std::fill_n(sums, 10 * pair, 0.0F);
    for (int y = 0; y < act.height; ++y) {
        for (int first = 0; first < 2 * channels; first += lanes) {
            const int fromFirst = channels - first;
            const auto row = [&]<PairPart part>() HWY_ATTR {
                outputBackwardRow<part>(dRecon, y, act.at(image, y, 0) + first,
                                        derivative.at(image, y, 0) + first, act.width, channels, fromFirst,
                                        weights + first, sums + first);
            };
            if (fromFirst >= lanes) {
                row.template operator()<PairPart::first>();
            } else if (fromFirst > 0) {
                row.template operator()<PairPart::mixed>();
            } else {
                row.template operator()<PairPart::second>();
            }
        }
    }
    for (int k = 0; k < 10; ++k) {
        const float* const row = sums + k * pair;
        float* const out = k < 9 ? dWeight + static_cast<std::size_t>(k) * channels : dBias;
        for (int c = 0; c < channels; ++c)
            out[c] += row[c] + row[channels + c];
    }
}

}  // namespace quillmere::network::cpu::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
