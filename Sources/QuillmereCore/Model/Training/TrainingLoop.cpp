#include "QuillmereCore/Model/Training/TrainingLoop.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "QuillmereCore/Model/Training/BatchSource.h"
#include "QuillmereCore/Model/Training/Schedule.h"
#include "QuillmereCore/Model/Training/TrainingError.h"
#include "QuillmereCore/Model/Training/TrainingStart.h"
#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::ModelTrainer {
namespace {

std::vector<std::vector<float>> startWeights(const ModelConfig& config, const TrainingOptions& options,
                                             network::Backend& backend) {
    return options.start ? options.start->weightsFor(config, backend)
                         : VAEArchitecture::initialWeights(config, options.seed);
}

Glimpse glimpseOf(const ModelConfig& config, std::span<const std::vector<float>> images, std::int64_t step,
                  const VAETrainingGraph& graph) {
    Glimpse glimpse{.config = config, .step = step, .weights = graph.currentWeights(), .images = {}};
    const std::size_t count = std::min(images.size(), Glimpse::mostImages);
    for (std::size_t i = 0; i < count; ++i)
        glimpse.images.push_back(images[i * images.size() / count]);
    return glimpse;
}

// The steps: a network with its weights, their number and final loss, nothing encoded yet.
TrainedNetwork optimise(const ModelConfig& config, std::span<const std::vector<float>> images,
                        const TrainingOptions& options, const ProgressCallback& progress,
                        const std::stop_token& stop, network::Backend& backend,
                        const std::function<void(const network::StepResult&)>& onStep,
                        const TrainingHooks& hooks) {
    VAETrainingGraph graph(config, static_cast<int>(options.batchSize),
                           startWeights(config, options, backend), backend);
    BatchSource source(config, images, options.batchSize, options.seed);
    const auto batch = static_cast<std::size_t>(options.batchSize);
    std::vector<float> x(batch * images.front().size());
    std::vector<float> eps(batch * static_cast<std::size_t>(config.latentDim));
    SmoothedLosses smoothed;
    TrainedNetwork trained;
    const auto start = std::chrono::steady_clock::now();
    throwIfCancelled(stop);

    const std::int64_t T = options.steps;
    for (std::int64_t t = 1; t <= T; ++t) {
        source.next(x, eps);
        const Schedule now = schedule(t, T, options.learningRate, options.klWeight);
        const float klWeight = options.hasFullKLWeight ? options.klWeight : now.klWeight;
        const network::StepResult result = graph.step(x, eps, now.learningRate, klWeight);
        if (onStep) onStep(result);
        if (!std::isfinite(result.loss)) throw TrainingError(TrainingError::Kind::diverged);
        smoothed.add(result);
        if (progress && isReported(t, T)) {
            const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
            progress(stepDone(t, T, smoothed, elapsed.count()));
        }
        trained.steps = t;
        if (t == T) break;
        throwIfCancelled(stop);
        if (hooks.enough.stop_requested()) break;
        if (hooks.wantsGlimpse && hooks.wantsGlimpse()) hooks.glimpsed(glimpseOf(config, images, t, graph));
    }

    if (progress) progress(encodingStarted(trained.steps, T, smoothed.loss.value()));
    trained.weights = graph.currentWeights();
    trained.finalLoss = smoothed.loss.value();
    return trained;
}

bool isFinite(std::span<const float> values) {
    return std::ranges::all_of(values, [](float value) { return std::isfinite(value); });
}

// The last update follows the last loss, which tells nothing of it.
bool isFinite(const TrainedNetwork& trained) {
    const auto each = [](const auto& arrays) {
        return std::ranges::all_of(arrays, [](const auto& array) { return isFinite(array); });
    };
    return std::isfinite(trained.finalLoss) && std::isfinite(trained.finalReconstructionError) &&
           each(trained.weights) && each(trained.latents);
}

double meanSquaredDifference(std::span<const float> a, std::span<const float> b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double difference = static_cast<double>(a[i]) - static_cast<double>(b[i]);
        sum += difference * difference;
    }
    return sum / static_cast<double>(a.size());
}

// Mean over the clips of the plain squared error per pixel. Decodes batch by batch, so that the images of a
// large corpus are never all there twice.
float reconstructionError(VAEInference& inference, std::span<const std::vector<float>> latents,
                          std::span<const std::vector<float>> images) {
    double sum = 0;
    for (std::size_t first = 0; first < images.size(); first += VAEInference::batch) {
        const std::size_t count = std::min<std::size_t>(VAEInference::batch, images.size() - first);
        const std::vector<std::vector<float>> decoded = inference.decode(latents.subspan(first, count));
        for (std::size_t i = 0; i < count; ++i)
            sum += meanSquaredDifference(decoded[i], images[first + i]);
    }
    return static_cast<float>(sum / static_cast<double>(images.size()));
}

// What is known of the images once the weights are.
void encodeImages(const ModelConfig& config, std::span<const std::vector<float>> images,
                  network::Backend& backend, TrainedNetwork& network) {
    VAEInference inference(config, network.weights, backend);
    network.latents = inference.encode(images);
    network.finalReconstructionError = reconstructionError(inference, network.latents, images);
}

}  // namespace

TrainedNetwork trainOnImages(const ModelConfig& config, std::span<const std::vector<float>> images,
                             const TrainingOptions& options, const ProgressCallback& progress,
                             const std::stop_token& stop, network::Backend& backend,
                             const std::function<void(const network::StepResult&)>& onStep,
                             const TrainingHooks& hooks) {
    require(options.steps >= 1, "training needs at least one step");
    require(!images.empty(), "training needs at least one image");
    TrainedNetwork trained = optimise(config, images, options, progress, stop, backend, onStep, hooks);
    encodeImages(config, images, backend, trained);
    if (!isFinite(trained)) throw TrainingError(TrainingError::Kind::diverged);
    return trained;
}

TrainedNetwork startOnImages(const ModelConfig& config, std::span<const std::vector<float>> images,
                             const TrainingOptions& options, network::Backend& backend) {
    require(options.start != nullptr, "random weights are nothing to listen to");
    require(!images.empty(), "a network needs at least one image");
    TrainedNetwork untrained;
    untrained.weights = startWeights(config, options, backend);
    encodeImages(config, images, backend, untrained);
    return untrained;
}

}  // namespace quillmere::ModelTrainer
