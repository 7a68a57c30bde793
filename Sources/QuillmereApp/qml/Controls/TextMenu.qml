pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// The context menu of a text field: right button, or the menu key. Made when it is first asked for.
Item {
    id: context

    required property T.TextField field

    anchors.fill: parent

    function open(x: real, y: real) {
        loader.active = true;
        (loader.item as Holder).menu.popup(context, x, y);
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
    Loader {
        id: loader
        active: false
        sourceComponent: Holder {
        }
    }

    component Holder: Item {
        readonly property PopupMenu menu: entries

        PopupMenu {
            id: entries

            MenuEntry {
                text: "Cut"
                enabled: context.field.selectedText.length > 0 && !context.field.readOnly
                onTriggered: context.field.cut()
            }
            MenuEntry {
                text: "Copy"
                enabled: context.field.selectedText.length > 0
                onTriggered: context.field.copy()
            }
            MenuEntry {
                text: "Paste"
                enabled: context.field.canPaste
                onTriggered: context.field.paste()
            }
            MenuEntry {
                text: "Select All"
                enabled: context.field.length > 0
                onTriggered: context.field.selectAll()
            }
        }
    }
}
