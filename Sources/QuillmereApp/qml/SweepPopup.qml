pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// One sound at seven places along a slider. Arrow keys and clicks on the outlines play, Return and clicks on the
// values take, Escape leaves everything as it is.
T.Popup {
    id: popup

    required property AppModel app
    readonly property SweepController sweep: app.sweep
    property int current: 0

    function go(to: int) {
        current = Math.max(0, Math.min(sweep.tiles.length - 1, to));
        sweep.play(current);
    }

    objectName: "sweep"
    parent: T.Overlay.overlay
    x: parent ? Math.round((parent.width - width) / 2) : 0
    y: parent ? Math.round((parent.height - height) / 2) : 0
    width: Math.min(720, (parent ? parent.width : 720) - 2 * Theme.outer)
    height: 118
    padding: Theme.between
    modal: true
    focus: true
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside
    onAboutToShow: {
        const present = Array.from(sweep.tiles).findIndex(tile => tile.isCurrent);
        current = Math.max(0, present);
        keys.forceActiveFocus(Qt.PopupFocusReason);
    }
    onClosed: sweep.close()

    background: Rectangle {
        objectName: "sheet"
        color: Theme.popup
        radius: Theme.cardRadius
        border.color: Theme.controlLine
    }
    T.Overlay.modal: Item {
    }
    contentItem: FocusScope {
        id: keys
        focus: true

        Accessible.role: Accessible.List
        Accessible.name: qsTr("%1, seven values").arg(popup.sweep.title)

        Keys.onPressed: event => {
            event.accepted = true;
            if (event.key === Qt.Key_Left)
                popup.go(popup.current - 1);
            else if (event.key === Qt.Key_Right)
                popup.go(popup.current + 1);
            else if (event.key === Qt.Key_Home)
                popup.go(0);
            else if (event.key === Qt.Key_End)
                popup.go(popup.sweep.tiles.length - 1);
            else if (event.key === Qt.Key_Space)
                popup.sweep.togglePlay(popup.current);
            else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter)
                popup.sweep.take(popup.current);
            else if (event.key === Qt.Key_R && !event.isAutoRepeat)
                popup.close();
            else
                event.accepted = false;
        }

        Label {
            id: heading
            text: popup.sweep.title
            font.pixelSize: Theme.smallSize
            font.weight: Font.DemiBold
            wrapMode: Text.NoWrap
            Accessible.role: Accessible.Heading
        }
        Label {
            anchors.right: parent.right
            visible: popup.width >= 480
            text: qsTr("Return takes the value")
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
            wrapMode: Text.NoWrap
        }
        Row {
            id: row
            y: heading.height + Theme.tight
            spacing: Theme.tight

            Repeater {
                model: popup.sweep.isOpen ? 7 : 0

                Rectangle {
                    id: tile

                    required property int index
                    readonly property var content: popup.sweep.tiles[index] ?? null
                    readonly property bool playing: content !== null && String(popup.app.playback.playingURL) === String(content.name)

                    objectName: "sweep-" + index
                    width: (keys.width - 6 * row.spacing) / 7
                    height: keys.height - row.y
                    radius: Theme.controlRadius - 2
                    color: index === popup.current ? Theme.accentSoft : hover.hovered ? Theme.controlHover : Theme.control
                    border.width: index === popup.current ? 2 : 1
                    border.color: index === popup.current ? Theme.accent : Theme.line

                    Accessible.role: Accessible.ListItem
                    Accessible.name: content ? content.text : ""
                    Accessible.description: content && content.isCurrent ? qsTr("the present value") : ""
                    Accessible.selected: index === popup.current
                    Accessible.onPressAction: popup.go(index)

                    HoverHandler {
                        id: hover
                    }
                    Waveform {
                        x: 4
                        y: 4
                        width: parent.width - 8
                        height: value.y - 6
                        peaks: tile.content ? tile.content.peaks : []
                        color: tile.playing ? Theme.accent : Theme.secondary
                    }
                    MouseArea {
                        width: parent.width
                        height: value.y
                        onClicked: popup.go(tile.index)
                    }
                    Rectangle {
                        id: value
                        objectName: "takeSweep-" + tile.index
                        x: 2
                        y: parent.height - height - 2
                        width: parent.width - 4
                        height: 20
                        radius: Theme.controlRadius - 4
                        color: take.containsMouse ? Theme.accent : "transparent"

                        Text {
                            anchors.centerIn: parent
                            width: parent.width - 4
                            horizontalAlignment: Text.AlignHCenter
                            text: tile.content ? tile.content.text : ""
                            color: take.containsMouse ? Theme.accentInk : tile.content && tile.content.isCurrent ? Theme.accent : Theme.text
                            font.family: Theme.figures
                            font.pixelSize: 11
                            elide: Text.ElideMiddle
                            textFormat: Text.PlainText
                        }
                        MouseArea {
                            id: take
                            anchors.fill: parent
                            hoverEnabled: true
                            onClicked: popup.sweep.take(tile.index)
                        }
                    }
                }
            }
        }
    }
}
