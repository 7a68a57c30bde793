pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// A line about one sound or two that are compared: buttons that play them, what they are called, and a value
// at the end. Space plays them in turn.
Rectangle {
    id: row

    required property AppModel app
    property var sounds: []  // {name, url}, at least one
    property int buttonsFrom: 0  // the ones before it have their buttons elsewhere
    property string title
    property string detail
    property string value
    property color valueColor: Theme.secondary
    property int next: 0  // which of them Space plays
    property bool selected: activeFocus

    function playNext() {
        const sound = sounds[next];
        if (sounds.length === 1) {
            app.playback.togglePlay(sound.url);
            return;
        }
        next = (next + 1) % sounds.length;
        app.playback.togglePlay(sound.url);
    }

    implicitHeight: Math.max(36, texts.height + 2 * Theme.tight)
    radius: Theme.controlRadius - 2
    color: hover.hovered || selected ? Theme.controlHover : "transparent"

    Accessible.role: Accessible.ListItem
    Accessible.name: title
    Accessible.description: [value, detail].filter(text => text.length > 0).join(", ")
    Accessible.onPressAction: playNext()

    Keys.onSpacePressed: playNext()
    Keys.onReturnPressed: playNext()
    Keys.onEnterPressed: playNext()

    HoverHandler {
        id: hover
    }
    TapHandler {
        onTapped: row.forceActiveFocus(Qt.MouseFocusReason)
        onDoubleTapped: row.playNext()
    }
    Row {
        id: buttons
        x: Theme.tight
        anchors.verticalCenter: parent.verticalCenter

        Repeater {
            model: row.sounds.slice(row.buttonsFrom)

            IconButton {
                required property var modelData
                readonly property bool plays: String(row.app.playback.playingURL) === String(modelData.url)

                objectName: "play " + modelData.name
                focusPolicy: Qt.NoFocus
                activeFocusOnTab: false
                iconName: plays ? "stop.fill" : "play.circle"
                iconSize: plays ? 14 : 20
                ink: plays ? Theme.accent : Theme.text
                text: (plays ? qsTr("Stop %1") : qsTr("Play %1")).arg(modelData.name)
                onClicked: row.app.playback.togglePlay(modelData.url)
            }
        }
    }
    Column {
        id: texts
        x: buttons.x + buttons.width + Theme.inner
        width: valueLabel.x - x - Theme.inner
        anchors.verticalCenter: parent.verticalCenter

        Label {
            width: parent.width
            text: row.title
            wrapMode: Text.NoWrap
            elide: Text.ElideMiddle
            Accessible.ignored: true
        }
        Label {
            width: parent.width
            visible: text.length > 0
            text: row.detail
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
            Accessible.ignored: true
        }
    }
    Label {
        id: valueLabel
        anchors.right: parent.right
        anchors.rightMargin: Theme.inner
        anchors.verticalCenter: parent.verticalCenter
        text: row.value
        color: row.valueColor
        font.family: Theme.figures
        font.pixelSize: Theme.smallSize
        wrapMode: Text.NoWrap
        Accessible.ignored: true
    }
    FocusRing {
        objectName: "ring"
        shown: row.activeFocus
        around: row.radius
        gap: 0
    }
}
