#pragma once

#include <cstdint>
#include <span>

namespace quillmere::network::vulkan {

// The compute shaders in Shaders/, compiled to SPIR-V when the product is built. What they compute, their
// bindings and their constants stand in the .comp files.
enum class Shader {
    product,             // every convolution and dense layer, and their gradients
    expandKernel,        // 3x3 kernels of the up layers to their 4x4 form
    foldKernelGradient,  // the gradient of the 4x4 form back to 3x3
    sumSlices,           // partial sums, rows of a matrix, bias of a dense layer
    channelSums,         // bias gradient of a convolution
    output,              // last layer and weighted squared error
    outputDataGradient,
    outputWeightGradient,
    latent,  // reparameterisation and KL term
    latentGradient,
    flattenedGradient,
    loss,
    adam,
};

[[nodiscard]] std::span<const std::uint32_t> codeOf(Shader shader);
// Number of storage buffers, bound as 0, 1, ...
[[nodiscard]] std::uint32_t bindingCount(Shader shader);
// The largest bindingCount(), which a device must offer. Every device has four.
inline constexpr std::uint32_t mostBindings = 7;

}  // namespace quillmere::network::vulkan
