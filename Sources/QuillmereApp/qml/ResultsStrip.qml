pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// The files of the last generation, side by side in a strip, or in rows where there is room for more than one.
// Arrow keys move along, Space plays or stops, Ctrl+R comes here.
Rectangle {
    id: strip

    required property AppModel app
    readonly property bool hasKeyboard: list.activeFocus
    readonly property int row: list.currentIndex

    signal candidatesRequested
    signal inspectRequested

    // As high as one row, unless its place is higher.
    implicitHeight: list.y + list.tileHeight + Theme.between
    radius: Theme.cardRadius
    color: Theme.card
    border.color: Theme.line

    Accessible.role: Accessible.Grouping
    Accessible.name: "Results"

    function takeKeyboard() {
        list.forceActiveFocus(Qt.ShortcutFocusReason);
    }
    function togglePlay() {
        if (list.currentIndex < 0)
            list.currentIndex = 0;
        app.playback.togglePlay(app.generation.results.urlAt(list.currentIndex));
    }

    Label {
        id: heading
        x: Theme.outer
        y: Theme.between
        text: "Results"
        font.weight: Font.DemiBold
        wrapMode: Text.NoWrap
        Accessible.role: Accessible.Heading
    }
    Label {
        anchors.left: heading.right
        anchors.leftMargin: Theme.inner
        anchors.baseline: heading.baseline
        visible: list.count > 0
        text: strip.app.generation.results.count === 1 ? "1 file" : strip.app.generation.results.count + " files"
        color: Theme.secondary
        font.family: Theme.figures
        font.pixelSize: Theme.smallSize
        wrapMode: Text.NoWrap
    }
    ActionButton {
        id: toCandidates
        objectName: "showCandidates"
        anchors.right: inFinder.left
        anchors.verticalCenter: heading.verticalCenter
        height: 28
        visible: strip.app.candidates.sets > 0
        quiet: true
        text: "Candidates"
        onClicked: strip.candidatesRequested()
    }
    ActionButton {
        id: inFinder
        objectName: "showInFinder"
        anchors.right: parent.right
        anchors.rightMargin: Theme.inner
        anchors.verticalCenter: heading.verticalCenter
        height: 28
        quiet: true
        iconName: "folder"
        text: "Show in Finder"
        onClicked: strip.app.showInFileManager()
    }
    FileDrag {
        id: fileDrag
        objectName: "fileDrag"
        results: strip.app.generation.results
    }
    Label {
        objectName: "noResults"
        x: Theme.outer
        width: parent.width - 2 * Theme.outer
        anchors.verticalCenter: parent.verticalCenter
        visible: list.count === 0
        text: "The variations of the last run appear here."
        color: Theme.secondary
        horizontalAlignment: Text.AlignHCenter
    }
    TileGrid {
        id: list
        objectName: "results"
        x: Theme.outer
        y: heading.y + heading.height + Theme.inner + 2
        // With the gap after the last tile.
        width: strip.width - 2 * Theme.outer + Theme.inner
        height: strip.height - y - Theme.between
        visible: count > 0
        label: "Results"
        model: strip.app.generation.results

        Keys.onReturnPressed: strip.togglePlay()
        Keys.onEnterPressed: strip.togglePlay()

        delegate: ResultTile {
            width: list.shownWidth
            height: list.shownHeight
            app: strip.app
            selected: GridView.isCurrentItem
            focused: list.activeFocus && selected
            onSelectRequested: {
                list.currentIndex = index;
                list.forceActiveFocus(Qt.MouseFocusReason);
            }
            onDragRequested: place => fileDrag.begin(index, this, place)
            onDragEnded: fileDrag.giveUp()
        }
    }
    // After the results: these are nearer by Tab.
    ActionButton {
        objectName: "inspectResult"
        anchors.right: toCandidates.visible ? toCandidates.left : inFinder.left
        anchors.verticalCenter: heading.verticalCenter
        height: 28
        visible: list.count > 0 && strip.width >= 500
        quiet: true
        iconName: "magnifyingglass"
        text: "Inspect"
        tip: "I"
        onClicked: strip.inspectRequested()
    }
}
