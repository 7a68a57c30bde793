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

    readonly property real tileHeight: 84
    // As high as one row, unless its place is higher.
    implicitHeight: list.y + tileHeight + Theme.between
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
    GridView {
        id: list
        objectName: "results"

        readonly property bool inRows: height >= 2 * strip.tileHeight + Theme.inner
        readonly property int columns: Math.max(1, Math.floor(width / (184 + Theme.inner)))

        x: Theme.outer
        y: heading.y + heading.height + Theme.inner + 2
        // With the gap after the last tile.
        width: strip.width - 2 * Theme.outer + Theme.inner
        height: strip.height - y - Theme.between
        cellWidth: inRows ? Math.floor(width / columns) : 184 + Theme.inner
        cellHeight: inRows ? strip.tileHeight + Theme.inner : height
        flow: inRows ? GridView.FlowLeftToRight : GridView.FlowTopToBottom
        clip: true
        visible: count > 0
        boundsBehavior: Flickable.StopAtBounds
        highlightMoveDuration: Theme.quick
        keyNavigationEnabled: true
        activeFocusOnTab: true
        // A mouse drags files out of the strip, not the strip.
        interactive: !mouse.hovered
        model: strip.app.generation.results

        Accessible.role: Accessible.List
        Accessible.name: "Results"

        onCountChanged: currentIndex = Math.min(count - 1, Math.max(0, currentIndex))
        Keys.onReturnPressed: strip.togglePlay()
        Keys.onEnterPressed: strip.togglePlay()
        Keys.onPressed: event => {
            const page = inRows ? columns * Math.max(1, Math.floor(height / cellHeight)) : columns;
            event.accepted = true;
            if (event.key === Qt.Key_Home)
                currentIndex = 0;
            else if (event.key === Qt.Key_End)
                currentIndex = count - 1;
            else if (event.key === Qt.Key_PageUp)
                currentIndex = Math.max(0, currentIndex - page);
            else if (event.key === Qt.Key_PageDown)
                currentIndex = Math.min(count - 1, currentIndex + page);
            else
                event.accepted = false;
        }

        delegate: ResultTile {
            width: list.cellWidth - Theme.inner
            height: list.inRows ? strip.tileHeight : list.height - (bar.visible ? 12 : 0)
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

        HoverHandler {
            id: mouse
            acceptedDevices: PointerDevice.Mouse
        }
        WheelHandler {
            acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
            orientation: Qt.Vertical | Qt.Horizontal
            enabled: list.contentWidth > list.width || list.contentHeight > list.height
            onWheel: event => {
                const pixels = Math.abs(event.pixelDelta.x) > Math.abs(event.pixelDelta.y) ? event.pixelDelta.x : event.pixelDelta.y;
                const angle = event.angleDelta.x !== 0 ? event.angleDelta.x : event.angleDelta.y;
                const way = pixels !== 0 ? pixels : angle / 120 * 90;
                if (list.inRows)
                    list.contentY = Math.max(list.originY, Math.min(list.originY + list.contentHeight - list.height, list.contentY - way));
                else
                    list.contentX = Math.max(list.originX, Math.min(list.originX + list.contentWidth - list.width, list.contentX - way));
            }
        }
        ThinScrollBar.horizontal: ThinScrollBar {
            id: bar
            visible: !list.inRows && list.contentWidth > list.width
        }
        ThinScrollBar.vertical: ThinScrollBar {
            visible: list.inRows && list.contentHeight > list.height
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
