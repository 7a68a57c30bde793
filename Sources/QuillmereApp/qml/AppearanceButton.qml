import QtQuick
import QuillmereApp

// Opens the choice of the appearance.
IconButton {
    id: button

    required property Appearance appearance

    objectName: "appearance"
    iconName: appearance.mode === Appearance.Light ? "sun.max" : appearance.mode === Appearance.Dark ? "moon" : "circle.lefthalf.filled"
    text: qsTr("Appearance")
    onClicked: {
        loader.active = true;
        const menu = loader.item as AppearanceMenu;
        menu.popup(button, 0, -menu.implicitHeight - Theme.tight);
    }

    Loader {
        id: loader
        active: false
        sourceComponent: AppearanceMenu {
            appearance: button.appearance
        }
    }
}
