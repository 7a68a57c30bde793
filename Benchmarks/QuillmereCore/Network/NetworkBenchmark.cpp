// The network at the two image sizes the application uses, batch 16. A training run is thousands of steps;
// decoding 16 latents is what a batch of variations costs before rendering.

#include <benchmark/benchmark.h>
#include <hwy/targets.h>

#include <vector>

#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/RNG.h"

namespace {

using namespace quillmere;

constexpr int batch = 16;

ModelConfig configOf(const benchmark::State& state) {
    ModelConfig config;
    config.nMels = state.range(0);
    config.frames = state.range(1);
    config.profile = AnalysisProfile::percussive;
    return config;
}

std::vector<float> noise(std::size_t count) {
    SeededRNG rng(3);
    std::vector<float> values(count);
    for (float& v : values)
        v = rng.signedUniform();
    return values;
}

void trainingStep(benchmark::State& state) {
    const ModelConfig config = configOf(state);
    VAETrainingGraph graph(config, batch, VAEArchitecture::initialWeights(config, 1));
    const auto x = noise(static_cast<std::size_t>(batch * config.nMels * config.frames));
    const auto eps = noise(static_cast<std::size_t>(batch * config.latentDim));
    for (auto _ : state)
        benchmark::DoNotOptimize(graph.step(x, eps, 1e-4F, 0.002F));
    state.counters["images/s"] = benchmark::Counter(batch, benchmark::Counter::kIsIterationInvariantRate);
}

// The same with the kernels of an ordinary desktop processor.
void trainingStepAVX2(benchmark::State& state) {
    if ((hwy::SupportedTargets() & HWY_AVX2) == 0) {
        state.SkipWithError("this processor has no AVX2");
        return;
    }
    hwy::SetSupportedTargetsForTest(HWY_AVX2);
    trainingStep(state);
    hwy::SetSupportedTargetsForTest(0);
}

void encode16(benchmark::State& state) {
    const ModelConfig config = configOf(state);
    VAEInference inference(config, VAEArchitecture::initialWeights(config, 1));
    const std::vector<std::vector<float>> images(
        batch, noise(static_cast<std::size_t>(config.nMels * config.frames)));
    for (auto _ : state)
        benchmark::DoNotOptimize(inference.encode(images));
}

void decode16(benchmark::State& state) {
    const ModelConfig config = configOf(state);
    VAEInference inference(config, VAEArchitecture::initialWeights(config, 1));
    const std::vector<std::vector<float>> latents(batch, noise(static_cast<std::size_t>(config.latentDim)));
    for (auto _ : state)
        benchmark::DoNotOptimize(inference.decode(latents));
}

void applicationSizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"mels", "frames"})
        ->Args({96, 192})
        ->Args({384, 96})
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

BENCHMARK(trainingStep)->Apply(applicationSizes);
BENCHMARK(trainingStepAVX2)->Apply(applicationSizes);
BENCHMARK(encode16)->Apply(applicationSizes);
BENCHMARK(decode16)->Apply(applicationSizes);

}  // namespace
