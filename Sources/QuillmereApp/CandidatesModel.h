#pragma once

#include <QAbstractListModel>
#include <QQmlEngine>
#include <QUrl>
#include <functional>
#include <vector>

#include "QuillmereApp/Controllers/Candidate.h"
#include "QuillmereApp/SoundMeasure.h"

namespace quillmere {

// The candidates of one set, as the window lists them. Roles:
//   number        int, in the set from 1
//   seconds       double; durationText: "1.24 s"
//   peaks         list of numbers 0 ... 1, as those of ResultsModel
//   isPlaying     bool
//   isKept        bool: it has a file
//   fileName      string, of that file; empty without one
//   novelty       string, as that of ResultsModel
//   noveltyText   string, as that of ResultsModel
class CandidatesModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("CandidatesController owns it")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        NumberRole = Qt::UserRole + 1,
        SecondsRole,
        DurationTextRole,
        PeaksRole,
        IsPlayingRole,
        IsKeptRole,
        FileNameRole,
        NoveltyRole,
        NoveltyTextRole,
    };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int count() const { return static_cast<int>(rows_.size()); }
    [[nodiscard]] CandidateHandle at(int row) const;                  // null when there is none
    [[nodiscard]] int rowOf(const CandidateHandle& candidate) const;  // -1 when there is none

    void show(std::vector<CandidateHandle> candidates);
    // At the place that its number gives it, which is returned.
    int insert(const CandidateHandle& candidate);
    void remove(int row);
    // What is told of it has changed.
    void update(const CandidateHandle& candidate);
    void setPlaying(const QUrl& name);
    // As ResultsModel has them.
    void setMeasures(std::function<SoundMeasure(const Candidate& candidate)> measureOf);
    void measuresChanged();

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

signals:
    void countChanged();

private:
    std::vector<CandidateHandle> rows_;
    QUrl playing_;
    std::function<SoundMeasure(const Candidate& candidate)> measureOf_ = [](const Candidate&) {
        return SoundMeasure();
    };
};

}  // namespace quillmere
