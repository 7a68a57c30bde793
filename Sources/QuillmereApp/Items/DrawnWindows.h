#pragma once

#include <QObject>
#include <QQmlEngine>

namespace quillmere {

// The program's own windows, which Qt Quick draws. A dialog of the platform is none of them; one that Qt
// draws for a platform without dialogs is (since Qt 6.8; before that it was drawn into the window that asked
// for it).
class DrawnWindows : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON

public:
    using QObject::QObject;

    // How many are shown now.
    Q_INVOKABLE [[nodiscard]] int count() const;
};

}  // namespace quillmere
