#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "QuillmereApp/Environment.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/Devices.h"

namespace quillmere {

// Names under which the user tells devices apart, one per device: "Processor", and "X" and "X (2)" for two
// cards of the name X.
[[nodiscard]] std::vector<std::string> distinctNames(const std::vector<network::DeviceDescription>& devices);

// A choice of a device for work in the background, which opens it when it is first needed: that loads
// drivers. Where the choice cannot be met any more, the device that would be chosen automatically takes its
// place. Threads: any.
class ChosenDevice {
public:
    // How the opening went.
    struct Opening {
        network::DeviceDescription device;
        std::string problem;  // why the choice was not met, or empty
        std::optional<std::vector<network::DeviceDescription>> devices;  // where they had to be listed
    };
    // What its owner is told, on the thread on which it happens.
    struct Listener {
        std::function<void(const Opening&)> opened;  // once
        std::function<void(const std::string& message)> processorStandsIn;
    };

    static constexpr const char* automatic = "auto";
    static constexpr const char* processor = "cpu";

    // choice: automatic, processor, or one of the distinct names.
    ChosenDevice(const Environment& environment, std::string choice, Listener listener);

    // Waits for the opening, by whichever thread. Throws network::DeviceError; the next call tries again.
    [[nodiscard]] network::Backend& backend();

    // A generator compiled for the device, or for the processor if the device fails.
    [[nodiscard]] std::shared_ptr<SampleGenerator> makeGenerator(ModelBundle bundle);

private:
    [[nodiscard]] network::Backend* open();
    [[nodiscard]] network::Backend* openNamed(Opening& opening);
    [[nodiscard]] network::Backend* openAs(const std::string& choice, Opening& opening);

    std::function<std::vector<network::DeviceDescription>()> listDevices_;
    std::function<OpenDevice(const std::string&)> openDevice_;
    const std::string choice_;
    const Listener listener_;
    std::mutex mutex_;
    network::Backend* backend_ = nullptr;
};

}  // namespace quillmere
