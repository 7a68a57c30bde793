#include "QuillmereCore/Network/Vulkan/VulkanBackend.h"

#include "QuillmereCore/Network/Vulkan/Instance.h"

namespace quillmere::network::vulkan {

std::vector<DeviceDescription> devices() {
    std::vector<DeviceDescription> result;
    try {
        const Instance instance;
        for (const VkPhysicalDevice device : instance.physicalDevices())
            result.push_back(describe(device));
    } catch (const DeviceError&) {
        result.clear();  // a machine without drivers is an ordinary one
    }
    return result;
}

std::unique_ptr<Backend> makeBackend(const DeviceDescription& device) {
    throw DeviceError(device.name + " cannot run the network yet.");
}

}  // namespace quillmere::network::vulkan
