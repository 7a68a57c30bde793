#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "QuillmereCore/Network/CPU/Activations.h"
#include "QuillmereCore/Network/CPU/Engine.h"
#include "QuillmereCore/Network/CPU/Layers.h"

namespace quillmere::network::cpu {

// From the images to the flattened deepest tensor, and back: stem (the first layer), outer layers, inner
// layers. The outer part of one image is one parallel task. On the way forward that task also transforms the
// image's tiles for the first inner layer, on the way back it begins with that layer's gradient.
class Encoder {
public:
    Encoder(Engine& engine, Layers& layers);

    // x: [images in use][height][width].
    void load(std::span<const float> x);
    [[nodiscard]] const PaddedView& images() const { return input_.view(); }
    void forward();
    // Activations of the deepest layer, [image][position][channel] within a border.
    [[nodiscard]] const PaddedView& output() const { return tensors_.back().act.view(); }

    // From the gradient of the flattened output, [batch][position][channel], to all gradients of the encoder
    // but those of the layers' weights, which Layers collects.
    void backward(const float* gradient);

private:
    void takeGradient(const float* gradient);
    void backwardInner();
    void backwardOuter();
    void gradientOfInput(std::size_t layer, int group, int worker);
    void collectBiasGradients();

    Engine& engine_;
    Layers& shared_;
    std::vector<Layer>& layers_;
    std::size_t outer_;  // number of outer layers
    PaddedTensor input_;
    std::vector<Activations> tensors_;       // [k]: input of layers_[k]; the last: output
    std::vector<FloatBuffer> stemGradient_;  // per image group: of the stem's weight, [16][channels]
};

}  // namespace quillmere::network::cpu
