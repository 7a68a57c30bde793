#include "Support/FaultLayer.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <linux/limits.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <optional>
#include <utility>

namespace quillmere::testing {
namespace {

std::mutex mutex;
std::atomic<bool> isWatching = false;
thread_local bool isWithin = false;  // this thread is in a function of the watch

FileCallWatch& currentWatch() {
    static FileCallWatch watch;
    return watch;
}

// ---- Paths

// Nothing for what has none: a pipe, a socket, a descriptor that is closed.
std::string pathOf(int descriptor) {
    std::array<char, PATH_MAX> path{};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const long length = ::syscall(SYS_readlinkat, AT_FDCWD, link.c_str(), path.data(), path.size());
    return length > 0 && path.front() == '/' ? std::string(path.data(), static_cast<std::size_t>(length))
                                             : std::string();
}

std::string currentFolder() {
    std::array<char, PATH_MAX> path{};
    return ::syscall(SYS_getcwd, path.data(), path.size()) > 0 ? std::string(path.data()) : std::string();
}

std::string pathOf(int folder, const char* name) {
    if (name == nullptr || *name == '/') return name == nullptr ? std::string() : std::string(name);
    const std::string base = folder == AT_FDCWD ? currentFolder() : pathOf(folder);
    return *name == '\0' ? base : base + "/" + name;
}

bool isBelow(const std::string& path, const std::string& folder) {
    return path.starts_with(folder) &&
           (path.size() == folder.size() || folder == "/" || path[folder.size()] == '/');
}

// ---- Calls

class Within {
public:
    Within() { isWithin = true; }
    ~Within() { isWithin = false; }
    Within(const Within&) = delete;
    Within& operator=(const Within&) = delete;
};

// Does work unless the watch refuses it. Both happen under the lock where somebody wants to know the order in
// which calls took effect. makeCall is asked for the call only while there is a watch.
template <typename MakeCall, typename Work>
auto watched(const MakeCall& makeCall, const Work& work) -> decltype(work()) {
    if (!isWatching || isWithin) return work();
    const int before = errno;
    const FileCall call = makeCall();
    const FileCallWatch& watch = currentWatch();
    const std::string& folder = watch.folder.native();
    const bool concerns = isBelow(call.path, folder) || (!call.other.empty() && isBelow(call.other, folder));
    errno = before;
    if (!concerns) return work();
    std::unique_lock lock(mutex);
    const Within within;
    const int error = watch.before(call);
    if (error != 0) {
        if (call.kind == FileCall::Kind::close) (void)work();
        errno = error;
        if constexpr (std::is_pointer_v<decltype(work())>)
            return nullptr;
        else
            return static_cast<decltype(work())>(-1);
    }
    errno = before;
    if (!watch.after) {
        lock.unlock();
        return work();
    }
    const auto result = work();
    const int outcome = errno;
    if constexpr (std::is_pointer_v<decltype(work())>) {
        if (result != nullptr) watch.after(call, 0);
    } else if (result >= 0) {
        watch.after(call, static_cast<std::size_t>(result));
    }
    errno = outcome;
    return result;
}

using Kind = FileCall::Kind;

template <typename Result, typename... Arguments>
Result system(long number, Arguments... arguments) {
    return static_cast<Result>(::syscall(number, arguments...));
}

// The function that ours has taken the place of.
template <typename Function>
Function* original(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

int openFile(const char* name, int folder, const char* path, int flags, mode_t mode) {
    return watched(
        [&] {
            return FileCall{Kind::open, name, pathOf(folder, path), {}, flags};
        },
        [&] { return system<int>(SYS_openat, folder, path, flags, mode); });
}

int look(const char* name, int folder, const char* path, struct stat* status, int flags) {
    return watched(
        [&] {
            return FileCall{Kind::look, name, pathOf(folder, path)};
        },
        [&] { return system<int>(SYS_newfstatat, folder, path, status, flags); });
}

int renameFile(const char* name, int fromFolder, const char* from, int toFolder, const char* to,
               unsigned flags) {
    return watched(
        [&] {
            return FileCall{Kind::rename, name, pathOf(fromFolder, from), pathOf(toFolder, to),
                            static_cast<int>(flags)};
        },
        [&] { return system<int>(SYS_renameat2, fromFolder, from, toFolder, to, flags); });
}

int removeEntry(const char* name, int folder, const char* path, int flags) {
    return watched(
        [&] {
            return FileCall{Kind::remove, name, pathOf(folder, path)};
        },
        [&] { return system<int>(SYS_unlinkat, folder, path, flags); });
}

int makeFolder(const char* name, int folder, const char* path, mode_t mode) {
    return watched(
        [&] {
            return FileCall{Kind::makeFolder, name, pathOf(folder, path)};
        },
        [&] { return system<int>(SYS_mkdirat, folder, path, mode); });
}

template <typename... Arguments>
ssize_t readBytes(const char* name, long number, int descriptor, Arguments... arguments) {
    return watched(
        [&] {
            return FileCall{Kind::read, name, pathOf(descriptor)};
        },
        [&] { return system<ssize_t>(number, descriptor, arguments...); });
}

template <typename Function>
dirent* nextEntry(const char* name, DIR* folder) {
    static Function* const next = original<Function>(name);
    return watched(
        [&] {
            return FileCall{Kind::list, name, pathOf(::dirfd(folder))};
        },
        [&] { return reinterpret_cast<dirent*>(next(folder)); });
}

FILE* openStream(const char* name, const char* path, const char* mode) {
    static auto* const open = original<FILE*(const char*, const char*)>("fopen64");
    const int flags = *mode == 'r' ? O_RDONLY : O_WRONLY | O_CREAT;
    return watched(
        [&] {
            return FileCall{Kind::open, name, pathOf(AT_FDCWD, path), {}, flags};
        },
        [&] { return open(path, mode); });
}

}  // namespace

void watchFiles(FileCallWatch watch) {
    const std::scoped_lock lock(mutex);
    currentWatch() = std::move(watch);
    isWatching = true;
}

void watchFilesNoMore() {
    const std::scoped_lock lock(mutex);
    isWatching = false;
    currentWatch() = {};
}

// ---- What takes the place of the C library's functions

// Each has a name of its own here and the function's in the program: headers declare the latter in ways that
// differ between systems. Those that end in _chk or _2 are what optimised code calls where the size of a
// buffer is known.
#define QUILLMERE_IN_PLACE_OF(result, ours, name, ...) \
    extern "C" result ours(__VA_ARGS__) __asm__(name); \
    extern "C" result ours(__VA_ARGS__)

QUILLMERE_IN_PLACE_OF(int, callOpen, "open", const char* path, int flags, mode_t mode) {
    return openFile("open", AT_FDCWD, path, flags, mode);
}
QUILLMERE_IN_PLACE_OF(int, callOpen64, "open64", const char* path, int flags, mode_t mode) {
    return openFile("open", AT_FDCWD, path, flags, mode);
}
QUILLMERE_IN_PLACE_OF(int, callOpen2, "__open_2", const char* path, int flags) {
    return openFile("open", AT_FDCWD, path, flags, 0);
}
QUILLMERE_IN_PLACE_OF(int, callOpen642, "__open64_2", const char* path, int flags) {
    return openFile("open", AT_FDCWD, path, flags, 0);
}
QUILLMERE_IN_PLACE_OF(int, callOpenAt, "openat", int folder, const char* path, int flags, mode_t mode) {
    return openFile("openat", folder, path, flags, mode);
}
QUILLMERE_IN_PLACE_OF(int, callOpenAt64, "openat64", int folder, const char* path, int flags, mode_t mode) {
    return openFile("openat", folder, path, flags, mode);
}
QUILLMERE_IN_PLACE_OF(int, callOpenAt2, "__openat_2", int folder, const char* path, int flags) {
    return openFile("openat", folder, path, flags, 0);
}
QUILLMERE_IN_PLACE_OF(int, callOpenAt642, "__openat64_2", int folder, const char* path, int flags) {
    return openFile("openat", folder, path, flags, 0);
}
QUILLMERE_IN_PLACE_OF(FILE*, callFopen, "fopen", const char* path, const char* mode) {
    return openStream("fopen", path, mode);
}
QUILLMERE_IN_PLACE_OF(FILE*, callFopen64, "fopen64", const char* path, const char* mode) {
    return openStream("fopen", path, mode);
}
QUILLMERE_IN_PLACE_OF(DIR*, callOpendir, "opendir", const char* path) {
    static auto* const open = original<DIR*(const char*)>("opendir");
    return watched(
        [&] {
            return FileCall{Kind::open, "opendir", pathOf(AT_FDCWD, path)};
        },
        [&] { return open(path); });
}

QUILLMERE_IN_PLACE_OF(ssize_t, callRead, "read", int descriptor, void* bytes, std::size_t count) {
    return readBytes("read", SYS_read, descriptor, bytes, count);
}
QUILLMERE_IN_PLACE_OF(ssize_t, callReadChk, "__read_chk", int descriptor, void* bytes, std::size_t count) {
    return readBytes("read", SYS_read, descriptor, bytes, count);
}
QUILLMERE_IN_PLACE_OF(ssize_t, callPread, "pread", int descriptor, void* bytes, std::size_t count, off_t at) {
    return readBytes("pread", SYS_pread64, descriptor, bytes, count, at);
}
QUILLMERE_IN_PLACE_OF(ssize_t, callPread64, "pread64", int descriptor, void* bytes, std::size_t count,
                      off_t at) {
    return readBytes("pread", SYS_pread64, descriptor, bytes, count, at);
}
QUILLMERE_IN_PLACE_OF(ssize_t, callPreadChk, "__pread_chk", int descriptor, void* bytes, std::size_t count,
                      off_t at) {
    return readBytes("pread", SYS_pread64, descriptor, bytes, count, at);
}
QUILLMERE_IN_PLACE_OF(ssize_t, callPread64Chk, "__pread64_chk", int descriptor, void* bytes,
                      std::size_t count, off_t at) {
    return readBytes("pread", SYS_pread64, descriptor, bytes, count, at);
}

QUILLMERE_IN_PLACE_OF(ssize_t, callWrite, "write", int descriptor, const void* bytes, std::size_t count) {
    return watched(
        [&] {
            FileCall call{Kind::write, "write", pathOf(descriptor)};
            call.bytes = {static_cast<const std::byte*>(bytes), count};
            return call;
        },
        [&] { return system<ssize_t>(SYS_write, descriptor, bytes, count); });
}
QUILLMERE_IN_PLACE_OF(int, callClose, "close", int descriptor) {
    return watched(
        [&] {
            return FileCall{Kind::close, "close", pathOf(descriptor)};
        },
        [&] { return system<int>(SYS_close, descriptor); });
}
QUILLMERE_IN_PLACE_OF(int, callFsync, "fsync", int descriptor) {
    return watched(
        [&] {
            return FileCall{Kind::sync, "fsync", pathOf(descriptor)};
        },
        [&] { return system<int>(SYS_fsync, descriptor); });
}
QUILLMERE_IN_PLACE_OF(void*, callMmap, "mmap", void* place, std::size_t size, int protection, int flags,
                      int descriptor, off_t at) {
    const auto map = [&] {
        return reinterpret_cast<void*>(::syscall(SYS_mmap, place, size, protection, flags, descriptor, at));
    };
    if ((flags & MAP_ANONYMOUS) != 0) return map();
    void* const mapped = watched([&] { return FileCall{Kind::map, "mmap", pathOf(descriptor)}; }, map);
    return mapped == nullptr ? MAP_FAILED : mapped;
}

QUILLMERE_IN_PLACE_OF(int, callStat, "stat", const char* path, struct stat* status) {
    return look("stat", AT_FDCWD, path, status, 0);
}
QUILLMERE_IN_PLACE_OF(int, callStat64, "stat64", const char* path, struct stat* status) {
    return look("stat", AT_FDCWD, path, status, 0);
}
QUILLMERE_IN_PLACE_OF(int, callLstat, "lstat", const char* path, struct stat* status) {
    return look("lstat", AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}
QUILLMERE_IN_PLACE_OF(int, callLstat64, "lstat64", const char* path, struct stat* status) {
    return look("lstat", AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW);
}
QUILLMERE_IN_PLACE_OF(int, callFstat, "fstat", int descriptor, struct stat* status) {
    return look("fstat", descriptor, "", status, AT_EMPTY_PATH);
}
QUILLMERE_IN_PLACE_OF(int, callFstat64, "fstat64", int descriptor, struct stat* status) {
    return look("fstat", descriptor, "", status, AT_EMPTY_PATH);
}
QUILLMERE_IN_PLACE_OF(int, callFstatAt, "fstatat", int folder, const char* path, struct stat* status,
                      int flags) {
    return look("fstatat", folder, path, status, flags);
}
QUILLMERE_IN_PLACE_OF(int, callFstatAt64, "fstatat64", int folder, const char* path, struct stat* status,
                      int flags) {
    return look("fstatat", folder, path, status, flags);
}
QUILLMERE_IN_PLACE_OF(int, callAccess, "access", const char* path, int mode) {
    return watched(
        [&] {
            return FileCall{Kind::look, "access", pathOf(AT_FDCWD, path)};
        },
        [&] { return system<int>(SYS_faccessat, AT_FDCWD, path, mode); });
}
QUILLMERE_IN_PLACE_OF(dirent*, callReaddir, "readdir", DIR* folder) {
    return nextEntry<dirent*(DIR*)>("readdir", folder);
}
QUILLMERE_IN_PLACE_OF(dirent*, callReaddir64, "readdir64", DIR* folder) {
    return nextEntry<dirent*(DIR*)>("readdir64", folder);
}

QUILLMERE_IN_PLACE_OF(int, callRename, "rename", const char* from, const char* to) {
    return renameFile("rename", AT_FDCWD, from, AT_FDCWD, to, 0);
}
QUILLMERE_IN_PLACE_OF(int, callRenameAt2, "renameat2", int fromFolder, const char* from, int toFolder,
                      const char* to, unsigned flags) {
    return renameFile("renameat2", fromFolder, from, toFolder, to, flags);
}
QUILLMERE_IN_PLACE_OF(int, callLink, "link", const char* from, const char* to) {
    return watched(
        [&] {
            return FileCall{Kind::link, "link", pathOf(AT_FDCWD, from), pathOf(AT_FDCWD, to)};
        },
        [&] { return system<int>(SYS_linkat, AT_FDCWD, from, AT_FDCWD, to, 0); });
}
QUILLMERE_IN_PLACE_OF(int, callMkdir, "mkdir", const char* path, mode_t mode) {
    return makeFolder("mkdir", AT_FDCWD, path, mode);
}
QUILLMERE_IN_PLACE_OF(int, callUnlink, "unlink", const char* path) {
    return removeEntry("unlink", AT_FDCWD, path, 0);
}
QUILLMERE_IN_PLACE_OF(int, callUnlinkAt, "unlinkat", int folder, const char* path, int flags) {
    return removeEntry("unlinkat", folder, path, flags);
}
QUILLMERE_IN_PLACE_OF(int, callRmdir, "rmdir", const char* path) {
    return removeEntry("rmdir", AT_FDCWD, path, AT_REMOVEDIR);
}
QUILLMERE_IN_PLACE_OF(int, callRemove, "remove", const char* path) {
    const int result = removeEntry("unlink", AT_FDCWD, path, 0);
    return result != 0 && errno == EISDIR ? removeEntry("rmdir", AT_FDCWD, path, AT_REMOVEDIR) : result;
}

}  // namespace quillmere::testing
