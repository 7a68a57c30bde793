pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// The stored models of all folders. Return opens one, Delete moves it to the trash.
Sheet {
    id: sheet

    readonly property ModelsController stored: app.models

    function openRow(row: int) {
        if (row < 0 || row >= stored.models.length || stored.models[row].problem.length > 0)
            return;
        close();
        stored.open(row);
    }

    objectName: "models"
    title: qsTr("Stored models")
    onAboutToShow: {
        stored.look();
        list.forceActiveFocus(Qt.OtherFocusReason);
    }
    onClosed: stored.stopLooking()
    actions: ActionButton {
        objectName: "restoreModel"
        visible: sheet.stored.removedName.length > 0
        iconName: "arrow.uturn.backward"
        text: qsTr("Bring Back")
        tip: sheet.stored.removedName
        onClicked: sheet.stored.restore()
    }

    Label {
        id: summary
        width: parent.width
        text: sheet.stored.models.length > 0 ? sheet.stored.totalText : sheet.stored.isLooking ? qsTr("Looking for stored models…") : qsTr("No folder has been learned yet.")
        color: Theme.secondary
    }
    ListView {
        id: list
        objectName: "modelList"
        y: summary.height + Theme.inner
        width: parent.width
        height: parent.height - y
        clip: true
        spacing: Theme.tight
        boundsBehavior: Flickable.StopAtBounds
        activeFocusOnTab: true
        keyNavigationEnabled: true

        // Whatever comes and goes, the row stays that of its model; or, when that goes, that of the next one.
        readonly property var models: sheet.stored.models
        onModelsChanged: {
            const row = Math.max(0, currentIndex);
            const folder = model && row < model.length ? model[row].folder : "";
            model = models;
            const found = models.findIndex(stored => stored.folder === folder);
            currentIndex = found >= 0 ? found : Math.min(row, models.length - 1);
        }

        Accessible.role: Accessible.List
        Accessible.name: qsTr("Stored models")

        Keys.onReturnPressed: sheet.openRow(currentIndex)
        Keys.onEnterPressed: sheet.openRow(currentIndex)
        // One press, one model.
        Keys.onDeletePressed: event => {
            if (!event.isAutoRepeat)
                sheet.stored.remove(currentIndex);
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
        readonly property bool usable: modelData.problem.length === 0

        objectName: "model-" + index
        width: list.width - (bar.visible ? Theme.between : 0)
        height: texts.height + 2 * Theme.inner
        radius: Theme.controlRadius
        color: hover.hovered || (list.activeFocus && index === list.currentIndex) ? Theme.controlHover : Theme.control
        border.width: list.activeFocus && index === list.currentIndex ? 2 : 1
        border.color: list.activeFocus && index === list.currentIndex ? Theme.accent : Theme.line

        Accessible.role: Accessible.ListItem
        Accessible.name: modelData.name
        Accessible.description: usable ? [modelData.path, modelData.detail].join(qsTr(", ")) : modelData.problem
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
                text: entry.modelData.name
                font.weight: Font.DemiBold
                wrapMode: Text.NoWrap
                elide: Text.ElideMiddle
            }
            Label {
                width: parent.width
                visible: text.length > 0
                text: entry.modelData.path
                color: Theme.secondary
                font.pixelSize: Theme.smallSize
                wrapMode: Text.NoWrap
                elide: Text.ElideMiddle
            }
            Label {
                width: parent.width
                text: entry.usable ? entry.modelData.detail + " · " + entry.modelData.sizeText : entry.modelData.problem
                color: entry.usable ? Theme.secondary : Theme.warning
                font.pixelSize: Theme.smallSize
            }
        }
        Row {
            id: buttons
            anchors.right: parent.right
            anchors.rightMargin: Theme.inner
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.tight

            Label {
                visible: entry.modelData.isOpen
                height: Theme.controlHeight
                verticalAlignment: Text.AlignVCenter
                text: qsTr("In use")
                color: Theme.good
                font.pixelSize: Theme.smallSize
                wrapMode: Text.NoWrap
            }
            ActionButton {
                objectName: "openModel-" + entry.index
                visible: !entry.modelData.isOpen && entry.usable
                focusPolicy: Qt.NoFocus
                text: qsTr("Open")
                Accessible.name: qsTr("Open %1").arg(entry.modelData.name)
                onClicked: sheet.openRow(entry.index)
            }
            IconButton {
                objectName: "removeModel-" + entry.index
                visible: !entry.modelData.isOpen
                anchors.verticalCenter: parent.verticalCenter
                focusPolicy: Qt.NoFocus
                iconName: "xmark"
                text: entry.modelData.isRemains ? qsTr("Delete") : qsTr("Move to the trash")
                tip: qsTr("%1 (Del)").arg(text)
                Accessible.name: qsTr("%1: %2", "an action and what it is for").arg(text).arg(entry.modelData.name)
                onClicked: sheet.stored.remove(entry.index)
            }
        }
    }
}
