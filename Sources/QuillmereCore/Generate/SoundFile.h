#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <vector>

#include "QuillmereCore/Generate/Generator.h"

// Finished samples as files that know where they come from. Any thread.
namespace quillmere::SoundFile {

struct FinishedSound {
    std::span<const float> samples;
    int sampleRate = 0;  // Hz
    OutputFormat format = OutputFormat::wav24;
    SampleOrigin origin{};
};

// The bytes of the file, with the chunk that the hooks give, if any. file: what a failure names. Throws
// FileError, AudioIOError when memory is short, and what the hook throws.
[[nodiscard]] std::vector<std::byte> encode(const FinishedSound& sound, const std::filesystem::path& file,
                                            const GenerationHooks& hooks);

// Writes it under this name, which must be free, and tells the hooks of it. The name is on the disk with
// syncFolder. Throws as encode, FileError where the name is taken, and what the hooks throw.
GeneratedSample writeNew(const FinishedSound& sound, const std::filesystem::path& file,
                         const GenerationHooks& hooks);

// As writeNew, but replaces a file of that name, atomically, and leaves the file and its name on the disk.
GeneratedSample replace(const FinishedSound& sound, const std::filesystem::path& file,
                        const GenerationHooks& hooks);

// Throws FileError for the first file whose name is taken.
void requireFree(std::span<const std::filesystem::path> files);

}  // namespace quillmere::SoundFile
