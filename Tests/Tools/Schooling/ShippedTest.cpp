#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <vector>

#include "QuillmereCore/Model/HeadStart.h"
#include "QuillmereCore/Model/VAE.h"
#include "Schooling/Lessons.h"
#include "Support/Processor.h"

namespace quillmere::schooling {
namespace {

const std::filesystem::path folder = std::filesystem::path(QUILLMERE_TESTS_DIR) / ".." / "Data" / "HeadStart";

double meanSquaredDifference(const std::vector<std::vector<float>>& a,
                             const std::vector<std::vector<float>>& b) {
    double sum = 0;
    std::size_t count = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        for (std::size_t k = 0; k < a[i].size(); ++k) {
            const double difference = static_cast<double>(a[i][k]) - static_cast<double>(b[i][k]);
            sum += difference * difference;
        }
        count += a[i].size();
    }
    return sum / static_cast<double>(count);
}

class ShippedHeadStart : public ::testing::TestWithParam<AnalysisProfile> {};

TEST_P(ShippedHeadStart, TakesFewMegabytes) {
    EXPECT_LT(std::filesystem::file_size(HeadStart::file(folder, GetParam())), 8U << 20);
}

// A network that has learned nothing draws the same for every sound, which is at best their mean.
TEST_P(ShippedHeadStart, DrawsSoundsThatItHasNeverLearned) {
    constexpr std::uint64_t strangeSeries = 1000;
    ModelConfig config = ModelConfig::forSeconds(44100, 0.1, GetParam(), HeadStart::latentDim);
    config.frames = 64;
    const std::vector<std::vector<float>> images = soundImages(config, strangeSeries, 0, 32);
    std::vector<float> mean(images.front().size());
    for (const std::vector<float>& image : images) {
        for (std::size_t k = 0; k < mean.size(); ++k)
            mean[k] += image[k] / static_cast<float>(images.size());
    }
    const TrainingStart start = HeadStart::load(folder);
    VAEInference network(config, start.weightsFor(config, testing::processor()), testing::processor());
    const double error = meanSquaredDifference(network.decode(network.encode(images)), images);
    const std::vector<std::vector<float>> means(images.size(), mean);
    EXPECT_LT(error, 0.5 * meanSquaredDifference(means, images));
}

INSTANTIATE_TEST_SUITE_P(Each, ShippedHeadStart,
                         ::testing::Values(AnalysisProfile::percussive, AnalysisProfile::tonal));

}  // namespace
}  // namespace quillmere::schooling
