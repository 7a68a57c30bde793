#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Util/RNG.h"

// Small changes of an image that make another sample of the same kind: later, a band up or down, louder or
// softer.
namespace quillmere::ModelTrainer {

// Largest time shift: 35 ms of frames.
[[nodiscard]] std::int64_t maxShift(const ModelConfig& config);

struct Augmentation {
    std::int64_t shift = 0;     // frames later
    std::int64_t melShift = 0;  // bands up
    float gain = 0;             // network units
};

[[nodiscard]] Augmentation drawAugmentation(const ModelConfig& config, SeededRNG& rng);

// Moves the content; what it uncovers becomes silence, and silence keeps its level. image, out:
// [nMels][frames], not overlapping.
void applyAugmentation(const Augmentation& augmentation, const ModelConfig& config,
                       std::span<const float> image, std::span<float> out);

// Both of the above.
[[nodiscard]] std::vector<float> augment(std::span<const float> image, const ModelConfig& config,
                                         SeededRNG& rng);

}  // namespace quillmere::ModelTrainer
