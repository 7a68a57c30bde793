import QtQuick
import QuillmereApp

// What has been learnt from the corpus, and the learning itself.
Card {
    id: card

    required property AppModel app
    readonly property bool idle: !app.isTraining
    // In one piece: no line ends within the date.
    readonly property string trainedAt: Qt.formatDateTime(app.modelTrainedAt, "d MMM yyyy, hh:mm").replace(/ /g, "\u00a0")

    number: "2"
    title: "Model"
    trailing: DeviceButton {
        anchors.right: parent.right
        anchors.rightMargin: -rightPadding
        anchors.verticalCenter: parent.verticalCenter
        width: Math.min(implicitWidth, parent.width + rightPadding)
        app: card.app
    }

    // Nothing learnt yet
    Words {
        width: card.bodyWidth
        visible: card.idle && !card.app.hasModel && card.app.modelProblem.length === 0 && !card.app.isLoadingModel
        text: "No model for this folder yet. It learns on this Mac — nothing leaves your machine. It's created automatically when you generate, or you can train it now."
        color: Theme.secondary
        font.pixelSize: Theme.smallSize
    }
    Note {
        width: card.bodyWidth
        visible: card.idle && card.app.modelProblem.length > 0
        iconName: "exclamationmark.triangle.fill"
        text: card.app.modelProblem
        ink: Theme.warning
        textColor: Theme.text
    }
    Words {
        width: card.bodyWidth
        visible: card.app.isLoadingModel
        text: "Opening the model…"
        color: Theme.secondary
        font.pixelSize: Theme.smallSize
    }

    // Learnt
    Column {
        width: card.bodyWidth
        visible: card.idle && card.app.hasModel
        spacing: Theme.tight

        Note {
            width: parent.width
            iconName: "checkmark.circle.fill"
            text: "Trained and ready"
            ink: Theme.good
            textColor: Theme.good
            font.pixelSize: Theme.textSize
            font.weight: Font.DemiBold
        }
        Words {
            width: parent.width
            text: card.app.modelAnalysis + " · " + card.app.modelClipSecondsText + " s per sample · trained " + trainedAt
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
        }
    }

    // Learning
    TrainingProgressView {
        width: card.bodyWidth
        visible: card.app.isTraining
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
            label: "Quality"
            words: card.app.qualityLabels
            tips: card.app.qualityHelps
            currentIndex: card.app.qualityIndex
            onChosen: index => card.app.qualityIndex = index
        }
        Words {
            width: parent.width
            text: card.app.qualityHelps[card.app.qualityIndex]
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
        }
    }
    Item {
        width: card.bodyWidth
        height: analysis.height
        visible: card.idle

        Words {
            id: analysisLabel
            anchors.verticalCenter: parent.verticalCenter
            text: "Analysis"
        }
        Picker {
            id: analysis
            objectName: "analysis"
            anchors.right: parent.right
            width: Math.min(implicitWidth, parent.width - analysisLabel.width - Theme.between)
            label: "Analysis"
            model: card.app.analysisLabels
            tip: card.app.analysisHelp
            currentIndex: card.app.analysisIndex
            onActivated: index => card.app.analysisIndex = index
        }
    }
    Column {
        width: card.bodyWidth
        spacing: 6

        // One button for both, so that the keyboard stays where it is.
        ActionButton {
            objectName: "train"
            width: parent.width
            text: card.app.isTraining ? "Cancel" : card.app.hasModel ? "Retrain" : "Train Model"
            enabled: card.app.isTraining ? !card.app.isCancelling : card.app.canTrain
            tip: card.app.isTraining ? "Esc" : card.app.trainHint.length > 0 ? card.app.trainHint : "Ctrl+T"
            onClicked: card.app.isTraining ? card.app.cancelTraining() : card.app.train()
        }
        Words {
            width: parent.width
            visible: text.length > 0
            text: card.app.trainHint
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
            horizontalAlignment: Text.AlignHCenter
        }
    }
}
