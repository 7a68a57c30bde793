import QtQuick
import QuillmereApp

// Shows which control the keyboard goes to.
Rectangle {
    property bool shown: false
    property real around: Theme.controlRadius
    // Between it and the control; 0 where a list cuts off what is beyond its rows.
    property real gap: 3

    anchors.fill: parent
    anchors.margins: -gap
    radius: around + gap
    color: "transparent"
    border.color: Theme.accent
    border.width: 2
    visible: shown
}
