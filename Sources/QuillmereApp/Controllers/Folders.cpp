#include "QuillmereApp/Controllers/Folders.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Paths.h"

namespace quillmere {
namespace {

bool isQuoted(const QString& text) {
    if (text.size() < 2 || text.front() != text.back()) return false;
    return text.front() == QLatin1Char('"') || text.front() == QLatin1Char('\'');
}

}  // namespace

QString Folders::onlyLocal() {
    return Words::tr("Only folders on this computer can be used.");
}

QString Folders::noAnswer(const QString& path) {
    return Words::tr("%1 does not answer. Check the drive or the network that it is on.").arg(path);
}

void Folders::requireAnswer(const std::filesystem::path& folder, const FolderLooks& looks) {
    if (looks.at(folder).kind == Place::Kind::noAnswer)
        throw Failure(noAnswer(toQString(folder)).toStdString());
}

QString Folders::plain(const QString& path) {
    QString absolute = QDir::current().absoluteFilePath(path);
    if (absolute.split(QLatin1Char('/')).contains(QLatin1String(".."))) return absolute;
    return toQString(Paths::plain(toPath(absolute)));
}

QString Folders::typed(const QString& text, const QString& home) {
    QString path = text.trimmed();
    if (isQuoted(path)) path = path.mid(1, path.size() - 2).trimmed();
    if (path.startsWith(QLatin1String("file://"))) path = QUrl(path).toLocalFile();
    if (path.isEmpty()) return {};
    if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/"))) path.replace(0, 1, home);
    return plain(path);
}

Folders::Dropped Folders::dropped(const QList<QUrl>& urls) {
    if (urls.size() != 1)
        return {.path = {}, .refusal = Words::tr("Drop one folder: the one that holds the samples.")};
    if (!urls.front().isLocalFile()) return {.path = {}, .refusal = onlyLocal()};
    return {.path = plain(urls.front().toLocalFile()), .refusal = {}};
}

QString Folders::refusal(Place::Kind kind, const QString& path) {
    switch (kind) {
        case Place::Kind::folder:
            return {};
        case Place::Kind::file:
            return Words::tr("This is a file, not a folder. Drop the folder that holds it.");
        case Place::Kind::nothing:
            return Words::tr("There is no folder %1.").arg(path);
        case Place::Kind::noAnswer:
            return noAnswer(path);
    }
    return {};
}

QString Folders::beside(const QString& folder, const QString& name) {
    const QFileInfo info(folder);
    if (info.fileName().isEmpty()) return QLatin1Char('/') + name;
    if (info.fileName() == QLatin1String("..")) return folder + QStringLiteral("/../") + name;
    return folder + QLatin1Char(' ') + name;
}

QString Folders::displayed(const QString& path, const QString& home) {
    if (path == home) return QStringLiteral("~");
    return path.startsWith(home + QLatin1Char('/')) ? QLatin1Char('~') + path.mid(home.size()) : path;
}

}  // namespace quillmere
