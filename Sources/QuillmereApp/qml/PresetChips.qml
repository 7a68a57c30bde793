pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// The presets, built-in and the user's own, and a button to save another.
Flow {
    id: chips

    required property CharacterController character
    // Whether the chosen one is in the accent colour
    property bool emphasised: true

    signal saveRequested

    spacing: Theme.tight

    Accessible.role: Accessible.Grouping
    Accessible.name: "Presets"

    Repeater {
        model: chips.character.presets

        PresetChip {
            character: chips.character
            emphasised: chips.emphasised
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
        text: "Save as preset"
        onClicked: chips.saveRequested()
    }
}
