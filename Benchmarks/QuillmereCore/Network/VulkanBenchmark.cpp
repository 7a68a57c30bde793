// The network on a graphics processor. The environment variable QUILLMERE_BENCHMARK_DEVICE chooses the device
// as --device does; without it the first real one is taken.

#include <benchmark/benchmark.h>

#include <cstdlib>

#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Network/NetworkWork.h"

namespace {

using namespace quillmere;
using benchmarks::imageSizes;

// Measures on the device, or says why it cannot.
template <typename Measure>
void onDevice(benchmark::State& state, Measure measure) {
    const char* const choice = std::getenv("QUILLMERE_BENCHMARK_DEVICE");
    try {
        network::ChosenDevice device(
            GPU::shared().machine(), network::DeviceChoice::fromOption(choice != nullptr ? choice : "gpu"),
            network::ChosenDevice::Otherwise::fail,
            {.opened = {}, .processorStandsIn = [&state](const std::string& message) {
                 state.SkipWithError(message.c_str());
             }});
        state.SetLabel(device.device().name());
        measure(device.backend());
    } catch (const network::DeviceError& error) {
        state.SkipWithError(error.what());
    }
}

void trainingStep(benchmark::State& state) {
    onDevice(state, [&](network::Backend& backend) { benchmarks::step(state, backend); });
}

// What a start costs before the first step: shaders compiled or fetched from the cache, and the recording.
void compileStep(benchmark::State& state) {
    onDevice(state, [&](network::Backend& backend) {
        const network::Plan plan = VAEGraphBuilder{benchmarks::configOf(state), benchmarks::batch}.build();
        for (auto _ : state)
            benchmark::DoNotOptimize(backend.compile(plan, network::Purpose::training));
    });
}

void encode16(benchmark::State& state) {
    onDevice(state,
             [&](network::Backend& backend) { benchmarks::encode(state, backend, benchmarks::batch); });
}

void decode16(benchmark::State& state) {
    onDevice(state,
             [&](network::Backend& backend) { benchmarks::decode(state, backend, benchmarks::batch); });
}

void decode1(benchmark::State& state) {
    onDevice(state, [&](network::Backend& backend) { benchmarks::decode(state, backend, 1); });
}

BENCHMARK(trainingStep)->Apply(imageSizes);
BENCHMARK(compileStep)->Apply(imageSizes);
BENCHMARK(encode16)->Apply(imageSizes);
BENCHMARK(decode16)->Apply(imageSizes);
BENCHMARK(decode1)->Apply(imageSizes);

}  // namespace
