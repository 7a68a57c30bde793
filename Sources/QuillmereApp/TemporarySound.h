#pragma once

#include <filesystem>
#include <span>

namespace quillmere {

// Writes samples into a file that nobody keeps, in place of the one that is there: a sound to be listened to.
// The folder is made if it is missing. For work in the background. Throws FileError.
void writeTemporarySound(std::span<const float> samples, const std::filesystem::path& file, int sampleRate);

}  // namespace quillmere
