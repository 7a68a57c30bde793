import QuillmereApp

// The order of the results.
Menu {
    id: menu

    required property AppModel app
    readonly property int order: app.generation.results.order

    MenuItem {
        text: qsTr("As made")
        checkable: true
        checked: menu.order === ResultsModel.AsMade
        onTriggered: menu.app.sortResults(ResultsModel.AsMade)
    }
    MenuItem {
        text: qsTr("By name")
        checkable: true
        checked: menu.order === ResultsModel.ByName
        onTriggered: menu.app.sortResults(ResultsModel.ByName)
    }
    MenuItem {
        text: qsTr("Short to long")
        checkable: true
        checked: menu.order === ResultsModel.ByLength
        onTriggered: menu.app.sortResults(ResultsModel.ByLength)
    }
    MenuItem {
        text: qsTr("Dark to bright")
        checkable: true
        checked: menu.order === ResultsModel.ByBrightness
        onTriggered: menu.app.sortResults(ResultsModel.ByBrightness)
    }
    MenuItem {
        text: qsTr("Close to new")
        checkable: true
        checked: menu.order === ResultsModel.ByNovelty
        onTriggered: menu.app.sortResults(ResultsModel.ByNovelty)
    }
}
