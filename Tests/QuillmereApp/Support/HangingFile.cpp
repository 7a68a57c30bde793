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

int openNext(const char* function, const char* path, int flags, mode_t mode) {
    hangAt(path);
    return reinterpret_cast<Open>(::dlsym(RTLD_NEXT, function))(path, flags, mode);
}

}  // namespace

#define QUILLMERE_OPEN(function)                                                                       \
    extern "C" __attribute__((visibility("default"))) int function(const char* path, int flags, ...) { \
        va_list rest;                                                                                  \
        va_start(rest, flags);                                                                         \
        const auto mode = static_cast<mode_t>((flags & O_CREAT) != 0 ? va_arg(rest, unsigned) : 0U);   \
        va_end(rest);                                                                                  \
        return openNext(#function, path, flags, mode);                                                 \
    }
QUILLMERE_OPEN(open)
QUILLMERE_OPEN(open64)
