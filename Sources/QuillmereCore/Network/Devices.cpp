#include "QuillmereCore/Network/Devices.h"

#include <algorithm>
#include <utility>

#include "QuillmereCore/Util/Text.h"
#ifdef QUILLMERE_VULKAN
#include "QuillmereCore/Network/Vulkan/VulkanBackend.h"
#endif

namespace quillmere::network {
namespace {

using Type = DeviceDescription::Type;

constexpr std::string_view seeDevices = " 'quillmere-cli devices' lists the devices.";

// What "auto" and "gpu" may take, the best first.
constexpr std::array gpus{Type::discrete, Type::integrated, Type::virtualGPU};
constexpr std::array processors{Type::processor};

// The first usable device of the types, which come in order of preference; -1 without any.
int firstOf(std::span<const DeviceDescription> devices, std::span<const Type> types) {
    for (const Type type : types) {
        for (const DeviceDescription& device : devices) {
            if (device.type == type && device.usable()) return device.index;
        }
    }
    return -1;
}

int firstNamed(std::span<const DeviceDescription> devices, std::string_view part) {
    const std::string wanted = Text::lowercase(part);
    int unusable = -1;
    for (const DeviceDescription& device : devices) {
        if (Text::lowercase(device.name).find(wanted) == std::string::npos) continue;
        if (device.usable()) return device.index;
        if (unusable < 0) unusable = device.index;
    }
    return unusable;
}

int candidate(std::span<const DeviceDescription> devices, std::string_view choice) {
    if (choice == "cpu") return firstOf(devices, processors);
    if (choice == "gpu") return firstOf(devices, gpus);
    if (choice == "auto") {
        const int found = firstOf(devices, gpus);
        return found >= 0 ? found : firstOf(devices, processors);
    }
    if (const auto index = Text::parseInteger(choice)) {
        return *index >= 0 && *index < std::ssize(devices) ? static_cast<int>(*index) : -1;
    }
    return choice.empty() ? -1 : firstNamed(devices, choice);
}

}  // namespace

std::string_view rawValue(Type type) {
    switch (type) {
        case Type::processor:
            return "cpu";
        case Type::discrete:
            return "discrete";
        case Type::integrated:
            return "integrated";
        case Type::virtualGPU:
            return "virtual";
        case Type::software:
            return "software";
        case Type::other:
            return "other";
    }
    fatal("unknown device type");
}

DeviceDescription processor() {
    DeviceDescription device;
    device.name = "CPU";
    return device;
}

std::vector<DeviceDescription> computeDevices() {
    std::vector<DeviceDescription> devices{processor()};
#ifdef QUILLMERE_VULKAN
    for (DeviceDescription& device : vulkan::devices())
        devices.push_back(std::move(device));
#endif
    for (std::size_t i = 0; i < devices.size(); ++i)
        devices[i].index = static_cast<int>(i);
    return devices;
}

int chosenDevice(std::span<const DeviceDescription> devices, std::string_view choice) {
    const int index = candidate(devices, choice);
    if (index < 0) {
        if (choice == "gpu")
            throw DeviceError("No graphics processor that can be used was found." + std::string(seeDevices));
        throw DeviceError("There is no device \"" + std::string(choice) + "\"." + std::string(seeDevices));
    }
    const DeviceDescription& device = devices[static_cast<std::size_t>(index)];
    if (!device.usable()) throw DeviceError(device.name + " cannot be used: " + device.problem);
    return index;
}

std::unique_ptr<Backend> makeBackend(const DeviceDescription& device) {
    if (device.type == Type::processor) return makeCPUBackend();
#ifdef QUILLMERE_VULKAN
    return vulkan::makeBackend(device);
#else
    fatal("a device that this product does not know");
#endif
}

}  // namespace quillmere::network
