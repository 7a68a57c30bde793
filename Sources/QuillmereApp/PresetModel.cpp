#include "QuillmereApp/PresetModel.h"

#include <utility>

#include "QuillmereApp/Words.h"

namespace quillmere {
namespace {

QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

int builtInCount() {
    return static_cast<int>(Preset::all().size());
}

}  // namespace

void PresetModel::setOwn(QList<OwnPreset> own) {
    if (own == own_) return;  // views keep what they show, and the keyboard its place
    beginResetModel();
    own_ = std::move(own);
    endResetModel();
    emit countChanged();
}

void PresetModel::setCurrent(const QString& name, bool edited) {
    if (name == currentName_ && edited == currentEdited_) return;
    const QString before = std::exchange(currentName_, name);
    currentEdited_ = edited;
    announceRow(before);
    if (name != before) announceRow(name);
}

void PresetModel::announceRow(const QString& name) {
    const int row = rowOf(name);
    if (row >= 0) emit dataChanged(index(row), index(row), {IsCurrentRole, IsEditedRole});
}

std::optional<Aesthetics> PresetModel::find(const QString& name) const {
    const int row = rowOf(name);
    if (row < 0) return std::nullopt;
    if (row < builtInCount()) return Preset::all()[static_cast<std::size_t>(row)].aesthetics;
    return own_.at(row - builtInCount()).aesthetics;
}

QString PresetModel::nameOf(const Aesthetics& values) const {
    for (int row = 0; row < rowCount(); ++row) {
        if (find(nameAt(row)) == values) return nameAt(row);
    }
    return {};
}

QString PresetModel::problemOf(const QString& name) const {
    const int row = rowOf(name);
    return row < builtInCount() ? QString() : own_.at(row - builtInCount()).problem;
}

int PresetModel::rowOf(const QString& name) const {
    for (int row = 0; row < rowCount(); ++row) {
        if (nameAt(row) == name) return row;
    }
    return -1;
}

QString PresetModel::nameAt(int row) const {
    if (row < builtInCount()) return text(Preset::all()[static_cast<std::size_t>(row)].name);
    return own_.at(row - builtInCount()).name;
}

int PresetModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : builtInCount() + static_cast<int>(own_.size());
}

QVariant PresetModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const int row = index.row();
    const bool isOwn = row >= builtInCount();
    const bool isCurrent = nameAt(row) == currentName_;
    switch (role) {
        case NameRole:
            return nameAt(row);
        case BlurbRole:
            if (!isOwn) return Words::inTable(Preset::all()[static_cast<std::size_t>(row)].blurb);
            if (own_.at(row - builtInCount()).aesthetics) return tr("Your preset.");
            return own_.at(row - builtInCount()).problem;
        case IsOwnRole:
            return isOwn;
        case IsUsableRole:
            return !isOwn || own_.at(row - builtInCount()).aesthetics.has_value();
        case IsCurrentRole:
            return isCurrent;
        case IsEditedRole:
            return isCurrent && currentEdited_;
        default:
            return {};
    }
}

QHash<int, QByteArray> PresetModel::roleNames() const {
    return {{NameRole, "name"},         {BlurbRole, "blurb"},         {IsOwnRole, "isOwn"},
            {IsUsableRole, "isUsable"}, {IsCurrentRole, "isCurrent"}, {IsEditedRole, "isEdited"}};
}

}  // namespace quillmere
