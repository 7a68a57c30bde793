// The network on the processor.

#include <benchmark/benchmark.h>
#include <hwy/targets.h>

#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/NetworkWork.h"

namespace {

using namespace quillmere;
using benchmarks::imageSizes;

network::Backend& processor() {
    static const std::unique_ptr<network::Backend> backend = network::makeCPUBackend();
    return *backend;
}

void trainingStep(benchmark::State& state) {
    benchmarks::step(state, processor());
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
    benchmarks::encode(state, processor(), benchmarks::batch);
}

void decode16(benchmark::State& state) {
    benchmarks::decode(state, processor(), benchmarks::batch);
}

void decode1(benchmark::State& state) {
    benchmarks::decode(state, processor(), 1);
}

BENCHMARK(trainingStep)->Apply(imageSizes);
BENCHMARK(trainingStepAVX2)->Apply(imageSizes);
BENCHMARK(encode16)->Apply(imageSizes);
BENCHMARK(decode16)->Apply(imageSizes);
BENCHMARK(decode1)->Apply(imageSizes);

}  // namespace
