pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// The presets, built-in and the user's own, and a button to save another. The presets are one stop of the
// keyboard: Left and Right go from one to the next, Return applies it, Delete deletes an own one.
Flow {
    id: chips

    required property CharacterController character
    // Whether the chosen one is in the accent colour
    property bool emphasised: true

    // The preset that the keyboard was in last
    property int current: 0

    signal saveRequested

    function goTo(index: int) {
        const chip = presets.itemAt(index) as PresetChip;
        if (chip)
            chip.forceActiveFocus(Qt.TabFocusReason);
    }

    spacing: Theme.tight

    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Presets")

    Repeater {
        id: presets
        model: chips.character.presets
        onItemRemoved: chips.current = Math.max(0, Math.min(chips.current, count - 1))

        PresetChip {
            required property int index

            character: chips.character
            emphasised: chips.emphasised
            isStop: index === chips.current
            onActiveFocusChanged: if (activeFocus)
                chips.current = index
            Keys.onLeftPressed: chips.goTo(index - 1)
            Keys.onRightPressed: chips.goTo(index + 1)
        }
    }
    IconButton {
        objectName: "savePreset"
        width: 28
        height: 28
        iconName: "plus"
        iconSize: 13
        framed: true
        corner: height / 2
        text: qsTr("Save as preset")
        onClicked: chips.saveRequested()
    }
}
