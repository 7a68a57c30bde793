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
        (loader.made() as SortMenu).popup(button, 0, height + Theme.tight);
    }

    Later {
        id: loader
        view: "SortMenu.qml"
        needs: ({
                "app": button.app
            })
    }
}
