#include "QuillmereCore/Network/CPU/Encoder.h"

#include <algorithm>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::network::cpu {

Encoder::Encoder(Engine& engine, Layers& layers)
    : engine_(engine),
      shared_(layers),
      layers_(layers.encoder()),
      outer_(layers.outerEncoder()),
      input_(engine.arena(), engine.batch(), engine.plan().height, engine.plan().width, 1) {
    for (const ConvLayer& layer : engine.plan().encoder)
        tensors_.emplace_back(engine, engine.batch(), layer.loHeight, layer.loWidth, layer.loChannels);
    if (!engine.training()) return;
    const std::size_t channels = engine.plan().encoder.front().loChannels;
    for (int i = 0; i < engine.groups(); ++i)
        stemGradient_.push_back(engine.take(16 * channels));
}

// ---- Forward

void Encoder::load(std::span<const float> x) {
    const Plan& plan = engine_.plan();
    require(x.size() == engine_.images() * plan.imageSize(), "wrong size of an image batch");
    const PaddedView view = input_.view();
    for (int n = 0; n < engine_.images(); ++n) {
        for (int y = 0; y < plan.height; ++y) {
            const float* const row =
                x.data() + n * plan.imageSize() + static_cast<std::size_t>(y) * plan.width;
            std::copy(row, row + plan.width, view.at(n, y, 0));
        }
    }
}

void Encoder::forward() {
    const KernelTable& kernels = engine_.kernels();
    const auto act = [&](std::size_t k) { return tensors_[k].act.view(); };
    const auto derivative = [&](std::size_t k) { return tensors_[k].derivative.view(); };
    const ConvLayer& stem = engine_.plan().encoder.front();
    engine_.run(engine_.images(), [&](int n, int worker) {
        kernels.stemForward(input_.view(), engine_.parameter(stem.weight), engine_.parameter(stem.bias),
                            act(0), derivative(0), n);
        const ImageRange image{n, n + 1};
        for (std::size_t k = 0; k < outer_; ++k)
            kernels.downForward(shared_.call(layers_[k], worker, image), act(k), act(k + 1),
                                derivative(k + 1));
        if (outer_ < layers_.size())
            kernels.transformHi(shared_.call(layers_[outer_], worker, image), act(outer_));
    });
    for (std::size_t k = outer_; k < layers_.size(); ++k) {
        shared_.multiplyDown(layers_[k]);
        engine_.run(engine_.images(), [&](int n, int worker) {
            const ImageRange image{n, n + 1};
            kernels.activateLo(shared_.call(layers_[k], worker, image), act(k + 1), derivative(k + 1));
            if (k + 1 < layers_.size())
                kernels.transformHi(shared_.call(layers_[k + 1], worker, image), act(k + 1));
        });
    }
}

// ---- Backward

void Encoder::backward(const float* gradient) {
    takeGradient(gradient);
    backwardInner();
    backwardOuter();
    collectBiasGradients();
}

// Through the deepest layer's SiLU; its bias gradient is the sum over images and positions.
void Encoder::takeGradient(const float* gradient) {
    const PaddedView deepest = tensors_.back().derivative.view();
    float* const biasGradient = engine_.gradient(engine_.plan().encoder.back().bias);
    std::fill_n(biasGradient, deepest.channels, 0.0F);
    for (int n = 0; n < engine_.batch(); ++n) {
        for (int y = 0; y < deepest.height; ++y) {
            for (int x = 0; x < deepest.width; ++x, gradient += deepest.channels) {
                engine_.kernels().multiplyAccumulate(deepest.channels, gradient, deepest.at(n, y, x),
                                                     biasGradient);
            }
        }
    }
}

void Encoder::backwardInner() {
    if (outer_ == layers_.size()) return;
    const KernelTable& kernels = engine_.kernels();
    const auto gradient = [&](std::size_t k) { return tensors_[k].derivative.view(); };
    engine_.run(engine_.batch(), [&](int n, int worker) {
        kernels.transformLo(shared_.call(layers_.back(), worker, {n, n + 1}), gradient(layers_.size()));
    });
    for (std::size_t k = layers_.size() - 1; k > outer_; --k) {
        shared_.multiplyUp(layers_[k]);
        engine_.run(engine_.groups(), [&](int group, int worker) {
            gradientOfInput(k, group, worker);
            kernels.transformLo(shared_.call(layers_[k - 1], worker, engine_.group(group)), gradient(k));
        });
    }
    shared_.multiplyUp(layers_[outer_]);
}

void Encoder::backwardOuter() {
    const KernelTable& kernels = engine_.kernels();
    const auto gradient = [&](std::size_t k) { return tensors_[k].derivative.view(); };
    engine_.run(engine_.groups(), [&](int group, int worker) {
        if (outer_ < layers_.size()) gradientOfInput(outer_, group, worker);
        for (std::size_t k = 0; k < outer_; ++k)
            layers_[k].biasGradient[group].clear();
        stemGradient_[group].clear();
        const auto [first, last] = engine_.group(group);
        for (int n = first; n < last; ++n) {
            for (std::size_t k = outer_; k-- > 0;) {
                kernels.downBackward(shared_.call(layers_[k], worker, {n, n + 1}), gradient(k + 1),
                                     tensors_[k].act.view(), gradient(k),
                                     layers_[k].biasGradient[group].data(), layers_[k].weightGradient(group));
            }
            kernels.stemGradient(input_.view(), gradient(0), stemGradient_[group].data(), n);
        }
    });
}

// Of an inner layer, for one image group.
void Encoder::gradientOfInput(std::size_t k, int group, int worker) {
    FloatBuffer& biasGradient = layers_[k].biasGradient[group];
    biasGradient.clear();
    engine_.kernels().gradientHi(shared_.call(layers_[k], worker, engine_.group(group)),
                                 tensors_[k].derivative.view(), biasGradient.data());
}

void Encoder::collectBiasGradients() {
    const std::vector<ConvLayer>& specs = engine_.plan().encoder;
    // The way back through a layer gives the bias gradient of the layer before it, as one sum for each pixel
    // of a pair.
    for (std::size_t k = 0; k < layers_.size(); ++k) {
        const std::size_t channels = layers_[k].geometry.hiChannels;
        float* const total = engine_.gradient(specs[k].bias);
        for (std::size_t c = 0; c < channels; ++c) {
            float sum = 0;
            for (const FloatBuffer& part : layers_[k].biasGradient)
                sum += part.data()[c] + part.data()[c + channels];
            total[c] = sum;
        }
    }
    Engine::sumGroups(stemGradient_, 0,
                      {engine_.gradient(specs.front().weight), stemGradient_.front().size()});
}

}  // namespace quillmere::network::cpu
