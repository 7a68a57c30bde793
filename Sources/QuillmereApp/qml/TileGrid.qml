import QtQuick
import QuillmereApp

// Tiles side by side in a strip, or in rows where there is room for more than one. Arrow keys, Home, End and
// the page keys move along.
GridView {
    id: grid

    property string label
    readonly property real tileHeight: 84
    readonly property real narrowest: 184
    readonly property bool inRows: height >= 2 * tileHeight + Theme.inner
    readonly property int columns: Math.max(1, Math.floor(width / (narrowest + Theme.inner)))
    // Of a tile in its cell
    readonly property real shownWidth: cellWidth - Theme.inner
    readonly property real shownHeight: inRows ? tileHeight : height - (bar.visible ? 12 : 0)

    // A key has made another tile the current one.
    signal moved
    // The same with Shift held: from that tile on.
    signal extended(int from)
    // So many rows more (or, negative, fewer).
    signal growthRequested(int by)

    function showCurrent() {
        positionViewAtIndex(currentIndex, GridView.Contain);
    }
    function currentInSight(): bool {
        const tile = currentItem;
        return tile !== null && tile.x + tile.width > contentX && tile.x < contentX + width && tile.y + tile.height > contentY && tile.y < contentY + height;
    }
    // Does what makes another tile the current one without going there.
    function stayWhile(act) {
        stayAt(Qt.point(contentX, contentY), act);
    }
    function stayAt(place: point, act) {
        act();
        showCurrent();  // at once: a highlight on its way would take the view along
        contentX = place.x;
        contentY = place.y;
    }
    function go(key: int): bool {
        const page = inRows ? columns * Math.max(1, Math.floor(height / cellHeight)) : columns;
        if (key === Qt.Key_Left)
            moveCurrentIndexLeft();
        else if (key === Qt.Key_Right)
            moveCurrentIndexRight();
        else if (key === Qt.Key_Up)
            moveCurrentIndexUp();
        else if (key === Qt.Key_Down)
            moveCurrentIndexDown();
        else if (key === Qt.Key_Home)
            currentIndex = 0;
        else if (key === Qt.Key_End)
            currentIndex = count - 1;
        else if (key === Qt.Key_PageUp)
            currentIndex = Math.max(0, currentIndex - page);
        else if (key === Qt.Key_PageDown)
            currentIndex = Math.min(count - 1, currentIndex + page);
        else
            return false;
        return true;
    }

    cellWidth: inRows ? Math.floor(width / columns) : narrowest + Theme.inner
    cellHeight: inRows ? tileHeight + Theme.inner : height
    flow: inRows ? GridView.FlowLeftToRight : GridView.FlowTopToBottom
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    highlightMoveDuration: Theme.quick
    activeFocusOnTab: true
    // A mouse drags tiles out of the strip, not the strip.
    interactive: !mouse.hovered

    Accessible.role: Accessible.List
    Accessible.name: label

    // Whatever becomes of the room, the current tile stays in sight.
    onWidthChanged: Qt.callLater(showCurrent)
    onInRowsChanged: Qt.callLater(showCurrent)
    onCountChanged: currentIndex = Math.min(count - 1, Math.max(0, currentIndex))
    Keys.onPressed: event => {
        const before = currentIndex;
        const modifiers = event.modifiers & ~Qt.KeypadModifier;
        const isVertical = event.key === Qt.Key_Up || event.key === Qt.Key_Down;
        event.accepted = false;
        if (modifiers === Qt.ControlModifier && isVertical) {
            event.accepted = true;
            growthRequested(event.key === Qt.Key_Up ? 1 : -1);
        } else if (modifiers === Qt.NoModifier || modifiers === Qt.ShiftModifier) {
            event.accepted = go(event.key);
        }
        if (currentIndex === before)
            return;
        if (modifiers === Qt.ShiftModifier)
            extended(before);
        else
            moved();
    }

    HoverHandler {
        id: mouse
        acceptedDevices: PointerDevice.Mouse
    }
    WheelHandler {
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        orientation: Qt.Vertical | Qt.Horizontal
        enabled: grid.contentWidth > grid.width || grid.contentHeight > grid.height
        onWheel: event => {
            const pixels = Math.abs(event.pixelDelta.x) > Math.abs(event.pixelDelta.y) ? event.pixelDelta.x : event.pixelDelta.y;
            const angle = event.angleDelta.x !== 0 ? event.angleDelta.x : event.angleDelta.y;
            const way = pixels !== 0 ? pixels : angle / 120 * 90;
            if (grid.inRows)
                grid.contentY = Math.max(grid.originY, Math.min(grid.originY + grid.contentHeight - grid.height, grid.contentY - way));
            else
                grid.contentX = Math.max(grid.originX, Math.min(grid.originX + grid.contentWidth - grid.width, grid.contentX - way));
        }
    }
    ThinScrollBar.horizontal: ThinScrollBar {
        id: bar
        visible: !grid.inRows && grid.contentWidth > grid.width
    }
    ThinScrollBar.vertical: ThinScrollBar {
        visible: grid.inRows && grid.contentHeight > grid.height
    }
}
