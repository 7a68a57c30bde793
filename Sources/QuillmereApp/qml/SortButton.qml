import QtQuick
import QuillmereApp

// Opens the choice of the order of the results.
IconButton {
    id: button

    required property AppModel app

    objectName: "sortResults"
    iconName: "arrow.up.arrow.down"
    ink: app.generation.results.order === ResultsModel.AsMade ? Theme.secondary : Theme.accent
    text: qsTr("Sort the results")
    onClicked: {
        loader.active = true;
        (loader.item as SortMenu).popup(button, 0, height + Theme.tight);
    }

    Loader {
        id: loader
        active: false
        sourceComponent: SortMenu {
            app: button.app
        }
    }
}
