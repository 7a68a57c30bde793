import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// A tooltip of the item it is put in. It is made only when it is needed: there are hundreds of them.
Loader {
    id: tip

    property string text
    property bool shown: false

    anchors.fill: parent
    active: shown && text.length > 0
    sourceComponent: Item {
        T.ToolTip {
            id: bubble

            readonly property real widest: 300

            x: Math.round((tip.width - width) / 2)
            y: -height - Theme.tight
            implicitWidth: Math.min(widest, Math.ceil(measure.advanceWidth) + 1) + leftPadding + rightPadding
            implicitHeight: contentHeight + topPadding + bottomPadding
            margins: Theme.inner
            padding: Theme.inner
            delay: Theme.tipDelay
            visible: true
            text: tip.text
            font.family: Theme.family
            font.pixelSize: Theme.smallSize
            closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent | T.Popup.CloseOnReleaseOutsideParent

            contentItem: Text {
                text: bubble.text
                font: bubble.font
                color: Theme.text
                wrapMode: Text.Wrap
                textFormat: Text.PlainText
            }
            background: Rectangle {
                color: Theme.popup
                radius: Theme.controlRadius
                border.color: Theme.controlLine
            }
        }
        TextMetrics {
            id: measure
            font: bubble.font
            text: tip.text
        }
    }
}
