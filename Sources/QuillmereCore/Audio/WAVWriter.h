#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"

// RIFF/WAVE files in memory. Internal to AudioIO.
namespace quillmere::WAVWriter {

// Whether that many samples fit into a file: RIFF counts bytes in 32 bits.
[[nodiscard]] bool fits(std::size_t samples, OutputFormat format);

// A whole mono file. Integer formats: full scale is 2^(bits - 1), rounded to the nearest even, saturating;
// NaN becomes 0. Float samples are stored unchanged. Requires fits() and sampleRate > 0.
[[nodiscard]] std::vector<std::byte> encode(std::span<const float> samples, int sampleRate,
                                            OutputFormat format);

// The samples that such a file holds: each as it is after rounding and saturation, in units of full scale.
[[nodiscard]] std::vector<float> stored(std::span<const float> samples, OutputFormat format);

}  // namespace quillmere::WAVWriter
