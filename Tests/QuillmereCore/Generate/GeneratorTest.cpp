#include "QuillmereCore/Generate/Generator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "QuillmereCore/Generate/Finishing.h"
#include "QuillmereCore/Generate/Rendering.h"
#include "QuillmereCore/Util/Parallel.h"
#include "QuillmereCore/Util/Text.h"
#include "Support/Processor.h"
#include "Support/SmallModel.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::readText;
using testing::smallModel;
using testing::TempFolder;

using Signal = std::vector<float>;

constexpr Aesthetics quick{.phaseIterations = 2};

std::string nameOf(const GeneratedSample& sample) {
    return Text::utf8(sample.url.filename());
}

std::set<std::string> namesIn(const fs::path& folder) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.insert(Text::utf8(entry.path().filename()));
    return names;
}

std::map<std::string, std::string> contentsOf(const fs::path& folder) {
    std::map<std::string, std::string> contents;
    for (const auto& entry : fs::directory_iterator(folder))
        contents[Text::utf8(entry.path().filename())] = readText(entry.path());
    return contents;
}

class Generating : public ::testing::Test {
protected:
    [[nodiscard]] GenerationRequest request(std::int64_t count) const {
        return {.count = count,
                .outputDirectory = folder.path(),
                .aesthetics = quick,
                .seed = 42,
                .format = OutputFormat::wav32float,
                .namePrefix = "kick"};
    }
    std::vector<GeneratedSample> generate(const GenerationRequest& job) {
        return generator.generate(job, {}, {});
    }

    TempFolder folder;
    SampleGenerator generator{smallModel(), testing::processor()};
};

TEST_F(Generating, VariationZeroIsTheAudition) {
    for (const char* preset : {"Balanced", "Wild", "Extreme"}) {
        GenerationRequest job = request(1);
        job.aesthetics = Preset::named(preset)->aesthetics;
        const auto written = generate(job);
        EXPECT_EQ(AudioIO::readMono(written.at(0).url).samples, generator.audition(job.aesthetics, job.seed))
            << preset;
    }
}

// Two batches, so that position in the batch and its size vary.
TEST_F(Generating, EveryVariationDependsOnItsSeedAlone) {
    GenerationRequest job = request(19);
    job.aesthetics = Preset::named("Wild")->aesthetics;
    (void)generate(job);
    for (std::uint64_t i = 0; i < 19; ++i) {
        const fs::path file = folder / Finishing::fileName("kick_var", i + 1);
        EXPECT_EQ(AudioIO::readMono(file).samples,
                  generator.audition(job.aesthetics, SampleGenerator::variationSeed(42, i)))
            << i;
    }
}

TEST_F(Generating, BytesDoNotDependOnTheNumberOfThreads) {
    GenerationRequest job = request(18);
    job.aesthetics = Preset::named("Extreme")->aesthetics;
    const auto bytesWith = [&](int threads) {
        const ThreadLimit limit(threads);
        job.outputDirectory = folder / std::to_string(threads);
        (void)generate(job);
        return contentsOf(job.outputDirectory);
    };
    const auto serial = bytesWith(1);
    EXPECT_EQ(serial.size(), 18U);
    EXPECT_EQ(bytesWith(4), serial);
}

TEST_F(Generating, PartsHaveTheNamesAndBytesOfTheWhole) {
    GenerationRequest job = request(20);
    (void)generate(job);
    const auto whole = contentsOf(folder.path());
    job.outputDirectory = folder / "parts";
    for (const auto& [first, count] : {std::pair(17, 3), std::pair(0, 1), std::pair(1, 16)}) {
        job.first = first;
        job.count = count;
        for (const GeneratedSample& sample : generate(job))
            EXPECT_EQ(sample.origin.seed,
                      SampleGenerator::variationSeed(42, static_cast<std::uint64_t>(sample.origin.index)));
    }
    EXPECT_EQ(contentsOf(job.outputDirectory), whole);
}

TEST_F(Generating, APartWhoseNumberIsTakenWritesNothing) {
    GenerationRequest job = request(3);
    job.first = 4;
    testing::writeText(folder / "kick_var_0007.wav", "somebody's");
    EXPECT_THROW((void)generate(job), FileError);
    EXPECT_EQ(namesIn(folder.path()), std::set<std::string>{"kick_var_0007.wav"});
}

TEST_F(Generating, HooksBringOriginsAndSeeEveryFile) {
    std::vector<SampleOrigin> origins;
    for (std::uint64_t seed = 0; seed < 18; ++seed)
        origins.push_back(generator.auditionWithOrigin(quick, 100 + seed).origin);
    std::atomic<int> seen{0};
    GenerationHooks hooks;
    hooks.origin = [&](std::int64_t index) { return origins.at(static_cast<std::size_t>(index)); };
    hooks.chunk = [](const SampleOrigin& origin) {
        return GenerationHooks::Chunk{"test", std::to_string(origin.seed)};
    };
    hooks.written = [&](const GenerationHooks::WrittenFile& file) {
        const std::string bytes(reinterpret_cast<const char*>(file.bytes.data()), file.bytes.size());
        EXPECT_EQ(readText(file.sample.url), bytes);
        EXPECT_NE(bytes.find("test"), std::string::npos);
        EXPECT_EQ(generator.sampleRate(), file.sampleRate);
        ++seen;
    };
    for (const GeneratedSample& sample : generator.generate(request(18), hooks, {}, {})) {
        EXPECT_EQ(AudioIO::readMono(sample.url).samples, generator.audition(quick, sample.origin.seed));
        EXPECT_EQ(sample.origin, origins.at(static_cast<std::size_t>(sample.origin.seed - 100)));
    }
    EXPECT_EQ(seen, 18);
}

TEST_F(Generating, WhatAHookThrowsEndsTheJob) {
    GenerationHooks hooks;
    hooks.written = [](const GenerationHooks::WrittenFile&) { throw Failure("no more"); };
    EXPECT_THROW((void)generator.generate(request(2), hooks, {}, {}), Failure);
}

TEST_F(Generating, SamplesDoNotDependOnTheCallersTreatmentOfDenormals) {
    const Aesthetics wild = Preset::named("Wild")->aesthetics;
    const Signal samples = generator.audition(wild, 3);
    const FlushDenormals flush;
    EXPECT_EQ(generator.audition(wild, 3), samples);
}

TEST_F(Generating, EqualSeedsGiveEqualAuditions) {
    EXPECT_EQ(generator.audition(quick, 7), generator.audition(quick, 7));
    EXPECT_NE(generator.audition(quick, 7), generator.audition(quick, 8));
}

TEST_F(Generating, AuditionIsDecodedRenderedAndFinished) {
    SeededRNG rng(7);
    VAEInference inference(generator.bundle().config, generator.bundle().weights, testing::processor());
    const FeatureExtractor extractor(generator.bundle().config);
    STFT stft = extractor.makeSTFT();
    const std::vector<Signal> latents{generator.sampleLatent(rng, quick)};
    const Signal image = inference.decode(latents).at(0);
    Signal expected = Rendering::waveform(image, quick, extractor, stft, rng);
    Finishing::finish(expected, quick, 8000, rng);
    EXPECT_EQ(generator.audition(quick, 7), expected);
}

TEST_F(Generating, SeedsOfVariationsWrapAround) {
    EXPECT_EQ(SampleGenerator::variationSeed(42, 0), 42U);
    EXPECT_EQ(SampleGenerator::variationSeed(0, 1), 0x9E3779B97F4A7C15U);
    EXPECT_EQ(SampleGenerator::variationSeed(~0ULL, 1), 0x9E3779B97F4A7C14U);
}

TEST_F(Generating, NumbersFollowTheHighestInTheFolder) {
    testing::writeText(folder / "kick_var_0003.wav", "mine");
    testing::writeText(folder / "kick_var_0010.wav", "mine");
    testing::writeText(folder / "kick_var_x.wav", "mine");
    testing::writeText(folder / "kick_var.wav", "mine");
    (void)generate(request(2));
    EXPECT_THAT(namesIn(folder.path()),
                ElementsAre("kick_var.wav", "kick_var_0003.wav", "kick_var_0010.wav", "kick_var_0011.wav",
                            "kick_var_0012.wav", "kick_var_x.wav"));
    EXPECT_EQ(readText(folder / "kick_var_0010.wav"), "mine");
}

TEST_F(Generating, NumbersGoBeyondFourDigits) {
    testing::writeText(folder / "kick_var_12344.wav", "");
    EXPECT_EQ(nameOf(generate(request(1)).at(0)), "kick_var_12345.wav");
}

TEST_F(Generating, ASecondRunGoesOnWhereTheFirstEnded) {
    (void)generate(request(2));
    (void)generate(request(2));
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("kick_var_0001.wav", "kick_var_0002.wav",
                                                    "kick_var_0003.wav", "kick_var_0004.wav"));
}

TEST_F(Generating, PrefixesAreSanitised) {
    GenerationRequest job = request(1);
    job.namePrefix = "my loop: v2";
    EXPECT_EQ(nameOf(generate(job).at(0)), "my_loop__v2_var_0001.wav");
}

TEST_F(Generating, WithoutPrefixTheNameIsTheCorpuss) {
    GenerationRequest job = request(1);
    job.namePrefix.reset();
    EXPECT_EQ(nameOf(generate(job).at(0)), "Drums__café_var_0001.wav");
}

TEST_F(Generating, ReturnsTheDurationOfEachFile) {
    for (const GeneratedSample& sample : generate(request(3))) {
        const auto samples = AudioIO::readMono(sample.url).samples.size();
        EXPECT_EQ(sample.seconds, static_cast<double>(samples) / 8000);
    }
}

TEST_F(Generating, WritesTheRequestedFormat) {
    const Signal samples = generator.audition(quick, 42);
    for (const OutputFormat format : allOutputFormats) {
        GenerationRequest job = request(1);
        job.format = format;
        const auto size = fs::file_size(generate(job).at(0).url);
        const auto audio = samples.size() * static_cast<std::size_t>(bitDepth(format)) / 8;
        EXPECT_GE(size, audio + 44) << rawValue(format);
        EXPECT_LE(size, audio + 64) << rawValue(format);
    }
}

TEST_F(Generating, ProgressCountsEveryWrittenFile) {
    std::vector<std::int64_t> reports;
    std::vector<std::size_t> files;
    (void)generator.generate(request(18),
                             [&](std::int64_t done, std::int64_t total) {
                                 EXPECT_EQ(total, 18);
                                 reports.push_back(done);
                                 files.push_back(testing::entriesIn(folder.path()));
                             },
                             {});
    ASSERT_EQ(reports.size(), 18U);
    for (std::size_t i = 0; i < reports.size(); ++i) {
        EXPECT_EQ(reports[i], static_cast<std::int64_t>(i) + 1);
        EXPECT_GE(files[i], i + 1);
    }
}

TEST_F(Generating, NothingIsDoneForACountOfZeroOrLess) {
    for (const std::int64_t count : {0L, -5L}) {
        GenerationRequest job = request(count);
        job.outputDirectory = folder / "new";
        EXPECT_TRUE(generate(job).empty());
        EXPECT_FALSE(fs::exists(folder / "new"));
    }
}

TEST_F(Generating, CancelledBeforeItBeginsWritesNothing) {
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW((void)generator.generate(request(3), {}, stop.get_token()), CancellationError);
    EXPECT_EQ(testing::entriesIn(folder.path()), 0U);
}

TEST_F(Generating, CancelledWithinABatchKeepsWhatIsWritten) {
    const ThreadLimit limit(1);
    std::stop_source stop;
    const auto afterThree = [&](std::int64_t done, std::int64_t) {
        if (done == 3) stop.request_stop();
    };
    EXPECT_THROW((void)generator.generate(request(10), afterThree, stop.get_token()), CancellationError);
    EXPECT_EQ(testing::entriesIn(folder.path()), 3U);
}

TEST_F(Generating, WhoAsksLearnsWhatWasWrittenBeforeACancellation) {
    const ThreadLimit limit(1);
    std::stop_source stop;
    const auto afterThree = [&](std::int64_t done, std::int64_t) {
        if (done == 3) stop.request_stop();
    };
    const GenerationOutcome outcome = generator.tryToGenerate(request(10), afterThree, stop.get_token());
    ASSERT_EQ(outcome.written.size(), 3U);
    for (const GeneratedSample& sample : outcome.written)
        EXPECT_TRUE(fs::is_regular_file(sample.url));
    ASSERT_TRUE(outcome.failure);
    EXPECT_THROW(std::rethrow_exception(outcome.failure), CancellationError);
}

TEST_F(Generating, WhoAsksLearnsWhatWasWrittenBeforeAFailure) {
    const ThreadLimit limit(1);
    GenerationRequest job = request(20);
    job.outputDirectory = folder / "out";
    const auto swapFolderForFile = [&](std::int64_t done, std::int64_t) {
        if (done != 2) return;
        fs::rename(folder / "out", folder / "moved");
        testing::writeText(folder / "out", "");
    };
    const GenerationOutcome outcome = generator.tryToGenerate(job, swapFolderForFile, {});
    EXPECT_EQ(outcome.written.size(), 2U);
    ASSERT_TRUE(outcome.failure);
    EXPECT_THROW(std::rethrow_exception(outcome.failure), FileError);
}

TEST_F(Generating, ASuccessHasNoFailure) {
    const GenerationOutcome outcome = generator.tryToGenerate(request(3), {}, {});
    EXPECT_EQ(outcome.written.size(), 3U);
    EXPECT_FALSE(outcome.failure);
}

TEST_F(Generating, CancelledAtTheEndOfABatchStopsBeforeTheNext) {
    std::stop_source stop;
    const auto afterBatch = [&](std::int64_t done, std::int64_t) {
        if (done == 16) stop.request_stop();
    };
    EXPECT_THROW((void)generator.generate(request(20), afterBatch, stop.get_token()), CancellationError);
    EXPECT_EQ(testing::entriesIn(folder.path()), 16U);
}

TEST_F(Generating, CancelledAfterTheLastVariationIsASuccess) {
    std::stop_source stop;
    const auto atTheEnd = [&](std::int64_t done, std::int64_t total) {
        if (done == total) stop.request_stop();
    };
    EXPECT_EQ(generator.generate(request(3), atTheEnd, stop.get_token()).size(), 3U);
}

TEST_F(Generating, CreatesTheOutputFolder) {
    GenerationRequest job = request(1);
    job.outputDirectory = folder / "näme with blanks" / "below";
    EXPECT_EQ(generate(job).at(0).url, job.outputDirectory / "kick_var_0001.wav");
    EXPECT_TRUE(fs::is_regular_file(job.outputDirectory / "kick_var_0001.wav"));
}

TEST_F(Generating, AnOutputPathThatIsAFileIsRefusedByName) {
    GenerationRequest job = request(1);
    for (const char* path : {"taken", "taken/below"}) {
        testing::writeText(folder / "taken", "mine");
        job.outputDirectory = folder / path;
        try {
            (void)generate(job);
            ADD_FAILURE() << path << " was accepted";
        } catch (const FileError& error) {
            EXPECT_THAT(error.what(), HasSubstr((folder / path).string()));
            EXPECT_THAT(error.what(), HasSubstr("Not a directory"));
        }
        EXPECT_EQ(readText(folder / "taken"), "mine");
    }
}

TEST_F(Generating, AWriteFailureIsThrownAfterTheBatch) {
    const ThreadLimit limit(1);
    const fs::path out = folder / "out";
    GenerationRequest job = request(20);
    job.outputDirectory = out;
    const auto swapFolderForFile = [&](std::int64_t done, std::int64_t) {
        EXPECT_EQ(done, 1);
        fs::rename(out, folder / "moved");
        testing::writeText(out, "");
    };
    EXPECT_THROW((void)generator.generate(job, swapFolderForFile, {}), FileError);
    EXPECT_THAT(namesIn(folder / "moved"), ElementsAre(::testing::StartsWith("kick_var_")));
}

TEST_F(Generating, ANameTakenMeanwhileIsLeftAlone) {
    const ThreadLimit limit(1);
    const auto takeAll = [&](std::int64_t done, std::int64_t) {
        if (done != 1) return;
        for (std::size_t number = 1; number <= 4; ++number) {
            const fs::path file = folder / Finishing::fileName("kick_var", number);
            if (!fs::exists(file)) testing::writeText(file, "foreign");
        }
    };
    const auto written = generator.generate(request(4), takeAll, {});
    ASSERT_EQ(written.size(), 4U);
    EXPECT_EQ(testing::entriesIn(folder.path()), 7U);
    std::size_t foreign = 0;
    for (const auto& [name, content] : contentsOf(folder.path()))
        foreign += content == "foreign" ? 1 : 0;
    EXPECT_EQ(foreign, 3U);
    for (const GeneratedSample& sample : written)
        EXPECT_FALSE(AudioIO::readMono(sample.url).samples.empty());
}

TEST_F(Generating, TwoGeneratorsInOneFolderNeverOverwrite) {
    SampleGenerator second{smallModel(), testing::processor()};
    std::vector<GeneratedSample> fromFirst;
    std::vector<GeneratedSample> fromSecond;
    std::thread other([&] {
        GenerationRequest job = request(30);
        job.seed = 43;
        fromSecond = second.generate(job, {}, {});
    });
    fromFirst = generate(request(30));
    other.join();

    std::set<std::string> names;
    for (const auto* samples : {&fromFirst, &fromSecond}) {
        for (const GeneratedSample& sample : *samples)
            names.insert(nameOf(sample));
    }
    EXPECT_EQ(names.size(), 60U);
    EXPECT_EQ(namesIn(folder.path()), names);
    std::set<std::string> contents;
    for (const auto& [name, content] : contentsOf(folder.path()))
        contents.insert(content);
    EXPECT_EQ(contents.size(), 60U);
}

// Two batches, finished in any order.
TEST_F(Generating, EverySampleKnowsWhereItComesFrom) {
    const std::vector<std::string> names{"a.wav", "b.wav", "sub/c.wav", "d.wav", "e.wav"};  // one is missing
    ModelBundle bundle = smallModel();
    bundle.metadata.clipNames = names;
    SampleGenerator named(bundle, testing::processor());
    GenerationRequest job = request(19);
    job.aesthetics = Preset::named("Wild")->aesthetics;
    std::set<std::int64_t> indices;
    for (const GeneratedSample& sample : named.generate(job, {}, {})) {
        const SampleOrigin& origin = sample.origin;
        indices.insert(origin.index);
        EXPECT_EQ(nameOf(sample),
                  Finishing::fileName("kick_var", static_cast<std::size_t>(origin.index) + 1));
        EXPECT_EQ(origin.seed, SampleGenerator::variationSeed(42, static_cast<std::uint64_t>(origin.index)));
        EXPECT_EQ(AudioIO::readMono(sample.url).samples, named.audition(job.aesthetics, origin.seed));
        SeededRNG rng(origin.seed);
        EXPECT_EQ(origin.latent, named.sampleLatent(rng, job.aesthetics));
        EXPECT_EQ(origin.model, named.identity());
        EXPECT_EQ(origin.sources.size(), 4U);
        float sum = 0;
        for (const SampleOrigin::Source& source : origin.sources) {
            EXPECT_EQ(source.name, source.clip < names.size() ? names[source.clip] : "");
            sum += source.weight;
        }
        EXPECT_NEAR(sum, 1, 1e-6F);
    }
    EXPECT_EQ(indices.size(), 19U);
    EXPECT_EQ(*indices.rbegin(), 18);
}

TEST_F(Generating, AnAuditionKnowsWhereItComesFromToo) {
    const AuditionedSample sample = generator.auditionWithOrigin(quick, 42);
    EXPECT_EQ(sample.samples, generator.audition(quick, 42));
    const SampleOrigin origin = generate(request(1)).at(0).origin;
    EXPECT_EQ(sample.origin.index, 0);
    EXPECT_EQ(sample.origin.seed, 42U);
    EXPECT_EQ(sample.origin.latent, origin.latent);
    EXPECT_EQ(sample.origin.model, origin.model);
    ASSERT_EQ(sample.origin.sources.size(), origin.sources.size());
    for (std::size_t i = 0; i < origin.sources.size(); ++i) {
        EXPECT_EQ(sample.origin.sources[i].clip, origin.sources[i].clip);
        EXPECT_EQ(sample.origin.sources[i].weight, origin.sources[i].weight);
    }
}

// Without departures the latent vector is the blend of its sources.
TEST_F(Generating, TheSourcesOfASampleMakeItsLatentVector) {
    GenerationRequest job = request(5);
    job.aesthetics = {.sources = 3, .drift = 0, .phaseIterations = 1};
    for (const GeneratedSample& sample : generate(job)) {
        std::vector<float> blend(4);
        for (const SampleOrigin::Source& source : sample.origin.sources) {
            for (std::size_t j = 0; j < blend.size(); ++j)
                blend[j] += generator.bundle().latents[source.clip][j] * source.weight;
        }
        EXPECT_EQ(blend, sample.origin.latent);
    }
}

TEST_F(Generating, ParametersThatWouldStopTheProgramAreRefused) {
    GenerationRequest job = request(1);
    job.outputDirectory = folder / "new";
    job.aesthetics.phaseIterations = std::nan("");
    EXPECT_THROW((void)generate(job), InvalidParameterError);
    EXPECT_FALSE(fs::exists(folder / "new"));
    EXPECT_THROW((void)generator.audition({.sources = 1e300}, 1), InvalidParameterError);
}

TEST_F(Generating, ResultsThatAreNotFiniteAreNotWritten) {
    GenerationRequest job = request(2);
    job.aesthetics.tilt = 1e30;
    EXPECT_THROW((void)generate(job), InvalidParameterError);
    EXPECT_EQ(testing::entriesIn(folder.path()), 0U);
    EXPECT_THROW((void)generator.audition(job.aesthetics, 1), InvalidParameterError);
}

// Numbers as a file of parameters may hold them. Phase passes cost time by the number, so only few of them.
TEST_F(Generating, AbsurdParametersEndInSamplesOrAClearRefusal) {
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        for (const double value : {-1e300, -1e5, 1e-300, 1e5, 1e30}) {
            if (spec.keyPath == &Aesthetics::phaseIterations && value >= 1e5 && value < 1e18) continue;
            Aesthetics aesthetics = quick;
            aesthetics.*spec.keyPath = value;
            try {
                const Signal samples = generator.audition(aesthetics, 5);
                EXPECT_FALSE(samples.empty()) << spec.id << " " << value;
                EXPECT_TRUE(std::ranges::all_of(samples, [](float x) { return std::isfinite(x); }))
                    << spec.id << " " << value;
            } catch (const InvalidParameterError& error) {
                EXPECT_STRNE(error.what(), "") << spec.id << " " << value;
            }
        }
    }
}

}  // namespace
}  // namespace quillmere
