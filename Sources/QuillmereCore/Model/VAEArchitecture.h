#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "QuillmereCore/Model/ModelConfig.h"

// The trainable parameters of the variational autoencoder: names, shapes and initial values.
namespace quillmere::VAEArchitecture {

// Convolution weights are [out, in, height, width], convolution biases [1, channels, 1, 1], dense weights
// [inputs, outputs] and dense biases [1, outputs]; all row-major.
struct Param {
    std::string name;
    std::vector<std::int64_t> shape;
    float initStd = 0;  // standard deviation of the initial values; 0: every element is constant
    float constant = 0;

    [[nodiscard]] std::int64_t elementCount() const;  // an empty shape counts as 1
};

// In the order of every list of weights: training, inference, stored models.
[[nodiscard]] std::vector<Param> params(const ModelConfig& config);

// Elements of all parameters together.
[[nodiscard]] std::int64_t weightCount(const ModelConfig& config);

// One array per parameter, drawn from one generator that runs through the whole list (He et al., 2015,
// for the convolutions).
[[nodiscard]] std::vector<std::vector<float>> initialWeights(const ModelConfig& config, std::uint64_t seed);

}  // namespace quillmere::VAEArchitecture
