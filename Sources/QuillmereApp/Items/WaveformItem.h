#pragma once

#include <QColor>
#include <QList>
#include <QQmlEngine>
#include <QQuickPaintedItem>

namespace quillmere {

// The outline of a sound: one bar per peak (0 ... 1, in time order), mirrored about the middle line. Peaks
// are gathered into as many bars as fit the width. Without peaks there is only the middle line.
class WaveformItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(Waveform)
    Q_PROPERTY(QList<qreal> peaks READ peaks WRITE setPeaks NOTIFY peaksChanged)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

public:
    explicit WaveformItem(QQuickItem* parent = nullptr);

    [[nodiscard]] QList<qreal> peaks() const { return peaks_; }
    void setPeaks(const QList<qreal>& peaks);
    [[nodiscard]] QColor color() const { return color_; }
    void setColor(const QColor& color);

    void paint(QPainter* painter) override;

    // The largest peak of each of that many equal stretches; as many as there are peaks when those are fewer.
    // Values outside 0 ... 1 are clamped, NaN counts as 0.
    [[nodiscard]] static QList<qreal> gathered(const QList<qreal>& peaks, int bars);

signals:
    void peaksChanged();
    void colorChanged();

private:
    QList<qreal> peaks_;
    QColor color_ = Qt::black;
};

}  // namespace quillmere
