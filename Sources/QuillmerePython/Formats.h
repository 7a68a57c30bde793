#pragma once

#include <string>

#include "QuillmereCore/Audio/AudioIO.h"

namespace quillmere::python {

// Throws Python's ValueError for a name that no format has.
[[nodiscard]] OutputFormat formatNamed(const std::string& name);

}  // namespace quillmere::python
