#pragma once

#include <span>
#include <string>
#include <string_view>

#include "QuillmereCore/Network/Device/ComputeDevice.h"
#include "QuillmereCore/Util/Message.h"

namespace quillmere::network {

// No device is what was asked for.
class NoDeviceError : public DeviceError {
public:
    using DeviceError::DeviceError;
};

// What a user asks for, as text and against a list of devices. Made without one: automatic.
class DeviceChoice {
public:
    // A discrete, else an integrated, else a virtual GPU; without any the processor.
    DeviceChoice() = default;
    [[nodiscard]] static DeviceChoice of(DeviceIdentity device);
    [[nodiscard]] static DeviceChoice processor();

    // As on a command line.
    //   auto   automatic
    //   cpu    the processor
    //   gpu    as auto, but never the processor
    //   INDEX  a device's number in the list, from 0
    //   NAME   a DeviceIdentity's text, or any part of a device's name, case ignored; a usable device comes
    //          before an unusable one
    [[nodiscard]] static DeviceChoice fromOption(std::string_view text);

    // A choice to be remembered as text: automatic or one device by its identity.
    [[nodiscard]] std::string preference() const;
    // The choice that preference() made the text of. Any other text is a label, as earlier versions stored.
    [[nodiscard]] static DeviceChoice fromPreference(std::string_view text);

    [[nodiscard]] bool isAutomatic() const { return kind_ == Kind::automatic; }
    [[nodiscard]] bool isProcessor() const { return *this == processor(); }
    // Of the device, as far as it can be told without a list.
    [[nodiscard]] const std::string& name() const { return kind_ == Kind::device ? device_.name : text_; }

    // The one of devices that is meant, usable or not; null if none is.
    [[nodiscard]] const ComputeDevice* find(std::span<const ComputeDevice> devices) const;
    // The same, but one that can be used. Throws NoDeviceError if none is meant, and DeviceError with the
    // reason if it cannot be used.
    [[nodiscard]] const ComputeDevice& in(std::span<const ComputeDevice> devices) const;
    // The sentence that find() found none.
    [[nodiscard]] Message missing() const;

    friend bool operator==(const DeviceChoice&, const DeviceChoice&) = default;

private:
    enum class Kind { automatic, anyGPU, index, partOfName, label, device };

    DeviceChoice(Kind kind, std::string_view text) : kind_(kind), text_(text) {}

    Kind kind_ = Kind::automatic;
    std::string text_;       // as it was given, of all kinds but device
    DeviceIdentity device_;  // of Kind::device
};

}  // namespace quillmere::network
