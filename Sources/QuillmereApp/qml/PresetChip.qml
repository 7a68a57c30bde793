import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// One preset. A dot marks values that have been changed since it was applied.
T.RadioButton {
    id: chip

    required property CharacterController character
    property bool emphasised: true
    // Where Tab enters the presets
    property bool isStop: false
    // The roles of PresetModel
    required property string name
    required property string blurb
    required property bool isOwn
    required property bool isUsable
    required property bool isCurrent
    required property bool isEdited

    readonly property color ink: !enabled ? Theme.disabled : Theme.text

    objectName: "preset-" + name
    implicitWidth: Math.ceil(implicitContentWidth) + leftPadding + rightPadding
    implicitHeight: 28
    leftPadding: 10
    rightPadding: isOwn ? 26 : 10
    enabled: isUsable || isOwn
    focusPolicy: Qt.ClickFocus
    activeFocusOnTab: isStop || activeFocus
    hoverEnabled: true
    text: name

    Accessible.name: name
    Accessible.description: isEdited ? qsTr("%1 Edited.").arg(blurb) : blurb
    Accessible.onPressAction: choose()
    Accessible.onToggleAction: choose()

    autoExclusive: false
    checked: isCurrent

    function choose() {
        if (isUsable)
            character.applyPreset(name);
        // A press changes it; the model has the last word.
        checked = Qt.binding(() => isCurrent);
    }

    onClicked: choose()
    Keys.onReturnPressed: choose()
    Keys.onEnterPressed: choose()
    Keys.onDeletePressed: if (isOwn)
        character.deleteOwnPreset(name)

    contentItem: Text {
        verticalAlignment: Text.AlignVCenter
        text: chip.name
        color: chip.isUsable ? chip.ink : Theme.disabled
        font.family: Theme.family
        font.pixelSize: Theme.textSize
        textFormat: Text.PlainText
    }
    background: Rectangle {
        radius: height / 2
        color: chip.isCurrent ? (chip.emphasised ? Theme.accentSoft : Theme.controlPressed) : chip.down ? Theme.controlPressed : chip.hovered ? Theme.controlHover : "transparent"
        border.width: chip.isCurrent ? 1.5 : 1
        border.color: chip.isCurrent && chip.emphasised ? Theme.accent : Theme.controlLine

        Rectangle {
            x: parent.width - width - 1
            y: -1
            width: 9
            height: 9
            radius: 4.5
            color: chip.emphasised ? Theme.accent : Theme.secondary
            border.width: 2
            border.color: Theme.card
            visible: chip.isEdited
        }
    }
    Loader {
        anchors.right: parent.right
        anchors.rightMargin: 4
        anchors.verticalCenter: parent.verticalCenter
        active: chip.isOwn
        sourceComponent: IconButton {
            objectName: "delete-" + chip.name
            width: 20
            height: 20
            iconSize: 10
            focusPolicy: Qt.NoFocus
            activeFocusOnTab: false
            iconName: "xmark"
            text: qsTr("Delete preset %1").arg(chip.name)
            onClicked: chip.character.deleteOwnPreset(chip.name)
        }
    }

    FocusRing {
        shown: chip.visualFocus
        around: parent.height / 2
    }
    ToolTip {
        text: chip.isEdited ? qsTr("%1 (edited)").arg(chip.blurb) : chip.blurb
        shown: chip.hovered
    }
}
