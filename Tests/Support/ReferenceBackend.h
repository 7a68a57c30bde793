#pragma once

#include <memory>

#include "QuillmereCore/Network/Backend.h"

namespace quillmere::testing {

// The network as its formulas read: channel-major tensors, plain loops, double precision. Slow on purpose;
// every faster backend is compared with it. Compiles for both purposes alike, and keeps to the contract of
// network::Executor.
// Threads: one thread at a time.
[[nodiscard]] std::unique_ptr<network::Backend> makeReferenceBackend();

}  // namespace quillmere::testing
