import QtQuick
import QuillmereApp

// A device by its name, with a line on what it is; or that line only.
MenuItem {
    id: entry

    property string detail
    property bool chosen: false
    property bool shown: true

    visible: shown
    activeFocusOnTab: shown && enabled
    implicitWidth: Math.min(360, Math.ceil(implicitContentWidth) + leftPadding + rightPadding)
    implicitHeight: shown ? implicitContentHeight + topPadding + bottomPadding : 0
    height: implicitHeight
    leftPadding: 30
    topPadding: 6
    bottomPadding: 7

    Accessible.name: text.length > 0 ? text : detail
    Accessible.description: text.length > 0 ? detail : ""
    Accessible.checkable: text.length > 0
    Accessible.checked: chosen

    contentItem: Item {
        implicitWidth: Math.max(name.implicitWidth, about.implicitWidth)
        implicitHeight: about.y + about.height

        Text {
            id: name
            width: parent.width
            text: entry.text
            font: entry.font
            color: entry.enabled ? Theme.text : Theme.disabled
            elide: Text.ElideMiddle
            textFormat: Text.PlainText
        }
        Text {
            id: about
            y: entry.text.length > 0 ? name.height + 1 : 0
            width: parent.width
            text: entry.detail
            font.family: Theme.family
            font.pixelSize: Theme.smallSize
            color: Theme.secondary
            wrapMode: Text.Wrap
            textFormat: Text.PlainText
        }
    }
    indicator: Icon {
        x: 9
        y: entry.topPadding + 1
        width: 14
        height: 14
        name: "checkmark"
        color: entry.enabled ? Theme.accent : Theme.disabled
        visible: entry.chosen
    }
}
