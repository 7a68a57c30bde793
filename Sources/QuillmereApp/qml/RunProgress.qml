import QtQuick
import QuillmereApp

// How far the run has come that the footer has started, with the time left and Cancel.
Item {
    id: run

    required property AppModel app
    readonly property bool generating: app.generation.isGenerating
    // Most auditions are over before anyone could read of them.
    property bool longAudition: false
    // Shown for a while in place of the time left
    property string news

    implicitHeight: Theme.controlHeight
    visible: generating || longAudition

    Connections {
        target: run.app.generation

        function onIsAuditioningChanged() {
            if (run.app.generation.isAuditioning)
                patience.restart();
            else
                patience.stop();
            run.longAudition = false;
        }
    }
    Timer {
        id: patience
        interval: Theme.patience
        onTriggered: run.longAudition = run.app.generation.isAuditioning
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
                    if (run.app.generation.isCancelling)
                        return "Cancelling…";
                    return run.generating ? run.app.generation.done + " of " + run.app.generation.total : "Rendering…";
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
                visible: run.generating && !run.app.generation.isCancelling && run.news.length === 0
                text: run.app.generation.timeLeft
                color: Theme.secondary
                font.family: Theme.figures
                font.pixelSize: Theme.smallSize
                wrapMode: Text.NoWrap
            }
        }
        ProgressBar {
            width: parent.width
            label: run.generating ? "Generating" : "Rendering"
            indeterminate: !run.generating
            value: run.app.generation.total > 0 ? run.app.generation.done / run.app.generation.total : 0
        }
    }
    ActionButton {
        id: cancel
        objectName: "cancelGeneration"
        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        text: "Cancel"
        tip: "Esc"
        enabled: !run.app.generation.isCancelling
        onClicked: run.app.cancel()
    }
}
