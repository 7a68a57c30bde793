#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "QuillmereCore/Network/CPU/Activations.h"
#include "QuillmereCore/Network/CPU/Engine.h"
#include "QuillmereCore/Network/CPU/Layers.h"

namespace quillmere::network::cpu {

// From the products of the dense layer to the images, and back: inner layers, outer layers, output layer, and
// the loss. From the middle on, through the loss and back, one image is one task, so that its activations
// stay in the cache and exist once per worker.
class Decoder {
public:
    Decoder(Engine& engine, Layers& layers);

    // The inner layers, but for the activations of the last one. dense: [images in use][position][channel].
    void forwardInner(const float* dense);
    // The rest, after forwardInner. images: [images in use][height][width].
    void forwardOuter(std::span<float> images);

    // The rest for a whole batch as a step: forward, error against the targets (images of Encoder::images),
    // and back to the gradient of the inner layers' output.
    void stepOuter(const PaddedView& targets);
    void backwardInner();
    // Gradient of the dense layer's pre-activations, [image][position][channel] within a border.
    [[nodiscard]] const PaddedView& inputGradient() const { return input_.derivative.view(); }
    // The gradients of biases and of the output layer, from what the above left; the layers' weights are
    // collected by Layers.
    void collectGradients();
    // Weighted squared error, summed over the batch.
    [[nodiscard]] double squaredError() const;

private:
    // What a worker needs for the image in its hands.
    struct Bench {
        std::vector<Activations> outer;  // outputs of the outer layers, one image
        FloatBuffer strip;               // scratch of the output layer
        FloatBuffer image;
        PaddedTensor imageGradient;
    };

    void makeBenches();
    // One image on a worker's bench. image: [height][width].
    void forwardOuter(int n, int worker, float* image);
    void stepOuter(const PaddedView& targets, int n, int group, int worker);
    void backwardOuter(int n, int group, int worker);
    // Activations that the first outer layer reads.
    [[nodiscard]] const Activations& middle() const { return inner_.empty() ? input_ : inner_.back(); }
    // A bench holds one image, which goes by its number in the batch.
    [[nodiscard]] PaddedView outerAct(int worker, std::size_t layer, int n) const;
    [[nodiscard]] PaddedView outerDerivative(int worker, std::size_t layer, int n) const;

    Engine& engine_;
    Layers& shared_;
    std::vector<Layer>& layers_;
    std::size_t firstOuter_;          // the layers before it are inner ones
    Activations input_;               // output of the dense layer
    std::vector<Activations> inner_;  // outputs of the inner layers
    std::vector<Bench> benches_;      // per worker
    // Per image group: [9][channels] of the output layer's weight, [channels] of the bias before it.
    std::vector<FloatBuffer> outputGradient_;
    std::vector<double> squaredErrors_, imageGradientSums_;  // per image
};

}  // namespace quillmere::network::cpu
