import QtQuick
import QuillmereApp

// A tooltip of the item it is put in. It is made only when it is needed: there are hundreds of them.
Loader {
    property string text
    property bool shown: false

    anchors.fill: parent
    source: shown && text.length > 0 ? Qt.resolvedUrl("TipBubble.qml") : ""
}
