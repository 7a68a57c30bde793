#pragma once

#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/Vulkan/Context.h"
#include "QuillmereCore/Network/Vulkan/Operations.h"
#include "QuillmereCore/Network/Vulkan/Sequence.h"

namespace quillmere::network::vulkan {

// A plan on a graphics processor. Tensors are [image][channel][row][column], parameters have the plan's own
// layout, each on a boundary of 64 floats in one array; gradients and moments likewise.
//
// A step is one sequence, recorded at construction: the images, the noise and two scalars go up, two scalars
// come down, everything else stays on the device. encode and decode are recorded once per number of images,
// at the first call with it; for whole batches at construction already, unless the executor is for training,
// where few ask for them. The memory that training needs is taken at construction.
class VulkanExecutor final : public Executor {
public:
    // All weights are zero. Throws DeviceError if the device cannot take the plan, or was lost.
    VulkanExecutor(std::shared_ptr<Context> context, const Plan& plan, Purpose purpose,
                   Sequence::Mode mode = Sequence::Mode::plain);

    void setWeights(std::span<const std::vector<float>> weights) override;
    [[nodiscard]] std::vector<std::vector<float>> weights() const override;
    [[nodiscard]] std::vector<std::vector<float>> gradients() const override;
    StepResult step(std::span<const float> x, std::span<const float> eps, float learningRate,
                    float klWeight) override;
    void encode(std::span<const float> x, std::span<float> mean, std::span<float> logVariance) override;
    void decode(std::span<const float> z, std::span<float> images) override;

    [[nodiscard]] const Sequence& stepSequence() const { return *step_; }
    // Of all buffers, those that the host sees included.
    [[nodiscard]] std::uint64_t tensorBytes() const { return tensors_.bytes(); }

private:
    // Output of a layer. derivative is that of its SiLU, kept for training.
    struct LayerOutput {
        Range value, derivative;
    };
    // All parameters, or what belongs to each of them, in one array.
    struct Arena {
        Range whole;
        std::vector<Range> each;
    };

    [[nodiscard]] bool training() const { return purpose_ == Purpose::training; }
    [[nodiscard]] std::uint64_t pixels() const { return plan_.imageSize() * plan_.batch; }
    [[nodiscard]] std::uint64_t latents() const;
    [[nodiscard]] std::uint64_t flattened() const;
    [[nodiscard]] ConvSize sizeOf(const ConvLayer& layer) const { return {layer, plan_.batch}; }
    // The number of items of a batch that values are.
    [[nodiscard]] int itemsOf(std::span<const float> values, std::uint64_t itemSize) const;

    Arena makeArena();
    void makeTensors();
    void makeActivations();
    void makeGradients();
    [[nodiscard]] std::unique_ptr<Sequence> newSequence() const;

    void recordTransfers();
    void recordStep();
    // For the first images of a batch.
    [[nodiscard]] std::unique_ptr<Sequence> recordEncode(int images);
    [[nodiscard]] std::unique_ptr<Sequence> recordDecode(int images);

    // Each adds the operations of its part to the sequence, in the order in which they run. Those of the
    // encoder and the decoder compute at least the first images of the batch. The dense layers compute all of
    // them: fewer would take as long.
    void addStep(Operations& operations);
    void addEncoder(Operations& operations, int images);
    void addHead(Operations& operations, const std::string& name, const DenseLayer& head,
                 const Range& result);
    void addDecoder(Operations& operations, int images);
    // Return the gradient of the part's input (before its SiLU).
    Range addDecoderBackward(Operations& operations, Range gradient);
    Range addLatentBackward(Operations& operations, const Range& gradient);
    void addEncoderBackward(Operations& operations, Range gradient);
    void addHeadBackward(Operations& operations, const std::string& name, const DenseLayer& head,
                         const Range& gradient);
    // The gradient buffer that gradient is not in.
    [[nodiscard]] Range otherGradient(const Range& gradient, std::uint64_t count) const;

    // What staging_ holds, one array per parameter.
    [[nodiscard]] std::vector<std::vector<float>> staged() const;

    std::shared_ptr<Context> context_;
    Plan plan_;
    Purpose purpose_;
    Sequence::Mode mode_;
    Tensors tensors_;

    Arena parameters_, parameterGradients_, first_, second_;  // all but the first in training only
    Range upload_;                                            // images, noise, scalars
    Range download_;                                          // results of a step, encode or decode
    Range staging_;                                           // an arena on its way up or down
    Range x_, eps_, scalars_, results_;
    std::vector<LayerOutput> encoder_, decoder_;  // outputs of the layers
    LayerOutput decoderStart_;                    // output of the dense layer before the decoder
    std::vector<Range> kernels_;                  // 4x4 kernels of the decoder layers
    Range mean_, logVariance_, z_, kl_, image_;
    Range meanGradient_, logVarianceGradient_;
    Range gradientA_, gradientB_;  // of activations, used in turns

    std::unique_ptr<Sequence> load_, save_;  // the weights from and to staging_
    std::unique_ptr<Sequence> step_;
    std::map<int, std::unique_ptr<Sequence>> encode_, decode_;  // by the number of images
};

}  // namespace quillmere::network::vulkan
