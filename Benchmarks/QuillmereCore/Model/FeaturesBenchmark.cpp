// Clip to log-mel image, once per clip and training run; and image to linear magnitudes, once per variation.
// The shapes are those of a percussive and a tonal clip.

#include "QuillmereCore/Model/Features.h"

#include <benchmark/benchmark.h>

#include <vector>

#include "QuillmereCore/Util/RNG.h"

namespace quillmere {
namespace {

ModelConfig configuration(const benchmark::State& state) {
    ModelConfig config;
    config.nFFT = state.range(0);
    config.hop = config.nFFT / 4;
    config.nMels = state.range(1);
    config.frames = state.range(2);
    return config;
}

std::vector<float> noise(std::int64_t count) {
    SeededRNG rng(1);
    std::vector<float> samples(static_cast<std::size_t>(count));
    for (float& sample : samples)
        sample = rng.signedUniform();
    return samples;
}

void features(benchmark::State& state) {
    const FeatureExtractor extractor(configuration(state));
    STFT stft = extractor.makeSTFT();
    const std::vector<float> clip = noise(extractor.config().clipSamples());
    for (auto _ : state)
        benchmark::DoNotOptimize(extractor.features(clip, stft));
}

void linearMagnitude(benchmark::State& state) {
    const FeatureExtractor extractor(configuration(state));
    const STFT stft = extractor.makeSTFT();
    std::vector<float> image = noise(extractor.config().nMels * extractor.config().frames);
    for (float& value : image)
        value = Level::toDB(value);
    const int frames = static_cast<int>(extractor.config().frames);
    for (auto _ : state)
        benchmark::DoNotOptimize(extractor.linearMagnitude(image, frames, stft));
}

BENCHMARK(features)
    ->Name("FeatureExtractor/features")
    ->ArgNames({"nFFT", "nMels", "frames"})
    ->Args({1024, 96, 192})
    ->Args({4096, 384, 96})
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(linearMagnitude)
    ->Name("FeatureExtractor/linearMagnitude")
    ->ArgNames({"nFFT", "nMels", "frames"})
    ->Args({1024, 96, 192})
    ->Args({4096, 384, 96})
    ->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quillmere
