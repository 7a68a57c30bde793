#include "QuillmereCore/Network/CPU/Bottleneck.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::network::cpu {
namespace {

constexpr int taskColumns = 64;  // of one parallel task

int tasksFor(int columns) {
    return (columns + taskColumns - 1) / taskColumns;
}

// Copies the interior of a padded image to [position][channel].
void flatten(const PaddedView& view, int image, float* flat) {
    const std::size_t row = static_cast<std::size_t>(view.width) * view.channels;
    for (int y = 0; y < view.height; ++y)
        std::memcpy(flat + y * row, view.at(image, y, 0), row * sizeof(float));
}

}  // namespace

Bottleneck::Bottleneck(Engine& engine)
    : engine_(engine),
      flat_(engine.plan().mean.inputs),
      dim_(engine.plan().latent.dim),
      padded_(engine.layout().latentPadded()) {
    require(flat_ % widthMultiple == 0 && engine.plan().encoder.back().loChannels % widthMultiple == 0,
            "the deepest layer's channels must be a multiple of sixteen");
    const std::size_t flat = flatRow(engine.batch());
    const std::size_t latent = latentRow(engine.batch());
    flattened_ = engine.take(flat);
    dense_ = engine.take(flat);
    heads_ = engine.take(2 * latent);
    latent_ = engine.take(latent);
    if (!engine.training()) return;
    flattenedGradient_ = engine.take(flat);
    denseGradient_ = engine.take(flat);
    headGradient_ = engine.take(2 * latent);
    deviation_ = engine.take(latent);
    latentGradient_ = engine.take(latent);
}

// ---- Products

void Bottleneck::multiply(int n, int k, const float* A, const float* B, float* C) {
    engine_.run(tasksFor(n), [&](int index, int) {
        const int first = index * taskColumns;
        engine_.kernels().multiply(engine_.images(), std::min(taskColumns, n - first), k, A, k, B + first, n,
                                   C + first, n);
    });
}

void Bottleneck::multiplyTransposedA(int m, int n, const float* A, const float* B, float* C) {
    engine_.run(tasksFor(m), [&](int index, int) {
        const int first = index * taskColumns;
        engine_.kernels().multiplyTransposedA(std::min(taskColumns, m - first), n, engine_.images(),
                                              A + first, m, B, n, C + static_cast<std::size_t>(first) * n, n);
    });
}

void Bottleneck::multiplyTransposedB(int n, int k, const float* A, const float* B, float* C) {
    engine_.run(tasksFor(n), [&](int index, int) {
        const int first = index * taskColumns;
        engine_.kernels().multiplyTransposedB(engine_.images(), std::min(taskColumns, n - first), k, A, k,
                                              B + static_cast<std::size_t>(first) * k, k, C + first, n);
    });
}

// ---- Forward

void Bottleneck::encode(const PaddedView& deepest) {
    for (int n = 0; n < engine_.images(); ++n)
        flatten(deepest, n, flattened_.data() + flatRow(n));
    const DenseLayer& head = engine_.plan().mean;  // the other one lies beside it
    multiply(2 * padded_, flat_, flattened_.data(), engine_.parameter(head.weight), heads_.data());
    const float* const bias = engine_.parameter(head.bias);
    for (int n = 0; n < engine_.images(); ++n) {
        float* const row = heads_.data() + 2 * latentRow(n);
        for (int i = 0; i < 2 * padded_; ++i)
            row[i] += bias[i];
    }
}

void Bottleneck::readHeads(std::span<float> mean, std::span<float> logVariance) const {
    const LatentStep& latent = engine_.plan().latent;
    const auto dim = static_cast<std::size_t>(dim_);
    for (int n = 0; n < engine_.images(); ++n) {
        const float* const row = heads_.data() + 2 * latentRow(n);
        std::copy(row, row + dim, mean.data() + n * dim);
        if (logVariance.empty()) continue;
        for (std::size_t i = 0; i < dim; ++i)
            logVariance[n * dim + i] = std::clamp(row[padded_ + i], latent.logVarMin, latent.logVarMax);
    }
}

void Bottleneck::set(std::span<const float> z) {
    const auto dim = static_cast<std::size_t>(dim_);
    for (int n = 0; n < engine_.images(); ++n)
        std::copy(z.data() + n * dim, z.data() + (n + 1) * dim, latent_.data() + latentRow(n));
}

double Bottleneck::draw(std::span<const float> eps) {
    const LatentStep& latent = engine_.plan().latent;
    double sum = 0;
    for (int n = 0; n < engine_.batch(); ++n) {
        const std::size_t row = latentRow(n);
        const float* const mean = heads_.data() + 2 * row;
        const float* const raw = mean + padded_;
        for (int i = 0; i < dim_; ++i) {
            const float logVar = std::clamp(raw[i], latent.logVarMin, latent.logVarMax);
            const float deviation = std::exp(0.5F * logVar);
            deviation_.data()[row + i] = deviation;
            latent_.data()[row + i] = mean[i] + deviation * eps[static_cast<std::size_t>(n) * dim_ + i];
            const float term = (1.0F + logVar) - (mean[i] * mean[i] + std::exp(logVar));
            sum += static_cast<double>(term);
        }
    }
    return -0.5 * sum / static_cast<double>(engine_.batch() * dim_);
}

const float* Bottleneck::decode() {
    multiply(flat_, padded_, latent_.data(), engine_.parameter(engine_.plan().decoderInput.weight),
             dense_.data());
    return dense_.data();
}

// ---- Backward

const float* Bottleneck::backward(const PaddedView& gradient, std::span<const float> eps, float klWeight) {
    denseBackward(gradient);
    latentBackward(eps, klWeight);
    headsBackward();
    return flattenedGradient_.data();
}

void Bottleneck::denseBackward(const PaddedView& gradient) {
    const DenseLayer& layer = engine_.plan().decoderInput;
    float* const dBias = engine_.gradient(layer.bias);
    std::fill_n(dBias, flat_, 0.0F);
    for (int n = 0; n < engine_.batch(); ++n) {
        float* const row = denseGradient_.data() + flatRow(n);
        flatten(gradient, n, row);
        for (int i = 0; i < flat_; ++i)
            dBias[i] += row[i];
    }
    multiplyTransposedA(padded_, flat_, latent_.data(), denseGradient_.data(),
                        engine_.gradient(layer.weight));
    multiplyTransposedB(padded_, flat_, denseGradient_.data(), engine_.parameter(layer.weight),
                        latentGradient_.data());
}

// The gradient of the clamp is 0 outside its range.
void Bottleneck::latentBackward(std::span<const float> eps, float klWeight) {
    const LatentStep& latent = engine_.plan().latent;
    const float klScale = klWeight / static_cast<float>(engine_.batch() * dim_);
    float* const dBias = engine_.gradient(engine_.plan().mean.bias);
    std::fill_n(dBias, 2 * padded_, 0.0F);
    for (int n = 0; n < engine_.batch(); ++n) {
        const std::size_t row = latentRow(n);
        const float* const mean = heads_.data() + 2 * row;
        float* const dMean = headGradient_.data() + 2 * row;
        for (int i = 0; i < dim_; ++i) {
            const float g = latentGradient_.data()[row + i];
            const float deviation = deviation_.data()[row + i];
            const float raw = mean[padded_ + i];
            const bool clamped = raw < latent.logVarMin || raw > latent.logVarMax;
            dMean[i] = g + klScale * mean[i];
            dMean[padded_ + i] = clamped
                                     ? 0.0F
                                     : g * eps[static_cast<std::size_t>(n) * dim_ + i] * 0.5F * deviation -
                                           0.5F * klScale * (1.0F - deviation * deviation);
            dBias[i] += dMean[i];
            dBias[padded_ + i] += dMean[padded_ + i];
        }
    }
}

void Bottleneck::headsBackward() {
    const DenseLayer& head = engine_.plan().mean;  // the other one lies beside it
    multiplyTransposedA(flat_, 2 * padded_, flattened_.data(), headGradient_.data(),
                        engine_.gradient(head.weight));
    multiplyTransposedB(flat_, 2 * padded_, headGradient_.data(), engine_.parameter(head.weight),
                        flattenedGradient_.data());
}

}  // namespace quillmere::network::cpu
