#include "QuillmereCore/Network/Devices.h"

#include <gtest/gtest.h>

#include "QuillmereCore/Network/GPU.h"

namespace quillmere::network {
namespace {

using Type = DeviceDescription::Type;

// The processor, followed by these.
std::vector<DeviceDescription> machine(std::vector<std::pair<std::string, Type>> cards) {
    std::vector<DeviceDescription> devices{processor()};
    for (const auto& [name, type] : cards) {
        DeviceDescription device;
        device.index = static_cast<int>(devices.size());
        device.name = name;
        device.type = type;
        devices.push_back(device);
    }
    return devices;
}

std::string failureOf(std::span<const DeviceDescription> devices, std::string_view choice) {
    try {
        return "chose " + std::to_string(chosenDevice(devices, choice));
    } catch (const DeviceError& error) {
        return error.what();
    }
}

TEST(DeviceChoice, AutoPrefersDiscreteThenIntegratedThenVirtual) {
    auto devices = machine({{"Rasterizer", Type::software},
                            {"Shared", Type::virtualGPU},
                            {"Built in", Type::integrated},
                            {"Card", Type::discrete}});
    for (const char* const choice : {"auto", "gpu"}) {
        EXPECT_EQ(chosenDevice(devices, choice), 4);
        EXPECT_EQ(chosenDevice(std::span(devices).first(4), choice), 3);
        EXPECT_EQ(chosenDevice(std::span(devices).first(3), choice), 2);
    }
}

TEST(DeviceChoice, AutoTakesTheProcessorBeforeASoftwareDevice) {
    const auto devices = machine({{"Rasterizer", Type::software}, {"Strange", Type::other}});
    EXPECT_EQ(chosenDevice(devices, "auto"), 0);
    EXPECT_NE(failureOf(devices, "gpu").find("No graphics processor"), std::string::npos);
}

TEST(DeviceChoice, AutoPassesOverAnUnusableDevice) {
    auto devices = machine({{"Card", Type::discrete}, {"Built in", Type::integrated}});
    devices[1].problem = "it is too old.";
    EXPECT_EQ(chosenDevice(devices, "auto"), 2);
    EXPECT_EQ(chosenDevice(devices, "gpu"), 2);
    devices[2].problem = "it is too old.";
    EXPECT_EQ(chosenDevice(devices, "auto"), 0);
}

TEST(DeviceChoice, TwoOfOneTypeGiveTheFirst) {
    EXPECT_EQ(chosenDevice(machine({{"A", Type::discrete}, {"B", Type::discrete}}), "auto"), 1);
}

TEST(DeviceChoice, CPUIsAlwaysTheProcessor) {
    EXPECT_EQ(chosenDevice(machine({{"CPU accelerator", Type::discrete}}), "cpu"), 0);
}

TEST(DeviceChoice, ANumberChoosesByIndexSoftwareIncluded) {
    const auto devices = machine({{"Card", Type::discrete}, {"Rasterizer", Type::software}});
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(chosenDevice(devices, std::to_string(i)), i);
    for (const char* const choice : {"3", "-1", "99999999999"}) {
        EXPECT_NE(failureOf(devices, choice).find("There is no device \"" + std::string(choice) + "\""),
                  std::string::npos);
    }
}

TEST(DeviceChoice, APartOfANameChoosesInAnyCaseSoftwareIncluded) {
    const auto devices = machine({{"Fast Card 9000", Type::discrete}, {"Rasterizer (soft)", Type::software}});
    EXPECT_EQ(chosenDevice(devices, "card 9"), 1);
    EXPECT_EQ(chosenDevice(devices, "RASTER"), 2);
    EXPECT_NE(failureOf(devices, "slow").find("There is no device \"slow\""), std::string::npos);
    EXPECT_NE(failureOf(devices, "").find("There is no device"), std::string::npos);
}

TEST(DeviceChoice, ANamePrefersAUsableDevice) {
    auto devices = machine({{"Card", Type::discrete}, {"Card", Type::discrete}});
    devices[1].problem = "it is too old.";
    EXPECT_EQ(chosenDevice(devices, "card"), 2);
}

TEST(DeviceChoice, AnUnusableDeviceThatIsAskedForSaysWhy) {
    auto devices = machine({{"Card", Type::discrete}});
    devices[1].problem = "it is too old.";
    EXPECT_EQ(failureOf(devices, "1"), "Card cannot be used: it is too old.");
    EXPECT_EQ(failureOf(devices, "card"), "Card cannot be used: it is too old.");
}

TEST(ComputeDevices, TheProcessorIsFirstAndIndicesCount) {
    const auto devices = computeDevices();
    ASSERT_FALSE(devices.empty());
    EXPECT_EQ(devices[0].type, Type::processor);
    for (std::size_t i = 0; i < devices.size(); ++i)
        EXPECT_EQ(devices[i].index, static_cast<int>(i));
}

TEST(GPU, WithoutAGraphicsProcessorAutoIsTheProcessor) {
    GPU& gpu = GPU::shared();
    gpu.choose("auto");
    EXPECT_EQ(gpu.device().kind, Device::Kind::cpu);
    EXPECT_EQ(gpu.description().type, Type::processor);
}

TEST(GPU, AFailedChoiceKeepsThePreviousOne) {
    GPU& gpu = GPU::shared();
    gpu.choose("cpu");
    Backend& before = gpu.graphDevice();
    EXPECT_THROW(gpu.choose("no such card"), DeviceError);
    EXPECT_EQ(&gpu.graphDevice(), &before);
}

}  // namespace
}  // namespace quillmere::network
