import QtQuick
import QuillmereApp

// Moves along its parent while a sound plays.
Rectangle {
    id: head

    property bool playing: false
    property real seconds: 0  // how long it plays
    property real place: 0    // how far it has come, 0 ... 1

    x: Math.round(place * (parent.width - width))
    width: 2
    height: parent.height
    color: Theme.accent
    visible: playing

    onPlayingChanged: {
        run.stop();
        place = 0;
        if (playing)
            run.start();
    }

    NumberAnimation {
        id: run
        target: head
        property: "place"
        from: 0
        to: 1
        duration: Math.max(1, head.seconds * 1000)
    }
}
