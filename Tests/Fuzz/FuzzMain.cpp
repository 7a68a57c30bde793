// One target as a program of the fuzzer.

#include <cstddef>
#include <cstdint>
#include <span>

#include "Fuzz/FuzzTargets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    quillmere::fuzz::QUILLMERE_FUZZ_TARGET(std::as_bytes(std::span(bytes, size)));
    return 0;
}
