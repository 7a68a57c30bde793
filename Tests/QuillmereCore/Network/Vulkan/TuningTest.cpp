#include "QuillmereCore/Network/Vulkan/Tuning.h"

#include <gtest/gtest.h>

namespace quillmere::network::vulkan {
namespace {

TEST(Tuning, TilesCoverTheRowsWithTheLeastWaste) {
    const Tuning tuning;  // 8 thread rows, up to 8 rows each
    EXPECT_EQ(tileFor(tuning, {192, 1, 1}).rows, 64U);
    EXPECT_EQ(tileFor(tuning, {96, 1, 1}).rows, 48U);
    EXPECT_EQ(tileFor(tuning, {24, 1, 1}).rows, 24U);
    EXPECT_EQ(tileFor(tuning, {16, 1, 1}).rows, 16U);
    EXPECT_EQ(tileFor(tuning, {1, 1, 1}).rows, 8U);
}

// What every device has: 128 threads a group and 16 KiB of shared memory.
TEST(Tuning, GroupsFitEveryDevice) {
    ComputeDevice device;
    for (const auto type : {ComputeDevice::Type::discrete, ComputeDevice::Type::software}) {
        device.type = type;
        const Tuning tuning = tuningFor(device);
        EXPECT_LE(tuning.threadRows * tuning.threadColumns, 128U);
        const std::uint32_t rows = tuning.threadRows * tuning.mostRowsPerThread;
        const std::uint32_t columns = tuning.threadColumns * tuning.columnsPerThread;
        EXPECT_LE((rows + 1 + columns + 1) * tuning.depth * sizeof(float), 16384U);
    }
}

TEST(Tuning, SlicesOccupyTheDeviceAndStayShort) {
    const Tuning tuning;
    // One tile: as many slices as groups are wanted, but none below 256 terms.
    EXPECT_EQ(sliceDepth(tuning, {16, 64, 3456}), 256U);
    // Six tiles.
    const std::uint32_t deep = sliceDepth(tuning, {24, 384, 294912});
    EXPECT_GE(294912U / deep, 30U);
    EXPECT_LE(deep, 8192U + tuning.depth);
    // Enough tiles without slicing, but a sum too long for single precision.
    EXPECT_LE(sliceDepth(tuning, {1024, 4096, 100000}), 8192U + tuning.depth);
    EXPECT_EQ(sliceDepth(tuning, {1024, 4096, 100}), 112U);
}

TEST(Tuning, SlicesAreWholeTilesDeep) {
    const Tuning tuning;
    for (const std::uint64_t depth : {1U, 15U, 17U, 300U, 4097U, 100003U})
        EXPECT_EQ(sliceDepth(tuning, {24, 24, depth}) % tuning.depth, 0U) << depth;
}

}  // namespace
}  // namespace quillmere::network::vulkan
