#include "QuillmereCore/Model/Training/Continuation.h"

#include <gtest/gtest.h>

#include "QuillmereCore/Model/ModelIdentity.h"
#include "QuillmereCore/Model/Trainer.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"
#include "Support/Processor.h"
#include "Support/SmallCorpus.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

class Continuing : public ::testing::Test {
protected:
    Continuing() {
        testing::writeSmallCorpus(folder.path());
        corpus = Corpus::scan(folder.path());
        TrainingOptions options;
        options.steps = 3;
        options.batchSize = 2;
        options.latentDim = 4;
        options.clipSeconds = 0.1;
        model = ModelTrainer::train(corpus, options, {}, {}, testing::processor());
    }
    [[nodiscard]] ModelBundle on(const ModelBundle& from, const TrainingStretch& stretch) const {
        return ModelTrainer::continueTraining(from, corpus, stretch, {}, {}, testing::processor());
    }
    [[nodiscard]] static TrainingStretch small(const ModelBundle& from, std::int64_t steps) {
        TrainingStretch stretch = ModelTrainer::nextStretch(from, steps);
        stretch.batchSize = 2;
        return stretch;
    }

    const testing::TempFolder folder;
    CorpusSummary corpus;
    ModelBundle model;
};

TEST_F(Continuing, GoesOnFromTheModelAndSaysSo) {
    const ModelBundle next = on(model, small(model, 2));
    EXPECT_EQ(next.config, model.config);
    EXPECT_EQ(next.metadata.steps, 5);
    EXPECT_EQ(next.metadata.clipNames, model.metadata.clipNames);
    EXPECT_FALSE(next.metadata.start.has_value()) << "it still began from random weights";
    ASSERT_EQ(next.metadata.continued.size(), 1U);
    EXPECT_EQ(next.metadata.continued[0], small(model, 2));
    EXPECT_NE(next.weights, model.weights);
    // A step moves no weight by much more than the step size.
    for (std::size_t i = 0; i < model.weights.size(); ++i) {
        for (std::size_t k = 0; k < model.weights[i].size(); ++k)
            ASSERT_NEAR(next.weights[i][k], model.weights[i][k], 0.001F);
    }
}

TEST_F(Continuing, TheSameHistoryGivesTheSameModel) {
    ModelBundle again = model;
    for (const TrainingStretch& stretch :
         on(on(model, small(model, 2)), small(model, 3)).metadata.continued) {
        const ThreadLimit one(1);
        again = on(again, stretch);
    }
    const ModelBundle twice = on(on(model, small(model, 2)), small(model, 3));
    EXPECT_EQ(modelIdentity(again), modelIdentity(twice));
    EXPECT_EQ(again.metadata.steps, 8);
}

TEST_F(Continuing, RemembersThatTheFirstPartEndedEarly) {
    model.metadata.plannedSteps = 7;
    EXPECT_EQ(on(model, small(model, 2)).metadata.plannedSteps, 7);
}

TEST_F(Continuing, EachStretchSeesOtherBatches) {
    EXPECT_NE(ModelTrainer::nextStretch(model, 2).seed,
              ModelTrainer::nextStretch(on(model, small(model, 2)), 2).seed);
}

TEST_F(Continuing, AFolderThatHasChangedIsNoBasis) {
    std::filesystem::remove(folder / "one.wav");
    EXPECT_THROW((void)ModelTrainer::continueTraining(model, Corpus::scan(folder.path()), small(model, 1), {},
                                                      {}, testing::processor()),
                 Failure);
}

TEST_F(Continuing, KeepsTheWidthOfTheImagesWhateverTheLength) {
    for (const double seconds : {0.05, 0.1, 0.25, 0.7, 1.0}) {
        TrainingOptions options;
        options.steps = 1;
        options.batchSize = 1;
        options.latentDim = 4;
        options.clipSeconds = seconds;
        const ModelBundle other = ModelTrainer::train(corpus, options, {}, {}, testing::processor());
        EXPECT_EQ(on(other, small(other, 1)).config, other.config) << seconds;
    }
}

TEST_F(Continuing, TheHistoryIsStoredWithTheModel) {
    const testing::TempFolder models;
    const ModelBundle next = on(model, small(model, 2));
    ModelStore::replace(next, models / "Bars-1");
    EXPECT_EQ(ModelStore::open(models / "Bars-1").metadata.continued, next.metadata.continued);
    ModelStore::replace(model, models / "Bars-2");
    EXPECT_EQ(testing::readText(models / "Bars-2" / "model.json").find("continued"), std::string::npos);
}

TEST_F(Continuing, CanBeCancelled) {
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW((void)ModelTrainer::continueTraining(model, corpus, small(model, 1), {}, stop.get_token(),
                                                      testing::processor()),
                 CancellationError);
}

}  // namespace
}  // namespace quillmere
