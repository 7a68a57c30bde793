#pragma once

#include <QAbstractListModel>
#include <QQmlEngine>
#include <QString>
#include <QUrl>
#include <memory>
#include <vector>

#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/CorpusReport.h"

namespace quillmere {

// The files of a corpus, and what becomes of each when it is learned. Roles:
//   name      string, relative to the folder
//   url       file URL, to play it
//   use       string: "fine", "cut", "silent", "unreadable", "damaged" or "copy"
//   useText   string, the same for people
//   detail    string: what that means for this file; empty where all is fine
//   durationText  string: "1.24 s", or empty
// All of them, or only those that are not fine.
class CorpusFilesModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("CorpusFilesController owns it")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        NameRole = Qt::UserRole + 1,
        UrlRole,
        UseRole,
        DetailRole,
        DurationTextRole,
        UseTextRole,
    };

    using QAbstractListModel::QAbstractListModel;

    // report: of corpus; both null for no rows.
    void setFiles(std::shared_ptr<const CorpusSummary> corpus, std::shared_ptr<const CorpusReport> report);
    [[nodiscard]] bool showsAll() const { return showsAll_; }
    void setShowsAll(bool all);

    [[nodiscard]] int count() const { return static_cast<int>(rows_.size()); }
    // How many files there are in that state; whatever is shown.
    [[nodiscard]] int countOf(const QString& state) const;
    Q_INVOKABLE [[nodiscard]] QUrl urlAt(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] static QString stateOf(const FileFate& fate);

signals:
    void countChanged();

private:
    void replaceRows();
    // The state, as the catalogues have it.
    [[nodiscard]] static const char* wordFor(const FileFate& fate);
    [[nodiscard]] QString detailOf(const FileFate& fate) const;

    std::shared_ptr<const CorpusSummary> corpus_;
    std::shared_ptr<const CorpusReport> report_;
    bool showsAll_ = true;
    std::vector<std::size_t> rows_;  // positions of the files that are shown
};

}  // namespace quillmere
