#pragma once

#include <filesystem>
#include <system_error>

// Folders that take their names in one step, so that everyone sees them whole or not at all. Folders must be
// on one file system. Any thread. Failures are FileErrors that name the first argument.
namespace quillmere {

// Gives folder a name that must be free. False: it is taken, by whatever it may be.
[[nodiscard]] bool moveFolder(const std::filesystem::path& folder, const std::filesystem::path& name);

// Lets two folders change their names in one step. False: the file system knows no such step.
[[nodiscard]] bool exchangeFolders(const std::filesystem::path& folder, const std::filesystem::path& other);

// Returns when the names in folder are on the disk (the content of its files is another matter), or why they
// may not be. Nothing is forced, and nothing told, where folder may not be read.
[[nodiscard]] std::error_code syncFolder(const std::filesystem::path& folder);

}  // namespace quillmere
