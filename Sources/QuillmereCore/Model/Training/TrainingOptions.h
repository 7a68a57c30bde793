#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "QuillmereCore/Model/ModelConfig.h"

namespace quillmere {

class TrainingStart;

struct TrainingOptions {
    std::int64_t steps = 2500;  // at least 1
    std::int64_t batchSize = 16;
    float learningRate = 0.001F;  // peak step size
    float klWeight = 0.002F;      // final weight
    std::int64_t latentDim = 64;
    std::optional<double> clipSeconds;  // absent: chosen from the corpus
    AnalysisProfile profile = AnalysisProfile::automatic;
    std::uint64_t seed = 1;
    std::shared_ptr<const TrainingStart> start;  // null: random weights, drawn from the seed
    bool hasFullKLWeight = false;                // from the first step on, and not only after a third of them
};

}  // namespace quillmere
