import QtQuick
import QuillmereApp

// One candidate: its outline, number and duration, and buttons to play, keep and discard it. The latter two
// come with the pointer or the keyboard.
Rectangle {
    id: tile

    // The roles of CandidatesModel
    required property int index
    required property int number
    required property string durationText
    required property list<real> peaks
    required property bool isPlaying
    required property bool isKept
    required property string fileName
    required property string novelty
    required property string noveltyText

    property real playingSeconds: 0  // how long what plays lasts
    property bool selected: false
    property bool focused: false
    readonly property string spokenName: qsTr("Candidate %1").arg(number)

    signal selectRequested
    signal playRequested
    signal keepRequested
    signal discardRequested

    objectName: "candidate-" + index
    radius: Theme.controlRadius
    color: selected ? Theme.accentSoft : hover.hovered ? Theme.controlHover : Theme.control
    border.width: focused ? 2 : 1
    border.color: focused || selected ? Theme.accent : Theme.line

    Accessible.role: Accessible.ListItem
    Accessible.name: spokenName
    Accessible.description: [durationText, noveltyText, isKept ? qsTr("kept as %1").arg(fileName) : "", isPlaying ? qsTr("playing") : ""].filter(part => part.length > 0).join(qsTr(", "))
    Accessible.selected: selected
    Accessible.onPressAction: playRequested()

    HoverHandler {
        id: hover
    }
    MouseArea {
        anchors.fill: parent
        onPressed: tile.selectRequested()
        onClicked: tile.playRequested()
    }
    IconButton {
        id: toggle
        objectName: "playCandidate-" + tile.index
        x: 4
        y: outline.y + (outline.height - height) / 2
        activeFocusOnTab: false
        focusPolicy: Qt.NoFocus
        iconName: tile.isPlaying ? "stop.fill" : "play.circle"
        iconSize: tile.isPlaying ? 14 : 20
        ink: tile.isPlaying ? Theme.accent : Theme.text
        text: tile.isPlaying ? qsTr("Stop") : qsTr("Play")
        Accessible.name: (tile.isPlaying ? qsTr("Stop %1") : qsTr("Play %1")).arg(tile.spokenName)
        onClicked: {
            tile.selectRequested();
            tile.playRequested();
        }
    }
    Waveform {
        id: outline
        x: toggle.x + toggle.width + Theme.tight
        y: Theme.inner
        width: tile.width - x - 10
        height: foot.y - y - 2
        peaks: tile.peaks
        color: tile.isPlaying || tile.selected ? Theme.accent : Theme.secondary

        Playhead {
            playing: tile.isPlaying
            seconds: tile.playingSeconds
        }
    }
    Item {
        id: foot

        readonly property real middle: height / 2

        x: 10
        y: tile.height - height - 3
        width: tile.width - x - 5
        height: 24

        Label {
            id: figure
            anchors.verticalCenter: parent.verticalCenter
            text: tile.number
            font.family: Theme.figures
            font.pixelSize: 11
            font.weight: Font.DemiBold
            wrapMode: Text.NoWrap
            Accessible.ignored: true
        }
        Label {
            id: duration
            anchors.left: figure.right
            anchors.leftMargin: Theme.inner
            anchors.verticalCenter: parent.verticalCenter
            text: tile.durationText
            color: Theme.secondary
            font.family: Theme.figures
            font.pixelSize: 11
            wrapMode: Text.NoWrap
            Accessible.ignored: true
        }
        Label {
            anchors.left: duration.right
            anchors.leftMargin: Theme.inner
            anchors.verticalCenter: parent.verticalCenter
            visible: text.length > 0
            text: tile.noveltyText
            color: tile.novelty === "copy" ? Theme.error : Theme.secondary
            font.pixelSize: 11
            wrapMode: Text.NoWrap
            Accessible.ignored: true
        }
        Row {
            anchors.right: parent.right
            anchors.rightMargin: 5
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.tight
            visible: tile.isKept

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                width: 12
                height: 12
                name: "checkmark"
                color: Theme.good
            }
            Label {
                text: qsTr("kept")
                color: Theme.good
                font.pixelSize: 11
                wrapMode: Text.NoWrap
            }
        }
        Row {
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            visible: !tile.isKept && (tile.selected || hover.hovered)

            TileButton {
                objectName: "keep-" + tile.index
                iconName: "checkmark"
                text: qsTr("Keep")
                tip: qsTr("Keep (K): write the file")
                Accessible.name: qsTr("Keep %1").arg(tile.spokenName)
                onClicked: {
                    tile.selectRequested();
                    tile.keepRequested();
                }
            }
            TileButton {
                objectName: "discard-" + tile.index
                iconName: "xmark"
                text: qsTr("Discard")
                tip: qsTr("Discard (X); Ctrl+Z brings it back")
                Accessible.name: qsTr("Discard %1").arg(tile.spokenName)
                onClicked: {
                    tile.selectRequested();
                    tile.discardRequested();
                }
            }
        }
    }
    ToolTip {
        text: tile.fileName
        shown: hover.hovered && tile.isKept
    }

    component TileButton: IconButton {
        implicitWidth: 24
        implicitHeight: 24
        iconSize: 14
        ink: Theme.text
        activeFocusOnTab: false
        focusPolicy: Qt.NoFocus
    }
}
