import QtQuick
import QuillmereApp

// A sentence with an icon before it.
Item {
    id: note

    property string iconName
    property alias text: label.text
    property color ink: Theme.secondary
    property color textColor: Theme.secondary
    property alias font: label.font

    implicitWidth: label.x + Math.ceil(label.implicitWidth)
    implicitHeight: label.implicitHeight

    Icon {
        id: icon
        name: note.iconName
        color: note.ink
        width: 15
        height: 15
        y: Math.round((metrics.height - height) / 2)
        visible: note.iconName.length > 0
    }
    FontMetrics {
        id: metrics
        font: label.font
    }
    Label {
        id: label
        // By the name: what is not shown has an icon all the same.
        x: note.iconName.length > 0 ? icon.width + Theme.inner - 1 : 0
        width: note.width - x
        color: note.textColor
        font.pixelSize: Theme.smallSize
    }
}
