#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/RNG.h"

namespace quillmere::testing {

inline constexpr ModelConfig smallConfig{.sampleRate = 8000,
                                         .nFFT = 256,
                                         .hop = 64,
                                         .nMels = 32,
                                         .frames = 32,
                                         .latentDim = 4,
                                         .profile = AnalysisProfile::percussive};

inline std::vector<std::vector<float>> randomLatents(std::size_t count, std::size_t dim, std::uint64_t seed) {
    SeededRNG rng(seed);
    std::vector<std::vector<float>> latents(count, std::vector<float>(dim));
    for (std::vector<float>& latent : latents) {
        for (float& value : latent)
            value = rng.gaussian();
    }
    return latents;
}

// A model that has learned nothing: initial weights and random latents. Renders in milliseconds.
inline ModelBundle smallModel() {
    ModelBundle bundle;
    bundle.config = smallConfig;
    bundle.metadata.corpusName = "Drums: café";
    bundle.weights = VAEArchitecture::initialWeights(smallConfig, 5);
    bundle.latents = randomLatents(6, 4, 17);
    return bundle;
}

}  // namespace quillmere::testing
