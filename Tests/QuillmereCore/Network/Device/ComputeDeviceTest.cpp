#include "QuillmereCore/Network/Device/ComputeDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/FakeMachine.h"

namespace quillmere::network {
namespace {

using ::testing::ElementsAre;
using Type = ComputeDevice::Type;

DeviceIdentity card(const std::string& name) {
    DeviceIdentity identity;
    identity.interface = DeviceIdentity::Interface::vulkan;
    identity.name = name;
    for (std::size_t i = 0; i < identity.uuid.size(); ++i)
        identity.uuid[i] = static_cast<std::uint8_t>(17 * i);
    return identity;
}

TEST(DeviceIdentity, ReadsAsItsInterfaceUUIDAndName) {
    EXPECT_EQ(ComputeDevice::processor().identity.text(), "cpu");
    EXPECT_EQ(card("Card 9").text(), "vulkan:00112233445566778899aabbccddeeff:Card 9");
}

TEST(DeviceIdentity, ComesBackFromItsText) {
    EXPECT_EQ(DeviceIdentity::parse("cpu"), ComputeDevice::processor().identity);
    for (const char* const name : {"Card 9", "a:b:c", "GeForce, \"4070\"", "x"})
        EXPECT_EQ(DeviceIdentity::parse(card(name).text()), card(name));
}

TEST(DeviceIdentity, OtherTextsAreNone) {
    for (const char* const text :
         {"", "CPU", "auto", "Card 9", "vulkan", "vulkan:", "vulkan:Card 9",
          "vulkan:00112233445566778899aabbccddeeff",
          "vulkan:00112233445566778899aabbccddeeff:", "vulkan:00112233445566778899aabbccddeef:Card 9",
          "vulkan:00112233445566778899aabbccddeefg:Card 9", "metal:00112233445566778899aabbccddeeff:Card 9"})
        EXPECT_EQ(DeviceIdentity::parse(text), std::nullopt) << text;
}

TEST(DeviceIdentity, InterfaceUUIDAndNameTellDevicesApart) {
    DeviceIdentity twin = card("Card 9");
    twin.uuid.back() = 1;
    EXPECT_NE(twin, card("Card 9"));
    EXPECT_NE(card("Card 8"), card("Card 9"));
    DeviceIdentity elsewhere = card("Card 9");
    elsewhere.interface = DeviceIdentity::Interface::processor;
    EXPECT_NE(elsewhere, card("Card 9"));
}

TEST(DeviceLabels, AreDistinctAndCallTheProcessorByItsName) {
    testing::FakeMachine machine;
    for (const char* const name : {"Twin", "Other", "Twin", "Twin"})
        machine.add(name, Type::discrete);
    EXPECT_THAT(labels(machine.devices), ElementsAre("Processor", "Twin", "Other", "Twin (2)", "Twin (3)"));
}

TEST(DeviceLabels, ANumberThatIsPartOfANameIsPassedOver) {
    testing::FakeMachine machine;
    for (const char* const name : {"Twin (2)", "Twin", "Twin"})
        machine.add(name, Type::discrete);
    EXPECT_THAT(labels(machine.devices), ElementsAre("Processor", "Twin (2)", "Twin", "Twin (3)"));
}

}  // namespace
}  // namespace quillmere::network
