import QtQuick
import QuillmereApp

// What is left to chance: random parameters, and the seed of the runs.
Column {
    id: section

    required property CharacterController character
    required property real titleWidth
    required property real valueWidth
    required property real headingHeight
    property bool emphasised: true
    // How far Randomise goes; asked for by the button, kept nowhere.
    property real amount: 0.5

    Label {
        height: section.headingHeight
        verticalAlignment: Text.AlignVCenter
        text: qsTr("Chance")
        color: Theme.secondary
        font.pixelSize: Theme.smallSize
        font.weight: Font.DemiBold
        wrapMode: Text.NoWrap
        Accessible.role: Accessible.Heading
    }
    Item {
        width: section.width
        height: Theme.controlHeight + Theme.inner

        ActionButton {
            id: button
            objectName: "randomise"
            width: Math.max(implicitWidth, section.titleWidth)
            text: qsTr("Randomise")
            iconName: "dice"
            leftPadding: 8
            tip: qsTr("Moves every parameter that is not locked, by the amount beside")
            onClicked: section.character.randomise(section.amount)
        }
        ThinSlider {
            objectName: "randomiseAmount"
            anchors.left: button.right
            anchors.leftMargin: Theme.inner
            anchors.right: share.left
            anchors.rightMargin: Theme.tight
            anchors.verticalCenter: button.verticalCenter
            label: qsTr("Amount of Randomise")
            valueText: share.text
            modelValue: section.amount
            position: section.amount
            marked: false
            emphasised: section.emphasised
            onMoved: place => section.amount = Math.round(place * 100) / 100
            onStepped: steps => section.amount = Math.max(0, Math.min(1, section.amount + steps / 100))
            onValueRequested: wanted => section.amount = Math.max(0, Math.min(1, wanted))
            onResetRequested: section.amount = 0.5
        }
        Label {
            id: share
            anchors.right: parent.right
            anchors.rightMargin: 24 + 5
            anchors.verticalCenter: button.verticalCenter
            width: section.valueWidth - 5
            text: Math.round(section.amount * 100) + " %"
            horizontalAlignment: Text.AlignRight
            font.family: Theme.figures
            wrapMode: Text.NoWrap
        }
    }
    SeedField {
        width: section.width
        character: section.character
        titleWidth: section.titleWidth
    }
}
