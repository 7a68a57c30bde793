import QtQuick
import QuillmereApp

// One parameter: title, slider, value, and what can be done to it. Places for everything are reserved, so that
// nothing moves when a value changes or a button appears.
// All rows are one stop of the keyboard: Up and Down go from slider to slider, Return to the value and back, L
// locks, Delete resets.
Item {
    id: row

    required property CharacterController character
    // The roles of ParameterModel
    required property string parameterId
    required property string title
    required property string help
    required property string unit
    required property real lower
    required property real upper
    required property real step
    required property real value
    required property real position
    required property real defaultPosition
    required property string text
    required property bool isDefault
    required property bool locked

    // Widths of the columns, shared by all rows
    required property real titleWidth
    required property real valueWidth
    // Whether the slider's fill is in the accent colour
    property bool emphasised: true
    // Where Tab enters the rows
    property bool isStop: false

    // The keyboard has come to the slider.
    signal reached
    // The keyboard wants to go so many rows down (or, negative, up).
    signal moveRequested(int rows)
    // What it does is to be heard at seven places.
    readonly property bool pointed: hover.hovered
    readonly property bool sliderHasKeyboard: slider.activeFocus

    readonly property real lockWidth: 24
    readonly property real naturalTitleWidth: Math.ceil(titleText.implicitWidth) + 2
    // Of the longer end of the range
    readonly property real naturalValueWidth: {
        const decimals = step >= 1 ? 0 : step >= 0.1 ? 1 : 2;
        const longest = Math.max(figures.advanceWidth(lower.toFixed(decimals)), figures.advanceWidth(upper.toFixed(decimals)));
        const ending = unit.length > 0 ? figures.advanceWidth(" " + unit) : 0;
        return Math.ceil(longest + ending) + field.leftPadding + field.rightPadding + 2;
    }
    readonly property bool active: hover.hovered || slider.activeFocus || field.activeFocus || lockButton.activeFocus || reset.activeFocus

    implicitHeight: 28

    function takeKeyboard() {
        slider.forceActiveFocus(Qt.TabFocusReason);
    }

    Keys.onUpPressed: moveRequested(-1)
    Keys.onDownPressed: moveRequested(1)

    Accessible.role: Accessible.Grouping
    Accessible.name: title
    Accessible.description: help

    HoverHandler {
        id: hover
    }
    FontMetrics {
        id: figures
        font: field.font
    }
    Label {
        id: titleText
        x: row.lockWidth
        width: row.titleWidth
        anchors.verticalCenter: parent.verticalCenter
        text: row.title
        wrapMode: Text.NoWrap

        HoverHandler {
            id: titleHover
        }
        ToolTip {
            text: row.help
            shown: titleHover.hovered
        }
    }
    ThinSlider {
        id: slider
        objectName: "slider-" + row.parameterId
        anchors.left: titleText.right
        anchors.leftMargin: Theme.inner
        anchors.right: field.left
        anchors.rightMargin: Theme.tight
        anchors.verticalCenter: parent.verticalCenter
        height: parent.height - 4
        label: row.title
        valueText: row.text
        modelValue: row.value
        minimumValue: row.lower
        maximumValue: row.upper
        stepSize: row.step
        position: row.position
        defaultPosition: row.defaultPosition
        emphasised: row.emphasised
        tip: row.help
        inList: true
        activeFocusOnTab: row.isStop || activeFocus
        onActiveFocusChanged: if (activeFocus)
            row.reached()
        Keys.onReturnPressed: field.forceActiveFocus(Qt.TabFocusReason)
        Keys.onEnterPressed: field.forceActiveFocus(Qt.TabFocusReason)
        Keys.onPressed: event => {
            if (event.key === Qt.Key_L && event.modifiers === Qt.NoModifier) {
                row.character.parameters.setLocked(row.parameterId, !row.locked);
                event.accepted = true;
            }
        }
        onDragStarted: row.character.beginEdit()
        onDragEnded: row.character.endEdit()
        onMoved: place => row.character.parameters.setPosition(row.parameterId, place)
        onStepped: steps => row.character.parameters.nudge(row.parameterId, steps)
        onValueRequested: wanted => row.character.parameters.setValue(row.parameterId, wanted)
        onResetRequested: row.character.parameters.reset(row.parameterId)
    }
    TextField {
        id: field
        objectName: "value-" + row.parameterId

        // Typing breaks nothing: the model's text comes back when it ends.
        function commit() {
            row.character.parameters.setText(row.parameterId, text);
            restore();
        }
        function restore() {
            text = Qt.binding(() => row.text);
        }

        anchors.right: reset.left
        anchors.verticalCenter: parent.verticalCenter
        width: row.valueWidth
        height: 24
        leftPadding: 4
        rightPadding: 5
        quiet: true
        text: row.text
        horizontalAlignment: TextInput.AlignRight
        font.family: Theme.figures
        Accessible.name: qsTr("%1 value").arg(row.title)
        activeFocusOnTab: false
        onActiveFocusChanged: activeFocus ? selectAll() : deselect()
        onEditingFinished: commit()
        // Back to where Return came from, after it has been taken for the value.
        onAccepted: Qt.callLater(row.takeKeyboard)
        Keys.onEscapePressed: event => {
            event.accepted = text !== row.text;
            restore();
            selectAll();
        }
        Keys.onUpPressed: row.character.parameters.nudge(row.parameterId, 1)
        Keys.onDownPressed: row.character.parameters.nudge(row.parameterId, -1)
        Keys.onPressed: event => {
            // Nothing of the typing to take back: take back the last edit of the parameters.
            if (event.matches(StandardKey.Undo) && !canUndo)
                row.character.undo();
            else if (event.matches(StandardKey.Redo) && !canRedo)
                row.character.redo();
            else
                return;
            event.accepted = true;
        }
    }
    // There is one for every row, and at first none is needed.
    Loader {
        id: reset

        readonly property bool needed: !row.isDefault

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        width: 24
        height: 24
        active: false
        visible: needed
        onNeededChanged: active = active || needed
        sourceComponent: IconButton {
            objectName: "reset-" + row.parameterId
            iconSize: 14
            iconName: "arrow.counterclockwise"
            text: qsTr("Reset to default")
            focusPolicy: Qt.ClickFocus
            activeFocusOnTab: false
            Accessible.name: qsTr("Reset to default: %1").arg(row.title)
            onClicked: {
                // The button goes away under the keyboard: its place is the slider's.
                if (activeFocus)
                    slider.forceActiveFocus(Qt.TabFocusReason);
                row.character.parameters.reset(row.parameterId);
            }
        }
    }
    IconButton {
        id: lockButton
        objectName: "lock-" + row.parameterId
        anchors.verticalCenter: parent.verticalCenter
        width: 22
        height: 22
        iconSize: 13
        focusPolicy: Qt.ClickFocus
        activeFocusOnTab: false
        checkable: true
        checked: row.locked
        iconName: row.locked ? "lock.fill" : "lock.open"
        // Not by opacity: assistive technology would not see it.
        ink: row.locked ? Theme.text : row.active ? Theme.secondary : "transparent"
        text: row.locked ? qsTr("Unlock: let Randomise change it") : qsTr("Lock: keep it when randomising")
        Accessible.name: qsTr("Lock %1").arg(row.title)
        onClicked: row.character.parameters.setLocked(row.parameterId, !row.locked)
    }
}
