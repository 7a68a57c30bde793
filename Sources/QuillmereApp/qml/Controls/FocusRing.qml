import QtQuick
import QuillmereApp

// Shows which control the keyboard goes to.
Rectangle {
    property bool shown: false
    property real around: Theme.controlRadius

    anchors.fill: parent
    anchors.margins: -3
    radius: around + 3
    color: "transparent"
    border.color: Theme.accent
    border.width: 2
    visible: shown
}
