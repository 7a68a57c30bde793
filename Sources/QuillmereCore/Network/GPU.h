#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "QuillmereCore/Network/Devices.h"

namespace quillmere {

// The process-wide holder of the compute device. Without a choice it is a graphics processor if there is one,
// else the processor (network::chosenDevice, "auto"); software devices are taken only when asked for.
//
// A network that the chosen graphics processor cannot take (a tensor too large, too little memory, a device
// that is gone) is compiled for the processor instead, and the notice says so. A device lost in the middle of
// a run ends that run with a DeviceError. The next network opens it anew, and falls to the processor as long
// as that fails.
// Threads: every member may be called from any thread.
class GPU {
public:
    using Notice = std::function<void(const std::string& message)>;

    static GPU& shared();
    ~GPU();

    // auto|cpu|gpu|INDEX|NAME, as for network::chosenDevice. Throws DeviceError if none fits or it cannot be
    // opened; the previous choice stays then. "auto" and "cpu" never fail: if a device that would be taken
    // automatically cannot be opened, the processor is taken and the notice says so.
    // Networks compiled before stay where they are.
    void choose(const std::string& choice);

    // Called with a sentence for the user whenever the processor has to stand in for the chosen device, on
    // the thread that notices. Replaces the previous one; may be empty. It must not call a GPU in turn.
    void setNotice(Notice notice);

    // The device in use. The references stay valid until the process ends.
    [[nodiscard]] const network::Device& device();
    [[nodiscard]] const network::DeviceDescription& description();
    [[nodiscard]] network::Backend& graphDevice();

private:
    class Chosen;

    GPU();
    Chosen& chosen();
    // The opened device that choice means.
    Chosen& open(const std::string& choice);
    void report(const std::string& message);

    std::mutex mutex_;  // guards opened_ and chosen_
    std::vector<std::unique_ptr<Chosen>> opened_;
    Chosen* chosen_ = nullptr;

    std::mutex noticeMutex_;  // guards notice_
    Notice notice_;
};

}  // namespace quillmere
