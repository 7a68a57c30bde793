#include "QuillmereCore/Model/Training/ClipReading.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/ClipMeters.h"
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

// A clip's samples as they are, as long as they are few, and their peak.
class Hold {
public:
    explicit Hold(std::size_t inMemory) : inMemory_(inMemory) {}

    void add(std::span<const float> piece) {
        count_ += piece.size();
        for (const float sample : piece) {
            isFinite_ = isFinite_ && std::isfinite(sample);
            peak_ = std::max(peak_, std::abs(sample));
        }
        if (count_ <= inMemory_) {
            samples_.insert(samples_.end(), piece.begin(), piece.end());
        } else {
            samples_ = std::vector<float>();
        }
    }

    [[nodiscard]] bool isFinite() const { return isFinite_; }
    [[nodiscard]] float peak() const { return peak_; }
    [[nodiscard]] bool hasAll() const { return samples_.size() == count_; }
    [[nodiscard]] std::span<const float> samples() const { return samples_; }

private:
    std::size_t inMemory_;
    std::size_t count_ = 0;
    std::vector<float> samples_;
    float peak_ = 0;
    bool isFinite_ = true;
};

// Trims and normalises a clip of known peak while it passes, measures it and keeps its beginning.
class Measuring {
public:
    Measuring(const ClipNeeds& needs, float peak, const std::stop_token& stop)
        : needs_(needs),
          stop_(stop),
          threshold_(clipLevels::onset * peak),
          gain_(1.0F / peak),
          preRoll_(static_cast<std::size_t>(needs.sampleRate / 1000)),
          sounding_(needs.sampleRate) {
        if (needs.flatness) flatness_.emplace(needs.sampleRate);
    }

    void add(std::span<const float> samples) {
        for (std::size_t i = 0; i < samples.size(); i += longestPiece)
            addPiece(samples.subspan(i, std::min(longestPiece, samples.size() - i)));
    }

    // Into a reading, which becomes a usable one.
    void finish(ClipReading& reading) {
        kept_.shrink_to_fit();  // clips lie in memory until all files are read
        reading.clip.samples = std::move(kept_);
        reading.length = count_;
        reading.effectiveSeconds = sounding_.seconds();
        if (flatness_) reading.flatness = flatness_->finish(stop_);
    }

private:
    static constexpr std::size_t longestPiece = 16384;

    void addPiece(std::span<const float> piece) {
        throwIfCancelled(stop_);
        if (!hasBegun_) {
            const auto onset =
                std::ranges::find_if(piece, [this](float sample) { return std::abs(sample) >= threshold_; });
            lead_.insert(lead_.end(), piece.begin(), onset);
            lead_.erase(lead_.begin(),
                        lead_.end() - static_cast<std::ptrdiff_t>(std::min(lead_.size(), preRoll_)));
            if (onset == piece.end()) return;
            hasBegun_ = true;
            pass(lead_);
            piece = piece.subspan(static_cast<std::size_t>(onset - piece.begin()));
        }
        pass(piece);
    }

    void pass(std::span<const float> piece) {
        normalised_.assign(piece.begin(), piece.end());
        for (float& sample : normalised_)
            sample *= gain_;
        sounding_.add(normalised_);
        if (flatness_) flatness_->add(normalised_, stop_);
        count_ += normalised_.size();
        const auto room = needs_.keptSamples - kept_.size();
        const auto end =
            normalised_.begin() + static_cast<std::ptrdiff_t>(std::min(room, normalised_.size()));
        kept_.insert(kept_.end(), normalised_.begin(), end);
    }

    ClipNeeds needs_;
    const std::stop_token& stop_;
    float threshold_;
    float gain_;
    std::size_t preRoll_;
    SoundingMeter sounding_;
    std::optional<FlatnessMeter> flatness_;
    bool hasBegun_ = false;
    std::vector<float> lead_;  // what precedes the onset, as far as it is kept
    std::vector<float> normalised_;
    std::vector<float> kept_;
    std::size_t count_ = 0;
};

AudioIO::StreamedAudio stream(const CorpusFile& file, int sampleRate, const AudioIO::SampleSink& sink,
                              const std::stop_token& stop) {
    return AudioIO::stream(file.url, sampleRate, sink, {.stop = stop, .followsLinks = false});
}

// Throws AudioIOError.
ClipReading readUsable(const CorpusFile& file, const ClipNeeds& needs, const std::stop_token& stop) {
    ClipReading reading;
    Hold hold(needs.samplesInMemory);
    const AudioIO::StreamedAudio streamed = stream(
        file, needs.sampleRate, [&](std::span<const float> piece) { hold.add(piece); }, stop);
    // Float files can hold anything; one such value would reach every weight of the network.
    if (!hold.isFinite())
        throw AudioIOError::unreadable(file.url, Message("it holds samples that are not numbers"));
    if (hold.peak() <= clipLevels::silence) {
        reading.outcome = ClipReading::Outcome::silent;
        return reading;
    }
    Measuring measuring(needs, hold.peak(), stop);
    if (hold.hasAll()) {
        measuring.add(hold.samples());
    } else {
        stream(
            file, needs.sampleRate, [&](std::span<const float> piece) { measuring.add(piece); }, stop);
    }
    measuring.finish(reading);
    reading.clip.name = file.relativePath;
    reading.clip.originalSeconds = static_cast<double>(streamed.frames) / streamed.sampleRate;
    reading.damage = streamed.damage;
    return reading;
}

// Room for samples, which threads take.
class Room {
public:
    explicit Room(std::size_t samples) : left_(samples) {}

    [[nodiscard]] bool take(std::size_t samples) {
        std::size_t left = left_;
        do {
            if (samples > left) return false;
        } while (!left_.compare_exchange_weak(left, left - samples));
        return true;
    }

private:
    std::atomic<std::size_t> left_;
};

bool areOfOneSound(const ClipReading& a, const ClipReading& b) {
    return a.length == b.length && a.effectiveSeconds == b.effectiveSeconds &&
           a.clip.originalSeconds == b.clip.originalSeconds;
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
            .flatness = options.profile == AnalysisProfile::automatic,
            .samplesInMemory = ClipNeeds().samplesInMemory};
}

ClipNeeds ClipNeeds::sharedBy(int threads) const {
    constexpr std::size_t samplesTogether = std::size_t{32} << 20;
    ClipNeeds shared = *this;
    shared.samplesInMemory = std::min(samplesInMemory, samplesTogether / static_cast<std::size_t>(threads));
    return shared;
}

ClipReading readClip(const CorpusFile& file, const ClipNeeds& needs, const std::stop_token& stop) {
    require(needs.sampleRate > 0, "a clip needs a positive sample rate");
    try {
        return readUsable(file, needs, stop);
    } catch (const AudioIOError& error) {
        // To go on would be to learn another corpus than the one that is there.
        if (error.isSystemTrouble()) throw;
        ClipReading reading;
        reading.outcome = ClipReading::Outcome::unreadable;
        reading.reason = error.message();
        return reading;
    }
}

std::vector<ClipReading> readClips(std::span<const CorpusFile> files, const ClipNeeds& needs,
                                   const CountProgress& progress, const std::stop_token& stop) {
    std::vector<ClipReading> readings(files.size());
    const auto total = static_cast<std::int64_t>(files.size());
    struct {
        Mutex mutex;  // held during the calls of progress
        std::int64_t done QUILLMERE_GUARDED_BY(mutex) = 0;
    } read;
    WorkerTeam team;
    const ClipNeeds shared = needs.sharedBy(team.threads());
    Room room(needs.keptTogether);
    team.run(files.size(), [&](std::size_t i, int) {
        if (stop.stop_requested()) return;
        readings[i] = readClip(files[i], shared, stop);
        std::vector<float>& samples = readings[i].clip.samples;
        if (!room.take(samples.size())) samples = std::vector<float>();
        if (!progress) return;
        const MutexLock lock(read.mutex);
        progress(++read.done, total);
    });
    throwIfCancelled(stop);
    return readings;
}

DecodedClip clipOf(ClipReading reading, const CorpusFile& file, const ClipNeeds& needs,
                   const std::stop_token& stop) {
    require(reading.isUsable(), "only a usable clip has samples");
    if (!reading.clip.samples.empty()) return std::move(reading.clip);
    ClipNeeds samplesOnly = needs;
    samplesOnly.flatness = false;
    ClipReading again = readUsable(file, samplesOnly, stop);
    if (!areOfOneSound(reading, again))
        throw AudioIOError::unreadable(file.url, Message("it has changed while it was read"));
    return std::move(again.clip);
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
