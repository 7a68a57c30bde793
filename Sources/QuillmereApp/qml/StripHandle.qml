import QtQuick
import QuillmereApp

// Drags the strip of sounds taller: the rows it is to have.
Item {
    id: handle

    property int rows: 1
    property int mostRows: 1
    property real rowHeight: 1

    signal wanted(int rows)

    objectName: "stripHandle"
    implicitHeight: Theme.between

    Accessible.role: Accessible.Separator
    Accessible.name: qsTr("Height of the strip")
    Accessible.description: qsTr("Ctrl+Up and Ctrl+Down")

    Rectangle {
        anchors.centerIn: parent
        width: 40
        height: 4
        radius: 2
        color: area.pressed ? Theme.accent : Theme.track
        visible: area.containsMouse || area.pressed
    }
    MouseArea {
        id: area

        property real start: 0  // of the pointer, in the window
        property int before: 1

        anchors.fill: parent
        hoverEnabled: true
        preventStealing: true
        cursorShape: Qt.SplitVCursor
        onPressed: mouse => {
            start = mapToItem(null, mouse.x, mouse.y).y;
            before = handle.rows;
        }
        onPositionChanged: mouse => {
            if (!pressed)
                return;
            const moved = start - mapToItem(null, mouse.x, mouse.y).y;
            handle.wanted(Math.max(1, Math.min(handle.mostRows, before + Math.round(moved / handle.rowHeight))));
        }
    }
    ToolTip {
        text: qsTr("Drag for more rows (Ctrl+Up)")
        shown: area.containsMouse && !area.pressed && handle.mostRows > 1
    }
}
