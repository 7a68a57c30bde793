#include "QuillmereApp/Items/WaveformItem.h"

#include <QPainter>
#include <algorithm>
#include <cmath>

namespace quillmere {

namespace {

constexpr double barWidth = 2;
constexpr double barDistance = 3;  // from the left of one bar to the left of the next

}  // namespace

WaveformItem::WaveformItem(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
}

void WaveformItem::setPeaks(const QList<qreal>& peaks) {
    if (peaks == peaks_) return;
    peaks_ = peaks;
    update();
    emit peaksChanged();
}

void WaveformItem::setColor(const QColor& color) {
    if (color == color_) return;
    color_ = color;
    update();
    emit colorChanged();
}

QList<qreal> WaveformItem::gathered(const QList<qreal>& peaks, int bars) {
    const qsizetype count = std::min<qsizetype>(std::max(bars, 0), peaks.size());
    QList<qreal> result(count, 0);
    for (qsizetype bar = 0; bar < count; ++bar) {
        const qsizetype end = (bar + 1) * peaks.size() / count;
        for (qsizetype i = bar * peaks.size() / count; i < end; ++i) {
            // This order of the arguments turns NaN into 0.
            result[bar] = std::max(result[bar], std::min(1.0, std::max(0.0, peaks[i])));
        }
    }
    return result;
}

void WaveformItem::paint(QPainter* painter) {
    painter->setPen(Qt::NoPen);
    painter->setBrush(color_);
    const QList<qreal> bars = gathered(peaks_, static_cast<int>(width() / barDistance));
    const double middle = height() / 2;
    if (bars.isEmpty()) {
        painter->drawRect(QRectF(0, std::floor(middle), width(), 1));
        return;
    }
    const double step = width() / static_cast<double>(bars.size());
    for (qsizetype i = 0; i < bars.size(); ++i) {
        const double half = std::max(0.5, bars[i] * middle);
        const double thickness = std::min(barWidth, step * 0.7);
        const QRectF bar(static_cast<double>(i) * step, middle - half, thickness, 2 * half);
        painter->drawRoundedRect(bar, thickness / 2, thickness / 2);
    }
}

}  // namespace quillmere
