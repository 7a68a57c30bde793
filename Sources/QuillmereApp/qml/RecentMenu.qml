pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// The folders that were learned from before.
PopupMenu {
    id: menu

    required property CorpusController corpus

    MenuLine {
    }
    MenuEntry {
        text: "Forget These Folders"
        onTriggered: menu.corpus.forgetRecent()
    }

    Instantiator {
        model: menu.corpus.recent
        onObjectAdded: (index, object) => menu.insertItem(index, object as MenuEntry)
        onObjectRemoved: (index, object) => menu.removeItem(object as MenuEntry)

        MenuEntry {
            required property var modelData

            text: modelData.path
            onTriggered: menu.corpus.choose(modelData.url)
        }
    }
}
