#pragma once

#include <cstddef>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

#include "QuillmereCore/Model/ClipPreparation.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/Training/TrainingOptions.h"
#include "QuillmereCore/Util/Progress.h"

// How a corpus becomes clips, and what the clips say about the best model for them. Training and the report
// on a corpus read it alike.
namespace quillmere::ModelTrainer {

// What a file of the corpus gives.
struct ClipReading {
    enum class Outcome { usable, silent, unreadable };
    Outcome outcome = Outcome::usable;
    std::string reason;  // of unreadable: the sentence that names the file and says why

    // Of a usable file. The clip's samples may end early (ClipNeeds); the rest is of the whole clip.
    DecodedClip clip;
    std::size_t length = 0;  // samples
    double effectiveSeconds = 0;
    double flatness = 0;

    [[nodiscard]] bool isUsable() const { return outcome == Outcome::usable; }
};

// What a caller wants of each clip. Samples beyond those that are kept are dropped as soon as the clip is
// measured: the rest of long recordings would lie in memory until all files are read.
struct ClipNeeds {
    int sampleRate = 44100;
    std::size_t keptSamples = 0;
    bool flatness = true;  // costs as much as decoding; 0 where it is not wanted
};

// Needs of a training with these options: one sample more than any model for them uses, which tells that a
// clip is cut.
[[nodiscard]] ClipNeeds needsOf(const TrainingOptions& options, int sampleRate);

[[nodiscard]] ClipReading readClip(const CorpusFile& file, const ClipNeeds& needs);

// Reads all files in parallel; the readings are in the order of the files. progress may be empty; it is
// called from worker threads, by one at a time, after each file. stop is asked before each file; throws
// CancellationError, and what progress throws.
[[nodiscard]] std::vector<ClipReading> readClips(std::span<const CorpusFile> files, const ClipNeeds& needs,
                                                 const CountProgress& progress, const std::stop_token& stop);

// The configuration for the usable clips, of which there must be one: profile and clip length as the options
// say, or chosen from what was measured (ClipPreparation). Whether a model can have it is for the caller to
// ask (problemWith).
[[nodiscard]] ModelConfig chooseConfig(std::span<const ClipReading> readings, int sampleRate,
                                       const TrainingOptions& options);

}  // namespace quillmere::ModelTrainer
