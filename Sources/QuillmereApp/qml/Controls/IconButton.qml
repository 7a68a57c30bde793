import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// A button that is an icon only; text is its name for tooltip and assistive technology.
T.Button {
    id: control

    property string iconName
    property string tip: text
    property color ink: Theme.secondary
    property int iconSize: 16
    property bool framed: false
    property real corner: Math.min(Theme.controlRadius, height / 4)

    implicitWidth: 28
    implicitHeight: 28
    padding: 0
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true

    Accessible.name: text
    Accessible.description: tip === text ? "" : tip
    Accessible.checkable: checkable
    Accessible.checked: checked

    Accessible.onPressAction: if (enabled)
        clicked()
    Accessible.onToggleAction: if (enabled)
        clicked()

    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    contentItem: Item {
        Icon {
            anchors.centerIn: parent
            width: control.iconSize
            height: control.iconSize
            name: control.iconName
            color: !control.enabled ? Theme.disabled : control.hovered || control.visualFocus ? Theme.text : control.ink
        }
    }
    background: Rectangle {
        radius: control.corner
        color: control.down ? Theme.controlPressed : control.hovered ? Theme.controlHover : control.framed ? Theme.control : "transparent"
        border.width: control.framed ? 1 : 0
        border.color: control.enabled ? Theme.controlLine : Theme.line
    }

    FocusRing {
        anchors.margins: -1
        around: control.corner - 2
        shown: control.visualFocus
    }
    ToolTip {
        text: control.tip
        shown: control.hovered
    }
}
