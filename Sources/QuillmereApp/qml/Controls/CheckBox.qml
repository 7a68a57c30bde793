import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// A choice of two. Who uses it changes what checked is bound to in onToggled.
T.CheckBox {
    id: control

    property string tip

    implicitWidth: Math.ceil(implicitContentWidth) + leftPadding + rightPadding
    implicitHeight: Math.max(24, implicitContentHeight)
    leftPadding: box.width + Theme.inner
    rightPadding: 0
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    font.family: Theme.family
    font.pixelSize: Theme.smallSize

    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.description: tip
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onPressAction: press()
    Accessible.onToggleAction: press()

    Keys.onReturnPressed: press()
    Keys.onEnterPressed: press()

    function press() {
        if (!enabled)
            return;
        toggle();
        toggled();
    }

    contentItem: Text {
        text: control.text
        font: control.font
        color: control.enabled ? Theme.text : Theme.disabled
        wrapMode: Text.Wrap
        verticalAlignment: Text.AlignVCenter
        textFormat: Text.PlainText
    }
    indicator: Rectangle {
        id: box
        y: Math.round((control.height - height) / 2)
        width: 18
        height: 18
        radius: 4
        color: {
            if (control.checked && control.enabled)
                return control.down ? Theme.accentPressed : control.hovered ? Theme.accentHover : Theme.accent;
            return control.down ? Theme.controlPressed : control.hovered && control.enabled ? Theme.controlHover : Theme.control;
        }
        border.width: control.checked && control.enabled ? 0 : 1
        border.color: control.enabled ? Theme.controlLine : Theme.line

        Icon {
            anchors.centerIn: parent
            width: 12
            height: 12
            name: "checkmark"
            color: control.enabled ? Theme.accentInk : Theme.disabled
            visible: control.checked
        }
    }

    FocusRing {
        shown: control.visualFocus
        around: 4
    }
    ToolTip {
        text: control.tip
        shown: control.hovered
    }
}
