import QtQuick
import QuillmereApp

// The selected sound, looked at closely: how it looks and how loud it is, what it is a blend of, what is nearest to
// it, how new it is, and what can be made of it.
Rectangle {
    id: panel

    required property AppModel app
    readonly property InspectorController inspector: app.inspector
    readonly property bool playing: inspector.hasSubject && String(app.playback.playingURL) === String(inspector.soundURL)
    readonly property bool inColumns: width >= 620
    readonly property real inside: width - 2 * Theme.outer

    property bool renaming: false
    // Another one is not to get the name that is being typed.
    readonly property string named: inspector.title + " " + inspector.soundURL
    onNamedChanged: renaming = false
    property bool favourite: false
    // How high it may be without scrolling; 0 for any height.
    property real room: 0
    // All but the sound itself, which takes what is left.
    readonly property real others: sound.y + Theme.inner + facts.height + Theme.outer + listsHeight + Theme.between + novelty.height + Theme.between + actions.height + Theme.outer
    readonly property real listsHeight: inColumns ? Math.max(sources.height, nearest.height) : sources.height + Theme.between + nearest.height

    signal keepRequested

    implicitHeight: actions.y + actions.height + Theme.outer
    radius: Theme.cardRadius
    color: Theme.card
    border.color: Theme.line

    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("Inspector")

    function beginRenaming() {
        if (!inspector.isFile)
            return;
        renaming = true;
        field.text = inspector.title.replace(/\.wav$/i, "");
        field.forceActiveFocus(Qt.ShortcutFocusReason);
        field.selectAll();
    }
    function endRenaming() {
        renaming = false;
        rename.forceActiveFocus(Qt.OtherFocusReason);
    }

    Connections {
        target: panel.inspector

        function onSubjectChanged() {
            panel.favourite = panel.app.inspectedIsFavourite();
        }
    }
    Component.onCompleted: favourite = app.inspectedIsFavourite()

    TextField {
        id: field
        objectName: "renameField"
        x: Theme.outer - 4
        anchors.verticalCenter: close.verticalCenter
        width: Math.min(420, close.x - x - Theme.inner)
        visible: panel.renaming
        tip: qsTr("Return renames, Esc leaves the name as it is.")
        Accessible.name: qsTr("New name of the file")
        onAccepted: {
            panel.app.renameInspectedFile(text);
            panel.endRenaming();
        }
        Keys.onEscapePressed: panel.endRenaming()
    }
    Label {
        id: heading
        x: Theme.outer
        visible: !panel.renaming
        anchors.verticalCenter: close.verticalCenter
        width: close.x - x - Theme.inner
        text: panel.inspector.hasSubject ? panel.inspector.title : qsTr("Inspector")
        font.pixelSize: Theme.titleSize
        font.weight: Font.DemiBold
        wrapMode: Text.NoWrap
        elide: Text.ElideMiddle
        Accessible.role: Accessible.Heading
    }
    IconButton {
        id: close
        objectName: "closeInspector"
        y: Theme.inner + 2
        anchors.right: parent.right
        anchors.rightMargin: Theme.inner + 2
        iconName: "xmark"
        text: qsTr("Close the inspector")
        tip: qsTr("Close (I or Esc)")
        onClicked: panel.inspector.isOpen = false
    }
    Label {
        objectName: "inspectNothing"
        x: Theme.outer
        y: sound.y
        width: panel.inside
        visible: !panel.inspector.hasSubject || panel.inspector.problem.length > 0
        text: panel.inspector.hasSubject ? panel.inspector.problem : qsTr("Select a candidate or a result below.")
        color: Theme.secondary
    }
    SoundView {
        id: sound
        objectName: "inspectedSound"
        x: Theme.outer
        y: close.y + close.height + Theme.inner
        width: panel.inside
        height: panel.room > 0 ? Math.max(120, Math.min(360, Math.floor(panel.room - panel.others))) : 180
        visible: panel.inspector.hasSubject && panel.inspector.problem.length === 0
        peaks: panel.inspector.peaks
        image: panel.inspector.picture
        playing: panel.playing
        seconds: panel.app.playback.playingSeconds
        label: [panel.inspector.title, panel.inspector.durationText].join(qsTr(", "))
        onPlayRequested: panel.inspector.togglePlay()
    }
    Item {
        id: facts
        x: Theme.outer
        y: sound.y + sound.height + Theme.inner
        width: panel.inside - loop.width - Theme.inner
        height: duration.height
        visible: panel.inspector.hasSubject

        Label {
            id: duration
            objectName: "inspectedDuration"
            text: panel.inspector.durationText.length > 0 ? panel.inspector.durationText : " "
            font.family: Theme.figures
            font.pixelSize: Theme.smallSize
            wrapMode: Text.NoWrap
        }
        Rectangle {
            id: meter
            anchors.left: duration.right
            anchors.leftMargin: Theme.outer
            anchors.verticalCenter: duration.verticalCenter
            width: Math.min(160, facts.width - duration.width - level.width - 2 * Theme.outer)
            height: 5
            radius: 2.5
            color: Theme.control
            visible: width > 20 && panel.inspector.levelText.length > 0

            Rectangle {
                width: parent.width * panel.inspector.level
                height: parent.height
                radius: parent.radius
                color: Theme.track
            }
        }
        Explained {
            id: level
            tip: qsTr("How loud it is on average, and its loudest moment, below the most that a file can hold.")
            objectName: "inspectedLevel"
            x: meter.visible ? meter.x + meter.width + Theme.inner : duration.width + Theme.inner
            anchors.verticalCenter: duration.verticalCenter
            text: panel.inspector.levelText
            color: Theme.secondary
            font.family: Theme.figures
            font.pixelSize: Theme.smallSize
            wrapMode: Text.NoWrap
        }
    }
    IconButton {
        id: loop
        objectName: "loopInspected"
        anchors.right: parent.right
        anchors.rightMargin: Theme.outer
        y: facts.y + (facts.height - height) / 2
        visible: panel.inspector.hasSubject
        height: 22
        checkable: true
        checked: panel.inspector.loops
        iconName: "repeat"
        ink: panel.inspector.loops ? Theme.accent : Theme.secondary
        text: qsTr("Loop")
        tip: qsTr("Play it again and again")
        onClicked: {
            panel.inspector.loops = !panel.inspector.loops;
            checked = Qt.binding(() => panel.inspector.loops);
        }
    }
    RelativesList {
        id: sources
        x: Theme.outer
        y: facts.y + facts.height + Theme.outer
        width: panel.inColumns ? (panel.inside - Theme.outer) / 2 : panel.inside
        visible: panel.inspector.hasSubject
        app: panel.app
        title: panel.inspector.isOfThisCorpus || panel.inspector.sources.length === 0 ? qsTr("Made of") : qsTr("Made of samples of another folder")
        explanation: qsTr("The samples that the sound is a blend of, each with its share. Their keys play them and the sound in turn, equally loud.")
        absent: qsTr("Nobody knows any more.")
        relatives: panel.inspector.sources
    }
    RelativesList {
        id: nearest
        x: panel.inColumns ? sources.x + sources.width + Theme.outer : Theme.outer
        y: panel.inColumns ? sources.y : sources.y + sources.height + Theme.between
        width: sources.width
        visible: panel.inspector.hasSubject
        app: panel.app
        title: qsTr("Nearest in the corpus")
        absent: panel.inspector.isComparing ? qsTr("Comparing: %1 of %2").arg(panel.inspector.compared).arg(panel.inspector.toCompare) : panel.inspector.isCopy ? "" : panel.inspector.verdict
        explanation: qsTr("The samples that sound most like it. The decibels say how far apart the two are on average, over all bands and moments.")
        relatives: panel.inspector.nearest
    }
    Item {
        id: novelty
        x: Theme.outer
        y: sources.y + panel.listsHeight + Theme.between
        width: panel.inside
        height: verdict.height + Theme.tight + gauge.height
        visible: panel.inspector.hasSubject

        Icon {
            id: alarm
            y: 1
            width: 16
            height: 16
            visible: panel.inspector.isCopy
            name: "exclamationmark.triangle.fill"
            color: Theme.error
        }
        Label {
            id: verdict
            objectName: "verdict"
            x: alarm.visible ? alarm.width + Theme.inner : 0
            width: parent.width - x
            text: panel.inspector.nearest.length > 0 || panel.inspector.isCopy ? panel.inspector.verdict : " "
            color: panel.inspector.isCopy ? Theme.error : Theme.text
            font.weight: Font.DemiBold
            wrapMode: Text.NoWrap
            elide: Text.ElideMiddle
            Accessible.role: panel.inspector.isCopy ? Accessible.AlertMessage : Accessible.StaticText
        }
        NoveltyGauge {
            id: gauge
            y: verdict.height + Theme.tight
            width: Math.min(parent.width, 520)
            distance: panel.inspector.distance
            limits: panel.inspector.limits
            farthest: panel.inspector.farthest
        }
    }
    Flow {
        id: actions
        x: Theme.outer
        y: novelty.y + novelty.height + Theme.between
        width: panel.inside
        spacing: Theme.inner
        visible: panel.inspector.hasSubject

        ActionButton {
            objectName: "keepInspected"
            visible: !panel.inspector.isFile
            iconName: "checkmark"
            text: qsTr("Keep")
            tip: qsTr("Write the file (K)")
            onClicked: panel.keepRequested()
        }
        ActionButton {
            objectName: "moreLikeThis"
            enabled: panel.inspector.hasRecipe && panel.app.candidates.canTry
            text: qsTr("More like this")
            tip: qsTr("Twelve candidates around its place")
            onClicked: panel.inspector.moreLikeThis()
        }
        ActionButton {
            objectName: "newSkins"
            enabled: panel.inspector.hasRecipe && panel.app.candidates.canTry
            text: qsTr("New skin")
            tip: qsTr("The same place, and all that is drawn after it anew")
            onClicked: panel.inspector.newSkins()
        }
        ActionButton {
            objectName: "newBodies"
            enabled: panel.inspector.hasRecipe && panel.app.candidates.canTry
            text: qsTr("New body")
            tip: qsTr("Another place, and all that is drawn after it as here")
            onClicked: panel.inspector.newBodies()
        }
        ActionButton {
            objectName: "copyRecipe"
            enabled: panel.inspector.hasRecipe
            text: qsTr("Copy recipe")
            tip: qsTr("What it takes to make this sound again, as text")
            onClicked: panel.inspector.copyRecipe()
        }
        ActionButton {
            objectName: "favouriteInspected"
            enabled: panel.inspector.isFile
            checkable: true
            checked: panel.favourite
            iconName: panel.favourite ? "star.fill" : "star"
            text: qsTr("Favourite")
            onClicked: {
                panel.app.toggleInspectedFavourite();
                checked = Qt.binding(() => panel.favourite);
            }
            Accessible.checkable: true
            Accessible.checked: panel.favourite
        }
        ActionButton {
            id: rename
            objectName: "renameInspected"
            enabled: panel.inspector.isFile
            text: qsTr("Rename")
            tip: "F2"
            onClicked: panel.beginRenaming()
        }
        ActionButton {
            objectName: "showInspected"
            enabled: panel.inspector.isFile
            iconName: "folder"
            text: qsTr("Show file")
            tip: qsTr("Show the file in the file manager")
            onClicked: panel.app.showInspectedFile()
        }
        ActionButton {
            objectName: "trashInspected"
            enabled: panel.inspector.isFile
            text: qsTr("Move to trash")
            tip: qsTr("Into the desktop's trash; Ctrl+Z brings it back")
            onClicked: panel.app.trashInspectedFile()
        }
    }
}
