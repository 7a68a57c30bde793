import QtQuick
import QuillmereApp

// Asks whether to open the model of a sound that was dropped.
Dialog {
    id: dialog

    required property AppModel app
    property string corpus

    title: "Open the model of this sound?"
    onAboutToShow: accept.forceActiveFocus(Qt.TabFocusReason)

    Column {
        width: dialog.availableWidth
        spacing: Theme.outer

        Label {
            width: parent.width
            text: "Another model has made it, one of “" + dialog.corpus + "”. With the present one its settings make other sounds. When it is opened, the list of results begins anew; the files stay."
            color: Theme.secondary
        }
        Row {
            anchors.right: parent.right
            spacing: Theme.inner

            ActionButton {
                objectName: "keepModel"
                text: "Not Now"
                onClicked: dialog.close()
            }
            ActionButton {
                id: accept
                objectName: "openOfferedModel"
                text: "Open It"
                prominent: true
                onClicked: {
                    dialog.close();
                    dialog.app.openOfferedModel();
                }
            }
        }
    }
}
