#include "QuillmereApp/FileManager.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>

namespace quillmere {
namespace {

const QString service = QStringLiteral("org.freedesktop.FileManager1");
constexpr int timeout = 5000;  // milliseconds; the file manager may have to start
constexpr qsizetype mostSelected = 200;

bool call(const QString& method, const QStringList& uris) {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return false;
    QDBusMessage message = QDBusMessage::createMethodCall(
        service, QStringLiteral("/org/freedesktop/FileManager1"), service, method);
    message << uris << QString();  // no startup identifier
    return bus.call(message, QDBus::Block, timeout).type() == QDBusMessage::ReplyMessage;
}

bool openByDesktop(const QUrl& folder) {
    const QString opener = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    return !opener.isEmpty() && QProcess::startDetached(opener, {folder.toLocalFile()});
}

}  // namespace

bool FileManager::show(const QUrl& folder, const QList<QUrl>& files) {
    QStringList uris;
    for (const QUrl& file : files.first(std::min(files.size(), mostSelected)))
        uris.append(file.toString(QUrl::FullyEncoded));
    if (!uris.isEmpty() && call(QStringLiteral("ShowItems"), uris)) return true;
    if (call(QStringLiteral("ShowFolders"), {folder.toString(QUrl::FullyEncoded)})) return true;
    return openByDesktop(folder);
}

}  // namespace quillmere
