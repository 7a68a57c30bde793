#include "QuillmereCore/Model/VAE.h"

#include <algorithm>
#include <array>
#include <string>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

// Index of a named parameter; a missing name is a programming error.
class ParameterLookup {
public:
    explicit ParameterLookup(const std::vector<VAEArchitecture::Param>& params) : params_(params) {}
    [[nodiscard]] int operator()(const std::string& name) const {
        const auto found = std::find_if(params_.begin(), params_.end(),
                                        [&](const VAEArchitecture::Param& p) { return p.name == name; });
        require(found != params_.end(), "no network parameter named " + name);
        return static_cast<int>(found - params_.begin());
    }
    [[nodiscard]] int extent(int index, std::size_t dimension) const {
        return static_cast<int>(params_[index].shape[dimension]);
    }

private:
    const std::vector<VAEArchitecture::Param>& params_;
};

network::ConvLayer convLayer(const ParameterLookup& param, const std::string& name,
                             network::ConvLayer::Kind kind, int loHeight, int loWidth) {
    network::ConvLayer layer;
    layer.kind = kind;
    layer.weight = param(name + ".w");
    layer.bias = param(name + ".b");
    const bool down = kind == network::ConvLayer::Kind::down;
    layer.loChannels = param.extent(layer.weight, down ? 0 : 1);
    layer.hiChannels = param.extent(layer.weight, down ? 1 : 0);
    layer.loHeight = loHeight;
    layer.loWidth = loWidth;
    return layer;
}

network::DenseLayer denseLayer(const ParameterLookup& param, const std::string& name,
                               network::Activation activation) {
    const int weight = param(name + ".w");
    return {param.extent(weight, 0), param.extent(weight, 1), weight, param(name + ".b"), activation};
}

// Writes the arrays, all of one size, into a buffer one after the other.
void concatenate(std::span<const std::vector<float>> arrays, std::size_t size, std::span<float> buffer) {
    for (std::size_t i = 0; i < arrays.size(); ++i) {
        require(arrays[i].size() == size, "an image or latent vector has the wrong size");
        std::ranges::copy(arrays[i], buffer.subspan(i * size).begin());
    }
}

// Runs function over arrays in chunks of VAEInference::batch, of which the last may hold fewer, and splits
// its results again.
template <typename Function>
std::vector<std::vector<float>> inChunks(std::span<const std::vector<float>> arrays, std::size_t inputSize,
                                         std::size_t outputSize, Function function) {
    constexpr std::size_t batch = VAEInference::batch;
    const std::size_t slots = std::min(batch, arrays.size());
    std::vector<std::vector<float>> results;
    results.reserve(arrays.size());
    std::vector<float> input(slots * inputSize);
    std::vector<float> output(slots * outputSize);
    for (std::size_t start = 0; start < arrays.size(); start += batch) {
        const std::size_t count = std::min(batch, arrays.size() - start);
        concatenate(arrays.subspan(start, count), inputSize, input);
        function(std::span(input).first(count * inputSize), std::span(output).first(count * outputSize));
        for (std::size_t i = 0; i < count; ++i) {
            const auto first = output.begin() + static_cast<std::ptrdiff_t>(i * outputSize);
            results.emplace_back(first, first + static_cast<std::ptrdiff_t>(outputSize));
        }
    }
    return results;
}

}  // namespace

network::Plan VAEGraphBuilder::build() const {
    require(batch >= 1, "a batch must hold at least one image");
    require(config.nMels > 0 && config.nMels % 32 == 0 && config.frames > 0 && config.frames % 32 == 0,
            "the image size must be a multiple of 32");
    require(config.latentDim >= 1, "the latent vector must hold at least one value");
    const std::vector<VAEArchitecture::Param> params = VAEArchitecture::params(config);
    const ParameterLookup param(params);

    network::Plan plan;
    plan.batch = batch;
    plan.height = static_cast<int>(config.nMels);
    plan.width = static_cast<int>(config.frames);
    for (const auto& p : params) {
        plan.parameters.push_back({p.name, {p.shape.begin(), p.shape.end()}});
    }

    constexpr int levels = 5;  // halvings of the image
    int height = plan.height;
    int width = plan.width;
    for (int k = 0; k < levels; ++k) {
        height /= 2;
        width /= 2;
        plan.encoder.push_back(
            convLayer(param, "enc" + std::to_string(k), network::ConvLayer::Kind::down, height, width));
    }
    plan.mean = denseLayer(param, "mu", network::Activation::none);
    plan.logVariance = denseLayer(param, "lv", network::Activation::none);
    plan.latent.dim = static_cast<int>(config.latentDim);
    plan.decoderInput = denseLayer(param, "dec.fc", network::Activation::silu);
    for (int k = 0; k < levels; ++k) {
        plan.decoder.push_back(
            convLayer(param, "dec" + std::to_string(k), network::ConvLayer::Kind::up, height, width));
        height *= 2;
        width *= 2;
    }
    plan.output.weight = param("out.w");
    plan.output.bias = param("out.b");
    plan.output.channels = param.extent(plan.output.weight, 1);
    plan.output.height = height;
    plan.output.width = width;
    return plan;
}

VAETrainingGraph::VAETrainingGraph(const ModelConfig& config, int batch,
                                   std::span<const std::vector<float>> weights, network::Backend& backend)
    : executor_(backend.compileWithWeights(VAEGraphBuilder{config, batch}.build(), network::Purpose::training,
                                           weights)) {}

network::StepResult VAETrainingGraph::step(std::span<const float> x, std::span<const float> eps,
                                           float learningRate, float klWeight) {
    return executor_->step(x, eps, learningRate, klWeight);
}

std::vector<std::vector<float>> VAETrainingGraph::currentWeights() const {
    return executor_->weights();
}

VAEInference::VAEInference(const ModelConfig& config, std::span<const std::vector<float>> weights,
                           network::Backend& backend)
    : config_(config),
      executor_(backend.compileWithWeights(VAEGraphBuilder{config, batch}.build(),
                                           network::Purpose::inference, weights)) {}

std::vector<std::vector<float>> VAEInference::encode(std::span<const std::vector<float>> images) {
    return inChunks(images, static_cast<std::size_t>(config_.nMels * config_.frames),
                    static_cast<std::size_t>(config_.latentDim),
                    [&](std::span<const float> x, std::span<float> mean) { executor_->encode(x, mean, {}); });
}

std::vector<std::vector<float>> VAEInference::decode(std::span<const std::vector<float>> latents) {
    return inChunks(latents, static_cast<std::size_t>(config_.latentDim),
                    static_cast<std::size_t>(config_.nMels * config_.frames),
                    [&](std::span<const float> z, std::span<float> images) { executor_->decode(z, images); });
}

}  // namespace quillmere
