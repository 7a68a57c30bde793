#include "QuillmereCore/Network/CPU/CPUExecutor.h"

#include <memory>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::network::cpu {
namespace {

class CPUBackend final : public Backend {
public:
    [[nodiscard]] std::unique_ptr<Executor> compile(const Plan& plan, Purpose purpose) override {
        return std::make_unique<CPUExecutor>(plan, purpose);
    }
};

}  // namespace

CPUExecutor::CPUExecutor(const Plan& plan, Purpose purpose)
    : engine_(plan, purpose),
      layers_(engine_),
      encoder_(engine_, layers_),
      bottleneck_(engine_),
      decoder_(engine_, layers_) {
    if (engine_.training()) adam_.emplace(engine_);
}

// ---- Weights

void CPUExecutor::setWeights(std::span<const std::vector<float>> weights) {
    FloatBuffer parameters = engine_.parameters();
    parameters.clear();
    engine_.layout().scatter(weights, parameters.data());
    if (adam_) adam_->reset();
    prepared_ = false;
}

std::vector<std::vector<float>> CPUExecutor::weights() const {
    return engine_.layout().gather(engine_.parameters().data());
}

std::vector<std::vector<float>> CPUExecutor::gradients() const {
    require(engine_.training(), "an executor for inference has no gradients");
    return engine_.layout().gather(engine_.gradients().data());
}

void CPUExecutor::prepareWeights() {
    if (!prepared_) layers_.prepareWeights();
    prepared_ = true;
}

// ---- Passes

void CPUExecutor::encodeImages(std::span<const float> x) {
    prepareWeights();
    encoder_.load(x);
    encoder_.forward();
    bottleneck_.encode(encoder_.output());
}

void CPUExecutor::encode(std::span<const float> x, std::span<float> mean, std::span<float> logVariance) {
    const FlushDenormals flush;
    const auto dim = static_cast<std::size_t>(engine_.plan().latent.dim);
    engine_.useImages(mean.size() / dim);
    require(
        mean.size() == engine_.images() * dim && (logVariance.empty() || logVariance.size() == mean.size()),
        "wrong size of a latent batch");
    encodeImages(x);
    bottleneck_.readHeads(mean, logVariance);
}

void CPUExecutor::decode(std::span<const float> z, std::span<float> images) {
    const FlushDenormals flush;
    const auto dim = static_cast<std::size_t>(engine_.plan().latent.dim);
    engine_.useImages(z.size() / dim);
    require(
        z.size() == engine_.images() * dim && images.size() == engine_.images() * engine_.plan().imageSize(),
        "wrong size of a latent batch");
    prepareWeights();
    bottleneck_.set(z);
    decoder_.forwardInner(bottleneck_.decode());
    decoder_.forwardOuter(images);
}

StepResult CPUExecutor::step(std::span<const float> x, std::span<const float> eps, float learningRate,
                             float klWeight) {
    const Plan& plan = engine_.plan();
    const auto batch = static_cast<std::size_t>(plan.batch);
    require(engine_.training(), "an executor for inference cannot train");
    require(eps.size() == batch * plan.latent.dim, "wrong size of the noise");
    const FlushDenormals flush;
    engine_.useImages(batch);
    encodeImages(x);
    const double kl = bottleneck_.draw(eps);
    decoder_.forwardInner(bottleneck_.decode());
    decoder_.stepOuter(encoder_.images());
    decoder_.backwardInner();
    encoder_.backward(bottleneck_.backward(decoder_.inputGradient(), eps, klWeight));
    decoder_.collectGradients();
    layers_.collectWeightGradients();
    adam_->update(learningRate);
    prepared_ = false;

    const double mse = decoder_.squaredError() / static_cast<double>(batch * plan.imageSize());
    return {static_cast<float>(mse + static_cast<double>(klWeight) * kl), static_cast<float>(mse),
            static_cast<float>(kl)};
}

}  // namespace quillmere::network::cpu

namespace quillmere::network {

std::unique_ptr<Backend> makeCPUBackend() {
    return std::make_unique<cpu::CPUBackend>();
}

}  // namespace quillmere::network
