#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "QuillmereApp/Environment.h"
#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/Devices.h"

namespace quillmere::testing {

// A machine with any devices one likes. All of them compute on the processor, and fail when the test says so.
// Threads: the members that a test sets are to be set while nothing computes, unless they are atomic.
class FakeMachine {
public:
    using Type = network::DeviceDescription::Type;

    FakeMachine() { add("CPU", Type::processor); }

    void add(const std::string& name, Type type, const std::string& problem = {}) {
        network::DeviceDescription device;
        device.index = static_cast<int>(devices.size());
        device.name = name;
        device.type = type;
        device.problem = problem;
        devices.push_back(device);
        backends_.push_back(std::make_unique<FakeBackend>(*this, name));
    }
    // Everything but the processor is unplugged.
    void removeCards() { devices.resize(1); }

    [[nodiscard]] std::vector<network::DeviceDescription> list() {
        ++listings;
        return devices;
    }
    [[nodiscard]] OpenDevice open(const std::string& choice) {
        const std::scoped_lock lock(mutex_);
        const int index = network::chosenDevice(devices, choice);
        const network::DeviceDescription& device = devices[static_cast<std::size_t>(index)];
        opened.push_back(choice);
        if (cannotOpen == device.name) throw network::DeviceError(device.name + " cannot be opened.");
        return {device, backends_[static_cast<std::size_t>(index)].get()};
    }

    std::vector<network::DeviceDescription> devices;
    std::function<void(const std::string&)> notice;  // what AppModel wants to be told with
    std::vector<std::string> opened;                 // choices, in order
    std::string cannotOpen;                          // name of a device
    std::atomic<int> listings{0};
    std::atomic<bool> fails{false};     // everything but the processor is lost, from its next work on
    std::atomic<bool> isFull{false};    // everything but the processor takes no network
    std::vector<std::string> compiled;  // device names, one per network in order

private:
    class FakeExecutor final : public network::Executor {
    public:
        FakeExecutor(FakeMachine& machine, bool mayFail, std::unique_ptr<network::Executor> processor)
            : machine_(machine), mayFail_(mayFail), processor_(std::move(processor)) {}
        void setWeights(std::span<const std::vector<float>> weights) override { work().setWeights(weights); }
        [[nodiscard]] std::vector<std::vector<float>> weights() const override { return work().weights(); }
        network::StepResult step(std::span<const float> x, std::span<const float> eps, float learningRate,
                                 float klWeight) override {
            return work().step(x, eps, learningRate, klWeight);
        }
        [[nodiscard]] std::vector<std::vector<float>> gradients() const override {
            return work().gradients();
        }
        void encode(std::span<const float> x, std::span<float> mean, std::span<float> logVariance) override {
            work().encode(x, mean, logVariance);
        }
        void decode(std::span<const float> z, std::span<float> images) override { work().decode(z, images); }

    private:
        [[nodiscard]] network::Executor& work() const {
            if (mayFail_ && machine_.fails) throw network::DeviceError("The device was lost.");
            return *processor_;
        }

        FakeMachine& machine_;
        bool mayFail_;
        std::unique_ptr<network::Executor> processor_;
    };

    class FakeBackend final : public network::Backend {
    public:
        FakeBackend(FakeMachine& machine, std::string name)
            : machine_(machine), device_{network::Device::Kind::cpu, std::move(name)} {}
        [[nodiscard]] const network::Device& device() const noexcept override { return device_; }
        [[nodiscard]] std::unique_ptr<network::Executor> compile(const network::Plan& plan,
                                                                 network::Purpose purpose) override {
            const bool isCard = device_.name != "CPU";
            const bool standsIn = isCard && machine_.isFull;
            if (standsIn) machine_.notice("The card is full. The processor is used instead.");
            const std::scoped_lock lock(machine_.mutex_);
            machine_.compiled.push_back(standsIn ? "CPU" : device_.name);
            return std::make_unique<FakeExecutor>(machine_, isCard && !standsIn,
                                                  processor_->compile(plan, purpose));
        }

    private:
        FakeMachine& machine_;
        network::Device device_;
        std::unique_ptr<network::Backend> processor_ = network::makeCPUBackend();
    };

    std::mutex mutex_;  // guards opened and compiled
    std::vector<std::unique_ptr<FakeBackend>> backends_;
};

}  // namespace quillmere::testing
