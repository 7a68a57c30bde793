#pragma once

#include <QPoint>
#include <QProcess>
#include <QQuickItem>
#include <QString>
#include <QStringList>
#include <QTest>

// The pointer of an X server, and what it points at.
namespace quillmere::testing {

// The item of that objectName; null when there is none.
inline QQuickItem* findItem(QQuickItem* parent, const QString& name) {
    if (parent->objectName() == name) return parent;
    for (QQuickItem* child : parent->childItems()) {
        if (QQuickItem* found = findItem(child, name)) return found;
    }
    return nullptr;
}

// Commands of xdotool, all of them at once: the window sees it only afterwards.
inline void point(const QStringList& commands) {
    QCOMPARE(QProcess::execute("xdotool", commands), 0);
}
inline QStringList moveTo(QPoint place) {
    return {"mousemove", QString::number(place.x()), QString::number(place.y())};
}

}  // namespace quillmere::testing
