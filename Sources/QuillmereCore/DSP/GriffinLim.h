#pragma once

#include <span>
#include <vector>

#include "QuillmereCore/DSP/STFT.h"
#include "QuillmereCore/Util/RNG.h"

// Phase reconstruction by the accelerated iteration of Perraudin, Balazs and Sondergaard (2013).
namespace quillmere::GriffinLim {

// mag: [frames][stft.bins()], frame-major. length: samples to return. iterations below 1: no refinement.
// Draws exactly frames * bins uniform values from rng, in index order, for the random initial phase.
// The same magnitude, seed and iteration count give the same bits on one machine, on any thread.
[[nodiscard]] std::vector<float> reconstruct(std::span<const float> mag, int frames, long long length,
                                             long long iterations, STFT& stft, SeededRNG& rng,
                                             float momentum);

}  // namespace quillmere::GriffinLim
