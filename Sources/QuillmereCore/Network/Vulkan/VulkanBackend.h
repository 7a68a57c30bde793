#pragma once

#include <memory>
#include <vector>

#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/Device/ComputeDevice.h"

// The network on any graphics processor with a Vulkan 1.1 driver.
namespace quillmere::network::vulkan {

// The devices of all installed drivers, in the loader's order; none if there is no driver.
[[nodiscard]] std::vector<ComputeDevice> devices();

// Opens a device of devices(). Throws DeviceError if it is gone or does not open. The backend's compile()
// throws DeviceError for a network that the device cannot take; a step, encode or decode throws DeviceError
// if the device is lost, and its executor is of no use then. The next compile() opens a lost device anew, and
// throws DeviceError if that fails too.
// Threads: backend and executors may be used by several threads, each executor by one at a time.
[[nodiscard]] std::unique_ptr<Backend> makeBackend(const ComputeDevice& device);

}  // namespace quillmere::network::vulkan
