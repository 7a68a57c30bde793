// What this machine's processors can do at most: fused multiply-adds on registers. The share of it that a
// training step reaches tells how good the kernels are, whatever the machine.

#include <benchmark/benchmark.h>

#include <cstdint>

#define HWY_TARGET_INCLUDE "QuillmereCore/Network/PeakBenchmark.cpp"
#include "QuillmereCore/Util/VectorTargets.h"

HWY_BEFORE_NAMESPACE();
namespace quillmere::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Twelve sums: enough to keep two units with a latency of four or five cycles busy, few enough for sixteen
// registers. Returns the number of operations.
std::int64_t multiplyAdds(std::int64_t rounds, float* result) {
    const hn::ScalableTag<float> d;
    const auto factor = hn::Set(d, 0.999F);
    const auto term = hn::Set(d, 0.001F);
    constexpr int sums = 12;
    decltype(hn::Zero(d)) sum[sums];
#pragma GCC unroll 16
    for (int i = 0; i < sums; ++i)
        sum[i] = hn::Set(d, static_cast<float>(i));
    for (std::int64_t round = 0; round < rounds; ++round) {
#pragma GCC unroll 16
        for (auto& value : sum)
            value = hn::MulAdd(value, factor, term);
    }
    auto total = hn::Zero(d);
#pragma GCC unroll 16
    for (const auto& value : sum)
        total = hn::Add(total, value);
    *result = hn::GetLane(hn::SumOfLanes(d, total));
    return 2 * rounds * sums * static_cast<std::int64_t>(hn::Lanes(d));
}

}  // namespace quillmere::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace quillmere {
namespace {

HWY_EXPORT(multiplyAdds);

void peak(benchmark::State& state) {
    double operations = 0;
    for (auto _ : state) {
        float result = 0;
        operations += static_cast<double>(HWY_DYNAMIC_DISPATCH(multiplyAdds)(100'000, &result));
        benchmark::DoNotOptimize(result);
    }
    state.counters["FLOPS"] = benchmark::Counter(operations, benchmark::Counter::kIsRate);
}

BENCHMARK(peak)->Threads(1)->Threads(2)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quillmere
#endif
