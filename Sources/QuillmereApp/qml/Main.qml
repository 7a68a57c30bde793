import QtQuick
import QtQuick.Window
import QuillmereApp

Window {
    id: root

    required property AppModel model

    width: 1180
    height: 820
    visible: true
    color: model.appearance.dark ? "#15161A" : "#F4F4F2"
    title: "Quillmere"
}
