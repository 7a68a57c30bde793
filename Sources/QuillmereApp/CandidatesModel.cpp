#include "QuillmereApp/CandidatesModel.h"

#include <algorithm>
#include <utility>

#include "QuillmereApp/TimeText.h"

namespace quillmere {

CandidateHandle CandidatesModel::at(int row) const {
    return row >= 0 && row < count() ? rows_[static_cast<std::size_t>(row)] : nullptr;
}

int CandidatesModel::rowOf(const CandidateHandle& candidate) const {
    const auto found = std::ranges::find(rows_, candidate);
    return found == rows_.end() ? -1 : static_cast<int>(found - rows_.begin());
}

void CandidatesModel::show(std::vector<CandidateHandle> candidates) {
    beginResetModel();
    rows_ = std::move(candidates);
    endResetModel();
    emit countChanged();
}

int CandidatesModel::insert(const CandidateHandle& candidate) {
    const auto place = std::ranges::upper_bound(rows_, candidate->number, {},
                                                [](const CandidateHandle& row) { return row->number; });
    const int row = static_cast<int>(place - rows_.begin());
    beginInsertRows({}, row, row);
    rows_.insert(place, candidate);
    endInsertRows();
    emit countChanged();
    return row;
}

void CandidatesModel::remove(int row) {
    beginRemoveRows({}, row, row);
    rows_.erase(rows_.begin() + row);
    endRemoveRows();
    emit countChanged();
}

void CandidatesModel::update(const CandidateHandle& candidate) {
    const int row = rowOf(candidate);
    if (row >= 0) emit dataChanged(index(row), index(row));
}

void CandidatesModel::setPlaying(const QUrl& name) {
    const QUrl before = std::exchange(playing_, name);
    for (const CandidateHandle& candidate : rows_) {
        if (candidate->name == before || candidate->name == name) update(candidate);
    }
}

void CandidatesModel::setMeasures(std::function<SoundMeasure(const Candidate& candidate)> measureOf) {
    measureOf_ = std::move(measureOf);
}

void CandidatesModel::measuresChanged() {
    if (count() > 0) emit dataChanged(index(0), index(count() - 1), {NoveltyRole, NoveltyTextRole});
}

int CandidatesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant CandidatesModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const Candidate& candidate = *rows_[static_cast<std::size_t>(index.row())];
    switch (role) {
        case NumberRole:
            return candidate.number;
        case SecondsRole:
            return candidate.sound.seconds();
        case DurationTextRole:
            return TimeText::duration(candidate.sound.seconds());
        case PeaksRole:
            return QVariant::fromValue(candidate.peaks);
        case IsPlayingRole:
            return candidate.name == playing_;
        case IsKeptRole:
            return candidate.isKept();
        case FileNameRole:
            return candidate.file.fileName();
        case NoveltyRole:
            return measureOf_(candidate).noveltyText();
        case NoveltyTextRole:
            return measureOf_(candidate).noveltyWord();
        default:
            return {};
    }
}

QHash<int, QByteArray> CandidatesModel::roleNames() const {
    return {{NumberRole, "number"},     {SecondsRole, "seconds"},     {DurationTextRole, "durationText"},
            {PeaksRole, "peaks"},       {IsPlayingRole, "isPlaying"}, {IsKeptRole, "isKept"},
            {FileNameRole, "fileName"}, {NoveltyRole, "novelty"},     {NoveltyTextRole, "noveltyText"}};
}

}  // namespace quillmere
