#include "QuillmereApp/MoveFile.h"

#include <system_error>

#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {

bool moveFile(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (const auto claimed = NameClaim::byExclusiveRename(from, to)) return *claimed;
    // A file system that knows no such step: somebody may take the name in between.
    std::error_code error;
    if (std::filesystem::exists(std::filesystem::symlink_status(to, error))) return false;
    std::filesystem::rename(from, to, error);
    if (error) throw FileError(to, error);
    return true;
}

}  // namespace quillmere
