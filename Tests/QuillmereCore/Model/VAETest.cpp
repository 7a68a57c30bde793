#include "QuillmereCore/Model/VAE.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Network/NetworkTestData.h"
#include "Support/Processor.h"

namespace quillmere {
namespace {

using testing::busyWeights;
using testing::NetworkShape;
using testing::speckledImages;
using testing::StepInput;

constexpr NetworkShape small{32, 32, 4, 2};

std::vector<std::vector<float>> images(const NetworkShape& shape, std::size_t count) {
    std::vector<std::vector<float>> result;
    for (std::size_t i = 0; i < count; ++i)
        result.push_back(speckledImages(shape.imageSize(), 100 + i));
    return result;
}

TEST(VAEGraphBuilder, DeepestTensorOf96x192Is192x3x6) {
    const network::Plan plan = NetworkShape{96, 192, 64, 5}.plan();
    const network::ConvLayer& deepest = plan.encoder.back();
    EXPECT_EQ(deepest.loChannels, 192);
    EXPECT_EQ(deepest.loHeight, 3);
    EXPECT_EQ(deepest.loWidth, 6);
    EXPECT_EQ(plan.mean.inputs, 3456);
    EXPECT_EQ(plan.logVariance.inputs, 3456);
    EXPECT_EQ(plan.decoderInput.outputs, 3456);
}

TEST(VAEGraphBuilder, DecoderReturnsTheImageSize) {
    const network::Plan plan = NetworkShape{96, 192, 64, 5}.plan();
    EXPECT_EQ(plan.batch, 5);
    EXPECT_EQ(plan.output.height, 96);
    EXPECT_EQ(plan.output.width, 192);
}

TEST(VAEGraphBuilderDeathTest, ImageSizesThatCannotBeHalvedFiveTimesStopTheProgram) {
    EXPECT_DEATH((void)(NetworkShape{96, 100, 4, 1}.plan()), "multiple of 32");
    EXPECT_DEATH((void)(NetworkShape{0, 32, 4, 1}.plan()), "multiple of 32");
}

TEST(VAEInference, SeventeenImagesGiveSeventeenMeans) {
    VAEInference inference(small.config(), busyWeights(small, 1), testing::processor());
    const auto all = images(small, 17);
    const auto means = inference.encode(all);
    ASSERT_EQ(means.size(), 17U);
    // The last image, alone in its chunk among silent ones, is encoded as in any other place.
    const std::vector<std::vector<float>> last{all.back()};
    EXPECT_EQ(means.back(), inference.encode(last).front());
}

TEST(VAEInference, NoInputGivesNoOutput) {
    VAEInference inference(small.config(), busyWeights(small, 1), testing::processor());
    EXPECT_TRUE(inference.decode({}).empty());
    EXPECT_TRUE(inference.encode({}).empty());
}

TEST(VAEInferenceDeathTest, LatentOfTheWrongSizeStopsTheProgram) {
    VAEInference inference(small.config(), busyWeights(small, 1), testing::processor());
    const std::vector<std::vector<float>> latents{std::vector<float>(3)};
    EXPECT_DEATH((void)inference.decode(latents), "wrong size");
}

TEST(VAETrainingGraph, LogVarianceIsClampedBeforeItIsUsed) {
    auto weights = busyWeights(small, 2);
    const network::Plan plan = small.plan();
    std::fill(weights[plan.logVariance.weight].begin(), weights[plan.logVariance.weight].end(), 0.0F);
    std::fill(weights[plan.mean.weight].begin(), weights[plan.mean.weight].end(), 0.0F);
    std::fill(weights[plan.mean.bias].begin(), weights[plan.mean.bias].end(), 0.0F);
    const StepInput input(small, 3);
    const auto klWithLogVariance = [&](float logVariance) {
        std::fill(weights[plan.logVariance.bias].begin(), weights[plan.logVariance.bias].end(), logVariance);
        VAETrainingGraph graph(small.config(), small.batch, weights, testing::processor());
        return graph.step(input.x, input.eps, 0.0F, 1.0F).kl;
    };
    // -0.5 * (1 + v - exp(v)) at v = 6 and v = -12, whatever lies beyond.
    EXPECT_NEAR(klWithLogVariance(50.0F), 0.5 * (std::exp(6.0) - 7.0), 1e-3);
    EXPECT_NEAR(klWithLogVariance(-50.0F), 0.5 * (std::exp(-12.0) + 11.0), 1e-5);
}

// With all weights zero the reconstruction is the output bias everywhere.
TEST(VAETrainingGraph, TargetOfExactlyTheThresholdCountsOnce) {
    auto weights = busyWeights(small, 4);
    for (auto& array : weights)
        std::fill(array.begin(), array.end(), 0.0F);
    const auto mseOf = [&](float target) {
        VAETrainingGraph graph(small.config(), small.batch, weights, testing::processor());
        const std::vector<float> x(small.batch * small.imageSize(), target);
        const std::vector<float> eps(static_cast<std::size_t>(small.batch) * small.latentDim);
        return graph.step(x, eps, 0.0F, 0.0F).mse;
    };
    const float threshold = -0.95F;
    EXPECT_NEAR(mseOf(threshold), threshold * threshold, 1e-6);
    const float above = std::nextafter(threshold, 0.0F);
    EXPECT_NEAR(mseOf(above), 4 * above * above, 1e-5);
}

TEST(VAETrainingGraph, LossEqualsMseExactlyWithoutKLWeight) {
    VAETrainingGraph graph(small.config(), small.batch, busyWeights(small, 5), testing::processor());
    const StepInput input(small, 6);
    const auto result = graph.step(input.x, input.eps, 1e-3F, 0.0F);
    EXPECT_EQ(result.loss, result.mse);
    EXPECT_NE(result.kl, 0.0F);
}

TEST(VAETrainingGraph, ScalarsBelongToTheParametersBeforeTheUpdate) {
    const auto weights = busyWeights(small, 7);
    const StepInput input(small, 8);
    VAETrainingGraph still(small.config(), small.batch, weights, testing::processor());
    VAETrainingGraph moving(small.config(), small.batch, weights, testing::processor());
    const auto first = still.step(input.x, input.eps, 0.0F, 0.1F);
    const auto second = moving.step(input.x, input.eps, 1e-2F, 0.1F);
    EXPECT_EQ(first.loss, second.loss);
    EXPECT_EQ(still.currentWeights(), weights);
    EXPECT_NE(moving.currentWeights(), weights);
}

TEST(GPU, SharedIsOneInstanceWithADevice) {
    EXPECT_EQ(&GPU::shared(), &GPU::shared());
    EXPECT_FALSE(GPU::shared().device().name().empty());
}

}  // namespace
}  // namespace quillmere
