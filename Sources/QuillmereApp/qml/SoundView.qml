import QtQuick
import QuillmereApp

// One sound, large: its outline, its mel image below on the same scale of time, and where it plays. A click plays
// or stops it.
Item {
    id: view

    property list<real> peaks
    property var image
    property bool playing: false
    property real seconds: 0  // how long it plays
    property string label
    // How far it has come, 0 ... 1
    property real place: 0

    signal playRequested

    implicitHeight: 196

    Accessible.role: Accessible.Graphic
    Accessible.name: label
    Accessible.onPressAction: playRequested()

    onPlayingChanged: {
        run.stop();
        place = 0;
        if (playing)
            run.start();
    }

    NumberAnimation {
        id: run
        target: view
        property: "place"
        from: 0
        to: 1
        duration: Math.max(1, view.seconds * 1000)
    }
    Rectangle {
        id: outlineGround
        width: parent.width
        height: Math.round(parent.height * 0.5) - 2
        radius: Theme.controlRadius
        color: Theme.field
        border.color: Theme.line

        Waveform {
            anchors.fill: parent
            anchors.topMargin: Theme.inner
            anchors.bottomMargin: Theme.inner
            peaks: view.peaks
            color: view.playing ? Theme.accent : Theme.secondary
        }
    }
    Rectangle {
        id: imageGround
        y: outlineGround.height + Theme.tight
        width: parent.width
        height: parent.height - y
        color: "#101014"

        Picture {
            anchors.fill: parent
            image: view.image
        }
    }
    Rectangle {
        objectName: "playhead"
        x: Math.round(view.place * (view.width - width))
        width: 2
        height: parent.height
        color: Theme.accent
        visible: view.playing
    }
    MouseArea {
        anchors.fill: parent
        onClicked: view.playRequested()
    }
}
