import QtQuick
import QuillmereApp

// Words that not everybody knows, explained where they stand.
Label {
    id: label

    property string tip

    Accessible.description: tip

    HoverHandler {
        id: hover
    }
    ToolTip {
        text: label.tip
        shown: hover.hovered
    }
}
