import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// A button with words, or with an icon alone. prominent: the one filled button of the place; quiet: words only.
T.Button {
    id: control

    property bool prominent: false
    property bool quiet: false
    property string iconName
    property string tip
    readonly property real besideIcon: icon.width + content.spacing  // where the words begin

    readonly property color ink: {
        if (!enabled)
            return Theme.disabled;
        return prominent ? Theme.accentInk : Theme.text;
    }
    readonly property color ground: {
        if (prominent && enabled)
            return down ? Theme.accentPressed : hovered ? Theme.accentHover : Theme.accent;
        if (!enabled)
            return quiet ? "transparent" : Theme.control;
        return down ? Theme.controlPressed : hovered ? Theme.controlHover : quiet ? "transparent" : Theme.control;
    }

    implicitWidth: Math.ceil(implicitContentWidth) + leftPadding + rightPadding
    implicitHeight: Theme.controlHeight
    leftPadding: quiet ? Theme.inner : 14
    rightPadding: leftPadding
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    font.family: Theme.family
    font.pixelSize: Theme.textSize
    font.weight: prominent ? Font.DemiBold : Font.Normal

    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.description: tip

    Accessible.onPressAction: if (enabled)
        clicked()
    Accessible.onToggleAction: if (enabled)
        clicked()

    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    contentItem: Item {
        implicitWidth: content.implicitWidth
        implicitHeight: content.implicitHeight

        Row {
            id: content
            x: Math.round((parent.width - width) / 2)
            y: Math.round((parent.height - height) / 2)
            spacing: Theme.inner - 1

            Icon {
                id: icon
                name: control.iconName
                color: control.ink
                visible: name.length > 0
                width: 16
                height: 16
                anchors.verticalCenter: parent.verticalCenter
            }
            Text {
                text: control.text
                visible: text.length > 0
                color: control.ink
                font: control.font
                textFormat: Text.PlainText
                anchors.verticalCenter: parent.verticalCenter
            }
        }
    }
    background: Rectangle {
        radius: Theme.controlRadius
        color: control.ground
        border.width: control.quiet || (control.prominent && control.enabled) ? 0 : 1
        border.color: control.enabled ? Theme.controlLine : Theme.line

        Behavior on color  {
            ColorAnimation {
                duration: Theme.quick
            }
        }
    }

    FocusRing {
        shown: control.visualFocus
    }
    ToolTip {
        text: control.tip
        shown: control.hovered
    }
}
