import QtQuick
import QuillmereApp

// The place of what was made last: the results, or the candidates while somebody is at these.
Item {
    id: place

    required property AppModel app
    readonly property bool hasResults: app.generation.results.total > 0
    readonly property bool hasCandidates: app.candidates.sets > 0
    readonly property bool showsCandidates: candidatesWanted && hasCandidates
    readonly property bool hasKeyboard: candidatesHaveKeyboard || (!showsCandidates && results.hasKeyboard)
    readonly property bool candidatesHaveKeyboard: showsCandidates && candidates !== null && candidates.hasKeyboard
    property bool candidatesWanted: false
    // A CandidatesStrip, whose file is not read before there are any.
    readonly property var candidates: candidatesLoader.item

    // Of the selected tile
    readonly property int row: showsCandidates ? (candidates ? candidates.row : -1) : results.row

    // It may be dragged taller: so many rows, and so high at most.
    property bool canGrow: false
    property real mostHeight: 0
    property int rows: 1
    readonly property real rowHeight: results.rowHeight
    readonly property int mostRows: canGrow ? Math.max(1, 1 + Math.floor((mostHeight - results.implicitHeight) / rowHeight)) : 1

    implicitHeight: results.implicitHeight + (Math.min(rows, mostRows) - 1) * rowHeight

    function grow(by: int) {
        rows = Math.max(1, Math.min(mostRows, rows + by));
    }

    function takeKeyboard() {
        if (showsCandidates)
            candidates.takeKeyboard();
        else if (hasResults)
            results.takeKeyboard();
    }
    function showResults() {
        candidatesWanted = false;
        takeKeyboard();
    }
    function showCandidates() {
        candidatesWanted = true;
        takeKeyboard();
    }
    // To what is shown; from there to the other one.
    function goOn() {
        if (candidatesHaveKeyboard && hasResults)
            showResults();
        else if (hasCandidates && (results.hasKeyboard || !hasResults))
            showCandidates();
        else
            takeKeyboard();
    }
    function togglePlay() {
        if (showsCandidates)
            candidates.togglePlay();
        else
            results.togglePlay();
    }

    function keep() {
        if (showsCandidates)
            app.candidates.keep(row);
    }
    function discarded(): bool {
        return showsCandidates && app.candidates.undo();
    }
    // What is selected is what the inspector looks at.
    function inspect() {
        if (showsCandidates)
            app.inspectCandidate(row);
        else
            app.inspectResult(row);
    }
    function toggleInspector() {
        app.inspector.isOpen = !app.inspector.isOpen;
        inspect();
    }

    onRowChanged: Qt.callLater(inspect)
    onShowsCandidatesChanged: Qt.callLater(inspect)

    Connections {
        target: place.app.generation.results

        function onCountChanged() {
            Qt.callLater(place.inspect);
        }
        function onModelReset() {
            Qt.callLater(place.inspect);
        }
    }
    Connections {
        target: place.app.candidates.list

        function onCountChanged() {
            Qt.callLater(place.inspect);
        }
        function onModelReset() {
            Qt.callLater(place.inspect);
        }
    }
    Connections {
        target: place.app

        function onSoundTaken(file: url) {
            place.showResults();
            results.select(file);
        }
    }
    Connections {
        target: place.app.runs

        function onFilesOpened() {
            place.showResults();
        }
    }
    Connections {
        target: place.app.candidates

        function onIsTryingChanged() {
            if (place.app.candidates.isTrying && !place.app.candidates.isCancelling)
                place.showCandidates();
        }
    }
    Connections {
        target: place.app.generation

        function onIsGeneratingChanged() {
            if (place.app.generation.isGenerating)
                place.candidatesWanted = false;
        }
    }
    ResultsStrip {
        id: results
        anchors.fill: parent
        visible: !place.showsCandidates
        app: place.app
        onCandidatesRequested: place.showCandidates()
        onGrowthRequested: by => place.grow(by)
        onInspectRequested: place.toggleInspector()
    }
    // Not before there are any: the window is to be there soon.
    Later {
        id: candidatesLoader
        anchors.fill: parent
        wanted: place.hasCandidates
        visible: place.showsCandidates
        view: "CandidatesStrip.qml"
        needs: ({
                "app": place.app
            })
        onLoaded: {
            const strip = item as CandidatesStrip;
            strip.resultsRequested.connect(place.showResults);
            strip.growthRequested.connect(place.grow);
            strip.inspectRequested.connect(place.toggleInspector);
        }
    }
    StripHandle {
        y: -height
        width: parent.width
        visible: place.canGrow
        rows: place.rows
        mostRows: place.mostRows
        rowHeight: place.rowHeight
        onWanted: rows => place.rows = rows
    }
}
