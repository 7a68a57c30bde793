#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmereCore/Util/RNG.h"

// The signal chain after phase reconstruction and the names of the written files.
//
// Signals are mono, sample rates in Hz. Stateless; any thread. A value outside a parameter's range is coped
// with: each step states when it does nothing.
namespace quillmere::Finishing {

// y[n] = 0.995 y[n-1] + x[n] - x[n-1], from silence.
void blockDC(std::span<float> x);

struct SampleRange {
    std::size_t start = 0, end = 0;  // end exclusive
};
// The part of x that sounds: from 32 samples before the first block of 128 samples whose RMS is above
// 0.0018 times the loudest block's (about -55 dB) to 10 ms after the last such block. Everything when x has
// fewer than 384 samples; the first 128 samples when all blocks are silent (RMS up to 1e-9).
[[nodiscard]] SampleRange audibleRange(std::span<const float> x, int sampleRate);
[[nodiscard]] std::vector<float> trimSilence(std::vector<float> x, int sampleRate);

// Scales the largest |x| to peak; near-silence (up to 1e-9) stays unchanged.
void normalize(std::span<float> x, float peak);

// Multiplies by exp(-n / tau), tau in milliseconds. Off unless above 0.
void applyDecay(std::span<float> x, double milliseconds, double sampleRate);

// tanh saturation with dB of gain before it, then normalisation to 0.95. Off unless above 0.
void applyDrive(std::span<float> x, double dB);

// Every block of factor samples repeats its first one. Off for a rounded factor below 2.
void decimate(std::span<float> x, double factor);

// Rounds to multiples of 1 / (2^(bits - 1) - 1), bits rounded first; below 2 bits as 2. Off from 23.5 up.
void crush(std::span<float> x, double bits);

// Linear, 1 ms in and 20 ms out, each at most a quarter of x.
void applyFades(std::span<float> x, double sampleRate);

// The whole chain: DC, trim, chance of reversal, decay, normalisation to 0.95, drive, decimation, crush,
// fades, final peak. Takes exactly one uniform draw.
void finish(std::vector<float>& x, const Aesthetics& aesthetics, double sampleRate, SeededRNG& rng);

// Brings finished samples to a length and multiplies them by gain. A longer sound is cut, and its last 5 ms,
// a quarter of it at most, fade out linearly; a shorter one ends in silence.
void fit(std::vector<float>& x, std::size_t length, float gain, double sampleRate);

// Replaces / \ : * ? " < > |, blanks and null characters by "_"; other characters stay.
[[nodiscard]] std::string sanitisedPrefix(std::string_view prefix);
// What the names of variations have between the prefix and the number.
inline constexpr std::string_view variationMark = "_var";
// prefix, "_", a number of at least four digits, ".wav".
[[nodiscard]] std::string fileName(std::string_view prefix, std::size_t number);

// Whether a file, by its name or path, is named as a generation names what it writes: PREFIX_var_0001.wav.
[[nodiscard]] bool isVariationName(std::string_view name);

// One more than the largest number of a name that starts with prefix and "_": the digits that follow, if
// any; digits that fit no 64-bit integer do not count. 1 when there is none, or the folder cannot be listed.
[[nodiscard]] std::size_t firstFreeIndex(std::span<const std::string> names, std::string_view prefix);
[[nodiscard]] std::size_t firstFreeIndex(const std::filesystem::path& folder, std::string_view prefix);

}  // namespace quillmere::Finishing
