#pragma once

#include <QProcess>
#include <QString>
#include <QtGlobal>

namespace quillmere::testing {

// A session bus that nobody else is on, for as long as it lives.
class SessionBus {
public:
    SessionBus() {
        daemon_.start("dbus-daemon", {"--session", "--nofork", "--print-address=1"});
        while (!daemon_.canReadLine() && daemon_.waitForReadyRead(20000)) {
        }
        address_ = QString::fromLatin1(daemon_.readLine().trimmed());
        if (address_.isEmpty()) qFatal("dbus-daemon has not started");
        qputenv("DBUS_SESSION_BUS_ADDRESS", address_.toLatin1());
    }
    ~SessionBus() {
        daemon_.terminate();
        daemon_.waitForFinished();
    }
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    [[nodiscard]] const QString& address() const { return address_; }

private:
    QProcess daemon_;
    QString address_;
};

}  // namespace quillmere::testing
