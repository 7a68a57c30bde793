#include "QuillmereApp/Controllers/CorpusFilesController.h"

#include <QStringList>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {

CorpusFilesController::~CorpusFilesController() {
    cancel();
}

void CorpusFilesController::setCorpus(std::shared_ptr<const CorpusSummary> corpus) {
    if (corpus == corpus_) return;
    cancel();
    corpus_ = std::move(corpus);
    isRead_ = false;
    files_.setFiles(nullptr, nullptr);
    emit isReadChanged();
    emit canShowChanged();
}

void CorpusFilesController::read() {
    if (!canShow() || isRead_ || isReading_) return;
    cancel_ = std::make_shared<CancelFlag>();
    assign(*this, isReading_, true, &CorpusFilesController::isReadingChanged);
    tasks_.run(
        [corpus = corpus_, stop = cancel_->token(), looks = environment().looks] {
            if (looks->at(corpus->directory).kind == Place::Kind::noAnswer)
                throw Failure(Folders::noAnswer(toQString(corpus->directory)).toStdString());
            return std::make_shared<const CorpusReport>(Corpus::inspect(*corpus, stop));
        },
        [this, wanted = cancel_](std::shared_ptr<const CorpusReport> report) {
            if (wanted != cancel_) return;
            cancel_.reset();
            files_.setFiles(corpus_, std::move(report));
            isRead_ = true;
            assign(*this, isReading_, false, &CorpusFilesController::isReadingChanged);
            emit isReadChanged();
        },
        [this, wanted = cancel_](const TaskFailure& failure) {
            if (wanted != cancel_) return;
            cancel_.reset();
            assign(*this, isReading_, false, &CorpusFilesController::isReadingChanged);
            report(failure);
        });
}

void CorpusFilesController::cancel() {
    if (!cancel_) return;
    std::exchange(cancel_, nullptr)->cancel();
    assign(*this, isReading_, false, &CorpusFilesController::isReadingChanged);
}

QString CorpusFilesController::summary() const {
    if (!isRead_) return {};
    QStringList parts;
    const auto add = [&](const char* state, const auto& text) {
        if (const int files = files_.countOf(QLatin1String(state)); files > 0) parts += text(files);
    };
    add("fine", [](int files) { return tr("%n fine", nullptr, files); });
    add("cut", [](int files) { return tr("%n cut", nullptr, files); });
    add("copy", [](int files) { return files == 1 ? tr("1 copy") : tr("%n copies", nullptr, files); });
    add("damaged", [](int files) { return tr("%n damaged", nullptr, files); });
    add("silent", [](int files) { return tr("%n silent", nullptr, files); });
    add("unreadable", [](int files) { return tr("%n unreadable", nullptr, files); });
    const int all = corpus_->fileCount();
    return (all == 1 ? tr("1 file: %1") : tr("%n files: %1", nullptr, all)).arg(parts.join(tr(", ")));
}

int CorpusFilesController::conspicuous() const {
    return isRead_ ? corpus_->fileCount() - files_.countOf(QStringLiteral("fine")) : 0;
}

void CorpusFilesController::setShowsAll(bool all) {
    if (all == showsAll()) return;
    files_.setShowsAll(all);
    emit showsAllChanged();
}

}  // namespace quillmere
