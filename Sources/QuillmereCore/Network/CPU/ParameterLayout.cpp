#include "QuillmereCore/Network/CPU/ParameterLayout.h"

#include "QuillmereCore/Network/CPU/TileGeometry.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::network::cpu {

ParameterLayout::ParameterLayout(const Plan& plan)
    : maps_(plan.parameters.size()), latentPadded_(roundUp(plan.latent.dim, widthMultiple)) {
    for (const ConvLayer& layer : plan.encoder)
        placeConvolution(layer);
    placeHeads(plan);
    placeDecoderInput(plan);
    for (const ConvLayer& layer : plan.decoder)
        placeConvolution(layer);
    placeOutput(plan.output);
    for (std::size_t p = 0; p < maps_.size(); ++p) {
        const auto& e = maps_[p].extent;
        require(e[0] * e[1] * e[2] == plan.parameters[p].elementCount(),
                "a parameter is missing in the plan");
    }
}

std::size_t ParameterLayout::take(std::size_t count) {
    const std::size_t offset = size_;
    size_ += (count + widthMultiple - 1) / widthMultiple * widthMultiple;
    return offset;
}

void ParameterLayout::place(int parameter, std::size_t offset, std::array<std::size_t, 3> extent,
                            std::array<std::size_t, 3> stride) {
    maps_[parameter] = {offset, extent, stride};
}

void ParameterLayout::placeVector(int parameter, std::size_t count) {
    place(parameter, take(count), {1, 1, count}, {0, 0, 1});
}

void ParameterLayout::placeConvolution(const ConvLayer& layer) {
    const auto lo = static_cast<std::size_t>(layer.loChannels);
    const auto hi = static_cast<std::size_t>(layer.hiChannels);
    if (layer.kind == ConvLayer::Kind::down) {
        place(layer.weight, take(16 * lo * hi), {lo, hi, 16}, {hi, 1, lo * hi});
        placeVector(layer.bias, lo);
    } else {
        place(layer.weight, take(9 * lo * hi), {hi, lo, 9}, {1, hi, lo * hi});
        placeVector(layer.bias, hi);
    }
}

void ParameterLayout::placeHeads(const Plan& plan) {
    const ConvLayer& deepest = plan.encoder.back();
    const auto channels = static_cast<std::size_t>(deepest.loChannels);
    const std::size_t positions = static_cast<std::size_t>(deepest.loHeight) * deepest.loWidth;
    const auto latent = static_cast<std::size_t>(plan.latent.dim);
    const std::size_t row = 2 * static_cast<std::size_t>(latentPadded_);
    const std::size_t weights = take(channels * positions * row);
    const std::size_t biases = take(row);
    std::size_t column = 0;
    for (const DenseLayer* head : {&plan.mean, &plan.logVariance}) {
        place(head->weight, weights + column, {channels, positions, latent}, {row, channels * row, 1});
        place(head->bias, biases + column, {1, 1, latent}, {0, 0, 1});
        column += latentPadded_;
    }
}

void ParameterLayout::placeDecoderInput(const Plan& plan) {
    const ConvLayer& first = plan.decoder.front();
    const auto channels = static_cast<std::size_t>(first.loChannels);
    const std::size_t positions = static_cast<std::size_t>(first.loHeight) * first.loWidth;
    const auto latent = static_cast<std::size_t>(plan.latent.dim);
    const std::size_t row = channels * positions;
    place(plan.decoderInput.weight, take(row * latentPadded_), {latent, channels, positions},
          {row, 1, channels});
    place(plan.decoderInput.bias, take(row), {1, channels, positions}, {0, 1, channels});
}

void ParameterLayout::placeOutput(const OutputLayer& output) {
    const auto channels = static_cast<std::size_t>(output.channels);
    place(output.weight, take(9 * channels), {1, channels, 9}, {0, 1, channels});
    placeVector(output.bias, 1);
}

template <class Body>
void ParameterLayout::forEachElement(const Map& map, Body body) const {
    std::size_t i = 0;
    for (std::size_t a = 0; a < map.extent[0]; ++a) {
        for (std::size_t b = 0; b < map.extent[1]; ++b) {
            const std::size_t base = map.offset + a * map.stride[0] + b * map.stride[1];
            for (std::size_t c = 0; c < map.extent[2]; ++c)
                body(i++, base + c * map.stride[2]);
        }
    }
}

void ParameterLayout::scatter(std::span<const std::vector<float>> arrays, float* flat) const {
    require(arrays.size() == maps_.size(), "wrong number of weight arrays");
    for (std::size_t p = 0; p < maps_.size(); ++p) {
        const auto& e = maps_[p].extent;
        require(arrays[p].size() == e[0] * e[1] * e[2], "wrong size of a weight array");
        forEachElement(maps_[p], [&](std::size_t i, std::size_t at) { flat[at] = arrays[p][i]; });
    }
}

std::vector<std::vector<float>> ParameterLayout::gather(const float* flat) const {
    std::vector<std::vector<float>> arrays;
    arrays.reserve(maps_.size());
    for (const Map& map : maps_) {
        auto& array = arrays.emplace_back(map.extent[0] * map.extent[1] * map.extent[2]);
        forEachElement(map, [&](std::size_t i, std::size_t at) { array[i] = flat[at]; });
    }
    return arrays;
}

}  // namespace quillmere::network::cpu
