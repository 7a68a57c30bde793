import QtQuick
import QuillmereApp

// Asks whether to close the window though the model is still being learned, or is not stored.
Dialog {
    id: dialog

    required property AppModel app

    readonly property bool learns: app.model.isTraining

    signal leaveRequested

    // In some languages the buttons need more than other questions do.
    width: Math.min(Math.max(400, buttons.width + leftPadding + rightPadding), (parent ? parent.width : 400) - 2 * Theme.outer)
    title: learns ? qsTr("Stop learning?") : qsTr("Close without storing?")
    onAboutToShow: keep.forceActiveFocus(Qt.TabFocusReason)

    Connections {
        target: dialog.app.model

        // Nothing is lost any more.
        function onIsTrainingChanged() {
            dialog.close();
        }
        function onIsUnstoredChanged() {
            if (!dialog.app.model.isUnstored)
                dialog.close();
        }
    }
    Column {
        width: dialog.availableWidth
        spacing: Theme.outer

        Label {
            width: parent.width
            text: dialog.learns ? qsTr("The model is still being learned. When the window closes, what it has learned so far is lost.") : qsTr("A model could not be stored. When the window closes, what it has learned is lost.")
            color: Theme.secondary
        }
        Row {
            id: buttons
            anchors.right: parent.right
            spacing: Theme.inner

            ActionButton {
                objectName: "leave"
                text: qsTr("Close Anyway")
                onClicked: dialog.leaveRequested()
            }
            ActionButton {
                id: keep
                objectName: "keepLearning"
                text: dialog.learns ? qsTr("Keep Learning") : qsTr("Store Again")
                prominent: true
                onClicked: {
                    if (!dialog.learns)
                        dialog.app.model.storeAgain();
                    dialog.close();
                }
            }
        }
    }
}
