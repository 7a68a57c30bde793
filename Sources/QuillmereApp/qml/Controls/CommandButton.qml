import QtQuick
import QuillmereApp

// A button that begins or ends something. A click that comes just after its state has changed was meant for
// what it did before: it does nothing.
ActionButton {
    id: command

    // What it does at present, and whether it can
    property string phase

    signal commanded

    onPhaseChanged: if (Theme.calm > 0)
        calm.restart()
    onClicked: if (!calm.running)
        commanded()

    Timer {
        id: calm
        interval: Theme.calm
    }
}
