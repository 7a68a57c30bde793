#include "QuillmereApp/LossHistory.h"

namespace quillmere {

void LossHistory::add(qint64 step, double loss) {
    if (!points_.isEmpty() && points_.last().id == step) return;
    beginInsertRows({}, count(), count());
    points_.append({step, loss});
    endInsertRows();
    emit changed();
}

void LossHistory::clear() {
    if (points_.isEmpty()) return;
    beginResetModel();
    points_.clear();
    endResetModel();
    emit changed();
}

int LossHistory::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant LossHistory::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return {};
    const LossPoint& point = points_.at(index.row());
    if (role == StepRole) return point.id;
    if (role == LossRole) return point.loss;
    return {};
}

QHash<int, QByteArray> LossHistory::roleNames() const {
    return {{StepRole, "step"}, {LossRole, "loss"}};
}

}  // namespace quillmere
