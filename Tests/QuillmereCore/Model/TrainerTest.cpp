#include "QuillmereCore/Model/Trainer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <iterator>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/Parallel.h"
#include "Support/Processor.h"
#include "Support/Signals.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using ModelTrainer::Augmentation;
using ModelTrainer::BatchSource;
using ModelTrainer::Deck;
using testing::processor;
using testing::TempFolder;
using Phase = TrainingProgress::Phase;
using ::testing::ElementsAre;

// The smallest network there is.
const ModelConfig smallest{8000, 256, 64, 32, 32, 4, AnalysisProfile::percussive};

ModelConfig tonal(ModelConfig config) {
    config.profile = AnalysisProfile::tonal;
    return config;
}

std::vector<float> randomImage(std::uint64_t seed, const ModelConfig& config = smallest) {
    SeededRNG rng(seed);
    std::vector<float> image(static_cast<std::size_t>(config.nMels * config.frames));
    for (float& value : image)
        value = rng.uniform() - 0.9F;
    return image;
}

std::vector<std::vector<float>> randomImages(std::size_t count) {
    std::vector<std::vector<float>> images;
    for (std::size_t i = 0; i < count; ++i)
        images.push_back(randomImage(100 + i));
    return images;
}

TrainingOptions quickOptions(std::int64_t steps = 2) {
    TrainingOptions options;
    options.steps = steps;
    options.batchSize = 2;
    options.latentDim = 4;
    options.clipSeconds = 0.1;
    options.profile = AnalysisProfile::percussive;
    return options;
}

// Collects what a run reports, and asks it to stop once a report satisfies stopAt.
struct Listener {
    std::vector<TrainingProgress> records;
    std::function<bool(const TrainingProgress&)> stopAt;
    std::stop_source stop;

    ModelTrainer::ProgressCallback progress() {
        return [this](const TrainingProgress& record) {
            records.push_back(record);
            if (stopAt && stopAt(record)) stop.request_stop();
        };
    }
    [[nodiscard]] std::vector<std::string> messages() const {
        std::vector<std::string> result;
        for (const TrainingProgress& record : records)
            result.push_back(record.message);
        return result;
    }
    [[nodiscard]] std::vector<TrainingProgress> ofPhase(Phase phase) const {
        std::vector<TrainingProgress> result;
        std::ranges::copy_if(records, std::back_inserter(result),
                             [&](const TrainingProgress& record) { return record.phase == phase; });
        return result;
    }
};

// A folder of WAV files at 8 kHz.
class TestCorpus {
public:
    void add(const std::string& name, const std::vector<float>& samples, int sampleRate = 8000) const {
        AudioIO::write(samples, folder_ / name, sampleRate, OutputFormat::wav32float);
    }
    void addNoise(const std::string& name, double seconds, std::uint64_t seed, int sampleRate = 8000) const {
        add(name, testing::noise(seed, static_cast<std::size_t>(seconds * sampleRate), 0.5F), sampleRate);
    }
    void addSine(const std::string& name, double seconds, double hz) const {
        add(name, testing::sine(hz, 8000, static_cast<std::size_t>(seconds * 8000), 0.5));
    }
    void addText(const std::string& name) const { testing::writeText(folder_ / name, "no audio at all"); }

    [[nodiscard]] CorpusSummary scan() const { return Corpus::scan(folder_.path()); }
    [[nodiscard]] const fs::path& path() const { return folder_.path(); }

private:
    TempFolder folder_;
};

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

// ---- Records

TEST(TrainingOptions, HasTheDefaultsOfAStandardRun) {
    const TrainingOptions options;
    EXPECT_EQ(options.steps, 2500);
    EXPECT_EQ(options.batchSize, 16);
    EXPECT_EQ(options.learningRate, 0.001F);
    EXPECT_EQ(options.klWeight, 0.002F);
    EXPECT_EQ(options.latentDim, 64);
    EXPECT_EQ(options.clipSeconds, std::nullopt);
    EXPECT_EQ(options.profile, AnalysisProfile::automatic);
    EXPECT_EQ(options.seed, 1U);
}

TEST(TrainingProgress, StartsWithEveryNumberAtZero) {
    const TrainingProgress record;
    EXPECT_EQ(record.step, 0);
    EXPECT_EQ(record.totalSteps, 0);
    EXPECT_EQ(record.loss, 0);
    EXPECT_EQ(record.reconstruction, 0);
    EXPECT_EQ(record.kl, 0);
    EXPECT_EQ(record.fraction, 0);
    EXPECT_EQ(record.secondsRemaining, std::nullopt);
}

TEST(TrainingProgress, PhasesHaveRawValues) {
    EXPECT_EQ(rawValue(Phase::analysing), "analysing");
    EXPECT_EQ(rawValue(Phase::training), "training");
    EXPECT_EQ(rawValue(Phase::finishing), "finishing");
}

TEST(TrainingError, SaysWhatTheUserCanDo) {
    EXPECT_STREQ(TrainingError(TrainingError::Kind::noUsableAudio).what(),
                 "No usable audio files were found in that folder.");
    EXPECT_STREQ(TrainingError(TrainingError::Kind::diverged).what(),
                 "Training diverged (loss became NaN). Try again with a lower learning rate.");
}

// ---- The schedule

TEST(TrainingSchedule, ASingleStepHasALowLearningRateAndTheFullKLWeight) {
    const auto only = ModelTrainer::schedule(1, 1, 0.001F, 0.002F);
    EXPECT_EQ(only.warm, 0.01F);
    EXPECT_FLOAT_EQ(only.decay, 0.05F);
    EXPECT_NEAR(only.bias, std::sqrt(0.001) / 0.1, 1e-5);
    EXPECT_EQ(only.learningRate, 0.001F * only.warm * only.decay * only.bias);
    EXPECT_EQ(only.klWeight, 0.002F);
}

TEST(TrainingSchedule, WarmsUpOver100Steps) {
    EXPECT_EQ(ModelTrainer::schedule(50, 1000, 1, 1).warm, 0.5F);
    EXPECT_EQ(ModelTrainer::schedule(100, 1000, 1, 1).warm, 1.0F);
    EXPECT_EQ(ModelTrainer::schedule(1000, 1000, 1, 1).warm, 1.0F);
}

TEST(TrainingSchedule, DecaysToFivePercentAlongACosine) {
    EXPECT_NEAR(ModelTrainer::schedule(1, 1'000'000, 1, 1).decay, 1.0, 1e-6);
    EXPECT_NEAR(ModelTrainer::schedule(500, 1000, 1, 1).decay, 0.525, 1e-6);
    EXPECT_NEAR(ModelTrainer::schedule(1000, 1000, 1, 1).decay, 0.05, 1e-6);
}

TEST(TrainingSchedule, RampsTheKLWeightOverTheFirst30Percent) {
    EXPECT_NEAR(ModelTrainer::schedule(150, 1000, 1, 1).klWeight, 0.5, 1e-6);
    EXPECT_EQ(ModelTrainer::schedule(301, 1000, 1, 1).klWeight, 1.0F);
    EXPECT_EQ(ModelTrainer::schedule(1000, 1000, 1, 0).klWeight, 0.0F);
}

TEST(TrainingSchedule, AdamsBiasCorrectionTendsToOne) {
    EXPECT_NEAR(ModelTrainer::schedule(50'000, 50'000, 1, 1).bias, 1.0, 1e-6);
}

TEST(TrainingReports, ComeAtTheFirstEveryTenthAndTheLastStep) {
    std::vector<int> reported;
    for (int t = 1; t <= 25; ++t) {
        if (ModelTrainer::isReported(t, 25)) reported.push_back(t);
    }
    EXPECT_THAT(reported, ElementsAre(1, 10, 20, 25));
    EXPECT_TRUE(ModelTrainer::isReported(1, 1));
}

TEST(TrainingReports, CoverFractionsFromTenTo95Percent) {
    EXPECT_DOUBLE_EQ(ModelTrainer::trainingFraction(1, 25), 0.134);
    EXPECT_DOUBLE_EQ(ModelTrainer::trainingFraction(25, 25), 0.95);
}

TEST(TrainingReports, NameTheProfileAndTheClipLength) {
    EXPECT_EQ(ModelTrainer::analysingMessage(AnalysisProfile::percussive, 1.5),
              "Analysing (percussive, 1.5 s per sample)…");
    EXPECT_EQ(ModelTrainer::analysingMessage(AnalysisProfile::tonal, 4),
              "Analysing (tonal, 4.0 s per sample)…");
}

TEST(Smoothing, TakesTheFirstValueAndThenFivePercentOfEach) {
    ModelTrainer::Smoothing smoothing;
    EXPECT_EQ(smoothing.value(), 0.0F);
    EXPECT_EQ(smoothing.add(2.0F), 2.0F);
    EXPECT_FLOAT_EQ(smoothing.add(4.0F), 2.1F);
    EXPECT_FLOAT_EQ(smoothing.value(), 2.1F);
}

// ---- The deck

TEST(BoundedInteger, StaysBelowItsBound) {
    SeededRNG rng(1);
    std::set<std::uint64_t> seen;
    for (int i = 0; i < 200; ++i)
        seen.insert(ModelTrainer::boundedInteger(rng, 5));
    EXPECT_THAT(seen, ElementsAre(0, 1, 2, 3, 4));
}

TEST(BoundedInteger, TakesTheHighWordOfTheProduct) {
    SeededRNG rng(121);
    SeededRNG copy = rng;
    EXPECT_EQ(ModelTrainer::boundedInteger(rng, std::uint64_t{1} << 32), copy.next() >> 32);
    EXPECT_EQ(rng, copy);
}

TEST(BoundedInteger, OfOneIsZeroAndStillDraws) {
    SeededRNG rng(3);
    SeededRNG copy = rng;
    EXPECT_EQ(ModelTrainer::boundedInteger(rng, 1), 0U);
    (void)copy.next();
    EXPECT_EQ(rng, copy);
}

TEST(BoundedInteger, RejectsDrawsThatWouldFavourSomeValues) {
    // 2^64 mod 3 * 2^62 is 2^62: a quarter of all draws is rejected.
    const std::uint64_t bound = 3ULL << 62;
    SeededRNG rng(121);
    SeededRNG counting = rng;
    for (int i = 0; i < 400; ++i)
        (void)ModelTrainer::boundedInteger(rng, bound);
    int draws = 0;
    while (counting != rng) {
        (void)counting.next();
        ++draws;
    }
    EXPECT_NEAR(draws, 400.0 / 0.75, 60);
}

TEST(BoundedIntegerDeathTest, ABoundOfZeroStopsTheProgram) {
    SeededRNG rng(1);
    EXPECT_DEATH((void)ModelTrainer::boundedInteger(rng, 0), "bound");
}

TEST(Deck, DrawsEveryClipOnceBeforeAnyAgain) {
    SeededRNG rng(4);
    Deck deck(7);
    std::set<std::vector<std::size_t>> rounds;
    for (int round = 0; round < 20; ++round) {
        std::vector<std::size_t> order(7);
        std::ranges::generate(order, [&] { return deck.draw(rng); });
        rounds.insert(order);
        std::ranges::sort(order);
        EXPECT_THAT(order, ElementsAre(0, 1, 2, 3, 4, 5, 6));
    }
    EXPECT_GT(rounds.size(), 15U) << "the order changes";
}

TEST(Deck, ShufflesFromTheFrontAndDrawsFromTheBack) {
    SeededRNG rng(8);
    SeededRNG copy = rng;
    std::vector<std::size_t> cards{0, 1, 2, 3};
    for (std::size_t i = 0; i < 3; ++i)
        std::swap(cards[i], cards[i + ModelTrainer::boundedInteger(copy, 4 - i)]);
    Deck deck(4);
    for (int i = 3; i >= 0; --i)
        EXPECT_EQ(deck.draw(rng), cards[static_cast<std::size_t>(i)]);
    EXPECT_EQ(rng, copy);
}

TEST(Deck, OfOneClipDrawsNoRandomNumbers) {
    SeededRNG rng(5);
    const SeededRNG copy = rng;
    Deck deck(1);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(deck.draw(rng), 0U);
    EXPECT_EQ(rng, copy);
}

TEST(DeckDeathTest, WithoutClipsStopsTheProgram) {
    EXPECT_DEATH(Deck(0), "at least one clip");
}

// ---- Augmentation

TEST(Augmentation, ShiftsByAtMost35Milliseconds) {
    ModelConfig config = smallest;
    config.sampleRate = 44100;
    config.hop = 256;
    EXPECT_EQ(ModelTrainer::maxShift(config), 6);
    config.hop = 1024;
    EXPECT_EQ(ModelTrainer::maxShift(config), 1);
    config.sampleRate = 22050;
    EXPECT_EQ(ModelTrainer::maxShift(config), 0);
}

TEST(Augmentation, CoversItsRangesAndNothingElse) {
    SeededRNG rng(6);
    std::set<std::int64_t> shifts, melShifts;
    float lowest = 0, highest = 0;
    for (int i = 0; i < 2000; ++i) {
        const Augmentation drawn = ModelTrainer::drawAugmentation(smallest, rng);
        shifts.insert(drawn.shift);
        melShifts.insert(drawn.melShift);
        lowest = std::min(lowest, drawn.gain);
        highest = std::max(highest, drawn.gain);
    }
    EXPECT_THAT(shifts, ElementsAre(0, 1, 2, 3, 4));  // 35 ms are 4.375 frames here
    EXPECT_THAT(melShifts, ElementsAre(-1, 0, 1));
    EXPECT_NEAR(lowest, -0.12F, 0.002F);
    EXPECT_NEAR(highest, 0.12F, 0.002F);
}

TEST(Augmentation, MayShiftByOneFrameEvenWhere35MillisecondsHoldNone) {
    ModelConfig config = smallest;
    config.hop = 1024;
    SeededRNG rng(6);
    std::set<std::int64_t> shifts;
    for (int i = 0; i < 100; ++i)
        shifts.insert(ModelTrainer::drawAugmentation(config, rng).shift);
    EXPECT_THAT(shifts, ElementsAre(0, 1));
}

// Repeats the draws of one augmentation by hand, in their order.
void expectDrawOrder(const ModelConfig& config, std::uint64_t seed) {
    SeededRNG rng(seed);
    SeededRNG copy = rng;
    const Augmentation drawn = ModelTrainer::drawAugmentation(config, rng);
    const std::int64_t shift = 0.7F > copy.uniform() ? copy.intBelow(5) : 0;
    std::int64_t melShift = 0;
    if (config.profile == AnalysisProfile::percussive && 0.5F > copy.uniform())
        melShift = copy.intBelow(3) - 1;
    const float gain = (2.0F * copy.uniform() - 1.0F) * 6.0F / 50.0F;
    EXPECT_EQ(drawn.shift, shift) << "seed " << seed;
    EXPECT_EQ(drawn.melShift, melShift) << "seed " << seed;
    EXPECT_EQ(drawn.gain, gain) << "seed " << seed;
    EXPECT_EQ(rng, copy) << "seed " << seed;
}

TEST(Augmentation, DrawsInAFixedOrder) {
    for (std::uint64_t seed = 0; seed < 50; ++seed)
        expectDrawOrder(smallest, seed);
}

TEST(Augmentation, OfTonalClipsNeverDrawsTheMelShift) {
    bool differs = false;
    for (std::uint64_t seed = 0; seed < 50; ++seed) {
        expectDrawOrder(tonal(smallest), seed);
        SeededRNG percussiveRNG(seed), tonalRNG(seed);
        (void)ModelTrainer::drawAugmentation(smallest, percussiveRNG);
        EXPECT_EQ(ModelTrainer::drawAugmentation(tonal(smallest), tonalRNG).melShift, 0);
        differs = differs || percussiveRNG != tonalRNG;
    }
    EXPECT_TRUE(differs) << "the same seed gives another sequence";
}

std::vector<float> applied(const Augmentation& augmentation, const std::vector<float>& image) {
    std::vector<float> out(image.size(), 99.0F);
    ModelTrainer::applyAugmentation(augmentation, smallest, image, out);
    return out;
}

TEST(Augmentation, WithoutShiftsAndGainChangesNothing) {
    const std::vector<float> image = randomImage(1);
    EXPECT_EQ(applied({}, image), image);
}

TEST(Augmentation, MovesTheContentLaterAndUp) {
    const std::vector<float> image = randomImage(2);
    const std::vector<float> out = applied({.shift = 3, .melShift = 1, .gain = 0}, image);
    for (std::size_t row = 0; row < 32; ++row) {
        for (std::size_t column = 0; column < 32; ++column) {
            const bool uncovered = row < 1 || column < 3;
            const float expected = uncovered ? -1.0F : image[(row - 1) * 32 + column - 3];
            ASSERT_EQ(out[row * 32 + column], expected) << row << ", " << column;
        }
    }
}

TEST(Augmentation, MovesTheContentDown) {
    const std::vector<float> image = randomImage(3);
    const std::vector<float> out = applied({.shift = 0, .melShift = -1, .gain = 0}, image);
    EXPECT_TRUE(std::equal(out.begin(), out.end() - 32, image.begin() + 32));
    EXPECT_EQ(std::vector<float>(out.end() - 32, out.end()), std::vector<float>(32, -1.0F));
}

TEST(Augmentation, ShiftedBeyondTheImageLeavesSilence) {
    EXPECT_EQ(applied({.shift = 40, .melShift = 0, .gain = 0.1F}, randomImage(4)),
              std::vector<float>(32 * 32, -1.0F));
}

TEST(Augmentation, KeepsSilenceAndHasALowerLimitOnly) {
    std::vector<float> image(32 * 32, -1.0F);
    image[1] = -0.99F;
    image[2] = -0.98F;
    image[3] = 1.2F;
    image[4] = -1.5F;
    const std::vector<float> louder = applied({.shift = 0, .melShift = 0, .gain = 0.1F}, image);
    EXPECT_EQ(louder[0], -1.0F);
    EXPECT_EQ(louder[1], -0.99F) << "at the limit counts as silence";
    EXPECT_EQ(louder[2], -0.98F + 0.1F);
    EXPECT_EQ(louder[3], 1.2F + 0.1F) << "no upper limit";
    EXPECT_EQ(louder[4], -1.5F);
    const std::vector<float> softer = applied({.shift = 0, .melShift = 0, .gain = -0.1F}, image);
    EXPECT_EQ(softer[1], -0.99F);
    EXPECT_EQ(softer[2], -1.0F);
}

TEST(Augmentation, IsDrawnAndApplied) {
    const std::vector<float> image = randomImage(5);
    SeededRNG rng(77);
    SeededRNG copy = rng;
    const Augmentation drawn = ModelTrainer::drawAugmentation(smallest, copy);
    EXPECT_EQ(ModelTrainer::augment(image, smallest, rng), applied(drawn, image));
    EXPECT_EQ(rng, copy);
}

// ---- Batches

TEST(BatchSource, DrawsClipsAugmentationsAndNoiseInOrderFromTheSeedPlus24301) {
    const auto images = randomImages(3);
    BatchSource source(smallest, images, 2, 11);
    SeededRNG rng(11 + 24301);
    Deck deck(3);
    std::vector<float> x(2 * 32 * 32), eps(2 * 4);
    for (int step = 0; step < 5; ++step) {
        source.next(x, eps);
        std::vector<float> expectedX, expectedEps;
        std::vector<std::size_t> expectedIndices;
        for (int b = 0; b < 2; ++b) {
            expectedIndices.push_back(deck.draw(rng));
            const auto image = ModelTrainer::augment(images[expectedIndices.back()], smallest, rng);
            expectedX.insert(expectedX.end(), image.begin(), image.end());
        }
        for (int i = 0; i < 8; ++i)
            expectedEps.push_back(rng.gaussian());
        EXPECT_EQ(x, expectedX) << "step " << step;
        EXPECT_EQ(eps, expectedEps) << "step " << step;
        EXPECT_TRUE(std::ranges::equal(source.indices(), expectedIndices)) << "step " << step;
        EXPECT_EQ(source.rng(), rng) << "step " << step;
    }
}

TEST(BatchSource, WrapsTheSeedAround) {
    const auto images = randomImages(1);
    const BatchSource source(smallest, images, 1, ~std::uint64_t{0});
    EXPECT_EQ(source.rng(), SeededRNG(24300));
}

TEST(BatchSource, FillsEveryBatchFromASingleClip) {
    const auto images = randomImages(1);
    BatchSource source(smallest, images, 4, 1);
    std::vector<float> x(4 * 32 * 32), eps(4 * 4);
    source.next(x, eps);
    EXPECT_THAT(std::vector<std::size_t>(source.indices().begin(), source.indices().end()),
                ElementsAre(0, 0, 0, 0));
    EXPECT_FALSE(std::equal(x.begin(), x.begin() + 1024, x.begin() + 1024)) << "augmented anew each time";
}

TEST(BatchSourceDeathTest, RefusesBuffersOfAnotherSize) {
    const auto images = randomImages(1);
    BatchSource source(smallest, images, 2, 1);
    std::vector<float> x(2 * 32 * 32), eps(2 * 4 - 1);
    EXPECT_DEATH(source.next(x, eps), "wrong size");
}

// ---- Training on images

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
    options.clipSeconds = 10000;
    Listener listener;
    try {
        (void)ModelTrainer::train(corpus.scan(), options, listener.progress(), {}, processor());
        FAIL() << "trained";
    } catch (const Failure& error) {
        EXPECT_EQ(std::string(error.what()),
                  "Training is not possible with these settings: nMels is 96 and frames is 312512, together "
                  "too many");
    }
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
    listener.stopAt = [](const TrainingProgress& r) { return r.message.starts_with("Analysing ("); };
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
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    const auto progress = [&](const TrainingProgress&) {
        most = std::max(most.load(), ++inside);
        --inside;
    };
    (void)ModelTrainer::train(corpus.scan(), quickOptions(1), progress, {}, processor());
    EXPECT_EQ(most, 1);
}

}  // namespace
}  // namespace quillmere
