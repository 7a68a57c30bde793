#include "QuillmereCore/Network/Vulkan/VulkanBackend.h"

#include "QuillmereCore/Network/Vulkan/Context.h"
#include "QuillmereCore/Network/Vulkan/Instance.h"
#include "QuillmereCore/Network/Vulkan/VulkanExecutor.h"
#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere::network::vulkan {
namespace {

class VulkanBackend final : public Backend {
public:
    explicit VulkanBackend(const ComputeDevice& description)
        : description_(description), context_(std::make_shared<Context>(description)) {}

    [[nodiscard]] std::unique_ptr<Executor> compile(const Plan& plan, Purpose purpose) override {
        const std::shared_ptr<Context> context = openContext();
        try {
            return std::make_unique<VulkanExecutor>(context, plan, purpose);
        } catch (const DeviceError&) {
            if (!context->isLost()) throw;
        }
        // Lost while nobody used it, to sleep or to another program's mistake: it may well be back.
        return std::make_unique<VulkanExecutor>(openContext(), plan, purpose);
    }

private:
    // The device, opened anew if it was lost.
    [[nodiscard]] std::shared_ptr<Context> openContext() {
        const MutexLock lock(mutex_);
        if (context_->isLost()) context_ = std::make_shared<Context>(description_);
        return context_;
    }

    ComputeDevice description_;
    Mutex mutex_;
    std::shared_ptr<Context> context_ QUILLMERE_GUARDED_BY(mutex_);
};

}  // namespace

std::vector<ComputeDevice> devices() {
    std::vector<ComputeDevice> result;
    try {
        const Instance instance;
        for (const VkPhysicalDevice device : instance.physicalDevices())
            result.push_back(describe(device));
    } catch (const DeviceError&) {
        result.clear();  // a machine without drivers is an ordinary one
    }
    return result;
}

std::unique_ptr<Backend> makeBackend(const ComputeDevice& device) {
    return std::make_unique<VulkanBackend>(device);
}

}  // namespace quillmere::network::vulkan
