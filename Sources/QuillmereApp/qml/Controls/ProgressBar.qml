import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// How far something has come; indeterminate while nobody knows.
T.ProgressBar {
    id: control

    property string label

    implicitWidth: 120
    implicitHeight: 6

    Accessible.role: Accessible.ProgressBar
    Accessible.name: label

    background: Rectangle {
        radius: height / 2
        color: Theme.line
    }
    contentItem: Item {
        clip: control.indeterminate

        Rectangle {
            width: control.indeterminate ? parent.width * 0.3 : Math.max(parent.height, parent.width * control.position)
            height: parent.height
            radius: height / 2
            color: Theme.accent
            visible: control.indeterminate || control.position > 0
            // The animation leaves it somewhere.
            onWidthChanged: if (!control.indeterminate)
                x = 0

            // Still when the desktop asks for less motion.
            NumberAnimation on x  {
                running: control.indeterminate && control.visible && !Theme.reducedMotion
                from: -0.3 * control.width
                to: control.width
                duration: 1400
                loops: Animation.Infinite
            }
        }
    }
}
