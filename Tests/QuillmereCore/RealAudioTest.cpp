// The whole road from a folder of real samples to new ones, on the sample packages of Debian 12. A few steps
// are enough to show that every stage fits the next; QUILLMERE_REAL_AUDIO_STEPS trains in earnest, checks the
// model against the mean image and prints the figures.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Model/ClipPreparation.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/Trainer.h"
#include "QuillmereCore/Util/Text.h"
#include "Support/Processor.h"
#include "Support/TempFolder.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using testing::TempFolder;

const fs::path tonalAndPercussive = "/usr/share/sonic-pi/samples";
const fs::path drumkits = "/usr/share/hydrogen/data/drumkits";

struct RealCorpus {
    friend void PrintTo(const RealCorpus& corpus, std::ostream* out) { *out << corpus.name; }

    const char* name;
    AnalysisProfile profile;  // that the automatic choice must find
    std::vector<fs::path> folders;
    std::vector<std::string> prefixes;  // of the file names that belong to it
    std::int64_t fewSteps;
    std::vector<int> sampleRates;  // all that occur

    [[nodiscard]] bool holds(const fs::path& file) const {
        const std::string name_ = Text::utf8(file.filename());
        return Corpus::isSupported(file) && std::ranges::any_of(prefixes, [&](const std::string& prefix) {
                   return name_.starts_with(prefix);
               });
    }

    // Copies the files into folder; equal names of two kits are kept apart by subfolders.
    void collect(const fs::path& folder) const {
        for (const fs::path& source : folders) {
            const fs::path target = folder / source.filename();
            fs::create_directories(target);
            for (const auto& entry : fs::directory_iterator(source)) {
                if (holds(entry.path())) fs::copy_file(entry.path(), target / entry.path().filename());
            }
        }
    }
};

const RealCorpus percussive{"Percussive",
                            AnalysisProfile::percussive,
                            {tonalAndPercussive},
                            {"drum_", "bd_", "sn_", "perc_", "elec_"},
                            15,
                            {44100}};
const RealCorpus tonal{"Tonal", AnalysisProfile::tonal, {tonalAndPercussive}, {"ambi_", "bass_", "guit_"}, 4,
                       {44100}};
// WAV at two rates, AIFF and FLAC together.
const RealCorpus mixed{"Mixed",
                       AnalysisProfile::percussive,
                       {drumkits / "Audiophob", drumkits / "BJA_Pacific", drumkits / "rumpf_kit_z01_h2"},
                       {""},
                       10,
                       {22050, 44100, 48000}};

// The images that the model of a configuration sees.
class ClipImages {
public:
    ClipImages(const CorpusSummary& corpus, const ModelConfig& config)
        : extractor_(config), stft_(extractor_.makeSTFT()) {
        for (const CorpusFile& file : corpus.files) {
            const auto clip = ClipPreparation::decode(file, static_cast<int>(config.sampleRate));
            if (clip) images_.push_back(ClipPreparation::prepare(*clip, config, extractor_, stft_).image);
        }
    }

    // Mean squared error of taking the mean of all images for each: what a model that knows only the
    // corpus as a whole would reach.
    [[nodiscard]] double meanImageError() const {
        std::vector<double> mean(images_.front().size());
        for (const auto& image : images_) {
            for (std::size_t i = 0; i < mean.size(); ++i)
                mean[i] += static_cast<double>(image[i]) / static_cast<double>(images_.size());
        }
        double sum = 0;
        for (const auto& image : images_) {
            for (std::size_t i = 0; i < mean.size(); ++i)
                sum += (image[i] - mean[i]) * (image[i] - mean[i]);
        }
        return sum / static_cast<double>(images_.size() * mean.size());
    }

    // Root mean squared level difference in dB between samples and the clip most like them.
    [[nodiscard]] double distanceToNearest(const std::vector<float>& samples) {
        const std::vector<float> image = extractor_.features(samples, stft_);
        double nearest = std::numeric_limits<double>::infinity();
        for (const auto& other : images_) {
            double sum = 0;
            for (std::size_t i = 0; i < image.size(); ++i) {
                const double difference = static_cast<double>(image[i]) - static_cast<double>(other[i]);
                sum += difference * difference;
            }
            nearest = std::min(nearest, sum);
        }
        constexpr double dBPerUnit = 50;
        return dBPerUnit * std::sqrt(nearest / static_cast<double>(image.size()));
    }

private:
    FeatureExtractor extractor_;
    STFT stft_;
    std::vector<std::vector<float>> images_;
};

double meanDistance(SampleGenerator& generator, ClipImages& clips, const char* preset) {
    constexpr std::uint64_t variations = 16;
    double sum = 0;
    for (std::uint64_t i = 0; i < variations; ++i) {
        const auto seed = SampleGenerator::variationSeed(1, i);
        sum += clips.distanceToNearest(generator.audition(Preset::named(preset)->aesthetics, seed));
    }
    return sum / static_cast<double>(variations);
}

// What a model trained in earnest must show; too few steps show neither.
void expectLikeness(const ModelBundle& bundle, const CorpusSummary& corpus, SampleGenerator& generator) {
    ClipImages clips(corpus, bundle.config);
    const double meanImage = clips.meanImageError();
    const auto error = static_cast<double>(bundle.metadata.finalReconstructionError);
    const double faithful = meanDistance(generator, clips, "Faithful");
    const double explore = meanDistance(generator, clips, "Explore");
    const double extreme = meanDistance(generator, clips, "Extreme");
    std::printf(
        "%zu files, %lld steps, %lld x %lld: reconstruction error %.5f, of the mean image %.5f; distance to "
        "the "
        "nearest clip in dB: Faithful %.2f, Explore %.2f, Extreme %.2f\n",
        corpus.files.size(), static_cast<long long>(bundle.metadata.steps),
        static_cast<long long>(bundle.config.nMels), static_cast<long long>(bundle.config.frames), error,
        meanImage, faithful, explore, extreme);
    EXPECT_LT(error, 0.5 * meanImage);
    EXPECT_LT(faithful, explore);
    EXPECT_LT(explore, extreme);
}

class RealAudio : public ::testing::TestWithParam<RealCorpus> {};

TEST_P(RealAudio, IsLearnedFromEndToEnd) {
    const RealCorpus& real = GetParam();
    const TempFolder folder;
    real.collect(folder.path());
    const CorpusSummary corpus = Corpus::scan(folder.path());
    ASSERT_FALSE(corpus.files.empty()) << "install the packages sonic-pi-samples and hydrogen-drumkits";
    EXPECT_EQ(corpus.unreadable, 0);
    for (const int rate : real.sampleRates)
        EXPECT_TRUE(corpus.sampleRates.contains(rate)) << rate << " Hz";

    const char* const steps = std::getenv("QUILLMERE_REAL_AUDIO_STEPS");
    TrainingOptions options;
    options.steps = steps ? Text::parseInteger(steps).value_or(0) : real.fewSteps;
    ASSERT_GE(options.steps, 1);
    float firstLoss = 0;
    const ModelBundle bundle = ModelTrainer::train(
        corpus, options,
        [&](const TrainingProgress& progress) {
            if (progress.step == 1) firstLoss = progress.loss;
        },
        {}, testing::processor());

    EXPECT_EQ(bundle.config.profile, real.profile);
    EXPECT_EQ(bundle.latents.size(), corpus.files.size());
    EXPECT_LT(bundle.metadata.finalLoss, firstLoss);

    SampleGenerator generator(bundle, testing::processor());
    if (steps) {
        expectLikeness(bundle, corpus, generator);
    } else {
        EXPECT_FALSE(generator.audition(Aesthetics(), 1).empty());
    }
}

INSTANTIATE_TEST_SUITE_P(Corpora, RealAudio, ::testing::Values(percussive, tonal, mixed),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace quillmere
