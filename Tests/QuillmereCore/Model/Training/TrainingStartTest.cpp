#include "QuillmereCore/Model/Training/TrainingStart.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <vector>

#include "QuillmereCore/Model/Training/TrainingLoop.h"
#include "QuillmereCore/Model/Training/TrainingTestData.h"
#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/Parallel.h"
#include "Support/Processor.h"

namespace quillmere {
namespace {

using testing::processor;
using testing::quickOptions;
using testing::randomImages;
using testing::smallest;

ModelConfig wide(std::int64_t frames = 96) {
    ModelConfig config = smallest;
    config.frames = frames;
    return config;
}

TaughtNetwork networkOf(const ModelConfig& config, std::uint64_t seed = 9) {
    return {config, VAEArchitecture::initialWeights(config, seed)};
}

std::shared_ptr<const TrainingStart> startFrom(TaughtNetwork network) {
    return std::make_shared<const TrainingStart>(ModelStart{ModelStart::Kind::headStart, "test", "identity"},
                                                 std::vector{std::move(network)});
}

double meanDifference(const std::vector<float>& a, const std::vector<float>& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        sum += std::abs(static_cast<double>(a[i]) - static_cast<double>(b[i]));
    return sum / static_cast<double>(a.size());
}

// The first columns of an image, or the image followed by silence.
std::vector<float> imageOfWidth(const std::vector<float>& image, std::int64_t from, std::int64_t to) {
    std::vector<float> result(static_cast<std::size_t>(32 * to), -1.0F);
    for (std::int64_t row = 0; row < 32; ++row)
        std::copy_n(image.begin() + row * from, std::min(from, to), result.begin() + row * to);
    return result;
}

// ---- Which trainings fit

TEST(TrainingStart, FitsImagesOfItsKindWhateverTheirWidthAndRate) {
    const auto start = startFrom(networkOf(smallest));
    ModelConfig config = wide(320);
    config.sampleRate = 48000;
    EXPECT_EQ(start->problemWith(config), std::nullopt);
}

TEST(TrainingStart, NamesTheAnalysisThatDoesNotFit) {
    const auto start = startFrom(networkOf(smallest));
    const ModelConfig tonal = ModelConfig::forSeconds(8000, 0.1, AnalysisProfile::tonal, 4);
    EXPECT_EQ(start->problemWith(tonal),
              "What the training is to start from was learned with the percussive analysis, not with the "
              "tonal one.");
}

TEST(TrainingStart, NamesTheLatentSizeThatDoesNotFit) {
    const auto start = startFrom(networkOf(smallest));
    ModelConfig config = smallest;
    config.latentDim = 5;
    EXPECT_EQ(start->problemWith(config),
              "What the training is to start from has latent vectors of 4 numbers, not of 5.");
}

TEST(TrainingStart, TakesTheNetworkOfTheAnalysis) {
    ModelConfig other = smallest;
    other.nMels = 64;
    const TrainingStart start({}, {networkOf(other, 1), networkOf(smallest, 2)});
    EXPECT_TRUE(start.weightsFor(smallest, processor()) == networkOf(smallest, 2).weights);
    EXPECT_TRUE(start.weightsFor(other, processor()) == networkOf(other, 1).weights);
}

TEST(TrainingStart, OfAModelSaysWhichItWas) {
    ModelBundle model;
    model.config = smallest;
    model.metadata.corpusName = "Kicks";
    model.weights = networkOf(smallest).weights;
    model.latents = {{1, 2, 3, 4}};
    const TrainingStart start(model);
    EXPECT_EQ(start.origin().kind, ModelStart::Kind::model);
    EXPECT_EQ(start.origin().name, "Kicks");
    EXPECT_EQ(start.origin().identity.size(), 64U);
    EXPECT_TRUE(start.weightsFor(smallest, processor()) == model.weights);
}

TEST(TrainingStartDeathTest, NeedsANetworkThatFits) {
    EXPECT_DEATH((void)TrainingStart({}, {}), "no network");
    ModelConfig other = smallest;
    other.latentDim = 8;
    EXPECT_DEATH((void)startFrom(networkOf(smallest))->weightsFor(other, processor()), "does not fit");
}

// ---- Another width

TEST(OfWidth, HasTheShapesOfTheNewWidth) {
    for (const std::int64_t frames : {32, 64, 128}) {
        const TaughtNetwork network = ofWidth(networkOf(wide(96)), frames, processor());
        EXPECT_EQ(network.config.frames, frames);
        const auto params = VAEArchitecture::params(network.config);
        ASSERT_EQ(network.weights.size(), params.size());
        for (std::size_t i = 0; i < params.size(); ++i) {
            EXPECT_EQ(static_cast<std::int64_t>(network.weights[i].size()), params[i].elementCount())
                << params[i].name;
        }
    }
}

TEST(OfWidth, KeepsTheConvolutions) {
    const TaughtNetwork from = networkOf(wide());
    const TaughtNetwork to = ofWidth(from, 32, processor());
    const auto params = VAEArchitecture::params(from.config);
    for (std::size_t i = 0; i < params.size(); ++i) {
        if (params[i].shape.size() == 4) {
            EXPECT_TRUE(to.weights[i] == from.weights[i]) << params[i].name;
        }
    }
}

TEST(OfWidth, OfANarrowerImageEncodesNearlyAsTheWideOneFollowedBySilence) {
    const TaughtNetwork from = networkOf(wide(160));
    const TaughtNetwork to = ofWidth(from, 96, processor());
    std::vector<std::vector<float>> narrow;
    std::vector<std::vector<float>> padded;
    for (const std::vector<float>& image : randomImages(4)) {
        narrow.push_back(imageOfWidth(image, 32, 96));  // ends in silence, long before the cut
        padded.push_back(imageOfWidth(image, 32, 160));
    }
    VAEInference wideNetwork(from.config, from.weights, processor());
    VAEInference narrowNetwork(to.config, to.weights, processor());
    const auto expected = wideNetwork.encode(padded);
    const auto latents = narrowNetwork.encode(narrow);
    for (std::size_t i = 0; i < latents.size(); ++i)
        EXPECT_LT(meanDifference(latents[i], expected[i]), 1e-5) << i;
}

TEST(OfWidth, OfANarrowerImageDecodesItsBeginning) {
    const TaughtNetwork from = networkOf(wide(160));
    const TaughtNetwork to = ofWidth(from, 96, processor());
    const std::vector<std::vector<float>> latents{{1, -1, 0.5F, 2}};
    const auto expected = VAEInference(from.config, from.weights, processor()).decode(latents)[0];
    const auto decoded = VAEInference(to.config, to.weights, processor()).decode(latents)[0];
    for (std::size_t row = 0; row < 32; ++row) {
        // What is two cells of the coarsest tensor away from the cut does not know of it.
        for (std::size_t column = 0; column < 32; ++column)
            EXPECT_NEAR(decoded[row * 96 + column], expected[row * 160 + column], 1e-5);
    }
}

TEST(OfWidth, OfAWiderImageDoesNotMoveTheLatentVectorForWhatIsNew) {
    const TaughtNetwork from = networkOf(smallest);
    const TaughtNetwork to = ofWidth(from, 128, processor());
    std::vector<std::vector<float>> images{imageOfWidth(randomImages(1)[0], 32, 128)};
    images.push_back(images[0]);
    for (std::size_t row = 0; row < 32; ++row)
        images[1][row * 128 + 120] = 1.0F;
    const auto latents = VAEInference(to.config, to.weights, processor()).encode(images);
    EXPECT_EQ(latents[0], latents[1]);
}

TEST(OfWidth, BackAndForthIsTheNetworkItself) {
    const TaughtNetwork from = networkOf(smallest);
    const TaughtNetwork back = ofWidth(ofWidth(from, 96, processor()), 32, processor());
    ASSERT_EQ(back.config, from.config);
    for (std::size_t i = 0; i < from.weights.size(); ++i) {
        for (std::size_t j = 0; j < from.weights[i].size(); ++j)
            ASSERT_NEAR(back.weights[i][j], from.weights[i][j], 1e-6) << i;
    }
}

// ---- Training from it

TEST(TrainOnImagesFromAStart, ContinuesFromItsWeights) {
    const auto images = randomImages(3);
    TrainingOptions options = quickOptions(1);
    options.learningRate = 0;
    options.start = startFrom(networkOf(smallest));
    const auto trained = ModelTrainer::trainOnImages(smallest, images, options, {}, {}, processor());
    EXPECT_TRUE(trained.weights == networkOf(smallest).weights);
}

TEST(TrainOnImagesFromAStart, DrawsTheSameBatchesAsAFreshRun) {
    const auto images = randomImages(3);
    TrainingOptions options = quickOptions(4);
    const auto fresh = ModelTrainer::trainOnImages(smallest, images, options, {}, {}, processor());
    options.start = startFrom({smallest, VAEArchitecture::initialWeights(smallest, options.seed)});
    const auto started = ModelTrainer::trainOnImages(smallest, images, options, {}, {}, processor());
    EXPECT_TRUE(started.weights == fresh.weights);
    EXPECT_EQ(started.latents, fresh.latents);
}

TEST(TrainOnImagesFromAStart, GivesTheSameBitsOnAnyNumberOfThreads) {
    const auto images = randomImages(5);
    TrainingOptions options = quickOptions(3);
    options.start = startFrom(networkOf(wide()));
    std::vector<ModelTrainer::TrainedNetwork> results;
    for (const int threads : {1, 2, 3}) {
        const ThreadLimit limit(threads);
        const auto backend = network::makeCPUBackend();
        results.push_back(ModelTrainer::trainOnImages(smallest, images, options, {}, {}, *backend));
    }
    for (const auto& result : results) {
        EXPECT_TRUE(result.weights == results[0].weights);
        EXPECT_EQ(result.latents, results[0].latents);
    }
}

TEST(StartOnImages, EncodesWithTheStartItself) {
    const auto images = randomImages(3);
    TrainingOptions options = quickOptions();
    options.start = startFrom(networkOf(smallest));
    const auto untrained = ModelTrainer::startOnImages(smallest, images, options, processor());
    EXPECT_TRUE(untrained.weights == networkOf(smallest).weights);
    EXPECT_EQ(untrained.latents,
              VAEInference(smallest, networkOf(smallest).weights, processor()).encode(images));
    EXPECT_GT(untrained.finalReconstructionError, 0);
}

}  // namespace
}  // namespace quillmere
