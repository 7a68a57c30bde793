#include "QuillmereCore/Model/Features.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

int intSize(std::int64_t value) {
    require(value >= 0 && value <= std::numeric_limits<int>::max(), "FeatureExtractor: impossible size");
    return static_cast<int>(value);
}

constexpr std::size_t featureFrames = 16;

// In double, as hypot would: neither overflows nor underflows for any float.
void magnitudes(const float* re, const float* im, float scale, std::span<float> out) {
    for (std::size_t k = 0; k < out.size(); ++k) {
        const double x = re[k];
        const double y = im[k];
        out[k] = static_cast<float>(std::sqrt(x * x + y * y)) * scale;
    }
}

}  // namespace

float Level::toNetwork(float dB) {
    if (dB <= floorDB) return -1.0F;
    return (std::min(dB, ceilDB) + 50.0F) / 50.0F;
}

float Level::toDB(float network) {
    return network * 50.0F - 50.0F;
}

FeatureExtractor::FeatureExtractor(const ModelConfig& config)
    : config_(config), bank_(intSize(config.sampleRate), intSize(config.nFFT), intSize(config.nMels)) {}

STFT FeatureExtractor::makeSTFT() const {
    return {intSize(config_.nFFT), intSize(config_.hop)};
}

std::vector<float> FeatureExtractor::features(std::span<const float> samples, STFT& stft) const {
    require(stft.nFFT() == config_.nFFT && stft.hop() == config_.hop,
            "FeatureExtractor: STFT of another configuration");
    const int frames = intSize(config_.frames);
    const auto columns = static_cast<std::size_t>(frames);
    const auto bins = static_cast<std::size_t>(bank_.bins());
    const auto nMels = static_cast<std::size_t>(bank_.nMels());
    std::vector<float> image(static_cast<std::size_t>(checkedMultiply(config_.nMels, config_.frames)), -1.0F);
    // A few frames at a time, so that their spectra stay in the cache.
    std::vector<float> re(featureFrames * bins);
    std::vector<float> im(featureFrames * bins);
    std::vector<float> magnitude(bins);
    std::vector<float> mel(featureFrames * nMels);
    for (std::size_t start = 0; start < columns; start += featureFrames) {
        const std::size_t count = std::min(featureFrames, columns - start);
        stft.forward(samples, static_cast<int>(start), static_cast<int>(count), re, im);
        for (std::size_t t = 0; t < count; ++t) {
            magnitudes(&re[t * bins], &im[t * bins], stft.magnitudeNormalization(), magnitude);
            bank_.forward(magnitude, std::span(mel).subspan(t * nMels, nMels));
        }
        for (std::size_t m = 0; m < nMels; ++m) {
            for (std::size_t t = 0; t < count; ++t) {
                const float dB = 20.0F * std::log10(std::max(mel[t * nMels + m], 1.0e-7F));
                image[m * columns + start + t] = Level::toNetwork(dB);
            }
        }
    }
    return image;
}

std::vector<float> FeatureExtractor::linearMagnitude(std::span<const float> imageDB, int frames,
                                                     const STFT& stft) const {
    require(stft.bins() == bank_.bins(), "FeatureExtractor: STFT of another configuration");
    const auto imageSize = static_cast<std::size_t>(checkedMultiply(bank_.nMels(), frames));
    require(frames >= 0 && imageDB.size() >= imageSize, "FeatureExtractor: image too small");
    const auto columns = static_cast<std::size_t>(frames);
    const auto bins = static_cast<std::size_t>(bank_.bins());
    std::vector<float> linear(static_cast<std::size_t>(checkedMultiply(frames, bank_.bins())));
    std::vector<float> column(static_cast<std::size_t>(bank_.nMels()));
    const float scale = 1.0F / stft.magnitudeNormalization();
    for (std::size_t t = 0; t < columns; ++t) {
        for (std::size_t m = 0; m < column.size(); ++m)
            column[m] = std::pow(10.0F, imageDB[m * columns + t] / 20.0F);
        const std::span<float> row = std::span(linear).subspan(t * bins, bins);
        bank_.inverse(column, row);
        for (float& value : row)
            value *= scale;
    }
    return linear;
}

}  // namespace quillmere
