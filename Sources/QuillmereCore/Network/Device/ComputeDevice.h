#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Message.h"

// What can compute: which device it is, and what is known of it.
namespace quillmere::network {

// Trouble with a compute device: none fits the choice, it lacks something, or it failed. what() is the
// sentence the user reads.
class DeviceError : public Failure {
public:
    using Failure::Failure;
};

// Which device it is. It stays the same when devices come and go, so it may be kept and compared with what a
// later listing finds.
struct DeviceIdentity {
    enum class Interface {
        processor,  // the hand-written kernels
        vulkan,
    };
    using UUID = std::array<std::uint8_t, 16>;

    Interface interface = Interface::processor;
    UUID uuid{};  // the driver's; tells devices of one name apart. Zero for the processor
    std::string name;

    // "cpu" for the processor, else "vulkan:UUID:NAME" with 32 hexadecimal digits.
    [[nodiscard]] std::string text() const;
    // The identity of that text; nothing for any other text.
    [[nodiscard]] static std::optional<DeviceIdentity> parse(std::string_view text);

    friend bool operator==(const DeviceIdentity&, const DeviceIdentity&) = default;
};

struct ComputeDevice {
    enum class Type {
        processor,
        discrete,    // a graphics card
        integrated,  // a graphics processor that shares the main memory
        virtualGPU,  // a share of a graphics processor
        software,    // a driver that computes on the processor; for tests, chosen only when asked for
        other,
    };

    // What the executor takes from a device. Sizes in bytes.
    struct Limits {
        std::uint64_t memory = 0;         // of the largest heap on the device
        std::uint64_t largestTensor = 0;  // one tensor can be no larger
        std::uint32_t sharedMemory = 0;   // of one work group
        std::uint32_t workGroupThreads = 0;
        std::array<std::uint32_t, 3> workGroups{};  // of one dispatch, per axis
        std::uint32_t storageBuffers = 0;           // that one shader can use
    };

    DeviceIdentity identity;
    Type type = Type::processor;
    std::string driver;  // name and version; empty for the processor
    std::string api;     // "Vulkan 1.3"; empty for the processor
    Limits limits;       // zeros for the processor
    Message problem;     // why the network cannot run on it; empty if it can

    [[nodiscard]] const std::string& name() const { return identity.name; }
    [[nodiscard]] bool usable() const { return problem.empty(); }

    [[nodiscard]] static ComputeDevice processor();
};

// "cpu", "discrete", "integrated", "virtual", "software" or "other".
[[nodiscard]] std::string_view rawValue(ComputeDevice::Type type);

// Names for people, one per device of a list and no two alike: "Processor", and "X" and "X (2)" for two cards
// of the name X. They hold for this list only: the order of cards may change. In English.
[[nodiscard]] std::vector<std::string> labels(std::span<const ComputeDevice> devices);

}  // namespace quillmere::network
