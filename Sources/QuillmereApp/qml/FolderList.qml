pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// The folders in a folder. A click goes into one; arrow keys and Return do, too, and Backspace goes up. Letters lead to
// the first folder that begins with them, as in a file manager.
Rectangle {
    id: frame

    required property FolderBrowser browser

    radius: Theme.controlRadius
    color: Theme.field
    border.width: list.activeFocus ? 2 : 1
    border.color: list.activeFocus ? Theme.accent : Theme.controlLine

    function takeKeyboard() {
        list.forceActiveFocus(Qt.OtherFocusReason);
    }

    ListView {
        id: list
        objectName: "chooserFolders"
        anchors.fill: parent
        anchors.margins: Theme.tight
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        activeFocusOnTab: true
        keyNavigationEnabled: true
        model: frame.browser.names

        Accessible.role: Accessible.List
        Accessible.name: qsTr("Folders")

        property string typed  // within a second

        function find(text: string) {
            typed += text.toLocaleLowerCase();
            forgetting.restart();
            const found = frame.browser.names.findIndex(name => name.toLocaleLowerCase().startsWith(typed));
            if (found >= 0)
                currentIndex = found;
        }
        Timer {
            id: forgetting
            interval: 1000
            onTriggered: list.typed = ""
        }
        function enterCurrent() {
            if (currentIndex >= 0)
                frame.browser.enter(frame.browser.names[currentIndex]);
        }
        Keys.onReturnPressed: enterCurrent()
        Keys.onEnterPressed: enterCurrent()
        Keys.onPressed: event => {
            if (event.key === Qt.Key_Backspace) {
                frame.browser.goUp();
                event.accepted = true;
            } else if (event.text >= " " && !(event.modifiers & (Qt.ControlModifier | Qt.AltModifier))) {
                find(event.text);
                event.accepted = true;
            }
        }

        delegate: Entry {
        }
        ThinScrollBar.vertical: ThinScrollBar {
            visible: list.contentHeight > list.height
        }
    }

    component Entry: Rectangle {
        id: entry

        required property string modelData
        required property int index

        objectName: "folder-" + modelData
        width: list.width
        height: 28
        radius: Theme.controlRadius - 3
        color: list.activeFocus && index === list.currentIndex ? Theme.accentSoft : pointer.containsMouse ? Theme.controlHover : "transparent"

        Accessible.role: Accessible.ListItem
        Accessible.name: modelData
        Accessible.onPressAction: frame.browser.enter(modelData)

        Icon {
            x: Theme.inner
            anchors.verticalCenter: parent.verticalCenter
            width: 16
            height: 16
            name: "folder"
            color: Theme.secondary
        }
        Label {
            x: 32
            width: parent.width - x - Theme.inner
            anchors.verticalCenter: parent.verticalCenter
            text: entry.modelData
            wrapMode: Text.NoWrap
            elide: Text.ElideMiddle
        }
        MouseArea {
            id: pointer
            anchors.fill: parent
            hoverEnabled: true
            onClicked: frame.browser.enter(entry.modelData)
        }
    }
}
