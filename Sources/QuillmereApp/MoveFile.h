#pragma once

#include <filesystem>

namespace quillmere {

// Gives a file another name or place that must be free. False: it is taken, and nothing has changed. Waits
// for the disk. Throws FileError naming to.
[[nodiscard]] bool moveFile(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace quillmere
