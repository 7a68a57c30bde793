pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// The folders that were learnt from before.
Item {
    id: recent

    required property AppModel app

    function open(below: Item) {
        while (menu.count > 2)
            menu.removeItem(menu.itemAt(0));
        const corpora = app.recentCorpora;
        for (let i = 0; i < corpora.length; ++i) {
            const entry = folder.createObject(menu.contentItem, {
                    "path": corpora[i].path,
                    "url": corpora[i].url
                });
            menu.insertItem(i, entry as MenuEntry);
        }
        menu.popup(below, 0, below.height + Theme.tight);
    }

    Component {
        id: folder

        FolderEntry {
        }
    }
    PopupMenu {
        id: menu

        MenuLine {
        }
        MenuEntry {
            text: "Forget These Folders"
            onTriggered: recent.app.forgetRecentCorpora()
        }
    }

    component FolderEntry: MenuEntry {
        required property string path
        required property url url

        text: path
        onTriggered: recent.app.setCorpus(url)
    }
}
