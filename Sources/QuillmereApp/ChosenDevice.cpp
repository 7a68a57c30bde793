#include "QuillmereApp/ChosenDevice.h"

#include <algorithm>
#include <utility>

namespace quillmere {
namespace {

using network::DeviceDescription;

constexpr const char* insteadOfIt = " The device is chosen automatically instead.";

std::string plainName(const DeviceDescription& device) {
    return device.type == DeviceDescription::Type::processor ? "Processor" : device.name;
}

}  // namespace

std::vector<std::string> distinctNames(const std::vector<DeviceDescription>& devices) {
    std::vector<std::string> names;
    for (const DeviceDescription& device : devices) {
        const std::string name = plainName(device);
        const auto isTaken = [&](const std::string& wanted) {
            return std::find(names.begin(), names.end(), wanted) != names.end();
        };
        std::string distinct = name;
        for (int number = 2; isTaken(distinct); ++number)
            distinct = name + " (" + std::to_string(number) + ")";
        names.push_back(std::move(distinct));
    }
    return names;
}

ChosenDevice::ChosenDevice(const Environment& environment, std::string choice, Listener listener)
    : listDevices_(environment.listDevices),
      openDevice_(environment.openDevice),
      choice_(std::move(choice)),
      listener_(std::move(listener)) {}

network::Backend& ChosenDevice::backend() {
    const std::scoped_lock lock(mutex_);
    if (backend_ == nullptr) backend_ = open();
    return *backend_;
}

std::shared_ptr<SampleGenerator> ChosenDevice::makeGenerator(ModelBundle bundle) {
    try {
        return std::make_shared<SampleGenerator>(bundle, backend());
    } catch (const network::DeviceError& error) {
        listener_.processorStandsIn(std::string(error.what()) + " The processor is used instead.");
    }
    return std::make_shared<SampleGenerator>(std::move(bundle), *openDevice_(processor).backend);
}

network::Backend* ChosenDevice::open() {
    Opening opening;
    network::Backend* const opened =
        choice_ == automatic || choice_ == processor ? openAs(choice_, opening) : openNamed(opening);
    listener_.opened(opening);
    return opened;
}

network::Backend* ChosenDevice::openNamed(Opening& opening) {
    opening.devices = listDevices_();
    const std::vector<std::string> names = distinctNames(*opening.devices);
    const auto found = std::find(names.begin(), names.end(), choice_);
    if (found == names.end()) {
        opening.problem = choice_ + " is not there any more." + insteadOfIt;
        return openAs(automatic, opening);
    }
    try {
        return openAs(std::to_string(found - names.begin()), opening);
    } catch (const network::DeviceError& error) {
        opening.problem = std::string(error.what()) + insteadOfIt;
    }
    return openAs(automatic, opening);
}

network::Backend* ChosenDevice::openAs(const std::string& choice, Opening& opening) {
    OpenDevice opened = openDevice_(choice);
    opening.device = std::move(opened.description);
    return opened.backend;
}

}  // namespace quillmere
