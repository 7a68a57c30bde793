#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

#include "QuillmereCore/Util/Message.h"
#include "QuillmereCore/Util/Progress.h"

namespace quillmere {

// One audio file found in the corpus.
struct CorpusFile {
    std::filesystem::path url;
    std::string relativePath;   // below the corpus folder, no leading "/"; the bytes of the names
    std::int64_t size = 0;      // bytes; 0 when not reported
    std::int64_t modified = 0;  // whole seconds since 1970, truncated towards zero
};

// A folder that a scan could not look into.
struct PassedOver {
    std::string folder;  // below the corpus folder, as CorpusFile::relativePath
    Message reason;      // the system's words
};

// The result of one scan.
struct CorpusSummary {
    std::filesystem::path directory;     // as passed to the scan
    std::vector<CorpusFile> files;       // every supported file in natural order, unreadable ones included
    double totalSeconds = 0;             // of the readable files
    std::vector<double> durations;       // seconds, one per readable file in the order of files
    std::map<int, int> sampleRates;      // Hz to number of readable files
    int unreadable = 0;                  // files that could not be opened
    std::vector<PassedOver> passedOver;  // by the bytes of their names

    [[nodiscard]] int fileCount() const { return static_cast<int>(files.size()); }
    // The most frequent rate, the lowest of equals; 44100 without readable files.
    [[nodiscard]] int dominantSampleRate() const;
    // 90th-percentile duration within 0.3 ... 4 s; 1 without durations.
    [[nodiscard]] double suggestedClipSeconds() const;
    // 64-bit FNV-1a over path, size and time of each file, in lower-case hexadecimal without leading zeros.
    [[nodiscard]] std::string fingerprint() const;
};

// Finds the samples in a folder. Stateless; may run on any thread and may take seconds.
namespace Corpus {

// Walks the folder recursively, skipping hidden files, packages and symbolic links, and measures each
// supported file without decoding it. Folders inside that may not be read, or are nested too deep, are passed
// over and named. Throws FileError when directory is not a folder or may not be listed; also, and
// AudioIOError likewise, when the system's trouble would hide a file that is there: a disk that cannot be
// read, descriptors or memory that are short.
[[nodiscard]] CorpusSummary scan(const std::filesystem::path& directory);

// The same for a caller who watches. progress may be empty; it may be called from worker threads, by one at a
// time: once with 0 done when the files are counted, then after each measured file. stop is asked for each
// folder and each file; throws CancellationError.
using ProgressCallback = CountProgress;
[[nodiscard]] CorpusSummary scan(const std::filesystem::path& directory, const ProgressCallback& progress,
                                 const std::stop_token& stop);

// The durations added in order, starting from 0.
[[nodiscard]] double totalSeconds(std::span<const double> durations);

// Sorts in the order a file browser shows: case-insensitive, digits by numeric value, whatever the user's
// language. Names that this order calls equal stand by their bytes.
void sortNaturally(std::vector<CorpusFile>& files);

// Whether the name has one of AudioIO's supported extensions, in any case.
[[nodiscard]] bool isSupported(const std::filesystem::path& file);

}  // namespace Corpus
}  // namespace quillmere
