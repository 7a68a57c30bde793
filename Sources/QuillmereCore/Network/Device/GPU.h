#pragma once

#include <memory>

#include "QuillmereCore/Network/Device/ChosenDevice.h"
#include "QuillmereCore/Network/Device/Machine.h"

namespace quillmere {

// The process-wide entry to this machine's devices, and the device that is taken automatically. Whoever
// chooses another one makes a network::ChosenDevice of machine().
// Threads: every member may be called from any thread.
class GPU {
public:
    static GPU& shared();

    // Loads no drivers before they are needed.
    [[nodiscard]] network::Machine& machine() noexcept { return *machine_; }

    // Opened when first asked for: a graphics processor if there is one, else the processor. The references
    // stay valid until the process ends.
    [[nodiscard]] const network::ComputeDevice& device() { return automatic_.device(); }
    [[nodiscard]] network::Backend& graphDevice() { return automatic_.backend(); }

private:
    GPU();

    std::unique_ptr<network::Machine> machine_;
    network::ChosenDevice automatic_;
};

}  // namespace quillmere
