import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// The window: the content, the keyboard shortcuts that work everywhere in it, and the folder choosers.
T.ApplicationWindow {
    id: root

    required property AppModel app
    // Shortcuts rest while a dialog asks something.
    readonly property bool listening: !choosers.active || !(choosers.item as FolderChoosers).open

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
    }

    Shortcut {
        sequence: "Ctrl+O"
        onActivated: root.app.corpus.openChooser()
    }
    Shortcut {
        sequence: "Ctrl+T"
        onActivated: root.app.model.train()
    }
    Shortcut {
        sequence: "Ctrl+G"
        onActivated: root.app.generation.generate()
    }
    Shortcut {
        sequence: "Ctrl+P"
        onActivated: root.app.generation.audition()
    }
    Shortcut {
        sequences: ["Ctrl+Z"]
        onActivated: root.app.character.undo()
    }
    Shortcut {
        sequences: ["Ctrl+Shift+Z", "Ctrl+Y"]
        onActivated: root.app.character.redo()
    }
    Shortcut {
        sequences: ["Ctrl+Q", "Ctrl+W"]
        onActivated: root.close()
    }

    Connections {
        target: root.app.corpus

        function onChooserRequested(startFolder: url) {
            choosers.active = true;
            (choosers.item as FolderChoosers).chooseCorpus(startFolder);
        }
    }
    Connections {
        target: root.app.output

        function onChooserRequested(startFolder: url) {
            choosers.active = true;
            (choosers.item as FolderChoosers).chooseOutput(startFolder);
        }
    }
    // Dialogs take their time to load: not before they are asked for.
    Loader {
        id: choosers
        active: false
        sourceComponent: FolderChoosers {
            app: root.app
        }
    }
}
