#pragma once

#include <hwy/aligned_allocator.h>

#include <cstddef>
#include <new>

namespace quillmere {

// Scratch memory on a boundary that suits every vector. Not for public headers.
using AlignedFloats = hwy::AlignedFreeUniquePtr<float[]>;

// Uninitialised. Throws std::bad_alloc.
[[nodiscard]] inline AlignedFloats allocateFloats(std::size_t count) {
    AlignedFloats floats = hwy::AllocateAligned<float>(count);
    if (!floats) throw std::bad_alloc();
    return floats;
}

}  // namespace quillmere
