pragma ComponentBehavior: Bound

import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// A choice of one of a few short words, all of them in view. Arrow keys move the choice; Tab visits it once.
Rectangle {
    id: segments

    property string label
    property var labels: []  // strings
    property var tips: []   // one per word, or none
    property int currentIndex: 0
    readonly property real segmentWidth: (width - 2 * edge) / Math.max(1, labels.length)
    readonly property real edge: 2

    // The user has chosen another one.
    signal chosen(int index)

    implicitHeight: Theme.controlHeight
    implicitWidth: 80 * labels.length
    radius: Theme.controlRadius
    color: Theme.field
    border.color: enabled ? Theme.controlLine : Theme.line

    Accessible.role: Accessible.Grouping
    Accessible.name: label

    function choose(index: int) {
        if (index < 0 || index >= labels.length)
            return;
        chosen(index);
        repeater.itemAt(index).forceActiveFocus(Qt.TabFocusReason);
    }

    Row {
        x: segments.edge
        y: segments.edge

        Repeater {
            id: repeater
            model: segments.labels

            T.RadioButton {
                id: segment

                required property string modelData
                required property int index

                objectName: segments.objectName + "-" + index
                width: segments.segmentWidth
                height: segments.height - 2 * segments.edge
                text: modelData
                checked: index === segments.currentIndex
                focusPolicy: Qt.ClickFocus
                hoverEnabled: true
                activeFocusOnTab: checked || activeFocus

                Accessible.name: text
                Accessible.description: segments.tips.length > index ? segments.tips[index] : ""
                Accessible.onPressAction: if (enabled)
                    clicked()
                Accessible.onToggleAction: if (enabled)
                    clicked()

                autoExclusive: false
                onClicked: {
                    segments.chosen(index);
                    // A press changes it; what is chosen has the last word.
                    checked = Qt.binding(() => index === segments.currentIndex);
                }
                Keys.onLeftPressed: segments.choose(index - 1)
                Keys.onRightPressed: segments.choose(index + 1)

                contentItem: Text {
                    text: segment.text
                    color: !segment.enabled ? Theme.disabled : segment.checked ? Theme.text : Theme.secondary
                    font.family: Theme.family
                    font.pixelSize: Theme.textSize
                    horizontalAlignment: Text.AlignHCenter
                    verticalAlignment: Text.AlignVCenter
                    textFormat: Text.PlainText
                }
                background: Rectangle {
                    radius: Theme.controlRadius - 2
                    color: segment.checked ? Theme.controlPressed : segment.hovered ? Theme.controlHover : "transparent"
                }

                FocusRing {
                    shown: segment.visualFocus
                }
                ToolTip {
                    text: segments.tips.length > segment.index ? segments.tips[segment.index] : ""
                    shown: segment.hovered
                }
            }
        }
    }
}
