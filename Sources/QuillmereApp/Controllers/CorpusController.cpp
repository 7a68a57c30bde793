#include "QuillmereApp/Controllers/CorpusController.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>
#include <algorithm>
#include <optional>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/TimeText.h"
#include "QuillmereCore/Generate/Finishing.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Progress.h"

namespace quillmere {
namespace {

const QString corpusKey = QStringLiteral("corpusPath");
const QString recentKey = QStringLiteral("recentCorpora");

QStringList withFirst(QStringList folders, const QString& path) {
    folders.removeAll(path);
    folders.removeAll(QString());
    folders.prepend(path);
    return folders.mid(0, CorpusController::recentLimit);
}

// Where a look fails there may be a model: loading it says what is wrong.
bool mayBeStored(const std::filesystem::path& modelFolder) {
    try {
        return ModelStore::isStored(modelFolder);
    } catch (const FileError&) {
        return true;
    }
}

}  // namespace

struct CorpusController::Scan {
    bool isGone = false;  // nothing is there, and nobody has asked for it to be there
    std::shared_ptr<const CorpusSummary> summary;
    QString name;
    int variations = 0;
    std::optional<std::filesystem::path> storedModel;
};

CorpusController::CorpusController(const Environment& environment, Preferences& preferences)
    : Controller(environment), preferences_(preferences) {
    const QVariant recent = preferences_.value(recentKey);
    if (recent.canConvert<QStringList>()) recent_ = recent.toStringList();
    recent_.removeAll(QString());
    recent_ = recent_.mid(0, recentLimit);
}

CorpusController::~CorpusController() {
    cancelScan();
}

// ---- The choice

void CorpusController::restore() {
    const auto path = preferences_.text(corpusKey);
    if (!path || path->isEmpty()) return;
    take(Folders::plain(*path));
    scan(true);
}

void CorpusController::choose(const QUrl& folder) {
    if (!canChoose()) return;
    if (!folder.isLocalFile()) {
        emit errorRaised(Folders::onlyLocal());
        return;
    }
    emit errorRaised({});
    const QString path = Folders::plain(folder.toLocalFile());
    take(path);
    preferences_.setValue(corpusKey, path);
    scan();
}

void CorpusController::take(const QString& path) {
    url_ = path.isEmpty() ? QUrl() : QUrl::fromLocalFile(path);
    // As the text has it, until the scan has looked.
    name_ = path.isEmpty() ? QString() : QDir(QDir::cleanPath(path)).dirName();
    summary_.reset();
    variations_ = 0;
    emit urlChanged();
    emit nameChanged();
}

void CorpusController::scanAgain() {
    if (!isChosen() || !canChoose()) return;
    emit errorRaised({});
    summary_.reset();
    variations_ = 0;
    scan();
}

void CorpusController::openChooser() {
    if (!canChoose()) return;
    const QString start = isChosen() ? QFileInfo(url_.toLocalFile()).path() : environment().homeFolder;
    findNearestFolder(tasks_, start, [this](const QUrl& nearest) {
        if (canChoose()) emit chooserRequested(nearest);
    });
}

void CorpusController::remember(const QString& path) {
    recent_ = withFirst(recent_, path);
    emit recentChanged();
    // What another window has opened meanwhile stays in the list.
    preferences_.edit(
        recentKey, [path](const QVariant& stored) { return withFirst(stored.toStringList(), path); },
        [this, guard = QPointer(this), change = ++recentChange_](const QVariant& merged) {
            if (!guard || change != recentChange_) return;
            recent_ = merged.toStringList();
            emit recentChanged();
        });
}

void CorpusController::forgetRecent() {
    ++recentChange_;
    recent_.clear();
    preferences_.setValue(recentKey, recent_);
    emit recentChanged();
}

// ---- The scan

void CorpusController::scan(bool mayBeGone) {
    ++choice_;
    if (scanCancel_) scanCancel_->cancel();
    emit summaryChanged();
    emit scanStarted();
    scanDone_ = 0;
    scanTotal_ = 0;
    emit scanProgressChanged();
    scanCancel_ = std::make_shared<CancelFlag>();
    assign(*this, isScanning_, true, &CorpusController::isScanningChanged);
    const auto progress = [this, choice = choice_, pace = ReportPace()](std::int64_t done,
                                                                        std::int64_t total) mutable {
        if (pace.isDue()) {
            tasks_.post([=, this] {
                if (choice == choice_) scanProgressed(done, total);
            });
        }
        watched(Run::scan, done);
    };
    tasks_.run(
        [folder = toPath(url_), root = environment().modelsRoot, looks = environment().looks, mayBeGone,
         progress, cancel = scanCancel_->token()] {
            Scan result;
            const Place::Kind kind = looks->at(folder).kind;
            if (kind == Place::Kind::noAnswer)
                throw Failure(Folders::noAnswer(toQString(folder)).toStdString());
            result.isGone = mayBeGone && kind == Place::Kind::nothing;
            if (result.isGone) return result;
            result.summary = std::make_shared<const CorpusSummary>(Corpus::scan(folder, progress, cancel));
            result.name = QString::fromStdString(ModelStore::corpusName(folder));
            result.variations = static_cast<int>(std::ranges::count_if(
                result.summary->files, Finishing::isVariationName, &CorpusFile::relativePath));
            const auto modelFolder = ModelStore::directory(*result.summary, root);
            if (mayBeStored(modelFolder)) result.storedModel = modelFolder;
            return result;
        },
        [this, choice = choice_](Scan result) {
            if (choice == choice_) scanned(std::move(result));
        },
        [this, choice = choice_](const TaskFailure& failure) {
            if (choice == choice_) scanFailed(failure);
        });
}

void CorpusController::scanProgressed(std::int64_t done, std::int64_t total) {
    if (!isScanning_) return;
    if (done == 0) scanClock_.start();
    scanDone_ = static_cast<int>(done);
    scanTotal_ = static_cast<int>(total);
    emit scanProgressChanged();
}

void CorpusController::scanned(Scan result) {
    if (result.isGone) {
        take({});
        scanEnded();
        return;
    }
    summary_ = std::move(result.summary);
    variations_ = result.variations;
    emit summaryChanged();
    assign(*this, name_, result.name, &CorpusController::nameChanged);
    remember(url_.toLocalFile());
    scanEnded();
    result.storedModel ? emit storedModelFound(*result.storedModel) : emit noStoredModelFound();
}

void CorpusController::scanFailed(const TaskFailure& failure) {
    report(failure);
    scanEnded();
}

void CorpusController::scanEnded() {
    scanCancel_.reset();
    assign(*this, isScanning_, false, &CorpusController::isScanningChanged);
    emit scanProgressChanged();
}

void CorpusController::cancelScan() {
    if (scanCancel_) scanCancel_->cancel();
}

// ---- Values

QString CorpusController::path() const {
    return Folders::displayed(url_.toLocalFile(), environment().homeFolder);
}

QString CorpusController::chooserMessage() const {
    return tr("Choose the folder of audio samples to learn from");
}

QString CorpusController::scanTimeLeft() const {
    return isScanning_ ? TimeText::left(scanClock_, scanDone_, scanTotal_) : QString();
}

int CorpusController::fileCount() const {
    return summary_ ? summary_->fileCount() : 0;
}

QString CorpusController::totalDuration() const {
    return summary_ ? TimeText::duration(summary_->totalSeconds) : QString();
}

QStringList CorpusController::sampleRates() const {
    QStringList rates;
    if (!summary_) return rates;
    for (const auto& [rate, files] : summary_->sampleRates)
        rates.append(QStringLiteral("%1 kHz").arg(rate / 1000.0, 0, 'g', 6));
    return rates;
}

int CorpusController::unreadable() const {
    return summary_ ? summary_->unreadable : 0;
}

bool CorpusController::isEmpty() const {
    return summary_ && summary_->files.empty();
}

bool CorpusController::hasFewSamples() const {
    return summary_ && !summary_->files.empty() && fileCount() - unreadable() < fewSamplesLimit;
}

QVariantList CorpusController::recent() const {
    QVariantList entries;
    for (const QString& path : recent_) {
        entries.append(
            QVariantMap{{QStringLiteral("url"), QUrl::fromLocalFile(path)},
                        {QStringLiteral("path"), Folders::displayed(path, environment().homeFolder)},
                        {QStringLiteral("name"), QDir(path).dirName()}});
    }
    return entries;
}

}  // namespace quillmere
