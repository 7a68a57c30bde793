#include "QuillmereCore/Network/Vulkan/Tuning.h"

#include <algorithm>

namespace quillmere::network::vulkan {
namespace {

// A shorter sum is not worth a pass over its result.
constexpr std::uint64_t leastSlice = 256;
// Of longer ones single precision would lose a digit.
constexpr std::uint64_t mostSlice = 8192;

std::uint64_t divideUp(std::uint64_t a, std::uint64_t b) {
    return (a + b - 1) / b;
}

}  // namespace

Tuning tuningFor(const ComputeDevice& device) {
    if (device.type == ComputeDevice::Type::software) {
        return {.threadRows = 2,
                .threadColumns = 16,
                .mostRowsPerThread = 4,
                .columnsPerThread = 2,
                .depth = 4,
                .groupsWanted = 16};
    }
    return {};
}

Tile tileFor(const Tuning& tuning, const ProductSize& size) {
    Tile best;
    std::uint64_t leastRows = UINT64_MAX;
    for (std::uint32_t perThread = 1; perThread <= tuning.mostRowsPerThread; ++perThread) {
        const std::uint32_t height = tuning.threadRows * perThread;
        const std::uint64_t covered = divideUp(size.rows, height) * height;
        if (covered > leastRows) continue;
        leastRows = covered;
        best = {perThread, height, tuning.threadColumns * tuning.columnsPerThread};
    }
    return best;
}

std::uint32_t sliceDepth(const Tuning& tuning, const ProductSize& size) {
    const Tile tile = tileFor(tuning, size);
    const std::uint64_t tiles = divideUp(size.rows, tile.rows) * divideUp(size.columns, tile.columns);
    const std::uint64_t forGroups =
        std::min(divideUp(size.depth, leastSlice), std::max<std::uint64_t>(tuning.groupsWanted / tiles, 1));
    const std::uint64_t slices = std::max(forGroups, divideUp(size.depth, mostSlice));
    const std::uint64_t depth = divideUp(size.depth, slices);
    return static_cast<std::uint32_t>(divideUp(depth, tuning.depth) * tuning.depth);
}

}  // namespace quillmere::network::vulkan
