#include "QuillmereCore/Model/Training/TrainingLoop.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <stop_token>
#include <utility>
#include <vector>

#include "QuillmereCore/Model/Training/BatchSource.h"
#include "QuillmereCore/Model/Training/Schedule.h"
#include "QuillmereCore/Model/Training/TrainingError.h"
#include "QuillmereCore/Model/Training/TrainingTestData.h"
#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/Failure.h"
#include "Support/Processor.h"

namespace quillmere {
namespace {

using ModelTrainer::BatchSource;
using testing::Listener;
using testing::processor;
using testing::quickOptions;
using testing::randomImages;
using testing::smallest;

TEST(TrainOnImagesDeathTest, NeedsAtLeastOneStepImageAndSlot) {
    const auto images = randomImages(1);
    TrainingOptions options = quickOptions(0);
    EXPECT_DEATH((void)ModelTrainer::trainOnImages(smallest, images, options, {}, {}, processor()),
                 "one step");
    options = quickOptions();
    EXPECT_DEATH((void)ModelTrainer::trainOnImages(smallest, {}, options, {}, {}, processor()), "one image");
    options.batchSize = 0;
    EXPECT_DEATH((void)ModelTrainer::trainOnImages(smallest, images, options, {}, {}, processor()),
                 "at least one image");
}

TEST(TrainOnImages, IsTheLoopOfStepsWithTheSchedule) {
    const auto images = randomImages(3);
    const TrainingOptions options = quickOptions(3);
    std::vector<float> losses;
    const auto trained = ModelTrainer::trainOnImages(
        smallest, images, options, {}, {}, processor(),
        [&](const network::StepResult& result) { losses.push_back(result.loss); });

    VAETrainingGraph graph(smallest, 2, VAEArchitecture::initialWeights(smallest, options.seed), processor());
    BatchSource source(smallest, images, 2, options.seed);
    std::vector<float> x(2 * 32 * 32), eps(2 * 4), expected;
    ModelTrainer::Smoothing smoothing;
    for (int t = 1; t <= 3; ++t) {
        source.next(x, eps);
        const auto now = ModelTrainer::schedule(t, 3, options.learningRate, options.klWeight);
        expected.push_back(graph.step(x, eps, now.learningRate, now.klWeight).loss);
        smoothing.add(expected.back());
    }
    EXPECT_EQ(losses, expected);
    EXPECT_TRUE(trained.weights == graph.currentWeights());
    EXPECT_EQ(trained.finalLoss, smoothing.value());
}

TEST(TrainOnImages, EncodesEveryImageAndMeasuresThePlainError) {
    const auto images = randomImages(18);  // more than one batch of the decoder
    const auto trained = ModelTrainer::trainOnImages(smallest, images, quickOptions(1), {}, {}, processor());
    VAEInference inference(smallest, trained.weights, processor());
    const auto latents = inference.encode(images);
    EXPECT_EQ(trained.latents, latents);
    const auto decoded = inference.decode(latents);
    double sum = 0;
    for (std::size_t i = 0; i < images.size(); ++i) {
        for (std::size_t p = 0; p < images[i].size(); ++p)
            sum += std::pow(static_cast<double>(decoded[i][p]) - static_cast<double>(images[i][p]), 2);
    }
    EXPECT_NEAR(trained.finalReconstructionError, sum / (18 * 1024), 1e-6);
}

TEST(TrainOnImages, LearnsASingleImage) {
    const auto images = randomImages(1);
    std::vector<float> losses;
    TrainingOptions options = quickOptions(30);
    options.learningRate = 0.003F;
    (void)ModelTrainer::trainOnImages(
        smallest, images, options, {}, {}, processor(),
        [&](const network::StepResult& result) { losses.push_back(result.mse); });
    EXPECT_LT(losses.back(), 0.8F * losses.front());
}

TEST(TrainOnImages, StopsBeforeTheFirstStep) {
    const auto images = randomImages(1);
    int steps = 0;
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW((void)ModelTrainer::trainOnImages(smallest, images, quickOptions(), {}, stop.get_token(),
                                                   processor(), [&](const network::StepResult&) { ++steps; }),
                 CancellationError);
    EXPECT_EQ(steps, 0);
}

TEST(TrainOnImages, StopsAfterTheStepInWhichItIsCancelled) {
    const auto images = randomImages(1);
    int steps = 0;
    std::stop_source stop;
    EXPECT_THROW((void)ModelTrainer::trainOnImages(smallest, images, quickOptions(4), {}, stop.get_token(),
                                                   processor(),
                                                   [&](const network::StepResult&) {
                                                       if (++steps == 2) stop.request_stop();
                                                   }),
                 CancellationError);
    EXPECT_EQ(steps, 2);
}

TEST(TrainOnImages, DoesNotAskAfterTheLastStep) {
    const auto images = randomImages(1);
    int steps = 0;
    std::stop_source stop;
    const auto trained = ModelTrainer::trainOnImages(smallest, images, quickOptions(3), {}, stop.get_token(),
                                                     processor(), [&](const network::StepResult&) {
                                                         if (++steps == 3) stop.request_stop();
                                                     });
    EXPECT_EQ(steps, 3);
    EXPECT_EQ(trained.latents.size(), 1U);
}

TrainingHooks endingAfter(std::stop_source& enough) {
    return {.enough = enough.get_token(), .wantsGlimpse = {}, .glimpsed = {}};
}

TEST(TrainOnImages, EndsEarlyWithWhatWasLearned) {
    const auto images = randomImages(3);
    const TrainingOptions options = quickOptions(6);
    std::stop_source enough;
    Listener listener;
    int steps = 0;
    const auto trained = ModelTrainer::trainOnImages(
        smallest, images, options, listener.progress(), {}, processor(),
        [&](const network::StepResult&) {
            if (++steps == 3) enough.request_stop();
        },
        endingAfter(enough));
    EXPECT_EQ(trained.steps, 3);
    EXPECT_EQ(listener.records.back().phase, TrainingProgress::Phase::finishing);
    EXPECT_EQ(listener.records.back().step, 3);
    EXPECT_EQ(listener.records.back().totalSteps, 6);

    // The step of the whole training, and not of a shorter one.
    VAETrainingGraph graph(smallest, 2, VAEArchitecture::initialWeights(smallest, options.seed), processor());
    BatchSource source(smallest, images, 2, options.seed);
    std::vector<float> x(2 * 32 * 32), eps(2 * 4);
    for (int t = 1; t <= 3; ++t) {
        source.next(x, eps);
        const auto now = ModelTrainer::schedule(t, 6, options.learningRate, options.klWeight);
        (void)graph.step(x, eps, now.learningRate, now.klWeight);
    }
    EXPECT_TRUE(trained.weights == graph.currentWeights());
    EXPECT_EQ(trained.latents, VAEInference(smallest, trained.weights, processor()).encode(images));
    EXPECT_GT(trained.finalReconstructionError, 0);
}

TEST(TrainOnImages, DoesAtLeastOneStepBeforeItEndsEarly) {
    std::stop_source enough;
    enough.request_stop();
    const auto trained = ModelTrainer::trainOnImages(smallest, randomImages(1), quickOptions(4), {}, {},
                                                     processor(), {}, endingAfter(enough));
    EXPECT_EQ(trained.steps, 1);
}

TEST(TrainOnImages, CancellingComesBeforeEndingEarly) {
    std::stop_source both;
    EXPECT_THROW((void)ModelTrainer::trainOnImages(
                     smallest, randomImages(1), quickOptions(4), {}, both.get_token(), processor(),
                     [&](const network::StepResult&) { both.request_stop(); }, endingAfter(both)),
                 CancellationError);
}

TEST(TrainOnImages, CanBeHeardInTheMiddle) {
    const auto images = randomImages(20);
    const TrainingOptions options = quickOptions(3);
    std::vector<Glimpse> glimpses;
    const TrainingHooks hooks{.enough = {},
                              .wantsGlimpse = [] { return true; },
                              .glimpsed = [&](Glimpse glimpse) { glimpses.push_back(std::move(glimpse)); }};
    const auto trained =
        ModelTrainer::trainOnImages(smallest, images, options, {}, {}, processor(), {}, hooks);
    ASSERT_EQ(glimpses.size(), 2U);  // after the last step there is the model
    EXPECT_EQ(glimpses[0].step, 1);
    EXPECT_EQ(glimpses[1].step, 2);
    EXPECT_NE(glimpses[0].weights, glimpses[1].weights);
    ASSERT_EQ(glimpses[0].images.size(), Glimpse::mostImages);
    EXPECT_EQ(glimpses[0].images[0], images[0]);
    EXPECT_EQ(glimpses[0].images[15], images[18]);

    const ModelBundle heard = ModelTrainer::modelOf(glimpses[1], processor());
    EXPECT_EQ(heard.metadata.steps, 2);
    EXPECT_EQ(heard.latents.size(), Glimpse::mostImages);
    EXPECT_TRUE(heard.weights == glimpses[1].weights);

    const auto unwatched = ModelTrainer::trainOnImages(smallest, images, options, {}, {}, processor());
    EXPECT_TRUE(trained.weights == unwatched.weights) << "listening changes what is learned";
}

TEST(TrainOnImages, ReportsDivergenceWithItsAdvice) {
    const auto images = randomImages(2);
    TrainingOptions options = quickOptions(5);
    options.learningRate = 1e30F;
    Listener listener;
    try {
        (void)ModelTrainer::trainOnImages(smallest, images, options, listener.progress(), {}, processor());
        FAIL() << "no divergence";
    } catch (const TrainingError& error) {
        EXPECT_EQ(error.kind(), TrainingError::Kind::diverged);
        EXPECT_STREQ(error.what(),
                     "Training diverged (loss became NaN). Try again with a lower learning rate.");
    }
    for (const TrainingProgress& record : listener.records)
        EXPECT_TRUE(std::isfinite(record.loss)) << "a loss that is not finite is never reported";
}

// The only step has a finite loss; what it makes of the weights has none.
TEST(TrainOnImages, ALastUpdateThatOverflowsIsADivergence) {
    const auto images = randomImages(2);
    for (const float learningRate : {1e20F, 3e38F}) {
        TrainingOptions options = quickOptions(1);
        options.learningRate = learningRate;
        int steps = 0;
        try {
            (void)ModelTrainer::trainOnImages(smallest, images, options, {}, {}, processor(),
                                              [&](const network::StepResult& result) {
                                                  EXPECT_TRUE(std::isfinite(result.loss));
                                                  ++steps;
                                              });
            FAIL() << "no divergence at " << learningRate;
        } catch (const TrainingError& error) {
            EXPECT_EQ(error.kind(), TrainingError::Kind::diverged);
        }
        EXPECT_EQ(steps, 1);
    }
}

}  // namespace
}  // namespace quillmere
