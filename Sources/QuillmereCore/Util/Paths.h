#pragma once

#include <filesystem>

// Names of files and folders as text.
namespace quillmere::Paths {

// The path as people would write it: absolute, without ".", "..", doubled slashes and a slash at its end. It
// leads to what path leads to: behind a symbolic link ".." is the folder that holds what the link leads to,
// so links before a ".." are followed, and only these. What is not there has no links. Looks at the disk only
// for paths with "..".
[[nodiscard]] std::filesystem::path plain(const std::filesystem::path& path);

}  // namespace quillmere::Paths
