import QtQuick
import QuillmereApp

// Asks whether to open the model of a sound that was dropped.
Dialog {
    id: dialog

    required property AppModel app
    property string corpus

    title: qsTr("Open the model of this sound?")
    onAboutToShow: accept.forceActiveFocus(Qt.TabFocusReason)

    Column {
        width: dialog.availableWidth
        spacing: Theme.outer

        Label {
            width: parent.width
            text: qsTr("Another model has made it, one of “%1”. With the present one its settings make other sounds. When it is opened, the list of results begins anew; the files stay.").arg(dialog.corpus)
            color: Theme.secondary
        }
        Row {
            anchors.right: parent.right
            spacing: Theme.inner

            ActionButton {
                objectName: "keepModel"
                text: qsTr("Not Now")
                onClicked: dialog.close()
            }
            ActionButton {
                id: accept
                objectName: "openOfferedModel"
                text: qsTr("Open It")
                prominent: true
                onClicked: {
                    dialog.close();
                    dialog.app.openOfferedModel();
                }
            }
        }
    }
}
