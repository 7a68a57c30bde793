// A stored model of 100 clips at the usual image size: stored after training, opened when its folder is
// chosen again. The plain save and load, without digests, are for comparison. Files live in the system's
// temporary folder and in its cache, so the figures are processor time, except where storing forces them to
// the disk. Initial weights are drawn once per run.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "QuillmereCore/Model/ModelIdentity.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/RNG.h"

namespace {

using namespace quillmere;
namespace fs = std::filesystem;

class TempFolder {
public:
    TempFolder() {
        std::string pattern = (fs::temp_directory_path() / "quillmere-benchmark-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot create " + pattern);
        path_ = pattern;
    }
    ~TempFolder() {
        std::error_code ignored;
        fs::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] const fs::path& path() const { return path_; }

private:
    fs::path path_;
};

ModelConfig usualConfig() {
    return {44100, 1024, 256, 96, 192, 64, AnalysisProfile::percussive};
}

ModelBundle usualModel() {
    ModelBundle bundle;
    bundle.config = usualConfig();
    bundle.metadata.corpusName = "Kicks";
    bundle.weights = VAEArchitecture::initialWeights(bundle.config, 1);
    SeededRNG rng(2);
    for (int clip = 0; clip < 100; ++clip) {
        bundle.metadata.clipNames.push_back("kick " + std::to_string(clip) + ".wav");
        bundle.latents.emplace_back();
        for (std::int64_t i = 0; i < bundle.config.latentDim; ++i)
            bundle.latents.back().push_back(rng.gaussian());
    }
    return bundle;
}

void countBytes(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * ModelStore::weightsSize(usualConfig()));
}

void ModelSave(benchmark::State& state) {
    const TempFolder folder;
    const ModelBundle bundle = usualModel();
    for (auto _ : state)
        ModelStore::save(bundle, folder.path());
    countBytes(state);
}
BENCHMARK(ModelSave)->Unit(benchmark::kMillisecond);

void ModelLoad(benchmark::State& state) {
    const TempFolder folder;
    ModelStore::save(usualModel(), folder.path());
    for (auto _ : state)
        benchmark::DoNotOptimize(ModelStore::load(folder.path()));
    countBytes(state);
}
BENCHMARK(ModelLoad)->Unit(benchmark::kMillisecond);

void ModelReplace(benchmark::State& state) {
    const TempFolder folder;
    const ModelBundle bundle = usualModel();
    for (auto _ : state)
        ModelStore::replace(bundle, folder.path() / "Kicks-1");
    countBytes(state);
}
BENCHMARK(ModelReplace)->Unit(benchmark::kMillisecond)->UseRealTime();

void ModelOpen(benchmark::State& state) {
    const TempFolder folder;
    ModelStore::replace(usualModel(), folder.path() / "Kicks-1");
    for (auto _ : state)
        benchmark::DoNotOptimize(ModelStore::open(folder.path() / "Kicks-1"));
    countBytes(state);
}
BENCHMARK(ModelOpen)->Unit(benchmark::kMillisecond);

void ModelIdentity(benchmark::State& state) {
    const ModelBundle bundle = usualModel();
    for (auto _ : state)
        benchmark::DoNotOptimize(modelIdentity(bundle));
    countBytes(state);
}
BENCHMARK(ModelIdentity)->Unit(benchmark::kMillisecond);

void InitialWeights(benchmark::State& state) {
    const ModelConfig config = usualConfig();
    for (auto _ : state)
        benchmark::DoNotOptimize(VAEArchitecture::initialWeights(config, 1));
    const auto weights = static_cast<double>(VAEArchitecture::weightCount(config));
    state.counters["weights/s"] = benchmark::Counter(weights, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(InitialWeights)->Unit(benchmark::kMillisecond);

}  // namespace
