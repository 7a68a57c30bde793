#include "QuillmereCore/Generate/Generator.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <exception>
#include <optional>
#include <system_error>
#include <utility>

#include "QuillmereCore/Generate/Detail/Sameness.h"
#include "QuillmereCore/Generate/Finishing.h"
#include "QuillmereCore/Generate/Rendering.h"
#include "QuillmereCore/Generate/SoundFile.h"
#include "QuillmereCore/Model/ModelIdentity.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/AtomicFolder.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"
#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

// Parameters within float's range can still multiply to infinity, and from there to NaN.
void requireFinite(std::span<const float> samples) {
    if (!std::ranges::all_of(samples, [](float value) { return std::isfinite(value); }))
        throw InvalidParameterError(
            "The parameters lead to samples that are not finite numbers; less extreme values avoid this");
}

void validateDetail(double detail) {
    if (!(detail >= 0 && detail <= 1)) throw InvalidParameterError("Detail must be a number from 0 to 1");
}

// A random generator that goes on from there.
SeededRNG resumed(const std::array<std::uint64_t, 4>& state) {
    SeededRNG rng(0);
    rng.s = state;
    return rng;
}

// What is taken from these sounds.
DetailBasis basisOf(const ClipSounds& sounds) {
    return sounds.origin() == ClipSounds::Origin::model ? DetailBasis::kept : DetailBasis::sources;
}

float largestSameness(std::span<const float> samples, const Detail::SourceMaterial& material) {
    float largest = 0;
    for (const std::vector<float>& beginning : material.beginnings)
        largest = std::max(largest, Detail::sameness(samples, beginning));
    return largest;
}

std::int64_t firstIndex(const GenerationRequest& request) {
    return request.first.value_or(0);
}

// The numbered names of one request.
class OutputNames {
public:
    OutputNames(const GenerationRequest& request, std::string_view prefix)
        : names_(request.outputDirectory, prefix),
          isNumberedByIndex_(request.first.has_value()),
          first_(isNumberedByIndex_ ? static_cast<std::size_t>(firstIndex(request)) + 1 : names_.firstFree()),
          afterLast_(first_ + static_cast<std::size_t>(request.count)) {
        if (isNumberedByIndex_) requireFree();
    }

    // position: within the request.
    [[nodiscard]] std::size_t number(std::int64_t position) const {
        return first_ + static_cast<std::size_t>(position);
    }
    [[nodiscard]] fs::path file(std::size_t number) const { return names_.file(number); }
    // A number to try after a taken one: higher, not meant for another variation, and free at this moment.
    // Throws FileError where the number is the variation's own.
    [[nodiscard]] std::size_t next(std::size_t taken) const {
        if (isNumberedByIndex_) throwTaken(file(taken));
        return std::max({taken + 1, afterLast_, names_.firstFree()});
    }

private:
    [[noreturn]] static void throwTaken(const fs::path& file) {
        throw FileError(file, std::make_error_code(std::errc::file_exists));
    }
    void requireFree() const {
        std::error_code ignored;  // the attempt to write tells of any other trouble
        for (std::size_t number = first_; number < afterLast_; ++number) {
            if (fs::exists(fs::symlink_status(file(number), ignored))) throwTaken(file(number));
        }
    }

    SoundFile::NumberedNames names_;
    bool isNumberedByIndex_;
    std::size_t first_;
    std::size_t afterLast_;
};

}  // namespace

std::string_view rawValue(DetailBasis basis) {
    switch (basis) {
        case DetailBasis::sources:
            return "sources";
        case DetailBasis::kept:
            return "kept";
        case DetailBasis::noise:
            return "noise";
        case DetailBasis::none:
            break;
    }
    return "none";
}

// A request at work. Results come from several threads.
class SampleGenerator::Job {
public:
    Job(const GenerationRequest& request, std::string_view prefix, int sampleRate,
        const GenerationHooks& hooks, const SampleGenerator::ProgressCallback& progress)
        : request_(request),
          names_(request, prefix),
          sampleRate_(sampleRate),
          hooks_(hooks),
          progress_(progress) {}

    // Writes the samples of a variation under a name nobody else has. position: within the request.
    void write(std::span<const float> samples, std::int64_t position, SampleOrigin origin) {
        std::size_t number = names_.number(position);
        const SoundFile::FinishedSound sound{samples, sampleRate_, request_.format, origin};
        const std::vector<std::byte> bytes = SoundFile::encode(sound, names_.file(number), hooks_);
        while (!writeNewFile(names_.file(number), bytes))
            number = names_.next(number);
        const double seconds = static_cast<double>(samples.size()) / sampleRate_;
        GeneratedSample sample{names_.file(number), seconds, std::move(origin)};
        if (hooks_.written) hooks_.written({sample, samples, sampleRate_, bytes});

        const MutexLock lock(mutex_);
        written_.push_back(std::move(sample));
        if (progress_) progress_(std::ssize(written_), request_.count);
    }

    // Notes that a variation was left out because of a cancellation.
    void skip() {
        const MutexLock lock(mutex_);
        skipped_ = true;
    }

    // Runs the work for one variation. Of several failures the first counts.
    void attempt(const std::function<void()>& work) {
        try {
            work();
        } catch (...) {
            const MutexLock lock(mutex_);
            if (!failure_) failure_ = std::current_exception();
        }
    }

    // Has the batch's names on the disk, and ends the job after a batch that failed or was cut short.
    void endBatch() {
        const std::error_code unsafe = syncFolder(request_.outputDirectory);
        const MutexLock lock(mutex_);
        if (failure_) std::rethrow_exception(failure_);
        if (unsafe) throw FileError(request_.outputDirectory, unsafe);
        if (skipped_) throw CancellationError();
    }

    [[nodiscard]] std::vector<GeneratedSample> takeWritten() {
        const MutexLock lock(mutex_);
        return std::move(written_);
    }

private:
    // Constant while the job runs.
    const GenerationRequest& request_;
    const OutputNames names_;
    const int sampleRate_;
    const GenerationHooks& hooks_;
    const SampleGenerator::ProgressCallback& progress_;

    Mutex mutex_;  // held during the progress callback
    std::vector<GeneratedSample> written_ QUILLMERE_GUARDED_BY(mutex_);
    bool skipped_ QUILLMERE_GUARDED_BY(mutex_) = false;
    std::exception_ptr failure_ QUILLMERE_GUARDED_BY(mutex_);
};

SampleGenerator::SampleGenerator(ModelBundle bundle, network::Backend& backend, ClipSounds sounds)
    : bundle_(std::move(bundle)),
      inference_(bundle_.config, bundle_.weights, backend),
      extractor_(bundle_.config),
      sampler_(bundle_.latents, bundle_.config.latentDim),
      basis_(basisOf(sounds)),
      supply_(bundle_, std::move(sounds)) {}

const std::string& SampleGenerator::identity() const {
    std::call_once(identified_, [this] { identity_ = modelIdentity(bundle_); });
    return identity_;
}

std::vector<float> SampleGenerator::sampleLatent(SeededRNG& rng, const Aesthetics& aesthetics) const {
    return sampler_.sample(rng, aesthetics);
}

std::vector<float> SampleGenerator::render(std::span<const float> image, const Aesthetics& aesthetics,
                                           SeededRNG& rng, STFT& stft) const {
    // Here and not in the callers, so that every thread renders alike.
    const FlushDenormals flush;
    std::vector<float> samples = Rendering::waveform(image, aesthetics, extractor_, stft, rng);
    Finishing::finish(samples, aesthetics, sampleRate(), rng);
    return samples;
}

SampleGenerator::Worker SampleGenerator::makeWorker(double detail) const {
    Worker worker{extractor_.makeSTFT(), nullptr};
    if (detail > 0) worker.detail = std::make_unique<Detail::DetailRenderer>(extractor_);
    return worker;
}

std::vector<SampleGenerator::Worker> SampleGenerator::makeWorkers(int count, double detail) const {
    std::vector<Worker> workers;
    workers.reserve(static_cast<std::size_t>(count));
    for (int worker = 0; worker < count; ++worker)
        workers.push_back(makeWorker(detail));
    return workers;
}

std::vector<float> SampleGenerator::render(std::span<const float> image, const Aesthetics& aesthetics,
                                           SampleOrigin& origin, Worker& worker,
                                           const std::stop_token& stop) {
    SeededRNG rng = resumed(origin.state);
    std::vector<float> samples = origin.detail > 0
                                     ? renderDetailed(image, aesthetics, origin, rng, worker, stop)
                                     : render(image, aesthetics, rng, worker.stft);
    if (origin.fit) Finishing::fit(samples, origin.fit->samples, origin.fit->gain, sampleRate());
    return samples;
}

std::vector<float> SampleGenerator::renderDetailed(std::span<const float> image, const Aesthetics& aesthetics,
                                                   SampleOrigin& origin, SeededRNG& rng, Worker& worker,
                                                   const std::stop_token& stop) {
    const FlushDenormals flush;
    std::vector<LatentDraw::Source> sources;
    for (const SampleOrigin::Source& source : origin.sources)
        sources.push_back({source.clip, source.weight});
    const auto material = supply_.material(sources, worker.stft, stop);
    origin.detailBasis = material ? basis_ : DetailBasis::noise;
    std::vector<float> samples = worker.detail->waveform(
        image, aesthetics,
        {static_cast<float>(origin.detail), material ? &*material : nullptr, supply_.tail()}, worker.stft,
        rng);
    origin.sameness = material ? largestSameness(samples, *material) : 0;
    Finishing::finish(samples, aesthetics, sampleRate(), rng);
    return samples;
}

std::vector<GeneratedSample> SampleGenerator::generate(const GenerationRequest& request,
                                                       const ProgressCallback& progress,
                                                       const std::stop_token& stop) {
    return generate(request, {}, progress, stop);
}

std::vector<GeneratedSample> SampleGenerator::generate(const GenerationRequest& request,
                                                       const GenerationHooks& hooks,
                                                       const ProgressCallback& progress,
                                                       const std::stop_token& stop) {
    GenerationOutcome outcome = tryToGenerate(request, hooks, progress, stop);
    if (outcome.failure) std::rethrow_exception(outcome.failure);
    return std::move(outcome.written);
}

GenerationOutcome SampleGenerator::tryToGenerate(const GenerationRequest& request,
                                                 const ProgressCallback& progress,
                                                 const std::stop_token& stop) {
    return tryToGenerate(request, {}, progress, stop);
}

GenerationOutcome SampleGenerator::tryToGenerate(const GenerationRequest& request,
                                                 const GenerationHooks& hooks,
                                                 const ProgressCallback& progress,
                                                 const std::stop_token& stop) {
    GenerationOutcome outcome;
    std::optional<Job> job;
    try {
        validate(request.aesthetics);
        validateDetail(request.detail);
        if (request.count <= 0) return outcome;
        SoundFile::prepareFolder(request.outputDirectory);
        if (request.detail > 0) supply_.learnTail(bundle_.latents, inference_, stop);
        job.emplace(request, request.namePrefix.value_or(bundle_.metadata.corpusName), sampleRate(), hooks,
                    progress);
        run(*job, request, hooks, stop);
    } catch (...) {
        outcome.failure = std::current_exception();
    }
    if (job) outcome.written = job->takeWritten();
    return outcome;
}

void SampleGenerator::run(Job& job, const GenerationRequest& request, const GenerationHooks& hooks,
                          const std::stop_token& stop) {
    WorkerTeam team;
    std::vector<Worker> workers = makeWorkers(team.threads(), request.detail);

    for (std::int64_t start = 0; start < request.count; start += batch) {
        throwIfCancelled(stop);
        Batch variations = decodeBatch(request, hooks, start, std::min(start + batch, request.count));
        team.run(variations.images.size(), [&](std::size_t i, int worker) {
            job.attempt([&] {
                if (stop.stop_requested()) return job.skip();
                SampleOrigin& origin = variations.origins[i];
                const std::vector<float> samples = render(variations.images[i], request.aesthetics, origin,
                                                          workers[static_cast<std::size_t>(worker)], stop);
                requireFinite(samples);
                job.write(samples, start + static_cast<std::int64_t>(i), std::move(origin));
            });
        });
        job.endBatch();
    }
}

std::vector<AuditionedSample> SampleGenerator::remake(std::span<const VariationPlan> plans,
                                                      const std::stop_token& stop) {
    double detail = 0;  // the most of any
    std::vector<AuditionedSample> samples(plans.size());
    for (std::size_t i = 0; i < plans.size(); ++i) {
        samples[i].origin = plans[i].origin;
        validate(plans[i].aesthetics);
        validateDetail(plans[i].origin.detail);
        detail = std::max(detail, plans[i].origin.detail);
        require(std::ssize(plans[i].origin.latent) == bundle_.config.latentDim,
                "remake: a latent vector of another size");
    }
    if (detail > 0) supply_.learnTail(bundle_.latents, inference_, stop);
    WorkerTeam team;
    std::vector<Worker> workers = makeWorkers(team.threads(), detail);
    for (std::size_t start = 0; start < plans.size(); start += batch) {
        throwIfCancelled(stop);
        const auto part =
            std::span(samples).subspan(start, std::min<std::size_t>(batch, plans.size() - start));
        std::vector<std::vector<float>> latents;
        for (const AuditionedSample& sample : part)
            latents.push_back(sample.origin.latent);
        const std::vector<std::vector<float>> images = inference_.decode(latents);
        team.run(part.size(), [&](std::size_t i, int worker) {
            throwIfCancelled(stop);
            part[i].samples = render(images[i], plans[start + i].aesthetics, part[i].origin,
                                     workers[static_cast<std::size_t>(worker)], stop);
            requireFinite(part[i].samples);
        });
    }
    return samples;
}

SampleGenerator::Batch SampleGenerator::decodeBatch(const GenerationRequest& request,
                                                    const GenerationHooks& hooks, std::int64_t start,
                                                    std::int64_t end) {
    Batch variations;
    std::vector<std::vector<float>> latents;
    for (std::int64_t index = firstIndex(request) + start; index < firstIndex(request) + end; ++index) {
        const std::uint64_t seed = variationSeed(request.seed, static_cast<std::uint64_t>(index));
        variations.origins.push_back(hooks.origin ? hooks.origin(index)
                                                  : draw(request.aesthetics, index, seed));
        variations.origins.back().detail = request.detail;
        latents.push_back(variations.origins.back().latent);
    }
    variations.images = inference_.decode(latents);
    return variations;
}

SampleOrigin SampleGenerator::draw(const Aesthetics& aesthetics, std::int64_t index,
                                   std::uint64_t seed) const {
    SeededRNG rng(seed);
    LatentDraw drawn = sampler_.draw(rng, aesthetics);
    SampleOrigin origin{.index = index,
                        .seed = seed,
                        .latent = std::move(drawn.latent),
                        .sources = {},
                        .model = identity(),
                        .state = rng.s};
    const std::vector<std::string>& names = bundle_.metadata.clipNames;
    for (const auto& [clip, weight] : drawn.sources)
        origin.sources.push_back({clip, clip < names.size() ? names[clip] : std::string(), weight});
    return origin;
}

std::vector<float> SampleGenerator::audition(const Aesthetics& aesthetics, std::uint64_t seed) {
    return auditionWithOrigin(aesthetics, seed).samples;
}

AuditionedSample SampleGenerator::auditionWithOrigin(const Aesthetics& aesthetics, std::uint64_t seed) {
    return audition({.aesthetics = aesthetics, .seed = seed});
}

AuditionedSample SampleGenerator::audition(const AuditionRequest& request, const std::stop_token& stop) {
    validate(request.aesthetics);
    validateDetail(request.detail);
    if (request.detail > 0) supply_.learnTail(bundle_.latents, inference_, stop);
    SampleOrigin origin = draw(request.aesthetics, 0, request.seed);
    origin.detail = request.detail;
    const std::vector<std::vector<float>> images = inference_.decode(std::span(&origin.latent, 1));
    Worker worker = makeWorker(request.detail);
    std::vector<float> samples = render(images.front(), request.aesthetics, origin, worker, stop);
    requireFinite(samples);
    return {std::move(samples), std::move(origin)};
}

std::uint64_t SampleGenerator::variationSeed(std::uint64_t seed, std::uint64_t index) {
    constexpr std::uint64_t stride = 0x9E3779B97F4A7C15;  // 2^64 / golden ratio
    return seed + index * stride;
}

}  // namespace quillmere
