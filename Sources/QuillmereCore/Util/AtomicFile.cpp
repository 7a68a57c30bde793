#include "QuillmereCore/Util/AtomicFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <string>
#include <string_view>
#include <system_error>

#include "QuillmereCore/Util/AtomicFolder.h"
#include "QuillmereCore/Util/Descriptor.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

constexpr mode_t filePermissions = 0666;  // before the umask

// named: the file that a failure names.
void writeAll(int descriptor, std::span<const std::byte> bytes, const fs::path& named) {
    // Linux moves at most about 2 GiB in one call.
    constexpr std::size_t largestPiece = std::size_t{1} << 30;
    while (!bytes.empty()) {
        const ssize_t written = ::write(descriptor, bytes.data(), std::min(bytes.size(), largestPiece));
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) throw FileError(named, lastError());
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
}

// Some file systems have nothing that could be forced to a disk.
bool reachesDisk(int descriptor) {
    return ::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP;
}

constexpr std::string_view temporaryPrefix = ".quillmere-";
constexpr std::string_view temporarySuffix = ".tmp";

bool isTemporaryName(std::string_view name) {
    if (!name.starts_with(temporaryPrefix) || !name.ends_with(temporarySuffix)) return false;
    name.remove_prefix(temporaryPrefix.size());
    if (name.size() <= temporarySuffix.size()) return false;
    name.remove_suffix(temporarySuffix.size());
    return name.find_first_not_of("0123456789-") == std::string_view::npos;
}

// False: somebody else has the lock. A file system that knows no locks keeps nobody out.
bool lock(int descriptor) {
    return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

// False, too, where nobody can tell.
bool hasLostItsName(int descriptor) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && status.st_nlink == 0;
}

fs::path folderOf(const fs::path& file) {
    return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

// A new file next to the destination. It is removed on destruction unless its name was given away. Its lock
// tells that its writer lives.
class TemporaryFile {
public:
    explicit TemporaryFile(const fs::path& destination) : destination_(destination) { create(); }
    ~TemporaryFile() {
        if (owned_)  // while it is locked: afterwards the name may be another thread's
            ::unlinkat(folder_.get(), path_.filename().c_str(), 0);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    [[nodiscard]] const fs::path& path() const { return path_; }

    void write(std::span<const std::byte> bytes) { writeAll(descriptor_.get(), bytes, destination_); }

    // The file stays open, and with it locked, until it has its name.
    void finish(Durability durability) {
        if (durability == Durability::onDisk && !reachesDisk(descriptor_.get()))
            throw FileError(destination_, lastError());
        // Some file systems report a full disk only when a descriptor is closed.
        const int second = ::fcntl(descriptor_.get(), F_DUPFD_CLOEXEC, 0);
        if (second < 0 || (::close(second) != 0 && errno != EINTR))
            throw FileError(destination_, lastError());
    }

    // The name no longer belongs to this object.
    void giveAway() { owned_ = false; }

private:
    // Another thread, another machine on the same share or an earlier crash may own a name: try the next.
    void create() {
        constexpr int attempts = 10000;
        folder_.reset(::open(folderOf(destination_).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!folder_.isOpen()) throw FileError(destination_, lastError());
        for (int attempt = 0; attempt < attempts; ++attempt) {
            path_ =
                destination_.parent_path() / (std::string(temporaryPrefix) + std::to_string(::getpid()) +
                                              "-" + std::to_string(attempt) + std::string(temporarySuffix));
            descriptor_.reset(::openat(folder_.get(), path_.filename().c_str(),
                                       O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, filePermissions));
            if (!descriptor_.isOpen() && errno != EEXIST) break;
            // Who looks for abandoned files may have been quicker than the lock.
            if (descriptor_.isOpen() && lock(descriptor_.get()) && !hasLostItsName(descriptor_.get())) {
                owned_ = true;
                return;
            }
        }
        throw FileError(destination_, lastError());
    }

    fs::path destination_;
    fs::path path_;
    Descriptor folder_;  // the file's own: somebody may rename it meanwhile
    Descriptor descriptor_;
    bool owned_ = false;
};

// Where a replacing write really goes. Renaming over a device or a pipe would destroy it.
fs::path replaceableFile(const fs::path& file) {
    std::error_code ignored;  // a missing file is as good as a regular one
    const fs::file_status status = fs::status(file, ignored);
    if (fs::is_directory(status)) throw FileError(file, std::make_error_code(std::errc::is_a_directory));
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw FileError(file, std::make_error_code(std::errc::operation_not_supported));
    }
    if (!fs::is_symlink(fs::symlink_status(file, ignored))) return file;
    fs::path target = fs::canonical(file, ignored);
    return target.empty() ? file : target;
}

bool nameIsTaken(const fs::path& file) {
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0;
}

bool claimName(const fs::path& from, const fs::path& to) {
    if (const auto claimed = NameClaim::byExclusiveRename(from, to)) return *claimed;
    if (const auto claimed = NameClaim::byHardLink(from, to)) return *claimed;
    return NameClaim::byPlaceholder(from, to);
}

}  // namespace

void writeFileAtomically(const fs::path& file, std::span<const std::byte> bytes, Durability durability) {
    const fs::path destination = replaceableFile(file);
    TemporaryFile temporary(destination);
    temporary.write(bytes);
    temporary.finish(durability);
    if (::rename(temporary.path().c_str(), destination.c_str()) != 0) throw FileError(file, lastError());
    temporary.giveAway();
    if (durability == Durability::disposable) return;
    if (const std::error_code error = syncFolder(folderOf(destination))) throw FileError(file, error);
}

bool writeNewFile(const fs::path& file, std::span<const std::byte> bytes) {
    if (nameIsTaken(file)) return false;  // saves writing; the claim below is what decides
    TemporaryFile temporary(file);
    temporary.write(bytes);
    temporary.finish(Durability::onDisk);
    if (!claimName(temporary.path(), file)) return false;
    temporary.giveAway();
    return true;
}

void createFile(const fs::path& file, std::span<const std::byte> bytes) {
    Descriptor descriptor(::open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, filePermissions));
    if (!descriptor.isOpen()) throw FileError(file, lastError());
    writeAll(descriptor.get(), bytes, file);
    if (!reachesDisk(descriptor.get())) throw FileError(file, lastError());
    if (::close(descriptor.release()) != 0 && errno != EINTR) throw FileError(file, lastError());
}

void removeAbandonedFiles(const fs::path& folder) {
    std::error_code error;  // of any kind: nobody waits for the result
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (!isTemporaryName(entry->path().filename().native())) continue;
        const Descriptor descriptor(
            ::open(entry->path().c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        if (descriptor.isOpen() && ::flock(descriptor.get(), LOCK_EX | LOCK_NB) == 0)
            ::unlink(entry->path().c_str());
    }
}

std::optional<bool> NameClaim::byExclusiveRename(const fs::path& from, const fs::path& to) {
#if defined(RENAME_NOREPLACE)
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
    if (errno == EEXIST) return false;
    if (errno == EINVAL || errno == ENOSYS || errno == ENOTSUP) return std::nullopt;
    throw FileError(to, lastError());
#else
    return std::nullopt;
#endif
}

std::optional<bool> NameClaim::byHardLink(const fs::path& from, const fs::path& to) {
    if (::link(from.c_str(), to.c_str()) == 0) {
        ::unlink(from.c_str());
        return true;
    }
    if (errno == EEXIST) return false;
    // EPERM is what file systems without hard links (FAT) answer.
    if (errno == EPERM || errno == ENOSYS || errno == ENOTSUP) return std::nullopt;
    throw FileError(to, lastError());
}

bool NameClaim::byPlaceholder(const fs::path& from, const fs::path& to) {
    const int descriptor = ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, filePermissions);
    if (descriptor < 0) {
        if (errno == EEXIST) return false;
        throw FileError(to, lastError());
    }
    ::close(descriptor);
    if (::rename(from.c_str(), to.c_str()) == 0) return true;
    const std::error_code reason = lastError();
    ::unlink(to.c_str());
    throw FileError(to, reason);
}

}  // namespace quillmere
