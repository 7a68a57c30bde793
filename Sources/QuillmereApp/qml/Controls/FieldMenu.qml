import QtQuick.Templates as T
import QuillmereApp

// What can be done with the text of a field.
Menu {
    id: menu

    required property T.TextField field

    MenuItem {
        text: qsTr("Cut")
        enabled: menu.field.selectedText.length > 0 && !menu.field.readOnly
        onTriggered: menu.field.cut()
    }
    MenuItem {
        text: qsTr("Copy")
        enabled: menu.field.selectedText.length > 0
        onTriggered: menu.field.copy()
    }
    MenuItem {
        text: qsTr("Paste")
        enabled: menu.field.canPaste
        onTriggered: menu.field.paste()
    }
    MenuItem {
        text: qsTr("Select All")
        enabled: menu.field.length > 0
        onTriggered: menu.field.selectAll()
    }
}
