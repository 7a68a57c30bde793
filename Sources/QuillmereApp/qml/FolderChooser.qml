import QtQuick
import QuillmereApp

// The program's own folder chooser, for desktops without one: the folder that is shown is the one that is used.
Dialog {
    id: chooser

    required property FolderBrowser browser
    readonly property string found: {
        const files = browser.audioFiles;
        return files === 0 ? qsTr("No audio files in this folder itself.") : files === 1 ? qsTr("1 audio file in this folder.") : qsTr("%n audio files in this folder.", "", files);
    }

    signal chosen(url folder)

    function show(message: string, startFolder: url) {
        title = message;
        browser.begin(startFolder);
        open();
    }
    function use() {
        chosen(browser.folder);
        close();
    }

    width: Math.min(560, (parent ? parent.width : 560) - 2 * Theme.outer)
    height: Math.min(520, (parent ? parent.height : 520) - 2 * Theme.outer)
    onOpened: list.takeKeyboard()

    Item {
        anchors.fill: parent

        TextField {
            id: path
            objectName: "chooserPath"
            width: parent.width - up.width - Theme.inner
            text: chooser.browser.path
            Accessible.name: qsTr("Folder")
            // The first Return goes there, the next one uses it.
            onAccepted: {
                if (text === chooser.browser.path) {
                    chooser.use();
                    return;
                }
                chooser.browser.goTo(text);
                text = Qt.binding(() => chooser.browser.path);
            }
        }
        ActionButton {
            id: up
            objectName: "chooserUp"
            anchors.right: parent.right
            text: qsTr("Up")
            enabled: !chooser.browser.isTop
            onClicked: chooser.browser.goUp()
        }
        FolderList {
            id: list
            anchors.top: path.bottom
            anchors.topMargin: Theme.inner
            anchors.bottom: state.top
            anchors.bottomMargin: Theme.inner
            width: parent.width
            browser: chooser.browser
        }
        Label {
            id: state
            objectName: "chooserState"
            anchors.bottom: making.top
            anchors.bottomMargin: Theme.inner
            width: parent.width
            text: chooser.browser.problem.length > 0 ? chooser.browser.problem : chooser.found
            color: chooser.browser.problem.length > 0 ? Theme.error : Theme.secondary
            font.pixelSize: Theme.smallSize
            maximumLineCount: 2
            elide: Text.ElideMiddle
        }
        Row {
            id: making
            anchors.bottom: buttons.top
            anchors.bottomMargin: Theme.between
            width: parent.width
            spacing: Theme.inner

            TextField {
                id: name
                objectName: "newFolderName"
                width: parent.width - make.width - parent.spacing
                placeholderText: qsTr("Name of a new folder")
                Accessible.name: placeholderText
                onAccepted: make.clicked()
            }
            ActionButton {
                id: make
                objectName: "newFolder"
                text: qsTr("New Folder")
                enabled: name.text.trim().length > 0
                onClicked: {
                    chooser.browser.makeFolder(name.text);
                    name.clear();
                }
            }
        }
        Row {
            id: buttons
            anchors.bottom: parent.bottom
            anchors.right: parent.right
            spacing: Theme.inner

            ActionButton {
                objectName: "cancelChooser"
                text: qsTr("Cancel")
                onClicked: chooser.close()
            }
            ActionButton {
                objectName: "useFolder"
                text: qsTr("Use Folder")
                prominent: true
                enabled: String(chooser.browser.folder).length > 0
                onClicked: chooser.use()
            }
        }
    }
}
