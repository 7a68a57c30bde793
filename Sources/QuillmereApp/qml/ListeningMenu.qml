import QuillmereApp

// What plays by itself.
Menu {
    id: menu

    required property PlaybackController playback

    MenuItem {
        objectName: "playsAtOnce"
        text: qsTr("Play results when they are selected")
        checkable: true
        checked: menu.playback.playsAtOnce
        onTriggered: menu.playback.playsAtOnce = !menu.playback.playsAtOnce
    }
    MenuItem {
        objectName: "followsSliders"
        text: qsTr("Play every change of a slider")
        checkable: true
        checked: menu.playback.followsSliders
        onTriggered: menu.playback.followsSliders = !menu.playback.followsSliders
    }
    MenuItem {
        objectName: "playsCandidates"
        text: qsTr("Play candidates as they come")
        checkable: true
        checked: menu.playback.playsCandidates
        onTriggered: menu.playback.playsCandidates = !menu.playback.playsCandidates
    }
}
