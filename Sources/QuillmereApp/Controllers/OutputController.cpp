#include "QuillmereApp/Controllers/OutputController.h"

#include <QDir>
#include <QFileInfo>
#include <algorithm>
#include <chrono>
#include <cmath>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/Controllers/Labels.h"
#include "QuillmereApp/FilePath.h"

namespace quillmere {
namespace {

using namespace std::chrono_literals;

OutputController::Status statusOf(Place::Kind kind) {
    switch (kind) {
        case Place::Kind::nothing:
            return OutputController::WillBeCreated;
        case Place::Kind::folder:
            return OutputController::Exists;
        case Place::Kind::file:
            return OutputController::IsNoFolder;
        case Place::Kind::noAnswer:
            return OutputController::NoAnswer;
    }
    return OutputController::NoAnswer;
}

// Whether path is folder or something in it; both resolved.
bool isWithin(const std::filesystem::path& path, const std::filesystem::path& folder) {
    if (folder.empty()) return false;
    return std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first == folder.end();
}

}  // namespace

struct OutputController::Seen {
    Status status = NoFolder;
    bool isInCorpus = false;
};

const QString OutputController::folderKey = QStringLiteral("outputPath");
const QString OutputController::countKey = QStringLiteral("count");

OutputController::OutputController(const Environment& environment, Preferences& preferences)
    : Controller(environment), preferences_(preferences) {
    lookSoon_.setSingleShot(true);
    lookSoon_.setInterval(150ms);
    connect(&lookSoon_, &QTimer::timeout, this, &OutputController::look);
    if (const auto folder = preferences_.text(folderKey)) setFolderText(*folder);
    if (const auto count = preferences_.integer(countKey); count && *count > 0)
        count_ = std::min(*count, countLimit);
}

OutputController::~OutputController() {
    closing_.cancel();
}

void OutputController::openChooser() {
    const auto start = folder();
    findNearestFolder(tasks_, start ? start->toLocalFile() : environment().homeFolder,
                      [this](const QUrl& nearest) { emit chooserRequested(nearest); });
}

void OutputController::setFolder(const QUrl& folder) {
    if (!folder.isLocalFile()) {
        emit errorRaised(Folders::onlyLocal());
        return;
    }
    setFolderText(Folders::plain(folder.toLocalFile()));
}

void OutputController::drop(const QList<QUrl>& urls) {
    takeDropped(tasks_, urls, [this](const QString& path) { setFolderText(path); });
}

// ---- The corpus

void OutputController::setCorpus(const QUrl& corpus) {
    if (corpus == corpus_) return;
    corpus_ = corpus;
    emit suggestionChanged();
    if (folderText_.trimmed().isEmpty() || folderText_ == suggested_) {
        useSuggestion();
    } else if (Folders::typed(folderText_, environment().homeFolder) ==
               Folders::typed(suggestion(), environment().homeFolder)) {
        suggested_ = folderText_;  // of the last start: it goes with the corpus, too
    }
    look();
}

QString OutputController::suggestion() const {
    if (corpus_.isEmpty()) return {};
    return Folders::displayed(Folders::beside(corpus_.toLocalFile(), QStringLiteral("variations")),
                              environment().homeFolder);
}

void OutputController::useSuggestion() {
    suggested_ = suggestion();
    setFolderText(suggested_);
}

// ---- The folder

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
        assign(*this, isInCorpus_, false, &OutputController::isInCorpusChanged);
        return;
    }
    tasks_.run(
        [looks = environment().looks, folder = toPath(*wanted), corpus = corpus_] {
            const Place place = looks->at(folder);
            const bool isInCorpus =
                !corpus.isEmpty() && isWithin(place.resolved, looks->at(toPath(corpus)).resolved);
            return Seen{statusOf(place.kind), isInCorpus};
        },
        [this, look](const Seen& seen) {
            if (look != look_) return;
            assign(*this, status_, seen.status, &OutputController::statusChanged);
            assign(*this, isInCorpus_, seen.isInCorpus, &OutputController::isInCorpusChanged);
        },
        [](const TaskFailure&) {});
}

void OutputController::remember(const QUrl& folder) {
    preferences_.setValue(folderKey, folder.toLocalFile());
    preferences_.setValue(countKey, count_);
}

void OutputController::storeFolder() {
    if (folderText_ != suggested_) preferences_.setValue(folderKey, folderText_);
}

void OutputController::storeCount() {
    preferences_.setValue(countKey, count_);
}

void OutputController::show(const QUrl& folder, const QList<QUrl>& files) {
    tasks_.run([show = environment().showFiles, folder, files,
                stop = closing_.token()] { return show(folder, files, stop); },
               [this, folder](bool shown) {
                   if (!shown)
                       emit errorRaised(
                           tr("No file manager could be opened. The folder is %1").arg(folder.toLocalFile()));
               },
               [this](const TaskFailure& failure) { report(failure); });
}

// ---- Values

std::optional<QUrl> OutputController::folder() const {
    const QString path = Folders::typed(folderText_, environment().homeFolder);
    return path.isEmpty() ? std::nullopt : std::optional(QUrl::fromLocalFile(path));
}

QString OutputController::chooserMessage() const {
    return tr("Choose a folder for the generated samples — use New Folder to create one");
}

void OutputController::setCount(int count) {
    assign(*this, count_, std::clamp(count, 1, countLimit), &OutputController::countChanged);
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

void OutputController::setDetail(double detail) {
    if (!std::isfinite(detail)) return;
    const double rounded = std::round(std::clamp(detail, 0.0, 1.0) * detailSteps) / detailSteps;
    if (rounded > 0) otherDetail_ = rounded;
    assign(*this, detail_, rounded, &OutputController::detailChanged);
}

void OutputController::switchDetail() {
    setDetail(detail_ > 0 ? 0 : otherDetail_);
}

}  // namespace quillmere
