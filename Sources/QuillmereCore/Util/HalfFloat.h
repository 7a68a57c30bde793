#pragma once

#include <cstdint>

namespace quillmere {

// Half precision (IEEE 754 binary16) as its bits: 11 significant binary digits, up to 65504.

// The nearest half, ties to even. Too large a number becomes infinity; NaN stays NaN.
[[nodiscard]] std::uint16_t halfBits(float value) noexcept;
// Exact.
[[nodiscard]] float fromHalfBits(std::uint16_t bits) noexcept;

}  // namespace quillmere
