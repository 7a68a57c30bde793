// How the cost grows: one quantity varied at a time, everything else as in common use.
// scripts/bench-growth.sh draws the plots of docs/performance.md from these figures.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/DSP/GriffinLim.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/Features.h"
#include "QuillmereCore/Model/Trainer.h"
#include "QuillmereCore/Model/VAE.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Util/Parallel.h"
#include "QuillmereCore/Util/RNG.h"

namespace quillmere {
namespace {

constexpr int batch = 16;
constexpr int sampleRate = 44100;

std::vector<float> noise(std::size_t count, std::uint64_t seed = 3) {
    SeededRNG rng(seed);
    std::vector<float> values(count);
    for (float& value : values)
        value = rng.signedUniform();
    return values;
}

class TemporaryFolder {
public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "quillmere-growth-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot create " + pattern);
        path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;  // the system clears its temporary folder
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

// Clips of a third of a second, a hundred to a folder. Forty different files; all others are links to them,
// so that twenty thousand clips fit any disk.
void fillCorpus(const std::filesystem::path& folder, std::int64_t clips) {
    constexpr std::int64_t originals = 40;
    const auto file = [&](std::int64_t i) {
        const std::filesystem::path kit = folder / ("kit " + std::to_string(i / 100));
        std::filesystem::create_directories(kit);
        return kit / ("hit " + std::to_string(i) + ".wav");
    };
    for (std::int64_t i = 0; i < clips; ++i) {
        if (i < originals) {
            std::vector<float> samples = noise(sampleRate / 3, static_cast<std::uint64_t>(i));
            for (std::size_t n = 0; n < samples.size(); ++n)
                samples[n] *= 0.9F * std::exp(-static_cast<float>(n) / 4000.0F);
            AudioIO::write(samples, file(i), sampleRate, OutputFormat::wav16);
        } else {
            std::filesystem::create_hard_link(file(i % originals), file(i));
        }
    }
}

ModelConfig percussive(std::int64_t nMels, std::int64_t frames) {
    ModelConfig config = ModelConfig::forSeconds(sampleRate, 1.1, AnalysisProfile::percussive, 64);
    config.nMels = nMels;
    config.frames = frames;
    return config;
}

// Multiplications and additions of a step's matrix products as they are computed: 16 products for a tile of
// 3x3 outputs, forward and for both gradients; the first and the last layer directly.
double operationsOfStep(const ModelConfig& config) {
    const network::Plan plan = VAEGraphBuilder{config, batch}.build();
    const auto products = [](const network::ConvLayer& layer) {
        const double tiles = std::ceil(layer.loHeight / 3.0) * std::ceil(layer.loWidth / 3.0);
        return 3 * 2 * 16 * tiles * layer.loChannels * 4.0 * layer.hiChannels;
    };
    double operations = 0;
    for (std::size_t k = 1; k < plan.encoder.size(); ++k)
        operations += products(plan.encoder[k]);
    for (const network::ConvLayer& layer : plan.decoder)
        operations += products(layer);
    const network::ConvLayer& first = plan.encoder.front();
    operations += 2 * 2 * 16.0 * first.loChannels * first.loHeight * first.loWidth;
    operations += 3 * 2 * 9.0 * plan.output.channels * plan.output.height * plan.output.width;
    operations += 3 * 2.0 * plan.mean.inputs * (2.0 + 1.0) * plan.latent.dim;
    return batch * operations;
}

void scan(benchmark::State& state) {
    const TemporaryFolder folder;
    fillCorpus(folder.path(), state.range(0));
    const ThreadLimit limit(static_cast<int>(state.range(1)));
    for (auto _ : state)
        benchmark::DoNotOptimize(Corpus::scan(folder.path()));
}

// All of a training run that depends on the number of clips: decoding, analysis, images before the first step
// and the latent codes after the last. One step is part of it.
void prepare(benchmark::State& state) {
    const TemporaryFolder folder;
    fillCorpus(folder.path(), state.range(0));
    const CorpusSummary corpus = Corpus::scan(folder.path());
    const ThreadLimit limit(static_cast<int>(state.range(1)));
    TrainingOptions options;
    options.steps = 1;
    options.profile = AnalysisProfile::percussive;
    for (auto _ : state)
        benchmark::DoNotOptimize(ModelTrainer::train(corpus, options, {}, {}, GPU::shared().graphDevice()));
}

void features(benchmark::State& state) {
    const double seconds = static_cast<double>(state.range(0)) / 1000;
    const FeatureExtractor extractor(
        ModelConfig::forSeconds(sampleRate, seconds, AnalysisProfile::percussive, 64));
    STFT stft = extractor.makeSTFT();
    const std::vector<float> clip = noise(static_cast<std::size_t>(extractor.config().clipSamples()));
    for (auto _ : state)
        benchmark::DoNotOptimize(extractor.features(clip, stft));
}

void step(benchmark::State& state) {
    const ModelConfig config = percussive(state.range(0), state.range(1));
    const ThreadLimit limit(static_cast<int>(state.range(2)));
    VAETrainingGraph graph(config, batch, VAEArchitecture::initialWeights(config, 1),
                           GPU::shared().graphDevice());
    const auto x = noise(static_cast<std::size_t>(batch * config.nMels * config.frames));
    const auto eps = noise(static_cast<std::size_t>(batch * config.latentDim));
    for (auto _ : state)
        benchmark::DoNotOptimize(graph.step(x, eps, 1e-4F, 0.002F));
    state.counters["FLOPS"] =
        benchmark::Counter(operationsOfStep(config), benchmark::Counter::kIsIterationInvariantRate);
}

void phases(benchmark::State& state) {
    constexpr int nFFT = 1024;
    const auto frames = static_cast<int>(state.range(0));
    STFT stft(nFFT, nFFT / 4);
    std::vector<float> magnitudes = noise(static_cast<std::size_t>(frames) * stft.bins());
    for (float& value : magnitudes)
        value = std::abs(value);
    const FlushDenormals flush;  // as generation does
    for (auto _ : state) {
        SeededRNG rng(7);
        benchmark::DoNotOptimize(GriffinLim::reconstruct(magnitudes, frames,
                                                         static_cast<long long>(frames) * stft.hop(),
                                                         state.range(1), stft, rng, 0.99F));
    }
}

// Latents to files, with everything between.
void generate(benchmark::State& state) {
    const TemporaryFolder folder;
    const ThreadLimit limit(static_cast<int>(state.range(1)));
    ModelBundle bundle;
    bundle.config = percussive(96, 192);
    bundle.metadata.corpusName = "benchmark";
    bundle.weights = VAEArchitecture::initialWeights(bundle.config, 1);
    for (std::uint64_t i = 0; i < 24; ++i)
        bundle.latents.push_back(noise(static_cast<std::size_t>(bundle.config.latentDim), i));
    SampleGenerator generator(std::move(bundle), GPU::shared().graphDevice());
    GenerationRequest request;
    request.count = state.range(0);
    request.outputDirectory = folder.path() / "out";
    for (auto _ : state) {
        benchmark::DoNotOptimize(generator.generate(request, {}, {}));
        state.PauseTiming();
        std::filesystem::remove_all(request.outputDirectory);
        state.ResumeTiming();
    }
}

void corpusSizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->ArgNames({"clips", "threads"})->UseRealTime()->Unit(benchmark::kMillisecond);
    for (const std::int64_t clips : {10, 100, 1000, 5000, 20000}) {
        for (const std::int64_t threads : {1, 2})
            benchmark->Args({clips, threads});
    }
}
BENCHMARK(scan)->Apply(corpusSizes);
BENCHMARK(prepare)->Apply(corpusSizes)->MinTime(0.1);

BENCHMARK(features)
    ->ArgName("milliseconds")
    ->Arg(300)
    ->Arg(600)
    ->Arg(1100)
    ->Arg(2000)
    ->Arg(4000)
    ->Unit(benchmark::kMillisecond);

BENCHMARK(step)
    ->ArgNames({"mels", "frames", "threads"})
    ->ArgsProduct({{96}, {32, 64, 96, 192, 384, 672}, {1, 2}})
    ->ArgsProduct({{384}, {32, 96, 192}, {1, 2}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

BENCHMARK(phases)
    ->ArgNames({"frames", "passes"})
    ->ArgsProduct({{32, 96, 192, 384, 768, 1536}, {48}})
    ->ArgsProduct({{192}, {0, 12, 24, 96, 200}})
    ->Unit(benchmark::kMillisecond);

BENCHMARK(generate)
    ->ArgNames({"variations", "threads"})
    ->ArgsProduct({{1, 4, 16, 64, 256}, {1, 2}})
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quillmere
