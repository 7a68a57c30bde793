import QtQuick
import QuillmereApp

// The seed of the next run, and the seed of the last one.
Item {
    id: seed

    required property CharacterController character
    required property real titleWidth
    readonly property string help: qsTr("Enter a number to get identical results every time. Leave empty for a fresh roll.")

    implicitHeight: field.height + (last.visible || ignored.visible ? last.height + Theme.tight : 0)

    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Seed")

    Label {
        id: title
        width: seed.titleWidth
        height: field.height
        verticalAlignment: Text.AlignVCenter
        text: qsTr("Seed")

        HoverHandler {
            id: titleHover
        }
        ToolTip {
            text: seed.help
            shown: titleHover.hovered
        }
    }
    TextField {
        id: field
        objectName: "seed"
        anchors.left: title.right
        anchors.leftMargin: Theme.inner
        anchors.right: parent.right
        text: seed.character.seedText
        placeholderText: seed.character.keepsSeed && seed.character.lastSeed.length > 0 ? qsTr("as the last run") : qsTr("random")
        font.family: Theme.figures
        tip: seed.help
        Accessible.name: qsTr("Seed")
        onTextEdited: seed.character.seedText = text
    }
    Label {
        id: ignored
        anchors.left: field.left
        anchors.top: field.bottom
        anchors.topMargin: Theme.tight
        height: last.height
        verticalAlignment: Text.AlignVCenter
        visible: seed.character.seedText.trim().length > 0 && !seed.character.seedIsFixed
        text: qsTr("Not a whole number: a fresh roll.")
        color: Theme.warning
        font.pixelSize: Theme.smallSize
    }
    Row {
        id: last
        // The longest seeds need more room than the field has.
        x: Math.min(field.x, seed.width - width)
        anchors.top: field.bottom
        anchors.topMargin: Theme.tight
        height: 24
        spacing: Theme.tight
        visible: seed.character.lastSeed.length > 0 && !ignored.visible

        Label {
            height: parent.height
            verticalAlignment: Text.AlignVCenter
            text: qsTr("Last run: %1").arg(seed.character.lastSeed)
            color: Theme.secondary
            font.family: Theme.figures
            font.pixelSize: Theme.smallSize
            wrapMode: Text.NoWrap
        }
        IconButton {
            objectName: "copySeed"
            width: 24
            height: 24
            iconSize: 14
            iconName: "doc.on.doc"
            text: qsTr("Copy the seed of the last run")
            onClicked: seed.character.copySeed()
        }
        IconButton {
            objectName: "reuseSeed"
            width: 24
            height: 24
            iconSize: 14
            iconName: "arrow.uturn.backward"
            text: qsTr("Use the seed of the last run again")
            onClicked: seed.character.reuseSeed()
        }
        IconButton {
            objectName: "keepSeed"
            focusPolicy: Qt.ClickFocus
            activeFocusOnTab: false
            width: 24
            height: 24
            iconSize: 14
            checkable: true
            checked: seed.character.keepsSeed
            iconName: seed.character.keepsSeed ? "lock.fill" : "lock.open"
            ink: seed.character.keepsSeed ? Theme.accent : Theme.secondary
            text: qsTr("Same seed")
            tip: qsTr("The next runs take this seed, too (S), so that what you change is what you hear.")
            onClicked: {
                seed.character.keepsSeed = !seed.character.keepsSeed;
                checked = Qt.binding(() => seed.character.keepsSeed);
            }
        }
    }
}
