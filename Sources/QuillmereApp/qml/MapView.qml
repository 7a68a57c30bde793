import QtQuick
import QuillmereApp

// The samples of the corpus and the results on a map, in place of the sliders. What the pointer rests on and
// what the arrow keys come to is played; a click between the points makes a variation of that place.
Card {
    id: view

    required property AppModel app
    readonly property MapController map: app.map
    // The point that was played last, or that the keyboard is on; -1 for none. And its file.
    property int current: -1
    property url currentURL
    // The point that was clicked last, unless something else was played since; -1 for none.
    property int clicked: -1

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

    title: "Map"
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
            text: "Play what the pointer rests on"
            onToggled: hoverSoon.plays = checked
        }
        IconButton {
            objectName: "zoomOut"
            iconName: "minus"
            text: "Zoom out"
            tip: "Zoom out (−)"
            enabled: points.zoom > 1
            onClicked: points.zoomAt(Qt.point(points.width / 2, points.height / 2), 1 / 1.5)
        }
        IconButton {
            objectName: "zoomIn"
            iconName: "plus"
            text: "Zoom in"
            tip: "Zoom in (+)"
            onClicked: points.zoomAt(Qt.point(points.width / 2, points.height / 2), 1.5)
        }
        IconButton {
            objectName: "closeMap"
            iconName: "xmark"
            text: "Back to the sliders"
            tip: "Back to the sliders (M)"
            onClicked: view.closeRequested()
        }
    }

    Label {
        id: caption
        width: view.bodyWidth
        text: view.map.isReady ? view.map.caption : "Placing the samples…"
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
            Accessible.name: "Map of the samples"
            Accessible.description: told.text
            Accessible.focusable: true
            Accessible.onPressAction: view.play(view.current)

            // The window's key for the selected result.
            Keys.onShortcutOverride: event => event.accepted = event.key === Qt.Key_Space && view.current >= 0
            Keys.onPressed: event => {
                event.accepted = true;
                const step = 60;
                if (event.modifiers & Qt.ShiftModifier && [Qt.Key_Left, Qt.Key_Right, Qt.Key_Up, Qt.Key_Down].includes(event.key))
                    points.pan(Qt.point(event.key === Qt.Key_Left ? step : event.key === Qt.Key_Right ? -step : 0, event.key === Qt.Key_Up ? step : event.key === Qt.Key_Down ? -step : 0));
                else if (event.key === Qt.Key_Left)
                    view.go(-1, 0);
                else if (event.key === Qt.Key_Right)
                    view.go(1, 0);
                else if (event.key === Qt.Key_Up)
                    view.go(0, 1);
                else if (event.key === Qt.Key_Down)
                    view.go(0, -1);
                else if (event.key === Qt.Key_Plus || event.key === Qt.Key_Equal)
                    points.zoomAt(points.middle(), 1.5);
                else if (event.key === Qt.Key_Minus)
                    points.zoomAt(points.middle(), 1 / 1.5);
                else if (event.key === Qt.Key_0 || event.key === Qt.Key_Home)
                    points.fit();
                else if (event.key === Qt.Key_Space || event.key === Qt.Key_Return || event.key === Qt.Key_Enter)
                    view.play(view.current);
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

                anchors.fill: parent
                hoverEnabled: true
                cursorShape: drags ? Qt.ClosedHandCursor : hoverSoon.point >= 0 ? Qt.PointingHandCursor : Qt.CrossCursor

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
                }
                onPositionChanged: mouse => {
                    const here = Qt.point(mouse.x, mouse.y);
                    if (!pressed) {
                        rest(here);
                        return;
                    }
                    drags = drags || Math.abs(here.x - from.x) + Math.abs(here.y - from.y) > 6;
                    if (drags)
                        points.pan(Qt.point(here.x - last.x, here.y - last.y));
                    last = here;
                }
                onReleased: mouse => {
                    const dragged = drags;
                    drags = false;
                    if (dragged)
                        return;
                    const point = points.pointAt(Qt.point(mouse.x, mouse.y));
                    if (point >= 0) {
                        view.click(point);
                        return;
                    }
                    view.select(-1);
                    view.map.audition(points.placeAt(Qt.point(mouse.x, mouse.y)));
                }
                onExited: {
                    hoverSoon.stop();
                    hoverSoon.point = -1;
                }
                onWheel: wheel => points.zoomAt(Qt.point(wheel.x, wheel.y), Math.pow(1.0015, wheel.angleDelta.y))
            }
        }
    }
    Label {
        id: told
        width: view.bodyWidth
        text: view.current >= 0 ? view.map.nameAt(view.current) : "Click a point to hear it, or between the points for something new."
        color: view.current >= 0 ? Theme.text : Theme.secondary
        font.pixelSize: Theme.smallSize
        wrapMode: Text.NoWrap
        elide: Text.ElideMiddle
    }
}
