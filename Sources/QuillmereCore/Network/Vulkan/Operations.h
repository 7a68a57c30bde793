#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "QuillmereCore/Network/Plan.h"
#include "QuillmereCore/Network/Vulkan/Context.h"
#include "QuillmereCore/Network/Vulkan/Sequence.h"
#include "QuillmereCore/Network/Vulkan/Tuning.h"

namespace quillmere::network::vulkan {

// Tensors in device memory, each a buffer of its own. Ranges stay valid while the object lives.
class Tensors {
public:
    explicit Tensors(const Context& context) : context_(context) {}
    // Throws DeviceError.
    Range make(std::uint64_t count, Buffer::Place place = Buffer::Place::device);
    [[nodiscard]] std::uint64_t bytes() const { return bytes_; }

private:
    const Context& context_;
    std::deque<Buffer> buffers_;  // their addresses stay
    std::uint64_t bytes_ = 0;
};

// A matrix in a tensor: element (row, column) at row * rowStride + column * columnStride.
struct Matrix {
    Range range;
    std::uint32_t rowStride = 0, columnStride = 0;

    [[nodiscard]] Matrix transposed() const { return {range, columnStride, rowStride}; }
};
[[nodiscard]] inline Matrix rowMajor(const Range& range, int columns) {
    return {range, static_cast<std::uint32_t>(columns), 1};
}

// Sums left in slices: [slices][count].
struct Slices {
    Range parts;
    std::uint32_t slices = 0;
};

// What is done to the result of a product before it is stored. Empty ranges and false leave a part out.
struct Epilogue {
    Range bias{};  // added: one per channel or, for a plain product, per column
    bool silu = false;
    Range derivative{};  // receives the derivative of SiLU; like the result
    Range factor{};      // multiplies the result; like it
};

// The sizes of the 4x4, stride 2, padding 1 operator between hi [images][hiChannels][2 loHeight][2 loWidth]
// and lo [images][loChannels][loHeight][loWidth].
struct ConvSize {
    std::uint32_t images = 0, loChannels = 0, hiChannels = 0, loHeight = 0, loWidth = 0;
    // down and up compute at least these first images. They do it with the shader compiled for all images, in
    // fewer groups: what is computed gets the same bits, and what shares a group with it may be computed too.
    std::uint32_t wanted = 0;

    ConvSize(const ConvLayer& layer, int batch) : ConvSize(layer, batch, batch) {}
    ConvSize(const ConvLayer& layer, int batch, int firstImages);
    [[nodiscard]] std::uint64_t loPixels() const { return std::uint64_t{loHeight} * loWidth; }
    [[nodiscard]] std::uint64_t loCount() const { return images * loChannels * loPixels(); }
    [[nodiscard]] std::uint64_t hiCount() const { return images * hiChannels * loPixels() * 4; }
    [[nodiscard]] std::uint64_t kernelCount() const { return std::uint64_t{loChannels} * hiChannels * 16; }
};

// Adds the network's operations to a sequence. Scratch tensors come from tensors. The name of each
// operation is what profiles show.
class Operations {
public:
    Operations(Context& context, Sequence& sequence, Tensors& tensors);

    // lo from hi: the convolution of a down layer, the data gradient of an up layer. kernel: [lo][hi][4][4].
    void addDown(const std::string& name, const ConvSize& size, const Range& kernel, const Range& hi,
                 const Range& lo, const Epilogue& epilogue);
    // hi from lo: an up layer, the data gradient of a down layer.
    void addUp(const std::string& name, const ConvSize& size, const Range& kernel, const Range& lo,
               const Range& hi, const Epilogue& epilogue);
    // Gradient [lo][hi][4][4] of the kernel from one side's values and the other's gradient.
    void addKernelGradient(const std::string& name, const ConvSize& size, const Range& lo, const Range& hi,
                           const Range& gradient);
    // The same as gradient [hi][lo][3][3] of the kernel that an up layer is stored as.
    void addKernelGradient3x3(const std::string& name, const ConvSize& size, const Range& lo, const Range& hi,
                              const Range& gradient);
    // The kernel of an up layer [hi][lo][3][3] as [lo][hi][4][4].
    void addExpandKernel(const std::string& name, const ConvSize& size, const Range& kernel,
                         const Range& expanded);
    // total[channel] of tensor [images][channels][pixels].
    void addChannelSums(const std::string& name, std::uint32_t images, std::uint32_t channels,
                        std::uint64_t pixels, const Range& tensor, const Range& total);

    // a [rows][depth] * b [depth][columns], row-major.
    void addProduct(const std::string& name, const ProductSize& size, const Matrix& a, const Matrix& b,
                    const Range& result, const Epilogue& epilogue);
    // The same with the depth in slices, for few rows and columns and a great depth.
    [[nodiscard]] Slices addSlicedProduct(const std::string& name, const ProductSize& size, const Matrix& a,
                                          const Matrix& b);
    // total[i] = bias[i % bias.count] + the sum of the slices; without bias the sum alone.
    void addSumSlices(const std::string& name, const Slices& slices, const Range& total, const Range& bias);

    // tensor: input of the last layer, [images][channels][height][width].
    void addOutputImage(const OutputLayer& layer, int images, const Range& tensor, const Range& kernel,
                        const Range& bias, const Range& image);
    // Gradient of the output and sums of the weighted squared errors in parts.
    [[nodiscard]] Range addOutputLoss(const OutputLayer& layer, const LossTerm& loss, int batch,
                                      const Range& tensor, const Range& kernel, const Range& bias,
                                      const Range& target, const Range& gradient);
    void addOutputDataGradient(const OutputLayer& layer, int batch, const Range& gradient,
                               const Range& kernel, const Range& factor, const Range& result);
    void addOutputWeightGradient(const OutputLayer& layer, int batch, const Range& gradient,
                                 const Range& tensor, const Range& kernelGradient, const Range& biasGradient);

    // logVariance is not clamped yet.
    void addLatent(const LatentStep& step, const Range& mean, const Range& logVariance, const Range& eps,
                   const Range& z, const Range& kl);
    void addLatentGradient(const LatentStep& step, const Slices& zGradient, const Range& mean,
                           const Range& logVariance, const Range& eps, const Range& scalars,
                           const Range& meanGradient, const Range& logVarianceGradient);
    void addFlattenedGradient(int batch, const DenseLayer& head, const Range& meanGradient,
                              const Range& logVarianceGradient, const Range& meanWeight,
                              const Range& logVarianceWeight, const Range& factor, const Range& result);
    // result: mse, kl.
    void addLoss(const Range& errorParts, std::uint64_t pixels, const Range& kl, const Range& result);
    // scalars: learning rate, KL weight.
    void addAdam(const Optimiser& optimiser, const Range& parameters, const Range& gradients,
                 const Range& first, const Range& second, const Range& scalars);

private:
    enum class Map : std::uint32_t { down, up, kernelGradient, dense };

    struct ProductCall {
        std::string name;
        Map map{};
        ProductSize size;
        std::uint64_t columns = 0;               // dispatched: the first of size.columns
        std::array<std::uint32_t, 5> shape{};    // images, loChannels, hiChannels, loHeight, loWidth
        std::array<std::uint32_t, 4> strides{};  // dense only
        Range a, b;
        Range result{};
        std::uint32_t slice = 0;
        Epilogue epilogue{};
    };

    [[nodiscard]] static std::array<std::uint32_t, 5> shapeOf(const ConvSize& size);
    [[nodiscard]] static ProductCall denseCall(const std::string& name, const ProductSize& size,
                                               const Matrix& a, const Matrix& b);
    void add(const ProductCall& call);
    [[nodiscard]] Slices addSliced(ProductCall call);
    [[nodiscard]] Slices addSlicedKernelGradient(const std::string& name, const ConvSize& size,
                                                 const Range& lo, const Range& hi);
    // One thread per item.
    void addPerItem(Dispatch dispatch, std::uint64_t items);

    Sequence& sequence_;
    Tensors& tensors_;
    Tuning tuning_;
};

}  // namespace quillmere::network::vulkan
