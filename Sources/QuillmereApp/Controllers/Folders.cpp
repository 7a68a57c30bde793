#include "QuillmereApp/Controllers/Folders.h"

#include <QDir>
#include <QFileInfo>

namespace quillmere {

QString Folders::onlyLocal() {
    return QStringLiteral("Only folders on this computer can be used.");
}

bool Folders::isFolder(const QUrl& url) {
    return url.isLocalFile() && QFileInfo(url.toLocalFile()).isDir();
}

QUrl Folders::nearestExisting(const QString& path) {
    QDir folder(path);
    while (!folder.exists() && !folder.isRoot())
        folder.setPath(QFileInfo(folder.path()).path());
    return QUrl::fromLocalFile(folder.path());
}

QString Folders::displayed(const QString& path, const QString& home) {
    if (path == home) return QStringLiteral("~");
    return path.startsWith(home + QLatin1Char('/')) ? QLatin1Char('~') + path.mid(home.size()) : path;
}

}  // namespace quillmere
