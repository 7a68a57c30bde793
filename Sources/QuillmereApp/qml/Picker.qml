import QtQuick
import QuillmereApp

// A word, and at the right a choice of one of a few.
Item {
    id: picker

    required property string name  // objectName of the choice
    required property string label
    required property list<string> labels
    required property int currentIndex
    property string tip

    signal chosen(int index)

    implicitHeight: choice.height

    Label {
        id: word
        anchors.verticalCenter: parent.verticalCenter
        text: picker.label
    }
    ComboBox {
        id: choice
        objectName: picker.name
        anchors.right: parent.right
        width: Math.min(implicitWidth, parent.width - word.width - Theme.between)
        label: picker.label
        model: picker.labels
        tip: picker.tip
        currentIndex: picker.currentIndex
        onActivated: index => picker.chosen(index)
    }
}
