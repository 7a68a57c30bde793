#pragma once

#include <utility>
#include <vector>

#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/VAEArchitecture.h"

namespace quillmere::golden {

// A model whose weights are all zero, for what depends on its configuration and latents only.
[[nodiscard]] inline ModelBundle blankModel(const ModelConfig& config,
                                            std::vector<std::vector<float>> latents) {
    ModelBundle bundle;
    bundle.config = config;
    for (const VAEArchitecture::Param& param : VAEArchitecture::params(config)) {
        bundle.weights.emplace_back(static_cast<std::size_t>(param.elementCount()));
    }
    bundle.latents = std::move(latents);
    return bundle;
}

// The smallest network with latent vectors of the given length.
[[nodiscard]] inline ModelConfig smallConfig(std::size_t latentDim) {
    ModelConfig config;
    config.nMels = 32;
    config.frames = 32;
    config.latentDim = static_cast<std::int64_t>(latentDim);
    config.profile = AnalysisProfile::percussive;
    return config;
}

}  // namespace quillmere::golden
