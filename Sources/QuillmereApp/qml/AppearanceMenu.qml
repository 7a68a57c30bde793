import QuillmereApp

// Light, dark, or as the desktop has it.
Menu {
    id: menu

    required property Appearance appearance

    MenuItem {
        text: qsTr("As the Desktop")
        checkable: true
        checked: menu.appearance.mode === Appearance.System
        onTriggered: menu.appearance.mode = Appearance.System
    }
    MenuItem {
        text: qsTr("Light")
        checkable: true
        checked: menu.appearance.mode === Appearance.Light
        onTriggered: menu.appearance.mode = Appearance.Light
    }
    MenuItem {
        text: qsTr("Dark")
        checkable: true
        checked: menu.appearance.mode === Appearance.Dark
        onTriggered: menu.appearance.mode = Appearance.Dark
    }
}
