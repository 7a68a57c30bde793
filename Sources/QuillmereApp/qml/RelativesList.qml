pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// Samples under a heading, each of which plays.
Column {
    id: list

    required property AppModel app
    property string title
    property string explanation
    property string absent  // what to say when there are none
    property var relatives: []

    spacing: 2

    Explained {
        text: list.title
        tip: list.explanation
        color: Theme.secondary
        font.pixelSize: Theme.smallSize
        font.weight: Font.DemiBold
        bottomPadding: 2
        wrapMode: Text.NoWrap
        Accessible.role: Accessible.Heading
    }
    Repeater {
        model: list.relatives

        RelativeRow {
            required property var modelData

            width: list.width
            key: modelData.key
            name: modelData.name
            detail: modelData.detail
            playing: String(list.app.playback.playingURL) === String(modelData.url)
            onClicked: list.app.inspector.playInTurn(key)
        }
    }
    Label {
        width: list.width
        visible: list.relatives.length === 0 && text.length > 0
        text: list.absent
        color: Theme.secondary
        font.pixelSize: Theme.smallSize
    }
}
