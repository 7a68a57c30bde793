import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// Sounds that are dropped on the window, and several results at once.
WindowCase {
    name: "Drops"

    function selected() {
        return app.generation.results.selectedCount;
    }
    function clickTile(row, modifiers) {
        const tile = item("tile-" + row);
        mouseClick(tile, tile.width / 2, tile.height - 12, Qt.LeftButton, modifiers ?? Qt.NoModifier);
    }

    // ---- Dropping
    function test_aSoundThatWasMadeHere() {
        app.character.seedText = "7";
        generated(3);
        const file = app.generation.results.urlAt(1);
        app.character.seedText = "";
        app.character.applyPreset("Wild");
        app.candidates.start();
        idle();
        verify(has("candidates"));
        Stage.drop(item("seed"), [file]);
        tryCompare(app.character, "seedText", "7", limit);
        compare(app.character.presetName, "Balanced");
        tryVerify(() => has("results"), limit);
        compare(item("results").currentIndex, 1);
        verifySeen("This sound was made here: its settings are set again.");
    }
    function test_theModelOfASoundIsOffered() {
        generated(2);
        const file = app.generation.results.urlAt(1);
        const folder = app.corpus.url;
        app.corpus.choose(Stage.makeCorpus("Bells", 4));
        idle();
        Stage.drop(item("seed"), [file]);
        tryVerify(() => has("openOfferedModel"), limit);
        tryCompare(item("openOfferedModel"), "activeFocus", true, limit);
        compare(app.generation.results.count, 1);
        compare(Stage.namelessControls(window.contentItem), []);
        click("keepModel");
        tryVerify(() => !has("openOfferedModel"), limit);
        verify(String(app.corpus.url) !== String(folder));
        Stage.drop(item("seed"), [file]);
        tryVerify(() => has("openOfferedModel"), limit);
        click("openOfferedModel");
        tryVerify(() => !has("openOfferedModel"), limit);
        tryCompare(app.corpus, "url", folder, limit);
        idle();
        tryVerify(() => app.model.isReady, limit);
        tryCompare(app.generation.results, "count", 1, limit);
    }
    function test_aSoundFromElsewhere() {
        trained();
        Stage.makeCorpus("Elsewhere", 1);
        Stage.drop(item("corpusCard"), [Stage.url("Elsewhere/hit0.wav")]);
        verifySeen("“hit0.wav”");
        verifySeen("This sound was not made here: nothing is known of how it was made.");
        compare(focusName(), "findSimilar");
        keyClick(Qt.Key_Return);
        tryVerify(() => has("similar-2"), limit);
        verifySeen("hit2.wav");
        verifySeen("The nearest sounds of the corpus, nearest first.");
        compare(Stage.countItems(window.contentItem, "play hit"), 3);  // one button a row
        tryCompare(Stage.focused(window.contentItem), "objectName", "similar-0", limit);
        const first = app.drops.similar[0];
        keyClick(Qt.Key_Space);
        tryCompare(app.playback, "playingURL", first.url, limit);
        keyClick(Qt.Key_Space);
        tryCompare(app.playback, "playingURL", app.drops.foreignUrl, limit);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !has("similar-0"), limit);
        compare(String(app.playback.playingURL), "");
    }
    function test_aSoundFromElsewhereIsHeardByItsButton() {
        trained();
        Stage.makeCorpus("Elsewhere", 1);
        Stage.drop(item("corpusCard"), [Stage.url("Elsewhere/hit0.wav")]);
        mouseClick(item("playForeign"));
        tryCompare(app.playback, "playingURL", app.drops.foreignUrl, limit);
        compare(item("playForeign").text, "Stop hit0.wav");
        mouseClick(item("playForeign"));
        compare(String(app.playback.playingURL), "");
        mouseClick(item("findSimilar"));
        tryVerify(() => has("similar-0"), limit);
        mouseClick(item("play " + app.drops.similar[1].name));
        tryCompare(app.playback, "playingURL", app.drops.similar[1].url, limit);
    }
    function test_similarFitsIntoEveryWindow_data() {
        return [[480, 360], [800, 600], [1180, 820], [3840, 2160]].map(size => ({
                        "tag": size.join("x"),
                        "size": size
                    }));
    }
    function test_similarFitsIntoEveryWindow(row) {
        Stage.switchAccessibilityOn();
        trained();
        Stage.makeCorpus("Elsewhere", 1);
        Stage.drop(item("corpusCard"), [Stage.url("Elsewhere/hit0.wav")]);
        mouseClick(item("findSimilar"));
        tryVerify(() => has("similar-0"), limit);
        resize(row.size[0], row.size[1]);
        compare(Stage.itemsOutside(window.contentItem), []);
        compare(Stage.clippedTexts(window.contentItem), []);
        compare(Stage.namelessControls(window.contentItem), []);
    }

    // ---- Several results
    function test_selectsByMouse() {
        generated(4);
        clickTile(0);
        compare(selected(), 0);
        clickTile(2, Qt.ControlModifier);
        compare(selected(), 2);
        verifySeen("2 selected");
        verify(item("tile-0").isSelected && item("tile-2").isSelected && !item("tile-1").isSelected);
        clickTile(2, Qt.ControlModifier);
        compare(selected(), 1);
        clickTile(3, Qt.ShiftModifier);
        verify(selected() >= 2);
        clickTile(1);
        compare(selected(), 0);
        verifySeen("4 files");
    }
    function test_selectsByKeyboard() {
        generated(4);
        focusOn("results");
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_Right, Qt.ShiftModifier);
        keyClick(Qt.Key_Right, Qt.ShiftModifier);
        compare(selected(), 3);
        verify(!item("tile-0").isSelected);
        keyClick(Qt.Key_Left, Qt.ShiftModifier);
        compare(selected(), 2);
        keyClick(Qt.Key_Left);
        compare(selected(), 0);
        keyClick(Qt.Key_A, Qt.ControlModifier);
        compare(selected(), 4);
        keyClick(Qt.Key_Escape);
        compare(selected(), 0);
    }
    function test_trashesTheSelectionAndBringsItBack() {
        generated(4);
        focusOn("results");
        keyClick(Qt.Key_Right, Qt.ShiftModifier);
        keyClick(Qt.Key_Delete);
        verifySeen("In the trash: 2 files");
        tryVerify(() => !item("tile-0").exists && !item("tile-1").exists, limit);
        verify(item("tile-2").exists);
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        verifySeen("Back again: 2 files");
        tryVerify(() => item("tile-0").exists && item("tile-1").exists, limit);
    }
    function test_showsHowFarTheFilesAreAndStopsThem() {
        generated(3);
        focusOn("results");
        keyClick(Qt.Key_A, Qt.ControlModifier);
        Stage.holdTrash();
        keyClick(Qt.Key_Delete);
        verifySeen("Moving files: 0 of 3");
        keyClick(Qt.Key_Escape);
        verifySeen("Cancelling…");
        Stage.letTrashGo();
        tryVerify(() => seesMatch(/^In the trash: .*_0001\.wav\. Not moved: 2 files$/), limit);
        verifyNotSeen("Cancelling…");
        tryVerify(() => !item("tile-0").exists, limit);
        verify(item("tile-1").exists && item("tile-2").exists);
    }
    function test_filesAreNotCancelledWithARun() {
        generated(2);
        focusOn("results");
        Stage.holdTrash();
        keyClick(Qt.Key_Delete);
        verify(app.files.isMoving);
        startTraining();
        app.cancel();
        idle();
        verify(!app.files.isCancelling);
        app.cancel();
        verify(app.files.isCancelling);
        Stage.letTrashGo();
    }
    function test_theFilesButtonLeavesTheLearning() {
        generated(2);
        focusOn("results");
        Stage.holdTrash();
        keyClick(Qt.Key_Delete);
        verify(app.files.isMoving);
        startTraining();
        verifySeen("Moving files: 0 of 1");
        mouseClick(item("cancelGeneration"));
        verify(app.files.isCancelling);
        verify(app.model.isTraining && !app.model.isCancelling);
        Stage.letTrashGo();
        tryVerify(() => !app.files.isMoving, limit);
        app.cancel();
        idle();
    }
    function test_favouritesOfTheSelection() {
        generated(3);
        focusOn("results");
        keyClick(Qt.Key_A, Qt.ControlModifier);
        keyClick(Qt.Key_F);
        for (let row = 0; row < 3; ++row)
            verify(item("tile-" + row).isFavourite);
        keyClick(Qt.Key_Escape);
        keyClick(Qt.Key_F);
        verify(!item("tile-2").isFavourite || !item("tile-0").isFavourite);
        keyClick(Qt.Key_A, Qt.ControlModifier);
        keyClick(Qt.Key_F);
        keyClick(Qt.Key_F);
        for (let row = 0; row < 3; ++row)
            verify(!item("tile-" + row).isFavourite);
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        for (let row = 0; row < 3; ++row)
            verify(item("tile-" + row).isFavourite);
    }
    function test_makesAKit() {
        generated(3);
        focusOn("results");
        keyClick(Qt.Key_Right, Qt.ShiftModifier);
        mouseClick(item("makeKit"));
        idle();
        verifySeen("Kit written: " + Stage.path("out/Drums_Kit"));
        compare(app.kits.total, 8);
    }
}
