#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/KeptSounds.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/Trainer.h"

namespace quillmere {

// The clips that a model has learned, as sounds. Holds where they are, not the samples.
// Immutable; any thread.
class ClipSounds {
public:
    enum class Origin {
        none,    // they cannot be had
        folder,  // the files that were learned
        model,   // what was kept of them with the model
    };

    // None.
    ClipSounds() = default;

    // Of the files that a scan has found, if these are what the model learned: only then do their
    // fingerprints agree. None otherwise.
    [[nodiscard]] static ClipSounds inFolder(const ModelBundle& model, const CorpusSummary& corpus);

    // Those that were kept in the model's folder, if any. Throws as KeptSounds::open.
    [[nodiscard]] static ClipSounds keptWith(const ModelBundle& model,
                                             const std::filesystem::path& modelFolder);
    // The first of these that has any.
    [[nodiscard]] static ClipSounds find(const ModelBundle& model, const CorpusSummary& corpus,
                                         const std::filesystem::path& modelFolder);

    [[nodiscard]] Origin origin() const { return origin_; }

    // The samples of a clip as the model learned it (mono, at its rate, from 1 ms before the onset, at full
    // level, cut to its length), at most config.clipSamples(). Nothing if its file cannot be found or read.
    // Throws CancellationError, AudioIOError where the system's trouble would hide a sound file, FileError
    // for kept ones.
    [[nodiscard]] std::optional<std::vector<float>> read(std::size_t clip,
                                                         const std::stop_token& stop = {}) const;

    // The bytes that keep them with the model (ModelStore::replace): 16 bits a sample, so they are no longer
    // quite what read gives. A clip that cannot be read is left out. Throws as read.
    [[nodiscard]] std::string toKeep(const ModelBundle& model, const std::stop_token& stop) const;
    // The most bytes that this can be, before anything is learned of a corpus: nobody knows by then which
    // length its clips are cut to.
    [[nodiscard]] static std::uint64_t mostToKeep(const CorpusSummary& corpus,
                                                  const TrainingOptions& options);

private:
    Origin origin_ = Origin::none;
    ModelConfig config_;
    std::vector<std::optional<CorpusFile>> files_;  // of a folder, one per clip
    std::optional<KeptSounds> kept_;                // of a model
};

// "none", "folder", "model".
[[nodiscard]] std::string_view rawValue(ClipSounds::Origin origin);

}  // namespace quillmere
