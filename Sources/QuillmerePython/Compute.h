#pragma once

#include <string>

#include "QuillmereCore/Network/Device/ChosenDevice.h"

namespace quillmere::python {

// What computes, chosen as on the command line: "auto", "cpu", "gpu", a number or a part of a name. Opened
// when it is first needed. Warns (RuntimeWarning) when the processor stands in for it. Threads: backend may
// be called from any, but not with Python's lock held.
class Compute {
public:
    explicit Compute(const std::string& device);

    // Lives as long as the Compute. Throws DeviceError if there is no such device.
    [[nodiscard]] network::Backend& backend() { return device_.backend(); }

private:
    network::ChosenDevice device_;
};

}  // namespace quillmere::python
