// Whether the shaders compile for a real graphics card. The card is not there: its driver is told to compile
// for it all the same, but has no memory and cannot run anything.

#include <gtest/gtest.h>

#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Network/NetworkTestData.h"
#include "QuillmereCore/Network/Vulkan/SoftwareDevice.h"
#include "QuillmereCore/Network/Vulkan/VulkanBackend.h"
#include "QuillmereCore/Network/Vulkan/VulkanExecutor.h"

namespace quillmere::network::vulkan {
namespace {

ComputeDevice card() {
    for (const ComputeDevice& device : devices()) {
        if (device.type == ComputeDevice::Type::discrete) return device;
    }
    ADD_FAILURE() << "The driver offers no discrete card; run this test through ctest.";
    throw DeviceError("no card");
}

TEST(GraphicsCard, IsWhatAutoChooses) {
    const auto all = GPU::shared().machine().list();
    EXPECT_EQ(DeviceChoice().in(all).identity, card().identity);
    EXPECT_TRUE(card().usable()) << card().problem;
}

// The software device records the step with the tiles meant for cards.
TEST(GraphicsCard, CompilesEveryShaderOfAStep) {
    const auto recorder = std::make_shared<Context>(testing::softwareDevice(), std::nullopt, Tuning{});
    const VulkanExecutor executor(recorder, testing::NetworkShape{96, 192, 64, 16}.plan(), Purpose::training);
    Context context(card());
    EXPECT_EQ(context.tuning(), Tuning{});
    const auto pipelines = executor.stepSequence().pipelines();
    EXPECT_GE(pipelines.size(), 80U);
    for (const auto& [shader, constants] : pipelines)
        EXPECT_NE(context.pipeline(shader, constants).pipeline, VK_NULL_HANDLE);
}

}  // namespace
}  // namespace quillmere::network::vulkan
