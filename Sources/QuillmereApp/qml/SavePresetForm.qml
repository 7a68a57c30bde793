import QtQuick
import QuillmereApp

// What SavePresetDialog asks.
Column {
    id: form

    readonly property alias name: field.text
    property string problem
    property bool saveable: false

    signal saveRequested
    signal cancelRequested

    function begin() {
        field.clear();
        field.forceActiveFocus(Qt.OtherFocusReason);
    }

    spacing: Theme.inner

    TextField {
        id: field
        objectName: "presetName"
        width: parent.width
        placeholderText: qsTr("Name")
        Accessible.name: qsTr("Name")
        onAccepted: form.saveRequested()
    }
    Label {
        width: parent.width
        // The line stays reserved.
        height: Math.max(implicitHeight, line.height)
        text: form.problem
        color: Theme.error
        font.pixelSize: Theme.smallSize

        FontMetrics {
            id: line
            font.family: Theme.family
            font.pixelSize: Theme.smallSize
        }
    }
    Row {
        anchors.right: parent.right
        spacing: Theme.inner

        ActionButton {
            objectName: "cancelPreset"
            text: qsTr("Cancel")
            onClicked: form.cancelRequested()
        }
        ActionButton {
            objectName: "confirmPreset"
            text: qsTr("Save")
            prominent: true
            enabled: form.saveable
            onClicked: form.saveRequested()
        }
    }
}
