// What --device chooses on a machine of any kind, and what the console is told of it.

#include <gtest/gtest.h>

#include <sstream>

#include "QuillmereCLI/Options.h"
#include "QuillmereCore/Network/NetworkTestData.h"
#include "Support/FakeMachine.h"

namespace quillmere::cli {
namespace {

using Type = testing::FakeMachine::Type;

class ComputeOptionsTest : public ::testing::Test {
protected:
    ComputeOptionsTest() { machine_.add("Card", Type::discrete); }

    // Compiles a network as a command does and returns what the console was told; the failure if there is
    // one.
    std::string compileOn(const std::string& device) {
        const testing::NetworkShape shape{32, 32, 4, 1};
        std::ostringstream out;
        std::ostringstream err;
        Console console({out, err, [] { return std::optional<std::size_t>(); }});
        CLI::App app;
        ComputeOptions options;
        options.addTo(app);
        app.parse(std::vector<std::string>{device, "--device"});  // as CLI11 takes them
        try {
            auto compute = options.begin(machine_, console);
            openedAtTheStart_ = machine_.opened.size();
            (void)compute.device().backend().compileWithWeights(shape.plan(), network::Purpose::inference,
                                                                testing::busyWeights(shape, 1));
        } catch (const network::DeviceError& error) {
            EXPECT_EQ(err.str(), "");
            return error.what();
        }
        EXPECT_EQ(out.str(), "");
        return err.str();
    }

    testing::FakeMachine machine_;
    std::size_t openedAtTheStart_ = 0;
};

TEST_F(ComputeOptionsTest, ANamedDeviceIsOpenedAtTheStartAndAnAutomaticOneWhenItIsNeeded) {
    EXPECT_EQ(compileOn("card"), "");
    EXPECT_EQ(openedAtTheStart_, 1U);
    machine_.opened.clear();
    EXPECT_EQ(compileOn("auto"), "");
    EXPECT_EQ(openedAtTheStart_, 0U);
    EXPECT_EQ(machine_.compiled, (std::vector<std::string>{"Card", "Card"}));
}

TEST_F(ComputeOptionsTest, ADeviceThatMovesInTheListIsStillTheOneOfItsIdentity) {
    machine_.add("Card", Type::discrete);
    const std::string second = machine_.devices[2].identity.text();
    std::swap(machine_.devices[1], machine_.devices[2]);
    EXPECT_EQ(compileOn(second), "");
    EXPECT_EQ(machine_.opened.back().text(), second);
}

TEST_F(ComputeOptionsTest, ANamedDeviceThatIsGoneOrDoesNotOpenIsAnError) {
    EXPECT_EQ(compileOn("Other"), "There is no device \"Other\". 'quillmere-cli devices' lists the devices.");
    machine_.cannotOpen = "Card";
    EXPECT_EQ(compileOn("card"), "Card cannot be opened.");
    EXPECT_EQ(compileOn("1"), "Card cannot be opened.");
    EXPECT_TRUE(machine_.compiled.empty());
}

TEST_F(ComputeOptionsTest, AnAutomaticDeviceThatDoesNotOpenLeavesTheWorkToTheProcessor) {
    machine_.cannotOpen = "Card";
    EXPECT_EQ(compileOn("auto"), "Card cannot be opened. The processor is used instead.\n");
    EXPECT_EQ(machine_.compiled, std::vector<std::string>{"CPU"});
}

TEST_F(ComputeOptionsTest, AFullDeviceLeavesTheNetworkToTheProcessor) {
    machine_.isFull = true;
    EXPECT_EQ(compileOn("card"), "The card is full. The processor is used instead.\n");
    EXPECT_EQ(machine_.compiled, std::vector<std::string>{"CPU"});
}

TEST_F(ComputeOptionsTest, ADeviceLostBeforeItHasTheWeightsLeavesTheNetworkToTheProcessor) {
    machine_.fails = true;
    EXPECT_EQ(compileOn("card"), "The device was lost. The processor is used instead.\n");
    EXPECT_EQ(machine_.compiled, (std::vector<std::string>{"Card", "CPU"}));
}

}  // namespace
}  // namespace quillmere::cli
