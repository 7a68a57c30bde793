pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// What was made of this folder before. Return opens a run: its files are the results again, or its candidates are
// rendered once more; S sets the parameters and the seed that it had.
Sheet {
    id: sheet

    readonly property RunsController earlier: app.runs

    function openRow(row: int) {
        if (row < 0 || row >= earlier.runs.length || app.isBusy)
            return;
        close();
        earlier.open(row);
    }
    function forget() {
        // Unless it was opened again meanwhile.
        if (!visible)
            earlier.forget();
    }
    function useSettings(row: int) {
        if (row < 0 || row >= earlier.runs.length)
            return;
        close();
        earlier.useSettings(row);
    }

    objectName: "runs"
    title: qsTr("Earlier runs of “%1”").arg(app.corpus.name)
    onAboutToShow: {
        earlier.look();
        list.forceActiveFocus(Qt.OtherFocusReason);
    }
    onClosed: Qt.callLater(forget)  // not before a run of them is opened

    Label {
        id: summary
        width: parent.width
        text: {
            if (sheet.earlier.runs.length > 0)
                return qsTr("Return opens a run, S sets its parameters and its seed again.");
            return sheet.earlier.isLooking ? qsTr("Reading the journal…") : qsTr("The journal has no runs of this folder.");
        }
        color: Theme.secondary
    }
    ListView {
        id: list
        objectName: "runList"
        y: summary.height + Theme.inner
        width: parent.width
        height: parent.height - y
        clip: true
        spacing: Theme.tight
        boundsBehavior: Flickable.StopAtBounds
        activeFocusOnTab: true
        keyNavigationEnabled: true
        model: sheet.earlier.runs

        Accessible.role: Accessible.List
        Accessible.name: qsTr("Earlier runs")

        Keys.onReturnPressed: sheet.openRow(currentIndex)
        Keys.onEnterPressed: sheet.openRow(currentIndex)
        Keys.onPressed: event => {
            event.accepted = event.key === Qt.Key_S && event.modifiers === Qt.NoModifier;
            if (event.accepted)
                sheet.useSettings(currentIndex);
        }

        delegate: Entry {
        }
        ThinScrollBar.vertical: ThinScrollBar {
            id: bar
            visible: list.contentHeight > list.height
        }
    }

    component Entry: Rectangle {
        id: entry

        required property var modelData
        required property int index
        readonly property string settings: qsTr("%2 · Seed %1").arg(modelData.seed).arg(modelData.preset.length > 0 ? modelData.preset : qsTr("Own settings"))

        objectName: "run-" + index
        width: list.width - (bar.visible ? Theme.between : 0)
        height: texts.height + 2 * Theme.inner
        radius: Theme.controlRadius
        color: hover.hovered || (list.activeFocus && ListView.isCurrentItem) ? Theme.controlHover : Theme.control
        border.width: list.activeFocus && ListView.isCurrentItem ? 2 : 1
        border.color: list.activeFocus && ListView.isCurrentItem ? Theme.accent : Theme.line

        Accessible.role: Accessible.ListItem
        Accessible.name: [modelData.date, modelData.what].join(qsTr(", "))
        Accessible.description: [settings, modelData.place].filter(part => part.length > 0).join(qsTr(", "))
        Accessible.onPressAction: sheet.openRow(index)

        HoverHandler {
            id: hover
        }
        TapHandler {
            onTapped: {
                list.currentIndex = entry.index;
                list.forceActiveFocus(Qt.MouseFocusReason);
            }
            onDoubleTapped: sheet.openRow(entry.index)
        }
        Column {
            id: texts
            x: Theme.between
            y: Theme.inner
            width: buttons.x - x - Theme.inner
            spacing: 2

            Label {
                width: parent.width
                text: entry.modelData.date + "   " + entry.modelData.what
                font.family: Theme.figures
                font.weight: Font.DemiBold
                wrapMode: Text.NoWrap
                elide: Text.ElideMiddle
            }
            Label {
                width: parent.width
                text: entry.settings
                color: Theme.secondary
                font.pixelSize: Theme.smallSize
                wrapMode: Text.NoWrap
                elide: Text.ElideMiddle
            }
            Label {
                width: parent.width
                visible: text.length > 0
                text: entry.modelData.place
                color: Theme.secondary
                font.pixelSize: Theme.smallSize
                wrapMode: Text.NoWrap
                elide: Text.ElideMiddle
            }
        }
        Row {
            id: buttons
            anchors.right: parent.right
            anchors.rightMargin: Theme.inner
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.tight

            ActionButton {
                objectName: "openRun-" + entry.index
                enabled: !sheet.app.isBusy
                focusPolicy: Qt.NoFocus
                text: entry.modelData.isSet ? qsTr("Render") : qsTr("Open")
                Accessible.name: (entry.modelData.isSet ? qsTr("Render %1") : qsTr("Open %1")).arg(entry.modelData.date)
                onClicked: sheet.openRow(entry.index)
            }
            IconButton {
                objectName: "useRun-" + entry.index
                anchors.verticalCenter: parent.verticalCenter
                focusPolicy: Qt.NoFocus
                iconName: "arrow.uturn.backward"
                text: qsTr("Set its parameters and its seed again")
                tip: qsTr("%1 (S)").arg(text)
                Accessible.name: qsTr("%1: %2", "an action and what it is for").arg(text).arg(entry.modelData.date)
                onClicked: sheet.useSettings(entry.index)
            }
        }
    }
}
