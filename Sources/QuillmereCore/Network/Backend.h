#pragma once

#include <memory>
#include <span>
#include <vector>

#include "QuillmereCore/Network/Plan.h"

namespace quillmere::network {

struct StepResult {
    float loss = 0;
    float mse = 0;
    float kl = 0;
};

enum class Purpose {
    training,   // step, encode and decode
    inference,  // encode and decode; no gradients or moments are kept
};

// A compiled plan with its parameters. Weights cross this seam as one array per parameter in plan order and
// layout; how a backend stores them is its own business.
// Threads: one thread at a time.
class Executor {
public:
    virtual ~Executor() = default;

    // Also sets both moments to zero.
    virtual void setWeights(std::span<const std::vector<float>> weights) = 0;
    [[nodiscard]] virtual std::vector<std::vector<float>> weights() const = 0;

    // One forward pass, all gradients and one update. x: [batch][height][width]; eps: [batch][latent].
    virtual StepResult step(std::span<const float> x, std::span<const float> eps, float learningRate,
                            float klWeight) = 0;

    // Gradients of the last step, in the layout of weights(). For tests and diagnosis.
    [[nodiscard]] virtual std::vector<std::vector<float>> gradients() const = 0;

    // Both take up to a batch of items, fewer in less time. An item's result never depends on its neighbours.
    // x: [items][height][width]; mean and logVariance (clamped; may be empty): [items][latent].
    virtual void encode(std::span<const float> x, std::span<float> mean, std::span<float> logVariance) = 0;
    // z: [items][latent]; images: [items][height][width].
    virtual void decode(std::span<const float> z, std::span<float> images) = 0;
};

class Backend {
public:
    virtual ~Backend() = default;
    [[nodiscard]] virtual std::unique_ptr<Executor> compile(const Plan& plan, Purpose purpose) = 0;
    // The same with these weights, ready to run: what can fail before a run begins has failed then.
    [[nodiscard]] virtual std::unique_ptr<Executor> compileWithWeights(
        const Plan& plan, Purpose purpose, std::span<const std::vector<float>> weights) {
        std::unique_ptr<Executor> executor = compile(plan, purpose);
        executor->setWeights(weights);
        return executor;
    }
};

// Hand-written kernels on the processor; results do not depend on the number of threads.
[[nodiscard]] std::unique_ptr<Backend> makeCPUBackend();

}  // namespace quillmere::network
