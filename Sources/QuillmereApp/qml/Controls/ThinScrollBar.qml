import QtQuick
import QtQuick.Templates as T
import QuillmereApp

T.ScrollBar {
    id: bar

    implicitWidth: orientation === Qt.Vertical ? 10 : 40
    implicitHeight: orientation === Qt.Vertical ? 40 : 10
    padding: 2
    minimumSize: 0.08
    // Assistive technology scrolls by moving to what it wants to see.
    Accessible.ignored: true

    contentItem: Rectangle {
        radius: 3
        implicitWidth: 6
        implicitHeight: 6
        color: bar.pressed ? Theme.secondary : Theme.track
        opacity: bar.pressed || bar.hovered ? 1 : 0.7
        visible: bar.size < 1
    }
}
