#include "QuillmereCore/Model/Trainer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "QuillmereCore/Model/ClipPreparation.h"
#include "QuillmereCore/Model/Training/ClipReading.h"
#include "QuillmereCore/Model/Training/TrainingLoop.h"
#include "QuillmereCore/Model/Training/TrainingStart.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::ModelTrainer {
namespace {

void report(const ProgressCallback& progress, const TrainingProgress& record) {
    if (progress) progress(record);
}

// A corpus as the network sees it.
struct PreparedCorpus {
    ModelConfig config;
    std::vector<std::string> names;
    std::vector<std::vector<float>> images;  // each [nMels][frames]
};

// Throws where samples of that length cannot be learned, whichever of the profiles is taken.
void requireLength(double seconds, std::int64_t sampleRate, std::span<const AnalysisProfile> profiles) {
    double longest = 0;
    for (const AnalysisProfile profile : profiles)
        longest = std::max(longest, ModelConfig::longestSeconds(sampleRate, profile));
    if (seconds <= longest) return;
    throw Failure(
        "At {0} Hz {1} s of a sample can be learned, not {2} s. Choose a shorter length, or convert the "
        "samples to a lower sample rate.",
        sampleRate, Text::fixed(std::floor(longest * 10) / 10, 1), Text::fixed(seconds, 1));
}

// What can be said before the files are read.
void requireLength(const CorpusSummary& corpus, const TrainingOptions& options) {
    if (!options.clipSeconds) return;
    constexpr std::array<AnalysisProfile, 2> either{AnalysisProfile::percussive, AnalysisProfile::tonal};
    const std::array<AnalysisProfile, 1> given{options.profile};
    const bool isOpen = options.profile == AnalysisProfile::automatic;
    requireLength(*options.clipSeconds, corpus.dominantSampleRate(),
                  isOpen ? std::span<const AnalysisProfile>(either) : given);
}

void requireModel(const ModelConfig& config, std::span<const std::string> names) {
    const std::array<AnalysisProfile, 1> profile{config.profile};
    requireLength(config.clipSeconds(), config.sampleRate, profile);
    if (const auto problem = problemWith(config))
        throw Failure("Training is not possible with these settings: {0}", *problem);
    if (const auto problem = ModelStore::problemWithNumber(names, config.latentDim)) throw Failure(*problem);
}

// The usable clips, and the files that they are of.
struct UsableClips {
    ClipNeeds needs;
    std::vector<ClipReading> readings;
    std::vector<CorpusFile> files;
};

UsableClips readUsable(const CorpusSummary& corpus, const TrainingOptions& options,
                       const ProgressCallback& progress, const std::stop_token& stop) {
    report(progress, readingStarted(static_cast<std::int64_t>(corpus.files.size())));
    UsableClips clips{.needs = needsOf(options, corpus.dominantSampleRate()), .readings = {}, .files = {}};
    clips.needs.keptTogether = ClipNeeds::ofAnyCorpus;
    std::vector<ClipReading> all = readClips(
        corpus.files, clips.needs,
        [&](std::int64_t done, std::int64_t files) { report(progress, fileRead(done, files)); }, stop);
    for (std::size_t i = 0; i < all.size(); ++i) {
        if (!all[i].isUsable()) continue;
        clips.readings.push_back(std::move(all[i]));
        clips.files.push_back(corpus.files[i]);
    }
    if (clips.readings.empty()) throw TrainingError(TrainingError::Kind::noUsableAudio);
    return clips;
}

// The samples of each clip go when it has become an image.
std::vector<std::vector<float>> imagesOf(UsableClips clips, const ModelConfig& config,
                                         const std::stop_token& stop) {
    const FeatureExtractor extractor(config);
    std::vector<std::vector<float>> images(clips.files.size());
    WorkerTeam team;
    const ClipNeeds needs = clips.needs.sharedBy(team.threads());
    std::vector<std::optional<STFT>> transforms(static_cast<std::size_t>(team.threads()));
    team.run(images.size(), [&](std::size_t i, int worker) {
        if (stop.stop_requested()) return;
        std::optional<STFT>& stft = transforms[static_cast<std::size_t>(worker)];
        if (!stft) stft = extractor.makeSTFT();
        const DecodedClip clip = clipOf(std::move(clips.readings[i]), clips.files[i], needs, stop);
        images[i] = ClipPreparation::prepare(clip, config, extractor, *stft).image;
    });
    throwIfCancelled(stop);
    return images;
}

PreparedCorpus prepareCorpus(const CorpusSummary& corpus, const TrainingOptions& options,
                             const ProgressCallback& progress, const std::stop_token& stop) {
    UsableClips clips = readUsable(corpus, options, progress, stop);
    PreparedCorpus prepared;
    prepared.config = chooseConfig(clips.readings, corpus.dominantSampleRate(), options);
    for (const ClipReading& clip : clips.readings)
        prepared.names.push_back(clip.clip.name);
    requireModel(prepared.config, prepared.names);
    if (options.start) {
        if (const auto problem = options.start->problemWith(prepared.config)) throw Failure(*problem);
    }
    report(progress, analysisStarted(prepared.config.profile, prepared.config.clipSeconds()));
    prepared.images = imagesOf(std::move(clips), prepared.config, stop);
    return prepared;
}

ModelMetadata describe(const CorpusSummary& corpus, const TrainingOptions& options,
                       const TrainedNetwork& trained, PreparedCorpus& prepared) {
    const auto now = std::chrono::system_clock::now();
    const bool endedEarly = trained.steps > 0 && trained.steps < options.steps;
    return {.corpusName = ModelStore::corpusName(corpus.directory),
            .corpusPath = Text::utf8(ModelStore::corpusPath(corpus.directory)),
            .fingerprint = corpus.fingerprint(),
            .trainedAt = std::chrono::floor<std::chrono::seconds>(now),
            .steps = trained.steps,
            .finalLoss = trained.finalLoss,
            .finalReconstructionError = trained.finalReconstructionError,
            .clipNames = std::move(prepared.names),
            .analysis = std::string(rawValue(prepared.config.profile)),
            .start = options.start ? std::optional(options.start->origin()) : std::nullopt,
            .plannedSteps = endedEarly ? std::optional(options.steps) : std::nullopt};
}

// From prepared images to a network: the part in which training and listening before it differ.
using Learning = std::function<TrainedNetwork(const PreparedCorpus&)>;

ModelBundle makeModel(const CorpusSummary& corpus, const TrainingOptions& options,
                      const ProgressCallback& progress, const std::stop_token& stop,
                      const Learning& learning) {
    if (corpus.files.empty()) throw TrainingError(TrainingError::Kind::noUsableAudio);
    requireLength(corpus, options);
    PreparedCorpus prepared = prepareCorpus(corpus, options, progress, stop);
    TrainedNetwork trained = learning(prepared);
    ModelMetadata metadata = describe(corpus, options, trained, prepared);
    return {.config = prepared.config,
            .metadata = std::move(metadata),
            .weights = std::move(trained.weights),
            .latents = std::move(trained.latents)};
}

}  // namespace

ModelBundle train(const CorpusSummary& corpus, const TrainingOptions& options,
                  const ProgressCallback& progress, const std::stop_token& stop, network::Backend& backend,
                  const TrainingHooks& hooks) {
    return makeModel(corpus, options, progress, stop, [&](const PreparedCorpus& prepared) {
        return trainOnImages(prepared.config, prepared.images, options, progress, stop, backend, {}, hooks);
    });
}

ModelBundle beforeLearning(const CorpusSummary& corpus, const TrainingOptions& options,
                           const ProgressCallback& progress, const std::stop_token& stop,
                           network::Backend& backend) {
    return makeModel(corpus, options, progress, stop, [&](const PreparedCorpus& prepared) {
        return startOnImages(prepared.config, prepared.images, options, backend);
    });
}

}  // namespace quillmere::ModelTrainer
