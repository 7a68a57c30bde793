#include "QuillmereCore/Model/Trainer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "QuillmereCore/Model/ClipPreparation.h"
#include "QuillmereCore/Model/ModelIdentity.h"
#include "QuillmereCore/Model/Training/TrainingStart.h"
#include "QuillmereCore/Model/Training/TrainingTestData.h"
#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"
#include "QuillmereCore/Util/ThreadSafety.h"
#include "Support/Processor.h"
#include "Support/Signals.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

using testing::Listener;
using testing::processor;
using testing::quickOptions;
using testing::TestCorpus;
using Phase = TrainingProgress::Phase;
using ::testing::ElementsAre;

// Three short noise bursts.
class TrainerRun : public ::testing::Test {
protected:
    TrainerRun() {
        corpus.addNoise("a.wav", 0.1, 1);
        corpus.addNoise("b.wav", 0.12, 2);
        corpus.addNoise("c.wav", 0.08, 3);
    }

    ModelBundle train(const TrainingOptions& options) {
        return ModelTrainer::train(corpus.scan(), options, listener.progress(), listener.stop.get_token(),
                                   processor());
    }

    TestCorpus corpus;
    Listener listener;
};

void expectSameBits(const ModelBundle& a, const ModelBundle& b) {
    EXPECT_EQ(a.config, b.config);
    EXPECT_TRUE(a.weights == b.weights);
    EXPECT_EQ(a.latents, b.latents);
    EXPECT_EQ(a.metadata.finalLoss, b.metadata.finalLoss);
    EXPECT_EQ(a.metadata.finalReconstructionError, b.metadata.finalReconstructionError);
}

void expectSameWeights(const ModelBundle& a, const ModelBundle& b) {
    EXPECT_TRUE(a.weights == b.weights);
}

// ---- Whole runs

TEST_F(TrainerRun, OfAFolderWithoutFilesFindsNoUsableAudio) {
    const CorpusSummary empty;
    EXPECT_THROW((void)ModelTrainer::train(empty, quickOptions(), listener.progress(), {}, processor()),
                 TrainingError);
    EXPECT_TRUE(listener.records.empty());
}

TEST_F(TrainerRun, OfOnlyUnusableFilesFindsNoUsableAudioAfterTryingAll) {
    const TestCorpus unusable;
    unusable.addText("text.wav");
    unusable.add("silent.wav", std::vector<float>(800, 0.0F));
    unusable.add("empty.wav", {});
    try {
        (void)ModelTrainer::train(unusable.scan(), quickOptions(), listener.progress(), {}, processor());
        FAIL() << "trained";
    } catch (const TrainingError& error) {
        EXPECT_EQ(error.kind(), TrainingError::Kind::noUsableAudio);
        EXPECT_STREQ(error.what(), "No usable audio files were found in that folder.");
    }
    EXPECT_THAT(listener.messages(), ElementsAre("Reading 3 samples…", "Reading samples… 1/3",
                                                 "Reading samples… 2/3", "Reading samples… 3/3"));
}

TEST_F(TrainerRun, LeavesOutUnusableFilesWithoutAMessage) {
    corpus.addText("a2.wav");
    corpus.add("b2.wav", std::vector<float>(800, 0.0F));
    CorpusSummary summary = corpus.scan();
    summary.files.push_back({corpus.path() / "gone.wav", "gone.wav", 1, 1});
    const ModelBundle bundle =
        ModelTrainer::train(summary, quickOptions(1), listener.progress(), {}, processor());
    EXPECT_THAT(bundle.metadata.clipNames, ElementsAre("a.wav", "b.wav", "c.wav"));
    EXPECT_EQ(bundle.latents.size(), 3U);
    EXPECT_EQ(listener.messages().at(6), "Reading samples… 6/6") << "failed files count too";
}

TEST_F(TrainerRun, ThatEndsEarlySaysAfterHowManyStepsOfHowMany) {
    std::stop_source enough;
    const auto progress = [&](const TrainingProgress& record) {
        if (record.step == 10) enough.request_stop();
    };
    const TrainingHooks hooks{.enough = enough.get_token(), .wantsGlimpse = {}, .glimpsed = {}};
    const ModelBundle ended =
        ModelTrainer::train(corpus.scan(), quickOptions(30), progress, {}, processor(), hooks);
    EXPECT_EQ(ended.metadata.steps, 10);
    EXPECT_EQ(ended.metadata.plannedSteps, 30);
    EXPECT_EQ(ended.latents.size(), 3U);

    const ModelBundle whole = train(quickOptions(2));
    EXPECT_EQ(whole.metadata.steps, 2);
    EXPECT_EQ(whole.metadata.plannedSteps, std::nullopt);
}

// ---- From a start

TEST_F(TrainerRun, OfAFreshModelSaysNothingOfAStart) {
    EXPECT_EQ(train(quickOptions(1)).metadata.start, std::nullopt);
}

TEST_F(TrainerRun, BuildsOnWhatAnotherModelLearnedAndSaysSo) {
    const ModelBundle first = train(quickOptions(3));
    TrainingOptions options = quickOptions(1);
    options.learningRate = 0;
    options.start = std::make_shared<const TrainingStart>(first);
    const ModelBundle second = train(options);
    expectSameWeights(second, first);
    EXPECT_EQ(second.latents, first.latents);
    ASSERT_TRUE(second.metadata.start);
    EXPECT_EQ(second.metadata.start->kind, ModelStart::Kind::model);
    EXPECT_EQ(second.metadata.start->name, first.metadata.corpusName);
    EXPECT_EQ(second.metadata.start->identity, modelIdentity(first));
    EXPECT_EQ(second.metadata.steps, 1);
}

TEST_F(TrainerRun, RefusesAStartOfAnotherAnalysisOnceItKnowsItsOwn) {
    TrainingOptions options = quickOptions(1);
    options.start = std::make_shared<const TrainingStart>(train(options));
    options.profile = AnalysisProfile::tonal;
    try {
        (void)train(options);
        FAIL() << "trained";
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(),
                     "What the training is to start from was learned with the percussive analysis, not with "
                     "the tonal one.");
    }
}

TEST_F(TrainerRun, CanBeHeardBeforeItLearns) {
    TrainingOptions options = quickOptions(2);
    const ModelBundle first = train(options);
    options.start = std::make_shared<const TrainingStart>(first);
    listener.records.clear();
    const ModelBundle heard =
        ModelTrainer::beforeLearning(corpus.scan(), options, listener.progress(), {}, processor());
    expectSameWeights(heard, first);
    EXPECT_EQ(heard.latents, first.latents);
    EXPECT_EQ(heard.metadata.steps, 0);
    EXPECT_EQ(heard.metadata.clipNames, first.metadata.clipNames);
    EXPECT_TRUE(heard.metadata.start);
    EXPECT_TRUE(listener.ofPhase(Phase::training).empty());
}

// ---- Reports

TEST_F(TrainerRun, ReportsEveryPhaseInOrder) {
    (void)train(quickOptions(25));
    EXPECT_THAT(
        listener.messages(),
        ElementsAre("Reading 3 samples…", "Reading samples… 1/3", "Reading samples… 2/3",
                    "Reading samples… 3/3", "Analysing (percussive, 1.0 s per sample)…", "Training model…",
                    "Training model…", "Training model…", "Training model…", "Encoding corpus…"));
    EXPECT_TRUE(std::ranges::is_sorted(listener.records, {}, &TrainingProgress::phase));
}

TEST_F(TrainerRun, ReadingAdvancesToSixPercentAndTheProfileReportStartsAgainAtZero) {
    (void)train(quickOptions(1));
    const auto records = listener.ofPhase(Phase::analysing);
    ASSERT_EQ(records.size(), 5U);
    EXPECT_EQ(records[0].fraction, 0);
    for (std::size_t k = 1; k <= 3; ++k)
        EXPECT_DOUBLE_EQ(records[k].fraction, 0.06 * static_cast<double>(k) / 3);
    EXPECT_EQ(records[4].fraction, 0);
    for (const TrainingProgress& record : records) {
        EXPECT_EQ(record.step, 0);
        EXPECT_EQ(record.totalSteps, 0);
        EXPECT_EQ(record.loss, 0);
        EXPECT_EQ(record.secondsRemaining, std::nullopt);
    }
}

TEST_F(TrainerRun, TrainingReportsTellStepsLossesAndTimeLeft) {
    const ModelBundle bundle = train(quickOptions(11));
    const auto records = listener.ofPhase(Phase::training);
    ASSERT_EQ(records.size(), 3U);
    const std::int64_t steps[] = {1, 10, 11};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(records[i].step, steps[i]);
        EXPECT_EQ(records[i].totalSteps, 11);
        EXPECT_EQ(records[i].fraction, ModelTrainer::trainingFraction(steps[i], 11));
        EXPECT_GT(records[i].reconstruction, 0.0F);
        EXPECT_GT(records[i].kl, 0.0F);
        EXPECT_GE(records[i].loss, records[i].reconstruction);
        ASSERT_TRUE(records[i].secondsRemaining);
        EXPECT_GE(*records[i].secondsRemaining, 0);
    }
    EXPECT_EQ(records[2].secondsRemaining, 0.0);
    EXPECT_EQ(records[2].loss, bundle.metadata.finalLoss);
}

TEST_F(TrainerRun, FinishingReportsTheFinalLossOnly) {
    const ModelBundle bundle = train(quickOptions(3));
    const auto records = listener.ofPhase(Phase::finishing);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].step, 3);
    EXPECT_EQ(records[0].totalSteps, 3);
    EXPECT_EQ(records[0].loss, bundle.metadata.finalLoss);
    EXPECT_EQ(records[0].reconstruction, 0);
    EXPECT_EQ(records[0].kl, 0);
    EXPECT_EQ(records[0].fraction, 0.96);
    EXPECT_EQ(records[0].secondsRemaining, std::nullopt);
}

TEST_F(TrainerRun, OfOneStepIsReportedOnce) {
    (void)train(quickOptions(1));
    const auto records = listener.ofPhase(Phase::training);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].step, 1);
    EXPECT_DOUBLE_EQ(records[0].fraction, 0.95);
    EXPECT_EQ(listener.messages().back(), "Encoding corpus…");
}

TEST_F(TrainerRun, DescribesTheModelItMade) {
    const CorpusSummary summary = corpus.scan();
    const auto before = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    const ModelBundle bundle = ModelTrainer::train(summary, quickOptions(2), {}, {}, processor());
    EXPECT_EQ(bundle.config, (ModelConfig{8000, 1024, 256, 96, 32, 4, AnalysisProfile::percussive}));
    EXPECT_EQ(bundle.metadata.corpusName, corpus.path().filename());
    EXPECT_EQ(bundle.metadata.corpusPath, corpus.path());
    EXPECT_EQ(bundle.metadata.fingerprint, summary.fingerprint());
    EXPECT_GE(bundle.metadata.trainedAt, before);
    EXPECT_LE(bundle.metadata.trainedAt, std::chrono::system_clock::now());
    EXPECT_EQ(bundle.metadata.steps, 2);
    EXPECT_GT(bundle.metadata.finalLoss, 0.0F);
    EXPECT_GT(bundle.metadata.finalReconstructionError, 0.0F);
    EXPECT_THAT(bundle.metadata.clipNames, ElementsAre("a.wav", "b.wav", "c.wav"));
    EXPECT_EQ(bundle.metadata.analysis, "percussive");
    const auto params = VAEArchitecture::params(bundle.config);
    ASSERT_EQ(bundle.weights.size(), params.size());
    for (std::size_t i = 0; i < params.size(); ++i)
        EXPECT_EQ(bundle.weights[i].size(), static_cast<std::size_t>(params[i].elementCount()));
    ASSERT_EQ(bundle.latents.size(), 3U);
    for (const auto& latent : bundle.latents)
        EXPECT_EQ(latent.size(), 4U);
}

TEST_F(TrainerRun, WritesNoFiles) {
    (void)train(quickOptions(1));
    EXPECT_EQ(testing::entriesIn(corpus.path()), 3U);
}

TEST_F(TrainerRun, WorksWithASingleClip) {
    const TestCorpus single;
    single.addNoise("only.wav", 0.1, 5);
    const ModelBundle bundle = ModelTrainer::train(single.scan(), quickOptions(2), {}, {}, processor());
    EXPECT_THAT(bundle.metadata.clipNames, ElementsAre("only.wav"));
    EXPECT_EQ(bundle.latents.size(), 1U);
}

TEST_F(TrainerRun, WorksWithoutCallbacks) {
    EXPECT_EQ(ModelTrainer::train(corpus.scan(), quickOptions(1), {}, {}, processor()).latents.size(), 3U);
}

TEST_F(TrainerRun, GivesTheSameBitsForTheSameSeedAndOthersForAnother) {
    TrainingOptions options = quickOptions(3);
    const ModelBundle first = train(options);
    expectSameBits(train(options), first);
    options.seed = 2;
    EXPECT_FALSE(train(options).weights == first.weights);
}

TEST_F(TrainerRun, GivesTheSameBitsForAnyNumberOfThreads) {
    const TrainingOptions options = quickOptions(3);
    const ModelBundle free = train(options);
    for (const int threads : {1, 2}) {
        const ThreadLimit limit(threads);
        expectSameBits(train(options), free);
    }
}

// ---- Choosing the configuration

// The sentence with which a training is refused.
std::string refusal(const TestCorpus& corpus, const TrainingOptions& options, Listener& listener) {
    try {
        (void)ModelTrainer::train(corpus.scan(), options, listener.progress(), {}, processor());
    } catch (const Failure& error) {
        return error.what();
    }
    return "trained";
}
std::string refusal(const TestCorpus& corpus, const TrainingOptions& options) {
    Listener listener;
    return refusal(corpus, options, listener);
}

TEST(TrainerChoice, ShortClipsGetAQuarterOfASecond) {
    const TestCorpus corpus;
    for (std::uint64_t i = 0; i < 3; ++i)
        corpus.addNoise(std::to_string(i) + ".wav", 0.1, i, 44100);
    TrainingOptions options = quickOptions(1);
    options.clipSeconds.reset();
    const ModelBundle bundle = ModelTrainer::train(corpus.scan(), options, {}, {}, processor());
    EXPECT_EQ(bundle.config.frames, ModelConfig::framesForSeconds(0.25, 44100, 256));
    EXPECT_NE(bundle.config.frames, ModelConfig::framesForSeconds(0.1 * 1.05 + 0.05, 44100, 256));
}

TEST(TrainerChoice, LongClipsGetFourSeconds) {
    const TestCorpus corpus;
    corpus.addNoise("long.wav", 10, 1);
    TrainingOptions options = quickOptions(1);
    options.batchSize = 1;
    options.clipSeconds.reset();
    const ModelBundle bundle = ModelTrainer::train(corpus.scan(), options, {}, {}, processor());
    EXPECT_EQ(bundle.config.frames, ModelConfig::framesForSeconds(4, 8000, 256));
}

TEST(TrainerChoice, AnExplicitClipLengthIsUsedAsItIs) {
    const TestCorpus corpus;
    corpus.addNoise("short.wav", 0.1, 1);
    TrainingOptions options = quickOptions(1);
    options.batchSize = 1;
    options.clipSeconds = 9;
    const ModelBundle bundle = ModelTrainer::train(corpus.scan(), options, {}, {}, processor());
    EXPECT_EQ(bundle.config.frames, ModelConfig::framesForSeconds(9, 8000, 256));
}

TEST(TrainerChoice, ShortNoiseIsPercussiveAndLongNotesAreTonal) {
    TrainingOptions options = quickOptions(1);
    options.profile = AnalysisProfile::automatic;
    const TestCorpus noise;
    noise.addNoise("a.wav", 0.1, 1);
    noise.addNoise("b.wav", 0.1, 2);
    const ModelBundle percussive = ModelTrainer::train(noise.scan(), options, {}, {}, processor());
    EXPECT_EQ(percussive.config.profile, AnalysisProfile::percussive);
    EXPECT_EQ(percussive.config.nMels, 96);

    const TestCorpus notes;
    notes.addSine("a.wav", 0.5, 220);
    notes.addSine("b.wav", 0.6, 330);
    options.batchSize = 1;
    Listener listener;
    const ModelBundle tonal =
        ModelTrainer::train(notes.scan(), options, listener.progress(), {}, processor());
    EXPECT_EQ(tonal.config.profile, AnalysisProfile::tonal);
    EXPECT_EQ(tonal.config.nFFT, 4096);
    EXPECT_EQ(tonal.config.hop, 1024);
    EXPECT_EQ(tonal.config.nMels, 384);
    EXPECT_EQ(tonal.metadata.analysis, "tonal");
    EXPECT_EQ(listener.messages().at(3), "Analysing (tonal, 4.1 s per sample)…");
}

TEST(TrainerChoice, AnExplicitProfileIsNotQuestioned) {
    const TestCorpus notes;
    notes.addSine("a.wav", 0.5, 220);
    const ModelBundle bundle = ModelTrainer::train(notes.scan(), quickOptions(1), {}, {}, processor());
    EXPECT_EQ(bundle.config.profile, AnalysisProfile::percussive);
}

TEST(TrainerChoice, ClipsAreDecodedAtTheDominantRate) {
    const TestCorpus corpus;
    corpus.addNoise("a.wav", 0.1, 1, 8000);
    corpus.addNoise("b.wav", 0.1, 2, 11025);
    corpus.addNoise("c.wav", 0.1, 3, 11025);
    EXPECT_EQ(ModelTrainer::train(corpus.scan(), quickOptions(1), {}, {}, processor()).config.sampleRate,
              11025);
}

// A recording far longer than the model's clips is cut and faded like any other.
TEST(TrainerChoice, ALongRecordingIsPreparedAsAWhole) {
    const TestCorpus corpus;
    corpus.addNoise("long.wav", 6, 1);
    const CorpusSummary summary = corpus.scan();
    const ModelBundle bundle = ModelTrainer::train(summary, quickOptions(1), {}, {}, processor());
    const FeatureExtractor extractor(bundle.config);
    STFT stft = extractor.makeSTFT();
    const auto decoded = ClipPreparation::decode(summary.files.front(), 8000);
    ASSERT_TRUE(decoded);
    const std::vector<std::vector<float>> images{
        ClipPreparation::prepare(*decoded, bundle.config, extractor, stft).image};
    VAEInference inference(bundle.config, bundle.weights, processor());
    EXPECT_EQ(bundle.latents, inference.encode(images));
}

TEST(TrainerChoice, ModelsThatCannotBeAreRefusedBeforeTraining) {
    const TestCorpus corpus;
    corpus.addNoise("a.wav", 0.1, 1);
    TrainingOptions options = quickOptions(1);
    options.latentDim = 10'000'000;
    EXPECT_EQ(refusal(corpus, options),
              "Training is not possible with these settings: latentDim is 10000000, too many for this image");
}

TEST(TrainerChoice, LengthsThatTheNetworkCannotTakeAreRefusedBeforeAnythingIsRead) {
    const TestCorpus corpus;
    corpus.addNoise("a.wav", 0.1, 1);
    TrainingOptions options = quickOptions(1);
    options.clipSeconds = 10000;
    const std::string advice =
        " s of a sample can be learned, not 10000.0 s. Choose a shorter length, or convert the samples to a "
        "lower sample rate.";
    for (const auto& [profile, longest] :
         {std::pair(AnalysisProfile::percussive, "349.1"), std::pair(AnalysisProfile::tonal, "348.1"),
          std::pair(AnalysisProfile::automatic, "349.1")}) {
        options.profile = profile;
        Listener listener;
        EXPECT_EQ(refusal(corpus, options, listener), "At 8000 Hz " + std::string(longest) + advice);
        EXPECT_TRUE(listener.records.empty());
    }
}

TEST(TrainerChoice, ALengthThatOnlyTheOtherProfileCouldTakeIsRefusedBeforeTraining) {
    const TestCorpus corpus;
    corpus.addSine("a.wav", 0.5, 220);
    corpus.addSine("b.wav", 0.6, 330);
    TrainingOptions options = quickOptions(1);
    options.profile = AnalysisProfile::automatic;
    options.clipSeconds = 348.5;
    Listener listener;
    EXPECT_EQ(refusal(corpus, options, listener).substr(0, 24), "At 8000 Hz 348.1 s of a ");
    EXPECT_TRUE(listener.ofPhase(Phase::training).empty());
}

TEST(TrainerChoice, MoreSamplesThanAModelCanBeOpenedWithAreRefusedBeforeTraining) {
    const TestCorpus corpus;
    for (std::uint64_t i = 0; i < 50; ++i)
        corpus.addNoise(std::to_string(i) + ".wav", 0.01, i);
    TrainingOptions options = quickOptions(1);
    options.latentDim = 90000;
    Listener listener;
    EXPECT_EQ(
        refusal(corpus, options, listener),
        "A model of 50 samples could not be opened again: at most about 43 are possible. Learn a folder "
        "with fewer samples.");
    EXPECT_TRUE(listener.ofPhase(Phase::training).empty());
}

// ---- Cancellation and failing callbacks

TEST_F(TrainerRun, CancelledFromTheStartReadsNothing) {
    listener.stop.request_stop();
    EXPECT_THROW((void)train(quickOptions()), CancellationError);
    EXPECT_THAT(listener.messages(), ElementsAre("Reading 3 samples…"));
}

TEST_F(TrainerRun, CancelledWhileReadingStopsBeforeTheAnalysis) {
    listener.stopAt = [](const TrainingProgress& record) { return record.fraction > 0; };
    EXPECT_THROW((void)train(quickOptions()), CancellationError);
    EXPECT_THAT(listener.messages(), ::testing::Not(::testing::Contains(::testing::HasSubstr("Analysing"))));
}

TEST_F(TrainerRun, CancelledWhilePreparingStopsBeforeTheFirstStep) {
    listener.stopAt = [](const TrainingProgress& r) {
        return r.message.english().starts_with("Analysing (");
    };
    EXPECT_THROW((void)train(quickOptions()), CancellationError);
    EXPECT_EQ(listener.messages().back(), "Analysing (percussive, 1.0 s per sample)…");
}

TEST_F(TrainerRun, CancelledWhileTrainingStopsAfterTheStep) {
    listener.stopAt = [](const TrainingProgress& record) { return record.step == 10; };
    EXPECT_THROW((void)train(quickOptions(30)), CancellationError);
    EXPECT_EQ(listener.records.back().step, 10);
}

TEST_F(TrainerRun, CancelledAtTheLastStepIsComplete) {
    listener.stopAt = [](const TrainingProgress& record) { return record.step == 2; };
    EXPECT_EQ(train(quickOptions(2)).latents.size(), 3U);
}

TEST_F(TrainerRun, DivergesWithAnEnormousLearningRate) {
    TrainingOptions options = quickOptions(5);
    options.learningRate = 1e30F;
    EXPECT_THROW((void)train(options), TrainingError);
    EXPECT_TRUE(listener.ofPhase(Phase::finishing).empty());
}

TEST_F(TrainerRun, PassesOnWhatACallbackThrows) {
    for (const Phase phase : {Phase::analysing, Phase::training, Phase::finishing}) {
        const auto progress = [&](const TrainingProgress& record) {
            if (record.phase == phase && record.fraction > 0) throw std::runtime_error("enough");
        };
        EXPECT_THROW((void)ModelTrainer::train(corpus.scan(), quickOptions(1), progress, {}, processor()),
                     std::runtime_error)
            << rawValue(phase);
    }
}

TEST_F(TrainerRun, NeverCallsProgressFromTwoThreadsAtOnce) {
    for (std::uint64_t i = 0; i < 20; ++i)
        corpus.addNoise("more" + std::to_string(i) + ".wav", 0.02, i);
    constexpr int threads = 4;  // also where there are fewer processors
    const ThreadLimit limit(threads);
    std::atomic<int> inside = 0;
    std::atomic<bool> met = false;
    struct {
        Mutex mutex;
        std::set<std::thread::id> callers QUILLMERE_GUARDED_BY(mutex);
    } seen;
    const auto progress = [&](const TrainingProgress& record) {
        if (++inside > 1) met = true;
        {
            const MutexLock lock(seen.mutex);
            seen.callers.insert(std::this_thread::get_id());
        }
        // Time for the others to read a file, and to call if nothing keeps them from it.
        if (record.phase == Phase::analysing) std::this_thread::sleep_for(std::chrono::milliseconds(20));
        --inside;
    };
    (void)ModelTrainer::train(corpus.scan(), quickOptions(1), progress, {}, processor());
    EXPECT_FALSE(met);
    const MutexLock lock(seen.mutex);
    EXPECT_GT(seen.callers.size(), 1U) << "only one thread has read files: this proves nothing";
}

}  // namespace
}  // namespace quillmere
