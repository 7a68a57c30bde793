// The process-wide machine with a graphics processor: Mesa's software driver, chosen by name.

#include "QuillmereCore/Network/Device/GPU.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>

#include "QuillmereCore/Network/NetworkTestData.h"
#include "QuillmereCore/Network/Vulkan/SoftwareDevice.h"
#include "QuillmereCore/Network/Vulkan/VulkanExecutor.h"
#include "Support/Environment.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::NetworkShape;

using network::ChosenDevice;
using network::ComputeDevice;

// Collects what the user would be told.
class SharedGPU : public ::testing::Test {
public:
    ChosenDevice chosen{GPU::shared().machine(),
                        network::DeviceChoice::fromOption("llvmpipe"),
                        ChosenDevice::Otherwise::fail,
                        {.opened = {}, .processorStandsIn = [this](const std::string& message) {
                             notices.push_back(message);
                         }}};
    std::vector<std::string> notices;
};

TEST_F(SharedGPU, IsTheProcessorWhileOnlyANameChoosesTheDriver) {
    EXPECT_EQ(GPU::shared().device().type, ComputeDevice::Type::processor);
    EXPECT_THAT(chosen.device().name(), HasSubstr("llvmpipe"));
    EXPECT_EQ(chosen.device().type, ComputeDevice::Type::software);
    EXPECT_EQ(chosen.device().identity.interface, network::DeviceIdentity::Interface::vulkan);
}

TEST_F(SharedGPU, OpensADeviceOnce) {
    network::Machine& machine = GPU::shared().machine();
    const auto first = machine.open(chosen.device());
    EXPECT_EQ(machine.open(testing::softwareDevice()), first);
    EXPECT_NE(machine.open(ComputeDevice::processor()), first);
}

TEST_F(SharedGPU, ADeviceIsFoundAgainByTheTextOfItsIdentity) {
    const auto again = network::DeviceChoice::fromPreference(chosen.device().identity.text());
    EXPECT_EQ(again.in(GPU::shared().machine().list()).identity, chosen.device().identity);
}

TEST_F(SharedGPU, LearnsOnTheChosenDevice) {
    const NetworkShape shape{32, 32, 4, 2};
    const auto executor = chosen.backend().compile(shape.plan(), network::Purpose::training);
    EXPECT_NE(dynamic_cast<network::vulkan::VulkanExecutor*>(executor.get()), nullptr);
    EXPECT_THAT(notices, IsEmpty());
}

// One tensor of the network is larger than the device takes.
TEST_F(SharedGPU, LetsTheProcessorTakeANetworkThatIsTooLarge) {
    const NetworkShape shape{384, 96, 1, 39};
    const auto executor = chosen.backend().compile(shape.plan(), network::Purpose::inference);
    EXPECT_EQ(dynamic_cast<network::vulkan::VulkanExecutor*>(executor.get()), nullptr);
    EXPECT_THAT(notices, ElementsAre(::testing::AllOf(HasSubstr("llvmpipe"),
                                                      HasSubstr("takes tensors of at most 135 MB"),
                                                      HasSubstr("The processor is used instead."))));
}

std::vector<std::filesystem::path> cachedPipelines(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code none;
    for (const auto& entry : std::filesystem::directory_iterator(folder / "quillmere", none))
        files.push_back(entry.path());
    return files;
}

void compileSomething() {
    const auto backend = network::vulkan::makeBackend(testing::softwareDevice());
    (void)backend->compile(NetworkShape{32, 32, 4, 1}.plan(), network::Purpose::training);
}

TEST(PipelineCache, IsKeptInTheUsersCacheFolder) {
    const testing::TempFolder folder;
    const testing::EnvironmentVariable cache("XDG_CACHE_HOME", (folder / "cache").string());
    compileSomething();
    ASSERT_EQ(cachedPipelines(folder / "cache").size(), 1U);
    EXPECT_TRUE(cachedPipelines(folder / "cache")[0].filename().string().starts_with("pipelines-"));
}

TEST(PipelineCache, ADamagedFileIsReplaced) {
    const testing::TempFolder folder;
    const testing::EnvironmentVariable cache("XDG_CACHE_HOME", folder.path().string());
    compileSomething();
    const std::filesystem::path file = cachedPipelines(folder.path()).at(0);
    const auto size = std::filesystem::file_size(file);
    std::ofstream(file, std::ios::binary) << "no pipelines";
    compileSomething();
    EXPECT_EQ(std::filesystem::file_size(file), size);
}

// Nobody ever writes into this pipe.
TEST(PipelineCache, APipeInItsPlaceIsDoneWithout) {
    const testing::TempFolder folder;
    const testing::EnvironmentVariable cache("XDG_CACHE_HOME", folder.path().string());
    compileSomething();
    const std::filesystem::path file = cachedPipelines(folder.path()).at(0);
    std::filesystem::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    compileSomething();
    EXPECT_TRUE(std::filesystem::is_fifo(file));
}

TEST(PipelineCache, AFolderThatCannotBeMadeIsDoneWithout) {
    const testing::TempFolder folder;
    std::ofstream(folder / "file") << "in the way";
    const testing::EnvironmentVariable cache("XDG_CACHE_HOME", (folder / "file").string());
    compileSomething();
    EXPECT_TRUE(std::filesystem::is_regular_file(folder / "file"));
}

}  // namespace
}  // namespace quillmere
