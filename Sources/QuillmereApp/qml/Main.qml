import QtQuick
import QtQuick.Window
import QuillmereApp

Window {
    id: root

    required property AppModel model

    width: 1180
    height: 820
    visible: true
    title: "Quillmere"
}
