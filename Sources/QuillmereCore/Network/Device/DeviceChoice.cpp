#include "QuillmereCore/Network/Device/DeviceChoice.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "QuillmereCore/Util/Text.h"

namespace quillmere::network {
namespace {

using Type = ComputeDevice::Type;

constexpr std::string_view automaticText = "auto";
constexpr std::string_view anyGPUText = "gpu";

// What is taken unless a device is named, the best first.
constexpr std::array gpus{Type::discrete, Type::integrated, Type::virtualGPU};
constexpr std::array processors{Type::processor};

// The first usable device of the types, which come in order of preference; null without any.
const ComputeDevice* firstOf(std::span<const ComputeDevice> devices, std::span<const Type> types) {
    for (const Type type : types) {
        for (const ComputeDevice& device : devices) {
            if (device.type == type && device.usable()) return &device;
        }
    }
    return nullptr;
}

const ComputeDevice* at(std::span<const ComputeDevice> devices, std::string_view index) {
    const auto number = Text::parseInteger(index);
    if (!number || *number < 0 || *number >= std::ssize(devices)) return nullptr;
    return &devices[static_cast<std::size_t>(*number)];
}

const ComputeDevice* firstNamed(std::span<const ComputeDevice> devices, std::string_view part) {
    if (part.empty()) return nullptr;
    const std::string wanted = Text::lowercase(part);
    const ComputeDevice* unusable = nullptr;
    for (const ComputeDevice& device : devices) {
        if (Text::lowercase(device.name()).find(wanted) == std::string::npos) continue;
        if (device.usable()) return &device;
        if (unusable == nullptr) unusable = &device;
    }
    return unusable;
}

const ComputeDevice* labelled(std::span<const ComputeDevice> devices, std::string_view label) {
    const std::vector<std::string> all = labels(devices);
    const auto found = std::find(all.begin(), all.end(), label);
    return found == all.end() ? nullptr : &devices[static_cast<std::size_t>(found - all.begin())];
}

const ComputeDevice* identified(std::span<const ComputeDevice> devices, const DeviceIdentity& identity) {
    const auto found = std::find_if(devices.begin(), devices.end(),
                                    [&](const ComputeDevice& device) { return device.identity == identity; });
    return found == devices.end() ? nullptr : &*found;
}

}  // namespace

DeviceChoice DeviceChoice::of(DeviceIdentity device) {
    DeviceChoice choice;
    choice.kind_ = Kind::device;
    choice.device_ = std::move(device);
    return choice;
}

DeviceChoice DeviceChoice::processor() {
    return of(ComputeDevice::processor().identity);
}

DeviceChoice DeviceChoice::fromOption(std::string_view text) {
    if (text == automaticText) return {};
    if (text == anyGPUText) return {Kind::anyGPU, text};
    if (Text::parseInteger(text)) return {Kind::index, text};
    if (auto identity = DeviceIdentity::parse(text)) return of(std::move(*identity));
    return {Kind::partOfName, text};
}

std::string DeviceChoice::preference() const {
    require(kind_ == Kind::automatic || kind_ == Kind::device, "only one device can be remembered");
    return kind_ == Kind::automatic ? std::string(automaticText) : device_.text();
}

DeviceChoice DeviceChoice::fromPreference(std::string_view text) {
    if (text == automaticText) return {};
    if (auto identity = DeviceIdentity::parse(text)) return of(std::move(*identity));
    return {Kind::label, text};
}

const ComputeDevice* DeviceChoice::find(std::span<const ComputeDevice> devices) const {
    switch (kind_) {
        case Kind::automatic: {
            const ComputeDevice* const gpu = firstOf(devices, gpus);
            return gpu != nullptr ? gpu : firstOf(devices, processors);
        }
        case Kind::anyGPU:
            return firstOf(devices, gpus);
        case Kind::index:
            return at(devices, text_);
        case Kind::partOfName:
            return firstNamed(devices, text_);
        case Kind::label:
            return labelled(devices, text_);
        case Kind::device:
            return identified(devices, device_);
    }
    fatal("unknown kind of choice");
}

const ComputeDevice& DeviceChoice::in(std::span<const ComputeDevice> devices) const {
    const ComputeDevice* const device = find(devices);
    if (device == nullptr) throw NoDeviceError(missing());
    if (!device->usable()) throw DeviceError("{0} cannot be used: {1}", device->name(), device->problem);
    return *device;
}

Message DeviceChoice::missing() const {
    switch (kind_) {
        case Kind::automatic:
        case Kind::anyGPU:
            return Message("No graphics processor that can be used was found.");
        case Kind::index:
        case Kind::partOfName:
            return Message("There is no device \"{0}\".", text_);
        case Kind::label:
        case Kind::device:
            return Message("{0} is not there any more.", name());
    }
    fatal("unknown kind of choice");
}

}  // namespace quillmere::network
