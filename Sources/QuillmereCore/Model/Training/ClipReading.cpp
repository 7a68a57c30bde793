#include "QuillmereCore/Model/Training/ClipReading.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"
#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere::ModelTrainer {
namespace {

// The longest automatic clip.
constexpr double maxAutomaticSeconds = 4.0;

std::vector<double> ofUsable(std::span<const ClipReading> readings, double ClipReading::*measure) {
    std::vector<double> values;
    for (const ClipReading& reading : readings) {
        if (reading.isUsable()) values.push_back(reading.*measure);
    }
    return values;
}

}  // namespace

ClipNeeds needsOf(const TrainingOptions& options, int sampleRate) {
    const auto samples = [&](AnalysisProfile profile) {
        const double seconds = options.clipSeconds.value_or(maxAutomaticSeconds);
        return ModelConfig::forSeconds(sampleRate, seconds, profile, options.latentDim).clipSamples();
    };
    const std::int64_t longest =
        std::max(samples(AnalysisProfile::percussive), samples(AnalysisProfile::tonal));
    return {.sampleRate = sampleRate,
            .keptSamples = static_cast<std::size_t>(longest) + 1,
            .flatness = options.profile == AnalysisProfile::automatic};
}

ClipReading readClip(const CorpusFile& file, const ClipNeeds& needs) {
    ClipReading reading;
    try {
        std::optional<DecodedClip> clip = ClipPreparation::decode(file, needs.sampleRate);
        if (!clip) {
            reading.outcome = ClipReading::Outcome::silent;
            return reading;
        }
        reading.clip = std::move(*clip);
    } catch (const AudioIOError& error) {
        reading.outcome = ClipReading::Outcome::unreadable;
        reading.reason = error.what();
        return reading;
    }
    std::vector<float>& samples = reading.clip.samples;
    reading.length = samples.size();
    reading.effectiveSeconds = reading.clip.effectiveSeconds(needs.sampleRate);
    if (needs.flatness) reading.flatness = reading.clip.flatness(needs.sampleRate);
    if (samples.size() > needs.keptSamples) {
        samples.resize(needs.keptSamples);
        samples.shrink_to_fit();
    }
    return reading;
}

std::vector<ClipReading> readClips(std::span<const CorpusFile> files, const ClipNeeds& needs,
                                   const CountProgress& progress, const std::stop_token& stop) {
    std::vector<ClipReading> readings(files.size());
    const auto total = static_cast<std::int64_t>(files.size());
    struct {
        Mutex mutex;  // held during the calls of progress
        std::int64_t done QUILLMERE_GUARDED_BY(mutex) = 0;
    } read;
    parallelFor(files.size(), [&](std::size_t i) {
        if (stop.stop_requested()) return;
        readings[i] = readClip(files[i], needs);
        if (!progress) return;
        const MutexLock lock(read.mutex);
        progress(++read.done, total);
    });
    throwIfCancelled(stop);
    return readings;
}

ModelConfig chooseConfig(std::span<const ClipReading> readings, int sampleRate,
                         const TrainingOptions& options) {
    const std::vector<double> lengths = ofUsable(readings, &ClipReading::effectiveSeconds);
    const AnalysisProfile profile =
        options.profile != AnalysisProfile::automatic
            ? options.profile
            : ClipPreparation::resolveProfile(lengths, ofUsable(readings, &ClipReading::flatness));
    const double clipSeconds =
        options.clipSeconds ? *options.clipSeconds : ClipPreparation::suggestClipSeconds(lengths);
    return ModelConfig::forSeconds(sampleRate, clipSeconds, profile, options.latentDim);
}

}  // namespace quillmere::ModelTrainer
