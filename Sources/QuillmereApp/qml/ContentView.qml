import QtQuick
import QuillmereApp

// Everything in the window. Wide windows have the cards at the left, the character panel at the right and the
// results below; broad ones have the results in a column of their own; narrow ones stack the same pieces in one
// column that scrolls.
FocusScope {
    id: content

    required property AppModel app
    readonly property bool wide: width >= 900
    readonly property bool broad: width >= 1700
    // High enough for all sliders below one another: their column is narrow then, and the results have the rest.
    readonly property bool tall: broad && height >= 1300
    readonly property real cardsWidth: wide ? Math.round(Math.max(312, Math.min(400, width * 0.285))) : width - 2 * Theme.outer
    readonly property real besideCards: width - cardsWidth - 2 * Theme.outer - Theme.between
    // Longer sliders would be no better ones: what is beyond is for the results.
    readonly property real characterWidth: {
        if (!broad)
            return wide ? besideCards : cardsWidth;
        return tall && !showsMap && !app.inspector.isOpen ? 620 : Math.round(Math.min(1080, besideCards * 0.58));
    }
    readonly property real tallestRow: 46
    // What a strip that is dragged taller leaves of the sliders.
    readonly property real leastCharacter: 220
    readonly property real mapHeight: wide ? stack.characterHeight : Math.max(320, Math.min(560, cardsWidth * 0.8))
    // Scroll bars stand beside the cards, so that these are as wide with one as without.
    readonly property real barWidth: 10

    // The inspector comes before the map.
    readonly property bool showsMap: app.map.isShown && !app.inspector.isOpen
    readonly property bool showsSliders: character.visible
    readonly property alias sheets: sheets

    // Keys that mean the whole window do something.
    property bool listening: true

    focus: true

    Keys.enabled: listening
    // First what is heard, then what is open, then what runs: nobody who wants silence loses a training.
    Keys.onEscapePressed: {
        if (app.playback.stop())
            return;
        if (app.inspector.isOpen)
            app.inspector.isOpen = false;
        else if (app.isBusy || app.model.isLoading || (app.files.isMoving && !app.files.isCancelling))
            app.cancel();
        else if (app.errorMessage.length > 0)
            app.dismissError();
    }

    // The map in place of the sliders and of the inspector, or the sliders again.
    function switchMap() {
        const shows = !showsMap && app.map.canShow;
        if (shows)
            app.inspector.isOpen = false;
        app.map.isShown = shows;
        Qt.callLater(focusMap);
    }
    function focusMap() {
        if (!mapView.item)
            return;
        (mapView.item as MapView).takeKeyboard();
        stack.reveal(mapView);
    }
    // The slider under the pointer or with the keyboard, at seven places.
    function sweep() {
        const parameter = character.visible ? character.pointedParameter() : "";
        if (parameter.length > 0)
            app.sweep.open(parameter);
    }
    Connections {
        target: content.app.sweep

        function onOpenChanged() {
            if (content.app.sweep.isOpen)
                (sweepPopup.made() as SweepPopup).open();
            else if (sweepPopup.item)
                (sweepPopup.item as SweepPopup).close();
        }
    }
    Later {
        id: sweepPopup
        view: "SweepPopup.qml"
        needs: ({
                "app": content.app
            })
    }
    // While B is held: the state before. What opens meanwhile gets the present one.
    onActiveFocusChanged: {
        if (!activeFocus)
            app.endComparison();
    }
    Keys.onReleased: event => {
        if (event.key === Qt.Key_B && !event.isAutoRepeat && app.character.isComparing)
            app.endComparison();
    }
    Connections {
        target: content.Window.window

        function onActiveChanged() {
            if (!content.Window.active)
                content.app.endComparison();
        }
    }
    function goToResults() {
        if (strip.visible)
            strip.goOn();
    }
    function togglePlay() {
        if (strip.visible)
            strip.togglePlay();
    }
    // Of what has the keyboard: the sounds, with the inspector, or the parameters.
    function undo() {
        const ofSounds = strip.hasKeyboard || inspectorPane.activeFocus || mapView.activeFocus;
        if (strip.visible && ofSounds && takeBack())
            return;
        // Nothing changes that nobody sees.
        if (character.visible)
            app.character.undo();
    }
    // The newer one first: a candidate that was discarded, or what was done to a file.
    function takeBack(): bool {
        if (app.candidates.lastDiscarded() > app.files.lastChange())
            return strip.discarded() || app.files.undo();
        return app.files.undo() || strip.discarded();
    }
    function toggleInspector() {
        strip.toggleInspector();
    }
    // Keys of the inspector, wherever the keyboard is but in a text field.
    Keys.onPressed: event => {
        if (event.key === Qt.Key_B && event.modifiers === Qt.NoModifier && !(content.Window.activeFocusItem instanceof TextInput)) {
            event.accepted = true;
            if (!event.isAutoRepeat && character.visible)
                app.beginComparison();
            return;
        }
        event.accepted = app.inspector.isOpen && (event.modifiers === Qt.NoModifier || event.modifiers === Qt.KeypadModifier);
        if (!event.accepted)
            return;
        if (event.key >= Qt.Key_1 && event.key <= Qt.Key_9)
            app.inspector.playInTurn(event.key - Qt.Key_0);
        else if (event.key === Qt.Key_K)
            strip.keep();
        else if (event.key === Qt.Key_F2)
            (inspectorPane.item as InspectorPanel).beginRenaming();
        else
            event.accepted = false;
    }

    // A field hands on what is typed when it loses the keyboard.
    function takeWhatIsTyped() {
        const field = content.Window.activeFocusItem as TextInput;
        if (!field)
            return;
        elsewhere.forceActiveFocus(Qt.OtherFocusReason);
        field.forceActiveFocus(Qt.OtherFocusReason);
    }
    Connections {
        target: content.app.generation

        function onCommanded() {
            content.takeWhatIsTyped();
        }
    }
    Connections {
        target: content.app.candidates

        function onCommanded() {
            content.takeWhatIsTyped();
        }
    }
    Item {
        id: elsewhere
    }

    Binding {
        target: Theme
        property: "dark"
        value: content.app.appearance.dark
    }
    Binding {
        target: Theme
        property: "reducedMotion"
        value: content.app.appearance.reducedMotion
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.window
    }
    // A folder is taken wherever it is dropped. Below everything: what is above may have its own use for it.
    DropArea {
        id: anywhere
        anchors.fill: parent
        // What is dragged out of this window is no corpus.
        onEntered: drag => drag.accepted = drag.hasUrls && drag.source === null
        onDropped: drop => {
            drop.acceptProposedAction();
            content.app.drops.drop(drop.urls);
        }
    }
    ErrorBanner {
        id: banner
        x: characterPane.x
        y: Theme.outer
        width: content.characterWidth
        app: content.app
        tallestMessage: Math.max(40, Math.min(160, content.height * 0.25))
    }

    // The stack of a narrow window; in a wide one it is as high as its content and does not scroll.
    ScrollPane {
        id: stack

        // In a wide window the banner takes its room from the character panel: the cards stay where they are.
        readonly property real bannerHeight: banner.visible ? banner.height + Theme.between : 0
        readonly property real start: content.wide || !banner.visible ? 0 : banner.y + banner.height
        readonly property real stackedHeight: strip.y + (strip.visible ? strip.height : -Theme.between) + Theme.outer
        readonly property real paneHeight: height - 2 * Theme.outer
        readonly property bool hasResultsBelow: strip.visible && !content.broad
        readonly property real characterHeight: paneHeight - bannerHeight - (hasResultsBelow ? strip.height + Theme.between : 0)
        // What the rows of the character panel cannot use.
        readonly property real spareHeight: paneHeight - bannerHeight - Theme.between - character.heightFor(content.tallestRow)

        y: start
        width: content.width
        height: footer.y - start
        scrolls: !content.wide
        contentHeight: content.wide ? height : stackedHeight

        ScrollPane {
            id: cardsPane
            objectName: "cardsPane"
            x: Theme.outer
            y: Theme.outer
            width: content.cardsWidth + content.barWidth
            height: content.wide ? stack.paneHeight : contentHeight
            scrolls: content.wide
            contentHeight: cards.height

            Column {
                id: cards
                width: content.cardsWidth
                spacing: Theme.between

                CorpusCard {
                    width: parent.width
                    onFilesRequested: sheets.showFiles()
                    onModelsRequested: sheets.showModels()
                    targeted: anywhere.containsDrag && content.app.corpus.canChoose
                    app: content.app
                }
                ModelCard {
                    width: parent.width
                    onReportRequested: sheets.showReport()
                    app: content.app
                }
                OutputCard {
                    width: parent.width
                    onRunsRequested: sheets.showRuns()
                    app: content.app
                }
            }
        }
        ScrollPane {
            id: characterPane
            objectName: "characterPane"
            x: content.wide ? cardsPane.x + content.cardsWidth + Theme.between : Theme.outer
            y: content.wide ? Theme.outer + stack.bannerHeight : cardsPane.y + cardsPane.height + Theme.between
            width: content.characterWidth + content.barWidth
            height: content.wide ? stack.characterHeight : contentHeight
            scrolls: content.wide
            contentHeight: {
                if (inspectorPane.wanted)
                    return inspectorPane.height;
                return mapView.wanted ? content.mapHeight : character.height;
            }

            // In the place of the sliders while it is open.
            Later {
                id: inspectorPane
                wanted: content.app.inspector.isOpen
                width: content.characterWidth
                height: item ? Math.max((item as InspectorPanel).implicitHeight, content.wide ? stack.characterHeight : 0) : 0
                view: "InspectorPanel.qml"
                needs: ({
                        "app": content.app
                    })
                onLoaded: {
                    const panel = item as InspectorPanel;
                    panel.room = Qt.binding(() => content.wide ? stack.characterHeight : 0);
                    panel.keepRequested.connect(strip.keep);
                }
            }
            // There as well, unless the inspector is.
            Later {
                id: mapView
                wanted: content.showsMap
                width: content.characterWidth
                height: content.mapHeight
                view: "MapView.qml"
                needs: ({
                        "app": content.app
                    })
                onLoaded: (item as MapView).closeRequested.connect(content.switchMap)
            }
            CharacterPanel {
                id: character
                visible: !inspectorPane.wanted && !mapView.wanted
                hasMap: content.app.map.canShow
                onMapRequested: content.switchMap()
                width: content.characterWidth
                height: Math.max(implicitHeight, content.wide ? characterPane.height : 0)
                character: content.app.character
                output: content.app.output
                // Without a corpus nothing here is the next thing to do.
                emphasised: content.app.corpus.isChosen
                // A taller window gives the rows more air, up to a point.
                rowHeight: content.wide ? Math.max(23, Math.min(content.tallestRow, Math.floor(rowHeightFor(stack.characterHeight)))) : 32
            }
        }
        StripPlace {
            id: strip
            x: content.broad ? characterPane.x + content.characterWidth + Theme.between : characterPane.x
            y: {
                if (content.broad)
                    return Theme.outer;
                return content.wide ? stack.height - height - Theme.outer : characterPane.y + characterPane.height + Theme.between;
            }
            width: content.broad ? content.besideCards - content.characterWidth - Theme.between : content.characterWidth
            height: content.broad ? stack.paneHeight : content.wide ? Math.max(implicitHeight, stack.spareHeight) : implicitHeight
            canGrow: content.wide && !content.broad
            mostHeight: stack.paneHeight - stack.bannerHeight - content.leastCharacter
            visible: content.broad || hasResults || hasCandidates
            app: content.app
        }
        // What is new in a narrow window may be far below.
        Connections {
            target: content.app.generation.results

            function onCountChanged() {
                if (!content.wide && content.app.generation.results.total > 0)
                    Qt.callLater(stack.reveal, strip);
            }
        }
        Connections {
            target: content.app.candidates

            function onSetsChanged() {
                if (!content.wide)
                    Qt.callLater(stack.reveal, strip);
            }
        }
        Connections {
            target: content.app.inspector

            function onIsOpenChanged() {
                if (!content.wide && content.app.inspector.isOpen)
                    Qt.callLater(stack.reveal, inspectorPane);
            }
        }
    }
    Sheets {
        id: sheets
        app: content.app
    }
    FooterBar {
        id: footer
        y: content.height - height
        width: content.width
        app: content.app
    }
}
