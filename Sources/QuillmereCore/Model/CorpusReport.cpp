#include "QuillmereCore/Model/CorpusReport.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <map>
#include <string_view>
#include <utility>

#include "QuillmereCore/Model/Training/ClipReading.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using ModelTrainer::ClipReading;

// What training makes of a file that reads like this, with a model whose clips have clipSamples samples.
FileFate fateOf(const CorpusFile& file, const ClipReading& reading, std::int64_t clipSamples) {
    FileFate fate;
    fate.name = file.relativePath;
    switch (reading.outcome) {
        case ClipReading::Outcome::silent:
            fate.use = FileFate::Use::silent;
            break;
        case ClipReading::Outcome::unreadable:
            fate.use = FileFate::Use::unreadable;
            fate.reason = reading.reason;
            break;
        case ClipReading::Outcome::usable:
            fate.seconds = reading.clip.originalSeconds;
            if (static_cast<std::int64_t>(reading.length) > clipSamples) fate.use = FileFate::Use::cut;
            break;
    }
    return fate;
}

// A file's bytes, a piece at a time.
class Bytes {
public:
    explicit Bytes(const fs::path& file) : stream_(file, std::ios::binary) {}

    // Empty at the end.
    std::string_view next() {
        stream_.read(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
        return {buffer_.data(), static_cast<std::size_t>(stream_.gcount())};
    }

    // Whether everything up to the end could be read.
    [[nodiscard]] bool isSound() const { return stream_.eof() && !stream_.bad(); }

private:
    std::ifstream stream_;
    std::vector<char> buffer_ = std::vector<char>(std::size_t{1} << 16);
};

// Nothing for a file that cannot be read.
std::optional<std::uint64_t> hashOf(const fs::path& file) {
    Bytes bytes(file);
    std::uint64_t hash = 0;
    for (std::string_view piece = bytes.next(); !piece.empty(); piece = bytes.next())
        hash = hash * 0x9E3779B97F4A7C15U + std::hash<std::string_view>()(piece);
    return bytes.isSound() ? std::optional(hash) : std::nullopt;
}

bool haveSameBytes(const fs::path& first, const fs::path& second) {
    Bytes one(first);
    Bytes other(second);
    for (;;) {
        const std::string_view piece = one.next();
        if (piece != other.next()) return false;
        if (piece.empty()) return one.isSound() && other.isSound();
    }
}

// Finds files with equal contents. Only files of one size are read, and compared only when hashes agree.
class DuplicateSearch {
public:
    explicit DuplicateSearch(const std::vector<CorpusFile>& files) : files_(files), hashes_(files.size()) {
        std::map<std::int64_t, int> counts;
        for (const CorpusFile& file : files)
            ++counts[file.size];
        parallelFor(files.size(), [&](std::size_t i) {
            if (counts.at(files[i].size) > 1) hashes_[i] = hashOf(files[i].url);
        });
    }

    // The first file given to this function that has the contents of file index, if any.
    const CorpusFile* firstLike(std::size_t index) {
        const std::optional<std::uint64_t> hash = hashes_[index];
        if (!hash) return nullptr;
        std::vector<std::size_t>& seen = seen_[{files_[index].size, *hash}];
        for (const std::size_t earlier : seen) {
            if (haveSameBytes(files_[earlier].url, files_[index].url)) return &files_[earlier];
        }
        seen.push_back(index);
        return nullptr;
    }

private:
    const std::vector<CorpusFile>& files_;
    std::vector<std::optional<std::uint64_t>> hashes_;  // nothing where no other file has the size
    std::map<std::pair<std::int64_t, std::uint64_t>, std::vector<std::size_t>> seen_;
};

}  // namespace

CorpusReport Corpus::inspect(const CorpusSummary& corpus, const std::stop_token& stop) {
    const int sampleRate = corpus.dominantSampleRate();
    constexpr std::size_t noSamples = 0;
    const std::vector<ClipReading> readings = ModelTrainer::readClips(
        corpus.files, {.sampleRate = sampleRate, .keptSamples = noSamples, .flatness = true}, {}, stop);

    CorpusReport report;
    std::int64_t clipSamples = 0;
    if (std::ranges::any_of(readings, &ClipReading::isUsable)) {
        const ModelConfig config = ModelTrainer::chooseConfig(readings, sampleRate, TrainingOptions());
        report.profile = config.profile;
        report.clipSeconds = config.clipSeconds();
        clipSamples = config.clipSamples();
    }
    DuplicateSearch duplicates(corpus.files);
    for (std::size_t i = 0; i < readings.size(); ++i) {
        FileFate& fate = report.files.emplace_back(fateOf(corpus.files[i], readings[i], clipSamples));
        if (!readings[i].isUsable()) continue;
        if (const CorpusFile* first = duplicates.firstLike(i)) fate.duplicateOf = first->relativePath;
    }
    return report;
}

}  // namespace quillmere
