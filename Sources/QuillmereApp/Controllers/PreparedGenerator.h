#pragma once

#include <functional>
#include <memory>

#include "QuillmereCore/Generate/Generator.h"

namespace quillmere {

// Gives the generator of a model on the device that is chosen for it, compiled anew where that is another one
// than before. To be called in the background.
using PreparedGenerator = std::function<std::shared_ptr<SampleGenerator>()>;

}  // namespace quillmere
