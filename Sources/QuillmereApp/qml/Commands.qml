import QtQuick
import QuillmereApp

// The keyboard shortcuts that work everywhere in the window. An item, so that they rest behind an open popup.
Item {
    id: commands

    required property AppModel app
    // They rest also while a chooser of the desktop is open, of which nothing is seen here.
    property bool listening: true
    // Nothing changes that nobody sees.
    property bool slidersShown: true

    signal playRequested
    signal undoRequested
    signal inspectorRequested
    signal resultsRequested
    signal closeRequested
    signal filesRequested
    signal reportRequested
    signal modelsRequested
    signal mapRequested
    signal runsRequested
    signal sweepRequested

    Shortcut {
        enabled: commands.listening
        sequence: "Ctrl+O"
        onActivated: commands.app.corpus.openChooser()
    }
    Shortcut {
        enabled: commands.listening
        sequence: "Ctrl+T"
        onActivated: commands.app.model.train()
    }
    Shortcut {
        enabled: commands.listening
        sequence: "Ctrl+G"
        onActivated: commands.app.generation.generate()
    }
    Shortcut {
        enabled: commands.listening
        sequence: "Ctrl+P"
        onActivated: commands.app.generation.audition()
    }
    Shortcut {
        enabled: commands.listening
        sequence: "Ctrl+N"
        onActivated: commands.app.candidates.start()
    }
    Shortcut {
        enabled: commands.listening
        sequence: "Ctrl+D"
        onActivated: commands.app.compareDetail()
    }
    Shortcut {
        enabled: commands.listening
        sequence: "Ctrl+R"
        onActivated: commands.resultsRequested()
    }
    Shortcut {
        enabled: commands.listening
        sequence: "Ctrl+L"
        onActivated: commands.filesRequested()
    }
    Shortcut {
        enabled: commands.listening
        sequence: "Ctrl+I"
        onActivated: commands.reportRequested()
    }
    Shortcut {
        enabled: commands.listening
        sequence: "Ctrl+M"
        onActivated: commands.modelsRequested()
    }
    Shortcut {
        enabled: commands.listening
        sequence: "Ctrl+H"
        onActivated: commands.runsRequested()
    }
    Shortcut {
        enabled: commands.listening
        sequences: ["Ctrl+Z"]
        onActivated: commands.undoRequested()
    }
    Shortcut {
        enabled: commands.listening
        sequences: ["Ctrl+Shift+Z", "Ctrl+Y"]
        onActivated: commands.app.character.redo()
    }
    Shortcut {
        enabled: commands.listening
        sequences: ["Ctrl+Q", "Ctrl+W"]
        onActivated: commands.closeRequested()
    }
    // Whatever has the keyboard, unless it is a text field: these keep the letters and the space for themselves.
    Shortcut {
        enabled: commands.listening
        sequence: "I"
        autoRepeat: false
        onActivated: commands.inspectorRequested()
    }
    Shortcut {
        enabled: commands.listening
        sequence: "M"
        autoRepeat: false
        onActivated: commands.mapRequested()
    }
    Shortcut {
        enabled: commands.listening && commands.slidersShown
        sequence: "S"
        autoRepeat: false
        onActivated: commands.app.character.keepsSeed = !commands.app.character.keepsSeed
    }
    Shortcut {
        enabled: commands.listening
        sequence: "R"
        autoRepeat: false
        onActivated: commands.sweepRequested()
    }
    Shortcut {
        enabled: commands.listening
        sequence: "Space"
        autoRepeat: false
        onActivated: commands.playRequested()
    }
}
