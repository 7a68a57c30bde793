import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// A dialog over the window.
T.Dialog {
    id: sheet

    parent: T.Overlay.overlay
    anchors.centerIn: parent
    width: Math.min(400, (parent ? parent.width : 400) - 2 * Theme.outer)
    implicitHeight: implicitContentHeight + implicitHeaderHeight + topPadding + bottomPadding
    padding: Theme.outer + 4
    topPadding: Theme.between
    modal: true
    focus: true
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside

    header: Label {
        text: sheet.title
        font.pixelSize: Theme.titleSize
        font.weight: Font.DemiBold
        topPadding: Theme.outer + 4
        leftPadding: Theme.outer + 4
        rightPadding: Theme.outer + 4
        Accessible.role: Accessible.Heading
    }
    background: Rectangle {
        objectName: "sheet"
        color: Theme.popup
        radius: Theme.cardRadius
        border.color: Theme.controlLine
    }
    T.Overlay.modal: Rectangle {
        color: Theme.shade
    }
}
