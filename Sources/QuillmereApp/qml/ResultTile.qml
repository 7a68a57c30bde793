import QtQuick
import QuillmereApp

// One written file: its outline, name and duration, and a button to play it. It can be dragged into another
// program as a file.
Rectangle {
    id: tile

    required property AppModel app
    // The roles of ResultsModel
    required property int index
    required property url url
    required property string fileName
    required property string durationText
    required property bool exists
    required property bool isPlaying
    required property list<real> peaks
    required property bool isFavourite
    required property string label
    required property string novelty
    required property string noveltyText
    required property bool isSelected

    property bool selected: false
    property bool focused: false

    // The pointer is on it, with these keys held.
    signal selectRequested(int modifiers)
    // It was no drag.
    signal clicked(int modifiers)

    // The pointer wants to take the file away, holding the tile at place; it does not any more.
    signal dragRequested(point place)
    signal dragEnded

    objectName: "tile-" + index
    width: 184
    radius: Theme.controlRadius
    color: selected || isSelected ? Theme.accentSoft : hover.hovered ? Theme.controlHover : Theme.control
    border.width: focused ? 2 : 1
    border.color: focused || selected || isSelected ? Theme.accent : Theme.line

    Accessible.role: Accessible.ListItem
    Accessible.name: fileName
    Accessible.description: exists ? [durationText, noveltyText, isFavourite ? qsTr("favourite") : "", isPlaying ? qsTr("playing") : ""].filter(part => part.length > 0).join(qsTr(", ")) : qsTr("This file is gone")
    Accessible.selected: selected || isSelected
    Accessible.onPressAction: app.playback.togglePlay(url)

    HoverHandler {
        id: hover
    }
    MouseArea {
        anchors.fill: parent
        onPressed: mouse => tile.selectRequested(mouse.modifiers)
        onClicked: mouse => tile.clicked(mouse.modifiers)
        onDoubleClicked: if (tile.exists && !tile.app.playback.playsAtOnce)
            tile.app.playback.togglePlay(tile.url)
    }
    DragHandler {
        target: null
        enabled: tile.exists
        onActiveChanged: {
            if (!active) {
                tile.dragEnded();
                return;
            }
            tile.selectRequested(Qt.MetaModifier);
            tile.dragRequested(centroid.pressPosition);
        }
    }
    Waveform {
        x: toggle.x + toggle.width + Theme.tight
        y: Theme.inner
        width: tile.width - x - 10
        height: tile.height - name.height - 2 * Theme.inner - 4
        peaks: tile.peaks
        color: !tile.exists ? Theme.disabled : tile.isPlaying || tile.selected ? Theme.accent : Theme.secondary

        Playhead {
            playing: tile.isPlaying
            seconds: tile.app.playback.playingSeconds
        }
    }
    IconButton {
        id: toggle
        objectName: "play-" + tile.index
        x: 4
        y: (tile.height - name.height - height) / 2 - 2
        activeFocusOnTab: false
        focusPolicy: Qt.NoFocus
        enabled: tile.exists
        iconName: tile.isPlaying ? "stop.fill" : "play.circle"
        iconSize: tile.isPlaying ? 14 : 20
        ink: tile.isPlaying ? Theme.accent : Theme.text
        text: tile.isPlaying ? qsTr("Stop") : qsTr("Play")
        Accessible.name: (tile.isPlaying ? qsTr("Stop %1") : qsTr("Play %1")).arg(tile.fileName)
        onClicked: {
            tile.app.generation.results.clearSelection();
            tile.selectRequested(Qt.NoModifier);
            tile.app.playback.togglePlay(tile.url);
        }
    }
    Icon {
        objectName: "star-" + tile.index
        x: tile.width - width - 8
        y: 7
        width: 12
        height: 12
        visible: tile.isFavourite
        name: "star.fill"
        color: Theme.accent
    }
    Icon {
        x: 9
        y: 7
        width: 12
        height: 12
        visible: tile.isSelected
        name: "checkmark"
        color: Theme.accent
    }
    Label {
        id: name
        x: 10
        y: tile.height - height - 7
        width: (newness.visible ? newness.x : duration.x) - x - Theme.inner
        text: tile.label
        color: tile.exists ? Theme.text : Theme.disabled
        font.pixelSize: 11
        font.strikeout: !tile.exists
        wrapMode: Text.NoWrap
        elide: Text.ElideMiddle
    }
    Label {
        id: duration
        x: tile.width - width - 10
        y: name.y
        text: tile.exists ? tile.durationText : qsTr("gone")
        color: tile.exists ? Theme.secondary : Theme.disabled
        font.family: Theme.figures
        font.pixelSize: 11
        wrapMode: Text.NoWrap
    }
    Label {
        id: newness
        anchors.right: duration.left
        anchors.rightMargin: Theme.inner
        y: name.y
        visible: tile.exists && tile.novelty.length > 0
        text: tile.noveltyText
        color: tile.novelty === "copy" ? Theme.error : Theme.secondary
        font.pixelSize: 11
        wrapMode: Text.NoWrap
        Accessible.ignored: true
    }
    ToolTip {
        text: tile.fileName
        shown: hover.hovered && (name.truncated || tile.fileName !== tile.label + ".wav")
    }
}
