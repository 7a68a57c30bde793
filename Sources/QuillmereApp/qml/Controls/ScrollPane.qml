import QtQuick
import QtQuick.Templates as T
import QuillmereApp

// Content that scrolls up and down: by wheel, by finger, by its bar, and by itself when the keyboard moves to
// something out of view. The mouse does not drag it, so that it can be used for the controls in it.
Flickable {
    id: pane

    property bool scrolls: true
    readonly property bool overflows: scrolls && contentHeight > height + 0.5

    // Of what is taller than the pane its beginning.
    function reveal(item: Item) {
        if (!item || !overflows)
            return;
        const top = item.mapToItem(contentItem, 0, 0).y;
        const margin = Theme.outer;
        if (top - margin < contentY)
            contentY = Math.max(0, top - margin);
        else if (top + item.height + margin > contentY + height)
            contentY = Math.min(contentHeight - height, top - margin, top + item.height + margin - height);
    }
    function contains(item: Item): bool {
        for (let up = item; up; up = up.parent) {
            if (up === contentItem)
                return true;
        }
        return false;
    }

    contentWidth: width
    boundsBehavior: Flickable.StopAtBounds
    flickableDirection: Flickable.VerticalFlick
    clip: overflows
    interactive: overflows && !mouse.hovered
    onOverflowsChanged: if (!overflows)
        contentY = 0
    onHeightChanged: contentY = Math.max(0, Math.min(contentY, contentHeight - height))
    onContentHeightChanged: contentY = Math.max(0, Math.min(contentY, contentHeight - height))

    Connections {
        target: pane.Window.window
        ignoreUnknownSignals: true

        function onActiveFocusItemChanged() {
            const item = pane.Window.window.activeFocusItem;
            if (item && pane.contains(item))
                pane.reveal(item);
        }
    }
    HoverHandler {
        id: mouse
        acceptedDevices: PointerDevice.Mouse
    }
    WheelHandler {
        acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad
        enabled: pane.overflows
        onWheel: event => {
            const way = event.pixelDelta.y !== 0 ? event.pixelDelta.y : event.angleDelta.y / 120 * 60;
            pane.contentY = Math.max(0, Math.min(pane.contentHeight - pane.height, pane.contentY - way));
        }
    }
    T.ScrollBar.vertical: ThinScrollBar {
        visible: pane.overflows
    }
}
