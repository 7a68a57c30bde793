#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/Training/TrainingOptions.h"
#include "QuillmereCore/Network/Backend.h"

// What a start is worth to a folder of samples: some of them are learned, the others are only looked at.
namespace quillmere::schooling {

// A folder's images, divided.
struct TrialCorpus {
    ModelConfig config;
    std::vector<std::vector<float>> learned;
    std::vector<std::vector<float>> unseen;  // every third, beginning with the second
};

// options: profile and clip length as for a training. Throws as ModelTrainer::train.
[[nodiscard]] TrialCorpus readTrialCorpus(const std::filesystem::path& folder,
                                          const TrainingOptions& options);

// Mean squared error per pixel in network units, where 1 is 50 dB.
struct TrialResult {
    double learned = 0;
    double unseen = 0;
    double seconds = 0;
};

// Trains on the learned images; without a single step where steps is 0, which needs a start.
[[nodiscard]] TrialResult runTrial(const TrialCorpus& corpus, const TrainingOptions& options,
                                   network::Backend& backend);

}  // namespace quillmere::schooling
