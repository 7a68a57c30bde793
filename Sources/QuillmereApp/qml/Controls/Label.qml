import QtQuick
import QuillmereApp

// Text of the window, also for those who have it read to them.
Text {
    color: Theme.text
    font.family: Theme.family
    font.pixelSize: Theme.textSize
    wrapMode: Text.Wrap
    textFormat: Text.PlainText

    Accessible.role: Accessible.StaticText
    Accessible.name: text
}
