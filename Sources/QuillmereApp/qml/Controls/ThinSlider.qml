import QtQuick
import QuillmereApp

// A slider over value, filled from the default's place to the value's place so that a departure from the
// default is seen at a glance. It shows what it is told (value, position) and asks for changes by signals:
// the places come from elsewhere, so that they may be logarithmic. An Item, because a Control cannot be made a
// slider for assistive technology.
Item {
    id: control

    property string label
    property string valueText
    property string tip
    property real modelValue: 0
    property real value: 0  // modelValue, but for moments when assistive technology writes it
    property real minimumValue: 0
    property real maximumValue: 1
    property real stepSize: 0.01
    property real position: 0         // of the value, 0 ... 1
    property real defaultPosition: 0  // where the fill starts and the mark stands
    property bool marked: true        // whether there is a mark at the default
    property bool emphasised: true    // the fill in the accent colour
    // Up and Down go from slider to slider, by whoever holds them, and are no steps.
    property bool inList: false
    readonly property bool pressed: area.pressed
    readonly property bool hovered: area.containsMouse
    // Whether the keyboard goes to it and came by a key
    readonly property bool visualFocus: activeFocus && !reachedByMouse
    property bool reachedByMouse: false
    readonly property real handleSize: 14
    // So far from the default that more than a sliver of what lies between is seen beside the handle.
    readonly property bool departs: Math.abs(xOf(defaultPosition) - xOf(position)) > handleSize / 2 + 1

    // A drag begins and ends; in between the handle wants to be at place (0 ... 1).
    signal dragStarted
    signal dragEnded
    signal moved(real place)
    // That many steps up (or, negative, down).
    signal stepped(int steps)
    // Assistive technology wants that value.
    signal valueRequested(real wanted)
    signal resetRequested

    function placeAt(x: real): real {
        return Math.max(0, Math.min(1, (x - handleSize / 2) / Math.max(1, width - handleSize)));
    }
    function xOf(place: real): real {
        return handleSize / 2 + place * (width - handleSize);
    }

    implicitWidth: 120
    implicitHeight: 24
    activeFocusOnTab: true
    onActiveFocusChanged: if (!activeFocus)
        reachedByMouse = false

    Accessible.role: Accessible.Slider
    Accessible.name: label
    Accessible.description: valueText
    Accessible.onIncreaseAction: stepped(1)
    Accessible.onDecreaseAction: stepped(-1)

    onValueChanged: {
        if (value === modelValue)
            return;
        valueRequested(value);
        value = modelValue;
    }

    Binding {
        target: control
        property: "value"
        value: control.modelValue
        restoreMode: Binding.RestoreNone
    }

    Keys.onLeftPressed: stepped(-1)
    Keys.onRightPressed: stepped(1)
    Keys.onDownPressed: event => {
        event.accepted = !inList;
        if (!inList)
            stepped(-1);
    }
    Keys.onUpPressed: event => {
        event.accepted = !inList;
        if (!inList)
            stepped(1);
    }
    Keys.onPressed: event => {
        event.accepted = true;
        if (event.key === Qt.Key_PageUp)
            stepped(10);
        else if (event.key === Qt.Key_PageDown)
            stepped(-10);
        else if (event.key === Qt.Key_Home)
            moved(0);
        else if (event.key === Qt.Key_End)
            moved(1);
        else if (event.key === Qt.Key_Delete || event.key === Qt.Key_Backspace)
            resetRequested();
        else
            event.accepted = false;
    }

    Item {
        anchors.fill: parent

        // The track
        Rectangle {
            x: control.handleSize / 2
            width: parent.width - control.handleSize
            height: 3
            radius: 1.5
            anchors.verticalCenter: parent.verticalCenter
            color: control.enabled ? Theme.track : Theme.line
            opacity: 0.55
        }
        // The default
        Rectangle {
            visible: control.marked && control.departs
            x: Math.round(control.xOf(control.defaultPosition)) - 1
            width: 2
            height: 9
            radius: 1
            anchors.verticalCenter: parent.verticalCenter
            color: control.enabled ? Theme.track : Theme.line
        }
        // From the default to the value
        Rectangle {
            readonly property real from: control.xOf(Math.min(control.position, control.defaultPosition))
            readonly property real to: control.xOf(Math.max(control.position, control.defaultPosition))

            visible: control.departs
            x: from
            width: to - from
            height: 3
            radius: 1.5
            anchors.verticalCenter: parent.verticalCenter
            color: !control.enabled ? Theme.disabled : control.emphasised ? Theme.accent : Theme.track
        }
        // The handle
        Rectangle {
            x: control.xOf(control.position) - width / 2
            width: control.handleSize
            height: control.handleSize
            radius: width / 2
            anchors.verticalCenter: parent.verticalCenter
            color: !control.enabled ? Theme.control : control.pressed ? Theme.accentPressed : control.hovered || control.visualFocus ? Theme.accent : Theme.handle
            border.width: 2
            border.color: Theme.card
        }
    }

    MouseArea {
        id: area

        // From the handle's middle to the pointer, so that a press on the handle alone moves nothing.
        property real grip: 0
        property bool dragging: false
        // Who has begun to use it needs no help; until the pointer comes back.
        property bool used: false

        anchors.fill: parent
        hoverEnabled: true
        preventStealing: true

        onPressed: mouse => {
            const handleX = control.xOf(control.position);
            const onHandle = Math.abs(mouse.x - handleX) <= control.handleSize / 2 + 1;
            used = true;
            control.reachedByMouse = true;
            control.forceActiveFocus(Qt.MouseFocusReason);
            dragging = true;
            grip = onHandle ? mouse.x - handleX : 0;
            control.dragStarted();
            if (!onHandle)
                control.moved(control.placeAt(mouse.x));
        }
        onPositionChanged: mouse => {
            if (dragging)
                control.moved(control.placeAt(mouse.x - grip));
        }
        onExited: used = false
        onReleased: finish()
        onCanceled: finish()
        onDoubleClicked: {
            finish();
            control.resetRequested();
        }

        function finish() {
            if (!dragging)
                return;
            dragging = false;
            control.dragEnded();
        }
    }

    FocusRing {
        shown: control.visualFocus
        around: 4
        anchors.margins: 0
    }
    ToolTip {
        text: control.tip
        shown: control.hovered && !area.used
    }
}
