import QtQuick
import QuillmereApp

// The opening of a stored model. One that takes long shows that it goes on, and can be cancelled.
Column {
    id: view

    required property ModelController model
    property bool isLong: false

    spacing: Theme.inner
    onVisibleChanged: {
        isLong = false;
        if (visible)
            patience.restart();
    }

    Timer {
        id: patience
        interval: Theme.patience
        onTriggered: view.isLong = view.visible
    }
    Label {
        width: parent.width
        text: qsTr("Opening the model…")
        color: Theme.secondary
        font.pixelSize: Theme.smallSize
    }
    Row {
        width: parent.width
        visible: view.isLong
        spacing: Theme.between

        ProgressBar {
            width: parent.width - cancel.width - parent.spacing
            anchors.verticalCenter: parent.verticalCenter
            label: qsTr("Opening the model")
            indeterminate: true
        }
        ActionButton {
            id: cancel
            objectName: "cancelLoading"
            text: qsTr("Cancel")
            tip: qsTr("Esc")
            onClicked: view.model.cancelLoading()
        }
    }
}
