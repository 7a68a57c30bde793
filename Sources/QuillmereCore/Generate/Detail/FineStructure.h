#pragma once

#include <span>

// What an image of mel bands does not hold of a sound: how neighbouring bins and frames differ. It is taken
// from the spectrum of a donor, as the ratio of each magnitude to the donor's own smooth envelope.
//
// Magnitudes are linear; all spans of one function have the same size and any order. Stateless; any thread.
namespace quillmere::Detail {

// 10^(dB / 20) * scale.
void fromDecibels(std::span<const float> dB, float scale, std::span<float> linear);

// |re + i im|.
void magnitudes(std::span<const float> re, std::span<const float> im, std::span<float> magnitudes);

// How far the donor can be trusted, 0 ... 1, by its levels in the bands: fully down to 60 dB below loudest,
// no longer from 80 dB below on. What little is there is the noise of its recording. 0 everywhere if it is
// silent.
void trustOf(std::span<const float> levels, float loudest, std::span<float> trust);

// Multiplies each magnitude by (donor / envelope) ^ (amount * trust), the ratio limited to -40 ... +20 dB,
// and brings it to 1e-9 at least. trust counts within 0 ... 1.
void applyFineStructure(std::span<float> magnitudes, std::span<const float> donor,
                        std::span<const float> envelope, std::span<const float> trust, float amount);

}  // namespace quillmere::Detail
