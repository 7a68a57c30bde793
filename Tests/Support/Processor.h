#pragma once

#include <memory>

#include "QuillmereCore/Network/Backend.h"

namespace quillmere::testing {

// What computes in tests that are not about devices.
inline network::Backend& processor() {
    static const std::unique_ptr<network::Backend> backend = network::makeCPUBackend();
    return *backend;
}

}  // namespace quillmere::testing
