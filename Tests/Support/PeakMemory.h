#pragma once

#include <sys/resource.h>

#if defined(QUILLMERE_ADDRESS_SANITIZER)
// The address sanitizer keeps what was freed from use, 256 MB of it unless it is told otherwise. In a program
// that counts its memory, one file of which includes this, it keeps little.
extern "C" const char* __asan_default_options() {
    return "quarantine_size_mb=16";
}
#endif

namespace quillmere::testing {

// The most memory that this program has had at once, in megabytes.
inline long peakMegabytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

// The limit of a program that may take so many megabytes, in this build: the thread sanitizer's notes of who
// has used which of them count as the program's, too.
constexpr long megabytesHere(long megabytes) {
#if defined(__SANITIZE_THREAD__)
    return 3 * megabytes;
#else
    return megabytes;
#endif
}

}  // namespace quillmere::testing
