// This machine and the process-wide entry to it, as ctest shows them: without a graphics processor.

#include "QuillmereCore/Network/Device/Machine.h"

#include <gtest/gtest.h>

#include "QuillmereCore/Network/Device/GPU.h"

namespace quillmere::network {
namespace {

TEST(Machine, TheProcessorIsFirst) {
    const auto devices = thisMachine()->list();
    ASSERT_FALSE(devices.empty());
    EXPECT_EQ(devices[0].type, ComputeDevice::Type::processor);
    EXPECT_EQ(devices[0].identity, ComputeDevice::processor().identity);
}

TEST(Machine, OpensADeviceOnce) {
    const auto machine = thisMachine();
    EXPECT_EQ(machine->open(ComputeDevice::processor()), machine->open(ComputeDevice::processor()));
}

TEST(GPU, WithoutAGraphicsProcessorIsTheProcessor) {
    EXPECT_EQ(GPU::shared().device().type, ComputeDevice::Type::processor);
    EXPECT_EQ(&GPU::shared().graphDevice(), &GPU::shared().graphDevice());
}

}  // namespace
}  // namespace quillmere::network
