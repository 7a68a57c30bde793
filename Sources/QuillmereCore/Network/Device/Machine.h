#pragma once

#include <memory>
#include <vector>

#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/Device/ComputeDevice.h"

namespace quillmere::network {

// The devices of a computer; tests put others in their place.
// Threads: every member may be called from any thread.
class Machine {
public:
    virtual ~Machine() = default;

    // The processor, which is always there and comes first, then the others in their drivers' order. Loads
    // the installed drivers, which takes some ten milliseconds.
    [[nodiscard]] virtual std::vector<ComputeDevice> list() = 0;
    // Ready to compile networks. Throws DeviceError if the device is gone or does not open. The processor
    // loads no drivers.
    [[nodiscard]] virtual std::shared_ptr<Backend> open(const ComputeDevice& device) = 0;
};

// This computer. It opens a device once and hands out the same backend ever after. A product built without
// Vulkan has only the processor.
[[nodiscard]] std::unique_ptr<Machine> thisMachine();

}  // namespace quillmere::network
