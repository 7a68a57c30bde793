import QtQuick
import QtQuick.Dialogs
import QtQuick.Templates as T
import QuillmereApp

// The folder choosers for the corpus and for the output: those of the platform, or the program's own where it
// has none.
Item {
    id: choosers

    required property AppModel app
    readonly property bool open: corpus.visible || output.visible || own.visible
    // Takes what the own chooser gives.
    property var take: null

    function chooseCorpus(startFolder: url) {
        show(corpus, startFolder, folder => app.corpus.choose(folder));
    }
    function chooseOutput(startFolder: url) {
        show(output, startFolder, folder => app.output.setFolder(folder));
    }
    function show(dialog: FolderDialog, startFolder: url, taker: var) {
        if (String(startFolder).length > 0)
            dialog.currentFolder = startFolder;
        const inWindow = T.Overlay.overlay.children.length;
        dialog.open();
        // Where the platform has none, the toolkit draws a poor one into the window.
        if (T.Overlay.overlay.children.length === inWindow)
            return;
        dialog.close();
        take = taker;
        own.show(dialog.title, startFolder);
    }

    FolderDialog {
        id: corpus
        title: choosers.app.corpus.chooserMessage
        acceptLabel: "Use Folder"
        onAccepted: choosers.app.corpus.choose(selectedFolder)
    }
    FolderDialog {
        id: output
        title: choosers.app.output.chooserMessage
        acceptLabel: "Use Folder"
        onAccepted: choosers.app.output.setFolder(selectedFolder)
    }
    FolderChooser {
        id: own
        browser: choosers.app.browser
        onChosen: folder => choosers.take(folder)
    }
}
