#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Model/ModelStore.h"

namespace quillmere {

// The learned clips as they may lie beside a model, in sounds.bin: for whoever wants to generate with detail
// when the folder is gone or has changed. Samples have 16 bits.
//
// The file: the line "quillmere sounds 1", a line with the model's identity, the number of clips, the number
// of samples of each clip, and the samples, clip after clip. Numbers are little-endian, counts of 32 bits.
// Immutable and cheap to copy; any thread.
class KeptSounds {
public:
    // The bytes of such a file. clips: one per latent of the model, full scale 1; an empty one is none.
    [[nodiscard]] static std::string encode(const ModelBundle& model,
                                            std::span<const std::vector<std::int16_t>> clips);
    // Full scale 1 to 32767.
    [[nodiscard]] static std::vector<std::int16_t> quantise(std::span<const float> samples);
    // Bytes of the file for so many samples in all.
    [[nodiscard]] static std::uint64_t size(std::size_t clips, std::uint64_t samples);

    // Those in a model folder. Nothing if there are none, if they belong to another model, or if the file
    // differs from its digest. Throws FileError where that cannot be found out.
    [[nodiscard]] static std::optional<KeptSounds> open(const ModelBundle& model,
                                                        const std::filesystem::path& modelFolder);

    // The samples of a clip; nothing for one that is not there. Throws FileError.
    [[nodiscard]] std::optional<std::vector<float>> read(std::size_t clip) const;

private:
    struct File;
    explicit KeptSounds(std::shared_ptr<const File> file) : file_(std::move(file)) {}

    std::shared_ptr<const File> file_;
};

}  // namespace quillmere
