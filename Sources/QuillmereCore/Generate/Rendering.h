#pragma once

#include <span>
#include <vector>

#include "QuillmereCore/DSP/STFT.h"
#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmereCore/Model/Features.h"
#include "QuillmereCore/Util/RNG.h"

// The spectral steps from a decoded image to samples, each on its own. Images are band-major [rows][cols];
// linear magnitudes frame-major [frames][bins]. In-place functions change their first argument.
namespace quillmere::Rendering {

[[nodiscard]] std::vector<float> toDecibels(std::span<const float> image);
void applyContrast(std::vector<float>& dB, double contrast);
void applySmear(std::vector<float>& dB, int nMels, int frames, int hop, double smear);
void applyGrit(std::vector<float>& dB, double grit);
void applyRoughness(std::vector<float>& dB, double roughness, SeededRNG& rng);
void applyTilt(std::vector<float>& dB, int frames, std::span<const float> centers, double tilt);

// Takes one uniform draw. The frame count after stretching, within 8 ... 4096.
[[nodiscard]] int stretchedFrames(int frames, double stretch, double stretchJitter, SeededRNG& rng);
// Linear interpolation along time.
[[nodiscard]] std::vector<float> timeStretch(std::span<const float> dB, int nMels, int frames, int newFrames);

// Moves the content of every frame by ratio along the frequency axis.
[[nodiscard]] std::vector<float> warpFrequency(std::span<const float> mag, int frames, int bins,
                                               double ratio);

// Gaussian taps, normalised; one tap when sigma is not above 0.05.
[[nodiscard]] std::vector<float> kernel(float sigma);
// Separable Gaussian blur with clamped edges, columns (time) first.
[[nodiscard]] std::vector<float> blur(std::span<const float> image, int rows, int cols, float sigmaRows,
                                      float sigmaCols);

// The chain in three stages, all draws in their order.
struct ShapedImage {
    std::vector<float> dB;  // [nMels][frames]
    int frames = 0;
};
[[nodiscard]] ShapedImage shape(std::span<const float> image, const Aesthetics& aesthetics,
                                const FeatureExtractor& extractor, SeededRNG& rng);
// [frames][bins], pitch shifted. Takes one uniform draw.
[[nodiscard]] std::vector<float> magnitude(const ShapedImage& shaped, const Aesthetics& aesthetics,
                                           const FeatureExtractor& extractor, const STFT& stft,
                                           SeededRNG& rng);
// shape, magnitude and phase reconstruction: hop * frames samples, not yet finished.
[[nodiscard]] std::vector<float> waveform(std::span<const float> image, const Aesthetics& aesthetics,
                                          const FeatureExtractor& extractor, STFT& stft, SeededRNG& rng);

}  // namespace quillmere::Rendering
