#include "QuillmereCore/Model/VAEArchitecture.h"

#include <array>
#include <cmath>
#include <utility>

#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/RNG.h"

namespace quillmere::VAEArchitecture {
namespace {

constexpr std::array<std::int64_t, 6> encoderChannels{1, 24, 48, 96, 128, 192};
constexpr std::array<std::int64_t, 6> decoderChannels{192, 128, 96, 48, 24, 24};

// A convolution and its bias. Kernels are square.
struct Convolution {
    std::string name;
    std::int64_t in, out, kernel;
};

// The spread that keeps the variance of rectified activations from layer to layer (He et al., 2015).
float heStd(std::int64_t fanIn) {
    return std::sqrt(2.0F / static_cast<float>(fanIn));
}

void append(std::vector<Param>& list, const Convolution& layer, float initStd, float bias = 0) {
    list.push_back({layer.name + ".w", {layer.out, layer.in, layer.kernel, layer.kernel}, initStd, 0});
    list.push_back({layer.name + ".b", {1, layer.out, 1, 1}, 0, bias});
}

void append(std::vector<Param>& list, const Convolution& layer) {
    append(list, layer, heStd(layer.in * layer.kernel * layer.kernel));
}

void appendDense(std::vector<Param>& list, const std::string& name, std::int64_t inputs, std::int64_t outputs,
                 float initStd) {
    list.push_back({name + ".w", {inputs, outputs}, initStd, 0});
    list.push_back({name + ".b", {1, outputs}, 0, 0});
}

std::vector<float> initialValues(const Param& param, SeededRNG& rng) {
    std::vector<float> values(static_cast<std::size_t>(param.elementCount()), param.constant);
    if (param.initStd == 0) return values;
    for (float& value : values)
        value = rng.gaussian() * param.initStd;
    return values;
}

}  // namespace

std::int64_t Param::elementCount() const {
    std::int64_t count = 1;
    for (const std::int64_t size : shape)
        count = checkedMultiply(count, size);
    return count;
}

std::vector<Param> params(const ModelConfig& config) {
    const std::int64_t flat = checkedMultiply(checkedMultiply(config.nMels / 32, 192), config.frames / 32);
    const float rootFlat = std::sqrt(static_cast<float>(flat));

    std::vector<Param> list;
    for (std::size_t k = 0; k < 5; ++k)
        append(list, {"enc" + std::to_string(k), encoderChannels[k], encoderChannels[k + 1], 4});
    // Small heads: training starts near the middle of the latent space with little noise lost to variance.
    appendDense(list, "mu", flat, config.latentDim, 0.5F / rootFlat);
    appendDense(list, "lv", flat, config.latentDim, 0.1F / rootFlat);
    appendDense(list, "dec.fc", config.latentDim, flat, heStd(config.latentDim));
    for (std::size_t k = 0; k < 5; ++k)
        append(list, {"dec" + std::to_string(k), decoderChannels[k], decoderChannels[k + 1], 3});
    // 1 / sqrt(216); the bias makes an untrained decoder's image dark, that is quiet.
    append(list, {"out", 24, 1, 3}, 0.068041384F, -0.6F);
    return list;
}

std::int64_t weightCount(const ModelConfig& config) {
    std::int64_t count = 0;
    for (const Param& param : params(config))
        count = checkedAdd(count, param.elementCount());
    return count;
}

std::vector<std::vector<float>> initialWeights(const ModelConfig& config, std::uint64_t seed) {
    SeededRNG rng(seed);
    std::vector<std::vector<float>> weights;
    for (const Param& param : params(config))
        weights.push_back(initialValues(param, rng));
    return weights;
}

}  // namespace quillmere::VAEArchitecture
