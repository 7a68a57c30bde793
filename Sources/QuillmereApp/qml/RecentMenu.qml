pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// The folders that were learned from before.
Menu {
    id: menu

    required property CorpusController corpus

    signal modelsRequested

    MenuSeparator {
    }
    MenuItem {
        text: qsTr("Stored Models…")
        onTriggered: menu.modelsRequested()
    }
    MenuItem {
        text: qsTr("Forget These Folders")
        onTriggered: menu.corpus.forgetRecent()
    }

    Instantiator {
        model: menu.corpus.recent
        onObjectAdded: (index, object) => menu.insertItem(index, object as MenuItem)
        onObjectRemoved: (index, object) => menu.removeItem(object as MenuItem)

        MenuItem {
            required property var modelData

            text: modelData.path
            onTriggered: menu.corpus.choose(modelData.url)
        }
    }
}
