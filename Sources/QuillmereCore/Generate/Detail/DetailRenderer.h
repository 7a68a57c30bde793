#pragma once

#include <span>
#include <vector>

#include "QuillmereCore/DSP/BandMaps.h"
#include "QuillmereCore/DSP/STFT.h"
#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmereCore/Generate/Detail/Attack.h"
#include "QuillmereCore/Generate/Detail/TailCurve.h"
#include "QuillmereCore/Model/Features.h"
#include "QuillmereCore/Util/RNG.h"

namespace quillmere::Detail {

// What a variation takes from the clips that it was blended from.
struct SourceMaterial {
    std::vector<float> donor;                    // their mix as learned, [clipSamples]
    std::vector<float> course;                   // of their attacks, [nMels][AttackFrames::count()]
    std::vector<std::vector<float>> beginnings;  // of each, at most samplesCompared samples (Sameness.h)
};

// The other way from a decoded image to samples (Rendering::waveform is the usual one): levels come from the
// image, the fine structure, the attack and the first phases from the sources, the tails from what decoding
// did to the clips, and all other phases from the magnitudes themselves. Where the sources have ended and the
// image has not, the fine structure is that of noise. No iteration.
// Threads: an instance owns scratch memory; one thread at a time.
class DetailRenderer {
public:
    // Keeps a reference.
    explicit DetailRenderer(const FeatureExtractor& extractor);

    // What to add, and how much of it.
    struct Settings {
        float amount = 1;                         // above 0, up to 1
        const SourceMaterial* sources = nullptr;  // null: noise stands in for their fine structure
        const TailCurve* tail = nullptr;          // null: tails stay as they were decoded
    };

    // image: [nMels][frames] of the extractor's configuration, in network units. stft: made for it. Draws
    // what Rendering::waveform draws, to the same ends. hop * frames samples after stretching, not yet
    // finished.
    [[nodiscard]] std::vector<float> waveform(std::span<const float> image, const Aesthetics& aesthetics,
                                              const Settings& settings, STFT& stft, SeededRNG& rng);

private:
    [[nodiscard]] std::vector<float> sharpened(std::span<const float> image, const Settings& settings) const;
    [[nodiscard]] std::vector<float> donorAt(double ratio, const Settings& settings, SeededRNG& noise) const;

    const FeatureExtractor& extractor_;
    BandMaps maps_;
    AttackFrames attack_;
    std::vector<float> shareOfNoise_;  // of its fine structure at each bin
};

}  // namespace quillmere::Detail
