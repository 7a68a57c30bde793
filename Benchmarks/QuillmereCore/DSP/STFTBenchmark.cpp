// Transforms of one clip: 192 frames, a quarter of a frame apart, at the frame lengths of the analysis
// profiles. Every clip of a corpus takes one forward transform. s_frame is the time per frame.

#include "QuillmereCore/DSP/STFT.h"

#include <benchmark/benchmark.h>

#include <vector>

#include "QuillmereCore/Util/RNG.h"

namespace quillmere {
namespace {

constexpr int frames = 192;

std::vector<float> noise(std::size_t count) {
    SeededRNG rng(1);
    std::vector<float> samples(count);
    for (float& sample : samples)
        sample = rng.signedUniform();
    return samples;
}

void countFrames(benchmark::State& state) {
    state.counters["s_frame"] = benchmark::Counter(static_cast<double>(state.iterations()) * frames,
                                                   benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void forward(benchmark::State& state) {
    const int nFFT = static_cast<int>(state.range(0));
    STFT stft(nFFT, nFFT / 4);
    const std::vector<float> signal = noise(std::size_t{frames} * static_cast<std::size_t>(stft.hop()));
    STFT::Spectrum spectrum = stft.forward(signal, frames);
    for (auto _ : state) {
        stft.forward(signal, frames, spectrum.re, spectrum.im);
        benchmark::ClobberMemory();
    }
    countFrames(state);
}

void inverse(benchmark::State& state) {
    const int nFFT = static_cast<int>(state.range(0));
    STFT stft(nFFT, nFFT / 4);
    const std::vector<float> signal = noise(std::size_t{frames} * static_cast<std::size_t>(stft.hop()));
    const STFT::Spectrum spectrum = stft.forward(signal, frames);
    const auto length = static_cast<long long>(signal.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(stft.inverse(spectrum.re, spectrum.im, frames, length));
    countFrames(state);
}

// One is made per clip and per variation.
void construction(benchmark::State& state) {
    const int nFFT = static_cast<int>(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(STFT(nFFT, nFFT / 4));
}

BENCHMARK(forward)
    ->Name("STFT/forward")
    ->Arg(512)
    ->Arg(1024)
    ->Arg(2048)
    ->Arg(4096)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(inverse)
    ->Name("STFT/inverse")
    ->Arg(512)
    ->Arg(1024)
    ->Arg(2048)
    ->Arg(4096)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(construction)->Name("STFT/construction")->Arg(1024)->Arg(4096)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace quillmere
