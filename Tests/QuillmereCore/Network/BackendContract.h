#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/NetworkTestData.h"

// What every backend of the product keeps to, whatever it computes on. A test file instantiates the suite
// with its backend:
//   INSTANTIATE_TEST_SUITE_P(CPU, BackendContract, ::testing::Values(&backend), testing::nameOfBackend);
namespace quillmere::testing {

using Arrays = std::vector<std::vector<float>>;

inline std::unique_ptr<network::Executor> compiled(network::Backend& backend, const NetworkShape& shape,
                                                   network::Purpose purpose, const Arrays& weights) {
    auto executor = backend.compile(shape.plan(), purpose);
    executor->setWeights(weights);
    return executor;
}

inline Arrays weightsAfterSteps(network::Backend& backend, const NetworkShape& shape, std::uint64_t steps) {
    const auto executor = compiled(backend, shape, network::Purpose::training, busyWeights(shape, 7));
    for (std::uint64_t t = 0; t < steps; ++t) {
        const StepInput input(shape, 31 + 2 * t);
        executor->step(input.x, input.eps, 1e-3F, 0.01F);
    }
    return executor->weights();
}

// The parameter returns the backend.
class BackendContract : public ::testing::TestWithParam<network::Backend& (*)()> {
protected:
    static network::Backend& backend() { return GetParam()(); }
};

TEST_P(BackendContract, RepeatedRunsGiveTheSameBits) {
    const NetworkShape shape{32, 64, 4, 3};
    EXPECT_EQ(weightsAfterSteps(backend(), shape, 3), weightsAfterSteps(backend(), shape, 3));
}

TEST_P(BackendContract, WeightsComeBackAsTheyWent) {
    const NetworkShape shape{32, 96, 5, 1};
    const auto weights = busyWeights(shape, 9);
    EXPECT_EQ(compiled(backend(), shape, network::Purpose::inference, weights)->weights(), weights);
}

TEST_P(BackendContract, NewWeightsForgetTheMoments) {
    const NetworkShape shape{32, 32, 4, 2};
    const auto weights = busyWeights(shape, 7);
    const auto executor = compiled(backend(), shape, network::Purpose::training, weights);
    const StepInput input(shape, 31);
    executor->step(input.x, input.eps, 1e-3F, 0.01F);
    const Arrays once = executor->weights();
    EXPECT_NE(once, weights);
    executor->setWeights(weights);
    executor->step(input.x, input.eps, 1e-3F, 0.01F);
    EXPECT_EQ(executor->weights(), once);
}

TEST_P(BackendContract, DecodingAndEncodingBetweenStepsChangesNothing) {
    const NetworkShape shape{32, 64, 4, 3};
    const auto z = gaussianArray(12, 80);
    const auto x = speckledImages(3 * shape.imageSize(), 81);
    std::vector<float> images(3 * shape.imageSize()), mean(12);
    const auto executor = compiled(backend(), shape, network::Purpose::training, busyWeights(shape, 7));
    for (std::uint64_t t = 0; t < 2; ++t) {
        const StepInput input(shape, 31 + 2 * t);
        executor->step(input.x, input.eps, 1e-3F, 0.01F);
        executor->decode(z, images);
        executor->encode(x, mean, {});
    }
    EXPECT_EQ(executor->weights(), weightsAfterSteps(backend(), shape, 2));
}

TEST_P(BackendContract, TrainingAndInferenceDecodeTheSameBits) {
    const NetworkShape shape{64, 32, 4, 3};
    const auto weights = busyWeights(shape, 12);
    const auto z = gaussianArray(12, 70);
    std::vector<float> trained(3 * shape.imageSize()), inferred(3 * shape.imageSize());
    compiled(backend(), shape, network::Purpose::training, weights)->decode(z, trained);
    compiled(backend(), shape, network::Purpose::inference, weights)->decode(z, inferred);
    EXPECT_EQ(trained, inferred);
}

TEST_P(BackendContract, DecodedImageDoesNotDependOnItsPlaceInTheBatch) {
    const NetworkShape shape{32, 32, 4, 16};
    const auto executor = compiled(backend(), shape, network::Purpose::inference, busyWeights(shape, 10));
    const auto z = gaussianArray(4, 50);
    std::vector<float> expected;
    for (const std::size_t place : {0, 1, 7, 15}) {
        auto batch = gaussianArray(std::size_t{16} * 4, 60 + place);
        std::copy(z.begin(), z.end(), batch.begin() + static_cast<std::ptrdiff_t>(4 * place));
        std::vector<float> images(16 * shape.imageSize());
        executor->decode(batch, images);
        const auto image = std::span(images).subspan(place * shape.imageSize(), shape.imageSize());
        if (expected.empty()) expected.assign(image.begin(), image.end());
        EXPECT_THAT(image, ::testing::ElementsAreArray(expected)) << "place " << place;
    }
}

TEST_P(BackendContract, FirstItemsOfABatchAloneGiveTheSameBits) {
    const NetworkShape shape{32, 64, 8, 9};
    const auto executor = compiled(backend(), shape, network::Purpose::inference, busyWeights(shape, 8));
    const auto z = gaussianArray(std::size_t{9} * 8, 23);
    const auto x = speckledImages(9 * shape.imageSize(), 24);
    std::vector<float> images(9 * shape.imageSize()), mean(9 * 8), logVariance(9 * 8);
    executor->decode(z, images);
    executor->encode(x, mean, logVariance);
    for (const std::size_t count : {0, 1, 4, 8, 1}) {
        std::vector<float> someImages(count * shape.imageSize()), someMeans(count * 8),
            someVariances(count * 8);
        executor->decode(std::span(z).first(count * 8), someImages);
        executor->encode(std::span(x).first(count * shape.imageSize()), someMeans, someVariances);
        EXPECT_THAT(someImages, ::testing::ElementsAreArray(images.data(), someImages.size()));
        EXPECT_THAT(someMeans, ::testing::ElementsAreArray(mean.data(), someMeans.size()));
        EXPECT_THAT(someVariances, ::testing::ElementsAreArray(logVariance.data(), someVariances.size()));
    }
}

TEST_P(BackendContract, NonFiniteInputGivesANonFiniteLossAndReturns) {
    const NetworkShape shape{32, 32, 4, 2};
    const auto executor = compiled(backend(), shape, network::Purpose::training, busyWeights(shape, 14));
    StepInput input(shape, 95);
    input.x[100] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(std::isfinite(executor->step(input.x, input.eps, 1e-3F, 0.01F).loss));
}

}  // namespace quillmere::testing
