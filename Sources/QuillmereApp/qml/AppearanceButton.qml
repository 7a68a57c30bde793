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
        const menu = loader.made() as AppearanceMenu;
        menu.popup(button, 0, -menu.implicitHeight - Theme.tight);
    }

    Later {
        id: loader
        view: "AppearanceMenu.qml"
        needs: ({
                "appearance": button.appearance
            })
    }
}
