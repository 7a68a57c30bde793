#pragma once

#include <cstddef>
#include <span>

namespace quillmere::Detail {

// Samples of both sounds that sameness compares, where they have as many.
inline constexpr std::size_t samplesCompared = 16384;

// How much the beginning of a sound is that of another, whatever their levels: the largest normalised cross
// correlation of their first samplesCompared samples with one of them up to 63 samples late, 0 ... 1. 1 is
// the same waveform; 0 where one is silent. Pure; any thread.
[[nodiscard]] float sameness(std::span<const float> a, std::span<const float> b);

}  // namespace quillmere::Detail
