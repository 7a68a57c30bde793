import QtQuick
import QuillmereApp

// Where the variations go, how many, and as which files.
Card {
    id: card

    required property AppModel app
    // OutputController::Status
    readonly property bool willBeCreated: app.output.status === OutputController.WillBeCreated
    readonly property bool exists: app.output.status === OutputController.Exists
    readonly property bool isUnusable: app.output.status === OutputController.IsNoFolder || app.output.status === OutputController.NoAnswer
    readonly property string problem: app.output.status === OutputController.NoAnswer ? qsTr("This folder does not answer.") : qsTr("This is a file, not a folder.")

    signal runsRequested

    number: "3"
    title: qsTr("Output")
    trailing: IconButton {
        objectName: "showRuns"
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        visible: card.app.runs.canShow
        iconName: "clock.arrow.circlepath"
        text: qsTr("Earlier runs")
        tip: qsTr("What was made of this folder before (Ctrl+H)")
        onClicked: card.runsRequested()
    }

    Connections {
        target: card.app.generation

        function onOutputFolderMissing() {
            path.forceActiveFocus(Qt.TabFocusReason);
        }
    }

    Column {
        width: card.bodyWidth
        spacing: Theme.tight

        Label {
            width: parent.width
            text: qsTr("Folder path (created if it doesn't exist)")
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
        }
        Row {
            width: parent.width
            spacing: Theme.inner

            TextField {
                id: path
                objectName: "outputPath"
                width: parent.width - chooser.width - parent.spacing
                text: card.app.output.folderText
                targeted: drop.containsDrag
                tip: text
                Accessible.name: qsTr("Output folder")
                onTextEdited: card.app.output.folderText = text
                onAccepted: nextItemInFocusChain().forceActiveFocus(Qt.TabFocusReason)
            }
            IconButton {
                id: chooser
                objectName: "chooseOutput"
                width: Theme.controlHeight
                height: Theme.controlHeight
                framed: true
                iconName: "folder"
                text: qsTr("Choose the output folder")
                onClicked: card.app.output.openChooser()
            }
        }
        // As high as its longest sentence, so that typing a path moves nothing.
        Item {
            width: parent.width
            height: longest.implicitHeight + longest.y

            Note {
                id: longest
                y: Theme.tight
                width: parent.width
                visible: false
                iconName: "folder"
                text: qsTr("Existing folder — new files are added, nothing is overwritten.")
            }
            Note {
                y: longest.y
                width: parent.width
                iconName: card.isUnusable ? "exclamationmark.triangle.fill" : card.willBeCreated ? "folder.badge.plus" : "folder"
                text: card.willBeCreated ? qsTr("Folder will be created.") : card.exists ? longest.text : card.isUnusable ? card.problem : qsTr("No folder chosen yet.")
                ink: card.isUnusable ? Theme.warning : Theme.secondary
            }
        }
    }
    Note {
        width: card.bodyWidth
        visible: card.app.output.isInCorpus
        iconName: "exclamationmark.triangle.fill"
        text: qsTr("This folder is in the corpus: the next scan finds what is written here, and the model no longer fits.")
        ink: Theme.warning
        textColor: Theme.text
    }
    ActionButton {
        objectName: "useSuggestion"
        width: card.bodyWidth
        visible: card.app.output.isInCorpus
        text: qsTr("Use a Folder Beside It")
        tip: card.app.output.suggestion
        onClicked: card.app.output.useSuggestion()
    }
    Row {
        width: card.bodyWidth
        spacing: Theme.between

        Column {
            id: countColumn
            spacing: Theme.tight

            Label {
                text: qsTr("Variations")
                color: Theme.secondary
                font.pixelSize: Theme.smallSize
            }
            SpinBox {
                objectName: "count"
                label: qsTr("Variations")
                to: card.app.output.mostVariations
                value: card.app.output.count
                onValueModified: card.app.output.count = value
            }
        }
        Column {
            width: parent.width - countColumn.width - parent.spacing
            spacing: Theme.tight

            Label {
                text: qsTr("Format")
                color: Theme.secondary
                font.pixelSize: Theme.smallSize
            }
            ComboBox {
                objectName: "format"
                width: parent.width
                label: qsTr("Format")
                model: card.app.output.formatLabels
                currentIndex: card.app.output.formatIndex
                onActivated: index => card.app.output.formatIndex = index
            }
        }
    }
    DropArea {
        id: drop

        // The card's column lays out what it holds; this covers the card instead.
        parent: card
        anchors.fill: parent
        onEntered: drag => drag.accepted = drag.hasUrls && drag.source === null
        onDropped: drop => {
            drop.acceptProposedAction();
            card.app.output.drop(drop.urls);
        }
    }
}
