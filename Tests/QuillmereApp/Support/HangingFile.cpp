// Preloaded into the program: a file named hangs.wav is never opened, as on a mount whose server is gone.
// Whoever tries leaves a file hangs.wav.tried beside it.

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdarg>
#include <cstring>
#include <string>

namespace {

void hangAt(const char* path) {
    static constexpr const char* name = "/hangs.wav";
    const std::size_t length = std::strlen(path);
    if (length < std::strlen(name) || std::strcmp(path + length - std::strlen(name), name) != 0) return;
    ::close(::creat((std::string(path) + ".tried").c_str(), 0600));
    for (;;)
        ::pause();
}

using Open = int (*)(const char*, int, ...);

int openNext(const char* path, int flags, mode_t mode) {
    hangAt(path);
    return reinterpret_cast<Open>(::dlsym(RTLD_NEXT, "open"))(path, flags, mode);
}

}  // namespace

// In a hardened build, open without a mode has a name of its own.
#define QUILLMERE_EXPORT extern "C" __attribute__((visibility("default")))

QUILLMERE_EXPORT int open(const char* path, int flags, ...) {
    va_list rest;
    va_start(rest, flags);
    const auto mode = static_cast<mode_t>((flags & O_CREAT) != 0 ? va_arg(rest, unsigned) : 0U);
    va_end(rest);
    return openNext(path, flags, mode);
}
QUILLMERE_EXPORT int __open_2(const char* path, int flags) {
    return openNext(path, flags, 0);
}
