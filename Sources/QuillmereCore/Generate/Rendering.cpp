#include "QuillmereCore/Generate/Rendering.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>

#include "QuillmereCore/DSP/GriffinLim.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::Rendering {
namespace {

// Linear interpolation from values at index and next.
struct Position {
    std::size_t index = 0;
    std::size_t next = 0;
    float fraction = 0;
};

void requireSize(std::span<const float> values, int rows, int cols) {
    require(rows >= 0 && cols >= 0 && values.size() == static_cast<std::size_t>(checkedMultiply(rows, cols)),
            "Rendering: a size does not match its buffer");
}

// out[c] += weight * in[c].
void addScaled(std::span<float> out, const float* in, float weight) {
    for (std::size_t c = 0; c < out.size(); ++c)
        out[c] += weight * in[c];
}

// The row with radius copies of its first and last value on either side.
void extendRow(std::span<const float> row, std::size_t radius, std::vector<float>& extended) {
    extended.assign(radius, row.front());
    extended.insert(extended.end(), row.begin(), row.end());
    extended.insert(extended.end(), radius, row.back());
}

// Taps are added in ascending order for every pixel, a whole row at a time.
std::vector<float> blurTime(std::span<const float> image, std::size_t cols, std::span<const float> taps) {
    const std::size_t radius = taps.size() / 2;
    std::vector<float> out(image.size());
    std::vector<float> extended;
    for (std::size_t start = 0; start < image.size(); start += cols) {
        extendRow(image.subspan(start, cols), radius, extended);
        const auto outRow = std::span(out).subspan(start, cols);
        for (std::size_t j = 0; j < taps.size(); ++j)
            addScaled(outRow, &extended[j], taps[j]);
    }
    return out;
}

std::vector<float> blurFrequency(std::span<const float> image, std::size_t cols,
                                 std::span<const float> taps) {
    const auto radius = static_cast<std::ptrdiff_t>(taps.size() / 2);
    const auto lastRow = static_cast<std::ptrdiff_t>(image.size() / cols) - 1;
    std::vector<float> out(image.size());
    for (std::ptrdiff_t r = 0; r <= lastRow; ++r) {
        const auto outRow = std::span(out).subspan(static_cast<std::size_t>(r) * cols, cols);
        for (std::size_t j = 0; j < taps.size(); ++j) {
            const auto source = std::clamp(r + static_cast<std::ptrdiff_t>(j) - radius,
                                           static_cast<std::ptrdiff_t>(0), lastRow);
            addScaled(outRow, &image[static_cast<std::size_t>(source) * cols], taps[j]);
        }
    }
    return out;
}

std::vector<Position> framePositions(int frames, int newFrames) {
    std::vector<Position> positions(static_cast<std::size_t>(newFrames));
    for (std::size_t t = 0; t < positions.size(); ++t) {
        const float x = static_cast<float>(t) * static_cast<float>(frames) / static_cast<float>(newFrames);
        const auto last = static_cast<std::size_t>(frames - 1);
        const std::size_t index = std::min(last, static_cast<std::size_t>(x));
        positions[t] = {index, std::min(last, index + 1), x - static_cast<float>(index)};
    }
    return positions;
}

// One position per output bin that has a source.
std::vector<Position> binPositions(int bins, float ratio) {
    std::vector<Position> positions;
    for (int k = 0; k < bins; ++k) {
        const float x = static_cast<float>(k) / ratio;
        // The negation also ends at the NaN of 0 / 0; later bins are no lower.
        if (!(x < static_cast<float>(bins - 1))) break;
        const auto index = static_cast<std::size_t>(x);
        positions.push_back({index, index + 1, x - static_cast<float>(index)});
    }
    return positions;
}

}  // namespace

std::vector<float> toDecibels(std::span<const float> image) {
    std::vector<float> dB(image.size());
    std::ranges::transform(image, dB.begin(), [](float value) {
        return std::clamp(Level::toDB(value), Level::floorDB, Level::ceilDB);
    });
    return dB;
}

void applyContrast(std::vector<float>& dB, double contrast) {
    if (contrast == 1 || dB.empty()) return;
    const float pivot = *std::ranges::max_element(dB) - 30.0F;
    const auto factor = static_cast<float>(contrast);
    for (float& value : dB)
        value = std::max((value - pivot) * factor + pivot, Level::floorDB);
}

void applySmear(std::vector<float>& dB, int nMels, int frames, int hop, double smear) {
    if (!(smear > 0)) return;
    const auto amount = static_cast<float>(smear);
    const float sigmaRows = static_cast<float>(nMels) * (2.0F * amount) / 96.0F;
    const float sigmaCols = 6.0F * amount * 256.0F / static_cast<float>(hop);
    dB = blur(dB, nMels, frames, sigmaRows, sigmaCols);
}

void applyGrit(std::vector<float>& dB, double grit) {
    if (!(grit > 0)) return;
    const float step = static_cast<float>(grit) * 24.0F + 0.001F;
    for (float& value : dB)
        value = std::round(value / step) * step;
}

void applyRoughness(std::vector<float>& dB, double roughness, SeededRNG& rng) {
    if (!(roughness > 0)) return;
    const float amplitude = static_cast<float>(roughness) * 8.0F;
    for (float& value : dB) {
        if (value > -99.0F) value += rng.gaussian() * amplitude;
    }
}

void applyTilt(std::vector<float>& dB, int frames, std::span<const float> centers, double tilt) {
    if (tilt == 0) return;
    requireSize(dB, static_cast<int>(centers.size()), frames);
    for (std::size_t b = 0; b < centers.size(); ++b) {
        const float octaves = std::log2(std::max(centers[b], 20.0F) / 1000.0F);
        const float gain = static_cast<float>(tilt) * octaves;
        const auto cols = static_cast<std::size_t>(frames);
        for (float& value : std::span(dB).subspan(b * cols, cols))
            value += gain;
    }
}

int stretchedFrames(int frames, double stretch, double stretchJitter, SeededRNG& rng) {
    constexpr double fewest = 8;
    constexpr double most = 4096;
    const double octaves = rng.signedUniform() * stretchJitter;
    const double stretched = frames * (std::exp2(octaves) * stretch);
    require(std::isfinite(stretched), "Rendering: the stretched frame count is not finite");
    return static_cast<int>(std::clamp(std::round(stretched), fewest, most));
}

std::vector<float> timeStretch(std::span<const float> dB, int nMels, int frames, int newFrames) {
    requireSize(dB, nMels, frames);
    if (newFrames == frames) return {dB.begin(), dB.end()};
    std::vector<float> out(static_cast<std::size_t>(checkedMultiply(nMels, newFrames)), Level::floorDB);
    if (frames == 0) return out;
    const std::vector<Position> positions = framePositions(frames, newFrames);
    auto target = out.begin();
    for (std::size_t start = 0; start < dB.size(); start += static_cast<std::size_t>(frames)) {
        const float* const row = &dB[start];
        for (const Position& at : positions)
            *target++ = row[at.next] * at.fraction + row[at.index] * (1.0F - at.fraction);
    }
    return out;
}

std::vector<float> warpFrequency(std::span<const float> mag, int frames, int bins, double ratio) {
    requireSize(mag, frames, bins);
    const std::vector<Position> positions = binPositions(bins, static_cast<float>(ratio));
    std::vector<float> out(mag.size());
    for (std::size_t start = 0; start < mag.size(); start += static_cast<std::size_t>(bins)) {
        const float* const in = &mag[start];
        float* target = &out[start];
        for (const Position& at : positions)
            *target++ = at.fraction * in[at.next] + (1.0F - at.fraction) * in[at.index];
    }
    return out;
}

std::vector<float> kernel(float sigma) {
    constexpr float widest = 4096;
    if (!(sigma > 0.05F)) return {1.0F};
    const float width = std::min(sigma, widest);
    const auto radius = static_cast<int>(std::ceil(3.0F * width));
    std::vector<float> taps;
    float sum = 0;
    for (int k = -radius; k <= radius; ++k) {
        const auto distance = static_cast<float>(k);
        taps.push_back(std::exp(-(distance * distance) / (2.0F * width * width)));
        sum += taps.back();
    }
    for (float& tap : taps)
        tap /= sum;
    return taps;
}

std::vector<float> blur(std::span<const float> image, int rows, int cols, float sigmaRows, float sigmaCols) {
    requireSize(image, rows, cols);
    std::vector<float> out(image.begin(), image.end());
    if (image.empty()) return out;
    const auto columns = static_cast<std::size_t>(cols);
    if (const auto taps = kernel(sigmaCols); taps.size() >= 2) out = blurTime(out, columns, taps);
    if (const auto taps = kernel(sigmaRows); taps.size() >= 2) out = blurFrequency(out, columns, taps);
    return out;
}

ShapedImage shape(std::span<const float> image, const Aesthetics& aesthetics,
                  const FeatureExtractor& extractor, SeededRNG& rng) {
    const auto nMels = static_cast<int>(extractor.config().nMels);
    const auto frames = static_cast<int>(extractor.config().frames);
    requireSize(image, nMels, frames);
    std::vector<float> dB = toDecibels(image);
    applyContrast(dB, aesthetics.contrast);
    applySmear(dB, nMels, frames, static_cast<int>(extractor.config().hop), aesthetics.smear);
    applyGrit(dB, aesthetics.grit);
    applyRoughness(dB, aesthetics.roughness, rng);
    applyTilt(dB, frames, extractor.bank().centers(), aesthetics.tilt);
    const int newFrames = stretchedFrames(frames, aesthetics.stretch, aesthetics.stretchJitter, rng);
    return {timeStretch(dB, nMels, frames, newFrames), newFrames};
}

double pitchRatio(const Aesthetics& aesthetics, SeededRNG& rng) {
    const double semitones = rng.signedUniform() * aesthetics.pitchJitter + aesthetics.pitch;
    // Closer than a hundredth of a semitone is in tune.
    return std::abs(semitones) > 0.01 ? std::exp2(semitones / 12.0) : 1.0;
}

std::vector<float> magnitude(const ShapedImage& shaped, const Aesthetics& aesthetics,
                             const FeatureExtractor& extractor, const STFT& stft, SeededRNG& rng) {
    std::vector<float> mag = extractor.linearMagnitude(shaped.dB, shaped.frames, stft);
    const double ratio = pitchRatio(aesthetics, rng);
    if (ratio != 1) mag = warpFrequency(mag, shaped.frames, stft.bins(), ratio);
    return mag;
}

std::vector<float> waveform(std::span<const float> image, const Aesthetics& aesthetics,
                            const FeatureExtractor& extractor, STFT& stft, SeededRNG& rng) {
    constexpr float momentum = 0.99F;
    const ShapedImage shaped = shape(image, aesthetics, extractor, rng);
    const std::vector<float> mag = magnitude(shaped, aesthetics, extractor, stft, rng);
    const long long length = checkedMultiply(extractor.config().hop, shaped.frames);
    return GriffinLim::reconstruct(mag, shaped.frames, length, roundedCount(aesthetics.phaseIterations), stft,
                                   rng, momentum);
}

}  // namespace quillmere::Rendering
