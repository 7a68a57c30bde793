#include "QuillmereCore/Network/Vulkan/Shaders.h"

#include <algorithm>
#include <array>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::network::vulkan {
namespace {

// Words of SPIR-V, written by glslc.
constexpr std::uint32_t product[] = {
#include "Product.inc"
};
constexpr std::uint32_t expandKernel[] = {
#include "ExpandKernel.inc"
};
constexpr std::uint32_t foldKernelGradient[] = {
#include "FoldKernelGradient.inc"
};
constexpr std::uint32_t sumSlices[] = {
#include "SumSlices.inc"
};
constexpr std::uint32_t channelSums[] = {
#include "ChannelSums.inc"
};
constexpr std::uint32_t output[] = {
#include "Output.inc"
};
constexpr std::uint32_t outputDataGradient[] = {
#include "OutputDataGradient.inc"
};
constexpr std::uint32_t outputWeightGradient[] = {
#include "OutputWeightGradient.inc"
};
constexpr std::uint32_t latent[] = {
#include "Latent.inc"
};
constexpr std::uint32_t latentGradient[] = {
#include "LatentGradient.inc"
};
constexpr std::uint32_t flattenedGradient[] = {
#include "FlattenedGradient.inc"
};
constexpr std::uint32_t loss[] = {
#include "Loss.inc"
};
constexpr std::uint32_t adam[] = {
#include "Adam.inc"
};

struct Entry {
    Shader shader;
    std::span<const std::uint32_t> code;
    std::uint32_t bindings;
};

constexpr std::array entries{
    Entry{Shader::product, product, 5},
    Entry{Shader::expandKernel, expandKernel, 2},
    Entry{Shader::foldKernelGradient, foldKernelGradient, 2},
    Entry{Shader::sumSlices, sumSlices, 3},
    Entry{Shader::channelSums, channelSums, 2},
    Entry{Shader::output, output, 7},
    Entry{Shader::outputDataGradient, outputDataGradient, 4},
    Entry{Shader::outputWeightGradient, outputWeightGradient, 3},
    Entry{Shader::latent, latent, 5},
    Entry{Shader::latentGradient, latentGradient, 7},
    Entry{Shader::flattenedGradient, flattenedGradient, 6},
    Entry{Shader::loss, loss, 3},
    Entry{Shader::adam, adam, 5},
};

static_assert(std::all_of(entries.begin(), entries.end(),
                          [](const Entry& entry) { return entry.bindings <= mostBindings; }));

const Entry& entryOf(Shader shader) {
    for (const Entry& entry : entries) {
        if (entry.shader == shader) return entry;
    }
    fatal("a shader without code");
}

}  // namespace

std::span<const std::uint32_t> codeOf(Shader shader) {
    return entryOf(shader).code;
}

std::uint32_t bindingCount(Shader shader) {
    return entryOf(shader).bindings;
}

}  // namespace quillmere::network::vulkan
