#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <stop_token>
#include <vector>

#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/Training/TrainingHooks.h"
#include "QuillmereCore/Model/Training/TrainingOptions.h"
#include "QuillmereCore/Model/Training/TrainingProgress.h"
#include "QuillmereCore/Network/Backend.h"

namespace quillmere::ModelTrainer {

struct TrainedNetwork {
    std::vector<std::vector<float>> weights;  // in VAEArchitecture::params(config) order
    std::vector<std::vector<float>> latents;  // mean of each image, [latentDim]
    std::int64_t steps = 0;                   // that were done
    float finalLoss = 0;                      // smoothed
    float finalReconstructionError = 0;       // mean of the images' plain squared errors per pixel
};

// The part of a run that needs no audio: trains a network on prepared images, from random weights or from the
// start of the options, which must fit (TrainingStart::problemWith), step by step as scheduled, then encodes
// the images and measures how well they come back. images: each [nMels][frames], at least one. progress may
// be empty and is called on the calling thread; what it throws ends the run. stop is asked before the first
// step and after each step but the last, and comes before the hooks. onStep (may be empty, too) sees the raw
// scalars of each step. Throws CancellationError, and TrainingError when a loss is not finite.
[[nodiscard]] TrainedNetwork trainOnImages(const ModelConfig& config,
                                           std::span<const std::vector<float>> images,
                                           const TrainingOptions& options, const ProgressCallback& progress,
                                           const std::stop_token& stop, network::Backend& backend,
                                           const std::function<void(const network::StepResult&)>& onStep = {},
                                           const TrainingHooks& hooks = {});

// The same without any step: the start of the options, which must be one, as it meets the images.
[[nodiscard]] TrainedNetwork startOnImages(const ModelConfig& config,
                                           std::span<const std::vector<float>> images,
                                           const TrainingOptions& options, network::Backend& backend);

}  // namespace quillmere::ModelTrainer
