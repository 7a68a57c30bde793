// The output layer. Included once per instruction set.
#if defined(QUILLMERE_NETWORK_OUTPUT_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLMERE_NETWORK_OUTPUT_INL_H_
#undef QUILLMERE_NETWORK_OUTPUT_INL_H_
#else
#define QUILLMERE_NETWORK_OUTPUT_INL_H_
#endif

#include <algorithm>
#include <cstddef>

#include "QuillmereCore/Network/CPU/Kernels.h"
#include "QuillmereCore/Network/CPU/PaddedTensor.h"
#include "QuillmereCore/Network/CPU/Simd-inl.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::network::cpu::HWY_NAMESPACE {

// Each input pixel is multiplied with all nine taps at once; a strip of three rows of those products is
// enough to add up one output row.

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
