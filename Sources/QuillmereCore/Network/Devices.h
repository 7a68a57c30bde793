#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Util/Failure.h"

// The devices of this machine that can run the network, and how one of them is chosen.
namespace quillmere::network {

// Trouble with a compute device: none fits the choice, it lacks something, or it failed. what() is the
// sentence the user reads.
class DeviceError : public Failure {
public:
    using Failure::Failure;
};

// What the executor takes from a device. Sizes in bytes.
struct DeviceLimits {
    std::uint64_t memory = 0;         // of the largest heap on the device
    std::uint64_t largestTensor = 0;  // one tensor can be no larger
    std::uint32_t sharedMemory = 0;   // of one work group
    std::uint32_t workGroupThreads = 0;
    std::array<std::uint32_t, 3> workGroups{};  // of one dispatch, per axis
    std::uint32_t storageBuffers = 0;           // that one shader can use
};

struct DeviceDescription {
    enum class Type {
        processor,   // the hand-written kernels
        discrete,    // a graphics card
        integrated,  // a graphics processor that shares the main memory
        virtualGPU,  // a share of a graphics processor
        software,    // a driver that computes on the processor; for tests, chosen only when asked for
        other,
    };
    int index = 0;  // in the list of computeDevices()
    std::string name;
    Type type = Type::processor;
    std::string driver;  // name and version; empty for the processor
    std::string api;     // "Vulkan 1.3"; empty for the processor
    DeviceLimits limits;
    std::array<std::uint8_t, 16> uuid{};  // tells devices of one name apart
    std::string problem;                  // why the network cannot run on it; empty if it can

    [[nodiscard]] bool usable() const { return problem.empty(); }
};

// "cpu", "discrete", "integrated", "virtual", "software" or "other".
[[nodiscard]] std::string_view rawValue(DeviceDescription::Type type);

// The processor as the only device of a list.
[[nodiscard]] DeviceDescription processor();

// The processor, which is always there and comes first, then the Vulkan devices in the driver's order.
// Loads the installed drivers, which takes some ten milliseconds. A product built without Vulkan has only the
// processor.
[[nodiscard]] std::vector<DeviceDescription> computeDevices();

// The index in devices of the one that choice means. Throws DeviceError if none fits.
//   auto   a discrete, else an integrated, else a virtual GPU; without any the processor
//   cpu    the processor
//   gpu    as auto, but never the processor
//   INDEX  a device's number in the list
//   NAME   any part of a device's name, case ignored; a usable device before an unusable one
[[nodiscard]] int chosenDevice(std::span<const DeviceDescription> devices, std::string_view choice);

// Throws DeviceError if the device cannot be opened.
[[nodiscard]] std::unique_ptr<Backend> makeBackend(const DeviceDescription& device);

}  // namespace quillmere::network
