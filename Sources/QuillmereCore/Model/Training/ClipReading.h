#pragma once

#include <cstddef>
#include <limits>
#include <span>
#include <stop_token>
#include <string>
#include <vector>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/ClipPreparation.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/Training/TrainingOptions.h"
#include "QuillmereCore/Util/Message.h"
#include "QuillmereCore/Util/Progress.h"

// How a corpus becomes clips, and what the clips say about the best model for them. Training and the report
// on a corpus read it alike.
namespace quillmere::ModelTrainer {

// What a file of the corpus gives.
struct ClipReading {
    enum class Outcome { usable, silent, unreadable };
    Outcome outcome = Outcome::usable;
    Message reason;  // of unreadable: the sentence that names the file and says why

    // Of a usable file. The clip's samples may end early, or be absent (ClipNeeds); the rest is of the whole
    // clip.
    DecodedClip clip;
    std::size_t length = 0;  // samples
    double effectiveSeconds = 0;
    double flatness = 0;
    AudioIO::Damage damage;

    [[nodiscard]] bool isUsable() const { return outcome == Outcome::usable; }
};

// What a caller wants of each clip. Samples beyond those that are kept are dropped as they are measured: the
// rest of long recordings would lie in memory until all files are read.
struct ClipNeeds {
    int sampleRate = 44100;
    std::size_t keptSamples = 0;
    bool flatness = true;  // costs as much as decoding; 0 where it is not wanted
    // A clip of more samples than this, 16 MiB, is decoded twice: once for its peak, on which all else
    // depends, and once to be measured. The results are the same.
    std::size_t samplesInMemory = std::size_t{4} << 20;
    // All clips of one readClips together; those beyond are left without samples (see clipOf).
    std::size_t keptTogether = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t ofAnyCorpus = std::size_t{64} << 20;  // 256 MiB, whatever its size

    // For each of so many threads that read at once: many hold fewer samples each, all of them together 192
    // MiB while their vectors grow.
    [[nodiscard]] ClipNeeds sharedBy(int threads) const;
};

// Needs of a training with these options: one sample more than any model for them uses, which tells that a
// clip is cut.
[[nodiscard]] ClipNeeds needsOf(const TrainingOptions& options, int sampleRate);

// Gives what ClipPreparation::decode and the measures of its clip give, bit for bit, but refuses rates and
// lengths that no sample has (AudioIO::stream). Throws CancellationError, and AudioIOError where the system's
// trouble would hide a sound file.
[[nodiscard]] ClipReading readClip(const CorpusFile& file, const ClipNeeds& needs,
                                   const std::stop_token& stop = {});

// Reads all files in parallel, with the needs shared by the threads; the readings are in the order of the
// files. progress may be empty; it is called from worker threads, by one at a time, after each file. stop is
// asked all the time. Throws as readClip, and what progress throws.
[[nodiscard]] std::vector<ClipReading> readClips(std::span<const CorpusFile> files, const ClipNeeds& needs,
                                                 const CountProgress& progress, const std::stop_token& stop);

// A usable clip with its samples: those of its reading, or, where there was no room for them, the same ones
// from the file. The needs are those of the reading. Throws AudioIOError for a file that cannot be read any
// more or has changed since, and CancellationError.
[[nodiscard]] DecodedClip clipOf(ClipReading reading, const CorpusFile& file, const ClipNeeds& needs,
                                 const std::stop_token& stop = {});

// The configuration for the usable clips, of which there must be one: profile and clip length as the options
// say, or chosen from what was measured (ClipPreparation). Whether a model can have it is for the caller to
// ask (problemWith).
[[nodiscard]] ModelConfig chooseConfig(std::span<const ClipReading> readings, int sampleRate,
                                       const TrainingOptions& options);

}  // namespace quillmere::ModelTrainer
