// A folder of 1,000 WAV files of half a second each: what a user waits for after choosing one (scan), and
// what the report on every file adds to it (inspect). The argument is the number of threads. The files are
// in the page cache.

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/CorpusReport.h"
#include "QuillmereCore/Util/Parallel.h"
#include "QuillmereCore/Util/RNG.h"

namespace {

using namespace quillmere;

constexpr int fileCount = 1000;

// Lives as long as the program; removed at its end.
class Folder {
public:
    Folder() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "quillmere-benchmark-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot create " + pattern);
        path_ = pattern;
        SeededRNG rng(1);
        std::vector<float> samples(22050);
        for (int i = 0; i < fileCount; ++i) {
            for (float& sample : samples)
                sample = 0.9F * rng.signedUniform();
            const std::filesystem::path sub = path_ / ("kit " + std::to_string(i % 10));
            std::filesystem::create_directories(sub);
            AudioIO::write(samples, sub / ("hit " + std::to_string(i) + ".wav"), 44100, OutputFormat::wav16);
        }
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

const std::filesystem::path& corpusFolder() {
    static const Folder folder;
    return folder.path();
}

void scan(benchmark::State& state) {
    const std::filesystem::path& folder = corpusFolder();
    const ThreadLimit limit(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(Corpus::scan(folder));
    state.counters["files/s"] = benchmark::Counter(fileCount, benchmark::Counter::kIsIterationInvariantRate);
}

void inspect(benchmark::State& state) {
    const CorpusSummary corpus = Corpus::scan(corpusFolder());
    const ThreadLimit limit(static_cast<int>(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(Corpus::inspect(corpus));
    state.counters["files/s"] = benchmark::Counter(fileCount, benchmark::Counter::kIsIterationInvariantRate);
}

BENCHMARK(scan)->Arg(1)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);
BENCHMARK(inspect)->Arg(1)->Arg(2)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
