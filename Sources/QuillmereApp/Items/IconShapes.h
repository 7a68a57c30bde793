#pragma once

#include <QPainterPath>
#include <QString>
#include <QStringList>

namespace quillmere {

// The icons of the window as filled shapes on a square of 24 units, drawn for it. Threads: any.
namespace IconShapes {

inline constexpr double side = 24;

// The shape of that name; empty for an unknown name.
[[nodiscard]] const QPainterPath& shape(const QString& name);
[[nodiscard]] QStringList names();

}  // namespace IconShapes
}  // namespace quillmere
