import QtQuick
import QtQuick.Dialogs
import QuillmereApp

// The platform's folder chooser, for the corpus and for the output.
Item {
    id: choosers

    required property AppModel model
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
        title: choosers.model.corpusChooserMessage
        acceptLabel: choosers.model.chooserButton
        onAccepted: choosers.model.setCorpus(selectedFolder)
    }
    FolderDialog {
        id: output
        title: choosers.model.outputChooserMessage
        acceptLabel: choosers.model.chooserButton
        onAccepted: choosers.model.setOutputFolder(selectedFolder)
    }
}
