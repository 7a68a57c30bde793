#include "QuillmereCore/Network/CPU/Layers.h"

#include <algorithm>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::network::cpu {
namespace {

// From this many channels on the tiles are kept: adding to the weight gradient after each image would move
// more memory.
constexpr int keptChannels = 48;

constexpr int productColumns = 4 * panelWidth;  // of one parallel task
constexpr int taskRows = 16;                    // of weights: whole lines of both transformed matrices

bool isUp(const Layer& layer) {
    return layer.spec.kind == ConvLayer::Kind::up;
}

std::size_t planesOf(std::size_t tiles, int width) {
    return transformPlanes * planeStride(tiles * width);
}

}  // namespace

// ---- Memory

Layers::Layers(Engine& engine)
    : engine_(engine), encoder_(engine.plan().encoder.size() - 1), decoder_(engine.plan().decoder.size()) {
    const Plan& plan = engine.plan();
    for (std::size_t k = 0; k < encoder_.size(); ++k) {
        makeLayer(encoder_[k], plan.encoder[k + 1]);
        if (!encoder_[k].geometry.inner) outerEncoder_ = k + 1;
    }
    for (std::size_t k = 0; k < decoder_.size(); ++k) {
        makeLayer(decoder_[k], plan.decoder[k]);
        if (decoder_[k].geometry.inner) innerDecoder_ = k + 1;
    }
    // The largest layers first, so that the last tasks to finish are small ones.
    for (std::size_t k = encoder_.size(); k-- > 0;)
        makeWeightTasks(encoder_[k]);
    for (Layer& layer : decoder_)
        makeWeightTasks(layer);
    makeBatchTiles();
    makeWorkers();
}

void Layers::makeLayer(Layer& layer, const ConvLayer& spec) {
    require(spec.hiChannels % channelMultiple == 0 && spec.loChannels % channelMultiple == 0,
            "channel counts must be multiples of eight");
    require(spec.activation == Activation::silu, "convolution layers end in SiLU");
    layer.spec = spec;
    layer.geometry = TileGeometry(spec, engine_.batch());
    makeWeights(layer);
    if (engine_.training()) makeGradients(layer);
}

void Layers::makeWeights(Layer& layer) {
    const TileGeometry& g = layer.geometry;
    const bool up = isUp(layer);
    const bool down = !up || engine_.training();  // is multiplied in this direction
    if (g.inner) {
        if (down) layer.KT = engine_.take(static_cast<std::size_t>(16) * g.hiChannels * g.loChannelsPadded);
    } else {
        layer.UT = engine_.take(transformPlanes * g.weightPlane());
        if (down) layer.U = engine_.take(transformPlanes * g.downPlane());
    }
    if (up) {
        layer.kernel = engine_.take(static_cast<std::size_t>(16) * g.loChannels * g.hiChannels);
        layer.biasTwice = engine_.take(static_cast<std::size_t>(2) * g.hiChannels);
    }
    layer.weights = {.U = layer.U.data(),
                     .UT = layer.UT.data(),
                     .KT = layer.KT.data(),
                     .K = up ? layer.kernel.data() : engine_.parameter(layer.spec.weight),
                     .bias = up ? layer.biasTwice.data() : engine_.parameter(layer.spec.bias)};
}

void Layers::makeGradients(Layer& layer) {
    const TileGeometry& g = layer.geometry;
    const bool up = isUp(layer);
    if (up) layer.kernelGradient = engine_.take(layer.kernel.size());
    if (g.hiChannels < keptChannels) {
        const std::size_t part = transformPlanes * g.weightPlane();
        const FloatBuffer parts = engine_.take(engine_.groups() * part);
        for (int i = 0; i < engine_.groups(); ++i)
            layer.dU.push_back(parts.data() + i * part);
    }
    for (int i = 0; i < engine_.groups(); ++i) {
        layer.biasGradient.push_back(
            engine_.take(static_cast<std::size_t>(up ? g.loChannels : 2 * g.hiChannels)));
    }
}

// Inner layers need the tiles of all images in each stage; of outer ones some are kept for the weight
// gradient.
void Layers::makeBatchTiles() {
    const bool training = engine_.training();
    std::size_t products = 0;
    forEachLayer([&](Layer& layer) {
        const TileGeometry& g = layer.geometry;
        if (!g.inner && !(training && layer.keepsTiles())) return;
        const bool up = isUp(layer);
        if (training || !up)
            layer.batchTiles.V = engine_.take(planesOf(g.batchTiles(), g.groupChannels)).data();
        if (training || up) layer.batchTiles.Z = engine_.take(planesOf(g.batchTiles(), g.loChannels)).data();
        if (!g.inner) return;
        products =
            std::max(products, planesOf(g.batchTiles(), std::max(g.groupChannels, g.loChannelsPadded)));
    });
    // One inner layer is in work at a time.
    const FloatBuffer shared = engine_.take(products);
    forEachLayer([&](Layer& layer) {
        if (layer.geometry.inner) layer.batchTiles.M = shared.data();
    });
}

void Layers::makeWorkers() {
    std::size_t v = 0;
    std::size_t z = 0;
    std::size_t m = 0;
    std::size_t carry = 0;
    std::size_t gradient = 0;
    int panel = 0;
    forEachLayer([&](const Layer& layer) {
        const TileGeometry& g = layer.geometry;
        if (layer.keepsTiles()) gradient = std::max(gradient, g.gradientScratch());
        if (g.inner) {
            panel = std::max({panel, g.groupChannels, g.loChannels});
            return;
        }
        v = std::max(v, planesOf(g.chunkTiles(), g.groupChannels));
        z = std::max(z, planesOf(g.chunkTiles(), g.loChannels));
        m = std::max(m, planesOf(g.chunkTiles(), std::max(g.groupChannels, g.loChannelsPadded)));
        carry = std::max(carry, static_cast<std::size_t>(4) * g.tileCols * g.groupChannels);
    });
    workers_.resize(engine_.threads());
    for (WorkerMemory& worker : workers_) {
        worker.scratch = {.V = engine_.take(v).data(),
                          .Z = engine_.take(z).data(),
                          .M = engine_.take(m).data(),
                          .panel = engine_.take(static_cast<std::size_t>(panel) * panelWidth).data(),
                          .carry = engine_.take(carry).data()};
        if (engine_.training()) worker.gradient = engine_.take(gradient);
    }
}

void Layers::makeWeightTasks(Layer& layer) {
    const TileGeometry& g = layer.geometry;
    for (int row = 0; row < g.loChannels; row += taskRows)
        rowTasks_.push_back({&layer, row, std::min(taskRows, g.loChannels - row)});
    if (!engine_.training() || !layer.keepsTiles()) return;
    for (int column = 0; column < g.groupChannels; column += panelWidth)
        columnTasks_.push_back({&layer, column, std::min(panelWidth, g.groupChannels - column)});
}

LayerCall Layers::call(const Layer& layer, int worker, ImageRange images) const {
    return {layer.geometry,   layer.weights, workers_[worker].scratch,
            layer.batchTiles, images.first,  images.last};
}

// ---- The products of an inner layer: each plane by itself, some columns at a time.

void Layers::multiply(const Layer& layer, int width, decltype(KernelTable::productsDown) products) {
    const int parts = (width + productColumns - 1) / productColumns;
    engine_.run(static_cast<std::size_t>(transformPlanes) * parts, [&](int index, int worker) {
        const int column = index % parts * productColumns;
        products(call(layer, worker, {0, engine_.images()}), index / parts, column,
                 std::min(width, column + productColumns));
    });
}

void Layers::multiplyDown(const Layer& layer) {
    multiply(layer, layer.geometry.loChannelsPadded, engine_.kernels().productsDown);
}

void Layers::multiplyUp(const Layer& layer) {
    multiply(layer, layer.geometry.groupChannels, engine_.kernels().productsUp);
}

// ---- Weights

void Layers::prepareWeights() {
    const KernelTable& kernels = engine_.kernels();
    engine_.run(rowTasks_.size(), [&](int index, int) {
        const auto [layer, row, rows] = rowTasks_[index];
        const float* kernel = engine_.parameter(layer->spec.weight);
        if (isUp(*layer)) {
            kernels.foldKernel(layer->geometry, kernel, layer->kernel.data(), row, rows);
            kernel = layer->kernel.data();
        }
        if (!layer->geometry.inner) {
            kernels.transformWeights(layer->geometry, kernel, layer->UT.data(), layer->U.data(), row, rows);
        } else if (!layer->KT.empty()) {
            kernels.transposeWeights(layer->geometry, kernel, layer->KT.data(), row, rows);
        }
    });
    for (Layer& layer : decoder_) {
        const float* const bias = engine_.parameter(layer.spec.bias);
        const int channels = layer.geometry.hiChannels;
        std::copy(bias, bias + channels, layer.biasTwice.data());
        std::copy(bias, bias + channels, layer.biasTwice.data() + channels);
    }
}

// Where the gradient of the 4x4 kernel goes: of a down layer that is the parameter itself.
float* Layers::kernelGradient(const Layer& layer) const {
    return isUp(layer) ? layer.kernelGradient.data() : engine_.gradient(layer.spec.weight);
}

void Layers::collectWeightGradients() {
    multiplyKeptTiles();
    finishWeightGradients();
}

void Layers::multiplyKeptTiles() {
    engine_.run(columnTasks_.size(), [&](int index, int worker) {
        const auto [layer, column, columns] = columnTasks_[index];
        engine_.kernels().weightGradientColumns(layer->geometry, layer->batchTiles,
                                                workers_[worker].gradient.data(), kernelGradient(*layer),
                                                column, columns);
    });
}

void Layers::finishWeightGradients() {
    const KernelTable& kernels = engine_.kernels();
    engine_.run(rowTasks_.size(), [&](int index, int) {
        const auto [layer, row, rows] = rowTasks_[index];
        float* const dK = kernelGradient(*layer);
        if (!layer->keepsTiles()) kernels.untransformGradient(layer->geometry, layer->dU, dK, row, rows);
        if (isUp(*layer))
            kernels.unfoldGradient(layer->geometry, dK, engine_.gradient(layer->spec.weight), row, rows);
    });
}

}  // namespace quillmere::network::cpu
