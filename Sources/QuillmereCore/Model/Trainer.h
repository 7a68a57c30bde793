#pragma once

#include <stop_token>

#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/Training/TrainingError.h"
#include "QuillmereCore/Model/Training/TrainingHooks.h"
#include "QuillmereCore/Model/Training/TrainingOptions.h"
#include "QuillmereCore/Model/Training/TrainingProgress.h"
#include "QuillmereCore/Network/Backend.h"

// A corpus to a model. The rooms of Model/Training hold what a run is made of: ClipReading, Augmentation,
// BatchSource, Schedule, TrainingLoop, and the records of this interface.
namespace quillmere::ModelTrainer {

// Decodes, analyses, trains and encodes a corpus. Writes no files.
//
// progress may be empty and may be called from worker threads, by one at a time; what it throws ends the run
// and reaches the caller. stop is asked while files are read, before each clip and after each step but the
// last. hooks: what else the caller wants; with a training that ends early the metadata says after how many
// steps of how many. Files that cannot be read and silent ones are left out without a message. Throws
// TrainingError, CancellationError, AudioIOError where the system's trouble would hide a sound file, or a
// Failure when the options ask for a model that cannot be (problemWith), not be opened again, or has another
// shape than the options' start: all before the first step. steps and batchSize below 1 and a clip length
// that is not finite stop the program. The same corpus, options and backend give the same bundle, trainedAt
// apart, for any number of threads.
[[nodiscard]] ModelBundle train(const CorpusSummary& corpus, const TrainingOptions& options,
                                const ProgressCallback& progress, const std::stop_token& stop,
                                network::Backend& backend, const TrainingHooks& hooks = {});

// The model before it has learned anything: the start of the options, which must be one, with the latents of
// the corpus; 0 steps. To listen to at once, while train goes on. Everything else as train.
[[nodiscard]] ModelBundle beforeLearning(const CorpusSummary& corpus, const TrainingOptions& options,
                                         const ProgressCallback& progress, const std::stop_token& stop,
                                         network::Backend& backend);

}  // namespace quillmere::ModelTrainer
