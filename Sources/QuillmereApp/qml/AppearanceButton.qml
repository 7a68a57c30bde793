pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// Light, dark, or as the desktop has it.
IconButton {
    id: button

    required property Appearance appearance

    objectName: "appearance"
    iconName: appearance.mode === Appearance.Light ? "sun.max" : appearance.mode === Appearance.Dark ? "moon" : "circle.lefthalf.filled"
    text: "Appearance"
    Accessible.role: Accessible.ButtonMenu
    onClicked: {
        menu.active = true;
        (menu.item as Holder).menu.popup(button, 0, -(menu.item as Holder).menu.implicitHeight - Theme.tight);
    }

    Loader {
        id: menu
        active: false
        sourceComponent: Holder {
        }
    }

    component Holder: Item {
        readonly property PopupMenu menu: choices

        PopupMenu {
            id: choices

            Choice {
                text: "As the Desktop"
                mode: Appearance.System
            }
            Choice {
                text: "Light"
                mode: Appearance.Light
            }
            Choice {
                text: "Dark"
                mode: Appearance.Dark
            }
        }
    }
    component Choice: MenuEntry {
        required property int mode

        checkable: true
        checked: button.appearance.mode === mode
        onTriggered: button.appearance.mode = mode
    }
}
