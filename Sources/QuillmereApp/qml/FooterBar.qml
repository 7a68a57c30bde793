import QtQuick
import QuillmereApp

// What is going on, and what to do with the model: listen, try, and generate.
Rectangle {
    id: footer

    required property AppModel app
    // No room for words beside the buttons: they have a line of their own.
    readonly property bool narrow: width < 840
    // Not even for the words of all buttons: the first has its icon alone.
    readonly property bool cramped: appearanceButton.x + appearanceButton.width + Theme.tight + audition.fullWidth + trying.width + generating.width + 2 * actions.spacing + Theme.outer > width
    // The last thing worth telling that is no failure; it goes away by itself.
    property string news

    implicitHeight: narrow && (progress.visible || message.visible) ? 100 : 60
    color: Theme.card

    Accessible.role: Accessible.ToolBar
    Accessible.name: qsTr("Actions")

    function tell(text: string) {
        news = text;
        forget.restart();
    }

    Connections {
        target: footer.app

        function onNotice(text: string) {
            footer.tell(text);
        }
        function onErrorMessageChanged() {
            if (footer.app.errorMessage.length > 0)
                footer.news = "";
        }
    }
    Connections {
        target: footer.app.model

        function onTrainingFinished() {
            footer.tell(qsTr("Training finished."));
        }
    }
    Connections {
        target: footer.app.generation

        function onIsGeneratingChanged() {
            if (footer.app.generation.isGenerating)
                footer.news = "";
        }
        function onGenerationFinished(files: int) {
            footer.tell(files === 1 ? qsTr("1 variation written.") : qsTr("%n variations written.", "", files));
        }
    }
    Timer {
        id: forget
        interval: 8000
        onTriggered: footer.news = ""
    }
    Rectangle {
        width: parent.width
        height: 1
        color: Theme.line
    }
    AppearanceButton {
        id: appearanceButton
        x: Theme.outer - 6
        anchors.verticalCenter: actions.verticalCenter
        appearance: footer.app.appearance
    }
    ListeningControl {
        id: listening
        x: appearanceButton.x + appearanceButton.width + Theme.tight
        anchors.verticalCenter: actions.verticalCenter
        // What happens needs the room in narrower windows, and the buttons in the narrowest.
        compact: footer.narrow ? x + fullWidth + Theme.inner > actions.x : footer.width < 1040
        visible: x + width + Theme.inner <= actions.x
        playback: footer.app.playback
    }
    RunProgress {
        id: progress
        x: footer.narrow ? Theme.outer : listening.x + listening.width + Theme.between
        y: footer.narrow ? Theme.inner : (footer.height - height) / 2
        width: footer.narrow ? footer.width - 2 * Theme.outer : actions.x - x - Theme.outer
        app: footer.app
        news: footer.news
    }
    Label {
        id: message
        objectName: "news"
        x: progress.x
        y: progress.y - Theme.tight
        width: progress.width
        height: progress.height + 2 * Theme.tight
        verticalAlignment: Text.AlignVCenter
        visible: footer.news.length > 0 && !progress.visible
        text: footer.news
        color: Theme.secondary
        maximumLineCount: 2
        elide: Text.ElideRight
        Accessible.role: Accessible.AlertMessage
    }
    Row {
        id: actions
        anchors.right: parent.right
        anchors.rightMargin: Theme.outer
        y: footer.height - height - (60 - height) / 2
        spacing: Theme.inner

        CommandButton {
            id: audition

            readonly property bool plays: String(footer.app.playback.playingURL) === String(footer.app.generation.auditionURL)

            objectName: "audition"
            readonly property string words: plays ? qsTr("Stop") : qsTr("Audition")
            // Of its longer name, so that nothing moves while it plays.
            readonly property real fullWidth: Math.ceil(idle.advanceWidth) + 16 + Theme.inner + leftPadding + rightPadding

            width: footer.cramped ? implicitWidth : Math.max(implicitWidth, fullWidth)
            height: 36
            text: footer.cramped ? "" : words
            Accessible.name: words
            iconName: plays ? "stop.fill" : "play.circle"
            tip: plays ? qsTr("Esc") : qsTr("Render a single variation with the current settings and play it, without saving.")
            enabled: plays || footer.app.generation.canAudition
            phase: plays ? "stop" : enabled ? "audition" : ""
            onCommanded: plays ? footer.app.playback.stop() : footer.app.generation.audition()

            TextMetrics {
                id: idle
                font.family: Theme.family
                font.pixelSize: Theme.textSize
                text: qsTr("Audition")
            }
        }
        CommandButton {
            id: trying
            objectName: "try"
            height: 36
            text: qsTr("Try %1").arg(footer.app.candidates.perSet)
            tip: qsTr("Render twelve variations to listen to, without saving; keep the ones you like (Ctrl+N).")
            enabled: footer.app.candidates.canTry
            phase: enabled ? "try" : ""
            onCommanded: footer.app.candidates.start()
        }
        CommandButton {
            id: generating
            objectName: "generate"
            // As wide as its longest name, so that nothing moves while the count is changed.
            width: Math.max(implicitWidth, Math.ceil(widest.advanceWidth) + leftPadding + rightPadding)
            height: 36
            text: qsTr("Generate %n Variations", "", footer.app.output.count)
            prominent: footer.app.generation.canGenerate
            enabled: footer.app.generation.canGenerate
            tip: qsTr("Ctrl+G")
            phase: enabled ? "generate" : ""
            onCommanded: footer.app.generation.generate()

            TextMetrics {
                id: widest
                font.family: Theme.family
                font.pixelSize: Theme.textSize
                font.weight: Font.DemiBold
                text: qsTr("Generate %n Variations", "", 8888)
            }
        }
    }
}
