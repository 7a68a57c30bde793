import QtQuick
import QuillmereApp

// A large dialog over the window, for what is looked at and listened to. What sounds in it ends with it.
Dialog {
    id: sheet

    required property AppModel app
    default property alias body: body.data
    property alias actions: actions.data  // beside the button that closes it

    width: Math.min(760, (parent ? parent.width : 760) - 2 * Theme.outer)
    height: Math.min(680, (parent ? parent.height : 680) - 2 * Theme.outer)
    onClosed: app.playback.stop()

    contentItem: Item {
        Item {
            id: body
            width: parent.width
            height: (trouble.visible ? trouble.y : foot.y) - Theme.between
        }
        Note {
            id: trouble
            y: foot.y - height - Theme.between
            width: parent.width
            visible: sheet.app.errorMessage.length > 0
            iconName: "exclamationmark.triangle.fill"
            text: sheet.app.errorMessage
            ink: Theme.error
            textColor: Theme.text
            Accessible.role: Accessible.AlertMessage
        }
        Item {
            id: foot
            y: parent.height - height
            width: parent.width
            height: Theme.controlHeight

            Row {
                id: actions
                spacing: Theme.inner
            }
            ActionButton {
                objectName: "closeSheet"
                anchors.right: parent.right
                text: qsTr("Close")
                onClicked: sheet.close()
            }
        }
    }
}
