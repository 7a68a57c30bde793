import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// Opens the context menu of a text field: right button, or the menu key. It is made when it is first asked for.
Item {
    id: context

    required property T.TextField field

    anchors.fill: parent

    function open(x: real, y: real) {
        (loader.made() as FieldMenu).popup(context, x, y);
    }

    TapHandler {
        acceptedButtons: Qt.RightButton
        gesturePolicy: TapHandler.WithinBounds
        onTapped: eventPoint => context.open(eventPoint.position.x, eventPoint.position.y)
    }
    Shortcut {
        sequences: ["Menu", "Shift+F10"]
        enabled: context.field.activeFocus
        onActivated: context.open(0, context.height)
    }
    Later {
        id: loader
        view: Qt.resolvedUrl("FieldMenu.qml")
        needs: ({
                "field": context.field
            })
    }
}
