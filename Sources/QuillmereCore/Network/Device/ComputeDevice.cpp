#include "QuillmereCore/Network/Device/ComputeDevice.h"

#include <algorithm>
#include <utility>

#include "QuillmereCore/Util/Text.h"

namespace quillmere::network {
namespace {

using Type = ComputeDevice::Type;

constexpr std::string_view processorText = translatable("cpu");
constexpr std::string_view vulkanPrefix = "vulkan:";

}  // namespace

std::string DeviceIdentity::text() const {
    if (interface == Interface::processor) return std::string(processorText);
    return std::string(vulkanPrefix) + Text::hexadecimal(uuid) + ":" + name;
}

std::optional<DeviceIdentity> DeviceIdentity::parse(std::string_view text) {
    if (text == processorText) return ComputeDevice::processor().identity;
    if (!text.starts_with(vulkanPrefix)) return std::nullopt;
    text.remove_prefix(vulkanPrefix.size());
    DeviceIdentity identity;
    identity.interface = Interface::vulkan;
    const std::size_t digits = 2 * identity.uuid.size();
    if (text.size() < digits + 2 || text[digits] != ':') return std::nullopt;
    const auto uuid = Text::parseHexadecimal(text.substr(0, digits));
    if (!uuid) return std::nullopt;
    std::copy(uuid->begin(), uuid->end(), identity.uuid.begin());
    identity.name = text.substr(digits + 1);
    return identity;
}

ComputeDevice ComputeDevice::processor() {
    ComputeDevice device;
    device.identity.name = "CPU";
    return device;
}

std::string_view rawValue(Type type) {
    switch (type) {
        case Type::processor:
            return processorText;
        case Type::discrete:
            return translatable("discrete");
        case Type::integrated:
            return translatable("integrated");
        case Type::virtualGPU:
            return translatable("virtual");
        case Type::software:
            return translatable("software");
        case Type::other:
            return translatable("other");
    }
    fatal("unknown device type");
}

std::vector<std::string> labels(std::span<const ComputeDevice> devices) {
    std::vector<std::string> labels;
    for (const ComputeDevice& device : devices) {
        const std::string name = device.type == Type::processor ? "Processor" : device.name();
        const auto isTaken = [&](const std::string& wanted) {
            return std::find(labels.begin(), labels.end(), wanted) != labels.end();
        };
        std::string label = name;
        for (int number = 2; isTaken(label); ++number)
            label = name + " (" + std::to_string(number) + ")";
        labels.push_back(std::move(label));
    }
    return labels;
}

}  // namespace quillmere::network
