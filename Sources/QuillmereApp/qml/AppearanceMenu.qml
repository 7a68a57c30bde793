import QuillmereApp

// Light, dark, or as the desktop has it.
PopupMenu {
    id: menu

    required property Appearance appearance

    MenuEntry {
        text: "As the Desktop"
        checkable: true
        checked: menu.appearance.mode === Appearance.System
        onTriggered: menu.appearance.mode = Appearance.System
    }
    MenuEntry {
        text: "Light"
        checkable: true
        checked: menu.appearance.mode === Appearance.Light
        onTriggered: menu.appearance.mode = Appearance.Light
    }
    MenuEntry {
        text: "Dark"
        checkable: true
        checked: menu.appearance.mode === Appearance.Dark
        onTriggered: menu.appearance.mode = Appearance.Dark
    }
}
