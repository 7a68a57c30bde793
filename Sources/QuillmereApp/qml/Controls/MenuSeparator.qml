import QtQuick
import QtQuick.Templates as T
import QuillmereApp

T.MenuSeparator {
    implicitWidth: 40
    implicitHeight: 9

    contentItem: Item {
        Rectangle {
            anchors.verticalCenter: parent.verticalCenter
            width: parent.width
            height: 1
            color: Theme.line
        }
    }
}
