import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

WindowCase {
    name: "Inspector"

    function opened(count) {
        generated(count ?? 3);
        keyClick(Qt.Key_I);
        tryVerify(() => app.inspector.durationText.length > 0, limit);
        tryVerify(() => app.inspector.nearest.length > 0, limit);
    }
    function openedOnCandidates() {
        trained();
        app.output.folderText = Stage.path("out");
        mouseClick(item("try"));
        idle();
        keyClick(Qt.Key_I);
        tryVerify(() => app.inspector.nearest.length > 0, limit);
    }
    function playing(): string {
        return String(app.playback.playingURL);
    }

    function test_isClosedAtFirst() {
        generated(1);
        verify(!has("inspectedSound"));
        verify(has("slider-pitch"));
    }
    function test_oneKeyOpensAndCloses() {
        opened();
        verify(has("inspectedSound"));
        verify(!has("slider-pitch"));
        keyClick(Qt.Key_I);
        verify(!has("inspectedSound"));
        verify(has("slider-pitch"));
    }
    function test_escapeStopsTheSoundThenCloses() {
        opened();
        app.inspector.togglePlay();
        tryVerify(() => playing().length > 0, limit);
        keyClick(Qt.Key_Escape);
        compare(playing(), "");
        verify(has("inspectedSound"));
        keyClick(Qt.Key_Escape);
        verify(!has("inspectedSound"));
    }
    function test_escapeClosesBeforeItCancels() {
        opened();
        Stage.setTrainingSteps(100000);
        app.model.train();
        keyClick(Qt.Key_Escape);
        verify(!has("inspectedSound"));
        verify(!app.model.isCancelling);
        keyClick(Qt.Key_Escape);
        idle();
    }
    function test_buttonsOpenAndClose() {
        generated(2);
        mouseClick(item("inspectResult"));
        verify(has("inspectedSound"));
        mouseClick(item("closeInspector"));
        verify(!has("inspectedSound"));
        mouseClick(item("try"));
        idle();
        mouseClick(item("inspectCandidate"));
        verify(has("inspectedSound"));
        verifySeen("Candidate 1");
    }
    function test_theKeyIsALetterInATextField() {
        generated(1);
        type("outputPath", "i");
        compare(app.output.folderText, "i");
        verify(!app.inspector.isOpen);
    }
    function test_withoutASoundItSaysWhatToDo() {
        keyClick(Qt.Key_I);
        verifySeen("Select a candidate or a result below.");
        keyClick(Qt.Key_Escape);
        verifyNotSeen("Select a candidate or a result below.");
    }
    function test_followsTheSelection() {
        opened(3);
        verifySeen("Drums_var_0001.wav");
        focusOn("results");
        keyClick(Qt.Key_Right);
        tryCompare(app.inspector, "title", "Drums_var_0002.wav", limit);
        tryVerify(() => app.inspector.nearest.length > 0, limit);
        mouseClick(item("try"));
        idle();
        tryCompare(app.inspector, "title", "Candidate 1", limit);
        keyClick(Qt.Key_X);
        tryCompare(app.inspector, "title", "Candidate 2", limit);
        keyClick(Qt.Key_Right);
        tryCompare(app.inspector, "title", "Candidate 3", limit);
        mouseClick(item("showResults"));
        tryCompare(app.inspector, "title", "Drums_var_0002.wav", limit);
        app.output.count = 1;
        app.generation.generate();
        idle();
        tryCompare(app.inspector, "title", "Drums_var_0004.wav", limit);
    }
    function test_tellsHowItSoundsAndHowNewItIs() {
        opened();
        verify(/^\d+\.\d\d s$/.test(item("inspectedDuration").text));
        verify(/ dB, peak .* dB$/.test(item("inspectedLevel").text), item("inspectedLevel").text);
        verifySeen("Made of");
        verifySeen("Nearest in the corpus");
        compare(item("verdict").text, app.inspector.verdict);
        verify(has("noveltyMark"));
        verify(seesMatch(/^hit\d\.wav$/));
        verify(seesMatch(/^\d+ %$/));
    }
    function test_keysPlayRelativesInTurn() {
        opened();
        keyClick(Qt.Key_1);
        tryVerify(() => playing().startsWith("clip:"), limit);
        tryCompare(item("relative-1"), "playing", true, limit);
        keyClick(Qt.Key_1);
        tryCompare(app.playback, "playingURL", app.inspector.soundURL, limit);
        keyClick(Qt.Key_1);
        tryVerify(() => playing().startsWith("clip:"), limit);
        keyClick(Qt.Key_9);  // no such one
        verify(playing().startsWith("clip:"));
    }
    function test_relativesPlayByMouseAndByReturn() {
        opened();
        mouseClick(item("relative-1"));
        tryVerify(() => playing().startsWith("clip:"), limit);
        app.playback.stop();
        focusOn("relative-2");
        verify(Stage.showsFocus(item("relative-2")));
        keyClick(Qt.Key_Return);
        tryVerify(() => playing().startsWith("clip:"), limit);
    }
    function test_ofAnotherFolderNoSourceIsPlayed() {
        openedOnCandidates();
        verifySeen("Made of");
        app.corpus.choose(Stage.makeCorpus("Others", 5));
        idle();
        compare(app.inspector.title, "Candidate 1");
        verifySeen("Made of samples of another folder");
        verify(!item("relative-0").enabled);
        tryVerify(() => app.inspector.nearest.length > 0, limit);
        keyClick(Qt.Key_1);  // the nearest one, of this folder
        tryVerify(() => playing().startsWith("clip:"), limit);
    }
    function test_playheadRuns() {
        app.corpus.choose(Stage.makeCorpus("Long", 3, 2));
        idle();
        app.model.train();
        idle();
        app.output.folderText = Stage.path("out");
        app.output.count = 1;
        app.generation.generate();
        idle();
        keyClick(Qt.Key_I);
        tryVerify(() => app.inspector.durationText.length > 0, limit);
        verify(!has("playhead"));
        mouseClick(item("inspectedSound"));
        tryVerify(() => has("playhead"), limit);
        const view = item("inspectedSound");
        tryVerify(() => view.place > 0, limit);
        mouseClick(view);
        tryVerify(() => !has("playhead"), limit);
        compare(view.place, 0);
    }
    function test_keepsACandidate() {
        openedOnCandidates();
        verify(item("keepInspected").visible);
        for (const name of ["trashInspected", "favouriteInspected", "renameInspected", "showInspected"])
            verify(!item(name).enabled, name);
        focusOn("moreLikeThis");
        keyClick(Qt.Key_K);
        tryCompare(app.inspector, "title", "Drums_var_0001.wav", limit);
        verify(!has("keepInspected"));
        verify(item("trashInspected").enabled);
        compare(app.generation.results.count, 1);
    }
    function test_relativesAreNewCandidates_data() {
        return [{
                "tag": "moreLikeThis",
                "about": "Like Candidate 1"
            }, {
                "tag": "newSkins",
                "about": "New skins of Candidate 1"
            }, {
                "tag": "newBodies",
                "about": "New bodies for Candidate 1"
            }];
    }
    function test_relativesAreNewCandidates(row) {
        openedOnCandidates();
        mouseClick(item(row.tag));
        idle();
        compare(app.candidates.sets, 2);
        compare(app.candidates.list.count, 12);
        verifySeen(row.about);
        compare(app.errorMessage, "");
    }
    function test_resultsHaveRelativesToo() {
        opened(1);
        mouseClick(item("moreLikeThis"));
        idle();
        verifySeen("Like Drums_var_0001.wav");
    }
    function test_copiesTheRecipe() {
        opened(1);
        mouseClick(item("copyRecipe"));
        const recipe = JSON.parse(Stage.clipboard());
        compare(recipe.quillmere, "recipe");
        compare(recipe.format, "wav24");
        verifySeen("Recipe copied");
    }
    function test_showsTheFile() {
        opened(2);
        mouseClick(item("showInspected"));
        tryVerify(() => Stage.shownFiles().length === 1, limit);
        compare(Stage.shownFiles(), [app.generation.results.urlAt(0)]);
        compare(Stage.pathOf(Stage.shownFolder()), Stage.path("out"));
    }
    function test_trashAndBack() {
        opened(2);
        focusOn("results");
        mouseClick(item("trashInspected"));
        tryVerify(() => !item("tile-0").exists, limit);
        verifySeen("In the trash: Drums_var_0001.wav");
        focusOn("results");
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        tryVerify(() => item("tile-0").exists, limit);
        verifySeen("Back again: Drums_var_0001.wav");
    }
    function test_theNewestIsTakenBackFirst() {
        openedOnCandidates();
        focusOn("candidates");
        keyClick(Qt.Key_K);
        tryCompare(app.generation.results, "count", 1, limit);
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_X);
        tryCompare(app.candidates.list, "count", 11, limit);
        keyClick(Qt.Key_Left);
        tryCompare(app.inspector, "title", "Drums_var_0001.wav", limit);
        mouseClick(item("trashInspected"));
        tryCompare(app.files, "canUndo", true, limit);
        focusOn("candidates");
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        verifySeen("Back again: Drums_var_0001.wav");
        compare(app.candidates.list.count, 11);
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        tryCompare(app.candidates.list, "count", 12, limit);
    }
    function test_renames() {
        opened(2);
        keyClick(Qt.Key_F2);
        tryVerify(() => focusName() === "renameField", limit);
        compare(item("renameField").text, "Drums_var_0001");
        for (const letter of "Big")
            keyClick(letter);
        keyClick(Qt.Key_Return);
        tryCompare(app.inspector, "title", "Big.wav", limit);
        compare(item("tile-0").fileName, "Big.wav");
        verify(item("tile-0").exists);
        verify(!has("renameField"));
        // What happens to the sound meanwhile does not take the name away that is being typed.
        mouseClick(item("renameInspected"));
        keyClick("x");
        app.toggleInspectedFavourite();
        verify(has("renameField"));
        compare(item("renameField").text, "x");
        keyClick(Qt.Key_Escape);
        // With Esc the name stays, and the inspector open.
        mouseClick(item("renameInspected"));
        keyClick("x");
        keyClick(Qt.Key_Escape);
        verify(!has("renameField"));
        compare(app.inspector.title, "Big.wav");
        keyClick(Qt.Key_Z, Qt.ControlModifier);  // the mark comes before the name
        verify(!app.inspectedIsFavourite());
        compare(app.inspector.title, "Big.wav");
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        tryCompare(app.inspector, "title", "Drums_var_0001.wav", limit);
    }
    function test_favouritesHaveAStar() {
        opened(2);
        verify(!has("star-0"));
        mouseClick(item("favouriteInspected"));
        verify(has("star-0") && !has("star-1"));
        verify(item("favouriteInspected").checked);
        mouseClick(item("favouriteInspected"));
        verify(!has("star-0"));
        verify(!item("favouriteInspected").checked);
    }
    function test_everythingHasANameAndARole() {
        Stage.switchAccessibilityOn();
        opened(2);
        settle();
        compare(Stage.namelessControls(window.contentItem), []);
        const told = Stage.accessibleNames(window.contentItem);
        for (const name of ["Grouping Inspector", "Button Close the inspector", "Button More like this", "Button New skin", "Button New body", "Button Copy recipe", "Button Show file", "Button Move to trash", "Heading Made of", "Heading Nearest in the corpus", "ProgressBar Distance to the nearest sample"])
            verify(told.includes(name), name + " in " + told.join("; "));
        verify(told.some(name => /^Button Play hit\d\.wav$/.test(name)));
    }
    function test_nothingIsCutOffInAnySize() {
        opened(3);
        for (const size of [Qt.size(480, 360), Qt.size(640, 480), Qt.size(800, 600), Qt.size(900, 600), Qt.size(1180, 820), Qt.size(1700, 900), Qt.size(1920, 1080), Qt.size(3840, 2160)]) {
            resize(size.width, size.height);
            const where = " at " + size.width + "x" + size.height;
            compare(Stage.clippedTexts(window.contentItem).map(text => text + where), []);
            compare(Stage.itemsOutside(window.contentItem).map(text => text + where), []);
            compare(Stage.overlaps(window.contentItem).map(text => text + where), []);
        }
    }
    function test_firstSizeNeedsNoScrolling() {
        opened(3);
        settle();
        verify(!item("characterPane").overflows);
    }
}
