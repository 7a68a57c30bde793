import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// Which device learns, said quietly; opens the choice of another one.
T.Button {
    id: button

    required property AppModel app
    readonly property ComputeDevices devices: app.devices
    // Another device learns than was chosen.
    readonly property bool troubled: devices.problem.length > 0
    readonly property bool lit: hovered || visualFocus
    readonly property string tip: {
        if (troubled)
            return devices.problem;
        if (devices.isAutomatic && devices.automaticName.length === 0)
            return qsTr("Learns and generates on a graphics card if there is one, else on the processor.");
        return (devices.isAutomatic ? qsTr("Learns and generates on: %1 (chosen automatically)") : qsTr("Learns and generates on: %1")).arg(devices.name);
    }

    objectName: "device"
    implicitWidth: Math.ceil(implicitContentWidth) + leftPadding + rightPadding
    implicitHeight: 26
    leftPadding: Theme.inner
    rightPadding: 6
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    text: devices.name
    font.family: Theme.family
    font.pixelSize: Theme.smallSize

    Accessible.name: qsTr("Device: %1").arg(text)
    Accessible.description: tip
    Accessible.onPressAction: clicked()

    Keys.onReturnPressed: clicked()
    Keys.onEnterPressed: clicked()

    onClicked: {
        const menu = loader.made() as DeviceMenu;
        menu.popup(button, button.width - menu.implicitWidth, button.height + Theme.tight);
    }

    contentItem: Item {
        implicitWidth: name.x + Math.ceil(name.implicitWidth) + Theme.tight + arrow.width

        Icon {
            id: icon
            width: 14
            height: 14
            anchors.verticalCenter: parent.verticalCenter
            name: button.troubled ? "exclamationmark.triangle.fill" : "cpu"
            color: button.troubled ? Theme.warning : name.color
        }
        Text {
            id: name
            x: icon.width + 6
            width: arrow.x - Theme.tight - x
            anchors.verticalCenter: parent.verticalCenter
            text: button.text
            font: button.font
            color: button.lit ? Theme.text : Theme.secondary
            elide: Text.ElideMiddle
            textFormat: Text.PlainText
        }
        Icon {
            id: arrow
            x: parent.width - width
            width: 11
            height: 11
            anchors.verticalCenter: parent.verticalCenter
            name: "chevron.down"
            color: name.color
        }
    }
    background: Rectangle {
        radius: Theme.controlRadius - 2
        color: button.down ? Theme.controlPressed : button.hovered ? Theme.controlHover : "transparent"
    }

    Later {
        id: loader
        view: "DeviceMenu.qml"
        needs: ({
                "app": button.app
            })
    }
    FocusRing {
        shown: button.visualFocus
    }
    ToolTip {
        text: button.tip
        shown: button.hovered && !(loader.item && (loader.item as DeviceMenu).visible)
    }
}
