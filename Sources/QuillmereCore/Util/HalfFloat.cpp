#include "QuillmereCore/Util/HalfFloat.h"

#include <bit>
#include <cmath>

namespace quillmere {
namespace {

constexpr std::uint32_t halfInfinity = 0x7C00;
constexpr std::uint32_t halfNaN = 0x7E00;
constexpr int mantissaDifference = 13;  // binary digits that a float has more
constexpr float subnormalUnit = 0x1p-24F;

}  // namespace

std::uint16_t halfBits(float value) noexcept {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    const std::uint32_t sign = (bits >> 16) & 0x8000U;
    const float magnitude = std::abs(value);
    if (std::isnan(value)) return static_cast<std::uint16_t>(sign | halfNaN);
    if (magnitude >= 65520.0F) return static_cast<std::uint16_t>(sign | halfInfinity);
    // Below the smallest normal half the halves are evenly spaced.
    if (magnitude < 0x1p-14F)
        return static_cast<std::uint16_t>(
            sign | static_cast<std::uint32_t>(std::nearbyint(magnitude / subnormalUnit)));
    // The exponent's bias changes from 127 to 15. Rounding may carry into the exponent, which is right.
    const std::uint32_t rebiased = (bits & 0x7FFFFFFFU) - (112U << 23);
    const std::uint32_t odd = (rebiased >> mantissaDifference) & 1U;
    return static_cast<std::uint16_t>(sign | ((rebiased + 0xFFFU + odd) >> mantissaDifference));
}

float fromHalfBits(std::uint16_t bits) noexcept {
    const std::uint32_t sign = (bits & 0x8000U) << 16;
    const std::uint32_t magnitude = bits & 0x7FFFU;
    if (magnitude < 0x400U) {
        const float value = static_cast<float>(magnitude) * subnormalUnit;
        return sign != 0 ? -value : value;
    }
    const std::uint32_t special = magnitude >= halfInfinity ? (112U << 23) : 0;
    return std::bit_cast<float>(sign | ((magnitude << mantissaDifference) + (112U << 23) + special));
}

}  // namespace quillmere
