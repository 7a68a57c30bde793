// --device with a graphics processor: Mesa's software driver, which nothing but its name chooses.

#include <gtest/gtest.h>

#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Network/GPU.h"

namespace quillmere::testing {
namespace {

using DeviceOption = CommandTest;

TEST_F(DeviceOption, DevicesListsTheDriverWithItsLimits) {
    const cli::JSON devices = runCommand({"devices", "--json"}).event("result")["devices"];
    ASSERT_EQ(devices.size(), 2U);
    EXPECT_EQ(devices[0]["automatic"], true);
    EXPECT_EQ(devices[1]["type"], "software");
    EXPECT_EQ(devices[1]["automatic"], false);
    EXPECT_EQ(devices[1]["usable"], true);
    EXPECT_GE(devices[1]["largestTensor"], 128 << 20);
    EXPECT_GE(devices[1]["storageBuffers"], 7);

    const Outcome text = runCommand({"devices"});
    EXPECT_NE(text.out.find("1  llvmpipe"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("software"), std::string::npos);
    EXPECT_NE(text.out.find("tensors up to"), std::string::npos);
}

TEST_F(DeviceOption, TrainsAndGeneratesOnADeviceChosenByName) {
    const Outcome trained = runCommand(trainArguments({"--device", "LLVM"}));
    EXPECT_EQ(trained.exitCode, 0) << trained.err;
    EXPECT_EQ(GPU::shared().device().kind, network::Device::Kind::gpu);
    EXPECT_EQ(trained.err.find("processor"), std::string::npos) << trained.err;
    const Outcome generated = runCommand(withModels(
        {"generate", corpus.string(), "--output", output.string(), "--count", "2", "--device", "1"}));
    EXPECT_EQ(generated.exitCode, 0) << generated.err;
}

TEST_F(DeviceOption, AutoPassesOverTheSoftwareDevice) {
    EXPECT_EQ(runCommand(trainArguments({"--device", "auto"})).exitCode, 0);
    EXPECT_EQ(GPU::shared().device().kind, network::Device::Kind::cpu);
}

TEST_F(DeviceOption, GPUIsNeverTheSoftwareDevice) {
    const Outcome outcome = runCommand(trainArguments({"--device", "gpu"}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.err.find("No graphics processor"), std::string::npos) << outcome.err;
}

}  // namespace
}  // namespace quillmere::testing
