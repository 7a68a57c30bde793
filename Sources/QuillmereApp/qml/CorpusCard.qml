import QtQuick
import QuillmereApp

// Which folder is learned from, and what is in it.
Card {
    id: card

    required property AppModel app
    // What would be dropped now would become the corpus.
    property bool targeted: false

    signal filesRequested
    signal modelsRequested

    objectName: "corpusCard"
    number: "1"
    title: qsTr("Sample corpus")
    highlighted: targeted

    // Before the first choice
    Label {
        width: card.bodyWidth
        visible: !card.app.corpus.isChosen
        text: qsTr("Choose the folder of audio samples to learn from")
    }
    Label {
        width: card.bodyWidth
        visible: !card.app.corpus.isChosen
        text: qsTr("Choose a folder of WAV, AIFF, FLAC, MP3 or M4A files. A few dozen is plenty.")
        color: Theme.secondary
        font.pixelSize: Theme.smallSize
    }

    // The chosen folder
    Item {
        width: card.bodyWidth
        height: name.height + path.height + 2
        visible: card.app.corpus.isChosen

        Icon {
            id: folder
            name: "folder"
            color: Theme.secondary
            width: 18
            height: 18
            y: 1
        }
        Label {
            id: name
            x: folder.width + Theme.inner
            width: parent.width - x
            text: card.app.corpus.name
            font.weight: Font.DemiBold
            wrapMode: Text.NoWrap
            elide: Text.ElideMiddle
        }
        Label {
            id: path
            x: name.x
            y: name.height + 2
            width: name.width
            text: card.app.corpus.path
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
            wrapMode: Text.NoWrap
            elide: Text.ElideMiddle
        }
        HoverHandler {
            id: pathHover
        }
        ToolTip {
            text: card.app.corpus.path
            shown: pathHover.hovered && (name.truncated || path.truncated)
        }
    }
    Column {
        width: card.bodyWidth
        visible: card.app.corpus.isScanning
        spacing: Theme.inner - 2

        Item {
            width: parent.width
            height: scanning.height

            Label {
                id: scanning
                text: qsTr("Scanning")
                color: Theme.secondary
                font.pixelSize: Theme.smallSize
            }
            // On the same line, so that nothing moves when it comes.
            Label {
                anchors.left: scanning.right
                anchors.leftMargin: Theme.inner
                anchors.right: scanned.left
                anchors.rightMargin: Theme.inner
                text: card.app.corpus.scanTimeLeft
                color: Theme.secondary
                font.family: Theme.figures
                font.pixelSize: Theme.smallSize
                wrapMode: Text.NoWrap
                elide: Text.ElideRight
            }
            Label {
                id: scanned
                anchors.right: parent.right
                text: card.app.corpus.scanTotal > 0 ? qsTr("%1 of %2").arg(card.app.corpus.scanDone).arg(card.app.corpus.scanTotal) : ""
                color: Theme.secondary
                font.family: Theme.figures
                font.pixelSize: Theme.smallSize
                wrapMode: Text.NoWrap
            }
        }
        ProgressBar {
            width: parent.width
            label: qsTr("Scanning")
            indeterminate: card.app.corpus.scanTotal === 0
            value: card.app.corpus.scanTotal > 0 ? card.app.corpus.scanDone / card.app.corpus.scanTotal : 0
        }
    }
    Item {
        width: card.bodyWidth
        height: counts.height
        visible: card.app.corpus.hasSummary && !card.app.corpus.isEmpty

        IconButton {
            id: showFiles
            objectName: "showFiles"
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            height: 20
            iconName: "magnifyingglass"
            text: qsTr("Show the files")
            tip: qsTr("What becomes of each file (Ctrl+L)")
            onClicked: card.filesRequested()
        }
        Flow {
            id: counts
            width: showFiles.x - Theme.tight
            anchors.verticalCenter: parent.verticalCenter
            spacing: Theme.inner

            Label {
                text: qsTr("%n samples", "", card.app.corpus.fileCount)
                wrapMode: Text.NoWrap
            }
            Dot {
            }
            Label {
                text: card.app.corpus.totalDuration
                wrapMode: Text.NoWrap
            }
            Dot {
            }
            Label {
                text: Array.from(card.app.corpus.sampleRates).join(", ")
                width: Math.min(implicitWidth, counts.width)
            }
        }
    }
    Note {
        width: card.bodyWidth
        visible: card.app.corpus.isEmpty
        iconName: "exclamationmark.triangle.fill"
        text: qsTr("No audio files found in this folder.")
        ink: Theme.warning
        textColor: Theme.text
    }
    Note {
        width: card.bodyWidth
        visible: card.app.corpus.hasFewSamples
        iconName: "exclamationmark.triangle.fill"
        text: qsTr("Very few samples — expect variations that stay close to them.")
        ink: Theme.warning
        textColor: Theme.text
    }
    Note {
        width: card.bodyWidth
        visible: card.app.corpus.unreadable > 0
        iconName: "exclamationmark.triangle.fill"
        text: card.app.corpus.unreadable === 1 ? qsTr("1 file could not be read and is left out.") : qsTr("%n files could not be read and are left out.", "", card.app.corpus.unreadable)
        ink: Theme.warning
        textColor: Theme.text
    }
    Note {
        width: card.bodyWidth
        visible: card.app.corpus.variations > 0
        iconName: "exclamationmark.triangle.fill"
        text: card.app.corpus.variations === 1 ? qsTr("1 file is named like a variation made here. It is learned like the others.") : qsTr("%n files are named like variations made here. They are learned like the others.", "", card.app.corpus.variations)
        ink: Theme.warning
        textColor: Theme.text
    }
    ActionButton {
        objectName: "scanAgain"
        width: card.bodyWidth
        visible: card.app.corpus.isChosen && !card.app.corpus.hasSummary && !card.app.corpus.isScanning
        text: qsTr("Scan Again")
        onClicked: card.app.corpus.scanAgain()
    }
    Row {
        width: card.bodyWidth
        spacing: Theme.inner

        ActionButton {
            id: choose
            objectName: "chooseCorpus"
            width: parent.width - (recent.visible ? recent.width + parent.spacing : 0) - (stop.visible ? stop.width + parent.spacing : 0)
            text: card.app.corpus.isChosen ? qsTr("Change Folder…") : qsTr("Choose Folder…")
            prominent: !card.app.corpus.isChosen
            enabled: card.app.corpus.canChoose
            tip: qsTr("Ctrl+O")
            onClicked: card.app.corpus.openChooser()
        }
        ActionButton {
            id: stop
            objectName: "cancelScan"
            visible: card.app.corpus.isScanning
            text: qsTr("Cancel")
            onClicked: card.app.cancel()
        }
        IconButton {
            id: recent
            objectName: "recentCorpora"
            width: Theme.controlHeight
            height: Theme.controlHeight
            framed: true
            visible: card.app.corpus.recent.length > 0
            enabled: card.app.corpus.canChoose
            iconName: "chevron.down"
            iconSize: 13
            text: qsTr("Recent folders")
            onClicked: {
                (recentMenu.made() as RecentMenu).popup(recent, 0, recent.height + Theme.tight);
            }
        }
    }
    Later {
        id: recentMenu
        visible: false
        view: "RecentMenu.qml"
        needs: ({
                "corpus": card.app.corpus
            })
        onLoaded: (item as RecentMenu).modelsRequested.connect(card.modelsRequested)
    }
    component Dot: Label {
        text: "·"
        color: Theme.secondary
        Accessible.ignored: true
    }
}
