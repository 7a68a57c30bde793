#include "QuillmereCore/Network/Device/Machine.h"

#include <map>
#include <string>
#include <utility>

#include "QuillmereCore/Util/ThreadSafety.h"
#ifdef QUILLMERE_VULKAN
#include "QuillmereCore/Network/Vulkan/VulkanBackend.h"
#endif

namespace quillmere::network {
namespace {

using Interface = DeviceIdentity::Interface;

std::unique_ptr<Backend> makeBackend(const ComputeDevice& device) {
    switch (device.identity.interface) {
        case Interface::processor:
            return makeCPUBackend();
        case Interface::vulkan:
#ifdef QUILLMERE_VULKAN
            return vulkan::makeBackend(device);
#else
            break;
#endif
    }
    fatal("a device that this product does not know");
}

class ThisMachine final : public Machine {
public:
    [[nodiscard]] std::vector<ComputeDevice> list() override {
        std::vector<ComputeDevice> devices{ComputeDevice::processor()};
#ifdef QUILLMERE_VULKAN
        for (ComputeDevice& device : vulkan::devices())
            devices.push_back(std::move(device));
#endif
        return devices;
    }

    [[nodiscard]] std::shared_ptr<Backend> open(const ComputeDevice& device) override {
        const MutexLock lock(mutex_);
        const std::string key = device.identity.text();
        if (const auto found = opened_.find(key); found != opened_.end()) return found->second;
        return opened_[key] = makeBackend(device);
    }

private:
    Mutex mutex_;
    std::map<std::string, std::shared_ptr<Backend>> opened_ QUILLMERE_GUARDED_BY(mutex_);  // by identity
};

}  // namespace

std::unique_ptr<Machine> thisMachine() {
    return std::make_unique<ThisMachine>();
}

}  // namespace quillmere::network
