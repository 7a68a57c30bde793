#pragma once

#include <QColor>
#include <QPointF>
#include <QPointer>
#include <QQmlEngine>
#include <QQuickPaintedItem>

#include "QuillmereApp/Controllers/MapController.h"

namespace quillmere {

// The points of a map, of which a part is seen: y grows upwards. Tens of thousands of points are painted in a
// few milliseconds; where many lie on one another they are denser. Favourites have a ring.
class PointMapItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_NAMED_ELEMENT(PointMap)
    Q_PROPERTY(quillmere::MapController* map READ map WRITE setMap NOTIFY mapChanged)
    Q_PROPERTY(QColor clipColor READ clipColor WRITE setClipColor NOTIFY colorsChanged)
    Q_PROPERTY(QColor resultColor READ resultColor WRITE setResultColor NOTIFY colorsChanged)
    Q_PROPERTY(double zoom READ zoom NOTIFY viewChanged)  // 1: all points are seen

public:
    static constexpr double mostZoom = 200;

    explicit PointMapItem(QQuickItem* parent = nullptr);

    [[nodiscard]] MapController* map() const { return map_; }
    void setMap(MapController* map);
    [[nodiscard]] QColor clipColor() const { return clipColor_; }
    void setClipColor(const QColor& color);
    [[nodiscard]] QColor resultColor() const { return resultColor_; }
    void setResultColor(const QColor& color);
    [[nodiscard]] double zoom() const { return zoom_; }

    // ---- Between the item and the map

    Q_INVOKABLE [[nodiscard]] QPointF positionOf(int point) const;
    Q_INVOKABLE [[nodiscard]] QPointF placeAt(QPointF position) const;
    // The reverse.
    Q_INVOKABLE [[nodiscard]] QPointF positionOfPlace(QPointF place) const {
        return positionOf(MapPlace{place.x(), place.y()});
    }
    // The place itself, or the nearest to it where the map has ended: a little beyond the outermost points.
    Q_INVOKABLE [[nodiscard]] QPointF nearestOnMap(QPointF place) const;
    // The nearest point that is no farther than a fingertip's breadth, the topmost of equals; -1 for none.
    Q_INVOKABLE [[nodiscard]] int pointAt(QPointF position) const;
    // The nearest point that lies more in that direction (-1, 0 or 1 each, y upwards) than beside it; the
    // point itself when there is none, and the one nearest to the middle when point is none.
    Q_INVOKABLE [[nodiscard]] int neighbour(int point, int dx, int dy) const;

    // ---- What is seen

    // The place at position stays where it is.
    Q_INVOKABLE void zoomAt(QPointF position, double factor);
    Q_INVOKABLE void pan(QPointF by);
    Q_INVOKABLE void fit();
    // Pans as far as it takes to see the point, or a place that is on the map.
    Q_INVOKABLE void reveal(int point);
    Q_INVOKABLE void revealPlace(QPointF place);

    void paint(QPainter* painter) override;

signals:
    void mapChanged();
    void colorsChanged();
    void viewChanged();

protected:
    void geometryChange(const QRectF& now, const QRectF& before) override;

private:
    [[nodiscard]] double scale() const { return fitScale_ * zoom_; }
    [[nodiscard]] QPointF positionOf(MapPlace place) const;
    void revealPosition(QPointF position, double around);
    void takePoints();
    [[nodiscard]] bool seesAny() const;
    void measure();
    void changeView();
    void drawFavourites(QPainter* painter, QSize size, double ratio) const;

    QPointer<MapController> map_;
    QColor clipColor_ = Qt::gray;
    QColor resultColor_ = Qt::blue;
    bool hasPoints_ = false;
    QRectF bounds_;        // of all points, in the map's units
    double fitScale_ = 1;  // pixels per unit at a zoom of 1
    double zoom_ = 1;
    QPointF centre_;  // place in the middle of the item
};

}  // namespace quillmere
