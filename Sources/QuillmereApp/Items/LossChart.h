#pragma once

#include <QColor>
#include <QFont>
#include <QPointer>
#include <QQmlEngine>
#include <QQuickPaintedItem>

#include "QuillmereApp/LossHistory.h"

namespace quillmere {

// Line chart of the training loss: x axis "Step" from 0 to steps, y axis "Loss" from 0. The axes take round
// numbers and grow only, so that a line does not jump while it is drawn.
class LossChart : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(quillmere::LossHistory* points READ points WRITE setPoints NOTIFY pointsChanged)
    // The right end of the x axis while the points do not reach further.
    Q_PROPERTY(int steps READ steps WRITE setSteps NOTIFY stepsChanged)
    Q_PROPERTY(QColor lineColor READ lineColor WRITE setLineColor NOTIFY colorsChanged)
    Q_PROPERTY(QColor gridColor READ gridColor WRITE setGridColor NOTIFY colorsChanged)
    Q_PROPERTY(QColor textColor READ textColor WRITE setTextColor NOTIFY colorsChanged)
    Q_PROPERTY(QFont font READ font WRITE setFont NOTIFY fontChanged)
    Q_PROPERTY(QString xTitle READ xTitle CONSTANT)
    Q_PROPERTY(QString yTitle READ yTitle CONSTANT)
    // What the chart shows, in a sentence: for those who cannot see it.
    Q_PROPERTY(QString description READ description NOTIFY descriptionChanged)

public:
    explicit LossChart(QQuickItem* parent = nullptr);

    [[nodiscard]] LossHistory* points() const { return points_; }
    void setPoints(LossHistory* points);
    [[nodiscard]] int steps() const { return steps_; }
    void setSteps(int steps);
    [[nodiscard]] QColor lineColor() const { return lineColor_; }
    void setLineColor(const QColor& color);
    [[nodiscard]] QColor gridColor() const { return gridColor_; }
    void setGridColor(const QColor& color);
    [[nodiscard]] QColor textColor() const { return textColor_; }
    void setTextColor(const QColor& color);
    [[nodiscard]] QFont font() const { return font_; }
    void setFont(const QFont& font);
    [[nodiscard]] QString xTitle() const { return tr("Step"); }
    [[nodiscard]] QString yTitle() const { return tr("Loss"); }
    [[nodiscard]] QString description() const;

    void paint(QPainter* painter) override;

    // The smallest number of the form 1, 2, 2.5, 3, 4 or 5 times a power of ten (a whole power, also a
    // negative one) that is not below value; 1 for 0, negative and non-finite values.
    [[nodiscard]] static double roundUp(double value);

signals:
    void pointsChanged();
    void stepsChanged();
    void colorsChanged();
    void fontChanged();
    void descriptionChanged();

private:
    void pointsGrew();
    [[nodiscard]] QRectF plotArea() const;
    [[nodiscard]] double lastStep() const;
    [[nodiscard]] double highestLoss() const;
    void paintAxes(QPainter& painter, const QRectF& plot) const;
    void paintLine(QPainter& painter, const QRectF& plot) const;

    QPointer<LossHistory> points_;
    int steps_ = 0;
    QColor lineColor_ = Qt::black, gridColor_ = Qt::gray, textColor_ = Qt::black;
    QFont font_;
};

}  // namespace quillmere
