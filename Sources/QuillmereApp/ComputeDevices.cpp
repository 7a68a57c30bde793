#include "QuillmereApp/ComputeDevices.h"

#include <QVariantMap>
#include <algorithm>
#include <utility>

#include "QuillmereApp/Preferences.h"

namespace quillmere {
namespace {

using network::DeviceDescription;
using Type = DeviceDescription::Type;

const QString choiceKey = QStringLiteral("computeDevice");

QString kindOf(Type type) {
    switch (type) {
        case Type::processor:
            return QStringLiteral("Works everywhere");
        case Type::discrete:
            return QStringLiteral("Graphics card");
        case Type::integrated:
            return QStringLiteral("Integrated graphics");
        case Type::virtualGPU:
            return QStringLiteral("Virtual graphics");
        case Type::software:
            return QStringLiteral("Software driver, never chosen automatically");
        case Type::other:
            return QStringLiteral("Never chosen automatically");
    }
    fatal("unknown device type");
}

QString detailOf(const DeviceDescription& device) {
    if (device.usable()) return kindOf(device.type);
    return QStringLiteral("Cannot be used: ") + QString::fromStdString(device.problem);
}

bool areSame(const DeviceDescription& a, const DeviceDescription& b) {
    return a.name == b.name && a.type == b.type && a.problem == b.problem;
}

}  // namespace

ComputeDevices::ComputeDevices(const Environment& environment, Preferences& preferences, QObject* parent)
    : QObject(parent),
      environment_(environment),
      preferences_(preferences),
      devices_{network::processor()},
      names_(distinctNames(devices_)),
      tasks_(1) {
    restoreChoice();
    environment_.setDeviceNotice(
        [this](const std::string& message) { tasks_.post([this, message] { processorStandsIn(message); }); });
}

ComputeDevices::~ComputeDevices() {
    environment_.setDeviceNotice({});
}

// ---- The choice

void ComputeDevices::restoreChoice() {
    const QVariant stored = preferences_.value(choiceKey);
    const bool isText = stored.typeId() == QMetaType::QString && !stored.toString().isEmpty();
    choose(isText ? stored.toString().toStdString() : ChosenDevice::automatic);
    if (isText || !stored.isValid()) return;
    // Nobody listens to an object that is being made.
    tasks_.post([this] {
        emit notice(
            QStringLiteral("The stored choice of a device cannot be read. It is chosen automatically."));
    });
}

void ComputeDevices::choose(std::string choice) {
    choice_ = std::move(choice);
    opened_.reset();
    processorStandsIn_ = false;
    problem_.clear();
    const quint64 number = ++choiceNumber_;
    const ChosenDevice::Listener listener{
        .opened =
            [this, number](const ChosenDevice::Opening& opening) {
                tasks_.post([this, number, opening] { opened(number, opening); });
            },
        .processorStandsIn =
            [this](const std::string& message) {
                tasks_.post([this, message] { processorStandsIn(message); });
            },
    };
    chosen_ = std::make_shared<ChosenDevice>(environment_, choice_, listener);
    emit changed();
}

void ComputeDevices::choose(int index) {
    if (index < 0 || index > static_cast<int>(devices_.size())) return;
    const auto device = static_cast<std::size_t>(index) - 1;
    if (index > 0 && !devices_[device].usable()) return;
    const bool isProcessor = index > 0 && devices_[device].type == Type::processor;
    std::string choice = index == 0    ? ChosenDevice::automatic
                         : isProcessor ? ChosenDevice::processor
                                       : names_[device];
    preferences_.setValue(choiceKey, QString::fromStdString(choice));
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
void ComputeDevices::fallBack(const std::string& problem) {
    choice_ = ChosenDevice::automatic;
    problem_ = QString::fromStdString(problem);
    emit notice(problem_);
}

void ComputeDevices::compiling() {
    processorStandsIn_ = false;
    problem_.clear();
    emit changed();
}

void ComputeDevices::processorStandsIn(const std::string& message) {
    processorStandsIn_ = true;
    problem_ = QString::fromStdString(message);
    emit changed();
    emit notice(problem_);
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
    tasks_.run(
        environment_.listDevices,
        [this](std::vector<DeviceDescription> devices) {
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

void ComputeDevices::setDevices(std::vector<DeviceDescription> devices) {
    const bool isNews =
        !isListed_ || !std::equal(devices.begin(), devices.end(), devices_.begin(), devices_.end(), areSame);
    if (!isNews) return;
    isListed_ = true;
    devices_ = std::move(devices);
    names_ = distinctNames(devices_);
    emit devicesChanged();
    if (chosenIndex() < 0) {
        const std::string missing = choice_;
        choose(ChosenDevice::automatic);
        fallBack(missing + " is not there any more. The device is chosen automatically instead.");
    }
    emit changed();
}

QVariantList ComputeDevices::devices() const {
    QVariantList list;
    for (std::size_t i = 0; i < devices_.size(); ++i) {
        const std::string_view type = network::rawValue(devices_[i].type);
        list.append(QVariantMap{
            {QStringLiteral("name"), QString::fromStdString(names_[i])},
            {QStringLiteral("type"), QString::fromUtf8(type.data(), static_cast<qsizetype>(type.size()))},
            {QStringLiteral("detail"), detailOf(devices_[i])},
            {QStringLiteral("usable"), devices_[i].usable()}});
    }
    return list;
}

int ComputeDevices::chosenIndex() const {
    if (isAutomatic()) return 0;
    if (choice_ == ChosenDevice::processor) return 1;
    const auto found = std::find(names_.begin(), names_.end(), choice_);
    return found == names_.end() ? -1 : static_cast<int>(found - names_.begin()) + 1;
}

QString ComputeDevices::nameAt(int index) const {
    return QString::fromStdString(names_[static_cast<std::size_t>(index)]);
}

QString ComputeDevices::automaticName() const {
    if (isAutomatic() && opened_) return QString::fromStdString(distinctNames({*opened_}).front());
    if (isListed_) return nameAt(network::chosenDevice(devices_, ChosenDevice::automatic));
    return environment_.mayHaveGraphicsCard ? QString() : nameAt(0);
}

QString ComputeDevices::name() const {
    if (processorStandsIn_ || choice_ == ChosenDevice::processor) return nameAt(0);
    if (!isAutomatic()) return QString::fromStdString(choice_);
    const QString automatic = automaticName();
    return automatic.isEmpty() ? QStringLiteral("Automatic") : automatic;
}

}  // namespace quillmere
