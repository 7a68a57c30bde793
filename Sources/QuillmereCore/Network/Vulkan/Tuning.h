#pragma once

#include <cstdint>

#include "QuillmereCore/Network/Device/ComputeDevice.h"

namespace quillmere::network::vulkan {

// How the product shader divides its work on a device.
struct Tuning {
    std::uint32_t threadRows = 8, threadColumns = 16;  // of a work group
    std::uint32_t mostRowsPerThread = 8;               // fewer where that wastes fewer rows
    std::uint32_t columnsPerThread = 4;
    std::uint32_t depth = 16;          // of the tiles in shared memory
    std::uint32_t groupsWanted = 256;  // depths are sliced until there are as many groups

    friend bool operator==(const Tuning&, const Tuning&) = default;
};

// For graphics processors 128 threads (what every device has) with tiles of up to 64 x 64. Software devices
// compile one thread's code for several threads at once and unroll all of it: large tiles would take half a
// minute to compile, so theirs are small.
[[nodiscard]] Tuning tuningFor(const ComputeDevice& device);

// The numbers of rows, columns and terms of a product.
struct ProductSize {
    std::uint64_t rows = 0, columns = 0, depth = 0;
};

// The tile of one work group.
struct Tile {
    std::uint32_t rowsPerThread = 1;
    std::uint32_t rows = 1, columns = 1;
};

// Of the tiles that cover the rows with the least waste, the tallest.
[[nodiscard]] Tile tileFor(const Tuning& tuning, const ProductSize& size);

// The depth of one slice, a multiple of tuning.depth: small enough to occupy the device, and to keep the
// error of summing in single precision small.
[[nodiscard]] std::uint32_t sliceDepth(const Tuning& tuning, const ProductSize& size);

}  // namespace quillmere::network::vulkan
