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
namespace quillmere::Finishing {

void blockDC(std::span<float> x);

struct SampleRange {
    std::size_t start = 0, end = 0;  // end exclusive
};
// The part of x that sounds.
[[nodiscard]] SampleRange audibleRange(std::span<const float> x, int sampleRate);
[[nodiscard]] std::vector<float> trimSilence(std::vector<float> x, int sampleRate);
// Scales the largest |x| to peak; near-silence stays unchanged.
void normalize(std::span<float> x, float peak);
void applyDecay(std::span<float> x, double milliseconds, double sampleRate);
// tanh saturation, then normalisation to 0.95.
void applyDrive(std::span<float> x, double dB);
void decimate(std::span<float> x, double factor);
void crush(std::span<float> x, double bits);
void applyFades(std::span<float> x, double sampleRate);

// The whole chain. Takes one uniform draw.
void finish(std::vector<float>& x, const Aesthetics& aesthetics, double sampleRate, SeededRNG& rng);

// Replaces the characters that file systems refuse, and blanks, by "_".
[[nodiscard]] std::string sanitisedPrefix(std::string_view prefix);
// prefix, "_", a number of at least four digits, ".wav".
[[nodiscard]] std::string fileName(std::string_view prefix, std::size_t number);
// One more than the largest number of a name that starts with prefix and "_".
[[nodiscard]] std::size_t firstFreeIndex(std::span<const std::string> names, std::string_view prefix);
[[nodiscard]] std::size_t firstFreeIndex(const std::filesystem::path& folder, std::string_view prefix);

}  // namespace quillmere::Finishing
