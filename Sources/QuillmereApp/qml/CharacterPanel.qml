import QtQuick
import QuillmereApp

// How the variations depart from the corpus: detail, presets, the twenty parameters in their groups, and the
// seed.
Card {
    id: panel

    required property CharacterController character
    required property OutputController output
    // Height of a parameter row: more where there is room for it.
    property real rowHeight: 28
    // Without a corpus nothing here is the next thing to do.
    property bool emphasised: true
    readonly property bool twoColumns: bodyWidth >= 640
    // There is a map to switch to.
    property bool hasMap: false

    signal mapRequested

    function pointedParameter(): string {
        return groups.pointedParameter();
    }

    // The height of the rows when the panel is to be that high.
    function rowHeightFor(height: real): real {
        const around = groups.y + groups.parent.y + padding;
        return groups.rowHeightFor(height - around);
    }

    // The reverse.
    function heightFor(rowHeight: real): real {
        return groups.y + groups.parent.y + padding + groups.heightFor(rowHeight);
    }

    title: qsTr("Character")
    padding: 24
    trailing: [
        Label {
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, detail.x - Theme.inner)
            visible: panel.character.isComparing || panel.character.presetEdited
            text: panel.character.isComparing ? qsTr("Before") : qsTr("%1, edited").arg(panel.character.presetName)
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
            wrapMode: Text.NoWrap
            elide: Text.ElideMiddle
        },
        DetailControl {
            id: detail
            anchors.right: buttons.left
            anchors.rightMargin: Theme.between
            anchors.verticalCenter: parent.verticalCenter
            output: panel.output
            emphasised: panel.emphasised
        },
        Row {
            id: buttons
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.tight

            IconButton {
                objectName: "showMap"
                visible: panel.hasMap
                iconName: "circle.grid.cross"
                text: qsTr("Map")
                tip: qsTr("Map of the samples (M)")
                onClicked: panel.mapRequested()
            }
            IconButton {
                objectName: "undo"
                iconName: "arrow.uturn.backward"
                text: qsTr("Undo")
                tip: qsTr("Undo (Ctrl+Z)")
                enabled: panel.character.canUndo
                onClicked: panel.character.undo()
            }
            IconButton {
                objectName: "redo"
                iconName: "arrow.uturn.forward"
                text: qsTr("Redo")
                tip: qsTr("Redo (Ctrl+Shift+Z)")
                enabled: panel.character.canRedo
                onClicked: panel.character.redo()
            }
        }
    ]

    PresetChips {
        width: panel.bodyWidth
        character: panel.character
        emphasised: panel.emphasised
        onSaveRequested: (saveDialog.made() as SavePresetDialog).open()
    }
    ParameterGroups {
        id: groups
        width: panel.bodyWidth
        character: panel.character
        twoColumns: panel.twoColumns
        rowHeight: panel.rowHeight
        emphasised: panel.emphasised
    }
    Later {
        id: saveDialog
        visible: false
        view: "SavePresetDialog.qml"
        needs: ({
                "character": panel.character
            })
    }
}
