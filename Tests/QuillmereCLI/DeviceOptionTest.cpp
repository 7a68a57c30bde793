// --device with a graphics processor: Mesa's software driver, which nothing but its name chooses.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "QuillmereCLI/RunCommand.h"
#include "QuillmereCore/Network/Device/GPU.h"
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

network::ComputeDevice driver() {
    return GPU::shared().machine().list().at(1);
}

// Whether the software device has been given work since this was last asked.
bool driverHasComputed() {
    const bool computed = FaultyDriver::submissions() > 0;
    FaultyDriver::behave();
    return computed;
}

TEST_F(DeviceOption, TrainsAndGeneratesOnADeviceChosenByNameOrNumberOrIdentity) {
    FaultyDriver::behave();
    const Outcome trained = runCommand(trainArguments({"--device", "LLVM"}));
    EXPECT_EQ(trained.exitCode, 0) << trained.err;
    EXPECT_TRUE(driverHasComputed());
    EXPECT_EQ(trained.err.find("processor"), std::string::npos) << trained.err;
    for (const std::string& device : {std::string("1"), driver().identity.text()}) {
        const Outcome generated = runCommand(withModels(
            {"generate", corpus.string(), "--output", output.string(), "--count", "2", "--device", device}));
        EXPECT_EQ(generated.exitCode, 0) << generated.err;
        EXPECT_TRUE(driverHasComputed()) << device;
    }
}

TEST_F(DeviceOption, AutoPassesOverTheSoftwareDevice) {
    FaultyDriver::behave();
    EXPECT_EQ(runCommand(trainArguments({"--device", "auto"})).exitCode, 0);
    EXPECT_FALSE(driverHasComputed());
}

TEST_F(DeviceOption, ADeviceThatIsNotThereEndsTheCommandBeforeItBegins) {
    const std::map<std::string, std::string> sentences{
        {"gpu", "No graphics processor that can be used was found."},
        {"7", "There is no device \"7\"."},
        {"no such card", "There is no device \"no such card\"."},
        {"vulkan:000102030405060708090a0b0c0d0e0f:Card 9", "Card 9 is not there any more."}};
    for (const auto& [device, sentence] : sentences) {
        const Outcome outcome = runCommand(trainArguments({"--device", device}));
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.err,
                  "quillmere-cli: " + sentence + " 'quillmere-cli devices' lists the devices.\n");
    }
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
    const std::string notice = driver().name() +
                               " has not enough free memory. Close other programs that use it, or choose "
                               "another device. The processor is used instead.\n";
    EXPECT_NE(trained.err.find(notice), std::string::npos) << trained.err;
}

}  // namespace
}  // namespace quillmere::testing
