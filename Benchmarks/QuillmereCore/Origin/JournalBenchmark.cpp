// The journal as it grows, up to a million lines with latent vectors of the usual size: a line is appended
// after every file that is written, and a file is looked for among all of them. Appending should cost the
// same at any length; looking up reads everything once. The journal is allowed to grow beyond its ordinary
// bound here. It lives in the system's temporary folder and, where the memory suffices, in its cache.

#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>

#include "QuillmereCore/Origin/Journal.h"
#include "QuillmereCore/Util/RNG.h"
#include "QuillmereCore/Util/Text.h"

namespace {

using namespace quillmere;
namespace fs = std::filesystem;

constexpr Journal::Limits endless{.segmentBytes = std::numeric_limits<std::uint64_t>::max(), .segments = 1};

std::string digestOf(std::uint64_t number) {
    const std::string text = std::to_string(number);
    return std::string(64 - text.size(), '0') + text;
}

JournalEntry entryOf(std::uint64_t number) {
    SeededRNG rng(number);
    JournalEntry entry;
    entry.digests = {digestOf(number), digestOf(number + 1)};
    entry.file = "/home/somebody/Music/New/Kicks_var_0001.wav";
    entry.written = "2026-01-02T03:04:05Z";
    entry.recipe.program = programVersion();
    entry.recipe.device = deviceProcessor;
    entry.recipe.model = digestOf(7);
    entry.recipe.corpusName = "Kicks";
    entry.recipe.fingerprint = "3f2a9c0d11e4b7a5";
    for (int i = 0; i < 64; ++i)
        entry.recipe.latent.push_back(rng.gaussian());
    entry.recipe.state = rng.s;
    entry.recipe.sources = {{3, "Kick 03.wav", 0.7F}, {12, "Kick 12.wav", 0.3F}};
    return entry;
}

// A journal of so many lines, which differ in their digests alone.
class LongJournal {
public:
    explicit LongJournal(std::uint64_t lines) {
        std::string pattern = (fs::temp_directory_path() / "quillmere-benchmark-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot create " + pattern);
        folder_ = pattern;
        const std::string line = encodeJSON(entryOf(0)) + "\n";
        const std::size_t place = line.find(digestOf(0));
        std::ofstream stream(file(), std::ios::binary);
        for (std::uint64_t i = 0; i < lines; ++i) {
            std::string next = line;
            next.replace(place, 64, digestOf(i));
            stream << next;
        }
        if (!stream.flush()) throw std::runtime_error("cannot write " + file().string());
    }
    ~LongJournal() {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }
    LongJournal(const LongJournal&) = delete;
    LongJournal& operator=(const LongJournal&) = delete;

    [[nodiscard]] fs::path file() const { return folder_ / "journal.jsonl"; }

private:
    fs::path folder_;
};

void append(benchmark::State& state) {
    const LongJournal lines(static_cast<std::uint64_t>(state.range(0)));
    const Journal journal(lines.file(), endless);
    const JournalEntry entry = entryOf(1);
    for (auto _ : state)
        journal.append(entry);
}
BENCHMARK(append)->Arg(1)->Arg(1'000)->Arg(1'000'000)->Unit(benchmark::kMicrosecond)->UseRealTime();

void find(benchmark::State& state) {
    const auto count = static_cast<std::uint64_t>(state.range(0));
    const LongJournal lines(count);
    const Journal journal(lines.file(), endless);
    const FileDigests wanted{digestOf(count / 2), {}};
    for (auto _ : state) {
        if (!journal.find(std::span(&wanted, 1)).front()) state.SkipWithError("not found");
    }
    state.counters["bytes"] =
        benchmark::Counter(static_cast<double>(fs::file_size(lines.file())), benchmark::Counter::kDefaults);
}
BENCHMARK(find)->Arg(1'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
