#pragma once

#include <cstddef>
#include <optional>
#include <stop_token>
#include <string_view>
#include <vector>

#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelStore.h"

namespace quillmere {

// The clips that a model has learned, as sounds. Holds where they are, not the samples.
// Immutable; any thread.
class ClipSounds {
public:
    enum class Origin {
        none,    // they cannot be had
        folder,  // the files that were learned
    };

    // None.
    ClipSounds() = default;

    // Of the files that a scan has found, if these are what the model learned: only then do their
    // fingerprints agree. None otherwise.
    [[nodiscard]] static ClipSounds inFolder(const ModelBundle& model, const CorpusSummary& corpus);

    [[nodiscard]] Origin origin() const { return origin_; }

    // The samples of a clip as the model learned it (mono, at its rate, from 1 ms before the onset, at full
    // level, cut to its length), at most config.clipSamples(). Nothing if its file cannot be found or read.
    // Throws CancellationError, and AudioIOError where the system's trouble would hide a sound file.
    [[nodiscard]] std::optional<std::vector<float>> read(std::size_t clip,
                                                         const std::stop_token& stop = {}) const;

private:
    Origin origin_ = Origin::none;
    ModelConfig config_;
    std::vector<std::optional<CorpusFile>> files_;  // one per clip
};

// "none", "folder".
[[nodiscard]] std::string_view rawValue(ClipSounds::Origin origin);

}  // namespace quillmere
