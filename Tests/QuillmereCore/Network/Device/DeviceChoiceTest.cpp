#include "QuillmereCore/Network/Device/DeviceChoice.h"

#include <gtest/gtest.h>

#include <utility>

#include "Support/FakeMachine.h"

namespace quillmere::network {
namespace {

using Type = ComputeDevice::Type;

// The processor, followed by these.
std::vector<ComputeDevice> machine(const std::vector<std::pair<std::string, Type>>& cards) {
    testing::FakeMachine machine;
    for (const auto& [name, type] : cards)
        machine.add(name, type);
    return machine.devices;
}

// The index of the device that choice means.
std::ptrdiff_t chosen(std::span<const ComputeDevice> devices, const DeviceChoice& choice) {
    return &choice.in(devices)-devices.data();
}
std::ptrdiff_t chosen(std::span<const ComputeDevice> devices, std::string_view option) {
    return chosen(devices, DeviceChoice::fromOption(option));
}

std::string failureOf(std::span<const ComputeDevice> devices, const DeviceChoice& choice) {
    try {
        return "chose " + std::to_string(chosen(devices, choice));
    } catch (const DeviceError& error) {
        return error.what();
    }
}
std::string failureOf(std::span<const ComputeDevice> devices, std::string_view option) {
    return failureOf(devices, DeviceChoice::fromOption(option));
}

TEST(DeviceChoice, AutoPrefersDiscreteThenIntegratedThenVirtual) {
    auto devices = machine({{"Rasterizer", Type::software},
                            {"Shared", Type::virtualGPU},
                            {"Built in", Type::integrated},
                            {"Card", Type::discrete}});
    for (const char* const choice : {"auto", "gpu"}) {
        EXPECT_EQ(chosen(devices, choice), 4);
        EXPECT_EQ(chosen(std::span(devices).first(4), choice), 3);
        EXPECT_EQ(chosen(std::span(devices).first(3), choice), 2);
    }
}

TEST(DeviceChoice, AutoTakesTheProcessorBeforeASoftwareDevice) {
    const auto devices = machine({{"Rasterizer", Type::software}, {"Strange", Type::other}});
    EXPECT_EQ(chosen(devices, "auto"), 0);
    EXPECT_EQ(failureOf(devices, "gpu"), "No graphics processor that can be used was found.");
}

TEST(DeviceChoice, AutoPassesOverAnUnusableDevice) {
    auto devices = machine({{"Card", Type::discrete}, {"Built in", Type::integrated}});
    devices[1].problem = Message("it is too old.");
    EXPECT_EQ(chosen(devices, "auto"), 2);
    EXPECT_EQ(chosen(devices, "gpu"), 2);
    devices[2].problem = Message("it is too old.");
    EXPECT_EQ(chosen(devices, "auto"), 0);
}

TEST(DeviceChoice, TwoOfOneTypeGiveTheFirst) {
    EXPECT_EQ(chosen(machine({{"A", Type::discrete}, {"B", Type::discrete}}), "auto"), 1);
}

TEST(DeviceChoice, CPUIsAlwaysTheProcessor) {
    EXPECT_EQ(chosen(machine({{"CPU accelerator", Type::discrete}}), "cpu"), 0);
}

TEST(DeviceChoice, ANumberChoosesByIndexSoftwareIncluded) {
    const auto devices = machine({{"Card", Type::discrete}, {"Rasterizer", Type::software}});
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(chosen(devices, std::to_string(i)), i);
    for (const char* const choice : {"3", "-1", "99999999999"}) {
        EXPECT_EQ(failureOf(devices, choice), "There is no device \"" + std::string(choice) + "\".");
    }
}

TEST(DeviceChoice, APartOfANameChoosesInAnyCaseSoftwareIncluded) {
    const auto devices = machine({{"Fast Card 9000", Type::discrete}, {"Rasterizer (soft)", Type::software}});
    EXPECT_EQ(chosen(devices, "card 9"), 1);
    EXPECT_EQ(chosen(devices, "RASTER"), 2);
    EXPECT_EQ(failureOf(devices, "slow"), "There is no device \"slow\".");
    EXPECT_EQ(failureOf(devices, ""), "There is no device \"\".");
}

TEST(DeviceChoice, ANamePrefersAUsableDevice) {
    auto devices = machine({{"Card", Type::discrete}, {"Card", Type::discrete}});
    devices[1].problem = Message("it is too old.");
    EXPECT_EQ(chosen(devices, "card"), 2);
}

TEST(DeviceChoice, AnUnusableDeviceThatIsAskedForSaysWhy) {
    auto devices = machine({{"Card", Type::discrete}});
    devices[1].problem = Message("it is too old.");
    EXPECT_EQ(failureOf(devices, "1"), "Card cannot be used: it is too old.");
    EXPECT_EQ(failureOf(devices, "card"), "Card cannot be used: it is too old.");
}

// ---- One device, named for good

TEST(DeviceChoice, ADeviceThatMovesInTheListIsStillTheChosenOne) {
    auto devices = machine({{"Old card", Type::discrete}, {"Card", Type::discrete}});
    const DeviceChoice choice = DeviceChoice::of(devices[2].identity);
    EXPECT_EQ(chosen(devices, choice), 2);
    devices.erase(devices.begin() + 1);
    EXPECT_EQ(chosen(devices, choice), 1);
    devices.pop_back();
    EXPECT_EQ(failureOf(devices, choice), "Card is not there any more.");
}

TEST(DeviceChoice, TwoCardsOfOneNameAreToldApartByTheirUUIDs) {
    auto devices = machine({{"Twin", Type::discrete}, {"Twin", Type::discrete}});
    const DeviceChoice choice = DeviceChoice::of(devices[2].identity);
    std::swap(devices[1], devices[2]);
    EXPECT_EQ(chosen(devices, choice), 1);
    devices.erase(devices.begin() + 1);
    EXPECT_EQ(failureOf(devices, choice), "Twin is not there any more.");
}

TEST(DeviceChoice, AnOptionMayBeAnIdentitysText) {
    const auto devices = machine({{"Twin", Type::discrete}, {"Twin", Type::discrete}});
    EXPECT_EQ(chosen(devices, devices[2].identity.text()), 2);
}

TEST(DeviceChoice, ComesBackFromThePreferences) {
    auto devices = machine({{"Twin", Type::discrete}, {"Twin", Type::discrete}});
    for (const DeviceChoice& choice :
         {DeviceChoice(), DeviceChoice::processor(), DeviceChoice::of(devices[2].identity)})
        EXPECT_EQ(DeviceChoice::fromPreference(choice.preference()), choice);
    EXPECT_EQ(DeviceChoice().preference(), "auto");
    EXPECT_EQ(DeviceChoice::processor().preference(), "cpu");
}

TEST(DeviceChoice, APreferenceOfAnEarlierVersionIsALabelAndNoPartOfOne) {
    const auto devices = machine({{"Twin", Type::discrete}, {"Twin", Type::discrete}});
    EXPECT_EQ(chosen(devices, DeviceChoice::fromPreference("Twin")), 1);
    EXPECT_EQ(chosen(devices, DeviceChoice::fromPreference("Twin (2)")), 2);
    for (const char* const label : {"Twi", "twin", "Twin (3)", "1"})
        EXPECT_EQ(failureOf(devices, DeviceChoice::fromPreference(label)),
                  std::string(label) + " is not there any more.");
}

TEST(DeviceChoice, WhatIsNotThereIsAnErrorOfItsOwn) {
    const auto devices = machine({});
    EXPECT_THROW((void)DeviceChoice::fromOption("Card").in(devices), NoDeviceError);
    EXPECT_THROW((void)DeviceChoice::fromOption("gpu").in(devices), NoDeviceError);
}

TEST(DeviceChoice, WithoutADeviceNoneIsFound) {
    const auto devices = machine({{"Card", Type::discrete}});
    EXPECT_EQ(DeviceChoice::fromOption("no such card").find(devices), nullptr);
    EXPECT_EQ(DeviceChoice::fromOption("CARD").find(devices), &devices[1]);
}

}  // namespace
}  // namespace quillmere::network
