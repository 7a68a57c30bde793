#include "QuillmereCore/Util/StandardStreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <initializer_list>

namespace quillmere {

void occupyStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(stream, F_GETFD) >= 0 || errno != EBADF) continue;
        // Open the wrong way round, and with the lowest number that is free, which is this one.
        const int flags = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        if (::open("/dev/null", flags) != stream) std::_Exit(EXIT_FAILURE);  // there is nobody to tell why
    }
}

}  // namespace quillmere
