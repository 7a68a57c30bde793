#include "QuillmereApp/Controllers/OutputController.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <chrono>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/Controllers/Labels.h"

namespace quillmere {
namespace {

using namespace std::chrono_literals;

const QString folderKey = QStringLiteral("outputPath");
const QString countKey = QStringLiteral("count");

OutputController::Status statusOf(const QUrl& folder) {
    const QFileInfo info(folder.toLocalFile());
    if (info.isDir()) return OutputController::Exists;
    return info.exists() ? OutputController::IsNoFolder : OutputController::WillBeCreated;
}

}  // namespace

OutputController::OutputController(const Environment& environment, Preferences& preferences)
    : Controller(environment), preferences_(preferences) {
    lookSoon_.setSingleShot(true);
    lookSoon_.setInterval(150ms);
    connect(&lookSoon_, &QTimer::timeout, this, &OutputController::look);
    if (const auto folder = preferences_.text(folderKey)) setFolderText(*folder);
    if (const auto count = preferences_.integer(countKey); count && *count > 0) count_ = *count;
}

OutputController::~OutputController() {
    closing_.cancel();
}

void OutputController::openChooser() {
    const auto start = folder();
    emit chooserRequested(Folders::nearestExisting(start ? start->toLocalFile() : environment().homeFolder));
}

void OutputController::setFolder(const QUrl& folder) {
    if (!folder.isLocalFile()) {
        emit errorRaised(Folders::onlyLocal());
        return;
    }
    setFolderText(QDir::cleanPath(folder.toLocalFile()));
}

void OutputController::setFolderText(const QString& text) {
    if (text == folderText_) return;
    assign(*this, folderText_, text, &OutputController::folderTextChanged);
    if (folder()) {
        lookSoon_.start();
    } else {
        look();
    }
}

void OutputController::look() {
    const quint64 look = ++look_;
    const auto wanted = folder();
    if (!wanted) {
        assign(*this, status_, NoFolder, &OutputController::statusChanged);
        return;
    }
    runInBackground(
        tasks_, [folder = *wanted] { return statusOf(folder); },
        [this, look](Status status) {
            if (look == look_) assign(*this, status_, status, &OutputController::statusChanged);
        },
        [](const TaskFailure&) {});
}

void OutputController::remember(const QUrl& folder) {
    preferences_.setValue(folderKey, folder.toLocalFile());
    preferences_.setValue(countKey, count_);
}

void OutputController::show(const QUrl& folder, const QList<QUrl>& files) {
    runInBackground(
        tasks_,
        [show = environment().showFiles, folder, files, stop = closing_.token()] {
            return show(folder, files, stop);
        },
        [this, folder](bool shown) {
            if (!shown)
                emit errorRaised(QStringLiteral("No file manager could be opened. The folder is %1")
                                     .arg(folder.toLocalFile()));
        },
        [this](const TaskFailure& failure) { report(failure); });
}

// ---- Values

std::optional<QUrl> OutputController::folder() const {
    QString path = folderText_.trimmed();
    if (path.isEmpty()) return std::nullopt;
    if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/")))
        path.replace(0, 1, environment().homeFolder);
    return QUrl::fromLocalFile(QDir::cleanPath(QDir::current().absoluteFilePath(path)));
}

QString OutputController::chooserMessage() const {
    return QStringLiteral("Choose a folder for the generated samples — use New Folder to create one");
}

void OutputController::setCount(int count) {
    assign(*this, count_, std::max(count, 1), &OutputController::countChanged);
}

QStringList OutputController::formatLabels() const {
    return labelsOf(allOutputFormats);
}

int OutputController::formatIndex() const {
    return indexIn(allOutputFormats, format_);
}

void OutputController::setFormatIndex(int index) {
    if (index < 0 || index >= static_cast<int>(allOutputFormats.size())) return;
    assign(*this, format_, allOutputFormats[static_cast<std::size_t>(index)],
           &OutputController::formatChanged);
}

}  // namespace quillmere
