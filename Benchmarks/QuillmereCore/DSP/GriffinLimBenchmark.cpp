// One phase reconstruction, the largest part of the time a variation takes. The two cases are a clip of each
// analysis profile (fine in time and fine in frequency); 48 passes are the default.

#include "QuillmereCore/DSP/GriffinLim.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "QuillmereCore/Util/Parallel.h"

namespace quillmere {
namespace {

// A decaying sound with formants that move slowly, and some noise.
std::vector<float> decayingSpectrogram(int frames, int bins) {
    SeededRNG rng(3);
    std::vector<float> mag;
    for (int t = 0; t < frames; ++t) {
        const float level = std::exp(-0.02F * static_cast<float>(t));
        for (int k = 0; k < bins; ++k) {
            const float angle = 0.05F * static_cast<float>(k) + 0.01F * static_cast<float>(t);
            mag.push_back(level * (0.1F + std::abs(std::sin(angle))) * (1 + rng.uniform()));
        }
    }
    return mag;
}

void reconstruct(benchmark::State& state) {
    const int nFFT = static_cast<int>(state.range(0));
    const int frames = static_cast<int>(state.range(1));
    const long long passes = state.range(2);
    STFT stft(nFFT, nFFT / 4);
    const std::vector<float> mag = decayingSpectrogram(frames, stft.bins());
    const long long length = static_cast<long long>(frames) * stft.hop();
    const FlushDenormals flush;  // as generation does
    for (auto _ : state) {
        SeededRNG rng(7);
        benchmark::DoNotOptimize(GriffinLim::reconstruct(mag, frames, length, passes, stft, rng, 0.99F));
    }
}

BENCHMARK(reconstruct)
    ->Name("GriffinLim/reconstruct")
    ->ArgNames({"nFFT", "frames", "passes"})
    ->Args({1024, 192, 48})
    ->Args({1024, 192, 0})
    ->Args({4096, 96, 48})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quillmere
