#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QQmlEngine>
#include <QString>
#include <optional>

#include "QuillmereCore/Generate/Aesthetics.h"

namespace quillmere {

// A preset the user saved: one JSON file named after it.
struct OwnPreset {
    QString name;
    std::optional<Aesthetics> aesthetics;  // absent when the file cannot be used
    QString problem;                       // why, for the user
    QString fileName{};                    // in the presets' folder

    bool operator==(const OwnPreset&) const = default;
};

// The eight built-in presets, then the user's own by name. Roles:
//   name     string
//   blurb    string; for an own preset what its file's problem is, else "Your preset."
//   isOwn    bool: can be deleted
//   isUsable bool: false for an own preset whose file cannot be used
//   isCurrent bool: the parameters came from it
//   isEdited bool: isCurrent, and a value departs from it
class PresetModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("CharacterController owns it")
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    enum Role {
        NameRole = Qt::UserRole + 1,
        BlurbRole,
        IsOwnRole,
        IsUsableRole,
        IsCurrentRole,
        IsEditedRole,
    };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int count() const { return rowCount(); }
    void setOwn(QList<OwnPreset> own);
    [[nodiscard]] const QList<OwnPreset>& own() const { return own_; }
    // The name the parameters came from (may be empty, or of a preset that is gone) and whether they depart.
    void setCurrent(const QString& name, bool edited);

    // The values of the preset of that name, exactly as written; nothing when there is none.
    [[nodiscard]] std::optional<Aesthetics> find(const QString& name) const;
    // The name of a preset with just these values; empty for none.
    [[nodiscard]] QString nameOf(const Aesthetics& values) const;
    // Why the own preset of that name cannot be used; empty when it can, or when there is none.
    [[nodiscard]] QString problemOf(const QString& name) const;
    [[nodiscard]] int rowOf(const QString& name) const;  // -1 when there is none

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

signals:
    void countChanged();

private:
    [[nodiscard]] QString nameAt(int row) const;
    void announceRow(const QString& name);

    QList<OwnPreset> own_;
    QString currentName_;
    bool currentEdited_ = false;
};

}  // namespace quillmere
