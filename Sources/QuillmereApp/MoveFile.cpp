#include "QuillmereApp/MoveFile.h"

#include <system_error>

#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {

bool moveFile(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (const auto claimed = NameClaim::byExclusiveRename(from, to)) return *claimed;
    std::error_code error;
    const bool isFolder = std::filesystem::is_directory(std::filesystem::symlink_status(from, error));
    if (!isFolder) {
        if (const auto claimed = NameClaim::byHardLink(from, to)) return *claimed;
        return NameClaim::byPlaceholder(from, to);
    }
    // A folder on a file system that knows no such step: it replaces an empty folder at most.
    if (std::filesystem::exists(std::filesystem::symlink_status(to, error))) return false;
    std::filesystem::rename(from, to, error);
    if (error) throw FileError(to, error);
    return true;
}

}  // namespace quillmere
