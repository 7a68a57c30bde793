#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <string>

#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Util/Parallel.h"
#include "Support/LearnedClips.h"
#include "Support/Processor.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::LearnedClips;

constexpr Aesthetics quick{.phaseIterations = 2};

class DetailedGeneration : public ::testing::Test {
protected:
    [[nodiscard]] SampleGenerator generatorWith(const ClipSounds& sounds) const {
        return {clips.model, testing::processor(), sounds};
    }
    [[nodiscard]] ClipSounds sounds() const { return ClipSounds::inFolder(clips.model, clips.scan()); }

    [[nodiscard]] GenerationRequest request(std::int64_t count, double detail) const {
        return {.count = count,
                .outputDirectory = out.path(),
                .aesthetics = quick,
                .seed = 42,
                .format = OutputFormat::wav32float,
                .namePrefix = "kick",
                .detail = detail};
    }
    [[nodiscard]] std::map<std::string, std::string> contents(const fs::path& folder) const {
        std::map<std::string, std::string> contents;
        for (const auto& entry : fs::directory_iterator(folder))
            contents[entry.path().filename().string()] = testing::readText(entry.path());
        return contents;
    }

    const LearnedClips clips;
    const testing::TempFolder out;
};

TEST_F(DetailedGeneration, WithoutDetailSoundsMakeNoDifference) {
    SampleGenerator with = generatorWith(sounds());
    SampleGenerator without = generatorWith({});
    for (const char* preset : {"Balanced", "Extreme"}) {
        const Aesthetics& aesthetics = Preset::named(preset)->aesthetics;
        const AuditionedSample plain = with.audition({.aesthetics = aesthetics, .seed = 3});
        EXPECT_EQ(plain.samples, without.audition(aesthetics, 3));
        EXPECT_EQ(plain.origin.detailBasis, DetailBasis::none);
    }
}

TEST_F(DetailedGeneration, SaysWhatTheFineStructureIsFrom) {
    SampleGenerator with = generatorWith(sounds());
    SampleGenerator without = generatorWith({});
    const AuditionRequest job{.aesthetics = quick, .seed = 3, .detail = 1};
    const AuditionedSample real = with.audition(job);
    const AuditionedSample noise = without.audition(job);
    EXPECT_EQ(real.origin.detailBasis, DetailBasis::sources);
    EXPECT_EQ(noise.origin.detailBasis, DetailBasis::noise);
    EXPECT_EQ(real.origin.detail, 1);
    EXPECT_NE(real.samples, noise.samples);
    EXPECT_NE(real.samples, with.audition(quick, 3));
}

TEST_F(DetailedGeneration, KeepsTheBlendOfTheSeed) {
    SampleGenerator generator = generatorWith(sounds());
    const Aesthetics wild = Preset::named("Wild")->aesthetics;
    const SampleOrigin plain = generator.auditionWithOrigin(wild, 5).origin;
    const SampleOrigin detailed = generator.audition({.aesthetics = wild, .seed = 5, .detail = 0.7}).origin;
    EXPECT_EQ(detailed.latent, plain.latent);
    ASSERT_EQ(detailed.sources.size(), plain.sources.size());
    for (std::size_t i = 0; i < plain.sources.size(); ++i) {
        EXPECT_EQ(detailed.sources[i].clip, plain.sources[i].clip);
        EXPECT_EQ(detailed.sources[i].weight, plain.sources[i].weight);
    }
}

// Two batches, so that position in the batch and its size vary.
TEST_F(DetailedGeneration, BytesDependOnNeitherThreadsNorBatchesNorEarlierRuns) {
    const auto bytesWith = [&](int threads) {
        const ThreadLimit limit(threads);
        SampleGenerator generator = generatorWith(sounds());
        GenerationRequest job = request(19, 1);
        job.aesthetics = Preset::named("Wild")->aesthetics;
        job.outputDirectory = out / std::to_string(threads);
        for (const GeneratedSample& sample : generator.generate(job, {}, {}))
            EXPECT_EQ(sample.origin.detailBasis, DetailBasis::sources);
        return contents(job.outputDirectory);
    };
    const auto serial = bytesWith(1);
    EXPECT_EQ(serial.size(), 19U);
    EXPECT_EQ(bytesWith(4), serial);
    SampleGenerator fresh = generatorWith(sounds());
    const auto audition = fresh.audition({.aesthetics = Preset::named("Wild")->aesthetics,
                                          .seed = SampleGenerator::variationSeed(42, 17),
                                          .detail = 1});
    EXPECT_EQ(audition.samples, AudioIO::readMono(out / "1" / "kick_var_0018.wav").samples);
}

TEST_F(DetailedGeneration, AllEightSourcesOrOneAreHeard) {
    SampleGenerator generator = generatorWith(sounds());
    for (const double count : {1.0, 8.0}) {
        const AuditionedSample sample = generator.audition(
            {.aesthetics = {.sources = count, .phaseIterations = 2}, .seed = 9, .detail = 1});
        EXPECT_EQ(sample.origin.detailBasis, DetailBasis::sources);
        EXPECT_GT(sample.samples.size(), 100U);
    }
}

TEST_F(DetailedGeneration, OnlyVariationsOfALostSampleDoWithoutIt) {
    SampleGenerator generator = generatorWith(sounds());
    fs::remove(clips.folder / "clip 3.wav");
    std::size_t lost = 0;
    for (const GeneratedSample& sample : generator.generate(request(20, 1), {}, {})) {
        const bool usesIt = std::ranges::any_of(sample.origin.sources,
                                                [](const SampleOrigin::Source& s) { return s.clip == 3; });
        EXPECT_EQ(sample.origin.detailBasis, usesIt ? DetailBasis::noise : DetailBasis::sources);
        lost += usesIt ? 1 : 0;
    }
    EXPECT_GT(lost, 0U);
    EXPECT_LT(lost, 20U);
}

TEST_F(DetailedGeneration, AnAmountOutOfRangeIsRefused) {
    SampleGenerator generator = generatorWith({});
    for (const double detail : {-0.1, 1.01, std::numeric_limits<double>::quiet_NaN()}) {
        EXPECT_THROW((void)generator.generate(request(1, detail), {}, {}), InvalidParameterError);
        EXPECT_THROW((void)generator.audition({.aesthetics = quick, .seed = 1, .detail = detail}),
                     InvalidParameterError);
    }
    EXPECT_EQ(testing::entriesIn(out.path()), 0U);
}

TEST_F(DetailedGeneration, ParametersThatLeadToNoNumbersAreRefused) {
    SampleGenerator generator = generatorWith(sounds());
    EXPECT_THROW((void)generator.audition({.aesthetics = {.tilt = 1e30}, .seed = 1, .detail = 1}),
                 InvalidParameterError);
}

TEST_F(DetailedGeneration, CanBeCancelledWhileItReads) {
    SampleGenerator generator = generatorWith(sounds());
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW((void)generator.generate(request(3, 1), {}, stop.get_token()), CancellationError);
    EXPECT_THROW((void)generator.audition({.aesthetics = quick, .seed = 1, .detail = 1}, stop.get_token()),
                 CancellationError);
    EXPECT_EQ(testing::entriesIn(out.path()), 0U);
}

}  // namespace
}  // namespace quillmere
