import QtQuick
import QtQuick.Dialogs
import QtQuick.Templates as T
import QuillmereApp

// The folder choosers for the corpus and for the output: those of the platform, or the program's own where it
// has none.
Item {
    id: choosers

    required property AppModel app
    readonly property bool open: (platform && platform.visible) || own.visible
    // The platform's, while it is shown.
    property FolderDialog platform: null
    // Takes what is chosen.
    property var take: null

    function chooseCorpus(startFolder: url) {
        show(app.corpus.chooserMessage, startFolder, folder => app.corpus.choose(folder));
    }
    function chooseOutput(startFolder: url) {
        show(app.output.chooserMessage, startFolder, folder => app.output.setFolder(folder));
    }
    // Into the window or as one of its own.
    function drawnByToolkit(): int {
        return T.Overlay.overlay.children.length + DrawnWindows.count();
    }
    function show(title: string, startFolder: url, taker: var) {
        take = taker;
        const drawn = drawnByToolkit();
        const dialog = platformDialog.createObject(choosers, {
                "title": title
            });
        if (String(startFolder).length > 0)
            dialog.currentFolder = startFolder;
        dialog.open();
        if (drawnByToolkit() === drawn) {
            platform = dialog;
            return;
        }
        // Where the platform has none, the toolkit draws a poor one. It goes with all that belongs to it: closed alone,
        // it would leave its shade behind.
        dialog.close();
        dialog.destroy();
        // Where it had a window of its own, the keyboard comes back.
        Window.window.requestActivate();
        own.show(title, startFolder);
    }

    Component {
        id: platformDialog

        FolderDialog {
            acceptLabel: qsTr("Use Folder")
            onAccepted: choosers.take(selectedFolder)
            onVisibleChanged: if (!visible)
                destroy()
        }
    }
    FolderChooser {
        id: own
        browser: choosers.app.browser
        onChosen: folder => choosers.take(folder)
    }
}
