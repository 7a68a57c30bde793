#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QQmlEngine>

namespace quillmere {

// One point of the loss chart.
struct LossPoint {
    qint64 id = 0;  // the training step
    double loss = 0;

    friend bool operator==(const LossPoint&, const LossPoint&) = default;
};

// The points of the loss chart in arrival order; steps never repeat. Roles: step, loss.
// A chart that paints itself reads points() after changed().
class LossHistory : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("ModelController owns it")
    Q_PROPERTY(int count READ count NOTIFY changed)

public:
    enum Role { StepRole = Qt::UserRole + 1, LossRole };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] const QList<LossPoint>& points() const { return points_; }
    [[nodiscard]] int count() const { return static_cast<int>(points_.size()); }

    // Appends a point unless step is the last one's already.
    void add(qint64 step, double loss);
    void clear();

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

signals:
    void changed();

private:
    QList<LossPoint> points_;
};

}  // namespace quillmere
