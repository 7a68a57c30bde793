#include "QuillmereCore/Model/Training/Continuation.h"

#include <memory>
#include <utility>

#include "QuillmereCore/Model/Trainer.h"
#include "QuillmereCore/Model/Training/Quality.h"
#include "QuillmereCore/Model/Training/TrainingStart.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere::ModelTrainer {
namespace {

// The length that gives the model's number of frames again, whichever way it is rounded.
double clipSecondsOf(const ModelConfig& config) {
    constexpr double half = 0.5;  // frame
    return (static_cast<double>(config.frames) - half) * static_cast<double>(config.hop) /
           static_cast<double>(config.sampleRate);
}

TrainingOptions optionsFor(const ModelBundle& model, const TrainingStretch& stretch) {
    return {.steps = stretch.steps,
            .batchSize = stretch.batchSize,
            .learningRate = stretch.learningRate,
            .klWeight = stretch.klWeight,
            .latentDim = model.config.latentDim,
            .clipSeconds = clipSecondsOf(model.config),
            .profile = model.config.profile,
            .seed = stretch.seed,
            .start = std::make_shared<const TrainingStart>(model),
            .hasFullKLWeight = true};
}

}  // namespace

TrainingStretch nextStretch(const ModelBundle& model, std::int64_t steps) {
    const TrainingOptions usual;
    return {.steps = steps,
            .batchSize = usual.batchSize,
            .learningRate = startLearningRate,
            .klWeight = usual.klWeight,
            .seed = usual.seed + static_cast<std::uint64_t>(model.metadata.steps)};
}

ModelBundle continueTraining(const ModelBundle& model, const CorpusSummary& corpus,
                             const TrainingStretch& stretch, const ProgressCallback& progress,
                             const std::stop_token& stop, network::Backend& backend) {
    if (model.metadata.fingerprint != corpus.fingerprint())
        throw Failure("{0} no longer holds what the model has learned.", corpus.directory);
    ModelBundle next = train(corpus, optionsFor(model, stretch), progress, stop, backend);
    require(next.config == model.config, "continueTraining: another configuration");
    next.metadata.start = model.metadata.start;
    next.metadata.steps = model.metadata.steps + stretch.steps;
    next.metadata.plannedSteps = model.metadata.plannedSteps;
    next.metadata.continued = model.metadata.continued;
    next.metadata.continued.push_back(stretch);
    return next;
}

}  // namespace quillmere::ModelTrainer
