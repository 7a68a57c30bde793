import QtQuick
import QuillmereApp

// What has been learned from the corpus, and the learning itself.
Card {
    id: card

    required property AppModel app
    readonly property bool idle: !app.model.isTraining
    // In one piece: no line ends within the date.
    readonly property string trainedAt: app.model.learnedAt.replace(/ /g, "\u00a0")

    signal reportRequested

    number: "2"
    title: qsTr("Model")
    trailing: DeviceButton {
        anchors.right: parent.right
        anchors.rightMargin: -rightPadding
        anchors.verticalCenter: parent.verticalCenter
        width: Math.min(implicitWidth, parent.width + rightPadding)
        app: card.app
    }

    // Nothing learned yet
    Label {
        width: card.bodyWidth
        visible: card.idle && !card.app.model.isReady && card.app.model.problem.length === 0 && !card.app.model.isLoading
        text: qsTr("No model for this folder yet. It learns on this Mac — nothing leaves your machine. It's created automatically when you generate, or you can train it now.")
        color: Theme.secondary
        font.pixelSize: Theme.smallSize
    }
    Note {
        width: card.bodyWidth
        visible: card.idle && card.app.model.problem.length > 0 && !card.app.model.isLoading
        iconName: "exclamationmark.triangle.fill"
        text: card.app.model.problem
        ink: Theme.warning
        textColor: Theme.text
    }
    ActionButton {
        objectName: "openAgain"
        width: card.bodyWidth
        visible: card.idle && card.app.model.isUnopened && !card.app.model.isLoading
        text: qsTr("Open the Model")
        onClicked: card.app.model.openAgain()
    }
    Note {
        width: card.bodyWidth
        visible: offer.visible
        iconName: "waveform"
        text: (card.app.models.offeredByNames ? qsTr("Samples of the same names were learned in %1.") : qsTr("The same samples were learned in %1.")).arg(card.app.models.offered)
    }
    ActionButton {
        id: offer
        objectName: "useOffered"
        width: card.bodyWidth
        visible: card.idle && card.app.models.offered.length > 0 && !card.app.model.isReady && !card.app.model.isLoading
        text: qsTr("Use That Model")
        onClicked: card.app.models.useOffered()
    }
    OpeningView {
        width: card.bodyWidth
        visible: card.app.model.isLoading
        model: card.app.model
    }

    // Learned
    Column {
        width: card.bodyWidth
        visible: card.idle && card.app.model.isReady
        spacing: Theme.tight

        Item {
            width: parent.width
            height: ready.height

            Note {
                id: ready
                width: showReport.x - Theme.tight
                iconName: "checkmark.circle.fill"
                text: qsTr("Trained and ready")
                ink: Theme.good
                textColor: Theme.good
                font.pixelSize: Theme.textSize
                font.weight: Font.DemiBold
            }
            IconButton {
                id: showReport
                objectName: "showReport"
                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                height: 20
                iconName: "magnifyingglass"
                text: qsTr("Show what was learned")
                tip: qsTr("How well the folder was learned (Ctrl+I)")
                onClicked: card.reportRequested()
            }
        }
        Explained {
            width: parent.width
            tip: qsTr("How the sound was taken apart, how much of each sample was learned, when, and for how long.")
            text: qsTr("%1 · %2 s per sample · trained %3 · %4").arg(card.app.model.analysisLabel).arg(card.app.model.clipSecondsText).arg(card.trainedAt).arg(card.app.model.trainedQuality)
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
        }
    }

    // Learned, but not on the disk
    Note {
        width: card.bodyWidth
        visible: card.idle && card.app.model.isUnstored
        iconName: "exclamationmark.triangle.fill"
        text: card.app.model.unstoredText
        ink: Theme.warning
        textColor: Theme.text
    }
    ActionButton {
        objectName: "storeAgain"
        width: card.bodyWidth
        visible: card.idle && card.app.model.isUnstored
        enabled: !card.app.model.isStoring
        text: qsTr("Store Again")
        onClicked: card.app.model.storeAgain()
    }

    // Learning
    TrainingProgressView {
        id: learning
        width: card.bodyWidth
        visible: card.app.model.isTraining
        app: card.app
    }

    // How to learn
    Column {
        width: card.bodyWidth
        visible: card.idle
        spacing: 6

        Segments {
            objectName: "quality"
            width: parent.width
            label: qsTr("Quality")
            labels: card.app.model.qualityLabels
            tips: card.app.model.qualityHelps
            currentIndex: card.app.model.qualityIndex
            onChosen: index => card.app.model.qualityIndex = index
        }
        Label {
            width: parent.width
            text: card.app.model.qualityHelps[card.app.model.qualityIndex]
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
        }
    }
    Item {
        width: card.bodyWidth
        height: analysis.height
        visible: card.idle

        Explained {
            id: analysisLabel
            anchors.verticalCenter: parent.verticalCenter
            text: qsTr("Analysis")
            tip: card.app.model.analysisHelp
        }
        ComboBox {
            id: analysis
            objectName: "analysis"
            anchors.right: parent.right
            width: Math.min(implicitWidth, parent.width - analysisLabel.width - Theme.between)
            label: qsTr("Analysis")
            model: card.app.model.analysisLabels
            tip: card.app.model.analysisHelp
            currentIndex: card.app.model.analysisIndex
            onActivated: index => card.app.model.analysisIndex = index
        }
    }
    CheckBox {
        objectName: "keepsSounds"
        width: card.bodyWidth
        visible: card.idle
        text: card.app.model.keptSoundsText
        tip: qsTr("Detail then works also when the folder has been moved or changed. Counts from the next training.")
        checked: card.app.model.keepsSounds
        onToggled: card.app.model.keepsSounds = checked
    }
    Column {
        width: card.bodyWidth
        spacing: 6

        Item {
            width: parent.width
            height: Theme.controlHeight
            visible: card.idle

            ComboBox {
                id: start
                objectName: "start"
                label: qsTr("Start")
                model: card.app.model.startLabels
                tip: card.app.model.startHelp
                currentIndex: card.app.model.startIndex
                onActivated: index => card.app.model.startIndex = index
            }
            Item {
                id: trainPlace
                x: start.width + Theme.inner
                width: parent.width - x
                height: parent.height

                // One button for both, so that the keyboard stays where it is, but in two places, so that the
                // pointer that has begun the learning is not on what ends it.
                CommandButton {
                    id: command
                    objectName: "train"
                    parent: card.idle ? trainPlace : learning.cancelPlace
                    anchors.fill: parent
                    text: !card.idle ? qsTr("Cancel") : card.app.model.isReady || card.app.model.problem.length > 0 ? qsTr("Retrain") : qsTr("Train Model")
                    enabled: card.idle ? card.app.model.canTrain : !card.app.model.isCancelling
                    tip: !card.idle ? qsTr("Esc") : card.app.model.trainHint.length > 0 ? card.app.model.trainHint : qsTr("Ctrl+T")
                    phase: !card.idle ? "cancel" : enabled ? "train" : ""
                    onCommanded: card.idle ? card.app.model.train() : card.app.model.cancelTraining()
                }
            }
        }
        Label {
            width: parent.width
            visible: text.length > 0
            text: card.app.model.trainHint
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
            horizontalAlignment: Text.AlignHCenter
        }
    }
}
