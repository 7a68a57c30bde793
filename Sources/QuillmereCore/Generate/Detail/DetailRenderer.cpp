#include "QuillmereCore/Generate/Detail/DetailRenderer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "QuillmereCore/DSP/PhaseIntegration.h"
#include "QuillmereCore/Generate/Detail/Donor.h"
#include "QuillmereCore/Generate/Detail/FineStructure.h"
#include "QuillmereCore/Generate/Rendering.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere::Detail {
namespace {

using PhaseIntegration::Phase;

// Frames that are worked on at once: their spectra stay in the cache.
constexpr std::size_t chunkFrames = 16;
// Frames whose phases the sources give: the waveform of the attack.
constexpr std::size_t knownFrames = attackPace;
constexpr int refinements = 8;
constexpr double farthestRatio = 16;  // four octaves

// Uniform over the circle.
std::vector<Phase> drawPhases(std::size_t count, SeededRNG& rng) {
    constexpr float smallestPerTurn = 4294967296.0F;
    std::vector<Phase> phases(count);
    // A uniform value is a multiple of 2^-24, so nothing is rounded.
    for (Phase& phase : phases)
        phase = static_cast<Phase>(rng.uniform() * smallestPerTurn);
    return phases;
}

// Linear band levels [frames][bands] of an image [bands][frames] in dB.
std::vector<float> levelsOf(const Rendering::ShapedImage& shaped, std::size_t bands, float scale) {
    const auto frames = static_cast<std::size_t>(shaped.frames);
    std::vector<float> linear(shaped.dB.size());
    fromDecibels(shaped.dB, scale, linear);
    std::vector<float> levels(linear.size());
    for (std::size_t band = 0; band < bands; ++band) {
        for (std::size_t t = 0; t < frames; ++t)
            levels[t * bands + band] = linear[band * frames + t];
    }
    return levels;
}

// By how much the fine structure of noise counts at each bin: below 400 Hz, where partials stand apart, it is
// foreign to most sounds.
std::vector<float> shareOfNoise(std::size_t bins, double binHz) {
    std::vector<float> share(bins);
    for (std::size_t k = 1; k < bins; ++k) {
        const double octaves = std::log2(static_cast<double>(k) * binHz / 400.0);
        share[k] = static_cast<float>(std::clamp(octaves / 2, 0.0, 1.0));
    }
    return share;
}

// The spectrum of the donor at the frames of a variation.
struct DonorFrames {
    std::vector<float> magnitudes;  // [frames][bins]
    std::vector<float> levels;      // [frames][bands]
    float loudest = 0;              // of the levels
    std::vector<Phase> phases;      // of the first knownFrames, [..][bins]
    bool isNoise = false;           // whether only a share of its fine structure counts
};

// One variation at work.
class Variation {
public:
    // shareOfNoise: of the fine structure of noise at each bin. Keeps all it is given by reference.
    Variation(BandMaps& maps, STFT& stft, std::span<const float> shareOfNoise, std::size_t frames)
        : maps_(maps),
          stft_(stft),
          share_(shareOfNoise),
          frames_(frames),
          bins_(maps.bins()),
          bands_(maps.bands()) {}

    [[nodiscard]] DonorFrames analyse(std::span<const float> donor, std::span<const long long> centres) {
        DonorFrames found;
        found.magnitudes.resize(frames_ * bins_);
        found.levels.resize(frames_ * bands_);
        std::vector<float> re(chunkFrames * bins_);
        std::vector<float> im(chunkFrames * bins_);
        for (std::size_t t = 0; t < frames_; t += chunkFrames) {
            const std::size_t count = std::min(chunkFrames, frames_ - t);
            stft_.forwardAt(donor, centres.subspan(t, count), re, im);
            for (std::size_t i = 0; i < count; ++i) {
                // No band covers DC and Nyquist.
                for (const std::size_t edge : {i * bins_, (i + 1) * bins_ - 1})
                    re[edge] = im[edge] = 0;
            }
            const auto magnitudes = std::span(found.magnitudes).subspan(t * bins_, count * bins_);
            Detail::magnitudes(std::span(re).first(count * bins_), std::span(im).first(count * bins_),
                               magnitudes);
            maps_.forward(magnitudes, std::span(found.levels).subspan(t * bands_, count * bands_));
            if (t > 0) continue;
            for (std::size_t i = 0; i < std::min(knownFrames, count) * bins_; ++i)
                found.phases.push_back(PhaseIntegration::phaseOf(re[i], im[i]));
        }
        found.loudest = std::ranges::max(found.levels);
        return found;
    }

    // Whether the donor is silent where the variation sounds: then it has no fine structure to give. levels:
    // [frames][bands], wanted.
    [[nodiscard]] bool outlasts(std::span<const float> levels, const DonorFrames& donor) const {
        constexpr float audible = 3.2e-3F;  // -50 dB of the loudest
        constexpr float silent = 3.2e-4F;   // -70 dB
        const float least = audible * std::ranges::max(levels);
        const float most = silent * donor.loudest;
        for (std::size_t i = 0; i < levels.size(); ++i) {
            if (levels[i] > least && donor.levels[i] <= most) return true;
        }
        return false;
    }

    // Turns the donor's magnitudes into those of the variation. noise: as long, takes the donor's place where
    // that is silent; null for none. levels: [frames][bands], wanted; for another pitch on return those that
    // it leads to. Fills known() and leaves the magnitudes where the donor's were.
    void shape(DonorFrames& donor, const DonorFrames* noise, std::span<float> levels, double ratio,
               float amount) {
        std::vector<float> wanted(chunkFrames * bins_);
        std::vector<float> envelope(chunkFrames * bins_);
        std::vector<float> trust(chunkFrames * bins_);
        std::vector<float> bandTrust(chunkFrames * bands_);
        for (std::size_t t = 0; t < frames_; t += chunkFrames) {
            const std::size_t count = std::min(chunkFrames, frames_ - t);
            const auto ofBins = [&](std::vector<float>& chunk) {
                return std::span(chunk).first(count * bins_);
            };
            const auto levelsHere = levels.subspan(t * bands_, count * bands_);
            spread(levelsHere, ratio, wanted, count);
            const auto donorLevels = std::span(donor.levels).subspan(t * bands_, count * bands_);
            const auto trustHere = std::span(bandTrust).first(count * bands_);
            trustOf(donorLevels, donor.loudest, trustHere);
            maps_.inverse(trustHere, ofBins(trust));
            maps_.inverse(donorLevels, ofBins(envelope));
            if (t == 0) noteKnown(trust, count, donor.phases.size());
            if (donor.isNoise) scaleByShare(ofBins(trust));
            const auto magnitudes = std::span(donor.magnitudes).subspan(t * bins_, count * bins_);
            applyFineStructure(ofBins(wanted), magnitudes, ofBins(envelope), ofBins(trust), amount);
            if (noise) {
                for (float& value : ofBins(trust))
                    value = 1 - std::clamp(value, 0.0F, 1.0F);
                scaleByShare(ofBins(trust));
                maps_.inverse(std::span(noise->levels).subspan(t * bands_, count * bands_), ofBins(envelope));
                applyFineStructure(ofBins(wanted),
                                   std::span(noise->magnitudes).subspan(t * bins_, count * bins_),
                                   ofBins(envelope), ofBins(trust), amount);
            }
            maps_.refine(ofBins(wanted), levelsHere, refinements);
            std::ranges::copy(ofBins(wanted), magnitudes.begin());
        }
    }

    // Whether the donor gives the phase of each bin of the first frames.
    [[nodiscard]] std::span<const std::uint8_t> known() const { return known_; }

private:
    // Smooth magnitudes for the levels, at another pitch if ratio says so.
    void spread(std::span<float> levels, double ratio, std::vector<float>& magnitudes, std::size_t count) {
        const auto here = std::span(magnitudes).first(count * bins_);
        maps_.inverse(levels, here);
        if (ratio == 1) return;
        maps_.refine(here, levels, refinements);
        std::ranges::copy(
            Rendering::warpFrequency(here, static_cast<int>(count), static_cast<int>(bins_), ratio),
            here.begin());
        maps_.forward(here, levels);
    }

    void scaleByShare(std::span<float> values) const {
        for (std::size_t i = 0; i < values.size(); ++i)
            values[i] *= share_[i % bins_];
    }

    void noteKnown(std::span<const float> trust, std::size_t count, std::size_t size) {
        constexpr float enough = 0.5F;
        known_.clear();
        for (std::size_t i = 0; i < std::min(count * bins_, size); ++i)
            known_.push_back(trust[i] > enough ? 1 : 0);
    }

    BandMaps& maps_;
    STFT& stft_;
    std::span<const float> share_;
    std::size_t frames_;
    std::size_t bins_;
    std::size_t bands_;
    std::vector<std::uint8_t> known_;
};

}  // namespace

DetailRenderer::DetailRenderer(const FeatureExtractor& extractor)
    : extractor_(extractor),
      maps_(extractor.bank()),
      attack_(AttackFrames::forHop(extractor.config().hop)),
      shareOfNoise_(shareOfNoise(maps_.bins(), static_cast<double>(extractor.config().sampleRate) /
                                                   static_cast<double>(extractor.config().nFFT))) {}

std::vector<float> DetailRenderer::waveform(std::span<const float> image, const Aesthetics& aesthetics,
                                            const Settings& settings, STFT& stft, SeededRNG& rng) {
    const Rendering::ShapedImage shaped =
        Rendering::shape(sharpened(image, settings), aesthetics, extractor_, rng);
    const double ratio = Rendering::pitchRatio(aesthetics, rng);
    SeededRNG noise(rng.s[0]);  // a stream of its own, so that the draws from rng stay in their places
    const auto frames = static_cast<std::size_t>(shaped.frames);
    std::vector<Phase> phases = drawPhases(frames * maps_.bins(), rng);
    std::vector<float> levels = levelsOf(shaped, maps_.bands(), 1.0F / stft.magnitudeNormalization());

    // Parameters may lie far beyond the sliders, and a donor that is read very slowly is very long.
    const double donorRatio = std::clamp(ratio, 1 / farthestRatio, farthestRatio);
    const double length = static_cast<double>(extractor_.config().clipSamples()) / donorRatio;
    Variation variation(maps_, stft, shareOfNoise_, frames);
    const std::vector<float> sound = donorAt(donorRatio, settings, noise);
    DonorFrames donor = variation.analyse(sound, donorCentres(shaped.frames, stft.hop(), length, noise));
    donor.isNoise = settings.sources == nullptr;
    std::optional<DonorFrames> instead;
    if (!donor.isNoise && variation.outlasts(levels, donor)) {
        const std::vector<float> all = hiss(checkedMultiply(stft.hop(), shaped.frames), noise);
        instead = variation.analyse(
            all, donorCentres(shaped.frames, stft.hop(), static_cast<double>(all.size()), noise));
    }
    variation.shape(donor, instead ? &*instead : nullptr, levels, ratio, settings.amount);

    const std::span<const std::uint8_t> known =
        settings.sources ? variation.known() : std::span<const std::uint8_t>();
    for (std::size_t i = 0; i < known.size(); ++i) {
        if (known[i] != 0) phases[i] = donor.phases[i];
    }
    PhaseIntegration::integrate(donor.magnitudes, {shaped.frames, stft.nFFT(), stft.hop()}, known, phases);
    std::vector<float> re(donor.magnitudes.size());
    std::vector<float> im(donor.magnitudes.size());
    PhaseIntegration::toSpectrum(donor.magnitudes, phases, re, im);
    return stft.inverse(re, im, shaped.frames, checkedMultiply(stft.hop(), shaped.frames));
}

// The image with the attack and the tails of its sources.
std::vector<float> DetailRenderer::sharpened(std::span<const float> image, const Settings& settings) const {
    const auto columns = static_cast<std::size_t>(extractor_.config().frames);
    std::vector<float> result(image.begin(), image.end());
    if (settings.sources) applyAttack(result, columns, attack_, settings.sources->course, settings.amount);
    if (settings.tail) settings.tail->apply(result, columns, settings.amount);
    return result;
}

std::vector<float> DetailRenderer::donorAt(double ratio, const Settings& settings, SeededRNG& noise) const {
    const ModelConfig& config = extractor_.config();
    std::vector<float> donor = settings.sources
                                   ? settings.sources->donor
                                   : syntheticDonor(static_cast<std::size_t>(config.clipSamples()),
                                                    static_cast<int>(config.sampleRate), noise);
    return ratio == 1 ? donor : readFaster(donor, ratio);
}

}  // namespace quillmere::Detail
