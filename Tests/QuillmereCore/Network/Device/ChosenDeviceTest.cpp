// The opening of a choice, and the processor standing in where a device fails.

#include "QuillmereCore/Network/Device/ChosenDevice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "QuillmereCore/Network/NetworkTestData.h"
#include "Support/FakeMachine.h"

namespace quillmere::network {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Otherwise = ChosenDevice::Otherwise;
using Type = ComputeDevice::Type;

constexpr const char* card = "Card";
constexpr const char* spare = "Spare card";

class DeviceOpening : public ::testing::Test {
protected:
    DeviceOpening() {
        machine.add(card, Type::discrete);
        machine.add(spare, Type::integrated);
    }

    ChosenDevice choose(const DeviceChoice& choice, Otherwise otherwise = Otherwise::automatic) {
        return {machine,
                choice,
                otherwise,
                {.opened = [this](const auto& opening) { openings.push_back(opening); },
                 .processorStandsIn = [this](const auto& message) { notices.push_back(message); }}};
    }
    [[nodiscard]] DeviceChoice only(const char* name) const { return DeviceChoice::fromPreference(name); }
    // A network as the program makes it.
    static void compile(ChosenDevice& device) {
        (void)device.backend().compileWithWeights(shape.plan(), Purpose::inference,
                                                  testing::busyWeights(shape, 1));
    }
    static std::string failureOf(ChosenDevice& device) {
        try {
            return "opened " + device.device().name();
        } catch (const DeviceError& error) {
            return error.what();
        }
    }

    static constexpr testing::NetworkShape shape{32, 32, 4, 1};
    testing::FakeMachine machine;
    std::vector<ChosenDevice::Opening> openings;
    std::vector<std::string> notices;
};

TEST_F(DeviceOpening, HappensWhenTheDeviceIsFirstNeededAndOnce) {
    ChosenDevice device = choose(only(spare));
    EXPECT_EQ(machine.listings, 0);
    EXPECT_THAT(machine.opened, IsEmpty());
    EXPECT_EQ(device.device().name(), spare);
    compile(device);
    compile(device);
    EXPECT_THAT(machine.opened, ElementsAre(machine.devices[2].identity));
    EXPECT_THAT(machine.compiled, ElementsAre(spare, spare));
    ASSERT_EQ(openings.size(), 1U);
    EXPECT_EQ(openings[0].device.name(), spare);
    EXPECT_EQ(openings[0].problem, "");
    EXPECT_EQ(openings[0].devices->size(), 3U);
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(DeviceOpening, IsOneForAllThreads) {
    ChosenDevice device = choose(DeviceChoice());
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] { EXPECT_EQ(device.device().name(), card); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(machine.opened.size(), 1U);
    EXPECT_EQ(openings.size(), 1U);
}

TEST_F(DeviceOpening, OfTheProcessorLoadsNoDrivers) {
    ChosenDevice device = choose(DeviceChoice::processor());
    compile(device);
    EXPECT_EQ(machine.listings, 0);
    EXPECT_FALSE(openings.at(0).devices);
}

TEST_F(DeviceOpening, IsTriedAgainAfterAFailure) {
    machine.cannotOpen = card;
    ChosenDevice device = choose(only(card), Otherwise::fail);
    EXPECT_EQ(failureOf(device), "Card cannot be opened.");
    machine.cannotOpen.clear();
    EXPECT_EQ(failureOf(device), "opened Card");
}

TEST_F(DeviceOpening, NeedsNoListener) {
    machine.isFull = true;
    ChosenDevice device(machine, DeviceChoice(), Otherwise::fail);
    compile(device);
    EXPECT_THAT(machine.compiled, ElementsAre("CPU"));
}

// ---- A choice of one device that cannot be met

TEST_F(DeviceOpening, ADeviceThatIsGoneGivesWayToTheAutomaticOne) {
    ChosenDevice device = choose(only("Old card"));
    EXPECT_EQ(device.device().name(), card);
    EXPECT_EQ(openings.at(0).problem,
              "Old card is not there any more. The device is chosen automatically instead.");
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(DeviceOpening, ADeviceThatDoesNotOpenGivesWayToTheAutomaticOne) {
    machine.cannotOpen = spare;
    ChosenDevice device = choose(only(spare));
    EXPECT_EQ(device.device().name(), card);
    EXPECT_EQ(openings.at(0).problem,
              "Spare card cannot be opened. The device is chosen automatically instead.");
    EXPECT_EQ(machine.listings, 1);
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(DeviceOpening, ADeviceThatCannotBeUsedGivesWayToTheAutomaticOne) {
    machine.devices[2].problem = Message("it is too old.");
    ChosenDevice device = choose(only(spare));
    EXPECT_EQ(device.device().name(), card);
    EXPECT_EQ(openings.at(0).problem,
              "Spare card cannot be used: it is too old. The device is chosen automatically instead.");
}

TEST_F(DeviceOpening, WhoWantsNoOtherDeviceGetsTheReason) {
    machine.cannotOpen = spare;
    ChosenDevice closed = choose(only(spare), Otherwise::fail);
    EXPECT_EQ(failureOf(closed), "Spare card cannot be opened.");
    ChosenDevice gone = choose(only("Old card"), Otherwise::fail);
    EXPECT_EQ(failureOf(gone), "Old card is not there any more.");
    EXPECT_THAT(openings, IsEmpty());
    EXPECT_THAT(notices, IsEmpty());
}

// ---- The processor stands in

TEST_F(DeviceOpening, OfAnAutomaticDeviceThatFailsTakesTheProcessor) {
    for (const Otherwise otherwise : {Otherwise::automatic, Otherwise::fail}) {
        notices.clear();
        openings.clear();
        machine.cannotOpen = card;
        ChosenDevice device = choose(DeviceChoice(), otherwise);
        EXPECT_EQ(device.device().type, Type::processor);
        EXPECT_THAT(notices, ElementsAre("Card cannot be opened. The processor is used instead."));
        ASSERT_EQ(openings.size(), 1U);
        EXPECT_EQ(openings[0].device.type, Type::processor);
        EXPECT_EQ(openings[0].problem, "");
    }
}

TEST_F(DeviceOpening, OfTheOnlyCardChosenByNameThatFailsTakesTheProcessorAndSaysBoth) {
    machine.removeCards();
    machine.add(card, Type::discrete);
    machine.cannotOpen = card;
    ChosenDevice device = choose(only(card));
    EXPECT_EQ(device.device().type, Type::processor);
    EXPECT_EQ(openings.at(0).problem, "Card cannot be opened. The device is chosen automatically instead.");
    EXPECT_THAT(notices, ElementsAre("Card cannot be opened. The processor is used instead."));
}

TEST_F(DeviceOpening, WithoutEvenTheProcessorIsAnError) {
    machine.cannotOpen = "CPU";
    for (const DeviceChoice& choice : {DeviceChoice::processor(), DeviceChoice()}) {
        machine.removeCards();
        ChosenDevice device = choose(choice);
        EXPECT_EQ(failureOf(device), "CPU cannot be opened.");
    }
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(DeviceOpening, ANetworkThatTheDeviceCannotTakeGoesToTheProcessorAndTheNextIsTriedAgain) {
    ChosenDevice device = choose(only(card), Otherwise::fail);
    machine.isFull = true;
    compile(device);
    EXPECT_THAT(notices, ElementsAre("The card is full. The processor is used instead."));
    EXPECT_THAT(machine.compiled, ElementsAre("CPU"));
    EXPECT_EQ(device.device().name(), card);
    machine.isFull = false;
    compile(device);
    EXPECT_EQ(notices.size(), 1U);
    EXPECT_THAT(machine.compiled, ElementsAre("CPU", card));
}

TEST_F(DeviceOpening, ADeviceLostBeforeItHasTheWeightsLeavesTheNetworkToTheProcessor) {
    ChosenDevice device = choose(only(card), Otherwise::fail);
    machine.fails = true;
    compile(device);
    EXPECT_THAT(notices, ElementsAre("The device was lost. The processor is used instead."));
    EXPECT_THAT(machine.compiled, ElementsAre(card, "CPU"));
}

TEST_F(DeviceOpening, ADeviceLostInTheMiddleOfARunIsAnError) {
    ChosenDevice device = choose(only(card));
    const auto executor =
        device.backend().compileWithWeights(shape.plan(), Purpose::inference, testing::busyWeights(shape, 1));
    machine.fails = true;
    std::vector<float> images(shape.imageSize());
    EXPECT_THROW(executor->decode(testing::gaussianArray(4, 1), images), DeviceError);
    EXPECT_THAT(notices, IsEmpty());
}

}  // namespace
}  // namespace quillmere::network
