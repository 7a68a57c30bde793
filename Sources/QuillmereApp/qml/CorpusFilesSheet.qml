pragma ComponentBehavior: Bound

import QtQuick
import QuillmereApp

// The files of the corpus, and what becomes of each when it is learned.
Sheet {
    id: sheet

    readonly property CorpusFilesController files: app.corpusFiles

    function colorOf(use: string): color {
        if (use === "fine")
            return Theme.secondary;
        return use === "cut" || use === "copy" ? Theme.text : Theme.warning;
    }

    objectName: "corpusFiles"
    title: qsTr("Files of “%1”").arg(app.corpus.name)
    onAboutToShow: {
        files.read();
        list.forceActiveFocus(Qt.OtherFocusReason);
    }
    onClosed: files.cancel()

    Label {
        id: summary
        width: parent.width - (which.visible ? which.width + Theme.between : 0)
        height: Math.max(implicitHeight, which.height)
        verticalAlignment: Text.AlignVCenter
        text: sheet.files.isRead ? sheet.files.summary : sheet.files.isReading ? qsTr("Reading the samples…") : qsTr("The files could not be read.")
        color: Theme.secondary
    }
    Segments {
        id: which
        objectName: "whichFiles"
        anchors.right: parent.right
        visible: sheet.files.conspicuous > 0
        width: Math.min(220, parent.width / 2)
        label: qsTr("Which files")
        labels: [qsTr("All"), qsTr("Conspicuous")]
        currentIndex: sheet.files.showsAll ? 0 : 1
        onChosen: index => sheet.files.showsAll = index === 0
    }
    ProgressBar {
        y: summary.height + Theme.inner
        width: parent.width
        visible: sheet.files.isReading
        label: qsTr("Reading the samples")
        indeterminate: true
    }
    ListView {
        id: list
        objectName: "corpusFileList"
        y: summary.height + Theme.inner
        width: parent.width
        height: parent.height - y
        clip: true
        boundsBehavior: Flickable.StopAtBounds
        activeFocusOnTab: true
        keyNavigationEnabled: true
        currentIndex: -1
        model: sheet.files.files

        Accessible.role: Accessible.List
        Accessible.name: qsTr("Files")

        onActiveFocusChanged: if (activeFocus && currentIndex < 0 && count > 0)
            currentIndex = 0
        onCountChanged: currentIndex = count > 0 ? 0 : -1
        Keys.onSpacePressed: toggle()
        Keys.onReturnPressed: toggle()
        Keys.onEnterPressed: toggle()

        function toggle() {
            if (currentIndex >= 0)
                sheet.app.playback.togglePlay(sheet.files.files.urlAt(currentIndex));
        }

        delegate: SoundRow {
            required property int index
            required property string name
            required property url url
            required property string use
            required property string useText
            required detail
            required property string durationText

            objectName: "file-" + index
            width: list.width - (bar.visible ? Theme.between : 0)
            app: sheet.app
            sounds: [{
                    "name": name,
                    "url": url
                }]
            title: name
            value: (durationText.length > 0 ? durationText + "   " : "") + useText
            valueColor: sheet.colorOf(use)
            selected: index === list.currentIndex && list.activeFocus
            onActiveFocusChanged: if (activeFocus)
                list.currentIndex = index
        }

        ThinScrollBar.vertical: ThinScrollBar {
            id: bar
            visible: list.contentHeight > list.height
        }
    }
}
