import QtQuick.Templates as T
import QuillmereApp

// What can be done with the text of a field.
PopupMenu {
    id: menu

    required property T.TextField field

    MenuEntry {
        text: "Cut"
        enabled: menu.field.selectedText.length > 0 && !menu.field.readOnly
        onTriggered: menu.field.cut()
    }
    MenuEntry {
        text: "Copy"
        enabled: menu.field.selectedText.length > 0
        onTriggered: menu.field.copy()
    }
    MenuEntry {
        text: "Paste"
        enabled: menu.field.canPaste
        onTriggered: menu.field.paste()
    }
    MenuEntry {
        text: "Select All"
        enabled: menu.field.length > 0
        onTriggered: menu.field.selectAll()
    }
}
