#include "QuillmereCore/Network/Device/ChosenDevice.h"

#include <utility>

namespace quillmere::network {

// An opened device, and the processor for the networks that it cannot take.
class ChosenDevice::WithStandIn final : public Backend {
public:
    WithStandIn(const ChosenDevice& owner, ComputeDevice device)
        : owner_(owner), device_(std::move(device)), backend_(owner_.machine_.open(device_)) {}

    [[nodiscard]] const ComputeDevice& device() const noexcept { return device_; }

    [[nodiscard]] std::unique_ptr<Executor> compile(const Plan& plan, Purpose purpose) override {
        return made([&](Backend& backend) { return backend.compile(plan, purpose); });
    }
    [[nodiscard]] std::unique_ptr<Executor> compileWithWeights(
        const Plan& plan, Purpose purpose, std::span<const std::vector<float>> weights) override {
        return made([&](Backend& backend) { return backend.compileWithWeights(plan, purpose, weights); });
    }

private:
    template <typename Make>
    std::unique_ptr<Executor> made(Make make) {
        try {
            return make(*backend_);
        } catch (const DeviceError& error) {
            if (device_.type == ComputeDevice::Type::processor) throw;
            owner_.processorStandsIn(error);
        }
        return make(*owner_.machine_.open(ComputeDevice::processor()));
    }

    const ChosenDevice& owner_;
    ComputeDevice device_;
    std::shared_ptr<Backend> backend_;
};

ChosenDevice::ChosenDevice(Machine& machine, DeviceChoice choice, Otherwise otherwise, Listener listener)
    : machine_(machine), choice_(std::move(choice)), otherwise_(otherwise), listener_(std::move(listener)) {}

ChosenDevice::~ChosenDevice() = default;

const ComputeDevice& ChosenDevice::device() {
    return opened().device();
}

Backend& ChosenDevice::backend() {
    return opened();
}

Message ChosenDevice::automaticInstead(const Message& reason) {
    return Message("{0} The device is chosen automatically instead.", reason);
}

ChosenDevice::WithStandIn& ChosenDevice::opened() {
    const MutexLock lock(mutex_);
    if (!opened_) {
        Opening opening;
        opened_ = open(opening);
        if (listener_.opened) listener_.opened(opening);
    }
    return *opened_;
}

std::unique_ptr<ChosenDevice::WithStandIn> ChosenDevice::open(Opening& opening) const {
    if (choice_.isAutomatic()) return openAutomatically(opening);
    try {
        return openAs(choice_, opening);
    } catch (const DeviceError& error) {
        if (otherwise_ == Otherwise::fail || choice_.isProcessor()) throw;
        opening.problem = automaticInstead(error.message());
    }
    return openAutomatically(opening);
}

std::unique_ptr<ChosenDevice::WithStandIn> ChosenDevice::openAutomatically(Opening& opening) const {
    try {
        return openAs(DeviceChoice(), opening);
    } catch (const DeviceError& error) {
        if (opening.device.type == ComputeDevice::Type::processor) throw;
        processorStandsIn(error);
    }
    return openAs(DeviceChoice::processor(), opening);
}

std::unique_ptr<ChosenDevice::WithStandIn> ChosenDevice::openAs(const DeviceChoice& choice,
                                                                Opening& opening) const {
    if (choice.isProcessor()) {
        opening.device = ComputeDevice::processor();  // loads no drivers
    } else {
        if (!opening.devices) opening.devices = machine_.list();
        opening.device = choice.in(*opening.devices);
    }
    return std::make_unique<WithStandIn>(*this, opening.device);
}

void ChosenDevice::processorStandsIn(const DeviceError& reason) const {
    if (listener_.processorStandsIn)
        listener_.processorStandsIn(Message("{0} The processor is used instead.", reason.message()));
}

}  // namespace quillmere::network
