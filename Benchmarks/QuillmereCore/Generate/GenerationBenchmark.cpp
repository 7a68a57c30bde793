// From a decoded image to finished samples, at the two image sizes the application uses: what one variation
// costs on one core, by preset, and where the time outside phase reconstruction goes.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "QuillmereCore/Generate/Finishing.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Generate/Rendering.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Network/Device/GPU.h"
#include "QuillmereCore/Util/Parallel.h"

namespace {

using namespace quillmere;

ModelConfig configOf(AnalysisProfile profile) {
    constexpr double clipSeconds = 1.1;
    return ModelConfig::forSeconds(44100, clipSeconds, profile, 64);
}

// Partials that die away over a noise floor, in network units.
std::vector<float> typicalImage(const ModelConfig& config) {
    SeededRNG rng(3);
    std::vector<float> image;
    for (std::int64_t band = 0; band < config.nMels; ++band) {
        for (std::int64_t frame = 0; frame < config.frames; ++frame) {
            const double partial = 0.5 + 0.5 * std::cos(0.6 * static_cast<double>(band));
            const double envelope =
                std::exp(-3.0 * static_cast<double>(frame) / static_cast<double>(config.frames));
            image.push_back(static_cast<float>(-0.9 + 1.7 * partial * envelope) + 0.1F * rng.signedUniform());
        }
    }
    return image;
}

ModelBundle modelOf(const ModelConfig& config) {
    SeededRNG rng(4);
    ModelBundle bundle;
    bundle.config = config;
    bundle.metadata.corpusName = "benchmark";
    bundle.weights = VAEArchitecture::initialWeights(config, 1);
    bundle.latents.assign(24, std::vector<float>(static_cast<std::size_t>(config.latentDim)));
    for (std::vector<float>& latent : bundle.latents) {
        for (float& value : latent)
            value = rng.gaussian();
    }
    return bundle;
}

void wholeVariation(benchmark::State& state, AnalysisProfile profile, const Preset& preset) {
    const ModelConfig config = configOf(profile);
    const SampleGenerator generator(modelOf(config), GPU::shared().graphDevice());
    STFT stft = FeatureExtractor(config).makeSTFT();
    const std::vector<float> image = typicalImage(config);
    double seconds = 0;
    for (auto _ : state) {
        SeededRNG rng(9);
        const auto samples = generator.render(image, preset.aesthetics, rng, stft);
        seconds += static_cast<double>(samples.size()) / static_cast<double>(config.sampleRate);
    }
    state.counters["audio_s"] = benchmark::Counter(seconds, benchmark::Counter::kIsRate);
}

// One variation on one core, from the draw of its latent vector to the closed file.
void latentToFile(benchmark::State& state, AnalysisProfile profile, const Preset& preset) {
    const ThreadLimit one(1);
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmere-benchmark-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        state.SkipWithError("cannot create a temporary folder");
        return;
    }
    SampleGenerator generator(modelOf(configOf(profile)), GPU::shared().graphDevice());
    GenerationRequest request;
    request.count = 1;
    request.aesthetics = preset.aesthetics;
    request.outputDirectory = pattern;
    for (auto _ : state) {
        const auto files = generator.generate(request, {}, {});
        state.PauseTiming();
        std::filesystem::remove(files.front().url);
        state.ResumeTiming();
    }
    std::filesystem::remove_all(pattern);
}

// Everything but phase reconstruction and finishing.
void spectralShaping(benchmark::State& state, AnalysisProfile profile, const Preset& preset) {
    const FlushDenormals flush;
    const ModelConfig config = configOf(profile);
    const FeatureExtractor extractor(config);
    const STFT stft = extractor.makeSTFT();
    const std::vector<float> image = typicalImage(config);
    for (auto _ : state) {
        SeededRNG rng(9);
        const auto shaped = Rendering::shape(image, preset.aesthetics, extractor, rng);
        benchmark::DoNotOptimize(Rendering::magnitude(shaped, preset.aesthetics, extractor, stft, rng));
    }
}

// The widest blur of a preset (Ghostly) on the image of a percussive model.
void blur(benchmark::State& state) {
    const ModelConfig config = configOf(AnalysisProfile::percussive);
    const std::vector<float> original = Rendering::toDecibels(typicalImage(config));
    for (auto _ : state) {
        std::vector<float> image = original;
        Rendering::applySmear(image, static_cast<int>(config.nMels), static_cast<int>(config.frames),
                              static_cast<int>(config.hop), 0.9);
        benchmark::DoNotOptimize(image);
    }
}

// One second of audio at 44.1 kHz through the chain.
void finish(benchmark::State& state, const Preset& preset) {
    const FlushDenormals flush;
    SeededRNG noise(5);
    std::vector<float> second(44100);
    for (float& value : second)
        value = noise.signedUniform();
    for (auto _ : state) {
        SeededRNG rng(9);
        std::vector<float> samples = second;
        Finishing::finish(samples, preset.aesthetics, 44100, rng);
        benchmark::DoNotOptimize(samples);
    }
}

const bool registered = [] {
    struct Profile {
        const char* name;
        AnalysisProfile value;
    };
    for (const Profile profile :
         {Profile{"percussive", AnalysisProfile::percussive}, Profile{"tonal", AnalysisProfile::tonal}}) {
        for (const Preset& preset : Preset::all()) {
            const std::string suffix = std::string("/") + profile.name + "/" + std::string(preset.name);
            benchmark::RegisterBenchmark(("wholeVariation" + suffix).c_str(), wholeVariation, profile.value,
                                         preset)
                ->Unit(benchmark::kMillisecond);
            benchmark::RegisterBenchmark(("latentToFile" + suffix).c_str(), latentToFile, profile.value,
                                         preset)
                ->UseRealTime()
                ->Unit(benchmark::kMillisecond);
            benchmark::RegisterBenchmark(("spectralShaping" + suffix).c_str(), spectralShaping, profile.value,
                                         preset)
                ->Unit(benchmark::kMicrosecond);
        }
    }
    for (const Preset& preset : Preset::all())
        benchmark::RegisterBenchmark(("finish/" + std::string(preset.name)).c_str(), finish, preset)
            ->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("blur", blur)->Unit(benchmark::kMicrosecond);
    return true;
}();

}  // namespace
