import QtQuick
import QuillmereApp

// How far the run has come that the footer has started, with the time left and Cancel. Where the model has to
// be learned or opened first, that counts.
Item {
    id: run

    required property AppModel app
    readonly property bool generating: app.generation.isGenerating
    readonly property bool waiting: app.generation.isWaiting
    readonly property bool learning: waiting && app.model.isTraining
    readonly property bool making: app.kits.isMaking
    readonly property bool runs: generating || waiting || making || auditioning
    readonly property bool moving: longMove && !runs
    readonly property bool cancelling: moving ? app.files.isCancelling : app.generation.isCancelling || app.candidates.isCancelling || app.kits.isCancelling || (learning && app.model.isCancelling)
    readonly property string following: app.output.count === 1 ? qsTr("1 variation follows.") : qsTr("%n variations follow.", "", app.output.count)
    readonly property string timeLeft: learning ? app.model.timeLeft : generating ? app.generation.timeLeft : ""
    // Most auditions and candidates are over before anyone could read of them, as are files that are moved.
    property bool longAudition: false
    property bool longMove: false
    readonly property bool trying: app.candidates.isTrying
    readonly property bool auditioning: trying || app.generation.isAuditioning
    // Shown for a while in place of the time left
    property string news

    implicitHeight: Theme.controlHeight
    visible: generating || waiting || making || longAudition || moving

    onAuditioningChanged: {
        if (auditioning)
            patience.restart();
        else
            patience.stop();
        longAudition = false;
    }

    Connections {
        target: run.app.files

        function onMovingChanged() {
            if (!run.app.files.isMoving) {
                moveTimer.stop();
                run.longMove = false;
            } else if (!moveTimer.running && !run.longMove) {
                moveTimer.start();
            }
        }
    }
    Timer {
        id: moveTimer
        interval: Theme.patience
        onTriggered: run.longMove = run.app.files.isMoving
    }
    Timer {
        id: patience
        interval: Theme.patience
        onTriggered: run.longAudition = run.auditioning
    }
    Column {
        anchors.verticalCenter: parent.verticalCenter
        width: parent.width - cancel.width - Theme.between
        spacing: 6

        Item {
            width: parent.width
            height: figure.height

            Label {
                id: figure
                text: {
                    if (run.cancelling)
                        return qsTr("Cancelling…");
                    if (run.waiting)
                        return (run.learning ? qsTr("Learning first: %1") : qsTr("Opening the model: %1")).arg(run.following);
                    if (run.moving)
                        return qsTr("Moving files: %1 of %2").arg(run.app.files.moved).arg(run.app.files.toMove);
                    if (run.making)
                        return qsTr("%1 of %2").arg(run.app.kits.done).arg(run.app.kits.total);
                    if (run.trying)
                        return qsTr("%1 of %2").arg(run.app.candidates.done).arg(run.app.candidates.perSet);
                    return run.generating ? qsTr("%1 of %2").arg(run.app.generation.done).arg(run.app.generation.total) : qsTr("Rendering…");
                }
                font.family: Theme.figures
                font.pixelSize: Theme.smallSize
                wrapMode: Text.NoWrap
            }
            Label {
                objectName: "newsOfRun"
                anchors.right: parent.right
                width: Math.min(implicitWidth, parent.width - figure.width - Theme.inner)
                visible: run.news.length > 0
                text: run.news
                font.pixelSize: Theme.smallSize
                wrapMode: Text.NoWrap
                elide: Text.ElideRight
                Accessible.role: Accessible.AlertMessage
            }
            Label {
                anchors.right: parent.right
                width: Math.min(implicitWidth, parent.width - figure.width - Theme.inner)
                visible: !run.cancelling && run.news.length === 0
                text: run.timeLeft
                color: Theme.secondary
                font.family: Theme.figures
                font.pixelSize: Theme.smallSize
                wrapMode: Text.NoWrap
            }
        }
        ProgressBar {
            width: parent.width
            label: run.moving ? qsTr("Moving files") : run.learning ? qsTr("Learning") : run.waiting ? qsTr("Opening the model") : run.generating ? qsTr("Generating") : run.making ? qsTr("Making a kit") : qsTr("Rendering")
            indeterminate: run.learning ? run.app.model.phase !== "training" : !run.generating && !run.trying && !run.making && !run.moving
            value: run.moving ? run.app.files.moved / Math.max(1, run.app.files.toMove) : run.making ? run.app.kits.done / Math.max(1, run.app.kits.total) : run.learning ? run.app.model.fraction : run.trying ? run.app.candidates.done / run.app.candidates.perSet : run.app.generation.total > 0 ? run.app.generation.done / run.app.generation.total : 0
        }
    }
    CommandButton {
        id: cancel
        objectName: "cancelGeneration"
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        text: qsTr("Cancel")
        tip: qsTr("Esc")
        enabled: !run.cancelling
        phase: !run.visible ? "" : run.moving ? "files" : "cancel"
        // A model that is being learned meanwhile has a button of its own.
        onCommanded: run.moving ? run.app.files.cancel() : run.app.cancel()
    }
}
