// One variation of 320 frames from its decoded image to unfinished samples, the usual way and with detail,
// and what the steps of the latter cost: with detail a variation should take no longer than without.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "QuillmereCore/DSP/BandMaps.h"
#include "QuillmereCore/DSP/PhaseIntegration.h"
#include "QuillmereCore/Generate/Detail/DetailRenderer.h"
#include "QuillmereCore/Generate/Rendering.h"
#include "QuillmereCore/Util/Parallel.h"

namespace {

using namespace quillmere;

ModelConfig configOf(AnalysisProfile profile) {
    ModelConfig config = ModelConfig::forSeconds(44100, 1.8, profile, 64);
    if (profile == AnalysisProfile::percussive) config.frames = 320;
    return config;
}

// A drum: noise and a falling tone that die away. tau: seconds.
std::vector<float> drum(const ModelConfig& config, double tau) {
    SeededRNG rng(5);
    std::vector<float> samples(static_cast<std::size_t>(config.clipSamples()));
    for (std::size_t n = 0; n < samples.size(); ++n) {
        const double time = static_cast<double>(n) / static_cast<double>(config.sampleRate);
        const double tone = std::sin(2 * 3.141592653589793 * 90 * time);
        const double noise = rng.signedUniform();
        samples[n] = static_cast<float>(std::exp(-time / tau) * (0.6 * tone + 0.4 * noise));
    }
    return samples;
}

// What a variation needs.
struct Scene {
    Scene(AnalysisProfile profile, double tau) : config(configOf(profile)), extractor(config) {
        material.donor = drum(config, tau);
        image = extractor.features(material.donor, stft);
        const auto attack = Detail::AttackFrames::forHop(config.hop);
        material.course.resize(static_cast<std::size_t>(config.nMels) * attack.count());
        Detail::addCourse(image, static_cast<std::size_t>(config.frames), attack, 1, material.course);
    }

    ModelConfig config;
    FeatureExtractor extractor;
    STFT stft = extractor.makeSTFT();
    Detail::SourceMaterial material;
    std::vector<float> image;
};

void usual(benchmark::State& state, AnalysisProfile profile, double tau) {
    const FlushDenormals flush;
    Scene scene(profile, tau);
    for (auto _ : state) {
        SeededRNG rng(9);
        benchmark::DoNotOptimize(Rendering::waveform(scene.image, {}, scene.extractor, scene.stft, rng));
    }
}

void detailed(benchmark::State& state, AnalysisProfile profile, double tau, bool withSources) {
    const FlushDenormals flush;
    Scene scene(profile, tau);
    Detail::DetailRenderer renderer(scene.extractor);
    const Detail::DetailRenderer::Settings settings{1, withSources ? &scene.material : nullptr, nullptr};
    for (auto _ : state) {
        SeededRNG rng(9);
        benchmark::DoNotOptimize(renderer.waveform(scene.image, {}, settings, scene.stft, rng));
    }
}

void phases(benchmark::State& state, AnalysisProfile profile, double tau) {
    const FlushDenormals flush;
    Scene scene(profile, tau);
    const auto frames = static_cast<int>(scene.config.frames);
    const STFT::Spectrum spectrum = scene.stft.forward(scene.material.donor, frames);
    std::vector<float> mag(spectrum.re.size());
    for (std::size_t i = 0; i < mag.size(); ++i)
        mag[i] = std::hypot(spectrum.re[i], spectrum.im[i]);
    std::vector<PhaseIntegration::Phase> found(mag.size());
    for (auto _ : state) {
        PhaseIntegration::integrate(mag, {frames, scene.stft.nFFT(), scene.stft.hop()}, {}, found);
        benchmark::DoNotOptimize(found.data());
    }
}

void refinement(benchmark::State& state, AnalysisProfile profile) {
    const FlushDenormals flush;
    Scene scene(profile, 0.2);
    BandMaps maps(scene.extractor.bank());
    const auto frames = static_cast<std::size_t>(scene.config.frames);
    const std::vector<float> levels(frames * maps.bands(), 0.5F);
    std::vector<float> spectra(frames * maps.bins(), 0.7F);
    for (auto _ : state) {
        maps.refine(spectra, levels, 8);
        benchmark::DoNotOptimize(spectra.data());
    }
}

// A short drum and one of which all bins are in range.
constexpr double shortDrum = 0.08;
constexpr double longDrum = 1.0;
constexpr auto percussive = AnalysisProfile::percussive;
constexpr auto tonal = AnalysisProfile::tonal;

BENCHMARK_CAPTURE(usual, percussive, percussive, shortDrum)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(detailed, percussive, percussive, shortDrum, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(detailed, percussiveLong, percussive, longDrum, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(detailed, percussiveNoise, percussive, shortDrum, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(usual, tonal, tonal, longDrum)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(detailed, tonal, tonal, longDrum, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(phases, percussive, percussive, shortDrum)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(phases, percussiveLong, percussive, longDrum)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(refinement, percussive, percussive)->Unit(benchmark::kMillisecond);

}  // namespace
