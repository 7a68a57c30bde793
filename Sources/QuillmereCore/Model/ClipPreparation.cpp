#include "QuillmereCore/Model/ClipPreparation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

// Peaks up to this (-80 dB) are silence.
constexpr float silentPeak = 1.0e-4F;

// The onset is where a clip first reaches -40 dB of its peak.
constexpr float onsetLevel = 0.01F;

// About -45 dB: quieter 10 ms blocks at the end do not count as sounding.
constexpr float soundingRMS = 0.0056F;

float rootMeanSquare(std::span<const float> block) {
    float sum = 0;
    for (const float sample : block)
        sum += sample * sample;
    return std::sqrt(sum / static_cast<float>(block.size()));
}

float peakOf(std::span<const float> samples) {
    float peak = 0;
    for (const float sample : samples)
        peak = std::max(peak, std::abs(sample));
    return peak;
}

bool allFinite(std::span<const float> samples) {
    return std::all_of(samples.begin(), samples.end(), [](float sample) { return std::isfinite(sample); });
}

// Spectral flatness of a signal's loud frames between 60 and 6000 Hz.
class FlatnessMeter {
public:
    explicit FlatnessMeter(int sampleRate)
        : low_(static_cast<std::size_t>(60 * nFFT / sampleRate)),
          high_(static_cast<std::size_t>(std::min(nFFT / 2, 6000 * nFFT / sampleRate))) {}

    [[nodiscard]] double mean(std::span<const float> samples) {
        if (low_ >= high_) return 1.0;
        const int frames = stft_.frameCount(static_cast<long long>(samples.size()));
        for (int first = 0; first < frames; first += blockFrames)
            addBlock(samples, first, std::min(blockFrames, frames - first));
        return meanOfLoud();
    }

private:
    static constexpr int nFFT = 4096;
    static constexpr int hop = 1024;
    static constexpr std::size_t bins = nFFT / 2 + 1;
    static constexpr int context = nFFT / 2 / hop;  // frames whose centres a frame reaches back to
    static constexpr int blockFrames = 64;          // keeps long recordings from filling the memory
    static constexpr float loudShare = 0.001F;      // of the loudest frame's energy: -30 dB

    struct Frame {
        float energy = 0;
        float flatness = 0;  // 0 when too quiet to count
    };

    // One frame's bins from low to high, both included.
    struct Band {
        std::span<const float> re, im;

        [[nodiscard]] float energy() const {
            float sum = 0;
            for (std::size_t k = 0; k < re.size(); ++k)
                sum += re[k] * re[k] + im[k] * im[k];
            return sum;
        }

        // Geometric over arithmetic mean of the magnitudes.
        [[nodiscard]] float flatness() const {
            const auto count = static_cast<float>(re.size());
            float logSum = 0;
            float sum = 0;
            for (std::size_t k = 0; k < re.size(); ++k) {
                const float magnitude = std::hypot(re[k], im[k]) + 1.0e-9F;
                logSum += std::log(magnitude);
                sum += magnitude;
            }
            return std::exp(logSum / count) / (sum / count);
        }
    };

    // Transforms from a little earlier, so that the block's first frame sees what lies before it.
    void addBlock(std::span<const float> samples, int first, int count) {
        const int start = std::max(first - context, 0);
        const auto signal = samples.subspan(static_cast<std::size_t>(start) * hop);
        stft_.forward(signal, first - start + count, re_, im_);
        for (int t = first - start; t < first - start + count; ++t) {
            const auto frame = static_cast<std::size_t>(t);
            addFrame({band(re_, frame), band(im_, frame)});
        }
    }

    void addFrame(const Band& audible) {
        Frame frame;
        frame.energy = audible.energy();
        largestEnergy_ = std::max(largestEnergy_, frame.energy);
        if (isLoud(frame)) frame.flatness = audible.flatness();
        frames_.push_back(frame);
    }

    // Before the last frame this is an early answer: the loudest frame may be yet to come. A frame that is
    // quiet then stays quiet; a loud one may turn out to be quiet.
    [[nodiscard]] bool isLoud(const Frame& frame) const { return frame.energy > loudShare * largestEnergy_; }

    [[nodiscard]] std::span<const float> band(std::span<const float> spectra, std::size_t frame) const {
        return spectra.subspan(frame * bins + low_, high_ - low_ + 1);
    }

    [[nodiscard]] double meanOfLoud() const {
        double sum = 0;
        int count = 0;
        for (const Frame& frame : frames_) {
            if (!isLoud(frame)) continue;
            sum += static_cast<double>(frame.flatness);
            ++count;
        }
        return count > 0 ? sum / count : 1.0;
    }

    std::size_t low_, high_;  // bins of 60 and 6000 Hz
    STFT stft_{nFFT, hop};
    std::vector<float> re_ = std::vector<float>((context + blockFrames) * bins);  // [frames][bins]
    std::vector<float> im_ = std::vector<float>(re_.size());
    std::vector<Frame> frames_;
    float largestEnergy_ = 0;
};

double upperMedian(std::vector<double> values) {
    require(!values.empty(), "a median needs values");
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

double DecodedClip::effectiveSeconds(int sampleRate) const {
    require(sampleRate > 0, "a clip needs a positive sample rate");
    const auto blockLength = static_cast<std::size_t>(std::max(sampleRate / 100, 1));
    std::size_t end = 0;
    for (std::size_t start = 0; start < samples.size(); start += blockLength) {
        const std::size_t length = std::min(blockLength, samples.size() - start);
        if (rootMeanSquare(std::span(samples).subspan(start, length)) > soundingRMS) end = start + length;
    }
    return static_cast<double>(end) / sampleRate;
}

double DecodedClip::flatness(int sampleRate) const {
    require(sampleRate > 0, "a clip needs a positive sample rate");
    return FlatnessMeter(sampleRate).mean(samples);
}

std::optional<DecodedClip> ClipPreparation::decode(const CorpusFile& file, int sampleRate) {
    AudioIO::MonoAudio audio = AudioIO::readMono(file.url);
    const double seconds = static_cast<double>(audio.samples.size()) / audio.sampleRate;
    std::vector<float> samples = AudioIO::resample(std::move(audio.samples), audio.sampleRate, sampleRate);
    // Float files can hold anything; one such value would reach every weight of the network.
    if (!allFinite(samples))
        throw AudioIOError::unreadable(file.url, "it holds samples that are not numbers");
    auto trimmed = trimAndNormalise(std::move(samples), sampleRate);
    if (!trimmed) return std::nullopt;
    return DecodedClip{file.relativePath, std::move(*trimmed), seconds};
}

std::optional<std::vector<float>> ClipPreparation::trimAndNormalise(std::vector<float> samples,
                                                                    int sampleRate) {
    const float peak = peakOf(samples);
    if (peak <= silentPeak) return std::nullopt;
    const float threshold = onsetLevel * peak;
    const auto onset = std::find_if(samples.begin(), samples.end(),
                                    [threshold](float sample) { return std::abs(sample) >= threshold; });
    const std::ptrdiff_t preRoll = sampleRate / 1000;  // 1 ms
    samples.erase(samples.begin(), onset - std::min(preRoll, onset - samples.begin()));
    const float gain = 1.0F / peak;
    for (float& sample : samples)
        sample *= gain;
    return samples;
}

std::vector<float> ClipPreparation::cutAndFade(std::span<const float> samples, std::int64_t clipSamples,
                                               std::int64_t sampleRate) {
    require(clipSamples >= 0 && sampleRate > 0, "a clip needs a length and a sample rate");
    const auto length = static_cast<std::size_t>(clipSamples);
    if (samples.size() <= length) return {samples.begin(), samples.end()};
    std::vector<float> clip(samples.begin(), samples.begin() + clipSamples);
    const auto fade = static_cast<std::size_t>(std::min(clipSamples, sampleRate / 50));  // 20 ms
    for (std::size_t j = 0; j < fade; ++j) {
        const float phase = 3.1415925F * static_cast<float>(j) / static_cast<float>(fade);
        clip[length - fade + j] *= 0.5F + 0.5F * std::cos(phase);
    }
    return clip;
}

PreparedClip ClipPreparation::prepare(const DecodedClip& clip, const ModelConfig& config,
                                      const FeatureExtractor& extractor, STFT& stft) {
    const std::vector<float> samples = cutAndFade(clip.samples, config.clipSamples(), config.sampleRate);
    return {clip.name, extractor.features(samples, stft), clip.originalSeconds};
}

AnalysisProfile ClipPreparation::resolveProfile(std::vector<double> effectiveSeconds,
                                                std::vector<double> flatness) {
    const bool isTonal =
        upperMedian(std::move(flatness)) < 0.15 && upperMedian(std::move(effectiveSeconds)) >= 0.3;
    return isTonal ? AnalysisProfile::tonal : AnalysisProfile::percussive;
}

double ClipPreparation::suggestClipSeconds(std::vector<double> effectiveSeconds) {
    require(!effectiveSeconds.empty(), "a clip length needs clips");
    std::sort(effectiveSeconds.begin(), effectiveSeconds.end());
    const auto index = static_cast<std::size_t>(0.9 * static_cast<double>(effectiveSeconds.size()));
    const double p90 = effectiveSeconds[std::min(index, effectiveSeconds.size() - 1)];
    return std::clamp(p90 * 1.05 + 0.05, 0.25, 4.0);
}

}  // namespace quillmere
