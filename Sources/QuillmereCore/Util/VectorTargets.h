// Which instruction sets vector code is compiled for, and how a file of it begins:
//
//   #define HWY_TARGET_INCLUDE "QuillmereCore/DSP/GriffinLim.cpp"  // the file itself
//   #include "QuillmereCore/Util/VectorTargets.h"
//
// From there on the file is compiled once for each set; headers that it includes before are compiled once. No
// header of the vector library may come earlier. The rest stands in namespaces named HWY_NAMESPACE, and what
// calls it (HWY_EXPORT, HWY_DYNAMIC_DISPATCH: the best set that the processor has) within #if HWY_ONCE.
// Vector code that several files share lies in headers whose names end in -inl.h, which are read once for
// each set, too: their guards follow HWY_TARGET_TOGGLE. Such a file is named to quillmere_vector_code in its
// CMakeLists.txt, which chooses the optimisation.
//
// Without a guard, since every pass over a file reads it again.

// The compiler's baseline (always among them), SSE4, AVX2 and AVX-512 on x86, NEON on Arm. Vectors whose
// length the compiler does not know are left out: lane counts size buffers.
#define HWY_DISABLED_TARGETS \
    (HWY_SSSE3 | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)

#include <hwy/foreach_target.h>  // must come before highway.h

#include <hwy/highway.h>
