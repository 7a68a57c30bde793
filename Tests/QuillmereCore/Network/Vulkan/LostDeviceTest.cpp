// A device that is lost, gone or full, as the trainer and the user meet it: the software driver behind a
// layer that fails when told to.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuillmereCore/Model/Training/TrainingLoop.h"
#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Network/NetworkTestData.h"
#include "QuillmereCore/Network/Vulkan/FaultyDriver/FaultyDriver.h"
#include "QuillmereCore/Network/Vulkan/VulkanExecutor.h"

namespace quillmere {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::NetworkShape;
using ::testing::StartsWith;
namespace FaultyDriver = testing::FaultyDriver;

const NetworkShape shape{32, 32, 4, 2};

class LostDevice : public ::testing::Test {
public:
    LostDevice() { FaultyDriver::behave(); }
    ~LostDevice() override { FaultyDriver::behave(); }

    ModelTrainer::TrainedNetwork train() { return train(device.backend()); }
    static ModelTrainer::TrainedNetwork train(network::Backend& backend) {
        const std::vector<std::vector<float>> images{testing::speckledImages(shape.imageSize(), 1),
                                                     testing::speckledImages(shape.imageSize(), 2)};
        TrainingOptions options;
        options.steps = 1;
        options.batchSize = shape.batch;
        options.latentDim = shape.latentDim;
        return ModelTrainer::trainOnImages(shape.config(), images, options, {}, {}, backend);
    }
    // What the user reads if training fails.
    std::string failureOfTraining() {
        try {
            (void)train();
            return "no failure";
        } catch (const network::DeviceError& error) {
            return error.what();
        }
    }
    bool compilesForTheDevice() {
        const auto executor = device.backend().compile(shape.plan(), network::Purpose::training);
        return dynamic_cast<network::vulkan::VulkanExecutor*>(executor.get()) != nullptr;
    }

    std::vector<std::string> notices;
    network::ChosenDevice device{GPU::shared().machine(),
                                 network::DeviceChoice::fromOption("llvmpipe"),
                                 network::ChosenDevice::Otherwise::fail,
                                 {.opened = {}, .processorStandsIn = [this](const std::string& message) {
                                      notices.push_back(message);
                                  }}};
};

TEST_F(LostDevice, EndsTheRunWithAnErrorThatNamesTheDeviceAndSaysWhatToDo) {
    FaultyDriver::loseDeviceAt(3);  // after the start and the weights: the first step
    EXPECT_THAT(failureOfTraining(),
                AllOf(StartsWith("llvmpipe"),
                      EndsWith(" was lost while computing. Try again, or choose another device.")));
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(LostDevice, WhateverTheMomentTheRunEndsAndTheNextOneLearnsOnTheDeviceAgain) {
    const auto expected = train();
    const int last = FaultyDriver::submissions();
    for (const int moment : {3, last}) {  // the step; decoding at the end of the run
        FaultyDriver::loseDeviceAt(moment);
        EXPECT_THAT(failureOfTraining(), HasSubstr("was lost"));
        EXPECT_EQ(train().weights, expected.weights) << "after submission " << moment << " of " << last;
    }
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(LostDevice, IsNoticedBeforeTrainingBeginsAndOpenedAgainAtOnce) {
    const auto expected = train();
    FaultyDriver::loseDeviceAt(1);
    EXPECT_EQ(train().weights, expected.weights);
    EXPECT_THAT(notices, IsEmpty());
}

TEST_F(LostDevice, IsOpenedOnceAgainAndNotForEveryNetwork) {
    (void)train();
    const int opened = FaultyDriver::openedDevices();
    FaultyDriver::loseDeviceAt(3);
    EXPECT_NE(failureOfTraining(), "no failure");
    (void)train();
    (void)train();
    EXPECT_EQ(FaultyDriver::openedDevices(), opened + 1);
}

TEST_F(LostDevice, ThatStaysGoneLeavesLearningToTheProcessorAndIsTakenAgainWhenItIsBack) {
    (void)train();
    FaultyDriver::loseDeviceAt(3);
    EXPECT_NE(failureOfTraining(), "no failure");
    FaultyDriver::refuseToOpen();
    const auto trained = train();
    EXPECT_EQ(trained.weights, train(*network::makeCPUBackend()).weights);
    // One notice for each of the two networks of a run.
    const auto notice = AllOf(StartsWith("llvmpipe"), HasSubstr(" failed while opening it"),
                              EndsWith(" The processor is used instead."));
    EXPECT_THAT(notices, ElementsAre(notice, notice));

    FaultyDriver::behave();
    EXPECT_TRUE(compilesForTheDevice());
    EXPECT_EQ(notices.size(), 2U);
}

TEST_F(LostDevice, ThatIsLostAgainAtOnceLeavesLearningToTheProcessor) {
    FaultyDriver::loseEveryDevice();
    EXPECT_EQ(train().weights, train(*network::makeCPUBackend()).weights);
    ASSERT_FALSE(notices.empty());
    EXPECT_THAT(notices.front(), AllOf(HasSubstr("was lost"), EndsWith("The processor is used instead.")));
}

TEST_F(LostDevice, GenerationMeetsItAsAnErrorToo) {
    VAEInference inference(shape.config(), testing::busyWeights(shape, 1), device.backend());
    const std::vector<std::vector<float>> latents(3, testing::gaussianArray(4, 1));
    const auto before = inference.decode(latents);
    FaultyDriver::loseDeviceAt(1);
    EXPECT_THROW((void)inference.decode(latents), network::DeviceError);
    EXPECT_THROW((void)inference.decode(latents), network::DeviceError);  // this network is of no use now
    VAEInference again(shape.config(), testing::busyWeights(shape, 1), device.backend());
    EXPECT_EQ(again.decode(latents), before);
}

// Nothing has been computed that would be lost with it.
TEST_F(LostDevice, ThatIsLostBeforeItHasTheWeightsLeavesLearningToTheProcessor) {
    FaultyDriver::loseDeviceAt(2);  // after the start: the weights
    EXPECT_EQ(train().weights, train(*network::makeCPUBackend()).weights);
    EXPECT_THAT(notices,
                ElementsAre(AllOf(StartsWith("llvmpipe"), HasSubstr(" was lost while "),
                                  EndsWith("choose another device. The processor is used instead."))));
}

using FullDevice = LostDevice;

TEST_F(FullDevice, LeavesTheNetworkToTheProcessorWhicheverAllocationFails) {
    ASSERT_TRUE(compilesForTheDevice());
    const int all = FaultyDriver::allocations();
    ASSERT_GT(all, 20);
    for (const int failing : {1, 2, all / 2, all}) {
        notices.clear();
        FaultyDriver::failAllocationsFrom(failing);
        EXPECT_FALSE(compilesForTheDevice()) << "allocation " << failing << " of " << all;
        EXPECT_THAT(notices,
                    ElementsAre(AllOf(StartsWith("llvmpipe"), HasSubstr(" has not enough free memory."),
                                      EndsWith(" The processor is used instead."))));
    }
    FaultyDriver::failAllocationsFrom(all + 1);
    EXPECT_TRUE(compilesForTheDevice());
}

// So a run that has begun cannot fail for want of it.
TEST_F(FullDevice, ARunTakesNoMemory) {
    const auto executor = device.backend().compile(shape.plan(), network::Purpose::training);
    const testing::StepInput input(shape, 3);
    FaultyDriver::failAllocationsFrom(1);
    executor->setWeights(testing::busyWeights(shape, 1));
    executor->step(input.x, input.eps, 1e-3F, 0.01F);
    EXPECT_EQ(executor->weights().size(), shape.plan().parameters.size());
    EXPECT_EQ(FaultyDriver::allocations(), 0);
}

}  // namespace
}  // namespace quillmere
