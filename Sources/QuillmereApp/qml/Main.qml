import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// The window: the content, the keyboard shortcuts that work everywhere in it, and the folder choosers.
T.ApplicationWindow {
    id: root

    required property AppModel app
    // Shortcuts rest while a folder chooser is open.
    readonly property bool listening: !choosers.item || !(choosers.item as FolderChoosers).open

    // The user has agreed to lose what is being learned.
    property bool leaving: false

    width: 1180
    height: 820
    minimumWidth: 480
    minimumHeight: 360
    visible: true
    title: app.corpus.isChosen ? app.corpus.name + " – Quillmere" : "Quillmere"
    color: Theme.window
    font.family: Theme.family
    font.pixelSize: Theme.textSize
    // Of the folder choosers: where the desktop has none of its own they are drawn in these colours, with
    // highlighted words on little of the highlight.
    palette {
        window: Theme.window
        windowText: Theme.text
        base: Theme.field
        alternateBase: Theme.card
        text: Theme.text
        button: Theme.control
        buttonText: Theme.text
        brightText: Theme.text
        highlight: Theme.accent
        highlightedText: Theme.text
        placeholderText: Theme.secondary
        light: Theme.controlHover
        midlight: Theme.controlHover
        mid: Theme.controlLine
        dark: Theme.secondary
        shadow: Theme.line
    }
    onActiveChanged: if (active)
        app.refresh()

    ContentView {
        id: content
        anchors.fill: parent
        app: root.app
        listening: root.listening
    }

    onClosing: close => {
        content.takeWhatIsTyped();
        if (!(app.model.isTraining || app.model.isUnstored) || leaving)
            return;
        close.accepted = false;
        (leave.made() as LeaveDialog).open();
    }

    Commands {
        app: root.app
        listening: root.listening
        slidersShown: content.showsSliders
        onPlayRequested: content.togglePlay()
        onUndoRequested: content.undo()
        onInspectorRequested: content.toggleInspector()
        onResultsRequested: content.goToResults()
        onCloseRequested: root.close()
        onFilesRequested: content.sheets.showFiles()
        onReportRequested: content.sheets.showReport()
        onModelsRequested: content.sheets.showModels()
        onMapRequested: content.switchMap()
        onRunsRequested: content.sheets.showRuns()
        onSweepRequested: content.sweep()
    }
    Connections {
        target: root.app.corpus

        function onChooserRequested(startFolder: url) {
            (choosers.made() as FolderChoosers).chooseCorpus(startFolder);
        }
    }
    Connections {
        target: root.app.output

        function onChooserRequested(startFolder: url) {
            (choosers.made() as FolderChoosers).chooseOutput(startFolder);
        }
    }
    // Dialogs take their time to load: not before they are asked for.
    Later {
        id: choosers
        view: "FolderChoosers.qml"
        needs: ({
                "app": root.app
            })
    }
    Later {
        id: leave
        view: "LeaveDialog.qml"
        needs: ({
                "app": root.app
            })
        onLoaded: (item as LeaveDialog).leaveRequested.connect(() => {
                root.leaving = true;
                root.close();
            })
    }
}
