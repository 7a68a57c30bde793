#include "QuillmereCore/Network/Vulkan/VulkanBackend.h"

#include "QuillmereCore/Network/Vulkan/Context.h"
#include "QuillmereCore/Network/Vulkan/Instance.h"
#include "QuillmereCore/Network/Vulkan/VulkanExecutor.h"

namespace quillmere::network::vulkan {
namespace {

class VulkanBackend final : public Backend {
public:
    explicit VulkanBackend(const DeviceDescription& description)
        : device_{Device::Kind::gpu, description.name}, context_(std::make_shared<Context>(description)) {}

    [[nodiscard]] const Device& device() const noexcept override { return device_; }
    [[nodiscard]] std::unique_ptr<Executor> compile(const Plan& plan, Purpose purpose) override {
        return std::make_unique<VulkanExecutor>(context_, plan, purpose);
    }

private:
    Device device_;
    std::shared_ptr<Context> context_;
};

}  // namespace

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
    return std::make_unique<VulkanBackend>(device);
}

}  // namespace quillmere::network::vulkan
