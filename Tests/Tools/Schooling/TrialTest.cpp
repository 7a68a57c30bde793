#include "Schooling/Trial.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "QuillmereCore/Model/Training/TrainingStart.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "Support/SmallCorpus.h"
#include "Support/TempFolder.h"

namespace quillmere::schooling {
namespace {

TrainingOptions options() {
    TrainingOptions result;
    result.clipSeconds = 0.1;
    result.latentDim = 4;
    result.batchSize = 2;
    result.steps = 2;
    return result;
}

TEST(Trial, LearnsTwoThirdsAndLooksAtTheRest) {
    const quillmere::testing::TempFolder folder;
    quillmere::testing::writeSmallCorpus(folder.path());
    const TrialCorpus corpus = readTrialCorpus(folder.path(), options());
    EXPECT_EQ(corpus.learned.size(), 2U);
    EXPECT_EQ(corpus.unseen.size(), 1U);
    const auto backend = network::makeCPUBackend();
    const TrialResult result = runTrial(corpus, options(), *backend);
    EXPECT_GT(result.learned, 0);
    EXPECT_GT(result.unseen, 0);
}

TEST(Trial, WithoutAStepTellsWhatTheStartIsWorth) {
    const quillmere::testing::TempFolder folder;
    quillmere::testing::writeSmallCorpus(folder.path());
    TrainingOptions training = options();
    const TrialCorpus corpus = readTrialCorpus(folder.path(), training);
    training.steps = 0;
    training.start = std::make_shared<const TrainingStart>(
        ModelStart{},
        std::vector<TaughtNetwork>{{corpus.config, VAEArchitecture::initialWeights(corpus.config, 3)}});
    const auto backend = network::makeCPUBackend();
    const TrialResult before = runTrial(corpus, training, *backend);
    training.steps = 20;
    training.learningRate = 0.003F;
    EXPECT_LT(runTrial(corpus, training, *backend).learned, before.learned);
}

}  // namespace
}  // namespace quillmere::schooling
