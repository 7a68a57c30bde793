import QtQuick
import QuillmereApp

// What went wrong, to be read in full, copied and dismissed. Showing it is announced to assistive technology.
Rectangle {
    id: banner

    required property AppModel app
    // The message scrolls when it is longer.
    property real tallestMessage: 120

    objectName: "errorBanner"
    implicitHeight: visible ? message.y + scroll.height + Theme.between : 0
    radius: Theme.cardRadius
    color: Theme.errorSoft
    border.color: Theme.errorLine
    visible: app.errorMessage.length > 0

    Accessible.role: Accessible.AlertMessage
    Accessible.name: title.text
    Accessible.description: app.errorMessage

    Icon {
        id: icon
        x: Theme.outer
        y: Theme.between
        width: 18
        height: 18
        name: "exclamationmark.triangle.fill"
        color: Theme.error
    }
    Label {
        id: title
        anchors.left: icon.right
        anchors.leftMargin: Theme.inner + 2
        anchors.verticalCenter: icon.verticalCenter
        text: qsTr("Something went wrong")
        font.weight: Font.DemiBold
        wrapMode: Text.NoWrap
    }
    ScrollPane {
        id: scroll
        x: title.x
        y: message.y
        width: buttons.x - x - Theme.between
        height: Math.min(message.implicitHeight, banner.tallestMessage)
        contentHeight: message.implicitHeight

        TextEdit {
            id: text
            objectName: "errorMessage"
            width: scroll.width
            text: banner.app.errorMessage
            readOnly: true
            selectByMouse: true
            activeFocusOnTab: true
            wrapMode: TextEdit.Wrap
            textFormat: TextEdit.PlainText
            color: Theme.text
            selectionColor: Theme.accent
            selectedTextColor: Theme.accentInk
            font.family: Theme.family
            font.pixelSize: Theme.textSize
            Accessible.role: Accessible.EditableText
            Accessible.readOnly: true
            Accessible.name: qsTr("Message")
        }
    }
    FocusRing {
        anchors.fill: scroll
        around: 4
        shown: text.activeFocus
    }
    QtObject {
        id: message
        readonly property real y: icon.y + icon.height + 6
        readonly property real implicitHeight: text.implicitHeight
    }
    Row {
        id: buttons
        anchors.right: parent.right
        anchors.rightMargin: Theme.inner
        y: Theme.inner - 2
        spacing: Theme.tight

        IconButton {
            objectName: "copyError"
            iconName: "doc.on.doc"
            text: qsTr("Copy the message")
            ink: Theme.text
            onClicked: banner.app.copyError()
        }
        IconButton {
            objectName: "dismissError"
            iconName: "xmark"
            iconSize: 14
            text: qsTr("Dismiss")
            ink: Theme.text
            onClicked: banner.app.dismissError()
        }
    }
}
