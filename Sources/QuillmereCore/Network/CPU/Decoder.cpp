#include "QuillmereCore/Network/CPU/Decoder.h"

#include <numeric>

namespace quillmere::network::cpu {
namespace {

Activations inputTensors(Engine& engine) {
    const ConvLayer& first = engine.plan().decoder.front();
    return {engine, engine.batch(), first.loHeight, first.loWidth, first.loChannels};
}

// The output of an up layer.
Activations outputTensors(Engine& engine, const ConvLayer& layer, int images) {
    return {engine, images, 2 * layer.loHeight, 2 * layer.loWidth, layer.hiChannels};
}

}  // namespace

Decoder::Decoder(Engine& engine, Layers& layers)
    : engine_(engine),
      shared_(layers),
      layers_(layers.decoder()),
      firstOuter_(layers.innerDecoder()),
      input_(inputTensors(engine)) {
    for (std::size_t k = 0; k < firstOuter_; ++k)
        inner_.push_back(outputTensors(engine, layers_[k].spec, engine.batch()));
    makeBenches();
    if (!engine.training()) return;
    const std::size_t channels = engine.plan().output.channels;
    for (int i = 0; i < engine.groups(); ++i)
        outputGradient_.push_back(engine.take(10 * channels));
    squaredErrors_.resize(static_cast<std::size_t>(engine.batch()));
    imageGradientSums_.resize(squaredErrors_.size());
}

void Decoder::makeBenches() {
    const Plan& plan = engine_.plan();
    benches_.resize(engine_.threads());
    for (Bench& bench : benches_) {
        bench.strip = engine_.take(outputStrip(plan.width, plan.output.channels));
        if (engine_.training()) {
            bench.image = engine_.take(plan.imageSize());
            bench.imageGradient = PaddedTensor(engine_.arena(), 1, plan.height, plan.width, 1);
        }
        for (std::size_t k = firstOuter_; k < layers_.size(); ++k)
            bench.outer.push_back(outputTensors(engine_, layers_[k].spec, 1));
    }
}

PaddedView Decoder::outerAct(int worker, std::size_t layer, int n) const {
    return benches_[worker].outer[layer - firstOuter_].act.view().renumbered(0, n);
}

PaddedView Decoder::outerDerivative(int worker, std::size_t layer, int n) const {
    return benches_[worker].outer[layer - firstOuter_].derivative.view().renumbered(0, n);
}

// ---- Forward

void Decoder::forwardInner(const float* dense) {
    const KernelTable& kernels = engine_.kernels();
    const PaddedView act = input_.act.view();
    const PaddedView derivative = input_.derivative.view();
    const float* const bias = engine_.parameter(engine_.plan().decoderInput.bias);
    const std::size_t row = static_cast<std::size_t>(act.width) * act.channels;
    engine_.run(engine_.images(), [&](int n, int worker) {
        const float* const x = dense + n * act.height * row;
        for (int y = 0; y < act.height; ++y) {
            kernels.biasSilu(row, x + y * row, bias + y * row, act.at(n, y, 0),
                             derivative.data ? derivative.at(n, y, 0) : nullptr);
        }
        if (firstOuter_ > 0) kernels.transformLo(shared_.call(layers_[0], worker, {n, n + 1}), act);
    });
    for (std::size_t k = 0; k < firstOuter_; ++k) {
        shared_.multiplyUp(layers_[k]);
        if (k + 1 == firstOuter_) return;
        engine_.run(engine_.images(), [&](int n, int worker) {
            const Activations& out = inner_[k];
            kernels.activateHi(shared_.call(layers_[k], worker, {n, n + 1}), out.act.view(),
                               out.derivative.view());
            kernels.transformLo(shared_.call(layers_[k + 1], worker, {n, n + 1}), out.act.view());
        });
    }
}

void Decoder::forwardOuter(std::span<float> images) {
    const std::size_t size = engine_.plan().imageSize();
    engine_.run(engine_.images(),
                [&](int n, int worker) { forwardOuter(n, worker, images.subspan(n * size, size).data()); });
}

void Decoder::forwardOuter(int n, int worker, float* image) {
    const KernelTable& kernels = engine_.kernels();
    const OutputLayer& output = engine_.plan().output;
    const ImageRange range{n, n + 1};
    PaddedView lo = middle().act.view();
    if (firstOuter_ > 0) {
        kernels.activateHi(shared_.call(layers_[firstOuter_ - 1], worker, range), lo,
                           middle().derivative.view());
    }
    for (std::size_t k = firstOuter_; k < layers_.size(); ++k) {
        const PaddedView act = outerAct(worker, k, n);
        kernels.upForward(shared_.call(layers_[k], worker, range), lo, act, outerDerivative(worker, k, n));
        lo = act;
    }
    kernels.outputForward(lo, engine_.parameter(output.weight), *engine_.parameter(output.bias),
                          benches_[worker].strip.data(), image, n);
}

// ---- A training step, from the middle to the loss and back

void Decoder::stepOuter(const PaddedView& targets) {
    engine_.run(engine_.groups(), [&](int group, int worker) {
        for (std::size_t k = firstOuter_; k < layers_.size(); ++k)
            layers_[k].biasGradient[group].clear();
        outputGradient_[group].clear();
        const auto [first, last] = engine_.group(group);
        for (int n = first; n < last; ++n)
            stepOuter(targets, n, group, worker);
    });
}

void Decoder::stepOuter(const PaddedView& targets, int n, int group, int worker) {
    const Plan& plan = engine_.plan();
    Bench& bench = benches_[worker];
    forwardOuter(n, worker, bench.image.data());
    const float scale = 2.0F / static_cast<float>(plan.batch * plan.imageSize());
    squaredErrors_[n] = engine_.kernels().reconstructionLoss(
        plan.loss, targets, n, bench.image.data(), scale, bench.imageGradient.view(), &imageGradientSums_[n]);
    backwardOuter(n, group, worker);
}

void Decoder::backwardOuter(int n, int group, int worker) {
    const KernelTable& kernels = engine_.kernels();
    const OutputLayer& output = engine_.plan().output;
    Bench& bench = benches_[worker];
    const ImageRange range{n, n + 1};
    const std::size_t last = layers_.size() - 1;
    float* const outputGradient = outputGradient_[group].data();
    kernels.outputBackward(bench.imageGradient.view(), engine_.parameter(output.weight),
                           outerAct(worker, last, n), outerDerivative(worker, last, n), bench.strip.data(),
                           outputGradient, outputGradient + static_cast<std::size_t>(9) * output.channels, n);
    for (std::size_t k = last + 1; k-- > firstOuter_;) {
        const bool first = k == firstOuter_;
        const PaddedView loAct = first ? middle().act.view() : outerAct(worker, k - 1, n);
        const PaddedView dLo = first ? middle().derivative.view() : outerDerivative(worker, k - 1, n);
        Layer& layer = layers_[k];
        kernels.upBackward(shared_.call(layer, worker, range), outerDerivative(worker, k, n), loAct, dLo,
                           layer.biasGradient[group].data(), layer.weightGradient(group));
    }
    if (firstOuter_ > 0) {
        kernels.transformHi(shared_.call(layers_[firstOuter_ - 1], worker, range),
                            middle().derivative.view());
    }
}

void Decoder::backwardInner() {
    const KernelTable& kernels = engine_.kernels();
    for (std::size_t k = firstOuter_; k-- > 0;) {
        Layer& layer = layers_[k];
        const PaddedView gradient = (k == 0 ? input_ : inner_[k - 1]).derivative.view();
        shared_.multiplyDown(layer);
        engine_.run(engine_.groups(), [&](int group, int worker) {
            const ImageRange range = engine_.group(group);
            layer.biasGradient[group].clear();
            kernels.gradientLo(shared_.call(layer, worker, range), gradient,
                               layer.biasGradient[group].data());
            if (k > 0) kernels.transformHi(shared_.call(layers_[k - 1], worker, range), gradient);
        });
    }
}

// The way back through a layer gives the bias gradient of the layer before it.
void Decoder::collectGradients() {
    const Plan& plan = engine_.plan();
    const auto channels = [](const ConvLayer& layer) { return static_cast<std::size_t>(layer.hiChannels); };
    for (std::size_t k = 1; k < layers_.size(); ++k) {
        const ConvLayer& before = plan.decoder[k - 1];
        Engine::sumGroups(layers_[k].biasGradient, 0, {engine_.gradient(before.bias), channels(before)});
    }
    const std::size_t weights = 9 * static_cast<std::size_t>(plan.output.channels);
    const ConvLayer& before = plan.decoder.back();
    Engine::sumGroups(outputGradient_, 0, {engine_.gradient(plan.output.weight), weights});
    Engine::sumGroups(outputGradient_, weights, {engine_.gradient(before.bias), channels(before)});
    *engine_.gradient(plan.output.bias) =
        static_cast<float>(std::accumulate(imageGradientSums_.begin(), imageGradientSums_.end(), 0.0));
}

double Decoder::squaredError() const {
    return std::accumulate(squaredErrors_.begin(), squaredErrors_.end(), 0.0);
}

}  // namespace quillmere::network::cpu
