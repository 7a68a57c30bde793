#pragma once

#include <cstddef>
#include <vector>

#include "QuillmereCore/Network/CPU/Engine.h"
#include "QuillmereCore/Network/CPU/Kernels.h"
#include "QuillmereCore/Network/CPU/TileGeometry.h"

namespace quillmere::network::cpu {

// A convolutional layer: its weights in the forms that the kernels read, its tiles, its gradients.
struct Layer {
    ConvLayer spec;
    TileGeometry geometry;
    FloatBuffer U, UT, KT;       // as in LayerWeights
    FloatBuffer kernel;          // up: the 3x3 kernel as 4x4, [16][lo][hi]
    FloatBuffer kernelGradient;  // the same for its gradient
    FloatBuffer biasTwice;       // up: [2][hi]
    LayerWeights weights;
    BatchTiles batchTiles;
    std::vector<float*> dU;  // per image group, [planes][lo][group]; empty: the tiles are kept instead
    std::vector<FloatBuffer> biasGradient;  // per image group: of the bias that feeds this layer's input

    // Whether transformed tiles are kept until the end of the step, when one product over all of them makes
    // the weight gradient.
    [[nodiscard]] bool keepsTiles() const { return dU.empty(); }
    [[nodiscard]] float* weightGradient(int group) const { return keepsTiles() ? nullptr : dU[group]; }
};

// All convolutional layers but the first and the last: their memory, and what is done for each in the same
// way.
class Layers {
public:
    explicit Layers(Engine& engine);
    Layers(const Layers&) = delete;
    Layers& operator=(const Layers&) = delete;

    // encoder()[0] is the layer after the first one of the plan.
    [[nodiscard]] std::vector<Layer>& encoder() noexcept { return encoder_; }
    [[nodiscard]] std::vector<Layer>& decoder() noexcept { return decoder_; }
    // Number of outer layers, which come first in the encoder, and of inner ones, which come first in the
    // decoder.
    [[nodiscard]] std::size_t outerEncoder() const noexcept { return outerEncoder_; }
    [[nodiscard]] std::size_t innerDecoder() const noexcept { return innerDecoder_; }

    // What a kernel needs to work on some images of a layer.
    [[nodiscard]] LayerCall call(const Layer& layer, int worker, ImageRange images) const;

    // The products of an inner layer, for all images in use.
    void multiplyDown(const Layer& layer);
    void multiplyUp(const Layer& layer);

    // Brings the engine's parameters into the forms that the kernels read.
    void prepareWeights();
    // The weight gradients of all layers, from what the kernels left on the way back.
    void collectWeightGradients();

private:
    // Some rows or columns of a layer's weights: one parallel task.
    struct WeightTask {
        Layer* layer;
        int first, count;
    };
    struct WorkerMemory {
        Scratch scratch{};
        FloatBuffer gradient;  // for weightGradientColumns
    };

    void makeLayer(Layer& layer, const ConvLayer& spec);
    void makeWeights(Layer& layer);
    void makeGradients(Layer& layer);
    void makeBatchTiles();
    void makeWorkers();
    void makeWeightTasks(Layer& layer);
    void multiply(const Layer& layer, int width, decltype(KernelTable::productsDown) products);
    [[nodiscard]] float* kernelGradient(const Layer& layer) const;
    void multiplyKeptTiles();
    void finishWeightGradients();

    template <class Body>
    void forEachLayer(Body body) {
        for (std::vector<Layer>* layers : {&encoder_, &decoder_}) {
            for (Layer& layer : *layers)
                body(layer);
        }
    }

    Engine& engine_;
    std::vector<Layer> encoder_, decoder_;
    std::size_t outerEncoder_ = 0;
    std::size_t innerDecoder_ = 0;
    std::vector<WeightTask> rowTasks_;     // all layers
    std::vector<WeightTask> columnTasks_;  // layers that keep their tiles
    std::vector<WorkerMemory> workers_;
};

}  // namespace quillmere::network::cpu
