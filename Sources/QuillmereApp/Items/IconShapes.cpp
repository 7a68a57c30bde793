#include "QuillmereApp/Items/IconShapes.h"

#include <QHash>
#include <QPainterPathStroker>
#include <QPointF>
#include <cmath>
#include <initializer_list>
#include <numbers>

namespace quillmere {

namespace {

constexpr double lineWidth = 1.8;

QPainterPath stroked(const QPainterPath& line, double width = lineWidth) {
    QPainterPathStroker stroker;
    stroker.setWidth(width);
    stroker.setCapStyle(Qt::RoundCap);
    stroker.setJoinStyle(Qt::RoundJoin);
    // Overlapping parts of an outline would be holes under the odd-even rule.
    return stroker.createStroke(line).simplified();
}

QPainterPath polyline(std::initializer_list<QPointF> points, bool closed = false) {
    QPainterPath path;
    bool first = true;
    for (const QPointF& point : points) {
        if (first)
            path.moveTo(point);
        else
            path.lineTo(point);
        first = false;
    }
    if (closed) path.closeSubpath();
    return path;
}

// A filled polygon whose corners have the given radius.
QPainterPath rounded(std::initializer_list<QPointF> corners, double radius) {
    const QPainterPath polygon = polyline(corners, true);
    return polygon.united(stroked(polygon, 2 * radius));
}

QPainterPath disc(QPointF centre, double radius) {
    QPainterPath path;
    path.addEllipse(centre, radius, radius);
    return path;
}

QPainterPath box(double x, double y, double width, double height, double radius) {
    QPainterPath path;
    path.addRoundedRect(x, y, width, height, radius, radius);
    return path;
}

// Degrees count clockwise from three o'clock, as on a screen.
QPointF onCircle(QPointF centre, double radius, double degrees) {
    const double angle = degrees * std::numbers::pi / 180;
    return {centre.x() + radius * std::cos(angle), centre.y() + radius * std::sin(angle)};
}

QPainterPath arc(QPointF centre, double radius, double fromDegrees, double sweepDegrees) {
    const QRectF bounds(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius);
    QPainterPath path;
    path.arcMoveTo(bounds, -fromDegrees);
    path.arcTo(bounds, -fromDegrees, -sweepDegrees);
    return path;
}

QPainterPath warning() {
    const QPainterPath triangle = rounded({{12, 5}, {21, 19.6}, {3, 19.6}}, 1.9);
    const QPainterPath stem = stroked(polyline({{12, 9.4}, {12, 13.6}}), 2.1);
    return triangle.subtracted(stem).subtracted(disc({12, 17.2}, 1.25));
}

QPainterPath checkedDisc() {
    return disc({12, 12}, 10).subtracted(stroked(polyline({{7.4, 12.4}, {10.6, 15.6}, {16.6, 8.8}}), 2.1));
}

QPainterPath folderOutline() {
    return polyline({{3, 18.2}, {3, 5.8}, {9, 5.8}, {11.2, 8.2}, {21, 8.2}, {21, 18.2}}, true);
}

QPainterPath folder() {
    return stroked(folderOutline());
}

QPainterPath folderWithPlus() {
    const QPointF badge(18.2, 17.4);
    const QPainterPath plus =
        stroked(polyline({{badge.x() - 3, badge.y()}, {badge.x() + 3, badge.y()}}))
            .united(stroked(polyline({{badge.x(), badge.y() - 3}, {badge.x(), badge.y() + 3}})));
    const QPainterPath behind = stroked(
        polyline({{2.4, 17.6}, {2.4, 5.2}, {8.4, 5.2}, {10.6, 7.6}, {20.4, 7.6}, {20.4, 17.6}}, true));
    return behind.subtracted(disc(badge, 5.6)).united(plus);
}

QPainterPath playTriangle(QPointF centre, double size) {
    return rounded({{centre.x() - size * 0.5, centre.y() - size * 0.8},
                    {centre.x() + size * 0.85, centre.y()},
                    {centre.x() - size * 0.5, centre.y() + size * 0.8}},
                   0.9);
}

QPainterPath playInCircle() {
    return stroked(disc({12, 12}, 9.2)).united(playTriangle({12, 12}, 4));
}

// Three quarters of a circle that end in an arrow head.
QPainterPath circleArrow(bool counterclockwise) {
    const QPointF centre(12, 12.6);
    constexpr double radius = 7.6;
    const QPointF tip = onCircle(centre, radius, -90);
    QPainterPath path = stroked(arc(centre, radius, -90, 285));
    path = path.united(rounded(
        {{tip.x() + 0.6, tip.y() - 3.2}, {tip.x() - 3.6, tip.y()}, {tip.x() + 0.6, tip.y() + 3.2}}, 0.6));
    // Drawn from twelve o'clock, clockwise, with the head at the start: that turns counterclockwise.
    if (counterclockwise) return path;
    return QTransform(-1, 0, 0, 1, IconShapes::side, 0).map(path);
}

// An arrow that turns back to the left over a bow.
QPainterPath turnedArrow(bool left) {
    QPainterPath bow;
    bow.moveTo(4.2, 9.2);
    bow.lineTo(14.2, 9.2);
    bow.cubicTo(18.2, 9.2, 20.2, 11.6, 20.2, 14.2);
    bow.cubicTo(20.2, 16.8, 18.2, 19.2, 14.2, 19.2);
    bow.lineTo(10, 19.2);
    const QPainterPath path = stroked(bow).united(stroked(polyline({{8.4, 4.8}, {4, 9.2}, {8.4, 13.6}})));
    return left ? path : QTransform(-1, 0, 0, 1, IconShapes::side, 0).map(path);
}

QPainterPath lock(bool open) {
    QPainterPath shackle;
    shackle.moveTo(8, 11);
    shackle.lineTo(8, open ? 7.2 : 8);
    shackle.arcTo(QRectF(8, open ? 3 : 3.8, 8, 8.4), 180, open ? -150 : -180);
    if (!open) shackle.lineTo(16, 11);
    const QPainterPath body = box(5, 10.6, 14, 10, 2.4);
    return stroked(shackle).united(open ? stroked(box(5.9, 11.5, 12.2, 8.2, 1.8)) : body);
}

QPainterPath copy() {
    const QPainterPath front = box(9, 9, 11, 12, 2.2);
    const QPainterPath back = stroked(box(4.6, 3.8, 10.2, 11.2, 2)).subtracted(box(7.4, 7.4, 14, 15, 3));
    return back.united(stroked(front));
}

QPainterPath dice() {
    QPainterPath path = stroked(box(3.8, 3.8, 16.4, 16.4, 3.6));
    for (const QPointF& pip :
         {QPointF(8.3, 8.3), QPointF(15.7, 8.3), QPointF(12, 12), QPointF(8.3, 15.7), QPointF(15.7, 15.7)}) {
        path = path.united(disc(pip, 1.45));
    }
    return path;
}

// Points of a map.
QPainterPath points() {
    QPainterPath path;
    for (const QPointF& point : {QPointF(6, 7), QPointF(15.6, 4.8), QPointF(11, 12.2), QPointF(19, 13.4),
                                 QPointF(5.4, 17.6), QPointF(14.6, 19.4)}) {
        path = path.united(disc(point, 2.1));
    }
    return path;
}

QPainterPath sun() {
    QPainterPath path = disc({12, 12}, 4.4);
    for (int ray = 0; ray < 8; ++ray) {
        const QPointF from = onCircle({12, 12}, 7.2, 45 * ray);
        const QPointF to = onCircle({12, 12}, 9.6, 45 * ray);
        path = path.united(stroked(polyline({from, to})));
    }
    return path;
}

QPainterPath moon() {
    return disc({11.4, 12.6}, 8.8).subtracted(disc({15.8, 8.6}, 7.6));
}

// Half light, half dark: as the desktop has it.
QPainterPath halfDisc() {
    QPainterPath half;
    half.moveTo(12, 3);
    half.arcTo(QRectF(3, 3, 18, 18), 90, 180);
    half.closeSubpath();
    return stroked(disc({12, 12}, 9)).united(half);
}

QPainterPath cross() {
    return stroked(polyline({{6, 6}, {18, 18}})).united(stroked(polyline({{18, 6}, {6, 18}})));
}

QPainterPath star(bool filled) {
    QPolygonF corners;
    for (int corner = 0; corner < 10; ++corner)
        corners.append(onCircle({12, 12.6}, corner % 2 == 0 ? 9.2 : 4.1, 36 * corner - 90));
    QPainterPath outline;
    outline.addPolygon(corners);
    outline.closeSubpath();
    return filled ? stroked(outline).united(outline) : stroked(outline);
}

QPainterPath lens() {
    return stroked(disc({10.4, 10.4}, 6.4)).united(stroked(polyline({{15.2, 15.2}, {20.4, 20.4}})));
}

// A square with three legs at each side.
QPainterPath chip() {
    QPainterPath path = stroked(box(6, 6, 12, 12, 2.2)).united(box(9.7, 9.7, 4.6, 4.6, 0.9));
    for (const double leg : {8.4, 12.0, 15.6}) {
        path = path.united(stroked(polyline({{leg, 2.4}, {leg, 6}}), 1.6))
                   .united(stroked(polyline({{leg, 18}, {leg, 21.6}}), 1.6))
                   .united(stroked(polyline({{2.4, leg}, {6, leg}}), 1.6))
                   .united(stroked(polyline({{18, leg}, {21.6, leg}}), 1.6));
    }
    return path;
}

QPainterPath waves() {
    QPainterPath path;
    const std::initializer_list<std::pair<double, double>> bars = {
        {3.4, 2}, {7.7, 6}, {12, 9}, {16.3, 4.6}, {20.6, 1.6}};
    for (const auto& [x, height] : bars) {
        path = path.united(stroked(polyline({{x, 12 - height}, {x, 12 + height}}), 2));
    }
    return path;
}

// A clock that is turned back.
QPainterPath earlier() {
    return circleArrow(true).united(stroked(polyline({{12, 8}, {12, 12.6}, {15, 14.4}})));
}

QPainterPath upAndDown() {
    const QPainterPath up = polyline({{4.6, 9}, {8, 5.4}, {11.4, 9}});
    const QPainterPath down = polyline({{12.6, 15}, {16, 18.6}, {19.4, 15}});
    return stroked(up)
        .united(stroked(polyline({{8, 5.8}, {8, 18.6}})))
        .united(stroked(down))
        .united(stroked(polyline({{16, 18.2}, {16, 5.4}})));
}

// Four pads.
QPainterPath pads() {
    QPainterPath path;
    for (const double x : {4.0, 13.2}) {
        for (const double y : {4.0, 13.2})
            path.addPath(stroked(box(x, y, 6.8, 6.8, 1.6)));
    }
    return path;
}

QPainterPath speaker(bool sounding) {
    QPainterPath path =
        rounded({{4.4, 9.6}, {7.2, 9.6}, {11.4, 6.2}, {11.4, 17.8}, {7.2, 14.4}, {4.4, 14.4}}, 0.8);
    if (!sounding) return path;
    return path.united(stroked(arc({11.6, 12}, 4, -45, 90))).united(stroked(arc({11.6, 12}, 7.6, -45, 90)));
}

// An arrow that comes back to its start.
QPainterPath loop() {
    return stroked(polyline({{5, 12.6}, {5, 10.4}, {7, 8.4}, {18, 8.4}}))
        .united(stroked(polyline({{15.4, 5.6}, {18.4, 8.4}, {15.4, 11.2}})))
        .united(stroked(polyline({{19, 11.4}, {19, 13.6}, {17, 15.6}, {6, 15.6}})))
        .united(stroked(polyline({{8.6, 12.8}, {5.6, 15.6}, {8.6, 18.4}})));
}

QHash<QString, QPainterPath> drawAll() {
    using namespace Qt::StringLiterals;
    return {
        {u"exclamationmark.triangle.fill"_s, warning()},
        {u"checkmark.circle.fill"_s, checkedDisc()},
        {u"folder.badge.plus"_s, folderWithPlus()},
        {u"folder"_s, folder()},
        {u"play.circle"_s, playInCircle()},
        {u"play.fill"_s, playTriangle({11.4, 12}, 7.6)},
        {u"stop.fill"_s, box(5, 5, 14, 14, 2.6)},
        {u"arrow.counterclockwise"_s, circleArrow(true)},
        {u"arrow.uturn.backward"_s, turnedArrow(true)},
        {u"arrow.uturn.forward"_s, turnedArrow(false)},
        {u"lock.fill"_s, lock(false)},
        {u"lock.open"_s, lock(true)},
        {u"xmark"_s, cross()},
        {u"doc.on.doc"_s, copy()},
        {u"magnifyingglass"_s, lens()},
        {u"dice"_s, dice()},
        {u"clock.arrow.circlepath"_s, earlier()},
        {u"arrow.up.arrow.down"_s, upAndDown()},
        {u"star"_s, star(false)},
        {u"star.fill"_s, star(true)},
        {u"circle.grid.cross"_s, points()},
        {u"square.grid.2x2"_s, pads()},
        {u"cpu"_s, chip()},
        {u"speaker"_s, speaker(false)},
        {u"speaker.wave.2"_s, speaker(true)},
        {u"repeat"_s, loop()},
        {u"sun.max"_s, sun()},
        {u"moon"_s, moon()},
        {u"circle.lefthalf.filled"_s, halfDisc()},
        {u"waveform"_s, waves()},
        {u"chevron.left"_s, stroked(polyline({{14.6, 6}, {8.6, 12}, {14.6, 18}}), 2.2)},
        {u"chevron.right"_s, stroked(polyline({{9.4, 6}, {15.4, 12}, {9.4, 18}}), 2.2)},
        {u"chevron.down"_s, stroked(polyline({{6, 9.4}, {12, 15.4}, {18, 9.4}}), 2.2)},
        {u"checkmark"_s, stroked(polyline({{4.8, 12.6}, {9.8, 17.6}, {19.4, 6.6}}), 2.2)},
        {u"plus"_s, stroked(polyline({{12, 5}, {12, 19}})).united(stroked(polyline({{5, 12}, {19, 12}})))},
        {u"minus"_s, stroked(polyline({{5, 12}, {19, 12}}))},
    };
}

const QHash<QString, QPainterPath>& allShapes() {
    static const QHash<QString, QPainterPath> shapes = drawAll();
    return shapes;
}

}  // namespace

namespace IconShapes {

const QPainterPath& shape(const QString& name) {
    static const QPainterPath none;
    const auto found = allShapes().constFind(name);
    return found == allShapes().constEnd() ? none : *found;
}

QStringList names() {
    QStringList list = allShapes().keys();
    list.sort();
    return list;
}

}  // namespace IconShapes
}  // namespace quillmere
