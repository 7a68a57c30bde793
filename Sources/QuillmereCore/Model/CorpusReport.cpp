#include "QuillmereCore/Model/CorpusReport.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <map>
#include <string_view>
#include <utility>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/ClipPreparation.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

// A file's fate so far, and what the choice of the clip length needs to know of it.
struct Measured {
    FileFate fate;
    std::int64_t samples = 0;  // of the decoded clip; 0 when it is left out
    double effectiveSeconds = 0;
    double flatness = 0;
};

Measured measure(const CorpusFile& file, int sampleRate) {
    Measured measured;
    measured.fate.name = file.relativePath;
    try {
        const std::optional<DecodedClip> clip = ClipPreparation::decode(file, sampleRate);
        if (!clip) {
            measured.fate.use = FileFate::Use::silent;
            return measured;
        }
        measured.fate.seconds = clip->originalSeconds;
        measured.samples = static_cast<std::int64_t>(clip->samples.size());
        measured.effectiveSeconds = clip->effectiveSeconds(sampleRate);
        measured.flatness = clip->flatness(sampleRate);
    } catch (const AudioIOError& error) {
        measured.fate.use = FileFate::Use::unreadable;
        measured.fate.reason = error.what();
    }
    return measured;
}

// The configuration of automatic training, or nothing without a usable file.
std::optional<ModelConfig> chooseConfig(const std::vector<Measured>& files, int sampleRate) {
    std::vector<double> lengths;
    std::vector<double> flatness;
    for (const Measured& file : files) {
        if (file.samples == 0) continue;
        lengths.push_back(file.effectiveSeconds);
        flatness.push_back(file.flatness);
    }
    if (lengths.empty()) return std::nullopt;
    constexpr std::int64_t anyLatentDim = 64;  // has no part in the clip length
    return ModelConfig::forSeconds(sampleRate, ClipPreparation::suggestClipSeconds(lengths),
                                   ClipPreparation::resolveProfile(lengths, flatness), anyLatentDim);
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
    std::vector<Measured> measured(corpus.files.size());
    parallelFor(measured.size(), [&](std::size_t i) {
        throwIfCancelled(stop);
        measured[i] = measure(corpus.files[i], sampleRate);
    });
    throwIfCancelled(stop);

    CorpusReport report;
    const std::optional<ModelConfig> config = chooseConfig(measured, sampleRate);
    if (config) {
        report.profile = config->profile;
        report.clipSeconds = config->clipSeconds();
    }
    DuplicateSearch duplicates(corpus.files);
    for (std::size_t i = 0; i < measured.size(); ++i) {
        FileFate& fate = report.files.emplace_back(std::move(measured[i].fate));
        if (measured[i].samples == 0) continue;
        if (measured[i].samples > config->clipSamples()) fate.use = FileFate::Use::cut;
        if (const CorpusFile* first = duplicates.firstLike(i)) fate.duplicateOf = first->relativePath;
    }
    return report;
}

}  // namespace quillmere
