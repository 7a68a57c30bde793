#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/Device/DeviceChoice.h"
#include "QuillmereCore/Network/Device/Machine.h"
#include "QuillmereCore/Util/Message.h"
#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere::network {

// A choice of a device that is carried out: the device is opened when it is first needed, and something else
// computes where it fails. That happens in three ways, each told in a sentence for the user:
//
//   - One device was asked for and cannot be had (it is gone, cannot be used, or does not open): the device
//     that is taken automatically takes its place, if that is wanted.
//   - The device that is taken automatically does not open: the processor takes its place.
//   - The device cannot take a network (a tensor too large, too little memory, it is gone or lost): the
//     processor takes this network. The next one is tried on the device again.
//
// A device lost in the middle of a run ends that run with a DeviceError.
// Threads: every member may be called from any thread.
class ChosenDevice {
public:
    // What becomes of a choice of one device that cannot be met.
    enum class Otherwise { fail, automatic };

    // How the opening went.
    struct Opening {
        ComputeDevice device;  // what computes
        Message problem;       // why it is not the one that was asked for, a sentence for the user; or empty
        std::optional<std::vector<ComputeDevice>> devices;  // of the machine, where they had to be listed
    };
    // Told on the thread on which it happens; either may be empty. Neither may call the ChosenDevice in turn.
    struct Listener {
        std::function<void(const Opening&)> opened;  // once
        std::function<void(const Message& message)> processorStandsIn;
    };

    // machine must outlive it and its backend.
    ChosenDevice(Machine& machine, DeviceChoice choice, Otherwise otherwise, Listener listener = {});
    ~ChosenDevice();

    // What computes. Both open it and wait for the opening, by whichever thread. They throw DeviceError if
    // the choice cannot be met and nothing may take its place; the next call tries again.
    [[nodiscard]] const ComputeDevice& device();
    // Lives as long as the ChosenDevice.
    [[nodiscard]] Backend& backend();

    // The notice that a choice gives way to the automatic one for that reason, a sentence.
    [[nodiscard]] static Message automaticInstead(const Message& reason);

private:
    class WithStandIn;

    WithStandIn& opened();
    [[nodiscard]] std::unique_ptr<WithStandIn> open(Opening& opening) const;
    [[nodiscard]] std::unique_ptr<WithStandIn> openAutomatically(Opening& opening) const;
    [[nodiscard]] std::unique_ptr<WithStandIn> openAs(const DeviceChoice& choice, Opening& opening) const;
    void processorStandsIn(const DeviceError& reason) const;

    Machine& machine_;
    const DeviceChoice choice_;
    const Otherwise otherwise_;
    const Listener listener_;
    Mutex mutex_;
    std::unique_ptr<WithStandIn> opened_ QUILLMERE_GUARDED_BY(mutex_);
};

}  // namespace quillmere::network
