import QtQuick
import QuillmereApp

// The place of what was made last: the results, or the candidates while somebody is at these.
Item {
    id: place

    required property AppModel app
    readonly property bool hasResults: app.generation.results.count > 0
    readonly property bool hasCandidates: app.candidates.sets > 0
    readonly property bool showsCandidates: candidatesWanted && hasCandidates
    readonly property bool candidatesHaveKeyboard: showsCandidates && candidates !== null && candidates.hasKeyboard
    property bool candidatesWanted: false
    readonly property CandidatesStrip candidates: candidatesLoader.item as CandidatesStrip

    implicitHeight: results.implicitHeight

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
    }
    // Not before there are any: the window is to be there soon.
    Loader {
        id: candidatesLoader
        anchors.fill: parent
        active: place.hasCandidates
        visible: place.showsCandidates
        sourceComponent: CandidatesStrip {
            app: place.app
            onResultsRequested: place.showResults()
        }
    }
}
