#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <vulkan/vulkan.h>

#include "QuillmereCore/Network/Device/ComputeDevice.h"

namespace quillmere::network::vulkan {

// Throws DeviceError unless result is VK_SUCCESS, with a sentence that names the device and says what to do.
// what completes "... failed while ", a translatable text.
void check(VkResult result, const std::string& device, const char* what);

// Checks by the validation layers, for tests. Every message goes to onMessage, on the thread that causes it.
struct Validation {
    enum class Extra { none, synchronization, gpuAssisted };
    Extra extra = Extra::none;
    std::function<void(const std::string& message)> onMessage;
};

// The loaded drivers. Throws DeviceError if there is no driver, or if validation is asked for and the layers
// are not installed.
class Instance {
public:
    explicit Instance(std::optional<Validation> validation = {});
    ~Instance();
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    [[nodiscard]] VkInstance get() const { return instance_; }
    [[nodiscard]] std::vector<VkPhysicalDevice> physicalDevices() const;
    // Throws DeviceError if the device is gone.
    [[nodiscard]] VkPhysicalDevice find(const DeviceIdentity& identity) const;

private:
    std::optional<Validation> validation_;  // the messenger refers to it
    VkInstance instance_ = VK_NULL_HANDLE;
    VkDebugUtilsMessengerEXT messenger_ = VK_NULL_HANDLE;
};

[[nodiscard]] ComputeDevice describe(VkPhysicalDevice device);

// The first queue family that computes; nothing if none does.
[[nodiscard]] std::optional<std::uint32_t> computeQueueFamily(VkPhysicalDevice device);

}  // namespace quillmere::network::vulkan
