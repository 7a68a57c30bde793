#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Generate/Aesthetics.h"
#include "QuillmereCore/Generate/Detail/ClipSounds.h"
#include "QuillmereCore/Generate/Detail/SourceSupply.h"
#include "QuillmereCore/Generate/LatentSampler.h"
#include "QuillmereCore/Model/Features.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Util/Progress.h"
#include "QuillmereCore/Util/RNG.h"

namespace quillmere {

// One generation job.
struct GenerationRequest {
    std::int64_t count = 0;                 // variations; none for 0 and below
    std::filesystem::path outputDirectory;  // created if missing
    Aesthetics aesthetics;
    std::uint64_t seed = 0;
    OutputFormat format = OutputFormat::wav24;
    std::optional<std::string> namePrefix;  // UTF-8; absent: the corpus's name
    double detail = 0;                      // 0 ... 1, how much of the sources' fine structure; 0: none
    // Index of the first variation, for a job that is a part of a larger one. If it is given, a file has the
    // number that it has when one job writes all of them into an empty folder: index + 1.
    std::optional<std::int64_t> first{};
};

// One variation that is not to be written.
struct AuditionRequest {
    Aesthetics aesthetics;
    std::uint64_t seed = 0;
    double detail = 0;  // as that of a GenerationRequest
};

// Where a sample has its fine structure from.
enum class DetailBasis {
    none,     // it was rendered without detail
    sources,  // the clips that it was blended from, out of their folder
    kept,     // the same, as they were kept with the model: not quite the same samples
    noise,    // noise in their place: they could not be had
};

[[nodiscard]] std::string_view rawValue(DetailBasis basis);  // "none", "sources", "kept", "noise"

// What brings a rendered variation to the length and the level of others (Finishing::fit).
struct SoundFit {
    std::size_t samples = 0;
    float gain = 1;

    friend bool operator==(const SoundFit&, const SoundFit&) = default;
};

// From this sameness on a sample is as good as a copy of one that was learned. Different samples of a folder
// rarely have half of it among themselves.
inline constexpr float nearCopy = 0.95F;

// Where a sample comes from: enough to tell its relatives, and, with the parameters and the model, to make it
// again.
struct SampleOrigin {
    struct Source {
        std::size_t clip = 0;  // position in the model's latents and clip names
        std::string name;      // of the clip, relative to the corpus; empty if the model does not say
        float weight = 0;      // share of the blend; the shares sum to 1

        friend bool operator==(const Source&, const Source&) = default;
    };
    std::int64_t index = 0;       // which variation of its request
    std::uint64_t seed = 0;       // its own: an audition with it gives the same samples
    std::vector<float> latent;    // [latentDim], what was decoded
    std::vector<Source> sources;  // the blend before drift, mutation and extrapolation; at most eight
    std::string model;            // modelIdentity
    double detail = 0;            // of the request
    DetailBasis detailBasis = DetailBasis::none;
    // With detail from its sources, how much of their waveform it has before it is finished: the largest of
    // their normalised cross correlations (Detail::sameness). See nearCopy.
    float sameness = 0;
    std::array<std::uint64_t, 4> state{};  // of the random generator, after the latent vector was drawn
    std::optional<SoundFit> fit{};         // what follows the rendering

    friend bool operator==(const SampleOrigin&, const SampleOrigin&) = default;
};

// What renders one variation, apart from the model.
struct VariationPlan {
    SampleOrigin origin;
    Aesthetics aesthetics;
};

// One written file.
struct GeneratedSample {
    std::filesystem::path url;
    double seconds = 0;
    SampleOrigin origin{};
};

// What became of a request.
struct GenerationOutcome {
    std::vector<GeneratedSample> written;  // in the order in which they were finished
    std::exception_ptr failure;            // why there are no more of them; null when all are there
};

// One variation that was not written.
struct AuditionedSample {
    std::vector<float> samples;
    SampleOrigin origin{};
};

// What the caller of a job has to do with each of its files. Any of them may be empty.
struct GenerationHooks {
    // A chunk to stand behind the sound (RIFFChunk).
    struct Chunk {
        std::string id;
        std::string content;
    };
    struct WrittenFile {
        const GeneratedSample& sample;
        std::span<const float> samples;    // before they took the format of the file
        int sampleRate;                    // Hz
        std::span<const std::byte> bytes;  // all of the file
    };

    // Where a variation comes from, in place of a draw by the request's seed: its latent vector and the state
    // to render it with. In order of the indices, on the calling thread.
    std::function<SampleOrigin(std::int64_t index)> origin{};
    // Both from worker threads, several at once. What they throw ends the job as a failed file does.
    std::function<Chunk(const SampleOrigin&)> chunk{};
    std::function<void(const WrittenFile&)> written{};  // the file is there, and about to be counted
};

// Turns a trained model into new samples.
//
// Variation i of a request has a seed of its own, so its samples depend only on the model, the parameters,
// the request's seed and i: not on the batch, the number of threads or the order of completion.
// Threads: immutable after construction apart from the decoder's scratch memory and the sources that were
// read. generate and audition: one call at a time, either of them; everything const: any thread.
class SampleGenerator {
public:
    using ProgressCallback = CountProgress;

    // Variations that are decoded in one call and rendered in parallel.
    static constexpr std::int64_t batch = 16;

    // sounds: of the model's clips, for detail; without them noise stands in. Throws network::DeviceError if
    // the backend cannot take the network.
    SampleGenerator(ModelBundle bundle, network::Backend& backend, ClipSounds sounds = {});

    [[nodiscard]] const ModelBundle& bundle() const noexcept { return bundle_; }
    [[nodiscard]] int sampleRate() const noexcept { return static_cast<int>(bundle_.config.sampleRate); }
    // Statistics of the corpus latents, [latentDim] each.
    [[nodiscard]] const std::vector<float>& centroid() const noexcept { return sampler_.centroid(); }
    [[nodiscard]] const std::vector<float>& sigma() const noexcept { return sampler_.sigma(); }
    [[nodiscard]] const std::vector<std::vector<float>>& deviations() const noexcept {
        return sampler_.deviations();
    }

    // What identifies the model. Computed at the first call. Threads: any.
    [[nodiscard]] const std::string& identity() const;

    [[nodiscard]] const LatentSampler& sampler() const noexcept { return sampler_; }

    // What a variation comes from by the four "departure" parameters. seed: its own.
    [[nodiscard]] SampleOrigin draw(const Aesthetics& aesthetics, std::int64_t index,
                                    std::uint64_t seed) const;
    // One latent vector by the same.
    [[nodiscard]] std::vector<float> sampleLatent(SeededRNG& rng, const Aesthetics& aesthetics) const;

    // One decoded image [nMels][frames] to finished samples. stft: made for the model's configuration.
    // Treats denormal numbers as zero.
    [[nodiscard]] std::vector<float> render(std::span<const float> image, const Aesthetics& aesthetics,
                                            SeededRNG& rng, STFT& stft) const;

    // Renders and writes count variations as WAV files named prefix_var_NNNN.wav, numbered on from the
    // highest number in the folder. Never overwrites: a number that someone else takes meanwhile is skipped.
    // The samples come back in the order in which they were finished, each with the name it really has.
    //
    // progress(done, total) follows each written file, one call at a time, on a worker thread; it may be
    // empty. stop is asked before each batch and each variation.
    //
    // The sources of a variation with detail are read when it is rendered. With detail each sample's origin
    // says what it has its fine structure from.
    //
    // Throws InvalidParameterError before anything is done if validate does or detail is out of range, or
    // when the parameters lead to samples that are not finite; FileError for the folder or a file, before
    // anything is done where a name that request.first asks for is taken;
    // AudioIOError where the system's trouble hides a source; CancellationError. A batch that has begun ends
    // first (a cancelled one skips the variations that have not started), and files already written stay.
    [[nodiscard]] std::vector<GeneratedSample> generate(const GenerationRequest& request,
                                                        const ProgressCallback& progress,
                                                        const std::stop_token& stop);
    [[nodiscard]] std::vector<GeneratedSample> generate(const GenerationRequest& request,
                                                        const GenerationHooks& hooks,
                                                        const ProgressCallback& progress,
                                                        const std::stop_token& stop);

    // As generate, for who wants to know of the files that were written before it failed or was cancelled:
    // what generate throws is in the outcome.
    [[nodiscard]] GenerationOutcome tryToGenerate(const GenerationRequest& request,
                                                  const ProgressCallback& progress,
                                                  const std::stop_token& stop);
    [[nodiscard]] GenerationOutcome tryToGenerate(const GenerationRequest& request,
                                                  const GenerationHooks& hooks,
                                                  const ProgressCallback& progress,
                                                  const std::stop_token& stop);

    // These variations, in order: the samples are those that generate has written for the same origin and
    // parameters, where the sounds for their detail are there as they were then; the origins say whether they
    // are. A latent vector of another size than the model's is a programming error. Throws
    // InvalidParameterError and AudioIOError as generate, and CancellationError.
    [[nodiscard]] std::vector<AuditionedSample> remake(std::span<const VariationPlan> plans,
                                                       const std::stop_token& stop = {});

    // One variation, not written: the samples of variation 0 of a request with the same seed. Throws
    // InvalidParameterError as generate.
    [[nodiscard]] std::vector<float> audition(const Aesthetics& aesthetics, std::uint64_t seed);
    // The same with its origin.
    [[nodiscard]] AuditionedSample auditionWithOrigin(const Aesthetics& aesthetics, std::uint64_t seed);
    // The same with detail. Throws as generate.
    [[nodiscard]] AuditionedSample audition(const AuditionRequest& request, const std::stop_token& stop = {});

    // Seed of variation index of a request.
    [[nodiscard]] static std::uint64_t variationSeed(std::uint64_t seed, std::uint64_t index);

private:
    class Job;
    struct Batch {
        std::vector<SampleOrigin> origins;       // of each variation
        std::vector<std::vector<float>> images;  // [nMels][frames] each
    };
    // Renders and writes all variations. Throws as generate.
    void run(Job& job, const GenerationRequest& request, const GenerationHooks& hooks,
             const std::stop_token& stop);
    // The variations from start to end, at most a batch.
    [[nodiscard]] Batch decodeBatch(const GenerationRequest& request, const GenerationHooks& hooks,
                                    std::int64_t start, std::int64_t end);

    // What one thread renders with.
    struct Worker {
        STFT stft;
        std::unique_ptr<Detail::DetailRenderer> detail;  // null without detail
    };
    [[nodiscard]] Worker makeWorker(double detail) const;
    [[nodiscard]] std::vector<Worker> makeWorkers(int count, double detail) const;
    // Renders as origin says, and notes in it what the fine structure is from. Throws as generate.
    [[nodiscard]] std::vector<float> render(std::span<const float> image, const Aesthetics& aesthetics,
                                            SampleOrigin& origin, Worker& worker,
                                            const std::stop_token& stop);

    [[nodiscard]] std::vector<float> renderDetailed(std::span<const float> image,
                                                    const Aesthetics& aesthetics, SampleOrigin& origin,
                                                    SeededRNG& rng, Worker& worker,
                                                    const std::stop_token& stop);

    ModelBundle bundle_;
    VAEInference inference_;
    FeatureExtractor extractor_;
    LatentSampler sampler_;
    DetailBasis basis_;  // of the sounds
    Detail::SourceSupply supply_;
    mutable std::once_flag identified_;
    mutable std::string identity_;  // written under the flag above
};

}  // namespace quillmere
