#include "QuillmereCore/Network/Vulkan/Operations.h"

#include <bit>

namespace quillmere::network::vulkan {
namespace {

constexpr std::uint64_t groupThreads = 128;  // of every shader but the product
// Values that one group of a sum over pixels adds up.
constexpr std::uint64_t pixelsPerSlice = 8192;

// Bits of the product's epilogue, as in Product.comp.
constexpr std::uint32_t addBias = 1;
constexpr std::uint32_t applySilu = 2;
constexpr std::uint32_t keepDerivative = 4;
constexpr std::uint32_t timesOperand = 8;

std::uint32_t narrow(std::uint64_t value) {
    // No storage buffer has more bytes than this, and nothing here has more items than a buffer.
    require(value <= UINT32_MAX, "more items than a tensor can have");
    return static_cast<std::uint32_t>(value);
}

std::uint32_t narrow(int value) {
    return static_cast<std::uint32_t>(value);
}

std::uint32_t bits(float value) {
    return std::bit_cast<std::uint32_t>(value);
}

std::uint64_t divideUp(std::uint64_t a, std::uint64_t b) {
    return (a + b - 1) / b;
}

std::uint32_t bitsOf(const Epilogue& epilogue) {
    std::uint32_t result = 0;
    if (!epilogue.bias.isEmpty()) result |= addBias;
    if (epilogue.silu) result |= applySilu;
    if (!epilogue.derivative.isEmpty()) result |= keepDerivative;
    if (!epilogue.factor.isEmpty()) result |= timesOperand;
    return result;
}

std::vector<std::uint32_t> outputArguments(const OutputLayer& layer, int batch) {
    return {narrow(batch), narrow(layer.channels), narrow(layer.height), narrow(layer.width)};
}

std::uint64_t pixelsOf(const OutputLayer& layer, int batch) {
    return static_cast<std::uint64_t>(batch) * layer.height * layer.width;
}

}  // namespace

Range Tensors::make(std::uint64_t count, Buffer::Place place) {
    const Buffer& buffer = buffers_.emplace_back(context_.makeBuffer(count, place));
    bytes_ += buffer.bytes();
    return rangeOf(buffer, count);
}

ConvSize::ConvSize(const ConvLayer& layer, int batch, int firstImages)
    : images(narrow(batch)),
      loChannels(narrow(layer.loChannels)),
      hiChannels(narrow(layer.hiChannels)),
      loHeight(narrow(layer.loHeight)),
      loWidth(narrow(layer.loWidth)),
      wanted(narrow(firstImages)) {}

Operations::Operations(Context& context, Sequence& sequence, Tensors& tensors)
    : sequence_(sequence), tensors_(tensors), tuning_(context.tuning()) {}

void Operations::addPerItem(Dispatch dispatch, std::uint64_t items) {
    narrow(items);
    dispatch.groups = linearGroups(divideUp(items, groupThreads));
    sequence_.dispatch(std::move(dispatch));
}

// ---- Products

std::array<std::uint32_t, 5> Operations::shapeOf(const ConvSize& size) {
    return {size.images, size.loChannels, size.hiChannels, size.loHeight, size.loWidth};
}

void Operations::add(const ProductCall& call) {
    const Tile tile = tileFor(tuning_, call.size);
    const Epilogue& epilogue = call.epilogue;
    require(epilogue.bias.isEmpty() || epilogue.factor.isEmpty(), "a product takes one operand");
    const Range& operand = !epilogue.bias.isEmpty()     ? epilogue.bias
                           : !epilogue.factor.isEmpty() ? epilogue.factor
                                                        : call.a;
    const Range& derivative = epilogue.derivative.isEmpty() ? call.result : epilogue.derivative;
    std::vector<std::uint32_t> constants{tuning_.threadRows * tuning_.threadColumns,
                                         static_cast<std::uint32_t>(call.map),
                                         tuning_.threadColumns,
                                         tile.rowsPerThread,
                                         tuning_.columnsPerThread,
                                         tuning_.depth};
    constants.insert(constants.end(), call.shape.begin(), call.shape.end());
    constants.insert(constants.end(), {call.slice, bitsOf(epilogue)});
    constants.insert(constants.end(), call.strides.begin(), call.strides.end());
    const std::uint32_t layers = call.map == Map::up ? 4U  // one per parity of the result's rows and columns
                                 : call.slice > 0    ? narrow(divideUp(call.size.depth, call.slice))
                                                     : 1U;
    sequence_.dispatch({.name = call.name,
                        .shader = Shader::product,
                        .constants = std::move(constants),
                        .buffers = {in(call.a), in(call.b), out(call.result), in(operand), out(derivative)},
                        .groups = {narrow(divideUp(call.columns, tile.columns)),
                                   narrow(divideUp(call.size.rows, tile.rows)), layers}});
}

Slices Operations::addSliced(ProductCall call) {
    call.slice = sliceDepth(tuning_, call.size);
    const std::uint32_t slices = narrow(divideUp(call.size.depth, call.slice));
    call.result = tensors_.make(slices * call.size.rows * call.size.columns);
    add(call);
    return {call.result, slices};
}

void Operations::addDown(const std::string& name, const ConvSize& size, const Range& kernel, const Range& hi,
                         const Range& lo, const Epilogue& epilogue) {
    const ProductSize product{size.loChannels, size.images * size.loPixels(),
                              std::uint64_t{size.hiChannels} * 16};
    add({.name = name,
         .map = Map::down,
         .size = product,
         .columns = size.wanted * size.loPixels(),
         .shape = shapeOf(size),
         .a = kernel,
         .b = hi,
         .result = lo,
         .epilogue = epilogue});
}

void Operations::addUp(const std::string& name, const ConvSize& size, const Range& kernel, const Range& lo,
                       const Range& hi, const Epilogue& epilogue) {
    const ProductSize product{size.hiChannels, size.images * size.loPixels(),
                              std::uint64_t{size.loChannels} * 4};
    add({.name = name,
         .map = Map::up,
         .size = product,
         .columns = size.wanted * size.loPixels(),
         .shape = shapeOf(size),
         .a = kernel,
         .b = lo,
         .result = hi,
         .epilogue = epilogue});
}

Slices Operations::addSlicedKernelGradient(const std::string& name, const ConvSize& size, const Range& lo,
                                           const Range& hi) {
    const ProductSize product{size.loChannels, std::uint64_t{size.hiChannels} * 16,
                              size.images * size.loPixels()};
    return addSliced({.name = name,
                      .map = Map::kernelGradient,
                      .size = product,
                      .columns = product.columns,
                      .shape = shapeOf(size),
                      .a = lo,
                      .b = hi});
}

void Operations::addKernelGradient(const std::string& name, const ConvSize& size, const Range& lo,
                                   const Range& hi, const Range& gradient) {
    addSumSlices(name + " sum", addSlicedKernelGradient(name, size, lo, hi), gradient, {});
}

void Operations::addKernelGradient3x3(const std::string& name, const ConvSize& size, const Range& lo,
                                      const Range& hi, const Range& gradient) {
    const Slices slices = addSlicedKernelGradient(name, size, lo, hi);
    addPerItem({.name = name + " fold",
                .shader = Shader::foldKernelGradient,
                .buffers = {in(slices.parts), out(gradient)},
                .arguments = {slices.slices, size.hiChannels, size.loChannels}},
               gradient.count);
}

void Operations::addExpandKernel(const std::string& name, const ConvSize& size, const Range& kernel,
                                 const Range& expanded) {
    addPerItem({.name = name,
                .shader = Shader::expandKernel,
                .buffers = {in(kernel), out(expanded)},
                .arguments = {size.hiChannels, size.loChannels}},
               expanded.count);
}

Operations::ProductCall Operations::denseCall(const std::string& name, const ProductSize& size,
                                              const Matrix& a, const Matrix& b) {
    return {.name = name,
            .map = Map::dense,
            .size = size,
            .columns = size.columns,
            .shape = {1, narrow(size.rows), narrow(size.columns), narrow(size.depth), 1},
            .strides = {a.rowStride, a.columnStride, b.rowStride, b.columnStride},
            .a = a.range,
            .b = b.range};
}

void Operations::addProduct(const std::string& name, const ProductSize& size, const Matrix& a,
                            const Matrix& b, const Range& result, const Epilogue& epilogue) {
    ProductCall call = denseCall(name, size, a, b);
    call.result = result;
    call.epilogue = epilogue;
    add(call);
}

Slices Operations::addSlicedProduct(const std::string& name, const ProductSize& size, const Matrix& a,
                                    const Matrix& b) {
    return addSliced(denseCall(name, size, a, b));
}

// ---- Sums

void Operations::addSumSlices(const std::string& name, const Slices& slices, const Range& total,
                              const Range& bias) {
    const bool withBias = !bias.isEmpty();
    addPerItem({.name = name,
                .shader = Shader::sumSlices,
                .constants = {withBias ? 1U : 0U},
                .buffers = {in(slices.parts), out(total), in(withBias ? bias : slices.parts)},
                .arguments = {slices.slices, narrow(total.count), withBias ? narrow(bias.count) : 1}},
               total.count);
}

void Operations::addChannelSums(const std::string& name, std::uint32_t images, std::uint32_t channels,
                                std::uint64_t pixels, const Range& tensor, const Range& total) {
    const std::uint32_t slices = narrow(divideUp(images * pixels, pixelsPerSlice));
    const Range parts = tensors_.make(std::uint64_t{slices} * channels);
    const std::uint32_t perSlice = narrow(divideUp(images * pixels, slices));
    sequence_.dispatch({.name = name,
                        .shader = Shader::channelSums,
                        .buffers = {in(tensor), out(parts)},
                        .arguments = {images, channels, narrow(pixels), perSlice},
                        .groups = {slices, channels, 1}});
    addSumSlices(name + " sum", {parts, slices}, total, {});
}

// ---- Last layer

void Operations::addOutputImage(const OutputLayer& layer, int images, const Range& tensor,
                                const Range& kernel, const Range& bias, const Range& image) {
    std::vector<std::uint32_t> arguments = outputArguments(layer, images);
    arguments.insert(arguments.end(), {0, 0});
    // The buffers of the loss are not touched.
    addPerItem({.name = "output",
                .shader = Shader::output,
                .constants = {0},
                .buffers = {in(tensor), in(kernel), in(bias), in(tensor), out(image), out(image), out(image)},
                .arguments = std::move(arguments)},
               pixelsOf(layer, images));
}

Range Operations::addOutputLoss(const OutputLayer& layer, const LossTerm& loss, int batch,
                                const Range& tensor, const Range& kernel, const Range& bias,
                                const Range& target, const Range& gradient) {
    const std::uint64_t pixels = pixelsOf(layer, batch);
    // Every group writes a part, those of an incomplete last line that have no pixel included.
    const auto groups = linearGroups(divideUp(pixels, groupThreads));
    const Range parts = tensors_.make(std::uint64_t{groups[0]} * groups[1]);
    std::vector<std::uint32_t> arguments = outputArguments(layer, batch);
    arguments.insert(arguments.end(), {bits(loss.threshold), bits(loss.extraWeight)});
    addPerItem(
        {.name = "output and loss",
         .shader = Shader::output,
         .constants = {1},
         .buffers = {in(tensor), in(kernel), in(bias), in(target), out(gradient), out(gradient), out(parts)},
         .arguments = std::move(arguments)},
        pixels);
    return parts;
}

void Operations::addOutputDataGradient(const OutputLayer& layer, int batch, const Range& gradient,
                                       const Range& kernel, const Range& factor, const Range& result) {
    addPerItem({.name = "output data gradient",
                .shader = Shader::outputDataGradient,
                .buffers = {in(gradient), in(kernel), in(factor), out(result)},
                .arguments = outputArguments(layer, batch)},
               pixelsOf(layer, batch));
}

void Operations::addOutputWeightGradient(const OutputLayer& layer, int batch, const Range& gradient,
                                         const Range& tensor, const Range& kernelGradient,
                                         const Range& biasGradient) {
    const std::uint64_t pixels = pixelsOf(layer, batch);
    const std::uint32_t slices = narrow(divideUp(pixels, pixelsPerSlice));
    const Range parts = tensors_.make(slices * kernelGradient.count);
    std::vector<std::uint32_t> arguments = outputArguments(layer, batch);
    arguments.push_back(narrow(divideUp(pixels, slices)));
    sequence_.dispatch({.name = "output weight gradient",
                        .shader = Shader::outputWeightGradient,
                        .buffers = {in(gradient), in(tensor), out(parts)},
                        .arguments = std::move(arguments),
                        .groups = {slices, narrow(layer.channels), 1}});
    addSumSlices("output weight gradient sum", {parts, slices}, kernelGradient, {});
    addChannelSums("output bias gradient", narrow(batch), 1, pixels / narrow(batch), gradient, biasGradient);
}

// ---- Latent step, loss, update

void Operations::addLatent(const LatentStep& step, const Range& mean, const Range& logVariance,
                           const Range& eps, const Range& z, const Range& kl) {
    sequence_.dispatch({.name = "latent",
                        .shader = Shader::latent,
                        .buffers = {in(mean), in(logVariance), in(eps), out(z), out(kl)},
                        .arguments = {narrow(mean.count), bits(step.logVarMin), bits(step.logVarMax)}});
}

void Operations::addLatentGradient(const LatentStep& step, const Slices& zGradient, const Range& mean,
                                   const Range& logVariance, const Range& eps, const Range& scalars,
                                   const Range& meanGradient, const Range& logVarianceGradient) {
    addPerItem(
        {.name = "latent gradient",
         .shader = Shader::latentGradient,
         .buffers = {in(zGradient.parts), in(mean), in(logVariance), in(eps), in(scalars), out(meanGradient),
                     out(logVarianceGradient)},
         .arguments = {zGradient.slices, narrow(mean.count), bits(step.logVarMin), bits(step.logVarMax)}},
        mean.count);
}

void Operations::addFlattenedGradient(int batch, const DenseLayer& head, const Range& meanGradient,
                                      const Range& logVarianceGradient, const Range& meanWeight,
                                      const Range& logVarianceWeight, const Range& factor,
                                      const Range& result) {
    addPerItem({.name = "flattened gradient",
                .shader = Shader::flattenedGradient,
                .buffers = {in(meanGradient), in(logVarianceGradient), in(meanWeight), in(logVarianceWeight),
                            in(factor), out(result)},
                .arguments = {narrow(batch), narrow(head.inputs), narrow(head.outputs)}},
               result.count);
}

void Operations::addLoss(const Range& errorParts, std::uint64_t pixels, const Range& kl,
                         const Range& result) {
    sequence_.dispatch({.name = "loss",
                        .shader = Shader::loss,
                        .buffers = {in(errorParts), in(kl), out(result)},
                        .arguments = {narrow(errorParts.count), narrow(pixels)}});
}

void Operations::addAdam(const Optimiser& optimiser, const Range& parameters, const Range& gradients,
                         const Range& first, const Range& second, const Range& scalars) {
    addPerItem({.name = "adam",
                .shader = Shader::adam,
                .buffers = {inOut(parameters), in(gradients), inOut(first), inOut(second), in(scalars)},
                .arguments = {narrow(parameters.count), bits(optimiser.beta1), bits(1.0F - optimiser.beta1),
                              bits(optimiser.beta2), bits(1.0F - optimiser.beta2), bits(optimiser.epsilon)}},
               parameters.count);
}

}  // namespace quillmere::network::vulkan
