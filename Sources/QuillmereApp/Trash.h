#pragma once

#include <filesystem>

// The desktop's trash. Waits for the disk: for work in the background.
namespace quillmere::Trash {

// Brings back what lies at place in the trash. False: the file's name is taken by now. Throws FileError.
[[nodiscard]] bool restore(const std::filesystem::path& place, const std::filesystem::path& file);

}  // namespace quillmere::Trash
