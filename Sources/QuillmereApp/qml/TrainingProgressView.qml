import QtQuick
import QuillmereApp

// The learning while it goes on: what is done, how far it has come, and the loss.
Column {
    id: view

    required property AppModel app

    spacing: Theme.inner

    Words {
        width: parent.width
        text: view.app.isCancelling ? "Cancelling…" : view.app.trainingMessage
        font.weight: Font.DemiBold
    }
    ProgressTrack {
        width: parent.width
        label: "Training"
        indeterminate: view.app.trainingPhase !== "training"
        value: view.app.trainingFraction
    }
    Item {
        width: parent.width
        height: step.height

        Words {
            id: step
            text: "Step " + view.app.trainingStep + (view.app.trainingTotalSteps > 0 ? " of " + view.app.trainingTotalSteps : "")
            color: Theme.secondary
            font.family: Theme.figures
            font.pixelSize: Theme.smallSize
            wrapMode: Text.NoWrap
        }
        Words {
            anchors.right: parent.right
            text: view.app.trainingTimeLeft
            color: Theme.secondary
            font.family: Theme.figures
            font.pixelSize: Theme.smallSize
            wrapMode: Text.NoWrap
        }
    }
    LossChart {
        objectName: "lossChart"
        width: parent.width
        height: 132
        points: view.app.lossHistory
        steps: view.app.trainingTotalSteps
        lineColor: Theme.accent
        gridColor: Theme.line
        textColor: Theme.secondary
        font.family: Theme.figures
        font.pixelSize: 11

        Accessible.role: Accessible.Chart
        Accessible.name: "Loss by step"
        Accessible.description: description
    }
}
