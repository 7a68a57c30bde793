#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/BackendContract.h"
#include "QuillmereCore/Network/NetworkTestData.h"
#include "QuillmereCore/Util/Parallel.h"
#include "Support/InstructionSets.h"
#include "Support/ReferenceBackend.h"

namespace quillmere {
namespace {

using testing::BackendContract;
using testing::busyWeights;
using testing::gaussianArray;
using testing::InstructionSet;
using testing::largest;
using testing::makeReferenceBackend;
using testing::NetworkShape;
using testing::speckledImages;
using testing::StepInput;
using testing::weightsAfterSteps;

network::Backend& processor() {
    static const std::unique_ptr<network::Backend> backend = network::makeCPUBackend();
    return *backend;
}

INSTANTIATE_TEST_SUITE_P(CPU, BackendContract, ::testing::Values(&processor),
                         [](const auto&) { return "Processor"; });

// Largest difference of two arrays relative to the largest value of the second.
void expectClose(const std::vector<float>& actual, const std::vector<float>& expected, float tolerance,
                 const std::string& what) {
    ASSERT_EQ(actual.size(), expected.size()) << what;
    const float scale = largest(expected);
    float worst = 0;
    std::size_t at = 0;
    for (std::size_t i = 0; i < actual.size(); ++i) {
        const float difference = std::abs(actual[i] - expected[i]);
        if (!(difference <= worst)) {
            worst = difference;
            at = i;
        }
    }
    EXPECT_LE(worst, tolerance * scale)
        << what << " differs most at " << at << ": " << actual[at] << " instead of " << expected[at];
}

void expectClose(const network::Plan& plan, const std::vector<std::vector<float>>& actual,
                 const std::vector<std::vector<float>>& expected, float tolerance) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t p = 0; p < actual.size(); ++p) {
        expectClose(actual[p], expected[p], tolerance, plan.parameters[p].name);
    }
}

class CPUBackendShapes : public ::testing::TestWithParam<NetworkShape> {};

// The reference computes in double; the bound of 1e-5 of the largest value leaves room for single precision.
TEST_P(CPUBackendShapes, GradientsAndScalarsMeetTheReference) {
    const NetworkShape shape = GetParam();
    const network::Plan plan = shape.plan();
    const auto weights = busyWeights(shape, 5);
    const StepInput input(shape, 11);
    const auto cpu = network::makeCPUBackend()->compile(plan, network::Purpose::training);
    const auto reference = makeReferenceBackend()->compile(plan, network::Purpose::training);
    cpu->setWeights(weights);
    reference->setWeights(weights);
    const auto actual = cpu->step(input.x, input.eps, 1e-4F, 0.1F);
    const auto expected = reference->step(input.x, input.eps, 1e-4F, 0.1F);
    EXPECT_NEAR(actual.loss, expected.loss, 1e-5F * std::abs(expected.loss));
    EXPECT_NEAR(actual.mse, expected.mse, 1e-5F * std::abs(expected.mse));
    EXPECT_NEAR(actual.kl, expected.kl, 1e-5F * std::max(1.0F, std::abs(expected.kl)));
    expectClose(plan, cpu->gradients(), reference->gradients(), 1e-5F);
}

TEST_P(CPUBackendShapes, EncodeAndDecodeMeetTheReference) {
    const NetworkShape shape = GetParam();
    const network::Plan plan = shape.plan();
    const auto weights = busyWeights(shape, 6);
    const auto cpu = network::makeCPUBackend()->compile(plan, network::Purpose::inference);
    const auto reference = makeReferenceBackend()->compile(plan, network::Purpose::inference);
    cpu->setWeights(weights);
    reference->setWeights(weights);

    const std::size_t images = shape.batch * shape.imageSize();
    const std::size_t latents = static_cast<std::size_t>(shape.batch) * shape.latentDim;
    const auto x = speckledImages(images, 21);
    std::vector<float> mean(latents), logVariance(latents), expectedMean(latents),
        expectedLogVariance(latents);
    cpu->encode(x, mean, logVariance);
    reference->encode(x, expectedMean, expectedLogVariance);
    expectClose(mean, expectedMean, 1e-5F, "mean");
    expectClose(logVariance, expectedLogVariance, 1e-5F, "log-variance");

    const auto z = gaussianArray(latents, 22);
    std::vector<float> decoded(images), expectedDecoded(images);
    cpu->decode(z, decoded);
    reference->decode(z, expectedDecoded);
    expectClose(decoded, expectedDecoded, 1e-5F, "image");
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, CPUBackendShapes,
    ::testing::Values(NetworkShape{32, 32, 4, 2},    // one pixel at the deepest level
                      NetworkShape{32, 96, 3, 1},    // odd widths
                      NetworkShape{96, 32, 17, 3},   // odd heights, latent size no multiple of anything
                      NetworkShape{64, 160, 1, 10},  // groups of unequal size
                      NetworkShape{96, 192, 64, 2}, NetworkShape{384, 96, 64, 2}),
    [](const auto& test) { return test.param.name(); });

TEST(CPUBackend, StepsGiveTheSameBitsForAnyThreadCount) {
    const NetworkShape shape{32, 64, 8, 9};
    std::vector<std::vector<float>> expected;
    {
        const ThreadLimit one(1);
        expected = weightsAfterSteps(processor(), shape, 3);
    }
    for (const int threads : {2, 3, 5}) {
        const ThreadLimit limit(threads);
        EXPECT_EQ(weightsAfterSteps(processor(), shape, 3), expected) << threads << " threads";
    }
}

// Three steps of two backends stay together: the moments are kept and applied alike.
TEST(CPUBackend, ParametersAfterThreeStepsMeetTheReference) {
    const NetworkShape shape{32, 64, 6, 2};
    const auto weights = busyWeights(shape, 8);
    const auto cpu = network::makeCPUBackend()->compile(shape.plan(), network::Purpose::training);
    const auto reference = makeReferenceBackend()->compile(shape.plan(), network::Purpose::training);
    cpu->setWeights(weights);
    reference->setWeights(weights);
    for (std::uint64_t t = 0; t < 3; ++t) {
        const StepInput input(shape, 40 + 2 * t);
        cpu->step(input.x, input.eps, 1e-5F, 0.01F);
        reference->step(input.x, input.eps, 1e-5F, 0.01F);
    }
    const auto actual = cpu->weights();
    const auto expected = reference->weights();
    for (std::size_t p = 0; p < actual.size(); ++p) {
        for (std::size_t i = 0; i < actual[p].size(); ++i) {
            // A gradient near zero may change sign by rounding, and Adam's first steps follow the sign alone.
            ASSERT_NEAR(actual[p][i], expected[p][i], 2e-4F) << shape.plan().parameters[p].name << " " << i;
        }
    }
}

// What one step leaves behind in the memory that the next one uses must not reach its gradients.
TEST(CPUBackend, GradientsOfLaterStepsMeetTheReference) {
    for (const int batch : {1, 2, 5}) {
        SCOPED_TRACE("batch of " + std::to_string(batch));
        const NetworkShape shape{64, 64, 6, batch};
        const network::Plan plan = shape.plan();
        const auto cpu = network::makeCPUBackend()->compile(plan, network::Purpose::training);
        const auto reference = makeReferenceBackend()->compile(plan, network::Purpose::training);
        cpu->setWeights(busyWeights(shape, 9));
        for (std::uint64_t t = 0; t < 3; ++t) {
            SCOPED_TRACE("step " + std::to_string(t + 1));
            const StepInput input(shape, 60 + 2 * t);
            reference->setWeights(cpu->weights());
            reference->step(input.x, input.eps, 1e-4F, 0.01F);
            cpu->step(input.x, input.eps, 1e-4F, 0.01F);
            expectClose(plan, cpu->gradients(), reference->gradients(), 1e-5F);
        }
    }
}

// Every instruction set that this processor has meets the reference, not only the best one.
TEST(CPUBackend, EveryInstructionSetMeetsTheReference) {
    const NetworkShape shape{32, 96, 5, 3};
    const network::Plan plan = shape.plan();
    const auto weights = busyWeights(shape, 13);
    const StepInput input(shape, 90);
    const auto reference = makeReferenceBackend()->compile(plan, network::Purpose::training);
    reference->setWeights(weights);
    reference->step(input.x, input.eps, 1e-4F, 0.1F);
    const auto expected = reference->gradients();
    for (const std::int64_t target : InstructionSet::available()) {
        const InstructionSet only(target);
        const auto cpu = network::makeCPUBackend()->compile(plan, network::Purpose::training);
        cpu->setWeights(weights);
        cpu->step(input.x, input.eps, 1e-4F, 0.1F);
        SCOPED_TRACE(InstructionSet::name(target));
        expectClose(plan, cpu->gradients(), expected, 1e-5F);
    }
}

}  // namespace
}  // namespace quillmere
