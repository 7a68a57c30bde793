#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/CPU/FloatBuffer.h"
#include "QuillmereCore/Network/CPU/Kernels.h"
#include "QuillmereCore/Network/CPU/PaddedTensor.h"
#include "QuillmereCore/Network/CPU/ParameterLayout.h"
#include "QuillmereCore/Network/Plan.h"
#include "QuillmereCore/Util/Parallel.h"

namespace quillmere::network::cpu {

// A plan on the processor's vector units. Tensors are [image][row][column][channel] with a zero border.
//
// Layers with many channels (inner layers) are worked through for the whole batch: one parallel loop over
// planes multiplies, another over images finishes a layer and transforms the tiles of the next. The others
// (outer layers) are worked through image by image: from the middle of the decoder through output layer, loss
// and back, one image is one task, so that its activations stay in the cache and exist once per worker.
// Gradients are summed per image group and the groups in a fixed order: the number of groups does not depend
// on the number of threads, so neither do the results. Nothing is allocated after construction.
class CPUExecutor final : public Executor {
public:
    CPUExecutor(const Plan& plan, Purpose purpose);

    void setWeights(std::span<const std::vector<float>> weights) override;
    [[nodiscard]] std::vector<std::vector<float>> weights() const override;
    [[nodiscard]] std::vector<std::vector<float>> gradients() const override;
    StepResult step(std::span<const float> x, std::span<const float> eps, float learningRate,
                    float klWeight) override;
    void encode(std::span<const float> x, std::span<float> mean, std::span<float> logVariance) override;
    void decode(std::span<const float> z, std::span<float> images) override;

private:
    // Activations of one layer; derivative is SiLU' and becomes the gradient on the way back. Its view is
    // null when nothing is trained.
    struct Activations {
        PaddedTensor act, derivative;
    };

    struct Layer {
        ConvLayer spec;
        TileGeometry geometry;
        FloatBuffer U, UT, KT;
        FloatBuffer kernel;          // up: the 3x3 kernel as 4x4, [16][lo][hi]
        FloatBuffer kernelGradient;  // the same for its gradient
        FloatBuffer biasTwice;       // up: [2][hi]
        FloatBuffer batchV, batchZ;
        BatchTiles batchTiles;
        LayerWeights weights;
        FloatBuffer dU;                         // [groups][planes][lo][group], unless tiles are kept
        std::vector<float*> dUParts;            // per image group
        std::vector<FloatBuffer> biasGradient;  // per image group: of the bias that feeds this layer's input
    };

    struct Worker {
        FloatBuffer V, Z, M, panel, carry, gradient, strip, recon;
        PaddedTensor dRecon;
        std::vector<Activations> decoder;  // outer decoder layers, one image
        Scratch scratch{};
    };

    // Some rows or columns of a layer's weights.
    struct WeightTask {
        Layer* layer;
        int first, count;
    };

    using ImageRange = std::pair<int, int>;

    [[nodiscard]] bool training() const { return purpose_ == Purpose::training; }
    Activations makeActivations(int images, int height, int width, int channels);
    void makeLayer(Layer& layer, const ConvLayer& spec, bool inner);
    void makeLayers();
    void makeTensors();
    void makeWeightTasks();
    void makeBatchTiles();
    void makeWorkers();
    void makeDense();
    [[nodiscard]] LayerCall call(const Layer& layer, int worker, ImageRange images) const;
    [[nodiscard]] ImageRange group(std::size_t index) const;
    void useImages(std::size_t count);
    void run(std::size_t count, const std::function<void(int index, int worker)>& body);

    // Matrix products split over columns (rows for the transposed ones) into parallel tasks.
    void multiplyParallel(int n, int k, const float* A, const float* B, float* C);
    void multiplyTransposedAParallel(int m, int n, int k, const float* A, int lda, const float* B, float* C);
    void multiplyTransposedBParallel(int n, int k, const float* A, const float* B, float* C);

    // The products of an inner layer.
    void multiplyDown(const Layer& layer);
    void multiplyUp(const Layer& layer);

    void prepareWeights();
    void loadImages(std::span<const float> x);
    void encodeLayers();
    void encodeHeads();
    // All of the decoder's inner layers but for the activations of the last.
    void decodeInner();
    // What remains of an image: last inner layer's activations, outer layers and output layer on a worker's
    // tensors.
    void decodeOuter(Worker& worker, int workerIndex, int image, float* recon);

    double latentForward(std::span<const float> eps);
    void outerDecoderStep();
    void outerDecoderStepForImage(int image, std::size_t groupIndex, int workerIndex);
    void innerDecoderBackward();
    void denseBackward(std::span<const float> eps, float klWeight);
    void encoderBackward();
    void innerGradient(std::size_t layer, std::size_t groupIndex, int worker);
    void collectGradients();
    void collectKeptWeightGradients();
    void collectWeightGradients();
    void collectBiasGradients();
    void update(float learningRate);

    Plan plan_;
    Purpose purpose_;
    const KernelTable& kernels_;
    ParameterLayout layout_;
    WorkerTeam team_;
    int batch_;
    int images_ = 0;  // of the batch, in this call
    int groupSize_;   // images
    int groups_;
    int flat_;  // floats of the flattened deepest tensor, [position][channel]
    bool prepared_ = false;

    FloatArena arena_;
    FloatBuffer parameters_, gradients_, firstMoment_, secondMoment_;
    // encoder_[0] is the layer after the stem.
    std::vector<Layer> encoder_, decoder_;
    std::size_t innerEncoder_ = 0;         // first inner encoder layer
    std::size_t outerDecoder_ = 0;         // first outer decoder layer
    std::vector<WeightTask> rowTasks_;     // all layers
    std::vector<WeightTask> columnTasks_;  // layers whose tiles are kept
    std::vector<Worker> workers_;

    PaddedTensor input_;
    std::vector<Activations> encoderTensors_;  // [0]: output of the stem
    Activations decoderStart_;                 // output of the decoder's dense layer
    std::vector<Activations> decoderTensors_;  // outputs of the inner decoder layers
    // Dense part: [batch][flat], [batch][2 * latentPadded], [batch][latentPadded].
    FloatBuffer flatActivations_, flatGradient_, heads_, headGradient_, deviation_, latent_, latentGradient_;
    FloatBuffer dense_, denseGradient_;
    FloatBuffer batchM_;  // of one inner layer at a time
    // Per image group.
    std::vector<FloatBuffer> stemGradient_;  // [16][channels]
    std::vector<FloatBuffer>
        outputGradient_;  // [9][channels] of the weight, [channels] of the bias before it
    std::vector<double> squaredError_, reconGradientSum_;  // per image
};

}  // namespace quillmere::network::cpu
