// The whole network on the software device.

#include "QuillmereCore/Network/Vulkan/VulkanBackend.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>

#include "QuillmereCore/Network/BackendContract.h"
#include "QuillmereCore/Network/NetworkTestData.h"
#include "QuillmereCore/Network/Vulkan/SoftwareDevice.h"
#include "QuillmereCore/Network/Vulkan/VulkanExecutor.h"
#include "QuillmereCore/Util/Parallel.h"

namespace quillmere::network {
namespace {

using testing::Arrays;
using testing::BackendContract;
using testing::busyWeights;
using testing::compiled;
using testing::gaussianArray;
using testing::NetworkShape;
using testing::speckledImages;
using testing::StepInput;
using testing::weightsAfterSteps;

Backend& device() {
    static const std::unique_ptr<Backend> backend = vulkan::makeBackend(testing::softwareDevice());
    return *backend;
}

INSTANTIATE_TEST_SUITE_P(Vulkan, BackendContract, ::testing::Values(&device),
                         [](const auto&) { return "GraphicsProcessor"; });

// ||actual - expected|| / ||expected||; NaN if anything is.
double relativeError(std::span<const float> actual, std::span<const float> expected) {
    double difference = 0;
    double norm = 0;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        difference += std::pow(double{actual[i]} - expected[i], 2);
        norm += std::pow(double{expected[i]}, 2);
    }
    return std::sqrt(difference / norm);
}

void expectClose(const NetworkShape& shape, const Arrays& actual, const Arrays& expected, double tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    const Plan plan = shape.plan();
    for (std::size_t p = 0; p < actual.size(); ++p) {
        ASSERT_EQ(actual[p].size(), expected[p].size());
        EXPECT_TRUE(relativeError(actual[p], expected[p]) <= tolerance)
            << plan.parameters[p].name << ": " << relativeError(actual[p], expected[p]);
    }
}

class VulkanStep : public ::testing::TestWithParam<NetworkShape> {};

TEST_P(VulkanStep, GradientsAndScalarsMeetTheProcessors) {
    const NetworkShape shape = GetParam();
    const auto weights = busyWeights(shape, 5);
    const StepInput input(shape, 11);
    const auto gpu = compiled(device(), shape, Purpose::training, weights);
    const auto cpu = compiled(*makeCPUBackend(), shape, Purpose::training, weights);
    const StepResult actual = gpu->step(input.x, input.eps, 1e-4F, 0.1F);
    const StepResult expected = cpu->step(input.x, input.eps, 1e-4F, 0.1F);
    EXPECT_NEAR(actual.loss, expected.loss, 1e-5F * std::abs(expected.loss));
    EXPECT_NEAR(actual.mse, expected.mse, 1e-5F * std::abs(expected.mse));
    EXPECT_NEAR(actual.kl, expected.kl, 1e-5F * std::max(1.0F, std::abs(expected.kl)));
    expectClose(shape, gpu->gradients(), cpu->gradients(), 1e-5);
}

// All parameters as one vector: that of a single bias may pass through zero.
TEST_P(VulkanStep, ParametersAfterThreeStepsMeetTheProcessors) {
    const NetworkShape shape = GetParam();
    const auto weights = busyWeights(shape, 8);
    const auto gpu = compiled(device(), shape, Purpose::training, weights);
    const auto cpu = compiled(*makeCPUBackend(), shape, Purpose::training, weights);
    for (std::uint64_t t = 0; t < 3; ++t) {
        const StepInput input(shape, 40 + 2 * t);
        gpu->step(input.x, input.eps, 1e-5F, 0.01F);
        cpu->step(input.x, input.eps, 1e-5F, 0.01F);
    }
    std::vector<float> actual;
    std::vector<float> expected;
    for (const auto& [executor, all] : {std::pair{gpu.get(), &actual}, std::pair{cpu.get(), &expected}}) {
        for (const auto& array : executor->weights())
            all->insert(all->end(), array.begin(), array.end());
    }
    EXPECT_LE(relativeError(actual, expected), 1e-6);
}

INSTANTIATE_TEST_SUITE_P(Shapes, VulkanStep,
                         ::testing::Values(NetworkShape{96, 32, 64, 2}, NetworkShape{96, 64, 64, 1},
                                           NetworkShape{384, 64, 64, 3},
                                           NetworkShape{32, 96, 17, 3}),  // an odd latent size
                         [](const auto& test) { return test.param.name(); });

TEST(VulkanBackend, EncodeAndDecodeMeetTheProcessors) {
    const NetworkShape shape{96, 64, 64, 2};
    const auto weights = busyWeights(shape, 6);
    const auto gpu = compiled(device(), shape, Purpose::inference, weights);
    const auto cpu = compiled(*makeCPUBackend(), shape, Purpose::inference, weights);
    const auto x = speckledImages(shape.batch * shape.imageSize(), 21);
    const std::size_t latents = static_cast<std::size_t>(shape.batch) * shape.latentDim;
    std::vector<float> mean(latents), logVariance(latents), expectedMean(latents), expectedLogVar(latents);
    gpu->encode(x, mean, logVariance);
    cpu->encode(x, expectedMean, expectedLogVar);
    EXPECT_LE(relativeError(mean, expectedMean), 1e-5);
    EXPECT_LE(relativeError(logVariance, expectedLogVar), 1e-5);
    std::vector<float> again(latents);
    gpu->encode(x, again, {});
    EXPECT_EQ(again, mean);

    const auto z = gaussianArray(latents, 22);
    std::vector<float> images(x.size()), expectedImages(x.size());
    gpu->decode(z, images);
    cpu->decode(z, expectedImages);
    EXPECT_LE(relativeError(images, expectedImages), 1e-5);
}

TEST(VulkanBackend, NewWeightsForgetTheGradients) {
    const NetworkShape shape{32, 32, 4, 2};
    const auto weights = busyWeights(shape, 7);
    const auto gpu = compiled(device(), shape, Purpose::training, weights);
    const StepInput input(shape, 31);
    gpu->step(input.x, input.eps, 1e-3F, 0.01F);
    gpu->setWeights(weights);
    for (const auto& gradient : gpu->gradients())
        EXPECT_EQ(testing::largest(gradient), 0);
}

TEST(VulkanBackend, LogVarianceIsClamped) {
    const NetworkShape shape{32, 32, 3, 1};
    auto weights = busyWeights(shape, 6);
    const Plan plan = shape.plan();
    weights[static_cast<std::size_t>(plan.logVariance.bias)] = {100, -100, 0};
    const auto gpu = compiled(device(), shape, Purpose::inference, weights);
    std::vector<float> mean(3), logVariance(3);
    gpu->encode(speckledImages(shape.imageSize(), 1), mean, logVariance);
    EXPECT_EQ(logVariance[0], 6);
    EXPECT_EQ(logVariance[1], -12);
}

TEST(VulkanBackend, WithoutKLWeightTheLossIsTheSquaredError) {
    const NetworkShape shape{32, 32, 3, 2};
    const auto gpu = compiled(device(), shape, Purpose::training, busyWeights(shape, 2));
    const StepInput input(shape, 3);
    const StepResult result = gpu->step(input.x, input.eps, 1e-3F, 0);
    EXPECT_EQ(result.loss, result.mse);
    EXPECT_GT(result.kl, 0);
}

// Twenty steps on one batch, with both backends alike.
TEST(VulkanBackend, TwentyStepsLearnAsTheProcessorDoes) {
    const NetworkShape shape{32, 32, 4, 4};
    const auto weights = busyWeights(shape, 4);
    const auto gpu = compiled(device(), shape, Purpose::training, weights);
    const auto cpu = compiled(*makeCPUBackend(), shape, Purpose::training, weights);
    const StepInput input(shape, 60);
    StepResult first, last, expected;
    for (int t = 0; t < 20; ++t) {
        last = gpu->step(input.x, input.eps, 1e-4F, 0.002F);
        expected = cpu->step(input.x, input.eps, 1e-4F, 0.002F);
        if (t == 0) first = last;
    }
    EXPECT_LT(last.loss, 0.9F * first.loss);
    EXPECT_NEAR(last.loss, expected.loss, 1e-3F * expected.loss);
}

TEST(VulkanBackend, TwoExecutorsOnTwoThreadsShareTheDevice) {
    const NetworkShape shape{32, 64, 4, 3};
    const Arrays expected = weightsAfterSteps(device(), shape, 3);
    std::array<Arrays, 2> results;
    parallelFor(2, [&](std::size_t i) { results[i] = weightsAfterSteps(device(), shape, 3); });
    EXPECT_EQ(results[0], expected);
    EXPECT_EQ(results[1], expected);
}

// Most of a step's operations depend on each other in one long chain; the rest must find places beside it.
TEST(VulkanBackend, AStepTakesFewBarriers) {
    const NetworkShape shape{32, 32, 4, 2};
    const auto context = std::make_shared<vulkan::Context>(testing::softwareDevice());
    const vulkan::VulkanExecutor executor(context, shape.plan(), Purpose::training);
    EXPECT_LE(executor.stepSequence().barriers(), 35U);
    EXPECT_GE(executor.stepSequence().operations(), 80U);
}

TEST(VulkanBackend, AProfiledStepTimesEveryOperationAndComputesTheSame) {
    const NetworkShape shape{32, 32, 4, 2};
    const auto context = std::make_shared<vulkan::Context>(testing::softwareDevice());
    vulkan::VulkanExecutor profiled(context, shape.plan(), Purpose::training,
                                    vulkan::Sequence::Mode::profiled);
    vulkan::VulkanExecutor plain(context, shape.plan(), Purpose::training);
    const StepInput input(shape, 3);
    for (Executor* const executor : {static_cast<Executor*>(&profiled), static_cast<Executor*>(&plain)}) {
        executor->setWeights(busyWeights(shape, 2));
        executor->step(input.x, input.eps, 1e-3F, 0.01F);
    }
    EXPECT_EQ(profiled.weights(), plain.weights());
    const auto times = profiled.stepSequence().times();
    ASSERT_EQ(times.size(), profiled.stepSequence().operations());
    for (const auto& time : times)
        EXPECT_GE(time.milliseconds, 0) << time.name;
    EXPECT_TRUE(plain.stepSequence().times().empty());
}

TEST(VulkanBackend, ATensorTooLargeForTheDeviceIsAnErrorThatSaysSo) {
    ComputeDevice small = testing::softwareDevice();
    small.limits.largestTensor = 100'000;
    const auto backend = vulkan::makeBackend(small);
    try {
        (void)backend->compile(NetworkShape{96, 64, 4, 2}.plan(), Purpose::training);
        FAIL() << "compiled";
    } catch (const DeviceError& error) {
        EXPECT_NE(std::string(error.what()).find("tensors of at most 1 MB"), std::string::npos)
            << error.what();
    }
}

TEST(VulkanBackend, ADispatchTooLargeForTheDeviceIsAnError) {
    ComputeDevice small = testing::softwareDevice();
    small.limits.workGroups = {8, 8, 8};
    EXPECT_THROW(
        (void)vulkan::makeBackend(small)->compile(NetworkShape{96, 64, 4, 2}.plan(), Purpose::training),
        DeviceError);
}

std::string failureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const DeviceError& error) {
        return error.what();
    }
    return "no failure";
}

TEST(VulkanBackend, MemoryThatIsNotThereIsAnErrorThatSaysSo) {
    ComputeDevice roomy = testing::softwareDevice();
    roomy.limits.largestTensor = UINT64_MAX;
    const vulkan::Context context(roomy);
    EXPECT_EQ(failureOf([&] { (void)context.makeBuffer(std::uint64_t{1} << 44U); }),
              roomy.name() +
                  " has not enough free memory. Close other programs that use it, or choose another device.");
}

TEST(VulkanBackend, EveryFailureNamesTheDeviceAndSaysWhatToDo) {
    EXPECT_EQ(failureOf([] { vulkan::check(VK_ERROR_DEVICE_LOST, "Card 9", "computing"); }),
              "Card 9 was lost while computing. Try again, or choose another device.");
    EXPECT_EQ(
        failureOf([] { vulkan::check(VK_ERROR_INITIALIZATION_FAILED, "Card 9", "opening it"); }),
        "Card 9 failed while opening it (Vulkan error -3). Update the graphics driver, or choose another "
        "device.");
    EXPECT_EQ(failureOf([] { vulkan::check(VK_SUCCESS, "Card 9", "computing"); }), "no failure");
}

TEST(VulkanBackend, AFailureIsTranslatedWithWhatWasBeingDone) {
    const auto lookup = [](const char* singular, const char*, std::uint64_t) {
        return std::string_view(singular) == "computing" ? "RECHNEN" : singular;
    };
    for (const VkResult result : {VK_ERROR_DEVICE_LOST, VK_ERROR_INITIALIZATION_FAILED}) {
        try {
            vulkan::check(result, "Card 9", "computing");
            ADD_FAILURE() << result;
        } catch (const DeviceError& error) {
            EXPECT_THAT(error.message().translated(lookup), ::testing::HasSubstr("while RECHNEN"));
        }
    }
}

TEST(VulkanBackend, ADeviceThatIsGoneDoesNotOpen) {
    ComputeDevice gone = testing::softwareDevice();
    gone.identity.uuid[0] = static_cast<std::uint8_t>(gone.identity.uuid[0] + 1);
    EXPECT_THROW((void)vulkan::makeBackend(gone), DeviceError);
}

}  // namespace
}  // namespace quillmere::network
