#include "QuillmereApp/Items/DrawnWindows.h"

#include <QGuiApplication>
#include <QQuickWindow>
#include <algorithm>

namespace quillmere {

int DrawnWindows::count() const {
    const QWindowList windows = QGuiApplication::allWindows();
    return static_cast<int>(std::ranges::count_if(windows, [](const QWindow* window) {
        return window->isVisible() && qobject_cast<const QQuickWindow*>(window) != nullptr;
    }));
}

}  // namespace quillmere
