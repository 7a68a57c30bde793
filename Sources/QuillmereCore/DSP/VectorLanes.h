// How many frames the vector code of this folder works on at once, and for which processors it is compiled.
// Included before any header of the vector library.
#pragma once

#include <cstddef>

// The compiler's baseline (always among them), SSE4, AVX2 and AVX-512 on x86, NEON on Arm; the best one is
// chosen when the program runs. Vectors whose length the compiler does not know are left out: lane counts
// size buffers.
#define HWY_DISABLED_TARGETS \
    (HWY_SSSE3 | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)

namespace quillmere {

// Floats in the longest vector.
inline constexpr std::size_t maxLanes = 16;

}  // namespace quillmere
