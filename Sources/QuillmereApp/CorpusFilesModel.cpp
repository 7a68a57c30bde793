#include "QuillmereApp/CorpusFilesModel.h"

#include <algorithm>
#include <utility>

#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/TimeText.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
void CorpusFilesModel::setFiles(std::shared_ptr<const CorpusSummary> corpus,
                                std::shared_ptr<const CorpusReport> report) {
    beginResetModel();
    corpus_ = std::move(corpus);
    report_ = std::move(report);
    replaceRows();
    endResetModel();
    emit countChanged();
}

void CorpusFilesModel::setShowsAll(bool all) {
    if (all == showsAll_) return;
    beginResetModel();
    showsAll_ = all;
    replaceRows();
    endResetModel();
    emit countChanged();
}

void CorpusFilesModel::replaceRows() {
    rows_.clear();
    if (!report_) return;
    for (std::size_t i = 0; i < report_->files.size(); ++i) {
        if (showsAll_ || !report_->files[i].isUsedAsItIs()) rows_.push_back(i);
    }
}

int CorpusFilesModel::countOf(const QString& state) const {
    if (!report_) return 0;
    return static_cast<int>(std::ranges::count(report_->files, state, &CorpusFilesModel::stateOf));
}

QUrl CorpusFilesModel::urlAt(int row) const {
    if (row < 0 || row >= count()) return {};
    return toUrl(corpus_->files[rows_[static_cast<std::size_t>(row)]].url);
}

const char* CorpusFilesModel::wordFor(const FileFate& fate) {
    switch (fate.use) {
        case FileFate::Use::silent:
            return QT_TR_NOOP("silent");
        case FileFate::Use::unreadable:
            return QT_TR_NOOP("unreadable");
        case FileFate::Use::cut:
        case FileFate::Use::whole:
            break;
    }
    if (fate.damage.any()) return QT_TR_NOOP("damaged");
    if (fate.use == FileFate::Use::cut) return QT_TR_NOOP("cut");
    return fate.duplicateOf ? QT_TR_NOOP("copy") : QT_TR_NOOP("fine");
}

QString CorpusFilesModel::stateOf(const FileFate& fate) {
    return QString::fromLatin1(wordFor(fate));
}

QString CorpusFilesModel::detailOf(const FileFate& fate) const {
    QStringList parts;
    if (fate.use == FileFate::Use::silent) parts += tr("There is nothing to hear, so it is left out.");
    if (fate.use == FileFate::Use::unreadable) parts += Words::of(fate.reason);
    if (fate.damage.isTruncated) parts += tr("It ends before it should.");
    if (fate.damage.silentSeconds > 0)
        parts += tr("Of %1 ms nothing could be read; they are silent.")
                     .arg(QString::fromStdString(Text::fixed(1000 * fate.damage.silentSeconds, 0)));
    if (fate.use == FileFate::Use::cut)
        parts += tr("The first %1 s are learned.")
                     .arg(QString::fromStdString(Text::fixed(report_->clipSeconds, 1)));
    if (fate.duplicateOf)
        parts += tr("The same file as %1: it counts twice.").arg(QString::fromStdString(*fate.duplicateOf));
    return parts.join(QLatin1Char(' '));
}

int CorpusFilesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant CorpusFilesModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const FileFate& fate = report_->files[rows_[static_cast<std::size_t>(index.row())]];
    switch (role) {
        case NameRole:
            return toQString(fate.name);
        case UrlRole:
            return urlAt(index.row());
        case UseRole:
            return stateOf(fate);
        case UseTextRole:
            return tr(wordFor(fate));
        case DetailRole:
            return detailOf(fate);
        case DurationTextRole:
            return fate.seconds > 0 ? TimeText::duration(fate.seconds) : QString();
        default:
            return {};
    }
}

QHash<int, QByteArray> CorpusFilesModel::roleNames() const {
    return {{NameRole, "name"},       {UrlRole, "url"},       {UseRole, "use"},
            {UseTextRole, "useText"}, {DetailRole, "detail"}, {DurationTextRole, "durationText"}};
}

}  // namespace quillmere
