#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "QuillmereCLI/Cancellation.h"
#include "QuillmereCLI/Options.h"
#include "QuillmereCLI/ProgressLine.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/Trainer.h"

// What the commands that need a corpus or its model have in common.
namespace quillmere::cli {

// A scanned corpus and the place of its model.
struct KnownCorpus {
    CorpusSummary summary;
    std::filesystem::path modelFolder;
    std::string arguments;  // what a command line needs to name this corpus and its model again

    [[nodiscard]] bool hasModel() const { return ModelStore::isStored(modelFolder); }
};

// Throws FileError when folder is none.
[[nodiscard]] KnownCorpus findCorpus(const std::filesystem::path& folder, const ModelsOption& models,
                                     ProgressLine& progress, const CancelFlag& cancel);

// Trains a model and stores it. Throws as ModelTrainer::train and ModelStore::replace; nothing is stored
// then.
[[nodiscard]] ModelBundle learn(const KnownCorpus& corpus, const TrainingOptions& options,
                                network::ChosenDevice& device, ProgressLine& progress,
                                const CancelFlag& cancel);

// Stores the corpus's sounds with its model, which is there already. Gives the bytes that they take. Throws
// as ClipSounds::read and ModelStore::replace; the model stays as it is then.
[[nodiscard]] std::uint64_t keepSounds(const KnownCorpus& corpus, const ModelBundle& bundle,
                                       ProgressLine& progress, const CancelFlag& cancel);

// The start of the options with the corpus's latents; nothing is stored. Throws as
// ModelTrainer::beforeLearning.
[[nodiscard]] ModelBundle beforeLearning(const KnownCorpus& corpus, const TrainingOptions& options,
                                         network::ChosenDevice& device, ProgressLine& progress,
                                         const CancelFlag& cancel);

// The stored model. A damaged one fails with a note on how to replace it.
[[nodiscard]] ModelBundle loadModel(const KnownCorpus& corpus, Console& console);

// The same; a Failure that says what to do where there is none.
[[nodiscard]] ModelBundle storedModel(const KnownCorpus& corpus, Console& console);

// The stored model, or one learned now at standard quality, with a line that says so.
[[nodiscard]] ModelBundle loadOrLearn(const KnownCorpus& corpus, network::ChosenDevice& device,
                                      Console& console, ProgressLine& progress, const CancelFlag& cancel);

// Creates folder and its parents where they are missing. Throws FileError if that fails or files cannot be
// created in it: better at once than after minutes of training.
void requireWritableFolder(const std::filesystem::path& folder);

// "the model of Kicks"
[[nodiscard]] std::string startText(const ModelStart& start);

// "Learned 72 samples (percussive analysis, 0.8 s per sample), onto the model of Kicks."
[[nodiscard]] std::string learnedText(const ModelBundle& bundle);

// A line about corpus files that the model does not use; empty when it uses all.
[[nodiscard]] std::string leftOutText(const KnownCorpus& corpus, const ModelBundle& bundle);

}  // namespace quillmere::cli
