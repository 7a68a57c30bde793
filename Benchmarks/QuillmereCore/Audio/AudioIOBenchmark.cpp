// Opening, decoding, measuring, converting and writing short samples: what reading a corpus and storing a
// variation cost per file. The decoded files are the tests' fixtures, a tenth of a second each or less, so
// opening takes most of the time, as it does with a folder of drum hits.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Util/RNG.h"

namespace {

using namespace quillmere;

constexpr const char* files[] = {
    "pcm16-mono.wav",     "pcm24-stereo.wav", "pcm16-stereo.aif",   "flac16-mono.flac",
    "flac24-stereo.flac", "cbr-mono.mp3",     "vbr-stereo.mp3",     "edit-list-mono.m4a",
    "alac16-mono.m4a",    "adts-mono.aac",    "pcm16le-stereo.caf", "aac-mono.caf",
};

std::filesystem::path fixture(const std::string& name) {
    return std::filesystem::path(QUILLMERE_TESTS_DIR) / "Data/Audio" / name;
}

std::vector<float> noise(std::size_t count) {
    SeededRNG rng(1);
    std::vector<float> samples(count);
    for (float& sample : samples)
        sample = 0.9F * rng.signedUniform();
    return samples;
}

void decode(benchmark::State& state, const std::string& name) {
    const std::filesystem::path file = fixture(name);
    for (auto _ : state)
        benchmark::DoNotOptimize(AudioIO::readMono(file));
    state.counters["files/s"] = benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate);
}

void measure(benchmark::State& state, const std::string& name) {
    const std::filesystem::path file = fixture(name);
    for (auto _ : state)
        benchmark::DoNotOptimize(AudioIO::info(file));
    state.counters["files/s"] = benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate);
}

// One second between the two usual rates.
void resample(benchmark::State& state) {
    const auto from = static_cast<double>(state.range(0));
    const auto to = static_cast<double>(state.range(1));
    const std::vector<float> samples = noise(static_cast<std::size_t>(from));
    for (auto _ : state)
        benchmark::DoNotOptimize(AudioIO::resample(samples, from, to));
    state.counters["audio_s/s"] = benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate);
}

// One second, replacing the file each time.
void write(benchmark::State& state, OutputFormat format) {
    const std::filesystem::path file = std::filesystem::temp_directory_path() /
                                       ("quillmere-benchmark-" + std::to_string(::getpid()) + ".wav");
    const std::vector<float> samples = noise(44100);
    for (auto _ : state)
        AudioIO::write(samples, file, 44100, format);
    std::filesystem::remove(file);
    state.counters["audio_s/s"] = benchmark::Counter(1, benchmark::Counter::kIsIterationInvariantRate);
}

const bool registered = [] {
    for (const char* file : files) {
        benchmark::RegisterBenchmark((std::string("decode/") + file).c_str(), decode, file);
        benchmark::RegisterBenchmark((std::string("measure/") + file).c_str(), measure, file);
    }
    for (const OutputFormat format : allOutputFormats)
        benchmark::RegisterBenchmark(("write/" + std::string(rawValue(format))).c_str(), write, format);
    return true;
}();

BENCHMARK(resample)->Args({48000, 44100})->Args({44100, 48000})->Unit(benchmark::kMillisecond);

}  // namespace
