#include "QuillmereApp/Items/Icon.h"

#include <QPainter>
#include <algorithm>

#include "QuillmereApp/Items/IconShapes.h"

namespace quillmere {

Icon::Icon(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
    setImplicitSize(16, 16);
}

void Icon::setName(const QString& name) {
    if (name == name_) return;
    name_ = name;
    update();
    emit nameChanged();
}

void Icon::setColor(const QColor& color) {
    if (color == color_) return;
    color_ = color;
    update();
    emit colorChanged();
}

void Icon::paint(QPainter* painter) {
    const double size = std::min(width(), height());
    painter->translate((width() - size) / 2, (height() - size) / 2);
    painter->scale(size / IconShapes::side, size / IconShapes::side);
    painter->fillPath(IconShapes::shape(name_), color_);
}

}  // namespace quillmere
