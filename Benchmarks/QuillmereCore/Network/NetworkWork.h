#pragma once

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/RNG.h"

// What the benchmarks of the network measure on whichever backend: a training run is thousands of steps;
// decoding 16 latents is what a batch of variations costs before rendering, decoding one what an audition
// does.
namespace quillmere::benchmarks {

inline constexpr int batch = 16;

inline ModelConfig configOf(const benchmark::State& state) {
    ModelConfig config;
    config.nMels = state.range(0);
    config.frames = state.range(1);
    config.profile = AnalysisProfile::percussive;
    return config;
}

inline std::vector<float> noise(std::size_t count) {
    SeededRNG rng(3);
    std::vector<float> values(count);
    for (float& v : values)
        v = rng.signedUniform();
    return values;
}

// Each does its work once before the clock runs: some drivers compile at the first use.

inline void step(benchmark::State& state, network::Backend& backend) {
    const ModelConfig config = configOf(state);
    VAETrainingGraph graph(config, batch, VAEArchitecture::initialWeights(config, 1), backend);
    const auto x = noise(static_cast<std::size_t>(batch * config.nMels * config.frames));
    const auto eps = noise(static_cast<std::size_t>(batch * config.latentDim));
    graph.step(x, eps, 1e-4F, 0.002F);
    for (auto _ : state)
        benchmark::DoNotOptimize(graph.step(x, eps, 1e-4F, 0.002F));
    state.counters["images/s"] = benchmark::Counter(batch, benchmark::Counter::kIsIterationInvariantRate);
}

inline void encode(benchmark::State& state, network::Backend& backend, std::size_t count) {
    const ModelConfig config = configOf(state);
    VAEInference inference(config, VAEArchitecture::initialWeights(config, 1), backend);
    const std::vector<std::vector<float>> images(
        count, noise(static_cast<std::size_t>(config.nMels * config.frames)));
    benchmark::DoNotOptimize(inference.encode(images));
    for (auto _ : state)
        benchmark::DoNotOptimize(inference.encode(images));
}

inline void decode(benchmark::State& state, network::Backend& backend, std::size_t count) {
    const ModelConfig config = configOf(state);
    VAEInference inference(config, VAEArchitecture::initialWeights(config, 1), backend);
    const std::vector<std::vector<float>> latents(count, noise(static_cast<std::size_t>(config.latentDim)));
    benchmark::DoNotOptimize(inference.decode(latents));
    for (auto _ : state)
        benchmark::DoNotOptimize(inference.decode(latents));
}

// The two image sizes that the application uses most; with the environment variable QUILLMERE_BENCHMARK_QUICK
// one tiny size instead, to see that everything works.
inline void imageSizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"mels", "frames"})->UseRealTime()->Unit(benchmark::kMillisecond);
    if (std::getenv("QUILLMERE_BENCHMARK_QUICK") != nullptr) {
        benchmark->Args({32, 32})->Iterations(1);
    } else {
        benchmark->Args({96, 192})->Args({384, 96});
    }
}

}  // namespace quillmere::benchmarks
