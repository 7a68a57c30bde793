// --device with a graphics processor: Mesa's software driver, which nothing but its name chooses.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Network/GPU.h"
#include "QuillmereCore/Network/Vulkan/FaultyDriver/FaultyDriver.h"

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

// Everything below a folder, by path.
std::map<std::string, std::string> contentOf(const std::filesystem::path& folder) {
    std::map<std::string, std::string> content;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        std::ifstream file(entry.path(), std::ios::binary);
        content[entry.path().string()] =
            entry.is_directory() ? "a folder" : std::string(std::istreambuf_iterator<char>(file), {});
    }
    return content;
}

TEST_F(DeviceOption, ADeviceLostInTheMiddleOfTrainingLeavesTheStoredModelAsItWas) {
    const auto train = [&] { return runCommand(trainArguments({"--retrain", "--device", "llvmpipe"})); };
    ASSERT_EQ(train().exitCode, 0);
    const auto before = contentOf(models);
    FaultyDriver::loseDeviceAt(4);  // the second step
    const Outcome lost = train();
    FaultyDriver::behave();
    EXPECT_EQ(lost.exitCode, 1);
    EXPECT_NE(lost.err.find("was lost while computing"), std::string::npos) << lost.err;
    EXPECT_EQ(contentOf(models), before);
    EXPECT_EQ(runCommand(withModels({"generate", corpus.string(), "--output", output.string(), "--count", "1",
                                     "--device", "llvmpipe"}))
                  .exitCode,
              0);
}

TEST_F(DeviceOption, ADeviceLostInTheMiddleOfTheFirstTrainingLeavesNoModel) {
    FaultyDriver::loseDeviceAt(4);
    const Outcome lost = runCommand(trainArguments({"--device", "llvmpipe"}));
    FaultyDriver::behave();
    EXPECT_EQ(lost.exitCode, 1);
    EXPECT_TRUE(!std::filesystem::exists(models) || std::filesystem::is_empty(models));
}

TEST_F(DeviceOption, AFullDeviceLeavesTrainingToTheProcessorAndSaysSo) {
    FaultyDriver::failAllocationsFrom(1);
    const Outcome trained = runCommand(trainArguments({"--device", "llvmpipe"}));
    FaultyDriver::behave();
    EXPECT_EQ(trained.exitCode, 0) << trained.err;
    EXPECT_NE(trained.err.find("has not enough free memory"), std::string::npos) << trained.err;
    EXPECT_NE(trained.err.find("The processor is used instead."), std::string::npos) << trained.err;
}

}  // namespace
}  // namespace quillmere::testing
