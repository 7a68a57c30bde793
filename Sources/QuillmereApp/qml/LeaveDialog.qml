import QtQuick
import QuillmereApp

// Asks whether to close the window though the model is still being learned.
Dialog {
    id: dialog

    required property AppModel app

    signal leaveRequested

    title: "Stop learning?"
    onAboutToShow: keep.forceActiveFocus(Qt.TabFocusReason)

    Connections {
        target: dialog.app.model

        // Nothing is lost any more.
        function onIsTrainingChanged() {
            dialog.close();
        }
    }
    Column {
        width: dialog.availableWidth
        spacing: Theme.outer

        Label {
            width: parent.width
            text: "The model is still being learned. When the window closes, what it has learned so far is lost."
            color: Theme.secondary
        }
        Row {
            anchors.right: parent.right
            spacing: Theme.inner

            ActionButton {
                objectName: "leave"
                text: "Close Anyway"
                onClicked: dialog.leaveRequested()
            }
            ActionButton {
                id: keep
                objectName: "keepLearning"
                text: "Keep Learning"
                prominent: true
                onClicked: dialog.close()
            }
        }
    }
}
