#include "QuillmereCore/Model/CorpusReport.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <span>
#include <string_view>
#include <utility>

#include "QuillmereCore/Audio/ByteSource.h"
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
            fate.damage = reading.damage;
            if (static_cast<std::int64_t>(reading.length) > clipSamples) fate.use = FileFate::Use::cut;
            break;
    }
    return fate;
}

// A file's bytes, a piece at a time. Throws as ByteSource does.
class Bytes {
public:
    Bytes(const fs::path& file, const std::stop_token& stop) : source_(file, false, stop, {}) {}

    // Empty at the end.
    std::string_view next() {
        const std::size_t count = source_.readAt(at_, std::as_writable_bytes(std::span(buffer_)));
        source_.progress();
        at_ += static_cast<std::int64_t>(count);
        return {buffer_.data(), count};
    }

private:
    ByteSource source_;
    std::int64_t at_ = 0;
    std::vector<char> buffer_ = std::vector<char>(std::size_t{1} << 16);
};

// Nothing for a file that cannot be read any more.
std::optional<std::uint64_t> hashOf(const fs::path& file, const std::stop_token& stop) {
    try {
        Bytes bytes(file, stop);
        std::uint64_t hash = 0;
        for (std::string_view piece = bytes.next(); !piece.empty(); piece = bytes.next())
            hash = hash * 0x9E3779B97F4A7C15U + std::hash<std::string_view>()(piece);
        return hash;
    } catch (const ReadError&) {
        return std::nullopt;
    }
}

bool haveSameBytes(const fs::path& first, const fs::path& second, const std::stop_token& stop) {
    try {
        Bytes one(first, stop);
        Bytes other(second, stop);
        for (;;) {
            const std::string_view piece = one.next();
            if (piece != other.next()) return false;
            if (piece.empty()) return true;
        }
    } catch (const ReadError&) {
        return false;
    }
}

// Finds files with equal contents. Only usable files of one size are read, and compared only when hashes
// agree.
class DuplicateSearch {
public:
    DuplicateSearch(const std::vector<CorpusFile>& files, const std::vector<ClipReading>& readings,
                    const std::stop_token& stop)
        : files_(files), stop_(stop), hashes_(files.size()) {
        std::map<std::int64_t, int> counts;
        for (std::size_t i = 0; i < files.size(); ++i)
            counts[files[i].size] += readings[i].isUsable() ? 1 : 0;
        parallelFor(files.size(), [&](std::size_t i) {
            if (readings[i].isUsable() && counts.at(files[i].size) > 1)
                hashes_[i] = hashOf(files[i].url, stop);
        });
    }

    // The first file given to this function that has the contents of file index, if any.
    const CorpusFile* firstLike(std::size_t index) {
        const std::optional<std::uint64_t> hash = hashes_[index];
        if (!hash) return nullptr;
        std::vector<std::size_t>& seen = seen_[{files_[index].size, *hash}];
        for (const std::size_t earlier : seen) {
            if (haveSameBytes(files_[earlier].url, files_[index].url, stop_)) return &files_[earlier];
        }
        seen.push_back(index);
        return nullptr;
    }

private:
    const std::vector<CorpusFile>& files_;
    const std::stop_token& stop_;
    std::vector<std::optional<std::uint64_t>> hashes_;  // nothing where no other file has the size
    std::map<std::pair<std::int64_t, std::uint64_t>, std::vector<std::size_t>> seen_;
};

}  // namespace

CorpusReport Corpus::inspect(const CorpusSummary& corpus, const std::stop_token& stop) {
    const int sampleRate = corpus.dominantSampleRate();
    ModelTrainer::ClipNeeds needs;  // no samples: their measures are enough
    needs.sampleRate = sampleRate;
    const std::vector<ClipReading> readings = ModelTrainer::readClips(corpus.files, needs, {}, stop);

    CorpusReport report;
    std::int64_t clipSamples = 0;
    if (std::ranges::any_of(readings, &ClipReading::isUsable)) {
        const ModelConfig config = ModelTrainer::chooseConfig(readings, sampleRate, TrainingOptions());
        report.profile = config.profile;
        report.clipSeconds = config.clipSeconds();
        clipSamples = config.clipSamples();
    }
    DuplicateSearch duplicates(corpus.files, readings, stop);
    for (std::size_t i = 0; i < readings.size(); ++i) {
        FileFate& fate = report.files.emplace_back(fateOf(corpus.files[i], readings[i], clipSamples));
        if (!readings[i].isUsable()) continue;
        if (const CorpusFile* first = duplicates.firstLike(i)) fate.duplicateOf = first->relativePath;
    }
    return report;
}

}  // namespace quillmere
