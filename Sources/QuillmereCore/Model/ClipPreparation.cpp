#include "QuillmereCore/Model/ClipPreparation.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/ClipMeters.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

float peakOf(std::span<const float> samples) {
    float peak = 0;
    for (const float sample : samples)
        peak = std::max(peak, std::abs(sample));
    return peak;
}

bool allFinite(std::span<const float> samples) {
    return std::all_of(samples.begin(), samples.end(), [](float sample) { return std::isfinite(sample); });
}

double upperMedian(std::vector<double> values) {
    require(!values.empty(), "a median needs values");
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

}  // namespace

double DecodedClip::effectiveSeconds(int sampleRate) const {
    require(sampleRate > 0, "a clip needs a positive sample rate");
    SoundingMeter meter(sampleRate);
    meter.add(samples);
    return meter.seconds();
}

double DecodedClip::flatness(int sampleRate) const {
    require(sampleRate > 0, "a clip needs a positive sample rate");
    FlatnessMeter meter(sampleRate);
    meter.add(samples, {});
    return meter.finish({});
}

std::optional<DecodedClip> ClipPreparation::decode(const CorpusFile& file, int sampleRate) {
    AudioIO::MonoAudio audio = AudioIO::readMono(file.url);
    const double seconds = static_cast<double>(audio.samples.size()) / audio.sampleRate;
    std::vector<float> samples = AudioIO::resample(std::move(audio.samples), audio.sampleRate, sampleRate);
    // Float files can hold anything; one such value would reach every weight of the network.
    if (!allFinite(samples))
        throw AudioIOError::unreadable(file.url, Message("it holds samples that are not numbers"));
    auto trimmed = trimAndNormalise(std::move(samples), sampleRate);
    if (!trimmed) return std::nullopt;
    return DecodedClip{file.relativePath, std::move(*trimmed), seconds};
}

std::optional<std::vector<float>> ClipPreparation::trimAndNormalise(std::vector<float> samples,
                                                                    int sampleRate) {
    const float peak = peakOf(samples);
    if (peak <= clipLevels::silence) return std::nullopt;
    const float threshold = clipLevels::onset * peak;
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
