// Clips that are decoded in pieces, and twice.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <stop_token>
#include <string>
#include <vector>

#include "QuillmereCore/Model/ClipPreparation.h"
#include "QuillmereCore/Model/CorpusReport.h"
#include "QuillmereCore/Model/Training/ClipReading.h"
#include "QuillmereCore/Util/Failure.h"
#include "Support/FLACBytes.h"
#include "Support/PeakMemory.h"
#include "Support/Signals.h"
#include "Support/TempFolder.h"
#include "Support/WAVBytes.h"

namespace quillmere {
namespace {

using ModelTrainer::ClipReading;
using testing::constantFLAC;
using testing::floatWAV;
using testing::megabytesHere;
using testing::noise;
using testing::peakMegabytes;
using testing::sine;
using testing::TempFolder;
using testing::writeText;

constexpr std::size_t everything = std::size_t{1} << 30;

ClipReading read(const CorpusFile& file, int sampleRate, std::size_t inMemory,
                 std::size_t kept = everything) {
    return ModelTrainer::readClip(
        file, {.sampleRate = sampleRate, .keptSamples = kept, .flatness = true, .samplesInMemory = inMemory});
}

CorpusFile fileOf(const TempFolder& folder, const std::string& name, const std::string& bytes) {
    writeText(folder / name, bytes);
    return {folder / name, name, static_cast<std::int64_t>(bytes.size()), 0};
}

// Quiet at first and in between, and of many lengths.
std::vector<float> signal(std::size_t lead, std::size_t count, double hz, float hiss) {
    std::vector<float> samples = noise(lead, lead, 0.0009F);
    const std::vector<float> tone = sine(hz, 8000, count, 0.4);
    const std::vector<float> noisy = noise(count, count, hiss);
    for (std::size_t i = 0; i < count; ++i)
        samples.push_back(tone[i] + (i < count / 2 ? noisy[i] : 0));
    const std::vector<float> tail = noise(count + 1, count / 3, 0.003F);
    samples.insert(samples.end(), tail.begin(), tail.end());
    return samples;
}

TEST(LongClip, IsDecodedAndMeasuredLikeAShortOne) {
    const TempFolder folder;
    for (const std::size_t lead : {0U, 3U, 7U, 20U, 16384U, 40000U}) {
        for (const std::size_t count : {40U, 2000U, 100003U}) {
            const CorpusFile file = fileOf(folder, "x.wav", floatWAV({signal(lead, count, 700, 0.1F)}, 8000));
            for (const int rate : {8000, 11025}) {
                const auto clip = ClipPreparation::decode(file, rate);
                ASSERT_TRUE(clip);
                for (const std::size_t inMemory : {everything, std::size_t{1000}, std::size_t{0}}) {
                    const ClipReading reading = read(file, rate, inMemory);
                    ASSERT_TRUE(reading.isUsable());
                    EXPECT_EQ(reading.clip.samples, clip->samples) << lead << " " << count << " " << inMemory;
                    EXPECT_EQ(reading.clip.originalSeconds, clip->originalSeconds);
                    EXPECT_EQ(reading.clip.name, "x.wav");
                    EXPECT_EQ(reading.length, clip->samples.size());
                    EXPECT_EQ(reading.effectiveSeconds, clip->effectiveSeconds(rate));
                    EXPECT_EQ(reading.flatness, clip->flatness(rate));
                }
            }
        }
    }
}

TEST(LongClip, IsKeptAsFarAsItIsWanted) {
    const TempFolder folder;
    const CorpusFile file = fileOf(folder, "x.wav", floatWAV({signal(100, 50000, 300, 0)}, 8000));
    const auto clip = ClipPreparation::decode(file, 8000);
    for (const std::size_t inMemory : {everything, std::size_t{1000}}) {
        const ClipReading reading = read(file, 8000, inMemory, 1234);
        EXPECT_EQ(reading.clip.samples,
                  std::vector<float>(clip->samples.begin(), clip->samples.begin() + 1234));
        EXPECT_EQ(reading.length, clip->samples.size());
        EXPECT_EQ(reading.effectiveSeconds, clip->effectiveSeconds(8000));
    }
}

TEST(LongClip, MayBeSilent) {
    const TempFolder folder;
    const CorpusFile file = fileOf(folder, "x.wav", floatWAV({std::vector(5000, 0.0001F)}, 8000));
    EXPECT_EQ(read(file, 8000, 10).outcome, ClipReading::Outcome::silent);
}

TEST(LongClip, IsUnreadableWithSamplesThatAreNotNumbers) {
    const TempFolder folder;
    std::vector<float> samples = noise(1, 5000);
    samples[4000] = std::numeric_limits<float>::quiet_NaN();
    const CorpusFile file = fileOf(folder, "x.wav", floatWAV({samples}, 8000));
    for (const std::size_t inMemory : {everything, std::size_t{10}})
        EXPECT_EQ(read(file, 8000, inMemory).outcome, ClipReading::Outcome::unreadable);
}

TEST(LongClip, IsLeftWhenItIsCancelled) {
    const TempFolder folder;
    const CorpusFile file = fileOf(folder, "x.wav", floatWAV({noise(1, 5000)}, 8000));
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW((void)ModelTrainer::readClip(file, {}, stop.get_token()), CancellationError);
}

// 20 kilobytes that hold an hour of sound, and 200 bytes that would hold gigabytes at the rate of the others.
TEST(LongClip, TakesLittleMemory) {
    const TempFolder folder;
    writeText(folder / "a.wav", floatWAV({noise(1, 4000, 0.5F)}, 768000));
    writeText(folder / "b.wav", floatWAV({noise(2, 4000, 0.5F)}, 768000));
    writeText(folder / "slow.flac", constantFLAC(1000, 1'000'000));
    const long before = peakMegabytes();
    const CorpusReport report = Corpus::inspect(Corpus::scan(folder.path()));
    EXPECT_EQ(report.files[2].reason,
              "Could not read slow.flac: its sample rate of 1000 Hz is too far from 768000 Hz");
    EXPECT_TRUE(report.files[0].isUsedAsItIs());

    const CorpusFile file = fileOf(folder, "long.flac", constantFLAC(8000, 30'000'000));
    const ClipReading reading = read(file, 8000, ModelTrainer::ClipNeeds().samplesInMemory, 100);
    EXPECT_EQ(reading.length, 30'000'000U);
    EXPECT_EQ(reading.effectiveSeconds, 30'000'000 / 8000.0);
    EXPECT_LT(peakMegabytes() - before, megabytesHere(96));
}

}  // namespace
}  // namespace quillmere
