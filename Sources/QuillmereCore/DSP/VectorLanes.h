#pragma once

#include <cstddef>

namespace quillmere {

// How many frames the vector code of this folder works on at once: floats in the longest vector of those that
// it is compiled for (VectorTargets.h).
inline constexpr std::size_t maxLanes = 16;

}  // namespace quillmere
