// The network on a graphics processor, at the two image sizes the application uses, batch 16. The environment
// variable QUILLMERE_BENCHMARK_DEVICE chooses the device as --device does; without it the first real one is
// taken.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Network/GPU.h"
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

// The backend, or nothing and a benchmark that says why.
network::Backend* device(benchmark::State& state) {
    const char* const choice = std::getenv("QUILLMERE_BENCHMARK_DEVICE");
    try {
        GPU::shared().choose(choice != nullptr ? choice : "gpu");
    } catch (const network::DeviceError& error) {
        state.SkipWithError(error.what());
        return nullptr;
    }
    state.SetLabel(GPU::shared().device().name);
    return &GPU::shared().graphDevice();
}

void trainingStep(benchmark::State& state) {
    network::Backend* const backend = device(state);
    if (backend == nullptr) return;
    const ModelConfig config = configOf(state);
    VAETrainingGraph graph(config, batch, VAEArchitecture::initialWeights(config, 1), *backend);
    const auto x = noise(static_cast<std::size_t>(batch * config.nMels * config.frames));
    const auto eps = noise(static_cast<std::size_t>(batch * config.latentDim));
    graph.step(x, eps, 1e-4F, 0.002F);  // some drivers compile at the first use
    for (auto _ : state)
        benchmark::DoNotOptimize(graph.step(x, eps, 1e-4F, 0.002F));
    state.counters["images/s"] = benchmark::Counter(batch, benchmark::Counter::kIsIterationInvariantRate);
}

// What a start costs before the first step: shaders compiled or fetched from the cache, and the recording.
void compileStep(benchmark::State& state) {
    network::Backend* const backend = device(state);
    if (backend == nullptr) return;
    const network::Plan plan = VAEGraphBuilder{configOf(state), batch}.build();
    for (auto _ : state)
        benchmark::DoNotOptimize(backend->compile(plan, network::Purpose::training));
}

void encode16(benchmark::State& state) {
    network::Backend* const backend = device(state);
    if (backend == nullptr) return;
    const ModelConfig config = configOf(state);
    VAEInference inference(config, VAEArchitecture::initialWeights(config, 1), *backend);
    const std::vector<std::vector<float>> images(
        batch, noise(static_cast<std::size_t>(config.nMels * config.frames)));
    benchmark::DoNotOptimize(inference.encode(images));
    for (auto _ : state)
        benchmark::DoNotOptimize(inference.encode(images));
}

void decode16(benchmark::State& state) {
    network::Backend* const backend = device(state);
    if (backend == nullptr) return;
    const ModelConfig config = configOf(state);
    VAEInference inference(config, VAEArchitecture::initialWeights(config, 1), *backend);
    const std::vector<std::vector<float>> latents(batch, noise(static_cast<std::size_t>(config.latentDim)));
    benchmark::DoNotOptimize(inference.decode(latents));
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
BENCHMARK(compileStep)->Apply(applicationSizes);
BENCHMARK(encode16)->Apply(applicationSizes);
BENCHMARK(decode16)->Apply(applicationSizes);

}  // namespace
