#include "QuillmereApp/ComputeDevices.h"

#include <QVariantMap>
#include <algorithm>
#include <span>
#include <utility>

#include "QuillmereApp/Preferences.h"
#include "QuillmereApp/Words.h"

namespace quillmere {
namespace {

using network::ChosenDevice;
using network::ComputeDevice;
using network::DeviceChoice;
using Type = ComputeDevice::Type;

const QString choiceKey = QStringLiteral("computeDevice");

QString kindOf(Type type) {
    switch (type) {
        case Type::processor:
            return Words::tr("Works everywhere");
        case Type::discrete:
            return Words::tr("Graphics card");
        case Type::integrated:
            return Words::tr("Integrated graphics");
        case Type::virtualGPU:
            return Words::tr("Virtual graphics");
        case Type::software:
            return Words::tr("Software driver, never chosen automatically");
        case Type::other:
            return Words::tr("Never chosen automatically");
    }
    fatal("unknown device type");
}

QString detailOf(const ComputeDevice& device) {
    if (device.usable()) return kindOf(device.type);
    return Words::tr("Cannot be used: %1").arg(Words::of(device.problem));
}

// Names of a list, the processor's in the user's language.
QStringList namesOf(std::span<const ComputeDevice> devices) {
    const std::vector<std::string> labels = network::labels(devices);
    QStringList names;
    for (std::size_t i = 0; i < devices.size(); ++i) {
        const bool isProcessor = devices[i].type == Type::processor;
        names.append(isProcessor ? Words::tr("Processor") : QString::fromStdString(labels[i]));
    }
    return names;
}

bool areSame(const ComputeDevice& a, const ComputeDevice& b) {
    return a.identity == b.identity && a.type == b.type && a.problem == b.problem;
}

}  // namespace

ComputeDevices::ComputeDevices(const Environment& environment, Preferences& preferences, QObject* parent)
    : QObject(parent),
      environment_(environment),
      preferences_(preferences),
      devices_{ComputeDevice::processor()},
      names_(namesOf(devices_)),
      tasks_(1) {
    restoreChoice();
}

// ---- The choice

void ComputeDevices::restoreChoice() {
    const std::string stored = preferences_.text(choiceKey).value_or(QString()).toStdString();
    choose(stored.empty() ? DeviceChoice() : DeviceChoice::fromPreference(stored));
    if (!stored.empty() || !preferences_.value(choiceKey).isValid()) return;
    // Nobody listens to an object that is being made.
    tasks_.post([this] {
        emit notice(tr("The stored choice of a device cannot be read. It is chosen automatically."));
    });
}

void ComputeDevices::choose(DeviceChoice choice) {
    choice_ = std::move(choice);
    opened_.reset();
    processorStandsIn_ = false;
    problem_.clear();
    const quint64 number = ++choiceNumber_;
    ChosenDevice::Listener listener{
        .opened =
            [this, number](const ChosenDevice::Opening& opening) {
                tasks_.post([this, number, opening] { opened(number, opening); });
            },
        .processorStandsIn =
            [this, number](const Message& message) {
                tasks_.post([this, number, message] { processorStandsIn(number, message); });
            },
    };
    chosen_ = std::make_shared<ChosenDevice>(*environment_.machine, choice_,
                                             ChosenDevice::Otherwise::automatic, std::move(listener));
    emit changed();
}

void ComputeDevices::choose(int index) {
    if (index < 0 || index > static_cast<int>(devices_.size())) return;
    const auto device = static_cast<std::size_t>(index) - 1;
    if (index > 0 && !devices_[device].usable()) return;
    DeviceChoice choice = index == 0 ? DeviceChoice() : DeviceChoice::of(devices_[device].identity);
    preferences_.setValue(choiceKey, QString::fromStdString(choice.preference()));
    choose(std::move(choice));
}

void ComputeDevices::opened(quint64 number, const ChosenDevice::Opening& opening) {
    if (number != choiceNumber_) return;
    opened_ = opening.device;
    if (!opening.problem.empty()) fallBack(opening.problem);
    if (opening.devices) setDevices(*opening.devices);
    emit changed();
}

// For this run of the program only: the stored choice stays, for the day when its device is back.
void ComputeDevices::fallBack(const Message& problem) {
    choice_ = DeviceChoice();
    problem_ = Words::of(problem);
    emit notice(problem_);
}

void ComputeDevices::compiling() {
    processorStandsIn_ = false;
    problem_.clear();
    emit changed();
}

void ComputeDevices::processorStandsIn(quint64 number, const Message& message) {
    const QString text = Words::of(message);
    if (number == choiceNumber_) {  // what is shown of a newer choice stays
        processorStandsIn_ = true;
        problem_ = text;
        emit changed();
    }
    emit notice(text);
}

void ComputeDevices::failed(const QString& message) {
    choose(choice_);
    problem_ = message;
    emit changed();
}

// ---- The list

void ComputeDevices::list() {
    if (isListing_) return;
    isListing_ = true;
    emit isListingChanged();
    tasks_.run([machine = environment_.machine] { return machine->list(); },
               [this](std::vector<ComputeDevice> devices) {
                   setDevices(std::move(devices));
                   isListing_ = false;
                   emit isListingChanged();
               },
               [this](const TaskFailure& failure) {
                   isListing_ = false;
                   emit isListingChanged();
                   emit notice(failure.message);
               });
}

void ComputeDevices::setDevices(std::vector<ComputeDevice> devices) {
    const bool isNews =
        !isListed_ || !std::equal(devices.begin(), devices.end(), devices_.begin(), devices_.end(), areSame);
    if (!isNews) return;
    isListed_ = true;
    devices_ = std::move(devices);
    names_ = namesOf(devices_);
    emit devicesChanged();
    if (choice_.find(devices_) == nullptr) {
        const Message problem = ChosenDevice::automaticInstead(choice_.missing());
        choose(DeviceChoice());
        fallBack(problem);
    }
    emit changed();
}

QVariantList ComputeDevices::devices() const {
    QVariantList list;
    for (std::size_t i = 0; i < devices_.size(); ++i) {
        const std::string_view type = network::rawValue(devices_[i].type);
        list.append(QVariantMap{
            {QStringLiteral("name"), names_[static_cast<qsizetype>(i)]},
            {QStringLiteral("type"), QString::fromUtf8(type.data(), static_cast<qsizetype>(type.size()))},
            {QStringLiteral("detail"), detailOf(devices_[i])},
            {QStringLiteral("usable"), devices_[i].usable()}});
    }
    return list;
}

int ComputeDevices::chosenIndex() const {
    if (isAutomatic()) return 0;
    const ComputeDevice* const device = choice_.find(devices_);
    return device == nullptr ? -1 : static_cast<int>(device - devices_.data()) + 1;
}

QString ComputeDevices::nameOf(const ComputeDevice& device) const {
    return names_[&device - devices_.data()];
}

QString ComputeDevices::automaticName() const {
    if (isAutomatic() && opened_) return namesOf(std::span(&*opened_, 1)).front();
    if (isListed_) return nameOf(DeviceChoice().in(devices_));
    return environment_.mayHaveGraphicsCard ? QString() : nameOf(devices_.front());
}

QString ComputeDevices::name() const {
    if (processorStandsIn_) return nameOf(devices_.front());
    if (isAutomatic()) {
        const QString automatic = automaticName();
        return automatic.isEmpty() ? tr("Automatic") : automatic;
    }
    const ComputeDevice* const device = choice_.find(devices_);
    return device != nullptr ? nameOf(*device) : QString::fromStdString(choice_.name());
}

}  // namespace quillmere
