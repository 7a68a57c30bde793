#include "QuillmereApp/Items/PointMapItem.h"

#include <QImage>
#include <QPainter>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <utility>
#include <vector>

namespace quillmere {
namespace {

constexpr double clipRadius = 3.2;
constexpr double resultRadius = 4.6;
constexpr double ringRadius = 8.4;
constexpr double ringWidth = 1.6;
constexpr double reach = 12;   // pixels from a point that still mean it
constexpr double margin = 28;  // pixels around all points
constexpr double beyond = 14;  // pixels from the outermost points to the end of the map

// How much of each pixel a disc covers that stands in the middle of the square, in 255ths; a ring, if it has
// a hole.
struct Stamp {
    Stamp(double radius, double hole) : side(2 * static_cast<int>(std::ceil(radius + 1)) + 1) {
        const int middle = side / 2;
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x) {
                const double distance = std::hypot(x - middle, y - middle);
                const auto within = [&](double edge) { return std::clamp(edge + 0.5 - distance, 0.0, 1.0); };
                const double share = within(radius) - (hole > 0 ? within(hole) : 0);
                coverage.push_back(static_cast<std::uint8_t>(std::lround(200 * share)));
            }
        }
    }

    int side;
    std::vector<std::uint8_t> coverage;  // [side][side]
};

// Discs of one colour, or rings, that add up where they lie on one another.
class Layer {
public:
    explicit Layer(QSize size, double radius, double hole = 0)
        : image_(size, QImage::Format_Alpha8), stamp_(radius, hole) {
        image_.fill(0);
    }

    void add(QPointF middle) {
        const int left = static_cast<int>(std::floor(middle.x())) - stamp_.side / 2;
        const int top = static_cast<int>(std::floor(middle.y())) - stamp_.side / 2;
        const int from = std::max(0, -left);
        const int to = std::min(stamp_.side, image_.width() - left);
        for (int y = std::max(0, -top); y < std::min(stamp_.side, image_.height() - top); ++y) {
            const std::uint8_t* const source = stamp_.coverage.data() + y * stamp_.side;
            std::uint8_t* const target = image_.scanLine(top + y) + left;
            for (int x = from; x < to; ++x)
                target[x] = static_cast<std::uint8_t>(std::min(255, target[x] + source[x]));
        }
    }

    [[nodiscard]] QImage in(const QColor& color) const {
        QImage painted(image_.size(), QImage::Format_ARGB32_Premultiplied);
        painted.fill(color);
        QPainter painter(&painted);
        painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
        painter.drawImage(0, 0, image_);
        return painted;
    }

private:
    QImage image_;
    Stamp stamp_;
};

}  // namespace

PointMapItem::PointMapItem(QQuickItem* parent) : QQuickPaintedItem(parent) {}

void PointMapItem::setMap(MapController* map) {
    if (map == map_) return;
    if (map_) map_->disconnect(this);
    map_ = map;
    if (map_) {
        connect(map_, &MapController::pointsChanged, this, &PointMapItem::takePoints);
        connect(map_, &MapController::favouritesChanged, this, [this] { update(); });
    }
    takePoints();
    emit mapChanged();
}

void PointMapItem::setClipColor(const QColor& color) {
    if (color == clipColor_) return;
    clipColor_ = color;
    update();
    emit colorsChanged();
}

void PointMapItem::setResultColor(const QColor& color) {
    if (color == resultColor_) return;
    resultColor_ = color;
    update();
    emit colorsChanged();
}

// Results that come leave the view as it is, unless all was seen. Another map begins with a view of all.
void PointMapItem::takePoints() {
    const bool hadPoints = std::exchange(hasPoints_, map_ && map_->count() > 0);
    measure();
    if (!hadPoints || !hasPoints_ || zoom_ <= 1 || !seesAny()) {
        fit();
    } else {
        changeView();
    }
}

bool PointMapItem::seesAny() const {
    const QRectF seen(0, 0, width(), height());
    return std::ranges::any_of(map_->places(),
                               [&](MapPlace place) { return seen.contains(positionOf(place)); });
}

void PointMapItem::measure() {
    bounds_ = {};
    if (!map_ || map_->places().empty()) return;
    double left = std::numeric_limits<double>::infinity();
    double right = -left;
    double bottom = left;
    double top = -left;
    for (const MapPlace& place : map_->places()) {
        left = std::min(left, place.x);
        right = std::max(right, place.x);
        bottom = std::min(bottom, place.y);
        top = std::max(top, place.y);
    }
    bounds_ = QRectF(QPointF(left, bottom), QPointF(right, top));
}

void PointMapItem::fit() {
    constexpr double smallest = 1e-6;  // units: all points are at one place
    zoom_ = 1;
    centre_ = bounds_.center();
    fitScale_ = std::min(std::max(1.0, width() - 2 * margin) / std::max(smallest, bounds_.width()),
                         std::max(1.0, height() - 2 * margin) / std::max(smallest, bounds_.height()));
    changeView();
}

void PointMapItem::changeView() {
    update();
    emit viewChanged();
}

void PointMapItem::geometryChange(const QRectF& now, const QRectF& before) {
    QQuickPaintedItem::geometryChange(now, before);
    if (now.size() == before.size()) return;
    const double zoom = zoom_;
    const QPointF centre = centre_;
    fit();
    if (zoom <= 1) return;
    zoom_ = zoom;
    centre_ = centre;
    changeView();
}

// ---- Between the item and the map

QPointF PointMapItem::positionOf(MapPlace place) const {
    return {width() / 2 + (place.x - centre_.x()) * scale(),
            height() / 2 - (place.y - centre_.y()) * scale()};
}

QPointF PointMapItem::positionOf(int point) const {
    if (!map_ || point < 0 || point >= map_->count()) return {};
    return positionOf(map_->places()[static_cast<std::size_t>(point)]);
}

QPointF PointMapItem::placeAt(QPointF position) const {
    return {centre_.x() + (position.x() - width() / 2) / scale(),
            centre_.y() - (position.y() - height() / 2) / scale()};
}

QPointF PointMapItem::nearestOnMap(QPointF place) const {
    const double room = beyond / scale();
    return {std::clamp(place.x(), bounds_.left() - room, bounds_.right() + room),
            std::clamp(place.y(), bounds_.top() - room, bounds_.bottom() + room)};
}

int PointMapItem::pointAt(QPointF position) const {
    if (!map_) return -1;
    const QPointF place = placeAt(position);
    double nearest = reach / scale();
    int found = -1;
    for (int point = 0; point < map_->count(); ++point) {
        const MapPlace& there = map_->places()[static_cast<std::size_t>(point)];
        const double distance = std::hypot(there.x - place.x(), there.y - place.y());
        if (distance > nearest) continue;
        nearest = distance;
        found = point;
    }
    return found;
}

int PointMapItem::neighbour(int point, int dx, int dy) const {
    if (!map_ || map_->count() == 0) return -1;
    const bool isSome = point >= 0 && point < map_->count();
    const MapPlace from =
        isSome ? map_->places()[static_cast<std::size_t>(point)] : MapPlace{centre_.x(), centre_.y()};
    double nearest = std::numeric_limits<double>::infinity();
    int found = point;
    for (int other = 0; other < map_->count(); ++other) {
        const MapPlace& there = map_->places()[static_cast<std::size_t>(other)];
        const double along = (there.x - from.x) * dx + (there.y - from.y) * dy;
        const double beside = std::abs((there.x - from.x) * dy) + std::abs((there.y - from.y) * dx);
        if (isSome && (other == point || along <= 0 || along < beside)) continue;
        const double distance = std::hypot(there.x - from.x, there.y - from.y);
        if (distance >= nearest) continue;
        nearest = distance;
        found = other;
    }
    return found;
}

// ---- What is seen

void PointMapItem::zoomAt(QPointF position, double factor) {
    const QPointF place = placeAt(position);
    zoom_ = std::clamp(zoom_ * factor, 1.0, mostZoom);
    if (zoom_ <= 1) {
        fit();
        return;
    }
    centre_ += place - placeAt(position);
    changeView();
}

void PointMapItem::pan(QPointF by) {
    centre_ += QPointF(-by.x(), by.y()) / scale();
    // Something is always seen.
    centre_.setX(std::clamp(centre_.x(), bounds_.left(), bounds_.right()));
    centre_.setY(std::clamp(centre_.y(), bounds_.top(), bounds_.bottom()));
    changeView();
}

void PointMapItem::reveal(int point) {
    if (map_ && point >= 0 && point < map_->count()) revealPosition(positionOf(point), margin);
}

void PointMapItem::revealPlace(QPointF place) {
    revealPosition(positionOfPlace(place), beyond);
}

// With that many pixels around it.
void PointMapItem::revealPosition(QPointF position, double around) {
    const QRectF seen(around, around, std::max(0.0, width() - 2 * around),
                      std::max(0.0, height() - 2 * around));
    const QPointF nearest(std::clamp(position.x(), seen.left(), seen.right()),
                          std::clamp(position.y(), seen.top(), seen.bottom()));
    if (nearest != position) pan(nearest - position);
}

void PointMapItem::paint(QPainter* painter) {
    if (!map_ || map_->count() == 0) return;
    const double ratio = painter->device()->devicePixelRatio() * painter->transform().m11();
    const QSize size = (QSizeF(width(), height()) * ratio).toSize();
    const std::span<const MapPlace> places = map_->places();
    const auto clips = static_cast<std::size_t>(map_->clips());
    const auto draw = [&](std::span<const MapPlace> some, double radius, const QColor& color) {
        if (some.empty()) return;
        Layer layer(size, radius * ratio);
        for (const MapPlace& place : some) {
            const QPointF position = positionOf(place) * ratio;
            if (QRectF(QPointF(), QSizeF(size)).adjusted(-reach, -reach, reach, reach).contains(position))
                layer.add(position);
        }
        painter->drawImage(QRectF(0, 0, width(), height()), layer.in(color));
    };
    draw(places.first(clips), clipRadius, clipColor_);
    draw(places.subspan(clips), resultRadius, resultColor_);
    drawFavourites(painter, size, ratio);
}

void PointMapItem::drawFavourites(QPainter* painter, QSize size, double ratio) const {
    if (map_->favourites().empty()) return;
    Layer rings(size, ringRadius * ratio, (ringRadius - ringWidth) * ratio);
    for (const int point : map_->favourites()) {
        const QPointF position = positionOf(point) * ratio;
        if (QRectF(QPointF(), QSizeF(size)).contains(position)) rings.add(position);
    }
    painter->drawImage(QRectF(0, 0, width(), height()), rings.in(resultColor_));
}

}  // namespace quillmere
