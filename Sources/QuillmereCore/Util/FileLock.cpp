#include "QuillmereCore/Util/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <thread>
#include <utility>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds pause(20);  // between two attempts
constexpr mode_t permissions = 0666;            // before the umask

bool cannotBeWritten(int error) {
    return error == EACCES || error == EPERM || error == EROFS;
}

bool knowsNoLocks(int error) {
    return error == ENOLCK || error == ENOSYS || error == ENOTSUP || error == EINVAL;
}

// Whether the open file has its name still: whoever held the lock before has removed it.
bool isStillNamed(const fs::path& file, const Descriptor& descriptor) {
    struct stat named {};
    struct stat opened {};
    return ::stat(file.c_str(), &named) == 0 && ::fstat(descriptor.get(), &opened) == 0 &&
           named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

// 0, or the reason why the lock was not taken.
int tryLock(const Descriptor& descriptor, int kind) {
    int result = 0;
    do {
        result = ::flock(descriptor.get(), kind | LOCK_NB);
    } while (result != 0 && errno == EINTR);
    return result == 0 ? 0 : errno;
}

}  // namespace

FileLock::FileLock(fs::path file, Descriptor descriptor)
    : file_(std::move(file)), descriptor_(std::move(descriptor)) {}

FileLock::~FileLock() {
    // Before the lock is given up: afterwards the file may be somebody else's.
    if (descriptor_.isOpen()) ::unlink(file_.c_str());
}

std::optional<FileLock> FileLock::acquire(const fs::path& file, std::chrono::milliseconds patience,
                                          const std::stop_token& stop) {
    const Clock::time_point end = Clock::now() + patience;
    while (true) {
        Descriptor descriptor(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, permissions));
        if (!descriptor.isOpen()) {
            if (cannotBeWritten(errno)) return FileLock(file, Descriptor());
            throw FileError(file, lastError());
        }
        const int error = tryLock(descriptor, LOCK_EX);
        if (error == 0 && isStillNamed(file, descriptor)) return FileLock(file, std::move(descriptor));
        if (knowsNoLocks(error)) {
            ::unlink(file.c_str());
            return FileLock(file, Descriptor());
        }
        if (error != 0 && error != EWOULDBLOCK) throw FileError(file, {error, std::generic_category()});
        if (stop.stop_requested()) throw CancellationError();
        if (Clock::now() >= end) return std::nullopt;
        std::this_thread::sleep_for(pause);
    }
}

bool FileLock::isHeld(const fs::path& file) {
    const Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    return descriptor.isOpen() && tryLock(descriptor, LOCK_SH) == EWOULDBLOCK;
}

}  // namespace quillmere
