#include "QuillmereCore/Util/AtomicFolder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <optional>
#include <system_error>

#include "QuillmereCore/Util/Descriptor.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

// File systems say either.
bool isTaken(int error) {
    return error == EEXIST || error == ENOTEMPTY;
}

// What renameat2 answers where the kernel or the file system has no such way of renaming.
bool isUnknown(int error) {
    return error == EINVAL || error == ENOSYS || error == ENOTSUP;
}

// Nothing where the file system does not offer it.
std::optional<bool> moveExclusively(const fs::path& folder, const fs::path& name) {
    if (::renameat2(AT_FDCWD, folder.c_str(), AT_FDCWD, name.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (isTaken(errno)) return false;
    if (isUnknown(errno)) return std::nullopt;
    throw FileError(folder, lastError());
}

}  // namespace

bool moveFolder(const fs::path& folder, const fs::path& name) {
    if (const auto moved = moveExclusively(folder, name)) return *moved;
    // A folder replaces nothing but an empty folder, so little can go wrong between the two calls.
    struct stat status {};
    if (::lstat(name.c_str(), &status) == 0) return false;
    if (::rename(folder.c_str(), name.c_str()) == 0) return true;
    if (isTaken(errno) || errno == ENOTDIR) return false;
    throw FileError(folder, lastError());
}

bool exchangeFolders(const fs::path& folder, const fs::path& other) {
    if (::renameat2(AT_FDCWD, folder.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE) == 0) return true;
    if (isUnknown(errno)) return false;
    throw FileError(folder, lastError());
}

std::error_code syncFolder(const fs::path& folder) {
    const Descriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // A folder that may be written to but not read has no handle to ask with.
    if (!descriptor.isOpen()) return errno == EACCES ? std::error_code() : lastError();
    if (::fsync(descriptor.get()) == 0) return {};
    // Some file systems have nothing that could be forced to a disk.
    return errno == EINVAL || errno == ENOTSUP ? std::error_code() : lastError();
}

}  // namespace quillmere
