#include "QuillmereApp/Items/LossChart.h"

#include <QFontMetricsF>
#include <QLocale>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

namespace quillmere {

namespace {

constexpr int rows = 4;    // stretches between horizontal grid lines
constexpr double gap = 6;  // between numbers and the axis

QString number(double value) {
    return QLocale::c().toString(value, 'g', 3);
}

}  // namespace

LossChart::LossChart(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    setImplicitSize(280, 140);
}

void LossChart::setPoints(LossHistory* points) {
    if (points == points_) return;
    if (points_) disconnect(points_, nullptr, this, nullptr);
    points_ = points;
    if (points_) connect(points_, &LossHistory::changed, this, &LossChart::pointsGrew);
    emit pointsChanged();
    pointsGrew();
}

void LossChart::pointsGrew() {
    update();
    emit descriptionChanged();
}

void LossChart::setSteps(int steps) {
    if (steps == steps_) return;
    steps_ = steps;
    update();
    emit stepsChanged();
}

void LossChart::setLineColor(const QColor& color) {
    lineColor_ = color;
    update();
    emit colorsChanged();
}

void LossChart::setGridColor(const QColor& color) {
    gridColor_ = color;
    update();
    emit colorsChanged();
}

void LossChart::setTextColor(const QColor& color) {
    textColor_ = color;
    update();
    emit colorsChanged();
}

void LossChart::setFont(const QFont& font) {
    if (font == font_) return;
    font_ = font;
    update();
    emit fontChanged();
}

QString LossChart::description() const {
    if (!points_ || points_->count() == 0) return tr("No loss yet");
    const LossPoint& last = points_->points().constLast();
    return tr("Loss %1 at step %2").arg(number(last.loss)).arg(last.id);
}

double LossChart::roundUp(double value) {
    if (!std::isfinite(value) || value <= 0) return 1;
    const double power = std::pow(10, std::floor(std::log10(value)));
    for (const double factor : {1.0, 2.0, 2.5, 3.0, 4.0, 5.0}) {
        if (factor * power >= value) return factor * power;
    }
    return 10 * power;
}

double LossChart::lastStep() const {
    const qint64 reached = points_ && points_->count() > 0 ? points_->points().constLast().id : 0;
    return static_cast<double>(std::max<qint64>({reached, steps_, 1}));
}

double LossChart::highestLoss() const {
    double highest = 0;
    if (points_) {
        for (const LossPoint& point : points_->points()) {
            if (std::isfinite(point.loss)) highest = std::max(highest, point.loss);
        }
    }
    return roundUp(highest);
}

QRectF LossChart::plotArea() const {
    const QFontMetricsF metrics(font_);
    // Room for the widest number there can be, so that the axis stays where it is.
    const double left = metrics.horizontalAdvance(QStringLiteral("0.375")) + gap;
    const double line = metrics.height();
    return QRectF(QPointF(left, line + 4), QPointF(width() - 1, height() - line - 4));
}

void LossChart::paint(QPainter* painter) {
    painter->setFont(font_);
    const QRectF plot = plotArea();
    if (plot.width() < 10 || plot.height() < 10) return;
    paintAxes(*painter, plot);
    if (points_) paintLine(*painter, plot);
}

void LossChart::paintAxes(QPainter& painter, const QRectF& plot) const {
    const QFontMetricsF metrics(font_);
    const double highest = highestLoss();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QPen(gridColor_, 1));
    for (int row = 0; row <= rows; ++row) {
        const double y = plot.bottom() - plot.height() * row / rows;
        painter.drawLine(QPointF(plot.left(), y), QPointF(plot.right(), y));
    }
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(textColor_);
    // Every second line has its number: more would not fit a small chart.
    for (int row = 0; row <= rows; row += 2) {
        const double y = plot.bottom() - plot.height() * row / rows;
        const QRectF place(0, y - metrics.height() / 2, plot.left() - gap, metrics.height());
        painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter, number(highest * row / rows));
    }
    const QRectF below(plot.left(), plot.bottom() + 3, plot.width(), metrics.height());
    painter.drawText(below, Qt::AlignLeft, QStringLiteral("0"));
    painter.drawText(below, Qt::AlignHCenter, xTitle());
    painter.drawText(below, Qt::AlignRight, QLocale::c().toString(lastStep(), 'f', 0));
    painter.drawText(QRectF(plot.left(), 0, plot.width(), metrics.height()), Qt::AlignLeft, yTitle());
}

void LossChart::paintLine(QPainter& painter, const QRectF& plot) const {
    const double steps = lastStep();
    const double highest = highestLoss();
    QPainterPath line;
    for (const LossPoint& point : points_->points()) {
        if (!std::isfinite(point.loss)) continue;
        const QPointF place(plot.left() + plot.width() * static_cast<double>(point.id) / steps,
                            plot.bottom() - plot.height() * std::clamp(point.loss / highest, 0.0, 1.0));
        if (line.elementCount() == 0)
            line.moveTo(place);
        else
            line.lineTo(place);
    }
    if (line.elementCount() == 0) return;
    QPainterPath area = line;
    area.lineTo(line.currentPosition().x(), plot.bottom());
    area.lineTo(line.elementAt(0).x, plot.bottom());
    QColor shade = lineColor_;
    shade.setAlphaF(0.14F);
    painter.fillPath(area, shade);
    painter.strokePath(line, QPen(lineColor_, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    // The newest point, so that even a single one can be seen.
    painter.setPen(Qt::NoPen);
    painter.setBrush(lineColor_);
    painter.drawEllipse(line.currentPosition(), 3, 3);
}

}  // namespace quillmere
