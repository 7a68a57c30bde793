#include "QuillmereCore/Network/GPU.h"

#include <algorithm>
#include <utility>

namespace quillmere {

// An opened device as a backend, with the processor standing in where it fails.
class GPU::Chosen final : public network::Backend {
public:
    Chosen(GPU& owner, network::DeviceDescription description)
        : owner_(owner), description_(std::move(description)), backend_(network::makeBackend(description_)) {}

    [[nodiscard]] const network::Device& device() const noexcept override { return backend_->device(); }
    [[nodiscard]] const network::DeviceDescription& description() const noexcept { return description_; }

    [[nodiscard]] std::unique_ptr<network::Executor> compile(const network::Plan& plan,
                                                             network::Purpose purpose) override {
        try {
            return backend_->compile(plan, purpose);
        } catch (const network::DeviceError& error) {
            owner_.report(std::string(error.what()) + " The processor is used instead.");
        }
        return network::makeCPUBackend()->compile(plan, purpose);
    }

private:
    GPU& owner_;
    network::DeviceDescription description_;
    std::unique_ptr<network::Backend> backend_;
};

GPU::GPU() = default;
GPU::~GPU() = default;

GPU& GPU::shared() {
    // Never destroyed: when static objects go, the drivers that its devices need may have gone already.
    static GPU* const instance = new GPU;
    return *instance;
}

void GPU::choose(const std::string& choice) {
    const std::scoped_lock lock(mutex_);
    // Drivers are not loaded before they are needed.
    chosen_ = choice == "auto" ? nullptr : &open(choice);
}

void GPU::setNotice(Notice notice) {
    const std::scoped_lock lock(noticeMutex_);
    notice_ = std::move(notice);
}

const network::Device& GPU::device() {
    return chosen().device();
}

const network::DeviceDescription& GPU::description() {
    return chosen().description();
}

network::Backend& GPU::graphDevice() {
    return chosen();
}

GPU::Chosen& GPU::chosen() {
    const std::scoped_lock lock(mutex_);
    if (chosen_ == nullptr) {
        try {
            chosen_ = &open("auto");
        } catch (const network::DeviceError& error) {
            report(std::string(error.what()) + " The processor is used instead.");
            chosen_ = &open("cpu");
        }
    }
    return *chosen_;
}

GPU::Chosen& GPU::open(const std::string& choice) {
    const std::vector<network::DeviceDescription> devices =
        choice == "cpu" ? std::vector{network::processor()} : network::computeDevices();
    const auto index = static_cast<std::size_t>(network::chosenDevice(devices, choice));
    const network::DeviceDescription& wanted = devices[index];
    const auto found = std::find_if(opened_.begin(), opened_.end(), [&](const auto& opened) {
        return opened->description().uuid == wanted.uuid && opened->description().name == wanted.name;
    });
    if (found != opened_.end()) return **found;
    return *opened_.emplace_back(std::make_unique<Chosen>(*this, wanted));
}

void GPU::report(const std::string& message) {
    const std::scoped_lock lock(noticeMutex_);
    if (notice_) notice_(message);
}

}  // namespace quillmere
