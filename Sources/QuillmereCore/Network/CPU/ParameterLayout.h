#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "QuillmereCore/Network/Plan.h"

namespace quillmere::network::cpu {

// Where each parameter of a plan lies in one flat array, in the order the kernels read it:
//   convolutions  [tap][lo channel][hi channel]
//   both latent heads side by side  [position][channel][2 * latentPadded]
//   the decoder's dense layer  [latentPadded][position][channel]
// with every block padded to a multiple of 16 floats. Weights, gradients and both moments share it.
class ParameterLayout {
public:
    explicit ParameterLayout(const Plan& plan);

    // Floats of the flat array.
    [[nodiscard]] std::size_t size() const noexcept { return size_; }
    [[nodiscard]] int latentPadded() const noexcept { return latentPadded_; }
    // First float of a parameter; the log-variance head lies within the mean's block.
    [[nodiscard]] std::size_t offset(int parameter) const { return maps_[parameter].offset; }

    // arrays: plan layout, one per parameter. flat: size() floats; padding is left alone.
    void scatter(std::span<const std::vector<float>> arrays, float* flat) const;
    [[nodiscard]] std::vector<std::vector<float>> gather(const float* flat) const;

private:
    // Plan index (a, b, c), row-major in extent, lies at offset + a * stride[0] + b * stride[1] + c *
    // stride[2].
    struct Map {
        std::size_t offset = 0;
        std::array<std::size_t, 3> extent{1, 1, 1};
        std::array<std::size_t, 3> stride{0, 0, 0};
    };

    template <class Body>
    void forEachElement(const Map& map, Body body) const;
    std::size_t take(std::size_t count);
    void place(int parameter, std::size_t offset, std::array<std::size_t, 3> extent,
               std::array<std::size_t, 3> stride);
    void placeVector(int parameter, std::size_t count);
    void placeConvolution(const ConvLayer& layer);
    void placeHeads(const Plan& plan);
    void placeDecoderInput(const Plan& plan);
    void placeOutput(const OutputLayer& output);

    std::vector<Map> maps_;
    std::size_t size_ = 0;
    int latentPadded_ = 0;
};

}  // namespace quillmere::network::cpu
