#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Network/Device/Machine.h"

namespace quillmere::testing {

// A machine with any devices one likes. All of them compute on the processor, and fail when the test says so.
// Threads: the members that a test sets are to be set while nothing computes, unless they are atomic.
class FakeMachine final : public network::Machine {
public:
    using Type = network::ComputeDevice::Type;

    FakeMachine() : devices{network::ComputeDevice::processor()} {}

    // Cards of one name are different ones; a card that comes back is the same as before.
    void add(const std::string& name, Type type, const std::string& problem = {}) {
        network::ComputeDevice device;
        device.identity.interface = network::DeviceIdentity::Interface::vulkan;
        device.identity.name = name;
        device.identity.uuid.back() = static_cast<std::uint8_t>(std::count_if(
            devices.begin(), devices.end(), [&](const auto& other) { return other.name() == name; }));
        device.type = type;
        device.problem = Message::verbatim(problem);
        devices.push_back(device);
    }
    // Everything but the processor is unplugged.
    void removeCards() { devices.resize(1); }

    [[nodiscard]] std::vector<network::ComputeDevice> list() override {
        ++listings;
        return devices;
    }
    [[nodiscard]] std::shared_ptr<network::Backend> open(const network::ComputeDevice& device) override {
        const std::scoped_lock lock(mutex_);
        opened.push_back(device.identity);
        if (cannotOpen == device.name()) throw network::DeviceError(device.name() + " cannot be opened.");
        return std::make_shared<FakeBackend>(*this, device);
    }

    std::vector<network::ComputeDevice> devices;
    std::vector<network::DeviceIdentity> opened;  // in order
    std::string cannotOpen;                       // name of a device
    std::atomic<int> listings{0};
    std::atomic<bool> fails{false};             // everything but the processor is lost, from its next work on
    std::atomic<bool> isFull{false};            // everything but the processor takes no network,
    std::string refusal = "The card is full.";  // and says this
    std::function<void()> beforeCompiling;      // called by each thread that compiles; may be empty
    std::vector<std::string> compiled;          // device names, one per network in order

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
        FakeBackend(FakeMachine& machine, const network::ComputeDevice& device)
            : machine_(machine), name_(device.name()), isCard_(device.type != Type::processor) {}
        [[nodiscard]] std::unique_ptr<network::Executor> compile(const network::Plan& plan,
                                                                 network::Purpose purpose) override {
            if (machine_.beforeCompiling) machine_.beforeCompiling();
            if (isCard_ && machine_.isFull) throw network::DeviceError(machine_.refusal);
            const std::scoped_lock lock(machine_.mutex_);
            machine_.compiled.push_back(name_);
            return std::make_unique<FakeExecutor>(machine_, isCard_, processor_->compile(plan, purpose));
        }

    private:
        FakeMachine& machine_;
        std::string name_;
        bool isCard_;
        std::unique_ptr<network::Backend> processor_ = network::makeCPUBackend();
    };

    std::mutex mutex_;  // held while a list grows; tests read them when all work has ended
};

}  // namespace quillmere::testing
