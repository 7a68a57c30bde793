import QtQuick
import QuillmereApp

// The learning while it goes on: what is done, how far it has come, the loss, and what it sounds like by then.
Column {
    id: view

    required property AppModel app
    readonly property ModelController model: app.model
    // For the button that cancels: away from where the one was that began the learning.
    readonly property alias cancelPlace: cancelPlace

    spacing: Theme.inner

    Item {
        width: parent.width
        height: Math.max(message.height, cancelPlace.height)

        Label {
            id: message
            width: (stopHere.visible ? stopHere.x : cancelPlace.x) - Theme.inner
            anchors.verticalCenter: parent.verticalCenter
            text: view.model.isCancelling ? qsTr("Cancelling…") : view.model.message
            font.weight: Font.DemiBold
        }
        CommandButton {
            id: stopHere
            objectName: "stopHere"
            anchors.right: cancelPlace.left
            anchors.rightMargin: Theme.inner
            visible: view.model.step > 0
            enabled: view.model.canStopHere
            text: qsTr("Stop Here")
            tip: qsTr("End the learning and keep what has been learned so far.")
            phase: enabled ? "stop" : ""
            onCommanded: view.model.stopHere()
        }
        Item {
            id: cancelPlace
            anchors.right: parent.right
            width: 76
            height: Theme.controlHeight
        }
    }
    ProgressBar {
        width: parent.width
        label: qsTr("Training")
        indeterminate: view.model.phase !== "training"
        value: view.model.fraction
    }
    Item {
        width: parent.width
        height: step.height

        Label {
            id: step
            text: view.model.totalSteps > 0 ? qsTr("Step %1 of %2").arg(view.model.step).arg(view.model.totalSteps) : qsTr("Step %1").arg(view.model.step)
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
        height: 92
        points: view.model.lossHistory
        steps: view.model.totalSteps
        lineColor: Theme.accent
        gridColor: Theme.line
        textColor: Theme.secondary
        font.family: Theme.figures
        font.pixelSize: 11

        Accessible.role: Accessible.Chart
        Accessible.name: qsTr("Loss by step")
        Accessible.description: description

        HoverHandler {
            id: chartHover
        }
        ToolTip {
            text: qsTr("The loss says how far what is drawn is from the samples: the lower the line, the closer. Listen to hear it.")
            shown: chartHover.hovered
        }
    }
    // It comes after a few seconds; its place is kept, so that nothing moves.
    Item {
        width: parent.width
        height: Theme.controlHeight + 44
        visible: view.model.step > 0

        IconButton {
            id: play

            readonly property bool plays: String(view.app.playback.playingURL) === String(view.model.sound.url)

            objectName: "playLearning"
            anchors.verticalCenter: parent.verticalCenter
            enabled: view.model.sound.isThere
            iconName: plays ? "stop.fill" : "play.circle"
            iconSize: plays ? 14 : 20
            ink: plays ? Theme.accent : Theme.text
            text: plays ? qsTr("Stop") : qsTr("Hear what has been learned so far")
            onClicked: view.app.playback.togglePlay(view.model.sound.url)
        }
        Picture {
            id: picture
            x: play.width + Theme.inner
            width: heard.x - x - Theme.inner
            height: parent.height
            visible: view.model.sound.isThere
            image: view.model.sound.picture
            Accessible.role: Accessible.Graphic
            Accessible.name: qsTr("Mel image of what has been learned so far")
        }
        Label {
            id: heard
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            text: view.model.sound.isThere ? qsTr("Step %1").arg(view.model.sound.step) : ""
            color: Theme.secondary
            font.family: Theme.figures
            font.pixelSize: Theme.smallSize
            wrapMode: Text.NoWrap
        }
        Label {
            x: picture.x
            width: parent.width - x
            anchors.verticalCenter: parent.verticalCenter
            visible: !view.model.sound.isThere
            text: qsTr("You can listen in a few seconds.")
            color: Theme.secondary
            font.pixelSize: Theme.smallSize
        }
    }
}
