#include "QuillmereCore/Model/ModelConfig.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/JSONDocument.h"

namespace quillmere {
namespace {

// The network halves height and width five times.
constexpr std::int64_t sizeStep = 32;

struct AnalysisSettings {
    std::int64_t nFFT, hop, nMels;
};

AnalysisSettings analysisSettings(AnalysisProfile profile) {
    if (profile == AnalysisProfile::tonal) return {4096, 1024, 384};
    return {1024, 256, 96};
}

constexpr std::int64_t maxSampleRate = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t maxFFT = 1 << 16;
constexpr std::int64_t maxPixels = 1 << 20;
constexpr std::int64_t maxSpectrum = 1 << 26;  // values of one spectrogram, frames * nFFT
constexpr std::int64_t maxWeights = 1 << 28;

bool isImageSize(std::int64_t size) {
    return size >= sizeStep && size <= maxPixels && size % sizeStep == 0;
}

}  // namespace

std::string_view rawValue(AnalysisProfile profile) {
    switch (profile) {
        case AnalysisProfile::automatic:
            return "auto";
        case AnalysisProfile::percussive:
            return "percussive";
        case AnalysisProfile::tonal:
            return "tonal";
    }
    fatal("unknown analysis profile");
}

Message word(AnalysisProfile profile) {
    switch (profile) {
        case AnalysisProfile::automatic:
            return Message::verbatim("auto");
        case AnalysisProfile::percussive:
            return Message("percussive");
        case AnalysisProfile::tonal:
            return Message("tonal");
    }
    fatal("unknown analysis profile");
}

std::string_view label(AnalysisProfile profile) {
    switch (profile) {
        case AnalysisProfile::automatic:
            return translatable("Automatic");
        case AnalysisProfile::percussive:
            return translatable("Percussive (sharp attacks)");
        case AnalysisProfile::tonal:
            return translatable("Tonal (sustained pitch)");
    }
    fatal("unknown analysis profile");
}

std::optional<AnalysisProfile> analysisProfile(std::string_view raw) {
    for (const AnalysisProfile profile : allAnalysisProfiles) {
        if (raw == rawValue(profile)) return profile;
    }
    return std::nullopt;
}

ModelConfig ModelConfig::forSeconds(std::int64_t sampleRate, double seconds, AnalysisProfile profile,
                                    std::int64_t latentDim) {
    const auto [nFFT, hop, nMels] = analysisSettings(profile);
    return {.sampleRate = sampleRate,
            .nFFT = nFFT,
            .hop = hop,
            .nMels = nMels,
            .frames = framesForSeconds(seconds, sampleRate, hop),
            .latentDim = latentDim,
            .profile = profile};
}

std::int64_t ModelConfig::framesForSeconds(double seconds, std::int64_t sampleRate, std::int64_t hop) {
    const double exact = seconds * static_cast<double>(sampleRate) / static_cast<double>(hop);
    const std::int64_t raised = checkedAdd(roundedCount(std::ceil(exact)), sizeStep - 1);
    return raised < sizeStep ? sizeStep : raised / sizeStep * sizeStep;
}

std::int64_t ModelConfig::clipSamples() const {
    return checkedMultiply(frames, hop);
}

double ModelConfig::longestSeconds(std::int64_t sampleRate, AnalysisProfile profile) {
    const auto [nFFT, hop, nMels] = analysisSettings(profile);
    const std::int64_t frames = std::min(maxPixels / nMels, maxSpectrum / nFFT) / sizeStep * sizeStep;
    return static_cast<double>(frames * hop) / static_cast<double>(sampleRate);
}

double ModelConfig::clipSeconds() const {
    return static_cast<double>(clipSamples()) / static_cast<double>(sampleRate);
}

std::optional<Message> problemWith(const ModelConfig& config) {
    const auto& [sampleRate, nFFT, hop, nMels, frames, latentDim, profile] = config;
    if (sampleRate < 1 || sampleRate > maxSampleRate) return Message("sampleRate is {0}", sampleRate);
    if (nFFT < 2 || nFFT > maxFFT || !std::has_single_bit(static_cast<std::uint64_t>(nFFT)))
        return Message("nFFT is {0}, not a power of two up to {1}", nFFT, maxFFT);
    if (hop < 1 || hop > nFFT) return Message("hop is {0}, not from 1 to nFFT", hop);
    if (!isImageSize(nMels)) return Message("nMels is {0}, not a multiple of 32 within reason", nMels);
    if (!isImageSize(frames)) return Message("frames is {0}, not a multiple of 32 within reason", frames);
    if (nMels * frames > maxPixels || frames * nFFT > maxSpectrum)
        return Message("nMels is {0} and frames is {1}, together too many", nMels, frames);
    if (latentDim < 1 || latentDim > maxWeights) return Message("latentDim is {0}", latentDim);
    if (VAEArchitecture::weightCount(config) > maxWeights)
        return Message("latentDim is {0}, too many for this image", latentDim);
    return std::nullopt;
}

std::string encodeJSON(const ModelConfig& config) {
    const json::Json object{{"sampleRate", config.sampleRate},
                            {"nFFT", config.nFFT},
                            {"hop", config.hop},
                            {"nMels", config.nMels},
                            {"frames", config.frames},
                            {"latentDim", config.latentDim},
                            {"profile", rawValue(config.profile)}};
    return object.dump(2);
}

ModelConfig decodeModelConfig(std::string_view text) {
    const json::Json object = json::parseObject(text);
    const std::string& raw = json::stringMember(object, "profile");
    const std::optional<AnalysisProfile> profile = analysisProfile(raw);
    if (!profile) throw DecodingError("\"profile\" is {0}, which is no analysis profile", json::quoted(raw));
    return {.sampleRate = json::integerMember(object, "sampleRate"),
            .nFFT = json::integerMember(object, "nFFT"),
            .hop = json::integerMember(object, "hop"),
            .nMels = json::integerMember(object, "nMels"),
            .frames = json::integerMember(object, "frames"),
            .latentDim = json::integerMember(object, "latentDim"),
            .profile = *profile};
}

}  // namespace quillmere
