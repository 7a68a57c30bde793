import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// Earlier runs, and the order of the results.
WindowCase {
    name: "Runs"

    // Three files, and a set of candidates after them.
    function twoRuns() {
        app.character.seedText = "7";
        generated(3);
        app.character.seedText = "8";
        mouseClick(item("try"));
        idle();
        compare(app.candidates.list.count, 12);
    }
    function opened() {
        keyClick(Qt.Key_H, Qt.ControlModifier);
        tryVerify(() => app.runs.runs.length === 2, limit);
        tryVerify(() => has("run-1"), limit);
    }
    // The numbers of the files, row by row.
    function labels() {
        const found = [];
        for (let row = 0; row < app.generation.results.count; ++row)
            found.push(/_var_0*(\d+)\.wav$/.exec(String(app.generation.results.urlAt(row)))[1]);
        return found;
    }

    function test_thereAreNoneWithoutAFolder() {
        verify(!has("showRuns"));
        keyClick(Qt.Key_H, Qt.ControlModifier);
        settle();
        verify(!has("closeSheet"));
    }
    function test_aNewFolderHasNone() {
        scanned(3);
        click("showRuns");
        verifySeen("Earlier runs of “Drums”");
        verifySeen("The journal has no runs of this folder.");
    }
    function test_filesByMouse() {
        twoRuns();
        opened();
        verifySeen("Balanced · Seed 7");
        verifySeen("Balanced · Seed 8");
        verifySeen(Stage.path("out"));
        mouseClick(item("openRun-1"));
        tryVerify(() => !has("runList"), limit);
        tryVerify(() => has("tile-0"), limit);
        compare(app.generation.results.count, 3);
        verify(item("results").activeFocus);
    }
    function test_candidatesByKeyboard() {
        twoRuns();
        opened();
        compare(focusName(), "run-0");
        keyClick(Qt.Key_Return);
        tryCompare(app.candidates, "sets", 2, limit);
        idle();
        compare(app.candidates.seed, "8");
        verify(has("candidates"));
    }
    function test_settingsByKeyboard() {
        twoRuns();
        app.character.seedText = "";
        app.character.applyPreset("Wild");
        opened();
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_S);
        tryVerify(() => !has("runList"), limit);
        compare(app.character.seedText, "7");
        compare(app.character.presetName, "Balanced");
    }
    function test_nothingIsOpenedWhileSomethingRuns() {
        twoRuns();
        Stage.setTrainingSteps(100000);
        app.model.train();
        tryVerify(() => app.model.step > 0, limit);
        opened();
        verify(!item("openRun-0").enabled);
        keyClick(Qt.Key_Return);
        verify(has("runList"));
        app.model.cancelTraining();
        idle();
        tryCompare(item("openRun-0"), "enabled", true, limit);
    }
    function test_fitsIntoEveryWindow_data() {
        return [[480, 360], [800, 600], [1180, 820], [3840, 2160]].map(size => ({
                        "tag": size.join("x"),
                        "size": size
                    }));
    }
    function test_fitsIntoEveryWindow(row) {
        Stage.switchAccessibilityOn();
        twoRuns();
        opened();
        resize(row.size[0], row.size[1]);
        compare(Stage.itemsOutside(window.contentItem), []);
        compare(Stage.clippedTexts(window.contentItem), []);
        compare(Stage.namelessControls(window.contentItem), []);
    }

    // ---- The order of the results
    function chooseOrder(text) {
        mouseClick(item("sortResults"));
        tryVerify(() => Stage.findText(window.contentItem, text) !== null, limit);
        mouseClick(Stage.findText(window.contentItem, text));
    }
    function test_sortsByMenu() {
        generated(4);
        const made = labels();
        compare(made, ["1", "2", "3", "4"]);
        focusOn("results");
        keyClick(Qt.Key_End);
        const selected = app.generation.results.urlAt(3);
        chooseOrder("Short to long");
        compare(app.generation.results.order, ResultsModel.ByLength);
        compare(app.generation.results.rowOf(selected), item("results").currentIndex);
        chooseOrder("Close to new");
        compare(app.generation.results.order, ResultsModel.ByNovelty);
        compare(labels().slice().sort(), made);
        chooseOrder("As made");
        compare(labels(), made);
    }
    // On its way to the current tile it takes the view along.
    function isHighlightThere(): bool {
        const list = item("results");
        return list.highlightItem.x === list.currentItem.x && list.highlightItem.y === list.currentItem.y;
    }
    // Who looks at others is not taken back to the selected one.
    function test_sortingLeavesTheViewWhereItIs() {
        Stage.setResults(200);
        settle();
        const list = item("results");
        list.currentIndex = 3;
        const selected = app.generation.results.urlAt(3);
        app.generation.results.order = ResultsModel.ByLength;
        compare(list.currentIndex, app.generation.results.rowOf(selected));
        verify(list.currentIndex > 3);
        tryVerify(() => list.currentInSight(), limit);
        tryVerify(isHighlightThere, limit);
        list.contentX = 6000;
        settle();
        verify(!list.currentInSight());
        app.generation.results.order = ResultsModel.AsMade;
        compare(list.currentIndex, 3);
        tryVerify(isHighlightThere, limit);
        compare(list.contentX, 6000);
        keyClick(Qt.Key_R, Qt.ControlModifier);
        keyClick(Qt.Key_Right);
        compare(list.currentIndex, 4);
    }
    function test_tilesSayHowNewTheyAre() {
        generated(2);
        tryVerify(() => item("tile-0").novelty.length > 0, limit);
        verify(["copy", "close", "new", "far"].includes(item("tile-0").novelty));
        verifySeen(item("tile-0").novelty);
        compare(item("tile-0").label, "1");
    }
    function test_favouritesAlone() {
        generated(3);
        mouseClick(item("onlyFavourites"));
        verifySeen("None of these files is a favourite.");
        verifySeen("0 of 3");
        mouseClick(item("onlyFavourites"));
        compare(app.generation.results.count, 3);
        focusOn("results");
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_I);
        mouseClick(item("favouriteInspected"));
        mouseClick(item("onlyFavourites"));
        verifySeen("1 of 3");
        compare(labels(), ["2"]);
    }

    // ---- More rows
    function test_theStripIsDraggedTaller() {
        Stage.setResults(30);
        settle();
        const handle = item("stripHandle");
        const before = item("results").height;
        verify(!item("results").inRows);
        // In the window: the handle goes with the pointer.
        const grip = handle.mapToItem(null, handle.width / 2, 4);
        mousePress(window.contentItem, grip.x, grip.y);
        for (let step = 1; step <= 10; ++step)
            mouseMove(window.contentItem, grip.x, grip.y - 10 * step);
        mouseRelease(window.contentItem, grip.x, grip.y - 100);
        settle();
        verify(item("results").height > before);
        verify(item("results").inRows);
        const dragged = item("results").height;
        compare(Stage.overlaps(window.contentItem), []);
        focusOn("results");
        keyClick(Qt.Key_Up, Qt.ControlModifier);
        settle();
        verify(item("results").height > dragged);
        for (let step = 0; step < 20; ++step)
            keyClick(Qt.Key_Up, Qt.ControlModifier);
        settle();
        verify(item("characterPane").height >= 200);
        for (let step = 0; step < 20; ++step)
            keyClick(Qt.Key_Down, Qt.ControlModifier);
        settle();
        compare(item("results").height, before);
    }
}
