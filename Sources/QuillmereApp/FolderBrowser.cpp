#include "QuillmereApp/FolderBrowser.h"

#include <QCollator>
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QLocale>
#include <algorithm>
#include <system_error>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {

struct FolderBrowser::Content {
    QString folder;
    QStringList names;
    int audioFiles = 0;
};

namespace {

bool isAudio(const QString& fileName) {
    return AudioIO::supportedExtensions().contains(QFileInfo(fileName).suffix().toLower().toStdString());
}

void sortAsPeopleDo(QStringList& names) {
    QCollator collator{QLocale(QLocale::English)};  // that of the C locale knows no numbers
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    std::sort(names.begin(), names.end(), collator);
}

void create(const FolderLooks& looks, const QString& path) {
    const std::filesystem::path folder = toPath(path);
    if (looks.at(folder).kind == Place::Kind::noAnswer) throw Failure(Folders::noAnswer(path).toStdString());
    std::error_code error;
    if (!std::filesystem::create_directory(folder, error) && !error)
        error = std::make_error_code(std::errc::file_exists);
    if (error) throw FileError(folder, error);
}

}  // namespace

FolderBrowser::FolderBrowser(std::shared_ptr<const FolderLooks> looks, QString home)
    : looks_(std::move(looks)), home_(std::move(home)) {}

void FolderBrowser::begin(const QUrl& folder) {
    setProblem({});
    read(folder.isLocalFile() ? folder.toLocalFile() : home_);
}

void FolderBrowser::goTo(const QString& text) {
    const QString path = Folders::typed(text, home_);
    if (!path.isEmpty()) read(path);
}

void FolderBrowser::enter(const QString& name) {
    read(QDir(folder_).filePath(name));
}

void FolderBrowser::goUp() {
    if (!folder_.isEmpty() && !isTop()) read(QFileInfo(folder_).path());
}

void FolderBrowser::makeFolder(const QString& name) {
    const QString trimmed = name.trimmed();
    if (trimmed.isEmpty() || folder_.isEmpty()) return;
    if (trimmed.contains(QLatin1Char('/')) || trimmed == QLatin1String(".") ||
        trimmed == QLatin1String("..")) {
        setProblem(tr("A folder's name cannot contain a slash."));
        return;
    }
    read(QDir(folder_).filePath(trimmed), true);
}

void FolderBrowser::read(const QString& path, bool isMade) {
    const quint64 wish = ++wish_;
    tasks_.run(
        [looks = looks_, path, isMade] {
            if (isMade) create(*looks, path);
            const Place::Kind kind = looks->at(toPath(path)).kind;
            if (kind == Place::Kind::file) throw Failure(tr("This is a file, not a folder.").toStdString());
            if (kind != Place::Kind::folder) throw Failure(Folders::refusal(kind, path).toStdString());
            Content content{.folder = Folders::plain(path), .names = {}, .audioFiles = 0};
            QDirIterator entries(path, QDir::Dirs | QDir::Files | QDir::NoDotAndDotDot);
            while (entries.hasNext()) {
                entries.next();
                if (!entries.fileInfo().isDir()) {
                    content.audioFiles += isAudio(entries.fileName()) ? 1 : 0;
                } else if (content.names.size() < mostNames) {
                    content.names.append(entries.fileName());
                }
            }
            sortAsPeopleDo(content.names);
            return content;
        },
        [this, wish](Content content) {
            if (wish != wish_) return;
            folder_ = std::move(content.folder);
            names_ = std::move(content.names);
            audioFiles_ = content.audioFiles;
            setProblem({});
            emit changed();
        },
        [this, wish](const TaskFailure& failure) {
            if (wish == wish_) setProblem(failure.message);
        });
}

void FolderBrowser::setProblem(const QString& problem) {
    assign(*this, problem_, problem, &FolderBrowser::problemChanged);
}

QString FolderBrowser::path() const {
    return Folders::displayed(folder_, home_);
}

}  // namespace quillmere
