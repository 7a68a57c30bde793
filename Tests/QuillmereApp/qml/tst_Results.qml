import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

WindowCase {
    name: "Results"

    function playing(): int {
        return model.results.rowOf(model.playingURL);
    }

    function test_stripComesWithTheFirstResults() {
        verify(!has("results"));
        generated(3);
        verifySeen("3 files");
        compare(item("results").currentIndex, 0);
    }
    function test_buttonPlaysAndStops() {
        generated(3);
        mouseClick(item("play-1"));
        tryVerify(() => playing() === 1);
        tryCompare(item("play-1"), "iconName", "stop.fill");
        mouseClick(item("play-1"));
        tryVerify(() => playing() === -1);
        tryCompare(item("play-1"), "iconName", "play.circle");
        compare(item("results").currentIndex, 1);
    }
    function test_buttonTurnsBackAtTheEnd() {
        generated(1);
        mouseClick(item("play-0"));
        tryCompare(item("play-0"), "iconName", "stop.fill");
        Stage.finishPlaying();
        tryCompare(item("play-0"), "iconName", "play.circle");
    }
    function test_keysMoveAndPlay() {
        generated(5);
        focusOn("results");
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_Right);
        compare(item("results").currentIndex, 2);
        keyClick(Qt.Key_Space);
        tryVerify(() => playing() === 2);
        keyClick(Qt.Key_Space);
        tryVerify(() => playing() === -1);
        keyClick(Qt.Key_Left);
        compare(item("results").currentIndex, 1);
        keyClick(Qt.Key_End);
        compare(item("results").currentIndex, 4);
        keyClick(Qt.Key_Return);
        tryVerify(() => playing() === 4);
        keyClick(Qt.Key_Home);
        compare(item("results").currentIndex, 0);
    }
    function test_spacePlaysFromASlider() {
        generated(2);
        focusOn("slider-pitch");
        keyClick(Qt.Key_Space);
        tryVerify(() => playing() === 0);
    }
    function test_doubleClickPlays() {
        generated(2);
        const tile = item("tile-1");
        mouseDoubleClickSequence(tile, tile.width / 2, tile.height - 12);
        tryVerify(() => playing() === 1);
    }
    function test_thumbnailsArrive() {
        generated(2);
        tryVerify(() => item("tile-0").peaks.length > 0, 10000);
        verifySeen(item("tile-0").durationText);
        verify(/^\d+\.\d\d s$/.test(item("tile-0").durationText));
    }
    function test_showInFinder() {
        generated(1);
        mouseClick(item("showInFinder"));
        tryVerify(() => Stage.pathOf(Stage.shownFolder()) === Stage.path("out"));
        compare(Stage.shownFiles(), [model.results.urlAt(0)]);
    }
    function test_deletedFileIsTold() {
        generated(2);
        Stage.removeFile(model.results.urlAt(0));
        model.refresh();
        tryVerify(() => !item("tile-0").exists);
        verifySeen("gone");
        verify(!item("play-0").enabled);
    }
    function test_tileIsDraggedAsAFile() {
        generated(2);
        const tile = item("tile-1");
        compare(tile.Drag.mimeData["text/uri-list"], String(model.results.urlAt(1)) + "\r\n");
        // The drag itself belongs to the platform; what starts it is here.
        const spy = createTemporaryObject(dragSpy, null, {
                "target": tile.Drag
            });
        mousePress(tile, 80, 20);
        mouseMove(tile, 95, 22);
        mouseMove(tile, 120, 30);
        tryVerify(() => tile.dragging);
        mouseRelease(tile, 120, 30);
        tryVerify(() => !tile.dragging);
        compare(item("results").currentIndex, 1);
        spy.clear();
    }
    readonly property Component dragSpy: Component {
        SignalSpy {
            signalName: "activeChanged"
        }
    }
    function test_thousandsOfResults() {
        const before = Date.now();
        Stage.setResults(20000);
        settle();
        verify(Date.now() - before < 3000);
        compare(item("results").count, 20000);
        verify(Stage.countItems(window.contentItem, "tile-") < 40);
        focusOn("results");
        keyClick(Qt.Key_End);
        tryVerify(() => has("tile-19999"), 3000);
        keyClick(Qt.Key_Home);
        tryVerify(() => has("tile-0"), 3000);
    }
    function test_wheelScrollsSideways() {
        Stage.setResults(100);
        settle();
        const list = item("results");
        mouseWheel(list, 50, 20, 0, -240);
        tryVerify(() => list.contentX > 0);
        mouseWheel(list, 50, 20, 0, 2400);
        tryVerify(() => list.contentX === list.originX);
    }
    function test_newResultsKeepAChoice() {
        generated(5);
        focusOn("results");
        keyClick(Qt.Key_End);
        model.count = 2;
        model.generate();
        idle();
        const list = item("results");
        verify(list.currentIndex >= 0 && list.currentIndex < list.count);
    }
}
