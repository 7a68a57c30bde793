pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// The folders that were learnt from before.
PopupMenu {
    id: menu

    required property AppModel app

    MenuLine {
    }
    MenuEntry {
        text: "Forget These Folders"
        onTriggered: menu.app.forgetRecentCorpora()
    }

    Instantiator {
        model: menu.app.recentCorpora
        onObjectAdded: (index, object) => menu.insertItem(index, object as MenuEntry)
        onObjectRemoved: (index, object) => menu.removeItem(object as MenuEntry)

        MenuEntry {
            required property var modelData

            text: modelData.path
            onTriggered: menu.app.setCorpus(modelData.url)
        }
    }
}
