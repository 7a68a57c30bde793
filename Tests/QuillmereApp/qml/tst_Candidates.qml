import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

WindowCase {
    name: "Candidates"

    function tried() {
        trained();
        app.output.folderText = Stage.path("out");
        mouseClick(item("try"));
        idle();
        compare(app.candidates.list.count, 12);
    }
    function playing(): string {
        return String(app.playback.playingURL);
    }
    // The candidate of that number, of those that there have been.
    function verifyPlaying(number) {
        tryVerify(() => playing() === "candidate:" + number, limit, "plays " + playing());
    }
    function verifyNumber(row, number) {
        tryVerify(() => has("candidate-" + row) && item("candidate-" + row).number === number, limit);
    }
    function keptFiles(): int {
        return app.generation.results.count;
    }

    function test_needsAModel() {
        verify(!item("try").enabled);
        keyClick(Qt.Key_N, Qt.ControlModifier);
        verifySeen("There is no model to try yet. Train one first, or press Generate.");
    }
    function test_twelveAreThereAndTheFirstIsHeard() {
        trained();
        mouseClick(item("try"));
        verifyPlaying(1);
        idle();
        verifySeen("Candidates");
        verifySeen("12 sounds");
        verifySeen("Seed " + app.candidates.seed);
        compare(app.character.lastSeed, app.candidates.seed);
        verify(!has("results"));
        tryVerify(() => has("candidate-0"), limit);
        verify(item("candidate-0").isPlaying);
        compare(item("candidates").currentIndex, 0);
    }
    function test_theCurrentOneStaysInSight() {
        tried();
        const list = item("candidates");
        list.currentIndex = 10;
        for (const size of [Qt.size(1700, 900), Qt.size(1180, 820), Qt.size(900, 600), Qt.size(640, 480)]) {
            resize(size.width, size.height);
            tryVerify(() => {
                    const place = list.currentItem.mapToItem(list, 0, 0);
                    return place.x >= 0 && place.x + list.currentItem.width <= list.width && place.y >= 0 && place.y < list.height;
                }, limit, size.width + "x" + size.height);
        }
    }
    function test_shortcutTakesWhatIsTyped() {
        trained();
        type("value-pitch", "12");
        keyClick(Qt.Key_N, Qt.ControlModifier);
        compare(app.character.parameters.get("pitch", "value"), 12);
        idle();
        compare(app.candidates.list.count, 12);
        verify(item("candidates").activeFocus);
    }
    function test_keysMoveAndPlay() {
        tried();
        keyClick(Qt.Key_Right);
        verifyPlaying(2);
        keyClick(Qt.Key_Right);
        verifyPlaying(3);
        keyClick(Qt.Key_Left);
        verifyPlaying(2);
        keyClick(Qt.Key_End);
        verifyPlaying(12);
        keyClick(Qt.Key_Space);
        tryVerify(() => playing() === "", limit);
        keyClick(Qt.Key_Return);
        verifyPlaying(12);
        keyClick(Qt.Key_Home);
        verifyPlaying(1);
    }
    function test_keepWritesAFile() {
        tried();
        compare(keptFiles(), 0);
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_K);
        tryCompare(item("candidate-1"), "isKept", true, limit);
        verifySeen("kept");
        verifySeen("Kept: Drums_var_0001.wav");
        compare(keptFiles(), 1);
        keyClick(Qt.Key_K);  // once is enough
        keyClick(Qt.Key_X);  // and it stays
        compare(app.candidates.list.count, 12);
        mouseClick(item("showResults"));
        verify(has("tile-0"));
        compare(item("tile-0").fileName, "Drums_var_0001.wav");
        verify(item("tile-0").exists);
        compare(keptFiles(), 1);
    }
    function test_discardGoesOnAndUndoBringsBack() {
        tried();
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_X);
        compare(app.candidates.list.count, 11);
        verifyPlaying(3);
        verifyNumber(1, 3);
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        compare(app.candidates.list.count, 12);
        compare(item("candidates").currentIndex, 1);
        verifyNumber(1, 2);
    }
    function test_undoElsewhereIsOfTheParameters() {
        tried();
        keyClick(Qt.Key_X);
        focusOn("slider-pitch");
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        compare(app.character.parameters.get("pitch", "value"), 0);
        compare(app.candidates.list.count, 11);
        focusOn("candidates");
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        compare(app.candidates.list.count, 12);
    }
    function test_allCanBeDiscarded() {
        tried();
        for (let i = 0; i < 12; ++i)
            keyClick(Qt.Key_X);
        verifySeen("All discarded. Ctrl+Z brings them back.");
        compare(playing(), "");
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        compare(app.candidates.list.count, 1);
        verifyNumber(0, 12);
    }
    function test_byMouse() {
        tried();
        const tile = item("candidate-2");
        mouseClick(tile, tile.width / 2, 20);
        verifyPlaying(3);
        compare(item("candidates").currentIndex, 2);
        mouseClick(item("keep-2"));
        tryCompare(item("candidate-2"), "isKept", true, limit);
        verify(!has("keep-2"));
        mouseMove(item("candidate-1"), 20, 20);
        mouseClick(item("discard-1"));
        compare(app.candidates.list.count, 11);
        verifyNumber(1, 3);
        mouseClick(item("playCandidate-0"));
        verifyPlaying(1);
        mouseClick(item("playCandidate-0"));
        tryVerify(() => playing() === "", limit);
    }
    function test_setsStayAndCanBeSeenAgain() {
        tried();
        verify(!has("olderSet"));
        const first = app.candidates.seed;
        mouseClick(item("try"));
        idle();
        verifySeen("2 / 2");
        verify(app.candidates.seed !== first);
        mouseClick(item("olderSet"));
        verifySeen("1 / 2");
        compare(app.candidates.seed, first);
        mouseClick(item("copyCandidatesSeed"));
        compare(Stage.clipboard(), first);
        verify(!item("olderSet").enabled);
        mouseClick(item("newerSet"));
        verifySeen("2 / 2");
    }
    function test_resultsAndCandidatesChangePlaces() {
        generated(3);
        verify(!has("showCandidates"));
        mouseClick(item("try"));
        idle();
        verify(has("candidates") && !has("results"));
        keyClick(Qt.Key_R, Qt.ControlModifier);
        verify(item("results").activeFocus);
        keyClick(Qt.Key_R, Qt.ControlModifier);
        verify(item("candidates").activeFocus);
        focusOn("seed");
        keyClick(Qt.Key_R, Qt.ControlModifier);
        verify(item("candidates").activeFocus);
        mouseClick(item("showResults"));
        mouseClick(item("showCandidates"));
        verify(item("candidates").activeFocus);
        // A generation shows its results.
        app.generation.generate();
        idle();
        verify(has("results"));
        compare(app.candidates.sets, 1);
    }
    function test_spacePlaysFromASlider() {
        tried();
        app.playback.stop();
        focusOn("slider-pitch");
        keyClick(Qt.Key_Space);
        verifyPlaying(1);
    }
    function test_longSetsShowProgressAndCancel() {
        app.corpus.choose(Stage.makeCorpus("Long", 3, 2));
        idle();
        app.model.train();
        idle();
        app.character.parameters.setValue("stretch", 8);
        app.character.parameters.setValue("phase-iterations", 100000);
        Theme.patience = 0;
        mouseClick(item("try"));
        tryVerify(() => has("cancelGeneration"), limit);
        verifySeen("0 of 12");
        mouseClick(item("cancelGeneration"));
        idle();
        verify(app.candidates.sets <= 1);
        compare(app.errorMessage, "");
    }
    function test_escapeStopsTheSoundThenTheSet() {
        tried();
        verifyPlaying(1);
        keyClick(Qt.Key_Escape);
        compare(playing(), "");
        compare(app.candidates.list.count, 12);
    }
    function test_everythingHasANameAndARole() {
        Stage.switchAccessibilityOn();
        tried();
        settle();
        compare(Stage.namelessControls(window.contentItem), []);
        const told = Stage.accessibleNames(window.contentItem);
        for (const name of ["Button Try 12", "Grouping Candidates", "List Candidates", "ListItem Candidate 1", "Button Stop Candidate 1", "Button Keep Candidate 1", "Button Discard Candidate 1", "Button Results"])
            verify(told.includes(name), name + " in " + told.join("; "));
        Stage.doAccessibleAction(item("candidate-1"), "Press");
        verifyPlaying(2);
    }
    function test_nothingIsCutOffInAnySize() {
        tried();
        mouseClick(item("try"));
        idle();
        keyClick(Qt.Key_K);
        tryCompare(item("candidate-0"), "isKept", true, limit);
        for (const size of [Qt.size(480, 360), Qt.size(640, 480), Qt.size(800, 600), Qt.size(900, 600), Qt.size(1180, 820), Qt.size(1700, 900), Qt.size(1920, 1080), Qt.size(3840, 2160)]) {
            resize(size.width, size.height);
            const where = " at " + size.width + "x" + size.height;
            compare(Stage.clippedTexts(window.contentItem).map(text => text + where), []);
            compare(Stage.itemsOutside(window.contentItem).map(text => text + where), []);
            compare(Stage.overlaps(window.contentItem).map(text => text + where), []);
        }
    }
    function test_keyboardIsSeen() {
        tried();
        const tile = item("candidate-0");
        compare(tile.border.width, 2);
        focusOn("seed");
        compare(tile.border.width, 1);
    }
}
