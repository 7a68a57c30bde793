#include "QuillmereCore/Model/Training/ClipReading.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <stop_token>
#include <string>
#include <vector>

#include "QuillmereCore/Model/Training/TrainingTestData.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

using ModelTrainer::chooseConfig;
using ModelTrainer::ClipNeeds;
using ModelTrainer::clipOf;
using ModelTrainer::ClipReading;
using ModelTrainer::needsOf;
using ModelTrainer::readClip;
using ModelTrainer::readClips;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::TestCorpus;
using Outcome = ClipReading::Outcome;

constexpr ClipNeeds all{.sampleRate = 8000, .keptSamples = 1'000'000, .flatness = true};

ClipReading readingOf(double effectiveSeconds, double flatness) {
    ClipReading reading;
    reading.effectiveSeconds = effectiveSeconds;
    reading.flatness = flatness;
    return reading;
}

TEST(ClipReading, OfAFileThatSoundsMeasuresTheDecodedClip) {
    const TestCorpus corpus;
    corpus.addNoise("a.wav", 0.1, 1);
    const CorpusFile file = corpus.scan().files.front();
    const ClipReading reading = readClip(file, all);
    const auto clip = ClipPreparation::decode(file, 8000);
    ASSERT_TRUE(clip);
    ASSERT_EQ(reading.outcome, Outcome::usable);
    EXPECT_EQ(reading.clip.name, "a.wav");
    EXPECT_EQ(reading.clip.samples, clip->samples);
    EXPECT_EQ(reading.clip.originalSeconds, 0.1);
    EXPECT_EQ(reading.length, clip->samples.size());
    EXPECT_EQ(reading.effectiveSeconds, clip->effectiveSeconds(8000));
    EXPECT_EQ(reading.flatness, clip->flatness(8000));
}

TEST(ClipReading, KeepsOnlyTheSamplesThatAreNeededButMeasuresAll) {
    const TestCorpus corpus;
    corpus.addNoise("a.wav", 1, 1);
    const CorpusFile file = corpus.scan().files.front();
    const ClipReading whole = readClip(file, all);
    const ClipReading cut = readClip(file, {.sampleRate = 8000, .keptSamples = 100, .flatness = true});
    EXPECT_EQ(cut.clip.samples,
              std::vector<float>(whole.clip.samples.begin(), whole.clip.samples.begin() + 100));
    EXPECT_EQ(cut.length, whole.length);
    EXPECT_EQ(cut.effectiveSeconds, whole.effectiveSeconds);
    EXPECT_EQ(cut.flatness, whole.flatness);
}

TEST(ClipReading, LeavesFlatnessAtZeroWhereItIsNotWanted) {
    const TestCorpus corpus;
    corpus.addNoise("a.wav", 0.1, 1);
    const CorpusFile file = corpus.scan().files.front();
    EXPECT_GT(readClip(file, all).flatness, 0);
    EXPECT_EQ(readClip(file, {.sampleRate = 8000, .keptSamples = 100, .flatness = false}).flatness, 0);
}

TEST(ClipReading, TellsSilentFilesFromUnreadableOnes) {
    const TestCorpus corpus;
    corpus.add("silent.wav", std::vector<float>(800, 0.0F));
    corpus.addText("text.wav");
    const std::vector<CorpusFile> files = corpus.scan().files;
    EXPECT_EQ(readClip(files.at(0), all).outcome, Outcome::silent);
    const ClipReading unreadable = readClip(files.at(1), all);
    EXPECT_EQ(unreadable.outcome, Outcome::unreadable);
    EXPECT_THAT(unreadable.reason, HasSubstr("text.wav"));
    EXPECT_FALSE(unreadable.isUsable());
}

TEST(ClipReading, OfManyFilesKeepsTheirOrderAndCountsThem) {
    const TestCorpus corpus;
    corpus.addNoise("a.wav", 0.1, 1);
    corpus.addText("b.wav");
    corpus.addNoise("c.wav", 0.1, 3);
    std::vector<std::int64_t> counts;
    const auto readings = readClips(corpus.scan().files, all,
                                    [&](std::int64_t done, std::int64_t total) {
                                        EXPECT_EQ(total, 3);
                                        counts.push_back(done);
                                    },
                                    {});
    ASSERT_EQ(readings.size(), 3U);
    EXPECT_EQ(readings[0].clip.name, "a.wav");
    EXPECT_EQ(readings[1].outcome, Outcome::unreadable);
    EXPECT_EQ(readings[2].clip.name, "c.wav");
    EXPECT_THAT(counts, ElementsAre(1, 2, 3));
}

TEST(ClipReading, ThatIsCancelledReadsNothing) {
    const TestCorpus corpus;
    corpus.addNoise("a.wav", 0.1, 1);
    std::stop_source stop;
    stop.request_stop();
    int read = 0;
    EXPECT_THROW((void)readClips(
                     corpus.scan().files, all, [&](std::int64_t, std::int64_t) { ++read; }, stop.get_token()),
                 CancellationError);
    EXPECT_EQ(read, 0);
}

TEST(ClipReading, PassesOnWhatItsCallbackThrows) {
    const TestCorpus corpus;
    corpus.addNoise("a.wav", 0.1, 1);
    EXPECT_THROW((void)readClips(corpus.scan().files, all,
                                 [](std::int64_t, std::int64_t) { throw std::runtime_error("enough"); }, {}),
                 std::runtime_error);
}

// ---- Clips that are too many to be kept

class ManyClips : public ::testing::Test {
protected:
    ManyClips() {
        for (int i = 0; i < 8; ++i)
            corpus.addNoise(std::to_string(i) + ".wav", 0.1 + 0.01 * i, static_cast<std::uint64_t>(i));
    }
    // With room for the samples of some of them.
    [[nodiscard]] static ClipNeeds roomFor(std::size_t samples) {
        ClipNeeds needs = all;
        needs.keptTogether = samples;
        return needs;
    }
    // The reading of the first file, without samples.
    [[nodiscard]] ClipReading firstWithoutSamples() const {
        return readClips(corpus.scan().files, roomFor(0), {}, {}).front();
    }

    TestCorpus corpus;
};

TEST_F(ManyClips, HoldNoMoreSamplesThanThereIsRoomFor) {
    for (const std::size_t room : {0U, 1500U, 3000U}) {
        std::size_t held = 0;
        for (const ClipReading& reading : readClips(corpus.scan().files, roomFor(room), {}, {}))
            held += reading.clip.samples.capacity();
        EXPECT_LE(held, room);
        EXPECT_EQ(held > 0, room > 0);
    }
}

TEST_F(ManyClips, AreMeasuredAndReadAgainAsIfThereWereRoom) {
    const std::vector<CorpusFile> files = corpus.scan().files;
    const auto whole = readClips(files, all, {}, {});
    const auto some = readClips(files, roomFor(3000), {}, {});
    for (std::size_t i = 0; i < files.size(); ++i) {
        EXPECT_EQ(some[i].length, whole[i].length);
        EXPECT_EQ(some[i].flatness, whole[i].flatness);
        const DecodedClip clip = clipOf(some[i], files[i], roomFor(3000));
        EXPECT_EQ(clip.name, whole[i].clip.name);
        EXPECT_EQ(clip.samples, whole[i].clip.samples);
        EXPECT_EQ(clip.originalSeconds, whole[i].clip.originalSeconds);
    }
}

TEST_F(ManyClips, AreRefusedIfTheirFileHasChangedMeanwhile) {
    const CorpusFile file = corpus.scan().files.front();
    const ClipReading before = firstWithoutSamples();
    corpus.addNoise("0.wav", 0.2, 5);
    try {
        (void)clipOf(before, file, roomFor(0));
        FAIL();
    } catch (const AudioIOError& error) {
        EXPECT_STREQ(error.what(), "Could not read 0.wav: it has changed while it was read");
    }
    corpus.add("0.wav", std::vector<float>(800, 0.0F));
    EXPECT_THROW((void)clipOf(before, file, roomFor(0)), AudioIOError);
}

TEST_F(ManyClips, AreRefusedIfTheirFileIsGone) {
    const CorpusFile file = corpus.scan().files.front();
    const ClipReading before = firstWithoutSamples();
    std::filesystem::remove(file.url);
    EXPECT_THROW((void)clipOf(before, file, roomFor(0)), AudioIOError);
}

TEST_F(ManyClips, AreNotReadAgainIfThatIsCancelled) {
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(
        (void)clipOf(firstWithoutSamples(), corpus.scan().files.front(), roomFor(0), stop.get_token()),
        CancellationError);
}

// ---- What training needs of a clip

TEST(ClipNeeds, AreOneSampleMoreThanTheLongestModelUses) {
    TrainingOptions options;
    const auto longest = [&](double seconds) {
        return ModelConfig::forSeconds(44100, seconds, AnalysisProfile::tonal, 64).clipSamples();
    };
    EXPECT_EQ(needsOf(options, 44100).keptSamples, static_cast<std::size_t>(longest(4)) + 1);
    options.clipSeconds = 9;
    EXPECT_EQ(needsOf(options, 44100).keptSamples, static_cast<std::size_t>(longest(9)) + 1);
    EXPECT_EQ(needsOf(options, 44100).sampleRate, 44100);
}

TEST(ClipNeeds, AreFewerSamplesForEachOfManyThreads) {
    const ClipNeeds needs;
    EXPECT_EQ(needs.sharedBy(1).samplesInMemory, needs.samplesInMemory);
    EXPECT_EQ(needs.sharedBy(8).samplesInMemory, needs.samplesInMemory);
    EXPECT_EQ(needs.sharedBy(64).samplesInMemory, needs.samplesInMemory / 8);
    EXPECT_EQ(needs.sharedBy(64).keptSamples, needs.keptSamples);
}

TEST(ClipNeeds, HoldFlatnessOnlyWhereTheProfileIsChosenByIt) {
    TrainingOptions options;
    EXPECT_TRUE(needsOf(options, 44100).flatness);
    options.profile = AnalysisProfile::tonal;
    EXPECT_FALSE(needsOf(options, 44100).flatness);
}

// ---- The choice of the configuration

TEST(ConfigChoice, GoesByTheUsableClipsAlone) {
    ClipReading silent;
    silent.outcome = Outcome::silent;
    const std::vector<ClipReading> readings{silent, readingOf(1, 0.05), readingOf(1, 0.05), silent, silent};
    const ModelConfig config = chooseConfig(readings, 44100, TrainingOptions());
    EXPECT_EQ(config, ModelConfig::forSeconds(44100, 1 * 1.05 + 0.05, AnalysisProfile::tonal, 64));
}

TEST(ConfigChoice, FollowsTheOptions) {
    TrainingOptions options;
    options.profile = AnalysisProfile::percussive;
    options.clipSeconds = 0.5;
    options.latentDim = 8;
    const std::vector<ClipReading> readings{readingOf(3, 0.05)};
    EXPECT_EQ(chooseConfig(readings, 22050, options),
              ModelConfig::forSeconds(22050, 0.5, AnalysisProfile::percussive, 8));
}

}  // namespace
}  // namespace quillmere
