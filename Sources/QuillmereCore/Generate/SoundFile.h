#pragma once

#include <cstddef>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
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

// Writes it into folder as a generation would have done, under the next free name with that prefix (UTF-8):
// one that somebody else takes meanwhile is skipped. The folder is created if it is missing, and the name is
// on the disk when the call returns. Throws as writeNew, but finds a name that is free.
GeneratedSample writeNumbered(const FinishedSound& sound, const std::filesystem::path& folder,
                              std::string_view prefix, const GenerationHooks& hooks);

// Creates the folder that files are to be written to, if it is missing, and clears it of what writers have
// left that ended in the midst of a file. Throws FileError.
void prepareFolder(const std::filesystem::path& folder);

// The names in folder with that prefix that a generation gives: PREFIX_var_0001.wav for number 1. prefix: of
// any characters.
class NumberedNames {
public:
    NumberedNames(std::filesystem::path folder, std::string_view prefix);

    [[nodiscard]] std::filesystem::path file(std::size_t number) const;
    // One more than the highest number in the folder.
    [[nodiscard]] std::size_t firstFree() const;

private:
    std::filesystem::path folder_;
    std::string base_;
};

// Throws FileError for the first file whose name is taken.
void requireFree(std::span<const std::filesystem::path> files);

}  // namespace quillmere::SoundFile
