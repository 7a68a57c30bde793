#include "QuillmereCore/Generate/Detail/FineStructure.h"

#include <algorithm>
#include <cstddef>

#include "QuillmereCore/Util/Failure.h"

#define HWY_TARGET_INCLUDE "QuillmereCore/Generate/Detail/FineStructure.cpp"
#include "QuillmereCore/Util/VectorTargets.h"

#include <hwy/contrib/math/math-inl.h>

HWY_BEFORE_NAMESPACE();
namespace quillmere::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;

constexpr float least = 1e-12F;
constexpr float naturalToDecibels = 8.685889638F;  // 20 / ln 10

// Calls f(d, i) for the vectors of an array, and with one lane for what is left: the same operations, so a
// value's result does not depend on its place.
template <class F>
HWY_INLINE void eachVector(std::size_t count, const F& f) {
    const hn::ScalableTag<float> d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes)
        f(d, i);
    for (; i < count; ++i)
        f(hn::CappedTag<float, 1>(), i);
}

void fromDecibels(const float* dB, std::size_t count, float scale, float* linear) {
    constexpr float greatest = 88;  // that Exp takes without overflow
    eachVector(count, [&](auto d, std::size_t i) HWY_ATTR {
        const auto exponent = hn::Mul(hn::LoadU(d, dB + i), hn::Set(d, 1.0F / naturalToDecibels));
        const auto power = hn::Exp(d, hn::Min(exponent, hn::Set(d, greatest)));
        hn::StoreU(hn::Mul(power, hn::Set(d, scale)), d, linear + i);
    });
}

void magnitudes(const float* re, const float* im, std::size_t count, float* out) {
    eachVector(count, [&](auto d, std::size_t i) HWY_ATTR {
        const auto x = hn::LoadU(d, re + i);
        const auto y = hn::LoadU(d, im + i);
        hn::StoreU(hn::Sqrt(hn::MulAdd(x, x, hn::Mul(y, y))), d, out + i);
    });
}

void trustOf(const float* levels, std::size_t count, float loudest, float* trust) {
    constexpr float range = 80;  // dB
    constexpr float fade = 20;
    eachVector(count, [&](auto d, std::size_t i) HWY_ATTR {
        const auto level = hn::Max(hn::LoadU(d, levels + i), hn::Set(d, least));
        const auto log = hn::Log(d, hn::Div(level, hn::Set(d, loudest)));
        const auto scaled = hn::MulAdd(log, hn::Set(d, naturalToDecibels / fade), hn::Set(d, range / fade));
        hn::StoreU(hn::Clamp(scaled, hn::Zero(d), hn::Set(d, 1.0F)), d, trust + i);
    });
}

void apply(float* magnitudes, const float* donor, const float* envelope, const float* trust,
           std::size_t count, float amount) {
    constexpr float lowest = -4.6F;
    constexpr float highest = 2.3F;
    constexpr float leastMagnitude = 1e-9F;
    eachVector(count, [&](auto d, std::size_t i) HWY_ATTR {
        const auto over = hn::Max(hn::LoadU(d, donor + i), hn::Set(d, least));
        const auto under = hn::Max(hn::LoadU(d, envelope + i), hn::Set(d, least));
        const auto log = hn::Clamp(hn::Log(d, hn::Div(over, under)), hn::Set(d, lowest), hn::Set(d, highest));
        const auto share = hn::Clamp(hn::LoadU(d, trust + i), hn::Zero(d), hn::Set(d, 1.0F));
        const auto gain = hn::Exp(d, hn::Mul(hn::Mul(hn::Set(d, amount), share), log));
        const auto lifted = hn::Mul(hn::LoadU(d, magnitudes + i), gain);
        hn::StoreU(hn::Max(lifted, hn::Set(d, leastMagnitude)), d, magnitudes + i);
    });
}

}  // namespace
}  // namespace quillmere::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere {
namespace {

void requireEqual(std::size_t a, std::size_t b) {
    require(a == b, "Detail: a size does not match its buffer");
}

}  // namespace

HWY_EXPORT(fromDecibels);
HWY_EXPORT(magnitudes);
HWY_EXPORT(trustOf);
HWY_EXPORT(apply);

void Detail::fromDecibels(std::span<const float> dB, float scale, std::span<float> linear) {
    requireEqual(dB.size(), linear.size());
    HWY_DYNAMIC_DISPATCH(fromDecibels)(dB.data(), dB.size(), scale, linear.data());
}

void Detail::magnitudes(std::span<const float> re, std::span<const float> im, std::span<float> magnitudes) {
    requireEqual(re.size(), magnitudes.size());
    requireEqual(im.size(), magnitudes.size());
    HWY_DYNAMIC_DISPATCH(magnitudes)(re.data(), im.data(), magnitudes.size(), magnitudes.data());
}

void Detail::trustOf(std::span<const float> levels, float loudest, std::span<float> trust) {
    requireEqual(levels.size(), trust.size());
    constexpr float silence = 1e-12F;
    if (!(loudest > silence)) {
        std::ranges::fill(trust, 0.0F);
        return;
    }
    HWY_DYNAMIC_DISPATCH(trustOf)(levels.data(), levels.size(), loudest, trust.data());
}

void Detail::applyFineStructure(std::span<float> magnitudes, std::span<const float> donor,
                                std::span<const float> envelope, std::span<const float> trust, float amount) {
    requireEqual(donor.size(), magnitudes.size());
    requireEqual(envelope.size(), magnitudes.size());
    requireEqual(trust.size(), magnitudes.size());
    HWY_DYNAMIC_DISPATCH(apply)
    (magnitudes.data(), donor.data(), envelope.data(), trust.data(), magnitudes.size(), amount);
}

}  // namespace quillmere
#endif
