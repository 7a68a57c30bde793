#include "Support/ReferenceBackend.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>

#include "QuillmereCore/Network/NetworkTestData.h"

namespace quillmere {
namespace {

using testing::busyWeights;
using testing::NetworkShape;
using testing::StepInput;

constexpr NetworkShape shape{32, 32, 3, 2};
constexpr float klWeight = 0.5F;

const std::vector<std::vector<float>>& initialWeights() {
    static const auto weights = busyWeights(shape, 3);
    return weights;
}

class VAEGradient : public ::testing::TestWithParam<int> {
protected:
    // The loss with one weight of the parameter under test moved by delta.
    double lossWith(std::size_t index, float delta) {
        auto weights = initialWeights();
        weights[GetParam()][index] += delta;
        executor_->setWeights(weights);
        return executor_->step(input_.x, input_.eps, 0.0F, klWeight).loss;
    }

    std::vector<float> analyticGradient() {
        executor_->setWeights(initialWeights());
        executor_->step(input_.x, input_.eps, 0.0F, klWeight);
        return executor_->gradients()[GetParam()];
    }

    StepInput input_{shape, 17};
    std::unique_ptr<network::Executor> executor_ =
        testing::makeReferenceBackend()->compile(shape.plan(), network::Purpose::training);
};

// The loss comes back in single precision, so the difference of two losses is good to about 2e-7 / (2 h).
TEST_P(VAEGradient, MatchesCentralDifferences) {
    constexpr float h = 4e-3F;
    const auto analytic = analyticGradient();
    const float scale = testing::largest(analytic);
    const std::size_t last = analytic.size() - 1;
    const std::set<std::size_t> indices{last / 3, last - last / 4};
    for (const std::size_t i : indices) {
        const double numeric = (lossWith(i, h) - lossWith(i, -h)) / (2.0 * h);
        EXPECT_NEAR(analytic[i], numeric, 1e-4 + 1e-2 * scale)
            << shape.plan().parameters[GetParam()].name << "[" << i << "]";
    }
}

INSTANTIATE_TEST_SUITE_P(Parameters, VAEGradient, ::testing::Range(0, 28), [](const auto& test) {
    std::string name = shape.plan().parameters[test.param].name;
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
});

}  // namespace
}  // namespace quillmere
