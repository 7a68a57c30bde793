pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// The candidates of a set: variations that are heard before any is written. Arrow keys and clicks play, K keeps,
// X discards.
Rectangle {
    id: strip

    required property AppModel app
    readonly property CandidatesController candidates: app.candidates
    readonly property bool hasKeyboard: list.activeFocus
    readonly property int row: list.currentIndex
    property int heardRow: 0 // of what has played by itself

    signal resultsRequested
    // So many rows more (or, negative, fewer).
    signal growthRequested(int by)
    signal inspectRequested

    implicitHeight: list.y + list.tileHeight + Theme.between
    radius: Theme.cardRadius
    color: Theme.card
    border.color: Theme.line

    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Candidates")

    function takeKeyboard() {
        list.forceActiveFocus(Qt.ShortcutFocusReason);
    }
    function togglePlay() {
        candidates.togglePlay(Math.max(0, list.currentIndex));
    }
    // What comes next takes the place of what goes, and is heard.
    function discard() {
        const before = list.count;
        candidates.discard(list.currentIndex);
        if (list.count < before)
            candidates.play(list.currentIndex);
    }

    Keys.onPressed: event => {
        event.accepted = event.modifiers === Qt.NoModifier;
        if (!event.accepted)
            return;
        if (event.key === Qt.Key_K)
            candidates.keep(list.currentIndex);
        else if (event.key === Qt.Key_X || event.key === Qt.Key_Delete)
            discard();
        else if (event.key === Qt.Key_Return || event.key === Qt.Key_Enter)
            togglePlay();
        else
            event.accepted = false;
    }

    Connections {
        target: strip.candidates

        function onBroughtBack(row: int) {
            list.currentIndex = row;
        }
        // What is heard is what K keeps, unless somebody has gone elsewhere.
        function onHeard(row: int) {
            if (list.currentIndex < 0 || list.currentIndex === strip.heardRow)
                list.currentIndex = row;
            strip.heardRow = row;
        }
    }

    Label {
        id: heading
        x: Theme.outer
        y: Theme.between
        text: qsTr("Candidates")
        font.weight: Font.DemiBold
        wrapMode: Text.NoWrap
        Accessible.role: Accessible.Heading
    }
    Label {
        id: number
        anchors.left: heading.right
        anchors.leftMargin: Theme.inner
        anchors.baseline: heading.baseline
        text: strip.candidates.isTrying ? qsTr("%1 of %2").arg(strip.candidates.done).arg(strip.candidates.perSet) : list.count === 1 ? qsTr("1 sound") : qsTr("%n sounds", "", list.count)
        color: Theme.secondary
        font.family: Theme.figures
        font.pixelSize: Theme.smallSize
        wrapMode: Text.NoWrap
    }
    Row {
        anchors.left: number.right
        anchors.leftMargin: Theme.between
        anchors.verticalCenter: heading.verticalCenter
        spacing: 2
        visible: strip.width >= 620

        Label {
            objectName: "candidatesSeed"
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, strip.width - 500)
            text: strip.candidates.about
            elide: Text.ElideMiddle
            color: Theme.secondary
            font.family: Theme.figures
            font.pixelSize: Theme.smallSize
            wrapMode: Text.NoWrap
        }
        IconButton {
            objectName: "copyCandidatesSeed"
            iconName: "doc.on.doc"
            iconSize: 14
            text: qsTr("Copy the seed of these candidates")
            onClicked: strip.candidates.copySeed()
        }
    }
    Row {
        anchors.right: parent.right
        anchors.rightMargin: Theme.inner
        anchors.verticalCenter: heading.verticalCenter
        spacing: Theme.tight

        IconButton {
            objectName: "olderSet"
            anchors.verticalCenter: parent.verticalCenter
            visible: strip.candidates.sets > 1
            enabled: strip.candidates.shown > 1
            iconName: "chevron.left"
            text: qsTr("Older candidates")
            onClicked: strip.candidates.show(strip.candidates.shown - 1)
        }
        Label {
            objectName: "shownSet"
            anchors.verticalCenter: parent.verticalCenter
            visible: strip.candidates.sets > 1
            text: strip.candidates.shown + " / " + strip.candidates.sets
            color: Theme.secondary
            font.family: Theme.figures
            font.pixelSize: Theme.smallSize
            wrapMode: Text.NoWrap
            Accessible.name: qsTr("Set %1 of %2").arg(strip.candidates.shown).arg(strip.candidates.sets)
        }
        IconButton {
            objectName: "newerSet"
            anchors.verticalCenter: parent.verticalCenter
            visible: strip.candidates.sets > 1
            enabled: strip.candidates.shown < strip.candidates.sets
            iconName: "chevron.right"
            text: qsTr("Newer candidates")
            onClicked: strip.candidates.show(strip.candidates.shown + 1)
        }
        ActionButton {
            objectName: "inspectCandidate"
            height: 28
            quiet: true
            iconName: "magnifyingglass"
            text: qsTr("Inspect")
            tip: "I"
            visible: strip.width >= 500
            onClicked: strip.inspectRequested()
        }
        ActionButton {
            objectName: "showResults"
            height: 28
            quiet: true
            text: qsTr("Results")
            tip: qsTr("Ctrl+R")
            onClicked: strip.resultsRequested()
        }
    }
    Label {
        x: Theme.outer
        width: parent.width - 2 * Theme.outer
        anchors.verticalCenter: parent.verticalCenter
        visible: list.count === 0 && !strip.candidates.isTrying
        text: strip.candidates.canUndo ? qsTr("All discarded. Ctrl+Z brings them back.") : ""
        color: Theme.secondary
        horizontalAlignment: Text.AlignHCenter
    }
    TileGrid {
        id: list
        objectName: "candidates"
        x: Theme.outer
        y: heading.y + heading.height + Theme.inner + 2
        // With the gap after the last tile.
        width: strip.width - 2 * Theme.outer + Theme.inner
        height: strip.height - y - Theme.between
        label: qsTr("Candidates")
        model: strip.candidates.list
        // A view that makes tiles ahead of sight takes fright when keys discard these meanwhile.
        cacheBuffer: 0
        onMoved: strip.candidates.play(currentIndex)
        onGrowthRequested: by => strip.growthRequested(by)

        delegate: CandidateTile {
            width: list.shownWidth
            height: list.shownHeight
            playingSeconds: strip.app.playback.playingSeconds
            selected: GridView.isCurrentItem
            focused: list.activeFocus && selected
            onSelectRequested: {
                list.currentIndex = index;
                list.forceActiveFocus(Qt.MouseFocusReason);
            }
            onPlayRequested: strip.candidates.togglePlay(index)
            onKeepRequested: strip.candidates.keep(index)
            onDiscardRequested: strip.discard()
        }
    }
}
