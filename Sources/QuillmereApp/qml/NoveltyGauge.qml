pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// How far a sound is from the nearest one that was learned, on a scale with the limits of what that means.
Item {
    id: gauge

    property real distance: -1  // dB; below 0: unknown
    property list<real> limits  // dB, where copy, close and new end
    property real farthest: 20  // dB, the end of the scale
    readonly property var names: [qsTr("copy", "how new a sound is"), qsTr("close", "how new a sound is"), qsTr("new", "how new a sound is"), qsTr("far", "how new a sound is")]
    readonly property bool known: distance >= 0

    function xOf(dB: real): real {
        return Math.max(0, Math.min(1, dB / farthest)) * width;
    }
    function startOf(zone: int): real {
        return zone === 0 || zone > limits.length ? 0 : xOf(limits[zone - 1]);
    }
    function endOf(zone: int): real {
        return zone >= limits.length ? width : xOf(limits[zone]);
    }

    implicitHeight: 30

    Accessible.role: Accessible.ProgressBar
    Accessible.name: qsTr("Distance to the nearest sample")
    Accessible.description: known ? distance.toFixed(1) + " dB" : qsTr("unknown")

    Repeater {
        model: gauge.names

        Item {
            id: zone

            required property int index
            required property string modelData

            x: gauge.startOf(index)
            width: gauge.endOf(index) - x
            height: gauge.height

            Rectangle {
                x: 1
                y: 4
                width: parent.width - 2
                height: 5
                radius: 2.5
                color: zone.index === 0 ? Theme.error : zone.index === 1 ? Theme.warning : zone.index === 2 ? Theme.accent : Theme.good
                opacity: gauge.known ? 1 : 0.4
            }
            Text {
                anchors.horizontalCenter: parent.horizontalCenter
                y: 15
                text: zone.modelData
                color: Theme.secondary
                font.family: Theme.family
                font.pixelSize: 11
                textFormat: Text.PlainText
            }
        }
    }
    HoverHandler {
        id: hover
    }
    ToolTip {
        text: qsTr("How far it is from the nearest sample: as good as a copy, close to it, new and of the kind, or far from all of them.")
        shown: hover.hovered
    }
    Rectangle {
        objectName: "noveltyMark"
        x: gauge.xOf(gauge.distance) - width / 2
        width: 13
        height: 13
        radius: 6.5
        color: Theme.handle
        border.width: 2
        border.color: Theme.card
        visible: gauge.known
    }
}
