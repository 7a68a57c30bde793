pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// A sound from elsewhere that was dropped on the window, and the sounds of the corpus that are like it. Space plays
// the two in turn.
Sheet {
    id: sheet

    readonly property DropsController drops: app.drops

    objectName: "similar"
    title: qsTr("“%1”").arg(drops.foreignName)
    onAboutToShow: find.forceActiveFocus(Qt.TabFocusReason)
    onClosed: drops.cancel()
    actions: ActionButton {
        id: find
        objectName: "findSimilar"
        visible: !sheet.drops.isFound
        enabled: !sheet.drops.isFinding
        prominent: enabled
        text: qsTr("Find similar in the corpus")
        onClicked: sheet.drops.findSimilar()
    }

    Connections {
        target: sheet.drops

        function onSimilarChanged() {
            if (sheet.drops.isFound)
                list.forceActiveFocus(Qt.OtherFocusReason);
        }
    }
    // Of the sound itself, above those of the rows.
    IconButton {
        id: foreign

        readonly property bool plays: String(sheet.app.playback.playingURL) === String(sheet.drops.foreignUrl)

        objectName: "playForeign"
        x: Theme.tight
        iconName: plays ? "stop.fill" : "play.circle"
        iconSize: plays ? 14 : 20
        ink: plays ? Theme.accent : Theme.text
        text: (plays ? qsTr("Stop %1") : qsTr("Play %1")).arg(sheet.drops.foreignName)
        onClicked: sheet.app.playback.togglePlay(sheet.drops.foreignUrl)
    }
    Label {
        id: summary

        readonly property real end: Math.max(foreign.height, y + height)

        x: foreign.x + foreign.width + Theme.inner
        y: Math.max(0, Math.round((foreign.height - height) / 2))
        width: parent.width - x
        text: {
            if (sheet.drops.isFound)
                return sheet.drops.similar.length > 0 ? qsTr("The nearest sounds of the corpus, nearest first.") : qsTr("There is nothing in the corpus to compare it with.");
            return qsTr("This sound was not made here: nothing is known of how it was made.");
        }
        color: Theme.secondary
    }
    ProgressBar {
        y: summary.end + Theme.inner
        width: parent.width
        visible: sheet.drops.isFinding
        label: qsTr("Comparing")
        indeterminate: !sheet.app.inspector.isComparing
        value: sheet.app.inspector.toCompare > 0 ? sheet.app.inspector.compared / sheet.app.inspector.toCompare : 0
    }
    ListView {
        id: list
        objectName: "similarList"
        y: summary.end + Theme.inner
        width: parent.width
        height: parent.height - y
        visible: sheet.drops.isFound
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        activeFocusOnTab: true
        keyNavigationEnabled: true
        model: sheet.drops.similar

        Accessible.role: Accessible.List
        Accessible.name: qsTr("Similar sounds")

        delegate: SoundRow {
            required property var modelData
            required property int index

            objectName: "similar-" + index
            width: list.width - (bar.visible ? Theme.between : 0)
            app: sheet.app
            sounds: [{
                    "name": sheet.drops.foreignName,
                    "url": sheet.drops.foreignUrl
                }, {
                    "name": modelData.name,
                    "url": modelData.url
                }]
            buttonsFrom: 1
            next: 1
            title: modelData.name
            value: modelData.detail
            selected: ListView.isCurrentItem && list.activeFocus
        }
        ThinScrollBar.vertical: ThinScrollBar {
            id: bar
            visible: list.contentHeight > list.height
        }
    }
}
