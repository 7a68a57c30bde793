#include "QuillmereApp/FileManager.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <algorithm>
#include <chrono>
#include <thread>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

const QString service = QStringLiteral("org.freedesktop.FileManager1");
constexpr int timeout = 5000;  // milliseconds; the file manager may have to start
constexpr qsizetype mostSelected = 200;

bool call(const QString& method, const QStringList& uris, const std::stop_token& stop) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return false;
    QDBusMessage message = QDBusMessage::createMethodCall(
        service, QStringLiteral("/org/freedesktop/FileManager1"), service, method);
    message << uris << QString();  // no startup identifier
    const QDBusPendingCall reply = bus.asyncCall(message, timeout);
    while (!reply.isFinished()) {
        throwIfCancelled(stop);
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return !reply.isError();
}

bool openByDesktop(const QUrl& folder) {
    const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    return !opener.isEmpty() && QProcess::startDetached(opener, {folder.toLocalFile()});
}

}  // namespace

bool FileManager::show(const QUrl& folder, const QList<QUrl>& files, const std::stop_token& stop) {
    QStringList uris;
    for (const QUrl& file : files.first(std::min(files.size(), mostSelected)))
        uris.append(file.toString(QUrl::FullyEncoded));
    if (!uris.isEmpty() && call(QStringLiteral("ShowItems"), uris, stop)) return true;
    if (call(QStringLiteral("ShowFolders"), {folder.toString(QUrl::FullyEncoded)}, stop)) return true;
    return openByDesktop(folder);
}

}  // namespace quillmere
