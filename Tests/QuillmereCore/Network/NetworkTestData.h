#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/RNG.h"

namespace quillmere::testing {

// Sizes of a network and its batch; the analysis settings play no part here.
struct NetworkShape {
    int height = 32;
    int width = 32;
    int latentDim = 4;
    int batch = 2;

    [[nodiscard]] ModelConfig config() const {
        ModelConfig c;
        c.nMels = height;
        c.frames = width;
        c.latentDim = latentDim;
        c.profile = AnalysisProfile::percussive;
        return c;
    }
    [[nodiscard]] network::Plan plan() const { return VAEGraphBuilder{config(), batch}.build(); }
    [[nodiscard]] std::size_t imageSize() const { return static_cast<std::size_t>(height) * width; }
    [[nodiscard]] std::string name() const {
        return std::to_string(height) + "x" + std::to_string(width) + "x" + std::to_string(latentDim) +
               "batch" + std::to_string(batch);
    }
};

inline std::vector<float> gaussianArray(std::size_t count, std::uint64_t seed, float scale = 1.0F) {
    SeededRNG rng(seed);
    std::vector<float> values(count);
    for (float& v : values)
        v = scale * rng.gaussian();
    return values;
}

// Images in the network's range, a third of each silent.
inline std::vector<float> speckledImages(std::size_t count, std::uint64_t seed) {
    SeededRNG rng(seed);
    std::vector<float> values(count);
    for (float& v : values) {
        const float u = rng.uniform();
        v = u < 0.3F ? -1.0F : 2.0F * u - 1.0F;
    }
    return values;
}

struct StepInput {
    std::vector<float> x, eps;
    StepInput(const NetworkShape& shape, std::uint64_t seed)
        : x(speckledImages(shape.batch * shape.imageSize(), seed)),
          eps(gaussianArray(static_cast<std::size_t>(shape.batch) * shape.latentDim, seed + 1)) {}
};

// Initial weights with every bias moved away from zero, so that no gradient is checked at a special point.
inline std::vector<std::vector<float>> busyWeights(const NetworkShape& shape, std::uint64_t seed) {
    auto weights = VAEArchitecture::initialWeights(shape.config(), seed);
    SeededRNG rng(seed + 100);
    const auto params = VAEArchitecture::params(shape.config());
    for (std::size_t p = 0; p < params.size(); ++p) {
        if (params[p].initStd != 0) continue;
        for (float& v : weights[p])
            v += 0.05F * rng.gaussian();
    }
    return weights;
}

inline float largest(const std::vector<float>& values) {
    float most = 0;
    for (const float v : values)
        most = std::max(most, std::abs(v));
    return most;
}

}  // namespace quillmere::testing
