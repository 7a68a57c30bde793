pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// A whole number with buttons for less and more; it can be typed, too.
T.SpinBox {
    id: control

    property string label
    property string tip

    implicitWidth: 112
    implicitHeight: Theme.controlHeight
    leftPadding: 30
    rightPadding: 30
    from: 1
    to: 9999
    editable: true
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    font.family: Theme.figures
    font.pixelSize: Theme.textSize
    inputMethodHints: Qt.ImhDigitsOnly
    textFromValue: value => String(value)
    // What is no whole number changes nothing: "7.5" is neither 7 nor 75.
    valueFromText: text => {
        Qt.callLater(input.restore);
        return /^\s*\+?[0-9]+\s*$/.test(text) ? Math.min(Number(text), to) : value;
    }

    Accessible.role: Accessible.SpinBox
    Accessible.name: label
    Accessible.description: tip

    // A validator of numbers would drop single letters of other texts and leave other numbers.
    validator: RegularExpressionValidator {
        regularExpression: /.*/
    }
    contentItem: TextInput {
        id: input
        objectName: control.objectName + "Input"
        text: control.displayText
        font: control.font
        color: control.enabled ? Theme.text : Theme.disabled
        selectionColor: Theme.accent
        selectedTextColor: Theme.accentInk
        selectByMouse: true
        horizontalAlignment: Qt.AlignHCenter
        verticalAlignment: Qt.AlignVCenter
        readOnly: !control.editable
        validator: control.validator
        inputMethodHints: control.inputMethodHints
        // What is shown is what has been taken.
        function restore() {
            text = Qt.binding(() => control.displayText);
        }
        onActiveFocusChanged: if (activeFocus)
            selectAll()

        Accessible.role: Accessible.EditableText
        Accessible.name: control.label
    }
    down.indicator: StepIcon {
        x: 1
        name: "minus"
        pressed: control.down.pressed
        hovered: control.down.hovered
        enabled: control.value > control.from
    }
    up.indicator: StepIcon {
        x: control.width - width - 1
        name: "plus"
        pressed: control.up.pressed
        hovered: control.up.hovered
        enabled: control.value < control.to
    }
    background: Rectangle {
        radius: Theme.controlRadius
        color: Theme.field
        border.width: control.activeFocus ? 2 : 1
        border.color: control.activeFocus ? Theme.accent : control.enabled ? Theme.controlLine : Theme.line
    }

    component StepIcon: Rectangle {
        id: step

        property alias name: sign.name
        property bool pressed: false
        property bool hovered: false

        y: 1
        implicitWidth: 28
        implicitHeight: control.height - 2
        radius: Theme.controlRadius - 1
        color: pressed ? Theme.controlPressed : hovered ? Theme.controlHover : "transparent"

        Icon {
            id: sign
            anchors.centerIn: parent
            width: 13
            height: 13
            color: step.enabled && control.enabled ? Theme.secondary : Theme.disabled
        }
    }
    ToolTip {
        text: control.tip
        shown: control.hovered && !control.activeFocus
    }
}
