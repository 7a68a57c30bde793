import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// The window: the content, the keyboard shortcuts that work everywhere in it, and the folder choosers.
T.ApplicationWindow {
    id: root

    required property AppModel model
    // Shortcuts rest while a dialog asks something.
    readonly property bool listening: !choosers.active || !(choosers.item as FolderChoosers).open

    width: 1180
    height: 820
    minimumWidth: 480
    minimumHeight: 360
    visible: true
    title: model.hasCorpus ? model.corpusName + " – Quillmere" : "Quillmere"
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
        model.refresh()

    ContentView {
        id: content
        anchors.fill: parent
        app: root.model
    }

    Shortcut {
        sequence: "Ctrl+O"
        onActivated: root.model.chooseCorpus()
    }
    Shortcut {
        sequence: "Ctrl+T"
        onActivated: root.model.train()
    }
    Shortcut {
        sequence: "Ctrl+G"
        onActivated: root.model.generate()
    }
    Shortcut {
        sequence: "Ctrl+P"
        onActivated: root.model.audition()
    }
    Shortcut {
        sequences: ["Ctrl+Z"]
        onActivated: root.model.undo()
    }
    Shortcut {
        sequences: ["Ctrl+Shift+Z", "Ctrl+Y"]
        onActivated: root.model.redo()
    }
    Shortcut {
        sequences: ["Ctrl+Q", "Ctrl+W"]
        onActivated: root.close()
    }

    Connections {
        target: root.model

        function onCorpusChooserRequested(startFolder: url) {
            choosers.active = true;
            (choosers.item as FolderChoosers).chooseCorpus(startFolder);
        }
        function onOutputChooserRequested(startFolder: url) {
            choosers.active = true;
            (choosers.item as FolderChoosers).chooseOutput(startFolder);
        }
    }
    // Dialogs take their time to load: not before they are asked for.
    Loader {
        id: choosers
        active: false
        sourceComponent: FolderChoosers {
            model: root.model
        }
    }
}
