#include "QuillmereCore/Network/CPU/CPUExecutor.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::network::cpu {
namespace {

// Below this many channels a layer is worked through image by image: the tiles of the whole batch would not
// fit the cache.
constexpr int innerChannels = 96;

// From this many channels on, the transformed tiles of all images are kept until the end of the step, when
// one product over all of them makes the weight gradient: adding to it after each image would move more
// memory.
constexpr int keptChannels = 48;

// Images are divided into this many groups whose gradients are summed separately.
constexpr int mostGroups = 8;

constexpr int denseColumns = 64;                // of one parallel task
constexpr int productColumns = 4 * panelWidth;  // of one parallel task
constexpr int taskRows = 16;                    // of weights: whole lines of both transformed matrices
constexpr std::size_t adamBlock = 32768;

// Copies the interior of a padded image to and from [position][channel].
void flatten(const PaddedView& view, int image, float* flat) {
    const std::size_t row = static_cast<std::size_t>(view.width) * view.channels;
    for (int y = 0; y < view.height; ++y)
        std::memcpy(flat + y * row, view.at(image, y, 0), row * sizeof(float));
}

// total[i] = sum of the groups' parts[i], in order.
void sumGroups(const std::vector<FloatBuffer>& parts, std::size_t first, std::size_t count, float* total) {
    for (std::size_t i = 0; i < count; ++i) {
        float sum = 0;
        for (const FloatBuffer& part : parts)
            sum += part.data()[first + i];
        total[i] = sum;
    }
}

class CPUBackend final : public Backend {
public:
    [[nodiscard]] const Device& device() const noexcept override { return device_; }
    [[nodiscard]] std::unique_ptr<Executor> compile(const Plan& plan, Purpose purpose) override {
        return std::make_unique<CPUExecutor>(plan, purpose);
    }

private:
    Device device_{Device::Kind::cpu, "cpu"};
};

}  // namespace

CPUExecutor::CPUExecutor(const Plan& plan, Purpose purpose)
    : plan_(plan),
      purpose_(purpose),
      kernels_(kernels()),
      layout_(plan),
      batch_(plan.batch),
      groupSize_((plan.batch + mostGroups - 1) / mostGroups),
      groups_((plan.batch + groupSize_ - 1) / groupSize_),
      flat_(plan.mean.inputs),
      parameters_(arena_.take(layout_.size())) {
    require(flat_ % widthMultiple == 0 && plan.encoder.back().loChannels % widthMultiple == 0,
            "the deepest layer's channels must be a multiple of sixteen");
    if (training()) {
        gradients_ = arena_.take(layout_.size());
        firstMoment_ = arena_.take(layout_.size());
        secondMoment_ = arena_.take(layout_.size());
    }
    makeLayers();
    makeWeightTasks();
    makeTensors();
    makeBatchTiles();
    makeWorkers();
    makeDense();
}

// ---- Construction

CPUExecutor::Activations CPUExecutor::makeActivations(int images, int height, int width, int channels) {
    Activations tensors;
    tensors.act = PaddedTensor(arena_, images, height, width, channels);
    if (training()) tensors.derivative = PaddedTensor(arena_, images, height, width, channels);
    return tensors;
}

void CPUExecutor::makeLayer(Layer& layer, const ConvLayer& spec, bool inner) {
    require(spec.hiChannels % channelMultiple == 0 && spec.loChannels % channelMultiple == 0,
            "channel counts must be multiples of eight");
    require(spec.activation == Activation::silu, "convolution layers end in SiLU");
    layer.spec = spec;
    layer.geometry = TileGeometry(spec, batch_, inner);
    const TileGeometry& g = layer.geometry;
    const bool up = spec.kind == ConvLayer::Kind::up;
    const std::size_t taps = static_cast<std::size_t>(16) * g.loChannels * g.hiChannels;
    const bool down = !up || training();  // is multiplied in this direction
    if (inner) {
        if (down) {
            layer.KT = arena_.take(static_cast<std::size_t>(16) * g.hiChannels * g.loChannelsPadded);
        }
    } else {
        layer.UT = arena_.take(transformPlanes * g.weightPlane());
        if (down) layer.U = arena_.take(transformPlanes * g.downPlane());
    }
    if (up) {
        layer.kernel = arena_.take(taps);
        layer.biasTwice = arena_.take(static_cast<std::size_t>(2) * g.hiChannels);
    }
    layer.weights = {.U = layer.U.data(),
                     .UT = layer.UT.data(),
                     .KT = layer.KT.data(),
                     .K = up ? layer.kernel.data() : parameters_.data() + layout_.offset(spec.weight),
                     .bias = up ? layer.biasTwice.data() : parameters_.data() + layout_.offset(spec.bias)};
    if (!training()) return;
    if (up) layer.kernelGradient = arena_.take(taps);
    if (g.hiChannels < keptChannels) {
        const std::size_t part = transformPlanes * g.weightPlane();
        layer.dU = arena_.take(groups_ * part);
        for (int i = 0; i < groups_; ++i)
            layer.dUParts.push_back(layer.dU.data() + i * part);
    }
    for (int i = 0; i < groups_; ++i) {
        layer.biasGradient.push_back(
            arena_.take(static_cast<std::size_t>(up ? g.loChannels : 2 * g.hiChannels)));
    }
}

void CPUExecutor::makeLayers() {
    encoder_.resize(plan_.encoder.size() - 1);
    decoder_.resize(plan_.decoder.size());
    innerEncoder_ = encoder_.size();
    for (std::size_t k = 0; k < encoder_.size(); ++k) {
        const ConvLayer& spec = plan_.encoder[k + 1];
        const bool inner = spec.hiChannels >= innerChannels;
        if (inner) innerEncoder_ = std::min(innerEncoder_, k);
        makeLayer(encoder_[k], spec, inner);
    }
    for (std::size_t k = 0; k < decoder_.size(); ++k) {
        const ConvLayer& spec = plan_.decoder[k];
        const bool inner = spec.hiChannels >= innerChannels;
        if (inner) outerDecoder_ = k + 1;
        makeLayer(decoder_[k], spec, inner);
    }
}

// The largest layers first, so that the last tasks to finish are small ones.
void CPUExecutor::makeWeightTasks() {
    const auto add = [&](Layer& layer) {
        const TileGeometry& g = layer.geometry;
        for (int row = 0; row < g.loChannels; row += taskRows)
            rowTasks_.push_back({&layer, row, std::min(taskRows, g.loChannels - row)});
        if (!layer.dUParts.empty() || !training()) return;
        for (int column = 0; column < g.groupChannels; column += panelWidth)
            columnTasks_.push_back({&layer, column, std::min(panelWidth, g.groupChannels - column)});
    };
    for (std::size_t k = encoder_.size(); k-- > 0;)
        add(encoder_[k]);
    for (Layer& layer : decoder_)
        add(layer);
}

void CPUExecutor::makeTensors() {
    input_ = PaddedTensor(arena_, batch_, plan_.height, plan_.width, 1);
    for (const ConvLayer& layer : plan_.encoder) {
        encoderTensors_.push_back(makeActivations(batch_, layer.loHeight, layer.loWidth, layer.loChannels));
    }
    const ConvLayer& first = plan_.decoder.front();
    decoderStart_ = makeActivations(batch_, first.loHeight, first.loWidth, first.loChannels);
    for (std::size_t k = 0; k < outerDecoder_; ++k) {
        const ConvLayer& layer = plan_.decoder[k];
        decoderTensors_.push_back(
            makeActivations(batch_, 2 * layer.loHeight, 2 * layer.loWidth, layer.hiChannels));
    }
}

void CPUExecutor::makeBatchTiles() {
    std::size_t largest = 0;
    const auto planes = [](const TileGeometry& g, int width) {
        return transformPlanes * planeStride(g.batchTiles() * width);
    };
    for (std::vector<Layer>* layers : {&encoder_, &decoder_}) {
        for (Layer& layer : *layers) {
            const TileGeometry& g = layer.geometry;
            const bool kept = training() && layer.dUParts.empty();
            if (!g.staged && !kept) continue;
            const bool up = layer.spec.kind == ConvLayer::Kind::up;
            if (training() || !up) layer.batchV = arena_.take(planes(g, g.groupChannels));
            if (training() || up) layer.batchZ = arena_.take(planes(g, g.loChannels));
            if (g.staged)
                largest = std::max(largest, planes(g, std::max(g.groupChannels, g.loChannelsPadded)));
        }
    }
    batchM_ = arena_.take(largest);
    for (std::vector<Layer>* layers : {&encoder_, &decoder_}) {
        for (Layer& layer : *layers) {
            layer.batchTiles = {layer.batchV.data(), layer.batchZ.data(),
                                layer.geometry.staged ? batchM_.data() : nullptr};
        }
    }
}

void CPUExecutor::makeWorkers() {
    std::size_t v = 0;
    std::size_t z = 0;
    std::size_t m = 0;
    std::size_t carry = 0;
    std::size_t gradient = 0;
    int panel = 0;
    for (const std::vector<Layer>* layers : {&encoder_, &decoder_}) {
        for (const Layer& layer : *layers) {
            const TileGeometry& g = layer.geometry;
            if (layer.dUParts.empty()) gradient = std::max(gradient, g.gradientScratch());
            if (g.staged) {
                panel = std::max({panel, g.groupChannels, g.loChannels});
                continue;
            }
            const auto planes = [&](int width) {
                return transformPlanes * planeStride(g.chunkTiles() * width);
            };
            v = std::max(v, planes(g.groupChannels));
            z = std::max(z, planes(g.loChannels));
            m = std::max(m, planes(std::max(g.groupChannels, g.loChannelsPadded)));
            carry = std::max(carry, static_cast<std::size_t>(4) * g.tileCols * g.groupChannels);
        }
    }
    workers_.resize(team_.threads());
    for (Worker& worker : workers_) {
        worker.V = arena_.take(v);
        worker.Z = arena_.take(z);
        worker.M = arena_.take(m);
        worker.panel = arena_.take(static_cast<std::size_t>(panel) * panelWidth);
        worker.carry = arena_.take(carry);
        worker.strip = arena_.take(outputStrip(plan_.width, plan_.output.channels));
        worker.scratch = {worker.V.data(), worker.Z.data(), worker.M.data(), worker.panel.data(),
                          worker.carry.data()};
        if (training()) {
            worker.gradient = arena_.take(gradient);
            worker.recon = arena_.take(plan_.imageSize());
            worker.dRecon = PaddedTensor(arena_, 1, plan_.height, plan_.width, 1);
        }
        for (std::size_t k = outerDecoder_; k < decoder_.size(); ++k) {
            const ConvLayer& layer = plan_.decoder[k];
            worker.decoder.push_back(
                makeActivations(1, 2 * layer.loHeight, 2 * layer.loWidth, layer.hiChannels));
        }
    }
}

void CPUExecutor::makeDense() {
    const auto batch = static_cast<std::size_t>(batch_);
    const std::size_t flat = batch * flat_;
    const std::size_t latent = batch * layout_.latentPadded();
    flatActivations_ = arena_.take(flat);
    dense_ = arena_.take(flat);
    heads_ = arena_.take(2 * latent);
    latent_ = arena_.take(latent);
    if (!training()) return;
    flatGradient_ = arena_.take(flat);
    denseGradient_ = arena_.take(flat);
    headGradient_ = arena_.take(2 * latent);
    deviation_ = arena_.take(latent);
    latentGradient_ = arena_.take(latent);
    const std::size_t stem = plan_.encoder.front().loChannels;
    const std::size_t last = plan_.output.channels;
    for (int i = 0; i < groups_; ++i) {
        stemGradient_.push_back(arena_.take(16 * stem));
        outputGradient_.push_back(arena_.take(10 * last));
    }
    squaredError_.resize(batch);
    reconGradientSum_.resize(batch);
}

// ---- Weights

void CPUExecutor::setWeights(std::span<const std::vector<float>> weights) {
    parameters_.clear();
    layout_.scatter(weights, parameters_.data());
    if (training()) {
        firstMoment_.clear();
        secondMoment_.clear();
    }
    prepared_ = false;
}

std::vector<std::vector<float>> CPUExecutor::weights() const {
    return layout_.gather(parameters_.data());
}

std::vector<std::vector<float>> CPUExecutor::gradients() const {
    require(training(), "an executor for inference has no gradients");
    return layout_.gather(gradients_.data());
}

void CPUExecutor::prepareWeights() {
    if (prepared_) return;
    run(rowTasks_.size(), [&](int index, int) {
        const auto [layer, row, rows] = rowTasks_[index];
        const float* kernel = parameters_.data() + layout_.offset(layer->spec.weight);
        if (layer->spec.kind == ConvLayer::Kind::up) {
            kernels_.foldKernel(layer->geometry, kernel, layer->kernel.data(), row, rows);
            kernel = layer->kernel.data();
        }
        if (!layer->geometry.staged) {
            kernels_.transformWeights(layer->geometry, kernel, layer->UT.data(), layer->U.data(), row, rows);
        } else if (!layer->KT.empty()) {
            kernels_.transposeWeights(layer->geometry, kernel, layer->KT.data(), row, rows);
        }
    });
    for (Layer& layer : decoder_) {
        const float* const bias = parameters_.data() + layout_.offset(layer.spec.bias);
        const int channels = layer.geometry.hiChannels;
        std::copy(bias, bias + channels, layer.biasTwice.data());
        std::copy(bias, bias + channels, layer.biasTwice.data() + channels);
    }
    prepared_ = true;
}

// ---- Helpers

LayerCall CPUExecutor::call(const Layer& layer, int worker, ImageRange images) const {
    return {layer.geometry,   layer.weights, workers_[worker].scratch,
            layer.batchTiles, images.first,  images.second};
}

CPUExecutor::ImageRange CPUExecutor::group(std::size_t index) const {
    const int first = static_cast<int>(index) * groupSize_;
    return {first, std::min(batch_, first + groupSize_)};
}

// Denormals are flushed in every thread that takes part: Adam's moments decay into them.
void CPUExecutor::run(std::size_t count, const std::function<void(int, int)>& body) {
    team_.run(count, [&](std::size_t index, int worker) {
        const FlushDenormals flush;
        body(static_cast<int>(index), worker);
    });
}

void CPUExecutor::useImages(std::size_t count) {
    require(count <= static_cast<std::size_t>(batch_), "more images than the batch holds");
    images_ = static_cast<int>(count);
}

void CPUExecutor::multiplyParallel(int n, int k, const float* A, const float* B, float* C) {
    run((n + denseColumns - 1) / denseColumns, [&](int index, int) {
        const int first = index * denseColumns;
        kernels_.multiply(images_, std::min(denseColumns, n - first), k, A, k, B + first, n, C + first, n);
    });
}

void CPUExecutor::multiplyTransposedAParallel(int m, int n, int k, const float* A, int lda, const float* B,
                                              float* C) {
    run((m + denseColumns - 1) / denseColumns, [&](int index, int) {
        const int first = index * denseColumns;
        const int rows = std::min(denseColumns, m - first);
        float* const c = C + static_cast<std::size_t>(first) * n;
        kernels_.multiplyTransposedA(rows, n, k, A + first, lda, B, n, c, n);
    });
}

void CPUExecutor::multiplyTransposedBParallel(int n, int k, const float* A, const float* B, float* C) {
    run((n + denseColumns - 1) / denseColumns, [&](int index, int) {
        const int first = index * denseColumns;
        kernels_.multiplyTransposedB(batch_, std::min(denseColumns, n - first), k, A, k,
                                     B + static_cast<std::size_t>(first) * k, k, C + first, n);
    });
}

void CPUExecutor::multiplyDown(const Layer& layer) {
    const int width = layer.geometry.loChannelsPadded;
    const int parts = (width + productColumns - 1) / productColumns;
    run(static_cast<std::size_t>(transformPlanes) * parts, [&](int index, int worker) {
        const int column = index % parts * productColumns;
        kernels_.productsDown(call(layer, worker, {0, images_}), index / parts, column,
                              std::min(width, column + productColumns));
    });
}

void CPUExecutor::multiplyUp(const Layer& layer) {
    const int width = layer.geometry.groupChannels;
    const int parts = (width + productColumns - 1) / productColumns;
    run(static_cast<std::size_t>(transformPlanes) * parts, [&](int index, int worker) {
        const int column = index % parts * productColumns;
        kernels_.productsUp(call(layer, worker, {0, images_}), index / parts, column,
                            std::min(width, column + productColumns));
    });
}

// ---- Forward

void CPUExecutor::loadImages(std::span<const float> x) {
    require(x.size() == images_ * plan_.imageSize(), "wrong size of an image batch");
    const PaddedView view = input_.view();
    for (int n = 0; n < images_; ++n) {
        for (int y = 0; y < plan_.height; ++y) {
            const float* const row =
                x.data() + n * plan_.imageSize() + static_cast<std::size_t>(y) * plan_.width;
            std::copy(row, row + plan_.width, view.at(n, y, 0));
        }
    }
}

void CPUExecutor::encodeLayers() {
    const auto input = [&](std::size_t k) { return encoderTensors_[k].act.view(); };
    const ConvLayer& stem = plan_.encoder.front();
    run(images_, [&](int n, int worker) {
        kernels_.stemForward(input_.view(), parameters_.data() + layout_.offset(stem.weight),
                             parameters_.data() + layout_.offset(stem.bias), input(0),
                             encoderTensors_[0].derivative.view(), n);
        const ImageRange image{n, n + 1};
        for (std::size_t k = 0; k < innerEncoder_; ++k) {
            kernels_.downForward(call(encoder_[k], worker, image), input(k), input(k + 1),
                                 encoderTensors_[k + 1].derivative.view());
        }
        if (innerEncoder_ < encoder_.size())
            kernels_.transformHi(call(encoder_[innerEncoder_], worker, image), input(innerEncoder_));
    });
    for (std::size_t k = innerEncoder_; k < encoder_.size(); ++k) {
        multiplyDown(encoder_[k]);
        run(images_, [&](int n, int worker) {
            const ImageRange image{n, n + 1};
            kernels_.activateLo(call(encoder_[k], worker, image), input(k + 1),
                                encoderTensors_[k + 1].derivative.view());
            if (k + 1 < encoder_.size())
                kernels_.transformHi(call(encoder_[k + 1], worker, image), input(k + 1));
        });
    }
}

// heads_: mean and raw log-variance, biases included.
void CPUExecutor::encodeHeads() {
    const PaddedView deepest = encoderTensors_.back().act.view();
    for (int n = 0; n < images_; ++n)
        flatten(deepest, n, flatActivations_.data() + static_cast<std::size_t>(n) * flat_);
    const int columns = 2 * layout_.latentPadded();
    multiplyParallel(columns, flat_, flatActivations_.data(),
                     parameters_.data() + layout_.offset(plan_.mean.weight), heads_.data());
    const float* const bias = parameters_.data() + layout_.offset(plan_.mean.bias);
    for (int n = 0; n < images_; ++n) {
        float* const row = heads_.data() + static_cast<std::size_t>(n) * columns;
        for (int i = 0; i < columns; ++i)
            row[i] += bias[i];
    }
}

void CPUExecutor::encode(std::span<const float> x, std::span<float> mean, std::span<float> logVariance) {
    const FlushDenormals flush;
    const auto dim = static_cast<std::size_t>(plan_.latent.dim);
    useImages(mean.size() / dim);
    require(mean.size() == images_ * dim && (logVariance.empty() || logVariance.size() == mean.size()),
            "wrong size of a latent batch");
    prepareWeights();
    loadImages(x);
    encodeLayers();
    encodeHeads();
    const auto padded = static_cast<std::size_t>(layout_.latentPadded());
    for (int n = 0; n < images_; ++n) {
        const float* const row = heads_.data() + n * 2 * padded;
        std::copy(row, row + dim, mean.data() + n * dim);
        if (logVariance.empty()) continue;
        for (std::size_t i = 0; i < dim; ++i) {
            logVariance[n * dim + i] =
                std::clamp(row[padded + i], plan_.latent.logVarMin, plan_.latent.logVarMax);
        }
    }
}

void CPUExecutor::decodeInner() {
    multiplyParallel(flat_, layout_.latentPadded(), latent_.data(),
                     parameters_.data() + layout_.offset(plan_.decoderInput.weight), dense_.data());
    const PaddedView act = decoderStart_.act.view();
    const PaddedView derivative = decoderStart_.derivative.view();
    const float* const bias = parameters_.data() + layout_.offset(plan_.decoderInput.bias);
    const std::size_t row = static_cast<std::size_t>(act.width) * act.channels;
    run(images_, [&](int n, int worker) {
        const float* const x = dense_.data() + static_cast<std::size_t>(n) * flat_;
        for (int y = 0; y < act.height; ++y) {
            kernels_.biasSilu(row, x + y * row, bias + y * row, act.at(n, y, 0),
                              derivative.data ? derivative.at(n, y, 0) : nullptr);
        }
        if (outerDecoder_ > 0) kernels_.transformLo(call(decoder_[0], worker, {n, n + 1}), act);
    });
    for (std::size_t k = 0; k < outerDecoder_; ++k) {
        multiplyUp(decoder_[k]);
        if (k + 1 == outerDecoder_) return;
        run(images_, [&](int n, int worker) {
            const Activations& out = decoderTensors_[k];
            kernels_.activateHi(call(decoder_[k], worker, {n, n + 1}), out.act.view(), out.derivative.view());
            kernels_.transformLo(call(decoder_[k + 1], worker, {n, n + 1}), out.act.view());
        });
    }
}

void CPUExecutor::decodeOuter(Worker& worker, int workerIndex, int image, float* recon) {
    // The first outer layer reads image `image` of the batch; the worker's own tensors hold one image, which
    // goes by the same number.
    const Activations& batchInput = outerDecoder_ == 0 ? decoderStart_ : decoderTensors_.back();
    PaddedView lo = batchInput.act.view();
    if (outerDecoder_ > 0) {
        kernels_.activateHi(call(decoder_[outerDecoder_ - 1], workerIndex, {image, image + 1}), lo,
                            batchInput.derivative.view());
    }
    for (std::size_t k = outerDecoder_; k < decoder_.size(); ++k) {
        const Activations& out = worker.decoder[k - outerDecoder_];
        const PaddedView act = out.act.view().renumbered(0, image);
        kernels_.upForward(call(decoder_[k], workerIndex, {image, image + 1}), lo, act,
                           out.derivative.view().renumbered(0, image));
        lo = act;
    }
    kernels_.outputForward(lo, parameters_.data() + layout_.offset(plan_.output.weight),
                           parameters_.data()[layout_.offset(plan_.output.bias)], worker.strip.data(), recon,
                           image);
}

void CPUExecutor::decode(std::span<const float> z, std::span<float> images) {
    const FlushDenormals flush;
    const auto dim = static_cast<std::size_t>(plan_.latent.dim);
    useImages(z.size() / dim);
    require(z.size() == images_ * dim && images.size() == images_ * plan_.imageSize(),
            "wrong size of a latent batch");
    prepareWeights();
    for (int n = 0; n < images_; ++n) {
        std::copy(z.data() + n * dim, z.data() + (n + 1) * dim,
                  latent_.data() + static_cast<std::size_t>(n) * layout_.latentPadded());
    }
    decodeInner();
    run(images_, [&](int n, int worker) {
        decodeOuter(workers_[worker], worker, n, images.data() + n * plan_.imageSize());
    });
}

// ---- One training step

StepResult CPUExecutor::step(std::span<const float> x, std::span<const float> eps, float learningRate,
                             float klWeight) {
    require(training(), "an executor for inference cannot train");
    require(eps.size() == static_cast<std::size_t>(batch_) * plan_.latent.dim, "wrong size of the noise");
    useImages(static_cast<std::size_t>(batch_));
    const FlushDenormals flush;
    prepareWeights();
    loadImages(x);
    encodeLayers();
    encodeHeads();
    const double kl = latentForward(eps);
    decodeInner();
    outerDecoderStep();
    innerDecoderBackward();
    denseBackward(eps, klWeight);
    encoderBackward();
    collectGradients();
    update(learningRate);

    double mse = 0;
    for (const double error : squaredError_)
        mse += error;
    mse /= static_cast<double>(batch_ * plan_.imageSize());
    return {static_cast<float>(mse + static_cast<double>(klWeight) * kl), static_cast<float>(mse),
            static_cast<float>(kl)};
}

// z = mean + exp(logVar / 2) * eps. Returns the KL term.
double CPUExecutor::latentForward(std::span<const float> eps) {
    const int dim = plan_.latent.dim;
    const int padded = layout_.latentPadded();
    double sum = 0;
    for (int n = 0; n < batch_; ++n) {
        const float* const mean = heads_.data() + static_cast<std::size_t>(n) * 2 * padded;
        const float* const raw = mean + padded;
        const std::size_t row = static_cast<std::size_t>(n) * padded;
        for (int i = 0; i < dim; ++i) {
            const float logVar = std::clamp(raw[i], plan_.latent.logVarMin, plan_.latent.logVarMax);
            const float deviation = std::exp(0.5F * logVar);
            deviation_.data()[row + i] = deviation;
            latent_.data()[row + i] = mean[i] + deviation * eps[static_cast<std::size_t>(n) * dim + i];
            const float term = (1.0F + logVar) - (mean[i] * mean[i] + std::exp(logVar));
            sum += static_cast<double>(term);
        }
    }
    return -0.5 * sum / static_cast<double>(batch_ * dim);
}

void CPUExecutor::outerDecoderStep() {
    run(groups_, [&](int g, int worker) {
        for (std::size_t k = outerDecoder_; k < decoder_.size(); ++k)
            decoder_[k].biasGradient[g].clear();
        outputGradient_[g].clear();
        const auto [first, last] = group(g);
        for (int n = first; n < last; ++n)
            outerDecoderStepForImage(n, g, worker);
    });
}

void CPUExecutor::outerDecoderStepForImage(int image, std::size_t groupIndex, int workerIndex) {
    Worker& worker = workers_[workerIndex];
    decodeOuter(worker, workerIndex, image, worker.recon.data());
    const float scale = 2.0F / static_cast<float>(batch_ * plan_.imageSize());
    squaredError_[image] =
        kernels_.reconstructionLoss(plan_.loss, input_.view(), image, worker.recon.data(), scale,
                                    worker.dRecon.view(), &reconGradientSum_[image]);

    const auto own = [&](std::size_t k) -> const Activations& { return worker.decoder[k - outerDecoder_]; };
    const auto gradientView = [&](std::size_t k) { return own(k).derivative.view().renumbered(0, image); };
    const std::size_t last = decoder_.size() - 1;
    float* const outputGradient = outputGradient_[groupIndex].data();
    kernels_.outputBackward(worker.dRecon.view(), parameters_.data() + layout_.offset(plan_.output.weight),
                            own(last).act.view().renumbered(0, image), gradientView(last),
                            worker.strip.data(), outputGradient,
                            outputGradient + static_cast<std::size_t>(9) * plan_.output.channels, image);
    for (std::size_t k = last + 1; k-- > outerDecoder_;) {
        const Activations& batchInput = outerDecoder_ == 0 ? decoderStart_ : decoderTensors_.back();
        const bool first = k == outerDecoder_;
        const PaddedView loAct = first ? batchInput.act.view() : own(k - 1).act.view().renumbered(0, image);
        const PaddedView dLo = first ? batchInput.derivative.view() : gradientView(k - 1);
        Layer& layer = decoder_[k];
        kernels_.upBackward(call(layer, workerIndex, {image, image + 1}), gradientView(k), loAct, dLo,
                            layer.biasGradient[groupIndex].data(),
                            layer.dUParts.empty() ? nullptr : layer.dUParts[groupIndex]);
    }
    if (outerDecoder_ > 0) {
        kernels_.transformHi(call(decoder_[outerDecoder_ - 1], workerIndex, {image, image + 1}),
                             decoderTensors_.back().derivative.view());
    }
}

void CPUExecutor::innerDecoderBackward() {
    for (std::size_t k = outerDecoder_; k-- > 0;) {
        Layer& layer = decoder_[k];
        const PaddedView gradient = (k == 0 ? decoderStart_ : decoderTensors_[k - 1]).derivative.view();
        multiplyDown(layer);
        run(groups_, [&](int g, int worker) {
            layer.biasGradient[g].clear();
            kernels_.gradientLo(call(layer, worker, group(g)), gradient, layer.biasGradient[g].data());
            if (k > 0) kernels_.transformHi(call(decoder_[k - 1], worker, group(g)), gradient);
        });
    }
}

void CPUExecutor::denseBackward(std::span<const float> eps, float klWeight) {
    const int dim = plan_.latent.dim;
    const int padded = layout_.latentPadded();
    const auto flat = static_cast<std::size_t>(flat_);
    float* const gradients = gradients_.data();

    // Decoder's dense layer.
    float* const dBias = gradients + layout_.offset(plan_.decoderInput.bias);
    std::memset(dBias, 0, flat * sizeof(float));
    for (int n = 0; n < batch_; ++n) {
        float* const row = denseGradient_.data() + n * flat;
        flatten(decoderStart_.derivative.view(), n, row);
        for (std::size_t i = 0; i < flat; ++i)
            dBias[i] += row[i];
    }
    const std::size_t decoderWeight = layout_.offset(plan_.decoderInput.weight);
    multiplyTransposedAParallel(padded, flat_, batch_, latent_.data(), padded, denseGradient_.data(),
                                gradients + decoderWeight);
    multiplyTransposedBParallel(padded, flat_, denseGradient_.data(), parameters_.data() + decoderWeight,
                                latentGradient_.data());

    // Latent step. The gradient of the clamp is 0 outside its range.
    const float klScale = klWeight / static_cast<float>(batch_ * dim);
    float* const dHeadBias = gradients + layout_.offset(plan_.mean.bias);
    std::memset(dHeadBias, 0, static_cast<std::size_t>(2) * padded * sizeof(float));
    for (int n = 0; n < batch_; ++n) {
        const std::size_t latentRow = static_cast<std::size_t>(n) * padded;
        const float* const mean = heads_.data() + 2 * latentRow;
        float* const dMean = headGradient_.data() + 2 * latentRow;
        for (int i = 0; i < dim; ++i) {
            const float g = latentGradient_.data()[latentRow + i];
            const float deviation = deviation_.data()[latentRow + i];
            const float raw = mean[padded + i];
            const bool clamped = raw < plan_.latent.logVarMin || raw > plan_.latent.logVarMax;
            dMean[i] = g + klScale * mean[i];
            dMean[padded + i] = clamped ? 0.0F
                                        : g * eps[static_cast<std::size_t>(n) * dim + i] * 0.5F * deviation -
                                              0.5F * klScale * (1.0F - deviation * deviation);
            dHeadBias[i] += dMean[i];
            dHeadBias[padded + i] += dMean[padded + i];
        }
    }

    // Heads.
    const std::size_t headWeight = layout_.offset(plan_.mean.weight);
    multiplyTransposedAParallel(flat_, 2 * padded, batch_, flatActivations_.data(), flat_,
                                headGradient_.data(), gradients + headWeight);
    multiplyTransposedBParallel(flat_, 2 * padded, headGradient_.data(), parameters_.data() + headWeight,
                                flatGradient_.data());

    // Through the deepest encoder layer's SiLU; its bias gradient is the sum over images and positions.
    const PaddedView deepest = encoderTensors_.back().derivative.view();
    float* const dDeepestBias = gradients + layout_.offset(plan_.encoder.back().bias);
    std::memset(dDeepestBias, 0, static_cast<std::size_t>(deepest.channels) * sizeof(float));
    for (int n = 0; n < batch_; ++n) {
        const float* incoming = flatGradient_.data() + n * flat;
        for (int y = 0; y < deepest.height; ++y) {
            for (int x = 0; x < deepest.width; ++x, incoming += deepest.channels) {
                kernels_.multiplyAccumulate(deepest.channels, incoming, deepest.at(n, y, x), dDeepestBias);
            }
        }
    }
}

void CPUExecutor::encoderBackward() {
    const auto gradient = [&](std::size_t k) { return encoderTensors_[k].derivative.view(); };
    if (innerEncoder_ < encoder_.size()) {
        run(batch_, [&](int n, int worker) {
            kernels_.transformLo(call(encoder_.back(), worker, {n, n + 1}), gradient(encoder_.size()));
        });
    }
    for (std::size_t k = encoder_.size(); k-- > innerEncoder_;) {
        multiplyUp(encoder_[k]);
        if (k == innerEncoder_) break;
        run(groups_, [&](int g, int worker) {
            innerGradient(k, g, worker);
            kernels_.transformLo(call(encoder_[k - 1], worker, group(g)), gradient(k));
        });
    }
    run(groups_, [&](int g, int worker) {
        if (innerEncoder_ < encoder_.size()) innerGradient(innerEncoder_, g, worker);
        for (std::size_t k = 0; k < innerEncoder_; ++k)
            encoder_[k].biasGradient[g].clear();
        stemGradient_[g].clear();
        const auto [first, last] = group(g);
        for (int n = first; n < last; ++n) {
            for (std::size_t k = innerEncoder_; k-- > 0;) {
                Layer& layer = encoder_[k];
                kernels_.downBackward(call(layer, worker, {n, n + 1}), gradient(k + 1),
                                      encoderTensors_[k].act.view(), gradient(k),
                                      layer.biasGradient[g].data(),
                                      layer.dUParts.empty() ? nullptr : layer.dUParts[g]);
            }
            kernels_.stemGradient(input_.view(), gradient(0), stemGradient_[g].data(), n);
        }
    });
}

// The gradient of an inner encoder layer's input for one image group.
void CPUExecutor::innerGradient(std::size_t k, std::size_t groupIndex, int worker) {
    Layer& layer = encoder_[k];
    layer.biasGradient[groupIndex].clear();
    kernels_.gradientHi(call(layer, worker, group(groupIndex)), encoderTensors_[k].derivative.view(),
                        layer.biasGradient[groupIndex].data());
}

void CPUExecutor::collectGradients() {
    collectKeptWeightGradients();
    collectWeightGradients();
    collectBiasGradients();
}

void CPUExecutor::collectKeptWeightGradients() {
    run(columnTasks_.size(), [&](int index, int worker) {
        const auto [layer, column, columns] = columnTasks_[index];
        float* const dK = layer->spec.kind == ConvLayer::Kind::down
                              ? gradients_.data() + layout_.offset(layer->spec.weight)
                              : layer->kernelGradient.data();
        kernels_.weightGradientColumns(layer->geometry, layer->batchTiles, workers_[worker].gradient.data(),
                                       dK, column, columns);
    });
}

void CPUExecutor::collectWeightGradients() {
    run(rowTasks_.size(), [&](int index, int) {
        const auto [layer, row, rows] = rowTasks_[index];
        const bool down = layer->spec.kind == ConvLayer::Kind::down;
        float* const gradient = gradients_.data() + layout_.offset(layer->spec.weight);
        float* const dK = down ? gradient : layer->kernelGradient.data();
        if (!layer->dUParts.empty())
            kernels_.untransformGradient(layer->geometry, layer->dUParts, dK, row, rows);
        if (!down) kernels_.unfoldGradient(layer->geometry, dK, gradient, row, rows);
    });
}

void CPUExecutor::collectBiasGradients() {
    const auto gradient = [&](int parameter) { return gradients_.data() + layout_.offset(parameter); };
    // Layer k's backward pass gives the bias gradient of the layer before it; in the encoder as one sum for
    // each pixel of a pair.
    for (std::size_t k = 0; k < encoder_.size(); ++k) {
        const std::size_t channels = encoder_[k].geometry.hiChannels;
        float* const total = gradient(plan_.encoder[k].bias);
        for (std::size_t c = 0; c < channels; ++c) {
            float sum = 0;
            for (const FloatBuffer& part : encoder_[k].biasGradient) {
                sum += part.data()[c] + part.data()[c + channels];
            }
            total[c] = sum;
        }
    }
    for (std::size_t k = 1; k < decoder_.size(); ++k) {
        sumGroups(decoder_[k].biasGradient, 0, decoder_[k].geometry.loChannels,
                  gradient(plan_.decoder[k - 1].bias));
    }
    const std::size_t last = plan_.output.channels;
    sumGroups(outputGradient_, 0, 9 * last, gradient(plan_.output.weight));
    sumGroups(outputGradient_, 9 * last, last, gradient(plan_.decoder.back().bias));
    sumGroups(stemGradient_, 0, stemGradient_.front().size(), gradient(plan_.encoder.front().weight));
    double sum = 0;
    for (const double part : reconGradientSum_)
        sum += part;
    *gradient(plan_.output.bias) = static_cast<float>(sum);
}

void CPUExecutor::update(float learningRate) {
    const std::size_t count = layout_.size();
    run((count + adamBlock - 1) / adamBlock, [&](int index, int) {
        const std::size_t first = static_cast<std::size_t>(index) * adamBlock;
        kernels_.adam(plan_.optimiser, learningRate, std::min(adamBlock, count - first),
                      gradients_.data() + first, firstMoment_.data() + first, secondMoment_.data() + first,
                      parameters_.data() + first);
    });
    prepared_ = false;
}

}  // namespace quillmere::network::cpu

namespace quillmere::network {

std::unique_ptr<Backend> makeCPUBackend() {
    return std::make_unique<cpu::CPUBackend>();
}

}  // namespace quillmere::network
