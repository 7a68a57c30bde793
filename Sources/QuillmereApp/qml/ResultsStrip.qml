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
    // So many rows more (or, negative, fewer).
    signal growthRequested(int by)

    readonly property ResultsModel files: app.generation.results
    readonly property real rowHeight: list.tileHeight + Theme.inner
    // The leftmost of what stands at the right of the heading.
    readonly property real buttonsX: inspect.visible ? inspect.x : toCandidates.visible ? toCandidates.x : inFinder.x

    // Of the button at the right, without its words.
    readonly property real roomForWords: {
        const before = heading.x + heading.width + (tools.visible ? Theme.inner + tools.width : 0);
        const others = (inspect.visible ? inspect.width : 0) + (toCandidates.visible ? toCandidates.width : 0);
        return width - before - Theme.inner - others - inFinder.leftPadding - inFinder.rightPadding - Theme.inner;
    }

    // As high as one row, unless its place is higher.
    implicitHeight: list.y + list.tileHeight + Theme.between
    radius: Theme.cardRadius
    color: Theme.card
    border.color: Theme.line

    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Results")

    function takeKeyboard() {
        list.forceActiveFocus(Qt.ShortcutFocusReason);
    }
    // The first one brings the current row along.
    function toggleSelected(row: int) {
        if (files.selectedCount === 0 && row !== list.currentIndex)
            files.toggleSelected(list.currentIndex);
        anchor = row;
        files.toggleSelected(row);
    }
    function select(file: url) {
        const row = files.rowOf(file);
        if (row < 0)
            return;
        files.clearSelection();
        list.currentIndex = row;
        list.positionViewAtIndex(row, GridView.Contain);
    }
    // The selection begins at the current row, unless there is one already.
    property int anchor: 0
    function selectUpTo(row: int) {
        if (files.selectedCount === 0)
            anchor = list.currentIndex;
        files.selectRange(anchor, row);
    }
    // If that is wanted.
    function playAtOnce() {
        if (app.playback.playsAtOnce && files.existsAt(list.currentIndex))
            app.playback.play(files.urlAt(list.currentIndex));
    }
    function togglePlay() {
        if (list.currentIndex < 0)
            list.currentIndex = 0;
        app.playback.togglePlay(app.generation.results.urlAt(list.currentIndex));
    }

    Keys.onPressed: event => {
        event.accepted = true;
        if (event.key === Qt.Key_F && event.modifiers === Qt.NoModifier)
            app.switchFavourites(list.currentIndex);
        else if (event.key === Qt.Key_A && event.modifiers === Qt.ControlModifier)
            files.selectAll();
        else if (event.key === Qt.Key_Escape && files.selectedCount > 0)
            files.clearSelection();
        else
            event.accepted = false;
    }

    Label {
        id: heading
        x: Theme.outer
        y: Theme.between
        text: qsTr("Results")
        font.weight: Font.DemiBold
        wrapMode: Text.NoWrap
        Accessible.role: Accessible.Heading
    }
    Label {
        id: number
        anchors.left: heading.right
        anchors.leftMargin: Theme.inner
        anchors.baseline: heading.baseline
        visible: strip.files.total > 0 && x + implicitWidth + Theme.inner + tools.width <= strip.buttonsX
        text: {
            if (strip.files.selectedCount > 0)
                return qsTr("%n selected", "", strip.files.selectedCount);
            if (strip.files.onlyFavourites)
                return qsTr("%1 of %2").arg(strip.files.count).arg(strip.files.total);
            return strip.files.total === 1 ? qsTr("1 file") : qsTr("%n files", "", strip.files.total);
        }
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
        text: qsTr("Candidates")
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
        // The icon alone where there is no room.
        text: besideIcon + words.advanceWidth <= strip.roomForWords ? words.text : ""
        tip: text.length > 0 ? "" : words.text
        Accessible.name: words.text
        Accessible.description: ""
        onClicked: strip.app.showInFileManager()
    }
    TextMetrics {
        id: words
        font: inFinder.font
        text: qsTr("Show in Finder")
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
        text: strip.files.total > 0 ? qsTr("None of these files is a favourite.") : qsTr("The variations of the last run appear here.")
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
        label: qsTr("Results")
        model: strip.app.generation.results

        Keys.onReturnPressed: strip.togglePlay()
        Keys.onEnterPressed: strip.togglePlay()
        Keys.onDeletePressed: event => {
            if (!event.isAutoRepeat)
                strip.app.trashResults(currentIndex);
        }
        onMoved: {
            strip.files.clearSelection();
            strip.playAtOnce();
        }
        onExtended: from => {
            if (strip.files.selectedCount === 0)
                strip.anchor = from;
            strip.files.selectRange(strip.anchor, currentIndex);
        }
        onGrowthRequested: by => strip.growthRequested(by)

        delegate: ResultTile {
            width: list.shownWidth
            height: list.shownHeight
            app: strip.app
            selected: GridView.isCurrentItem
            focused: list.activeFocus && selected
            onSelectRequested: modifiers => {
                if (modifiers & Qt.ShiftModifier)
                    strip.selectUpTo(index);
                else if (modifiers & Qt.ControlModifier)
                    strip.toggleSelected(index);
                list.currentIndex = index;
                list.forceActiveFocus(Qt.MouseFocusReason);
            }
            onClicked: modifiers => {
                if (modifiers & (Qt.ShiftModifier | Qt.ControlModifier))
                    return;
                strip.files.clearSelection();
                strip.playAtOnce();
            }
            onDragRequested: place => fileDrag.begin(index, this, place)
            onDragEnded: fileDrag.giveUp()
        }
    }
    // After the results: these are nearer by Tab.
    ActionButton {
        id: inspect
        objectName: "inspectResult"
        anchors.right: toCandidates.visible ? toCandidates.left : inFinder.left
        anchors.verticalCenter: heading.verticalCenter
        height: 28
        visible: list.count > 0 && strip.width >= 500
        quiet: true
        iconName: "magnifyingglass"
        text: qsTr("Inspect")
        tip: "I"
        onClicked: strip.inspectRequested()
    }
    Row {
        id: tools
        x: number.visible ? number.x + number.width + Theme.inner : heading.x + heading.width + Theme.inner
        anchors.verticalCenter: heading.verticalCenter
        visible: strip.files.total > 0

        SortButton {
            app: strip.app
        }
        IconButton {
            objectName: "onlyFavourites"
            iconName: strip.files.onlyFavourites ? "star.fill" : "star"
            ink: strip.files.onlyFavourites ? Theme.accent : Theme.secondary
            text: strip.files.onlyFavourites ? qsTr("Show all files") : qsTr("Show favourites only")
            onClicked: strip.files.onlyFavourites = !strip.files.onlyFavourites
        }
        IconButton {
            objectName: "makeKit"
            iconName: "square.grid.2x2"
            enabled: strip.app.kits.canMake && strip.files.count > 0
            text: qsTr("Make a kit for samplers")
            tip: qsTr("A kit for samplers of the selected sounds, each with three close variations")
            onClicked: strip.app.makeKit(list.currentIndex)
        }
    }
    // Other rows, or another order: the selection stays with its file.
    Connections {
        property url selected
        property url first
        property bool inSight
        property point place
        property int rows

        target: strip.files

        function remember() {
            selected = strip.files.urlAt(list.currentIndex);
            first = strip.files.urlAt(strip.anchor);
            inSight = list.currentInSight();
            place = Qt.point(list.contentX, list.contentY);
            rows = list.count;
        }
        function restore() {
            const row = strip.files.rowOf(selected);
            if (row >= 0)
                list.currentIndex = row;
            strip.anchor = Math.max(0, strip.files.rowOf(first));
        }
        // Who has scrolled away from it stays there.
        function comeBack() {
            if (!inSight && list.count === rows && strip.files.rowOf(selected) >= 0)
                list.stayAt(place, restore);
            else
                restore();
        }
        function onModelAboutToBeReset() {
            remember();
        }
        function onModelReset() {
            restore();
            Qt.callLater(comeBack);  // the view begins anew, too
        }
        function onLayoutAboutToBeChanged() {
            remember();
        }
        function onLayoutChanged() {
            comeBack();
        }
    }
}
