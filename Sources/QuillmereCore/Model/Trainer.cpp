#include "QuillmereCore/Model/Trainer.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <mutex>
#include <numeric>
#include <utility>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/Parallel.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {

std::string_view rawValue(TrainingProgress::Phase phase) {
    switch (phase) {
        case TrainingProgress::Phase::analysing:
            return "analysing";
        case TrainingProgress::Phase::training:
            return "training";
        case TrainingProgress::Phase::finishing:
            return "finishing";
    }
    fatal("unknown training phase");
}

namespace {

const char* description(TrainingError::Kind kind) {
    switch (kind) {
        case TrainingError::Kind::noUsableAudio:
            return "No usable audio files were found in that folder.";
        case TrainingError::Kind::diverged:
            return "Training diverged (loss became NaN). Try again with a lower learning rate.";
    }
    fatal("unknown training error");
}

}  // namespace

TrainingError::TrainingError(Kind kind) : Failure(description(kind)), kind_(kind) {}

namespace ModelTrainer {
namespace {

constexpr float pi = 3.1415927F;
constexpr float silence = -1.0F;
// Keeps the batches' random numbers apart from those of the initial weights.
constexpr std::uint64_t batchSeedOffset = 0x5EED;
// The longest automatic clip.
constexpr double maxAutomaticSeconds = 4.0;

// ---- Callbacks

void report(const ProgressCallback& progress, const TrainingProgress& record) {
    if (progress) progress(record);
}

TrainingProgress analysing(std::string message, double fraction = 0) {
    TrainingProgress record;
    record.message = std::move(message);
    record.fraction = fraction;
    return record;
}

// ---- Reading the corpus

// A decoded clip with what the choice of the configuration needs to know of it.
struct MeasuredClip {
    DecodedClip clip;
    double effectiveSeconds = 0;
    double flatness = 0;
};

// No model for these options uses more of a clip than this.
std::int64_t longestClip(int sampleRate, const TrainingOptions& options) {
    const auto samples = [&](AnalysisProfile profile) {
        const double seconds = options.clipSeconds.value_or(maxAutomaticSeconds);
        return ModelConfig::forSeconds(sampleRate, seconds, profile, options.latentDim).clipSamples();
    };
    return std::max(samples(AnalysisProfile::percussive), samples(AnalysisProfile::tonal));
}

// Nothing for a silent or unreadable file.
std::optional<MeasuredClip> readClip(const CorpusFile& file, int sampleRate, const TrainingOptions& options) {
    std::optional<DecodedClip> clip;
    try {
        clip = ClipPreparation::decode(file, sampleRate);
    } catch (const AudioIOError&) {
        return std::nullopt;
    }
    if (!clip) return std::nullopt;

    const bool automatic = options.profile == AnalysisProfile::automatic;
    const double effectiveSeconds = clip->effectiveSeconds(sampleRate);
    const double flatness = automatic ? clip->flatness(sampleRate) : 0;
    // One sample more than any model uses still tells that the clip is cut. The rest of a long recording
    // would lie in memory until all files are read.
    const auto kept = static_cast<std::size_t>(longestClip(sampleRate, options)) + 1;
    if (clip->samples.size() > kept) {
        clip->samples.resize(kept);
        clip->samples.shrink_to_fit();
    }
    return MeasuredClip{std::move(*clip), effectiveSeconds, flatness};
}

template <typename Value>
std::vector<Value> filledSlots(std::vector<std::optional<Value>> slots) {
    std::vector<Value> values;
    for (std::optional<Value>& slot : slots) {
        if (slot) values.push_back(std::move(*slot));
    }
    return values;
}

std::vector<MeasuredClip> readClips(const CorpusSummary& corpus, const TrainingOptions& options,
                                    const ProgressCallback& progress, const std::stop_token& stop) {
    const int sampleRate = corpus.dominantSampleRate();
    const std::size_t count = corpus.files.size();
    const std::string total = std::to_string(count);
    report(progress, analysing("Reading " + total + " samples…"));

    std::vector<std::optional<MeasuredClip>> slots(count);
    std::mutex mutex;  // guards done and the calls of progress
    std::size_t done = 0;
    WorkerTeam().run(count, [&](std::size_t i, int) {
        if (stop.stop_requested()) return;
        slots[i] = readClip(corpus.files[i], sampleRate, options);
        const std::lock_guard lock(mutex);
        ++done;
        report(progress, analysing("Reading samples… " + std::to_string(done) + "/" + total,
                                   0.06 * static_cast<double>(done) / static_cast<double>(count)));
    });
    throwIfCancelled(stop);

    std::vector<MeasuredClip> clips = filledSlots(std::move(slots));
    if (clips.empty()) throw TrainingError(TrainingError::Kind::noUsableAudio);
    return clips;
}

// ---- Choosing the configuration

std::vector<double> collect(std::span<const MeasuredClip> clips, double MeasuredClip::*measure) {
    std::vector<double> values;
    values.reserve(clips.size());
    for (const MeasuredClip& clip : clips)
        values.push_back(clip.*measure);
    return values;
}

ModelConfig chooseConfig(std::span<const MeasuredClip> clips, int sampleRate,
                         const TrainingOptions& options) {
    const std::vector<double> lengths = collect(clips, &MeasuredClip::effectiveSeconds);
    const AnalysisProfile profile =
        options.profile != AnalysisProfile::automatic
            ? options.profile
            : ClipPreparation::resolveProfile(lengths, collect(clips, &MeasuredClip::flatness));
    const double clipSeconds =
        options.clipSeconds ? *options.clipSeconds : ClipPreparation::suggestClipSeconds(lengths);
    const auto config = ModelConfig::forSeconds(sampleRate, clipSeconds, profile, options.latentDim);
    if (const auto problem = problemWith(config))
        throw Failure("Training is not possible with these settings: " + *problem);
    return config;
}

// ---- Images

std::vector<PreparedClip> prepareClips(std::span<const MeasuredClip> clips, const ModelConfig& config,
                                       const std::stop_token& stop) {
    const FeatureExtractor extractor(config);
    std::vector<std::optional<PreparedClip>> slots(clips.size());
    WorkerTeam team;
    std::vector<std::optional<STFT>> transforms(static_cast<std::size_t>(team.threads()));
    team.run(clips.size(), [&](std::size_t i, int worker) {
        if (stop.stop_requested()) return;
        std::optional<STFT>& stft = transforms[static_cast<std::size_t>(worker)];
        if (!stft) stft = extractor.makeSTFT();
        slots[i] = ClipPreparation::prepare(clips[i].clip, config, extractor, *stft);
    });
    throwIfCancelled(stop);
    return filledSlots(std::move(slots));
}

// A corpus as the network sees it.
struct PreparedCorpus {
    ModelConfig config;
    std::vector<std::string> names;
    std::vector<std::vector<float>> images;
};

PreparedCorpus prepareCorpus(const CorpusSummary& corpus, const TrainingOptions& options,
                             const ProgressCallback& progress, const std::stop_token& stop) {
    const std::vector<MeasuredClip> clips = readClips(corpus, options, progress, stop);
    PreparedCorpus prepared;
    prepared.config = chooseConfig(clips, corpus.dominantSampleRate(), options);
    report(progress, analysing(analysingMessage(prepared.config.profile, prepared.config.clipSeconds())));
    for (PreparedClip& clip : prepareClips(clips, prepared.config, stop)) {
        prepared.names.push_back(std::move(clip.name));
        prepared.images.push_back(std::move(clip.image));
    }
    return prepared;
}

// ---- The loop

struct SmoothedLosses {
    Smoothing loss, mse, kl;

    void add(const network::StepResult& result) {
        loss.add(result.loss);
        mse.add(result.mse);
        kl.add(result.kl);
    }
};

TrainingProgress trainingProgress(std::int64_t t, std::int64_t T, const SmoothedLosses& smoothed,
                                  double elapsedSeconds) {
    return {.phase = TrainingProgress::Phase::training,
            .message = "Training model…",
            .step = t,
            .totalSteps = T,
            .loss = smoothed.loss.value(),
            .reconstruction = smoothed.mse.value(),
            .kl = smoothed.kl.value(),
            .fraction = trainingFraction(t, T),
            .secondsRemaining = static_cast<double>(T - t) * elapsedSeconds / static_cast<double>(t)};
}

TrainingProgress finishingProgress(std::int64_t T, float loss) {
    return {.phase = TrainingProgress::Phase::finishing,
            .message = "Encoding corpus…",
            .step = T,
            .totalSteps = T,
            .loss = loss,
            .fraction = 0.96,
            .secondsRemaining = std::nullopt};
}

// The loop itself: a network with its weights and final loss, nothing encoded yet.
TrainedNetwork optimise(const ModelConfig& config, std::span<const std::vector<float>> images,
                        const TrainingOptions& options, const ProgressCallback& progress,
                        const std::stop_token& stop,
                        const std::function<void(const network::StepResult&)>& onStep,
                        network::Backend& backend) {
    VAETrainingGraph graph(config, static_cast<int>(options.batchSize),
                           VAEArchitecture::initialWeights(config, options.seed), backend);
    BatchSource source(config, images, options.batchSize, options.seed);
    const auto batch = static_cast<std::size_t>(options.batchSize);
    std::vector<float> x(batch * images.front().size());
    std::vector<float> eps(batch * static_cast<std::size_t>(config.latentDim));
    SmoothedLosses smoothed;
    const auto start = std::chrono::steady_clock::now();
    throwIfCancelled(stop);

    const std::int64_t T = options.steps;
    for (std::int64_t t = 1; t <= T; ++t) {
        source.next(x, eps);
        const Schedule now = schedule(t, T, options.learningRate, options.klWeight);
        const network::StepResult result = graph.step(x, eps, now.learningRate, now.klWeight);
        if (onStep) onStep(result);
        if (!std::isfinite(result.loss)) throw TrainingError(TrainingError::Kind::diverged);
        smoothed.add(result);
        if (isReported(t, T)) {
            const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
            report(progress, trainingProgress(t, T, smoothed, elapsed.count()));
        }
        if (t < T) throwIfCancelled(stop);
    }

    report(progress, finishingProgress(T, smoothed.loss.value()));
    TrainedNetwork trained;
    trained.weights = graph.currentWeights();
    trained.finalLoss = smoothed.loss.value();
    return trained;
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

ModelMetadata describe(const CorpusSummary& corpus, const TrainingOptions& options,
                       const TrainedNetwork& trained, PreparedCorpus& prepared) {
    const auto now = std::chrono::system_clock::now();
    return {.corpusName = ModelStore::corpusName(corpus.directory),
            .corpusPath = Text::utf8(ModelStore::corpusPath(corpus.directory)),
            .fingerprint = corpus.fingerprint(),
            .trainedAt = std::chrono::floor<std::chrono::seconds>(now),
            .steps = options.steps,
            .finalLoss = trained.finalLoss,
            .finalReconstructionError = trained.finalReconstructionError,
            .clipNames = std::move(prepared.names),
            .analysis = std::string(rawValue(prepared.config.profile))};
}

}  // namespace

Schedule schedule(std::int64_t t, std::int64_t T, float learningRate, float klWeight) {
    const auto step = static_cast<float>(t);
    const auto steps = static_cast<float>(T);
    Schedule result{};
    result.warm = std::min(step / 100.0F, 1.0F);
    result.decay = 0.05F + 0.475F * (1.0F + std::cos(pi * step / steps));
    result.bias = std::sqrt(1.0F - std::pow(0.999F, step)) / (1.0F - std::pow(0.9F, step));
    result.learningRate = learningRate * result.warm * result.decay * result.bias;
    result.klWeight = klWeight * std::min(step / (0.3F * steps), 1.0F);
    return result;
}

std::uint64_t boundedInteger(SeededRNG& rng, std::uint64_t bound) {
    __extension__ using Wide = unsigned __int128;
    require(bound > 0, "a random integer needs a positive bound");
    Wide product = static_cast<Wide>(rng.next()) * bound;
    if (static_cast<std::uint64_t>(product) < bound) {
        const std::uint64_t threshold = (0 - bound) % bound;  // 2^64 mod bound
        while (static_cast<std::uint64_t>(product) < threshold)
            product = static_cast<Wide>(rng.next()) * bound;
    }
    return static_cast<std::uint64_t>(product >> 64);
}

Deck::Deck(std::size_t clips) : clips_(clips) {
    require(clips > 0, "a deck needs at least one clip");
    cards_.reserve(clips);
}

std::size_t Deck::draw(SeededRNG& rng) {
    if (cards_.empty()) {
        cards_.resize(clips_);
        std::iota(cards_.begin(), cards_.end(), std::size_t{0});
        for (std::size_t i = 0; clips_ - i > 1; ++i)
            std::swap(cards_[i], cards_[i + boundedInteger(rng, clips_ - i)]);
    }
    const std::size_t card = cards_.back();
    cards_.pop_back();
    return card;
}

std::int64_t maxShift(const ModelConfig& config) {
    return static_cast<std::int64_t>(static_cast<double>(config.sampleRate) * 0.035 /
                                     static_cast<double>(config.hop));
}

Augmentation drawAugmentation(const ModelConfig& config, SeededRNG& rng) {
    Augmentation result;
    if (0.7F > rng.uniform()) result.shift = rng.intBelow(std::max<std::int64_t>(maxShift(config), 1) + 1);
    if (config.profile == AnalysisProfile::percussive && 0.5F > rng.uniform())
        result.melShift = rng.intBelow(3) - 1;
    result.gain = rng.signedUniform() * 6.0F / 50.0F;  // +-6 dB
    return result;
}

void applyAugmentation(const Augmentation& augmentation, const ModelConfig& config,
                       std::span<const float> image, std::span<float> out) {
    const auto& [shift, melShift, gain] = augmentation;
    std::ranges::fill(out, silence);
    for (std::int64_t row = 0; row < config.nMels; ++row) {
        const std::int64_t source = row - melShift;
        if (source < 0 || source >= config.nMels) continue;
        const float* const from = image.data() + source * config.frames;
        float* const to = out.data() + row * config.frames;
        for (std::int64_t column = shift; column < config.frames; ++column) {
            const float value = from[column - shift];
            to[column] = value > -0.99F ? std::max(value + gain, silence) : value;
        }
    }
}

std::vector<float> augment(std::span<const float> image, const ModelConfig& config, SeededRNG& rng) {
    std::vector<float> out(image.size());
    applyAugmentation(drawAugmentation(config, rng), config, image, out);
    return out;
}

BatchSource::BatchSource(const ModelConfig& config, std::span<const std::vector<float>> images,
                         std::int64_t batchSize, std::uint64_t trainingSeed)
    : config_(config),
      images_(images),
      batchSize_(batchSize),
      rng_(trainingSeed + batchSeedOffset),
      deck_(images.size()) {
    require(batchSize >= 1, "a batch needs at least one image");
    indices_.reserve(static_cast<std::size_t>(batchSize));
}

void BatchSource::next(std::span<float> x, std::span<float> eps) {
    const std::size_t pixels = images_.front().size();
    const auto batch = static_cast<std::size_t>(batchSize_);
    require(x.size() == batch * pixels && eps.size() == batch * static_cast<std::size_t>(config_.latentDim),
            "the buffers of a batch have the wrong size");
    indices_.clear();
    for (std::size_t b = 0; b < batch; ++b) {
        indices_.push_back(deck_.draw(rng_));
        applyAugmentation(drawAugmentation(config_, rng_), config_, images_[indices_.back()],
                          x.subspan(b * pixels, pixels));
    }
    for (float& value : eps)
        value = rng_.gaussian();
}

float Smoothing::add(float value) {
    const float weight = empty_ ? 1.0F : 0.05F;
    empty_ = false;
    value_ += weight * (value - value_);
    return value_;
}

bool isReported(std::int64_t t, std::int64_t T) {
    return t == 1 || t % 10 == 0 || t == T;
}

double trainingFraction(std::int64_t t, std::int64_t T) {
    return 0.1 + 0.85 * static_cast<double>(t) / static_cast<double>(T);
}

std::string analysingMessage(AnalysisProfile profile, double clipSeconds) {
    return "Analysing (" + std::string(rawValue(profile)) + ", " + Text::fixed(clipSeconds, 1) +
           " s per sample)…";
}

TrainedNetwork trainOnImages(const ModelConfig& config, std::span<const std::vector<float>> images,
                             const TrainingOptions& options, const ProgressCallback& progress,
                             const std::stop_token& stop, network::Backend& backend,
                             const std::function<void(const network::StepResult&)>& onStep) {
    require(options.steps >= 1, "training needs at least one step");
    require(!images.empty(), "training needs at least one image");
    TrainedNetwork trained = optimise(config, images, options, progress, stop, onStep, backend);
    VAEInference inference(config, trained.weights, backend);
    trained.latents = inference.encode(images);
    trained.finalReconstructionError = reconstructionError(inference, trained.latents, images);
    return trained;
}

ModelBundle train(const CorpusSummary& corpus, const TrainingOptions& options,
                  const ProgressCallback& progress, const std::stop_token& stop, network::Backend& backend) {
    if (corpus.files.empty()) throw TrainingError(TrainingError::Kind::noUsableAudio);
    PreparedCorpus prepared = prepareCorpus(corpus, options, progress, stop);
    TrainedNetwork trained =
        trainOnImages(prepared.config, prepared.images, options, progress, stop, backend);
    ModelMetadata metadata = describe(corpus, options, trained, prepared);
    return {.config = prepared.config,
            .metadata = std::move(metadata),
            .weights = std::move(trained.weights),
            .latents = std::move(trained.latents)};
}

}  // namespace ModelTrainer
}  // namespace quillmere
