import QtQuick
import QtQuick.Templates as T
import QuillmereApp

T.MenuItem {
    id: entry

    implicitWidth: Math.min(420, Math.ceil(implicitContentWidth) + leftPadding + rightPadding)
    implicitHeight: 30
    leftPadding: checkable ? 30 : 10
    rightPadding: 10
    font.family: Theme.family
    font.pixelSize: Theme.textSize

    Accessible.role: Accessible.MenuItem
    Accessible.name: text
    Accessible.checkable: checkable
    Accessible.checked: checked
    Accessible.onPressAction: if (enabled)
        clicked()

    contentItem: Text {
        text: entry.text
        font: entry.font
        color: entry.enabled ? Theme.text : Theme.disabled
        elide: Text.ElideMiddle
        verticalAlignment: Text.AlignVCenter
        textFormat: Text.PlainText
    }
    indicator: Icon {
        x: 9
        y: (entry.height - height) / 2
        width: 14
        height: 14
        name: "checkmark"
        color: Theme.accent
        visible: entry.checked
    }
    background: Rectangle {
        radius: Theme.controlRadius - 3
        color: entry.highlighted && entry.enabled ? Theme.controlHover : "transparent"
    }
}
