import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// A line of text to type in.
T.TextField {
    id: control

    property string tip
    // Shown only while the pointer or the keyboard is in it.
    property bool quiet: false
    property bool targeted: false

    implicitWidth: 120
    implicitHeight: Theme.controlHeight
    leftPadding: Theme.inner + 2
    rightPadding: leftPadding
    verticalAlignment: TextInput.AlignVCenter
    color: enabled ? Theme.text : Theme.disabled
    placeholderTextColor: Theme.secondary
    selectionColor: Theme.accent
    selectedTextColor: Theme.accentInk
    selectByMouse: true
    hoverEnabled: true
    font.family: Theme.family
    font.pixelSize: Theme.textSize

    Accessible.role: Accessible.EditableText
    Accessible.description: tip

    background: Rectangle {
        radius: Math.min(Theme.controlRadius, control.height / 4)
        color: control.quiet && !control.hovered && !control.activeFocus ? "transparent" : Theme.field
        border.width: control.activeFocus || control.targeted ? 2 : control.quiet && !control.hovered ? 0 : 1
        border.color: control.activeFocus || control.targeted ? Theme.accent : control.enabled ? Theme.controlLine : Theme.line
    }

    Text {
        x: control.leftPadding
        width: control.width - control.leftPadding - control.rightPadding
        height: control.height
        text: control.placeholderText
        visible: control.length === 0 && control.preeditText.length === 0
        color: control.placeholderTextColor
        font: control.font
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
        horizontalAlignment: control.horizontalAlignment
        textFormat: Text.PlainText
    }
    TextMenu {
        field: control
    }
    ToolTip {
        text: control.tip
        shown: control.hovered && !control.activeFocus
    }
}
