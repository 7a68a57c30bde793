#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <functional>
#include <string_view>

// Replaces the system calls with which files and folders come, go and change their names, for the whole test
// program: one file of it includes this. Each call asks first what is to become of it.
namespace quillmere::testing {

struct SystemCall {
    std::string_view name;
    unsigned flags = 0;  // of renameat2
};

// 0: the call does what it should. An error number: it fails with that. pretend: it succeeds, and nothing
// happens. May end the process. Empty: every call does what it should.
inline std::function<int(const SystemCall&)> onSystemCall;
inline constexpr int pretend = -1;

// While it lives, what the calls of this process ask.
class SystemCallsAsk {
public:
    explicit SystemCallsAsk(std::function<int(const SystemCall&)> question) {
        onSystemCall = std::move(question);
    }
    ~SystemCallsAsk() { onSystemCall = {}; }
    SystemCallsAsk(const SystemCallsAsk&) = delete;
    SystemCallsAsk& operator=(const SystemCallsAsk&) = delete;
};

template <typename... Arguments>
long systemCall(const SystemCall& call, long number, Arguments... arguments) {
    const int answer = onSystemCall ? onSystemCall(call) : 0;
    if (answer == 0) return ::syscall(number, arguments...);
    if (answer == pretend) return 0;
    errno = answer;
    return -1;
}

}  // namespace quillmere::testing

extern "C" {

int mkdir(const char* path, mode_t mode) noexcept {
    return static_cast<int>(quillmere::testing::systemCall({"mkdir"}, SYS_mkdirat, AT_FDCWD, path, mode));
}
ssize_t write(int descriptor, const void* bytes, std::size_t count) {
    return quillmere::testing::systemCall({"write"}, SYS_write, descriptor, bytes, count);
}
int fsync(int descriptor) {
    return static_cast<int>(quillmere::testing::systemCall({"fsync"}, SYS_fsync, descriptor));
}
// Under another name here: there is a struct of this one.
int flockCall(int descriptor, int operation) noexcept __asm__("flock");
int flockCall(int descriptor, int operation) noexcept {
    return static_cast<int>(quillmere::testing::systemCall({"flock"}, SYS_flock, descriptor, operation));
}
int rename(const char* from, const char* to) noexcept {
    return static_cast<int>(
        quillmere::testing::systemCall({"rename"}, SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0U));
}
int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    return static_cast<int>(quillmere::testing::systemCall({"renameat2", flags}, SYS_renameat2, fromFolder,
                                                           from, toFolder, to, flags));
}
int unlink(const char* path) noexcept {
    return static_cast<int>(quillmere::testing::systemCall({"unlink"}, SYS_unlinkat, AT_FDCWD, path, 0));
}
int rmdir(const char* path) noexcept {
    return static_cast<int>(
        quillmere::testing::systemCall({"rmdir"}, SYS_unlinkat, AT_FDCWD, path, AT_REMOVEDIR));
}

}  // extern "C"
