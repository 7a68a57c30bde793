import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// What a ToolTip shows, in which it is.
Item {
    id: place

    readonly property ToolTip tip: parent as ToolTip
    readonly property string text: tip ? tip.text : ""

    T.ToolTip {
        id: bubble

        readonly property real widest: 300

        x: Math.round((place.width - width) / 2)
        y: -height - Theme.tight
        implicitWidth: Math.min(widest, Math.ceil(measure.advanceWidth) + 1) + leftPadding + rightPadding
        implicitHeight: contentHeight + topPadding + bottomPadding
        margins: Theme.inner
        padding: Theme.inner
        delay: Theme.tipDelay
        visible: true
        text: place.text
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
        text: place.text
    }
}
