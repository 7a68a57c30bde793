#include "QuillmereCore/Network/Plan.h"

namespace quillmere::network {

std::size_t ParameterShape::elementCount() const {
    std::size_t count = 1;
    for (const int extent : shape)
        count *= static_cast<std::size_t>(extent);
    return count;
}

}  // namespace quillmere::network
