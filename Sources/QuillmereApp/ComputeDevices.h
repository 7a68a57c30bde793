#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <memory>
#include <optional>
#include <vector>

#include "QuillmereApp/BackgroundTask.h"
#include "QuillmereApp/Environment.h"
#include "QuillmereCore/Network/Device/ChosenDevice.h"

namespace quillmere {

class Preferences;

// The devices that can learn, as the window shows them: the list, the user's choice, the name of the device
// that learns, and why it is not the chosen one. The choice is remembered by the device's identity, because
// numbers change when devices come and go.
//
// Listing devices loads the drivers of all of them, which takes some ten milliseconds and memory that stays.
// So it is done in the background, and not before it is needed: when the user asks for the list, and when a
// network is compiled for a graphics processor. The processor takes no drivers.
class ComputeDevices : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    // {name, type, detail, usable}, the processor first; only the processor until they have been listed.
    // type: as in network::rawValue. detail: what it is, or why it cannot be used.
    Q_PROPERTY(QVariantList devices READ devices NOTIFY devicesChanged)
    Q_PROPERTY(bool isListed READ isListed NOTIFY devicesChanged)
    Q_PROPERTY(bool isListing READ isListing NOTIFY isListingChanged)
    // Automatic is 0, devices count from 1; -1 for one that is not in the list (yet).
    Q_PROPERTY(int chosenIndex READ chosenIndex NOTIFY changed)
    Q_PROPERTY(bool isAutomatic READ isAutomatic NOTIFY changed)
    // Of the device that learns, or will with the next run; "Automatic" as long as that is not known.
    Q_PROPERTY(QString name READ name NOTIFY changed)
    Q_PROPERTY(QString automaticName READ automaticName NOTIFY changed)  // what Automatic takes, or empty
    Q_PROPERTY(QString problem READ problem NOTIFY changed)  // why another one learns than chosen, or empty

public:
    // Remembers the choice in preferences, which must outlive it, as what computes on a chosen() must not.
    ComputeDevices(const Environment& environment, Preferences& preferences, QObject* parent = nullptr);

    // Looks which devices there are.
    Q_INVOKABLE void list();
    // index: as chosenIndex. Does nothing for a device that cannot be used. Choosing the present one again
    // tries it again.
    void choose(int index);

    // For work in the background. Another object than before: the choice has changed, or its device failed,
    // and what was compiled for the old one is to be compiled anew.
    [[nodiscard]] const std::shared_ptr<network::ChosenDevice>& chosen() const { return chosen_; }
    // Something is about to be compiled for the chosen device: earlier trouble is over.
    void compiling();
    // The device failed in the middle of a run.
    void failed(const QString& message);

    [[nodiscard]] QVariantList devices() const;
    [[nodiscard]] bool isListed() const { return isListed_; }
    [[nodiscard]] bool isListing() const { return isListing_; }
    [[nodiscard]] int chosenIndex() const;
    [[nodiscard]] bool isAutomatic() const { return choice_.isAutomatic(); }
    [[nodiscard]] QString name() const;
    [[nodiscard]] QString automaticName() const;
    [[nodiscard]] QString problem() const { return problem_; }

signals:
    void devicesChanged();
    void isListingChanged();
    void changed();
    // A sentence for the user.
    void notice(const QString& text);

private:
    void restoreChoice();
    void choose(network::DeviceChoice choice);
    void opened(quint64 number, const network::ChosenDevice::Opening& opening);
    void processorStandsIn(quint64 number, const Message& message);
    void setDevices(std::vector<network::ComputeDevice> devices);
    void fallBack(const Message& problem);
    // device: one of devices_.
    [[nodiscard]] QString nameOf(const network::ComputeDevice& device) const;

    const Environment& environment_;
    Preferences& preferences_;
    std::vector<network::ComputeDevice> devices_;
    QStringList names_;  // of devices_, for people
    bool isListed_ = false;
    bool isListing_ = false;
    network::DeviceChoice choice_;
    std::shared_ptr<network::ChosenDevice> chosen_;
    quint64 choiceNumber_ = 0;                      // of chosen_
    std::optional<network::ComputeDevice> opened_;  // what chosen_ came to
    bool processorStandsIn_ = false;
    QString problem_;
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
