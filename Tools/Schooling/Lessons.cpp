#include "Schooling/Lessons.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

#include "QuillmereCore/Model/ClipPreparation.h"
#include "QuillmereCore/Model/HeadStart.h"
#include "QuillmereCore/Model/Training/TrainingLoop.h"
#include "QuillmereCore/Model/Training/TrainingOptions.h"
#include "QuillmereCore/Util/Parallel.h"
#include "QuillmereCore/Util/Text.h"
#include "Schooling/Sounds/Sounds.h"

namespace quillmere::schooling {
namespace {

ModelConfig configFor(AnalysisProfile profile, std::int64_t frames) {
    ModelConfig config = ModelConfig::forSeconds(sampleRate, 0.1, profile, HeadStart::latentDim);
    config.frames = frames;
    return config;
}

std::string described(const Lesson& lesson) {
    return std::to_string(lesson.sounds) + " sounds of " + std::to_string(lesson.frames) + " frames, " +
           std::to_string(lesson.steps) + " steps";
}

TaughtNetwork taught(const ModelConfig& config, const TrainingOptions& options,
                     std::span<const std::vector<float>> images, network::Backend& backend,
                     const Report& report) {
    const auto progress = [&](const TrainingProgress& now) {
        if (report && now.step % 500 == 0 && now.step > 0 && now.step < now.totalSteps)
            report("  step " + std::to_string(now.step) + ": " +
                   Text::fixed(static_cast<double>(now.reconstruction), 5));
    };
    auto trained = ModelTrainer::trainOnImages(config, images, options, progress, {}, backend);
    if (report) report("  error " + Text::fixed(static_cast<double>(trained.finalReconstructionError), 5));
    return {config, std::move(trained.weights)};
}

}  // namespace

std::vector<Lesson> lessonsFor(AnalysisProfile profile) {
    if (profile == AnalysisProfile::tonal) {
        return {{.frames = 32, .sounds = 24000, .steps = 10000},
                {.frames = 64, .sounds = 16000, .steps = 4000},
                {.frames = 192, .sounds = 8000, .steps = 1000, .learningRate = 0.0005F}};
    }
    return {{.frames = 64, .sounds = 24000, .steps = 12000},
            {.frames = 128, .sounds = 32000, .steps = 12000},
            {.frames = 384, .sounds = 12000, .steps = 2000, .learningRate = 0.0005F}};
}

std::vector<Lesson> shortened(std::vector<Lesson> lessons, double share) {
    const auto some = [share](std::int64_t count) {
        return std::max<std::int64_t>(1, static_cast<std::int64_t>(share * static_cast<double>(count)));
    };
    for (Lesson& lesson : lessons) {
        lesson.sounds = some(lesson.sounds);
        lesson.steps = some(lesson.steps);
    }
    return lessons;
}

std::vector<std::vector<float>> soundImages(const ModelConfig& config, std::uint64_t series,
                                            std::uint64_t first, std::int64_t count) {
    const FeatureExtractor extractor(config);
    std::vector<std::vector<float>> images(static_cast<std::size_t>(count));
    WorkerTeam team;
    std::vector<std::optional<STFT>> transforms(static_cast<std::size_t>(team.threads()));
    team.run(images.size(), [&](std::size_t i, int worker) {
        std::optional<STFT>& stft = transforms[static_cast<std::size_t>(worker)];
        if (!stft) stft = extractor.makeSTFT();
        auto samples =
            ClipPreparation::trimAndNormalise(makeSound(config.profile, series, first + i), sampleRate);
        const DecodedClip clip{.name = {}, .samples = std::move(samples).value_or(Samples(1))};
        images[i] = ClipPreparation::prepare(clip, config, extractor, *stft).image;
    });
    return images;
}

TaughtNetwork teach(AnalysisProfile profile, std::span<const Lesson> lessons, std::uint64_t series,
                    network::Backend& backend, const Report& report) {
    std::optional<TaughtNetwork> network;
    std::uint64_t firstSound = 0;
    for (const Lesson& lesson : lessons) {
        if (report) report(described(lesson));
        const ModelConfig config = configFor(profile, lesson.frames);
        const auto images = soundImages(config, series, firstSound, lesson.sounds);
        firstSound += static_cast<std::uint64_t>(lesson.sounds);
        TrainingOptions options;
        options.steps = lesson.steps;
        options.learningRate = lesson.learningRate;
        options.seed = series + firstSound;
        if (network)
            options.start = std::make_shared<const TrainingStart>(ModelStart{}, std::vector{*network});
        network = taught(config, options, images, backend, report);
    }
    return *std::move(network);
}

}  // namespace quillmere::schooling
