import QtQuick
import QtQuick.Dialogs
import QuillmereApp

// The platform's folder chooser, for the corpus and for the output.
Item {
    id: choosers

    required property AppModel app
    readonly property bool open: corpus.visible || output.visible

    function chooseCorpus(startFolder: url) {
        if (String(startFolder).length > 0)
            corpus.currentFolder = startFolder;
        corpus.open();
    }
    function chooseOutput(startFolder: url) {
        if (String(startFolder).length > 0)
            output.currentFolder = startFolder;
        output.open();
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
}
