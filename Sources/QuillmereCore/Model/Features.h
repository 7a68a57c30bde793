#pragma once

#include <span>
#include <vector>

#include "QuillmereCore/DSP/MelFilterBank.h"
#include "QuillmereCore/DSP/STFT.h"
#include "QuillmereCore/Model/ModelConfig.h"

namespace quillmere {

// The fixed decibel range of the images and its mapping to network values: -1 is silence (-100 dB and
// below), 0 is -50 dB, 1 is 0 dB and 1.2 the ceiling of +10 dB.
namespace Level {
inline constexpr float floorDB = -100.0F;
inline constexpr float ceilDB = 10.0F;
[[nodiscard]] float toNetwork(float dB);
[[nodiscard]] float toDB(float network);  // no clamping
}  // namespace Level

// Audio to log-mel images and back to linear magnitudes.
//
// Images are band-major: band m, frame t is at m * frames + t; row 0 is the lowest band. Linear magnitudes
// are frame-major, as STFT's spectra.
// Immutable; several threads may share one, each with an STFT of its own.
class FeatureExtractor {
public:
    explicit FeatureExtractor(const ModelConfig& config);

    [[nodiscard]] const ModelConfig& config() const noexcept { return config_; }
    [[nodiscard]] const MelFilterBank& bank() const noexcept { return bank_; }
    [[nodiscard]] STFT makeSTFT() const;

    // Mono samples at config.sampleRate to an image [nMels][frames] in network units. The frame count is the
    // configuration's; samples that are missing count as silence.
    [[nodiscard]] std::vector<float> features(std::span<const float> samples, STFT& stft) const;

    // image: [nMels][frames] in decibels (frames as given here). Returns [frames][bins].
    [[nodiscard]] std::vector<float> linearMagnitude(std::span<const float> imageDB, int frames,
                                                     const STFT& stft) const;

private:
    ModelConfig config_;
    MelFilterBank bank_;
};

}  // namespace quillmere
