import QtQuick
import QuillmereApp

// The samples of the corpus and the results on a map, in place of the sliders. What the pointer rests on and
// what the arrow keys come to is played; a click between the points makes a variation of that place. A drag
// sweeps through; with Shift, or the arrow keys with Ctrl, a region is selected.
Card {
    id: view

    required property AppModel app
    readonly property MapController map: app.map
    // The point that was played last, or that the keyboard is on; -1 for none. And its file.
    property int current: -1
    property url currentURL
    // The point that was clicked last, unless something else was played since; -1 for none.
    property int clicked: -1
    // The corners of the region, of which the keys move the second one.
    property point corner
    property point opposite

    signal closeRequested

    onCurrentChanged: currentURL = map.urlAt(current)

    function select(point: int) {
        current = point;
        clicked = -1;
    }
    // Plays or stops it.
    function play(point: int) {
        select(point);
        if (point >= 0)
            app.playback.togglePlay(map.urlAt(point));
    }
    // Unless it sounds already.
    function rest(point: int) {
        current = point;
        if (String(app.playback.playingURL) === String(map.urlAt(point)))
            return;
        clicked = -1;
        app.playback.play(map.urlAt(point));
    }
    // The second click on a point stops it; before the first it may sound because the pointer rests there.
    function click(point: int) {
        const again = point === clicked;
        select(point);
        clicked = point;
        if (again)
            app.playback.togglePlay(map.urlAt(point));
        else
            app.playback.play(map.urlAt(point));
    }
    // As the pointer goes: the newest of all that is passed.
    function sweepOver(point: int) {
        map.leavePlace();
        select(point);
        app.playback.play(map.urlAt(point));
    }
    function sweepAcross(place: point) {
        select(-1);
        map.audition(place);
    }
    function selectTo(here: point) {
        opposite = here;
        map.selectBetween(corner, opposite);
    }
    function extend(dx: int, dy: int) {
        const step = 30;
        if (!map.hasRegion) {
            corner = points.placeAt(points.middle());
            opposite = corner;
        }
        const from = points.positionOfPlace(opposite);
        selectTo(points.nearestOnMap(points.placeAt(Qt.point(from.x + step * dx, from.y - step * dy))));
        points.revealPlace(opposite);
    }
    // A sample of the corpus is none.
    function switchFavourite() {
        if (current >= map.clips)
            app.files.setFavourite(currentURL, !map.isFavouriteAt(current));
    }
    function go(dx: int, dy: int) {
        const next = points.neighbour(current, dx, dy);
        if (next === current)
            return;
        points.reveal(next);
        play(next);
    }
    function takeKeyboard() {
        points.forceActiveFocus(Qt.ShortcutFocusReason);
    }

    title: qsTr("Map")
    padding: 24
    trailing: Row {
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.tight

        IconButton {
            objectName: "hoverPlays"
            checkable: true
            checked: true
            iconName: "waveform"
            ink: checked ? Theme.accent : Theme.secondary
            text: qsTr("Play what the pointer rests on")
            onToggled: hoverSoon.plays = checked
        }
        IconButton {
            objectName: "zoomOut"
            iconName: "minus"
            text: qsTr("Zoom out")
            tip: qsTr("Zoom out (−)")
            enabled: points.zoom > 1
            onClicked: points.zoomAt(Qt.point(points.width / 2, points.height / 2), 1 / 1.5)
        }
        IconButton {
            objectName: "zoomIn"
            iconName: "plus"
            text: qsTr("Zoom in")
            tip: qsTr("Zoom in (+)")
            onClicked: points.zoomAt(Qt.point(points.width / 2, points.height / 2), 1.5)
        }
        IconButton {
            objectName: "closeMap"
            iconName: "xmark"
            text: qsTr("Back to the sliders")
            tip: qsTr("Back to the sliders (M)")
            onClicked: view.closeRequested()
        }
    }

    Label {
        id: caption
        width: view.bodyWidth
        text: view.map.isReady ? view.map.caption : qsTr("Placing the samples…")
        color: Theme.secondary
        font.pixelSize: Theme.smallSize
    }
    Rectangle {
        width: view.bodyWidth
        height: Math.max(120, view.height - y - parent.y - view.padding - told.height - parent.spacing)
        radius: Theme.controlRadius
        color: Theme.field
        border.width: points.activeFocus ? 2 : 1
        border.color: points.activeFocus ? Theme.accent : Theme.line
        clip: true

        PointMap {
            id: points
            objectName: "points"
            anchors.fill: parent
            anchors.margins: 2
            activeFocusOnTab: true
            map: view.map
            clipColor: Theme.secondary
            resultColor: Theme.accent

            Accessible.role: Accessible.Canvas
            Accessible.name: qsTr("Map of the samples")
            Accessible.description: [told.spoken, view.map.hasRegion ? selection.text : ""].filter(part => part.length > 0).join(qsTr(", "))
            Accessible.focusable: true
            Accessible.onPressAction: view.play(view.current)

            // The window's key for the selected result.
            Keys.onShortcutOverride: event => event.accepted = event.key === Qt.Key_Space && view.current >= 0
            Keys.onPressed: event => {
                event.accepted = true;
                const step = 60;
                const dx = event.key === Qt.Key_Left ? -1 : event.key === Qt.Key_Right ? 1 : 0;
                const dy = event.key === Qt.Key_Down ? -1 : event.key === Qt.Key_Up ? 1 : 0;
                const isArrow = dx !== 0 || dy !== 0;
                if (isArrow && event.modifiers & Qt.ControlModifier)
                    view.extend(dx, dy);
                else if (isArrow && event.modifiers & Qt.ShiftModifier)
                    points.pan(Qt.point(-step * dx, step * dy));
                else if (isArrow)
                    view.go(dx, dy);
                else if (event.key === Qt.Key_Escape && view.map.hasRegion && String(view.app.playback.playingURL).length === 0)
                    view.map.clearRegion();
                else if (event.key === Qt.Key_Plus || event.key === Qt.Key_Equal)
                    points.zoomAt(points.middle(), 1.5);
                else if (event.key === Qt.Key_Minus)
                    points.zoomAt(points.middle(), 1 / 1.5);
                else if (event.key === Qt.Key_0 || event.key === Qt.Key_Home)
                    points.fit();
                else if (event.key === Qt.Key_Space || event.key === Qt.Key_Return || event.key === Qt.Key_Enter)
                    view.play(view.current);
                else if (event.key === Qt.Key_F && event.modifiers === Qt.NoModifier)
                    view.switchFavourite();
                else
                    event.accepted = false;
            }

            // What stays where it is when a key zooms.
            function middle(): point {
                return view.current >= 0 ? positionOf(view.current) : Qt.point(width / 2, height / 2);
            }

            Connections {
                target: view.map

                function onPointsChanged() {
                    // Its number may be another file's by now.
                    if (String(view.map.urlAt(view.current)) !== String(view.currentURL))
                        view.select(-1);
                }
            }
            Rectangle {
                id: mark

                property point place

                function follow() {
                    place = points.positionOf(view.current);
                }

                x: place.x - width / 2
                y: place.y - height / 2
                width: 16
                height: 16
                radius: 8
                color: "transparent"
                border.width: 2
                border.color: Theme.text
                visible: view.current >= 0

                Connections {
                    target: points

                    function onViewChanged() {
                        mark.follow();
                    }
                }
                Connections {
                    target: view

                    function onCurrentChanged() {
                        mark.follow();
                    }
                }
            }
            Rectangle {
                id: region
                objectName: "region"

                function follow() {
                    const box = view.map.region;
                    const low = points.positionOfPlace(Qt.point(box.x, box.y));
                    const high = points.positionOfPlace(Qt.point(box.x + box.width, box.y + box.height));
                    x = low.x;
                    y = high.y;
                    width = high.x - low.x;
                    height = low.y - high.y;
                }

                visible: view.map.hasRegion
                color: "transparent"
                border.width: 1
                border.color: Theme.accent
                Component.onCompleted: follow()

                Connections {
                    target: points

                    function onViewChanged() {
                        region.follow();
                    }
                }
                Connections {
                    target: view.map

                    function onRegionChanged() {
                        region.follow();
                    }
                }
                Rectangle {
                    anchors.fill: parent
                    color: Theme.accent
                    opacity: 0.12
                }
            }
            Timer {
                id: hoverSoon

                property bool plays: true
                property int point: -1

                interval: 150
                onTriggered: if (plays && point >= 0)
                    view.rest(point)
            }
            MouseArea {
                id: pointer

                property point from
                property point last
                property bool drags: false
                property bool pans: false
                property bool selects: false
                // What the drag plays: a point, or, while that is -1, the place it passed last.
                property int swept: -1
                property point heard

                anchors.fill: parent
                acceptedButtons: Qt.LeftButton | Qt.MiddleButton | Qt.RightButton
                hoverEnabled: true
                // A narrow window scrolls under a finger, beside the map.
                preventStealing: true
                cursorShape: drags && pans ? Qt.ClosedHandCursor : hoverSoon.point >= 0 && !drags ? Qt.PointingHandCursor : Qt.CrossCursor

                function apart(one: point, other: point): real {
                    return Math.abs(one.x - other.x) + Math.abs(one.y - other.y);
                }
                function drag(here: point) {
                    if (pans)
                        points.pan(Qt.point(here.x - last.x, here.y - last.y));
                    else if (selects)
                        view.selectTo(points.placeAt(here));
                    else
                        sweep(here);
                }
                function sweep(here: point) {
                    const before = swept;
                    swept = points.pointAt(here);
                    if (swept >= 0 && swept !== before)
                        view.sweepOver(swept);
                    if (swept >= 0 || (before < 0 && apart(here, heard) < 12))
                        return;
                    heard = here;
                    view.sweepAcross(points.placeAt(here));
                }

                function rest(here: point) {
                    const point = points.pointAt(here);
                    if (point === hoverSoon.point)
                        return;
                    hoverSoon.point = point;
                    hoverSoon.restart();
                }

                onEntered: rest(Qt.point(mouseX, mouseY))
                onPressed: mouse => {
                    points.forceActiveFocus(Qt.MouseFocusReason);
                    hoverSoon.stop();
                    from = Qt.point(mouse.x, mouse.y);
                    last = from;
                    drags = false;
                    pans = mouse.button !== Qt.LeftButton;
                    selects = !pans && (mouse.modifiers & Qt.ShiftModifier) !== 0;
                    swept = -1;
                    heard = Qt.point(-100, -100);
                    if (selects)
                        view.corner = points.placeAt(from);
                }
                onPositionChanged: mouse => {
                    const here = Qt.point(mouse.x, mouse.y);
                    if (!pressed) {
                        rest(here);
                        return;
                    }
                    drags = drags || apart(here, from) > 6;
                    if (drags)
                        drag(here);
                    last = here;
                }
                onReleased: mouse => {
                    const dragged = drags;
                    drags = false;
                    if (selects && !dragged)
                        view.map.clearRegion();
                    if (dragged || selects || pans)
                        return;
                    const point = points.pointAt(Qt.point(mouse.x, mouse.y));
                    if (point >= 0) {
                        view.click(point);
                        return;
                    }
                    view.select(-1);
                    view.map.audition(points.placeAt(Qt.point(mouse.x, mouse.y)));
                }
                // Something else has taken the pointer.
                onCanceled: {
                    if (drags && !pans && !selects)
                        view.map.leavePlace();
                    drags = false;
                }
                onExited: {
                    hoverSoon.stop();
                    hoverSoon.point = -1;
                }
                onWheel: wheel => points.zoomAt(Qt.point(wheel.x, wheel.y), Math.pow(1.0015, wheel.angleDelta.y))
            }
            // What can be done with what is selected. Over the map, which is not to become another size by it.
            Rectangle {
                anchors.right: parent.right
                anchors.bottom: parent.bottom
                anchors.margins: Theme.inner
                width: selected.width + 2 * Theme.inner
                height: selected.height + 2 * Theme.tight
                visible: view.map.hasRegion
                radius: Theme.controlRadius
                color: Theme.popup
                border.color: Theme.controlLine

                // Nothing that is done here is meant for the map.
                MouseArea {
                    anchors.fill: parent
                    acceptedButtons: Qt.AllButtons
                    hoverEnabled: true
                    onWheel: wheel => wheel.accepted = true
                }
                Row {
                    id: selected
                    x: Theme.inner
                    y: Theme.tight
                    spacing: Theme.inner

                    Label {
                        id: selection
                        anchors.verticalCenter: parent.verticalCenter
                        text: qsTr("%n selected", "", view.map.selectedCount)
                        color: Theme.secondary
                        font.family: Theme.figures
                        font.pixelSize: Theme.smallSize
                        wrapMode: Text.NoWrap
                    }
                    ActionButton {
                        objectName: "moreLikeThese"
                        height: 28
                        enabled: view.map.selectedCount > 0 && view.app.candidates.canTry
                        text: qsTr("More Like These")
                        tip: qsTr("Candidates around the selected sounds")
                        onClicked: view.map.moreLikeThese()
                    }
                    IconButton {
                        objectName: "clearRegion"
                        anchors.verticalCenter: parent.verticalCenter
                        iconName: "xmark"
                        iconSize: 12
                        text: qsTr("Select nothing")
                        tip: qsTr("Select nothing (Esc)")
                        onClicked: {
                            view.map.clearRegion();
                            view.takeKeyboard();
                        }
                    }
                }
            }
        }
    }
    Label {
        id: told

        // Which ones are favourites may change; the rest does with current.
        property bool isFavourite: false
        readonly property string spoken: [text, isFavourite ? qsTr("favourite") : ""].filter(part => part.length > 0).join(qsTr(", "))

        function look() {
            isFavourite = view.map.isFavouriteAt(view.current);
        }

        width: view.bodyWidth
        text: view.current >= 0 ? view.map.nameAt(view.current) : qsTr("Click a point to hear it, or between the points for something new.")
        color: view.current >= 0 ? Theme.text : Theme.secondary
        font.pixelSize: Theme.smallSize
        wrapMode: Text.NoWrap
        elide: Text.ElideMiddle
        Accessible.name: spoken

        Connections {
            target: view

            function onCurrentChanged() {
                told.look();
            }
        }
        Connections {
            target: view.map

            function onFavouritesChanged() {
                told.look();
            }
        }
    }
}
