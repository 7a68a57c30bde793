#pragma once

#include <span>
#include <vector>

#include "QuillmereCore/DSP/STFT.h"
#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmereCore/Model/Features.h"
#include "QuillmereCore/Util/RNG.h"

// The spectral steps from a decoded image to samples, each on its own.
//
// Images are band-major [rows][cols] (rows: mel bands, cols: frames), in decibels unless noted; linear
// magnitudes frame-major [frames][bins]. In-place functions change their first argument and do nothing when
// their parameter is neutral. A size that does not match its buffer is a programming error.
// Stateless; any thread, each with an STFT and a generator of its own.
namespace quillmere::Rendering {

// Network units to decibels, limited to the range of Level.
[[nodiscard]] std::vector<float> toDecibels(std::span<const float> image);
// Scales the distance from a pivot 30 dB below the loudest value; the floor is -100 dB. 1: off.
void applyContrast(std::vector<float>& dB, double contrast);
// Blurs; with a hop of 256 samples by 6 * smear frames. Off unless above 0.
void applySmear(std::vector<float>& dB, int nMels, int frames, int hop, double smear);
// Rounds to multiples of grit * 24 + 0.001 dB. Off unless above 0.
void applyGrit(std::vector<float>& dB, double grit);
// Adds normal noise of roughness * 8 dB to values above -99 dB: one Gaussian each, none for the others.
// Off unless above 0.
void applyRoughness(std::vector<float>& dB, double roughness, SeededRNG& rng);
// Adds tilt dB per octave above 1 kHz, band by band; below 20 Hz as at 20 Hz. centers: Hz, one per band.
void applyTilt(std::vector<float>& dB, int frames, std::span<const float> centers, double tilt);

// Takes one uniform draw. The frame count after stretching, within 8 ... 4096. A stretch whose factor is
// not finite stops the program.
[[nodiscard]] int stretchedFrames(int frames, double stretch, double stretchJitter, SeededRNG& rng);
// Linear interpolation along time.
[[nodiscard]] std::vector<float> timeStretch(std::span<const float> dB, int nMels, int frames, int newFrames);

// Moves the content of every frame by ratio along the frequency axis: output bin k interpolates linearly at
// k / ratio. Above 1 the content of the top is lost; below 1 the top bins, which have no source, are 0.
[[nodiscard]] std::vector<float> warpFrequency(std::span<const float> mag, int frames, int bins,
                                               double ratio);

// Gaussian taps for -R ... R, R = ceil(3 sigma), normalised; one tap when sigma is not above 0.05. A sigma
// above 4096, far beyond what the parameters' ranges lead to, counts as 4096 to bound the cost.
[[nodiscard]] std::vector<float> kernel(float sigma);
// Separable Gaussian blur with clamped edges, columns (time) first.
[[nodiscard]] std::vector<float> blur(std::span<const float> image, int rows, int cols, float sigmaRows,
                                      float sigmaCols);

// The chain in three stages, all draws in their order.
struct ShapedImage {
    std::vector<float> dB;  // [nMels][frames]
    int frames = 0;
};
// image: [nMels][frames] of the extractor's configuration, in network units. Draws the roughness Gaussians
// and one uniform value.
[[nodiscard]] ShapedImage shape(std::span<const float> image, const Aesthetics& aesthetics,
                                const FeatureExtractor& extractor, SeededRNG& rng);
// Takes one uniform draw. The ratio by which the pitch is shifted; 1 when it is in tune.
[[nodiscard]] double pitchRatio(const Aesthetics& aesthetics, SeededRNG& rng);
// [frames][bins], pitch shifted. Takes one uniform draw.
[[nodiscard]] std::vector<float> magnitude(const ShapedImage& shaped, const Aesthetics& aesthetics,
                                           const FeatureExtractor& extractor, const STFT& stft,
                                           SeededRNG& rng);
// shape, magnitude and phase reconstruction: hop * frames samples, not yet finished.
[[nodiscard]] std::vector<float> waveform(std::span<const float> image, const Aesthetics& aesthetics,
                                          const FeatureExtractor& extractor, STFT& stft, SeededRNG& rng);

}  // namespace quillmere::Rendering
