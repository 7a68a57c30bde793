// The ten nearest of 20,000 sounds, exactly, on one core: what somebody waits for who asks what a sound is
// like, once the index is loaded. The sounds are decaying hits of 30 to 140 frames in clusters, with noise on
// every level; the query is one of the clusters' own or none of them. The whole comparison is what the bound
// saves.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "QuillmereCore/Origin/SoundPrint.h"
#include "QuillmereCore/Util/RNG.h"

namespace {

using namespace quillmere;

constexpr std::size_t sounds = 20'000;
constexpr std::uint64_t clusters = 200;
constexpr std::size_t nearestCount = 10;

SoundPrint hit(std::uint64_t cluster, SeededRNG& rng) {
    SeededRNG kind(cluster);
    const float centre = 64 * kind.uniform();
    const float width = 0.5F + 2 * kind.uniform();
    const float slope = 0.5F + 3 * kind.uniform();
    const auto frames = static_cast<std::size_t>(30 + kind.intBelow(100) + rng.intBelow(10));
    const float shift = rng.gaussian();
    SoundPrint print{std::vector<std::uint8_t>(frames * SoundPrint::bands)};
    for (std::size_t frame = 0; frame < frames; ++frame) {
        for (std::size_t band = 0; band < SoundPrint::bands; ++band) {
            const float level = SoundPrint::top - slope * static_cast<float>(frame) -
                                width * std::abs(static_cast<float>(band) - centre - shift) +
                                6 * rng.gaussian();
            print.levels[frame * SoundPrint::bands + band] =
                static_cast<std::uint8_t>(std::clamp(level, 1.0F, static_cast<float>(SoundPrint::top)));
        }
    }
    return print;
}

const std::vector<SoundPrint>& corpus() {
    static const std::vector<SoundPrint> prints = [] {
        SeededRNG rng(1);
        std::vector<SoundPrint> made;
        for (std::size_t i = 0; i < sounds; ++i)
            made.push_back(hit(i % clusters, rng));
        return made;
    }();
    return prints;
}

void query(benchmark::State& state, std::uint64_t cluster) {
    const SoundIndex index(corpus());
    SeededRNG rng(2);
    const SoundPrint sound = hit(cluster, rng);
    for (auto _ : state)
        benchmark::DoNotOptimize(index.nearest(sound, nearestCount));
}
BENCHMARK_CAPTURE(query, ofACluster, 7)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(query, ofNone, clusters + 7)->Unit(benchmark::kMillisecond);

void compareWithAll(benchmark::State& state) {
    SeededRNG rng(2);
    const SoundPrint sound = hit(7, rng);
    for (auto _ : state) {
        double nearest = 80;
        for (const SoundPrint& print : corpus())
            nearest = std::min(nearest, distance(sound, print));
        benchmark::DoNotOptimize(nearest);
    }
}
BENCHMARK(compareWithAll)->Unit(benchmark::kMillisecond);

void load(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(SoundIndex(corpus()));
}
BENCHMARK(load)->Unit(benchmark::kMillisecond);

}  // namespace
