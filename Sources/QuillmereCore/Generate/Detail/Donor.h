#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "QuillmereCore/Util/RNG.h"

// The donor: a waveform at the pitch and in the time of the variation from which this takes its fine
// structure. Samples are mono; pure functions, any thread.
namespace quillmere::Detail {

// Frames at the beginning that the donor passes through at its own pace, so that no stretch smears its
// attack.
inline constexpr int attackPace = 4;

// out += share * samples, as far as both go.
void addScaled(std::span<const float> samples, float share, std::span<float> out);

// Gaussian noise, 26 dB below full scale.
[[nodiscard]] std::vector<float> hiss(std::size_t samples, SeededRNG& rng);

// What stands in for sources that cannot be had: a click 1 ms after the beginning, where an attack would be,
// and noise from there on.
[[nodiscard]] std::vector<float> syntheticDonor(std::size_t samples, int sampleRate, SeededRNG& rng);

// Reads samples ratio times faster, with a cubic through four of them (Catmull and Rom); the length divided
// by ratio, but at least one sample. ratio: positive, finite.
[[nodiscard]] std::vector<float> readFaster(std::span<const float> samples, double ratio);

// The sample on which the donor's frame for each of a variation's frames is centred. length: samples of the
// donor that the variation is to last. A variation that is as long passes through it hop by hop, a shorter
// one in longer steps. A longer one goes on hop by hop, too, but to and fro around the place where it should
// be: in shorter steps noise would stand still, and sound like many partials. Where it turns is drawn from
// rng: in a fixed rhythm the turns could be heard. It never turns back into the attack.
[[nodiscard]] std::vector<long long> donorCentres(int frames, int hop, double length, SeededRNG& rng);

}  // namespace quillmere::Detail
