import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// A sample that a sound is compared with: the key that plays it, if any does, its name, and how much it has to do with
// it. Pressed while it plays, the sound itself comes in its place.
T.Button {
    id: row

    property int key: 0
    property string name
    property string detail
    property bool playing: false

    objectName: "relative-" + key
    implicitHeight: 28
    enabled: key > 0
    focusPolicy: Qt.TabFocus
    hoverEnabled: true

    Accessible.role: Accessible.Button
    Accessible.name: key === 0 ? name : playing ? qsTr("Play the sound itself") : qsTr("Play %1").arg(name)
    Accessible.description: detail
    Accessible.onPressAction: clicked()

    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    background: Rectangle {
        radius: Theme.controlRadius - 2
        color: row.down ? Theme.controlPressed : row.hovered ? Theme.controlHover : "transparent"
    }
    contentItem: Item {
        Rectangle {
            id: keyCap
            visible: row.key > 0
            x: 5
            width: 18
            height: 18
            radius: 4
            anchors.verticalCenter: parent.verticalCenter
            color: row.playing ? Theme.accent : Theme.control
            border.width: 1
            border.color: row.playing ? Theme.accent : Theme.controlLine

            Text {
                anchors.centerIn: parent
                text: row.key
                color: row.playing ? Theme.accentInk : Theme.secondary
                font.family: Theme.figures
                font.pixelSize: 11
                textFormat: Text.PlainText
            }
        }
        Text {
            anchors.left: keyCap.right
            anchors.leftMargin: Theme.inner
            anchors.right: figure.left
            anchors.rightMargin: Theme.inner
            anchors.verticalCenter: parent.verticalCenter
            text: row.name
            color: row.playing ? Theme.accent : Theme.text
            font.family: Theme.family
            font.pixelSize: Theme.smallSize
            elide: Text.ElideMiddle
            textFormat: Text.PlainText
        }
        Text {
            id: figure
            anchors.right: parent.right
            anchors.rightMargin: Theme.inner
            anchors.verticalCenter: parent.verticalCenter
            text: row.detail
            color: Theme.secondary
            font.family: Theme.figures
            font.pixelSize: Theme.smallSize
            textFormat: Text.PlainText
        }
    }

    FocusRing {
        around: Theme.controlRadius - 2
        shown: row.visualFocus
    }
}
