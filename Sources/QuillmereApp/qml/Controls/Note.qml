import QtQuick
import QuillmereApp

// A sentence with an icon before it.
Item {
    id: note

    property string iconName
    property alias text: words.text
    property color ink: Theme.secondary
    property color textColor: Theme.secondary
    property alias font: words.font

    implicitWidth: words.x + Math.ceil(words.implicitWidth)
    implicitHeight: words.implicitHeight

    Icon {
        id: icon
        name: note.iconName
        color: note.ink
        width: 15
        height: 15
        y: Math.round((metrics.height - height) / 2)
        visible: name.length > 0
    }
    FontMetrics {
        id: metrics
        font: words.font
    }
    Words {
        id: words
        x: icon.visible ? icon.width + Theme.inner - 1 : 0
        width: note.width - x
        color: note.textColor
        font.pixelSize: Theme.smallSize
    }
}
