#pragma once

#include <cstddef>
#include <span>

#include "QuillmereCore/Model/Features.h"
#include "QuillmereCore/Picture/Drawing.h"

// Pictures of sounds. Any thread.
namespace quillmere::SoundPictures {

// The range of the samples over time, as an area around the middle; full scale 1 fills the height. seconds:
// what the width shows; samples beyond are left out, and a shorter sound ends early.
[[nodiscard]] Drawing waveform(std::span<const float> samples, double sampleRate, double seconds,
                               double width, double height);

// A mel image in network units (Level), [bands][frames], lowest band first: one pixel per value, the lowest
// band at the bottom, colours from -80 to 0 dB. At least one value.
[[nodiscard]] Pixels mel(std::span<const float> image, std::size_t bands, std::size_t frames);

// Paints mel images of sounds of any length on one scale of time.
class MelPainter {
public:
    // seconds: what the columns show; both above 0.
    MelPainter(double sampleRate, double seconds, std::size_t columns);

    // Mono samples; what is beyond the end is left out. As mel, with 64 bands.
    [[nodiscard]] Pixels paint(std::span<const float> samples) const;

private:
    FeatureExtractor extractor_;
};

}  // namespace quillmere::SoundPictures
