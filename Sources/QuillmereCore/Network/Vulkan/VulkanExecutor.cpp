#include "QuillmereCore/Network/Vulkan/VulkanExecutor.h"

#include <algorithm>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::network::vulkan {
namespace {

// In floats: 256 bytes, the coarsest boundary at which a device may want a shader's view of a buffer to
// begin.
constexpr std::uint64_t boundary = 64;

constexpr std::uint64_t stepScalars = 2;  // learning rate and KL weight; mean squared error and KL term

Range part(const Range& range, std::uint64_t first, std::uint64_t count) {
    require(first + count <= range.count, "a range goes beyond its tensor");
    return {range.buffer, range.first + first, count};
}

// Floats that the host sees.
std::span<float> floats(const Range& range) {
    return range.buffer->floats().subspan(range.first, range.count);
}

void put(std::span<const float> values, const Range& range) {
    require(values.size() == range.count, "wrong number of values for a tensor");
    std::copy(values.begin(), values.end(), floats(range).begin());
}

void get(const Range& range, std::span<float> values) {
    require(values.size() == range.count, "wrong number of values of a tensor");
    std::copy_n(floats(range).begin(), values.size(), values.begin());
}

std::string layerName(const char* part, std::size_t index) {
    return part + std::to_string(index);
}

void checkLayers(const std::vector<ConvLayer>& layers, ConvLayer::Kind kind) {
    for (const ConvLayer& layer : layers) {
        require(layer.kind == kind, "the encoder goes down and the decoder up");
        require(layer.activation == Activation::silu, "convolution layers end in SiLU");
    }
}

}  // namespace

VulkanExecutor::VulkanExecutor(std::shared_ptr<Context> context, const Plan& plan, Purpose purpose,
                               Sequence::Mode mode)
    : context_(std::move(context)), plan_(plan), purpose_(purpose), mode_(mode), tensors_(*context_) {
    checkLayers(plan_.encoder, ConvLayer::Kind::down);
    checkLayers(plan_.decoder, ConvLayer::Kind::up);
    makeTensors();
    recordTransfers();
    if (training()) {
        recordStep();
    } else {
        encode_[plan_.batch] = recordEncode(plan_.batch);
        decode_[plan_.batch] = recordDecode(plan_.batch);
    }
    // Also finds out whether the device has been lost since it was opened, while another one can still take
    // its place.
    std::fill(floats(staging_).begin(), floats(staging_).end(), 0.0F);
    load_->run();
}

std::uint64_t VulkanExecutor::latents() const {
    return static_cast<std::uint64_t>(plan_.batch) * plan_.latent.dim;
}

std::uint64_t VulkanExecutor::flattened() const {
    return static_cast<std::uint64_t>(plan_.batch) * plan_.mean.inputs;
}

int VulkanExecutor::itemsOf(std::span<const float> values, std::uint64_t itemSize) const {
    const std::uint64_t items = values.size() / itemSize;
    require(values.size() == items * itemSize && items <= static_cast<std::uint64_t>(plan_.batch),
            "wrong number of values for a batch");
    return static_cast<int>(items);
}

// ---- Tensors

VulkanExecutor::Arena VulkanExecutor::makeArena() {
    std::vector<std::uint64_t> firsts;
    std::uint64_t total = 0;
    for (const ParameterShape& parameter : plan_.parameters) {
        firsts.push_back(total);
        total += (parameter.elementCount() + boundary - 1) / boundary * boundary;
    }
    Arena arena;
    arena.whole = tensors_.make(total);
    for (std::size_t p = 0; p < firsts.size(); ++p)
        arena.each.push_back(part(arena.whole, firsts[p], plan_.parameters[p].elementCount()));
    return arena;
}

void VulkanExecutor::makeTensors() {
    upload_ = tensors_.make(pixels() + latents() + stepScalars, Buffer::Place::upload);
    download_ = tensors_.make(std::max(pixels(), 2 * latents()), Buffer::Place::download);
    parameters_ = makeArena();
    // One buffer for both ways, of the kind that the host reads fast.
    staging_ = tensors_.make(parameters_.whole.count, Buffer::Place::download);
    x_ = tensors_.make(pixels());
    image_ = training() ? Range{} : tensors_.make(pixels());
    for (Range* const tensor : {&mean_, &logVariance_, &z_})
        *tensor = tensors_.make(latents());
    for (const ConvLayer& layer : plan_.decoder)
        kernels_.push_back(tensors_.make(sizeOf(layer).kernelCount()));
    makeActivations();
    if (training()) makeGradients();
}

void VulkanExecutor::makeActivations() {
    std::uint64_t most = flattened();
    for (const ConvLayer& layer : plan_.encoder)
        most = std::max(most, sizeOf(layer).loCount());
    for (const ConvLayer& layer : plan_.decoder)
        most = std::max(most, sizeOf(layer).hiCount());
    gradientA_ = tensors_.make(most);
    gradientB_ = tensors_.make(most);
    // Without training no layer's output outlives the next layer: the two buffers hold them in turns.
    std::size_t turn = 0;
    const auto make = [&](std::uint64_t count) -> LayerOutput {
        if (training()) return {tensors_.make(count), tensors_.make(count)};
        return {part(turn++ % 2 == 0 ? gradientA_ : gradientB_, 0, count), {}};
    };
    for (const ConvLayer& layer : plan_.encoder)
        encoder_.push_back(make(sizeOf(layer).loCount()));
    decoderStart_ = make(flattened());
    for (const ConvLayer& layer : plan_.decoder)
        decoder_.push_back(make(sizeOf(layer).hiCount()));
}

void VulkanExecutor::makeGradients() {
    parameterGradients_ = makeArena();
    first_ = makeArena();
    second_ = makeArena();
    eps_ = tensors_.make(latents());
    scalars_ = tensors_.make(stepScalars);
    results_ = tensors_.make(stepScalars);
    kl_ = tensors_.make(1);
    image_ = tensors_.make(pixels());  // in a step the gradient of the image
    meanGradient_ = tensors_.make(latents());
    logVarianceGradient_ = tensors_.make(latents());
}

std::unique_ptr<Sequence> VulkanExecutor::newSequence() const {
    return std::make_unique<Sequence>(*context_, mode_);
}

// ---- Forward

void VulkanExecutor::addEncoder(Operations& operations, int images) {
    Range input = x_;
    for (std::size_t k = 0; k < plan_.encoder.size(); ++k) {
        const ConvLayer& layer = plan_.encoder[k];
        operations.addDown(
            layerName("enc", k), {layer, plan_.batch, images}, parameters_.each[layer.weight], input,
            encoder_[k].value,
            {.bias = parameters_.each[layer.bias], .silu = true, .derivative = encoder_[k].derivative});
        input = encoder_[k].value;
    }
    addHead(operations, "mean", plan_.mean, mean_);
    addHead(operations, "logvar", plan_.logVariance, logVariance_);
}

void VulkanExecutor::addHead(Operations& operations, const std::string& name, const DenseLayer& head,
                             const Range& result) {
    const ProductSize size{static_cast<std::uint64_t>(plan_.batch), static_cast<std::uint64_t>(head.outputs),
                           static_cast<std::uint64_t>(head.inputs)};
    const Slices slices =
        operations.addSlicedProduct(name, size, rowMajor(encoder_.back().value, head.inputs),
                                    rowMajor(parameters_.each[head.weight], head.outputs));
    operations.addSumSlices(name + " sum", slices, result, parameters_.each[head.bias]);
}

void VulkanExecutor::addDecoder(Operations& operations, int images) {
    const DenseLayer& dense = plan_.decoderInput;
    const ProductSize size{static_cast<std::uint64_t>(plan_.batch), static_cast<std::uint64_t>(dense.outputs),
                           static_cast<std::uint64_t>(dense.inputs)};
    operations.addProduct("dense", size, rowMajor(z_, dense.inputs),
                          rowMajor(parameters_.each[dense.weight], dense.outputs), decoderStart_.value,
                          {.bias = parameters_.each[dense.bias],
                           .silu = dense.activation == Activation::silu,
                           .derivative = decoderStart_.derivative});
    Range input = decoderStart_.value;
    for (std::size_t k = 0; k < plan_.decoder.size(); ++k) {
        const ConvLayer& layer = plan_.decoder[k];
        const std::string name = layerName("dec", k);
        operations.addExpandKernel(name + " kernel", sizeOf(layer), parameters_.each[layer.weight],
                                   kernels_[k]);
        operations.addUp(
            name, {layer, plan_.batch, images}, kernels_[k], input, decoder_[k].value,
            {.bias = parameters_.each[layer.bias], .silu = true, .derivative = decoder_[k].derivative});
        input = decoder_[k].value;
    }
}

// ---- Step

void VulkanExecutor::addStep(Operations& operations) {
    const OutputLayer& output = plan_.output;
    const Range& kernel = parameters_.each[output.weight];
    const Range& last = decoder_.back().value;
    step_->copy(part(upload_, 0, pixels()), x_);
    step_->copy(part(upload_, pixels(), latents()), eps_);
    step_->copy(part(upload_, pixels() + latents(), stepScalars), scalars_);

    addEncoder(operations, plan_.batch);
    operations.addLatent(plan_.latent, mean_, logVariance_, eps_, z_, kl_);
    addDecoder(operations, plan_.batch);
    const Range errors = operations.addOutputLoss(output, plan_.loss, plan_.batch, last, kernel,
                                                  parameters_.each[output.bias], x_, image_);
    operations.addLoss(errors, pixels(), kl_, results_);

    const Range gradient = part(gradientA_, 0, last.count);
    operations.addOutputDataGradient(output, plan_.batch, image_, kernel, decoder_.back().derivative,
                                     gradient);
    operations.addOutputWeightGradient(output, plan_.batch, image_, last,
                                       parameterGradients_.each[output.weight],
                                       parameterGradients_.each[output.bias]);
    addEncoderBackward(operations, addLatentBackward(operations, addDecoderBackward(operations, gradient)));
    operations.addAdam(plan_.optimiser, parameters_.whole, parameterGradients_.whole, first_.whole,
                       second_.whole, scalars_);
    step_->copy(results_, part(download_, 0, stepScalars));
}

Range VulkanExecutor::otherGradient(const Range& gradient, std::uint64_t count) const {
    return part(gradient.buffer == gradientA_.buffer ? gradientB_ : gradientA_, 0, count);
}

Range VulkanExecutor::addDecoderBackward(Operations& operations, Range gradient) {
    for (std::size_t k = plan_.decoder.size(); k-- > 0;) {
        const ConvLayer& layer = plan_.decoder[k];
        const ConvSize size = sizeOf(layer);
        const LayerOutput& input = k > 0 ? decoder_[k - 1] : decoderStart_;
        const std::string name = layerName("dec", k);
        const Range next = otherGradient(gradient, size.loCount());
        operations.addDown(name + " data gradient", size, kernels_[k], gradient, next,
                           {.factor = input.derivative});
        operations.addKernelGradient3x3(name + " weight gradient", size, input.value, gradient,
                                        parameterGradients_.each[layer.weight]);
        operations.addChannelSums(name + " bias gradient", size.images, size.hiChannels, 4 * size.loPixels(),
                                  gradient, parameterGradients_.each[layer.bias]);
        gradient = next;
    }
    return gradient;
}

Range VulkanExecutor::addLatentBackward(Operations& operations, const Range& gradient) {
    const DenseLayer& dense = plan_.decoderInput;
    const auto batch = static_cast<std::uint32_t>(plan_.batch);
    const auto inputs = static_cast<std::uint64_t>(dense.inputs);
    const auto outputs = static_cast<std::uint64_t>(dense.outputs);
    const Slices zGradient = operations.addSlicedProduct(
        "dense data gradient", {batch, inputs, outputs}, rowMajor(gradient, dense.outputs),
        rowMajor(parameters_.each[dense.weight], dense.outputs).transposed());
    operations.addProduct("dense weight gradient", {inputs, outputs, batch},
                          rowMajor(z_, dense.inputs).transposed(), rowMajor(gradient, dense.outputs),
                          parameterGradients_.each[dense.weight], {});
    operations.addSumSlices("dense bias gradient", {gradient, batch}, parameterGradients_.each[dense.bias],
                            {});
    operations.addLatentGradient(plan_.latent, zGradient, mean_, logVariance_, eps_, scalars_, meanGradient_,
                                 logVarianceGradient_);
    const Range next = otherGradient(gradient, flattened());
    operations.addFlattenedGradient(
        plan_.batch, plan_.mean, meanGradient_, logVarianceGradient_, parameters_.each[plan_.mean.weight],
        parameters_.each[plan_.logVariance.weight], encoder_.back().derivative, next);
    addHeadBackward(operations, "mean", plan_.mean, meanGradient_);
    addHeadBackward(operations, "logvar", plan_.logVariance, logVarianceGradient_);
    return next;
}

void VulkanExecutor::addHeadBackward(Operations& operations, const std::string& name, const DenseLayer& head,
                                     const Range& gradient) {
    const auto batch = static_cast<std::uint32_t>(plan_.batch);
    operations.addProduct(
        name + " weight gradient",
        {static_cast<std::uint64_t>(head.inputs), static_cast<std::uint64_t>(head.outputs), batch},
        rowMajor(encoder_.back().value, head.inputs).transposed(), rowMajor(gradient, head.outputs),
        parameterGradients_.each[head.weight], {});
    operations.addSumSlices(name + " bias gradient", {gradient, batch}, parameterGradients_.each[head.bias],
                            {});
}

void VulkanExecutor::addEncoderBackward(Operations& operations, Range gradient) {
    for (std::size_t k = plan_.encoder.size(); k-- > 0;) {
        const ConvLayer& layer = plan_.encoder[k];
        const ConvSize size = sizeOf(layer);
        const std::string name = layerName("enc", k);
        operations.addKernelGradient(name + " weight gradient", size, gradient,
                                     k > 0 ? encoder_[k - 1].value : x_,
                                     parameterGradients_.each[layer.weight]);
        operations.addChannelSums(name + " bias gradient", size.images, size.loChannels, size.loPixels(),
                                  gradient, parameterGradients_.each[layer.bias]);
        if (k == 0) return;  // nobody asks for the gradient of the images
        const Range next = otherGradient(gradient, size.hiCount());
        operations.addUp(name + " data gradient", size, parameters_.each[layer.weight], gradient, next,
                         {.factor = encoder_[k - 1].derivative});
        gradient = next;
    }
}

// ---- Recording

void VulkanExecutor::recordTransfers() {
    load_ = std::make_unique<Sequence>(*context_);
    load_->copy(staging_, parameters_.whole);
    if (training()) {
        for (const Arena* const arena : {&parameterGradients_, &first_, &second_})
            load_->clear(arena->whole);
    }
    load_->record();
    save_ = std::make_unique<Sequence>(*context_);
    save_->copy(parameters_.whole, staging_);
    save_->record();
}

void VulkanExecutor::recordStep() {
    step_ = newSequence();
    Operations operations(*context_, *step_, tensors_);
    addStep(operations);
    step_->record();
}

std::unique_ptr<Sequence> VulkanExecutor::recordEncode(int images) {
    const std::uint64_t pixels = plan_.imageSize() * images;
    const auto latents = static_cast<std::uint64_t>(images) * plan_.latent.dim;
    auto encode = newSequence();
    encode->copy(part(upload_, 0, pixels), part(x_, 0, pixels));
    Operations operations(*context_, *encode, tensors_);
    addEncoder(operations, images);
    encode->copy(part(mean_, 0, latents), part(download_, 0, latents));
    encode->copy(part(logVariance_, 0, latents), part(download_, latents, latents));
    encode->record();
    return encode;
}

std::unique_ptr<Sequence> VulkanExecutor::recordDecode(int images) {
    const std::uint64_t pixels = plan_.imageSize() * images;
    const auto latents = static_cast<std::uint64_t>(images) * plan_.latent.dim;
    auto decode = newSequence();
    decode->copy(part(upload_, 0, latents), part(z_, 0, latents));
    Operations operations(*context_, *decode, tensors_);
    addDecoder(operations, images);
    operations.addOutputImage(plan_.output, images, decoder_.back().value,
                              parameters_.each[plan_.output.weight], parameters_.each[plan_.output.bias],
                              image_);
    decode->copy(part(image_, 0, pixels), part(download_, 0, pixels));
    decode->record();
    return decode;
}

// ---- Executor

void VulkanExecutor::setWeights(std::span<const std::vector<float>> weights) {
    require(weights.size() == plan_.parameters.size(), "wrong number of weight arrays");
    for (std::size_t p = 0; p < weights.size(); ++p)
        put(weights[p], part(staging_, parameters_.each[p].first, parameters_.each[p].count));
    load_->run();
}

std::vector<std::vector<float>> VulkanExecutor::staged() const {
    std::vector<std::vector<float>> arrays;
    for (const Range& each : parameters_.each)
        get(part(staging_, each.first, each.count), arrays.emplace_back(each.count));
    return arrays;
}

std::vector<std::vector<float>> VulkanExecutor::weights() const {
    save_->run();
    return staged();
}

std::vector<std::vector<float>> VulkanExecutor::gradients() const {
    require(training(), "gradients without training");
    Sequence sequence(*context_);
    sequence.copy(parameterGradients_.whole, staging_);
    sequence.record();
    sequence.run();
    return staged();
}

StepResult VulkanExecutor::step(std::span<const float> x, std::span<const float> eps, float learningRate,
                                float klWeight) {
    require(training(), "a training step without training");
    put(x, part(upload_, 0, pixels()));
    put(eps, part(upload_, pixels(), latents()));
    const std::span<float> scalars = floats(part(upload_, pixels() + latents(), stepScalars));
    scalars[0] = learningRate;
    scalars[1] = klWeight;
    step_->run();
    const float mse = floats(download_)[0];
    const float kl = floats(download_)[1];
    return {mse + klWeight * kl, mse, kl};
}

void VulkanExecutor::encode(std::span<const float> x, std::span<float> mean, std::span<float> logVariance) {
    const int images = itemsOf(x, plan_.imageSize());
    if (images == 0) return;
    std::unique_ptr<Sequence>& sequence = encode_[images];
    if (!sequence) sequence = recordEncode(images);
    put(x, part(upload_, 0, x.size()));
    sequence->run();
    const auto latents = static_cast<std::uint64_t>(images) * plan_.latent.dim;
    get(part(download_, 0, latents), mean);
    if (logVariance.empty()) return;
    get(part(download_, latents, latents), logVariance);
    for (float& value : logVariance)
        value = std::clamp(value, plan_.latent.logVarMin, plan_.latent.logVarMax);
}

void VulkanExecutor::decode(std::span<const float> z, std::span<float> images) {
    const int items = itemsOf(z, static_cast<std::uint64_t>(plan_.latent.dim));
    if (items == 0) return;
    std::unique_ptr<Sequence>& sequence = decode_[items];
    if (!sequence) sequence = recordDecode(items);
    put(z, part(upload_, 0, z.size()));
    sequence->run();
    get(part(download_, 0, items * plan_.imageSize()), images);
}

}  // namespace quillmere::network::vulkan
