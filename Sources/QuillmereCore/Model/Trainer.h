#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Model/ClipPreparation.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/RNG.h"

namespace quillmere {

struct TrainingOptions {
    std::int64_t steps = 2500;  // at least 1
    std::int64_t batchSize = 16;
    float learningRate = 0.001F;  // peak step size
    float klWeight = 0.002F;      // final weight
    std::int64_t latentDim = 64;
    std::optional<double> clipSeconds;  // absent: chosen from the corpus
    AnalysisProfile profile = AnalysisProfile::automatic;
    std::uint64_t seed = 1;
};

struct TrainingProgress {
    enum class Phase { analysing, training, finishing };
    Phase phase = Phase::analysing;
    std::string message;
    std::int64_t step = 0;
    std::int64_t totalSteps = 0;
    float loss = 0;  // smoothed, as the next two
    float reconstruction = 0;
    float kl = 0;
    double fraction = 0;                     // of the whole run, 0 ... 1
    std::optional<double> secondsRemaining;  // in the training phase only
};

[[nodiscard]] std::string_view rawValue(TrainingProgress::Phase phase);

class TrainingError : public Failure {
public:
    enum class Kind { noUsableAudio, diverged };
    explicit TrainingError(Kind kind);
    [[nodiscard]] Kind kind() const noexcept { return kind_; }

private:
    Kind kind_;
};

namespace ModelTrainer {

using ProgressCallback = std::function<void(const TrainingProgress&)>;

// Decodes, analyses, trains and encodes a corpus. Writes no files.
//
// progress may be empty and may be called from worker threads, by one at a time; what it throws ends the run
// and reaches the caller. stop is asked before each file and clip and after each step but the last. Files
// that cannot be read and silent ones are left out without a message. Throws TrainingError,
// CancellationError, or a Failure when the options ask for a model that cannot be (problemWith). steps and
// batchSize below 1 and a clip length that is not finite stop the program. The same corpus, options and
// backend give the same bundle, trainedAt apart, for any number of threads.
[[nodiscard]] ModelBundle train(const CorpusSummary& corpus, const TrainingOptions& options,
                                const ProgressCallback& progress, const std::stop_token& stop,
                                network::Backend& backend);

// ---- The pieces of a run, for tests.

struct Schedule {
    float warm, decay, bias;  // factors of the learning rate
    float learningRate;       // handed to the step
    float klWeight;
};
// Step t of T, t from 1. The learning rate warms up over 100 steps, falls by half a cosine to 5 % and carries
// Adam's bias correction (Kingma and Ba, 2015), which the update leaves out; the KL weight grows over the
// first 30 % of the steps (as in Bowman et al., 2016). All in single precision.
[[nodiscard]] Schedule schedule(std::int64_t t, std::int64_t T, float learningRate, float klWeight);

// Uniform integer in [0, bound) by the multiply-high method with rejection (Lemire, 2019). bound > 0.
[[nodiscard]] std::uint64_t boundedInteger(SeededRNG& rng, std::uint64_t bound);

// Clip indices in shuffled order (Fisher and Yates): every clip once before any again.
class Deck {
public:
    explicit Deck(std::size_t clips);  // > 0
    std::size_t draw(SeededRNG& rng);

private:
    std::size_t clips_;
    std::vector<std::size_t> cards_;
};

// Largest time shift of the augmentation: 35 ms of frames.
[[nodiscard]] std::int64_t maxShift(const ModelConfig& config);

struct Augmentation {
    std::int64_t shift = 0;     // frames later
    std::int64_t melShift = 0;  // bands up
    float gain = 0;             // network units
};
[[nodiscard]] Augmentation drawAugmentation(const ModelConfig& config, SeededRNG& rng);
// Moves the content; what it uncovers becomes silence, and silence keeps its level. image, out:
// [nMels][frames], not overlapping.
void applyAugmentation(const Augmentation& augmentation, const ModelConfig& config,
                       std::span<const float> image, std::span<float> out);
// Both of the above.
[[nodiscard]] std::vector<float> augment(std::span<const float> image, const ModelConfig& config,
                                         SeededRNG& rng);

// Draws the inputs of successive steps: augmented clips and noise, from one generator derived from the seed
// of the run. The images belong to the caller and must outlive the source. next() allocates nothing.
class BatchSource {
public:
    BatchSource(const ModelConfig& config, std::span<const std::vector<float>> images, std::int64_t batchSize,
                std::uint64_t trainingSeed);
    // Overwrites x [batch][nMels][frames] and eps [batch][latentDim].
    void next(std::span<float> x, std::span<float> eps);
    // Clip indices of the last batch.
    [[nodiscard]] std::span<const std::size_t> indices() const { return indices_; }
    [[nodiscard]] const SeededRNG& rng() const { return rng_; }

private:
    ModelConfig config_;
    std::span<const std::vector<float>> images_;
    std::int64_t batchSize_;
    SeededRNG rng_;
    Deck deck_;
    std::vector<std::size_t> indices_;
};

// Exponential smoothing of the reported losses; the first value is taken as it is.
class Smoothing {
public:
    float add(float value);  // returns the smoothed value
    [[nodiscard]] float value() const { return value_; }

private:
    bool empty_ = true;
    float value_ = 0;
};

// Whether step t of T is reported.
[[nodiscard]] bool isReported(std::int64_t t, std::int64_t T);
[[nodiscard]] double trainingFraction(std::int64_t t, std::int64_t T);
[[nodiscard]] std::string analysingMessage(AnalysisProfile profile, double clipSeconds);

// Steps 11 to 15 of a run: the loop on prepared images, then latents and reconstruction error.
struct TrainedNetwork {
    std::vector<std::vector<float>> weights;
    std::vector<std::vector<float>> latents;
    float finalLoss = 0;
    float finalReconstructionError = 0;
};
// images: each [nMels][frames], at least one. progress and stop as in train, on the calling thread only;
// onStep (may be empty too) sees the raw scalars of each step.
[[nodiscard]] TrainedNetwork trainOnImages(
    const ModelConfig& config, std::span<const std::vector<float>> images, const TrainingOptions& options,
    const ProgressCallback& progress, const std::stop_token& stop, network::Backend& backend,
    const std::function<void(const network::StepResult&)>& onStep = {});

}  // namespace ModelTrainer
}  // namespace quillmere
