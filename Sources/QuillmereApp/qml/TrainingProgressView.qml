import QtQuick
import QuillmereApp

// The learning while it goes on: what is done, how far it has come, and the loss.
Column {
    id: view

    required property ModelController model
    // For the button that cancels: away from where the one was that began the learning.
    readonly property alias cancelPlace: cancelPlace

    spacing: Theme.inner

    Item {
        width: parent.width
        height: Math.max(message.height, cancelPlace.height)

        Label {
            id: message
            width: cancelPlace.x - Theme.inner
            anchors.verticalCenter: parent.verticalCenter
            text: view.model.isCancelling ? "Cancelling…" : view.model.message
            font.weight: Font.DemiBold
        }
        Item {
            id: cancelPlace
            anchors.right: parent.right
            width: 84
            height: Theme.controlHeight
        }
    }
    ProgressBar {
        width: parent.width
        label: "Training"
        indeterminate: view.model.phase !== "training"
        value: view.model.fraction
    }
    Item {
        width: parent.width
        height: step.height

        Label {
            id: step
            text: "Step " + view.model.step + (view.model.totalSteps > 0 ? " of " + view.model.totalSteps : "")
            color: Theme.secondary
            font.family: Theme.figures
            font.pixelSize: Theme.smallSize
            wrapMode: Text.NoWrap
        }
        Label {
            anchors.right: parent.right
            text: view.model.timeLeft
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
        points: view.model.lossHistory
        steps: view.model.totalSteps
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
