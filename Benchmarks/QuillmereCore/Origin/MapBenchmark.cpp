// The map of a large corpus: what somebody waits for who opens it, and what each place costs that is tried on
// it. Latent vectors of the usual size, normally distributed with different spreads, as a trained model's
// are.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>
#include <vector>

#include "QuillmereCore/Origin/MapPicture.h"
#include "QuillmereCore/Util/RNG.h"

namespace {

using namespace quillmere;

std::vector<std::vector<float>> latents(std::size_t count, std::size_t dim) {
    SeededRNG rng(1);
    std::vector<std::vector<float>> all(count, std::vector<float>(dim));
    for (std::vector<float>& latent : all) {
        for (std::size_t i = 0; i < dim; ++i)
            latent[i] = rng.gaussian() / static_cast<float>(1 + i % 9);
    }
    return all;
}

void compute(benchmark::State& state) {
    const auto dim = static_cast<std::size_t>(state.range(1));
    const auto all = latents(static_cast<std::size_t>(state.range(0)), dim);
    for (auto _ : state)
        benchmark::DoNotOptimize(LatentMap(all, dim));
}
BENCHMARK(compute)->Args({100, 64})->Args({20'000, 64})->Args({20'000, 256})->Unit(benchmark::kMillisecond);

void blendAt(benchmark::State& state) {
    const LatentMap map(latents(20'000, 64), 64);
    for (auto _ : state)
        benchmark::DoNotOptimize(map.blendAt({0.3, -0.2}));
}
BENCHMARK(blendAt)->Unit(benchmark::kMillisecond);

void draw(benchmark::State& state) {
    const LatentMap map(latents(20'000, 64), 64);
    const std::vector<std::string> names(20'000, "Kicks/Kick 03 (long).wav");
    for (auto _ : state)
        benchmark::DoNotOptimize(mapPicture(map, names, "Kicks"));
}
BENCHMARK(draw)->Unit(benchmark::kMillisecond);

}  // namespace
