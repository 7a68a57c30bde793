#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/Plan.h"

namespace quillmere {

// Builds the network of a configuration as data.
struct VAEGraphBuilder {
    ModelConfig config;
    int batch = 16;

    [[nodiscard]] network::Plan build() const;
};

// Trainable copies of all parameters with their Adam moments; one optimisation step per call.
// Threads: one thread at a time.
class VAETrainingGraph {
public:
    // weights: one array per parameter in VAEArchitecture::params(config) order.
    VAETrainingGraph(const ModelConfig& config, int batch, std::span<const std::vector<float>> weights,
                     network::Backend& backend);

    // x: [batch][nMels][frames]; eps: [batch][latentDim], standard normal. learningRate is the step size of
    // the update exactly as given. Returns the scalars of the forward pass before the update; a loss that is
    // not finite is returned, not detected.
    network::StepResult step(std::span<const float> x, std::span<const float> eps, float learningRate,
                             float klWeight);

    // One array per parameter, in the order and layout of the constructor's weights.
    [[nodiscard]] std::vector<std::vector<float>> currentWeights() const;

private:
    std::unique_ptr<network::Executor> executor_;
};

// The parameters as constants: images to latent means, latent vectors to images, 16 at a time.
// Immutable, but its calls share scratch memory: one thread at a time.
class VAEInference {
public:
    static constexpr int batch = 16;

    VAEInference(const ModelConfig& config, std::span<const std::vector<float>> weights,
                 network::Backend& backend);

    // images: each [nMels][frames]. One latent mean of latentDim values per image, in order.
    [[nodiscard]] std::vector<std::vector<float>> encode(std::span<const std::vector<float>> images);
    // latents: each latentDim values. One image [nMels][frames] per vector, in order; not clamped.
    [[nodiscard]] std::vector<std::vector<float>> decode(std::span<const std::vector<float>> latents);

private:
    ModelConfig config_;
    std::unique_ptr<network::Executor> executor_;
};

}  // namespace quillmere
