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

// Spectral flatness over a fixed band of bins.
class FlatnessMeter {
public:
    static constexpr int nFFT = 4096;
    static constexpr int hop = 1024;

    explicit FlatnessMeter(int sampleRate)
        : low_(60 * nFFT / sampleRate), high_(std::min(nFFT / 2, 6000 * nFFT / sampleRate)) {}

    [[nodiscard]] double mean(std::span<const float> samples) const {
        if (low_ >= high_) return 1.0;
        STFT stft(nFFT, hop);
        const STFT::Spectrum spectrum = stft.forward(samples);
        const auto bins = static_cast<std::size_t>(stft.bins());
        std::vector<Band> frames;
        for (std::size_t start = 0; start < spectrum.re.size(); start += bins)
            frames.push_back({band(spectrum.re, start), band(spectrum.im, start)});
        return meanOfLoud(frames);
    }

private:
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

    [[nodiscard]] std::span<const float> band(const std::vector<float>& values, std::size_t start) const {
        const auto low = static_cast<std::size_t>(low_);
        return std::span(values).subspan(start + low, static_cast<std::size_t>(high_) - low + 1);
    }

    // Frames within 30 dB of the loudest.
    static double meanOfLoud(const std::vector<Band>& frames) {
        std::vector<float> energies;
        energies.reserve(frames.size());
        for (const Band& frame : frames)
            energies.push_back(frame.energy());
        const float largest = *std::max_element(energies.begin(), energies.end());
        if (!(largest > 0)) return 1.0;
        const float threshold = 0.001F * largest;
        double sum = 0;
        int count = 0;
        for (std::size_t t = 0; t < frames.size(); ++t) {
            if (!(energies[t] > threshold)) continue;
            sum += static_cast<double>(frames[t].flatness());
            ++count;
        }
        return count > 0 ? sum / count : 1.0;
    }

    int low_, high_;  // bins of 60 and 6000 Hz
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
