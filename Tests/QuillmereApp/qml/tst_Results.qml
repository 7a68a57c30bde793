import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

WindowCase {
    name: "Results"

    function playing(): int {
        return app.generation.results.rowOf(app.playback.playingURL);
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
        tryVerify(() => playing() === 1, limit);
        tryCompare(item("play-1"), "iconName", "stop.fill", limit);
        mouseClick(item("play-1"));
        tryVerify(() => playing() === -1, limit);
        tryCompare(item("play-1"), "iconName", "play.circle", limit);
        compare(item("results").currentIndex, 1);
    }
    function test_buttonTurnsBackAtTheEnd() {
        generated(1);
        mouseClick(item("play-0"));
        tryCompare(item("play-0"), "iconName", "stop.fill", limit);
        Stage.finishPlaying();
        tryCompare(item("play-0"), "iconName", "play.circle", limit);
    }
    function test_keysMoveAndPlay() {
        generated(5);
        focusOn("results");
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_Right);
        compare(item("results").currentIndex, 2);
        keyClick(Qt.Key_Space);
        tryVerify(() => playing() === 2, limit);
        keyClick(Qt.Key_Space);
        tryVerify(() => playing() === -1, limit);
        keyClick(Qt.Key_Left);
        compare(item("results").currentIndex, 1);
        keyClick(Qt.Key_End);
        compare(item("results").currentIndex, 4);
        keyClick(Qt.Key_Return);
        tryVerify(() => playing() === 4, limit);
        keyClick(Qt.Key_Home);
        compare(item("results").currentIndex, 0);
    }
    function test_aNumberTellsItsFile() {
        generated(1);
        const name = item("tile-0").fileName;
        verifyNotSeen(name);
        hover(item("tile-0"));
        verifySeen(name);
    }
    function test_shortcutComesToTheResults() {
        generated(3);
        focusOn("seed");
        keyClick(Qt.Key_R, Qt.ControlModifier);
        verify(item("results").activeFocus);
        keyClick(Qt.Key_Right);
        compare(item("results").currentIndex, 1);
    }
    function test_keysMoveInRows() {
        resize(1920, 1080);
        Stage.setResults(30);
        focusOn("results");
        const list = item("results");
        verify(list.columns > 1);
        keyClick(Qt.Key_Down);
        compare(list.currentIndex, list.columns);
        keyClick(Qt.Key_Right);
        compare(list.currentIndex, list.columns + 1);
        keyClick(Qt.Key_Up);
        compare(list.currentIndex, 1);
        keyClick(Qt.Key_End);
        compare(list.currentIndex, 29);
    }
    function test_wheelScrollsRows() {
        resize(1920, 1080);
        Stage.setResults(500);
        settle();
        const list = item("results");
        mouseWheel(list, 50, 20, 0, -240);
        tryVerify(() => list.contentY > 0, limit);
        compare(list.contentX, list.originX);
        mouseWheel(list, 50, 20, 0, 2400);
        tryVerify(() => list.contentY === list.originY, limit);
    }
    function test_spacePlaysFromASlider() {
        generated(2);
        focusOn("slider-pitch");
        keyClick(Qt.Key_Space);
        tryVerify(() => playing() === 0, limit);
    }
    function test_doubleClickPlays() {
        generated(2);
        const tile = item("tile-1");
        mouseDoubleClickSequence(tile, tile.width / 2, tile.height - 12);
        tryVerify(() => playing() === 1, limit);
    }
    function test_thumbnailsArrive() {
        generated(2);
        tryVerify(() => item("tile-0").peaks.length > 0, limit);
        verifySeen(item("tile-0").durationText);
        verify(/^\d+\.\d\d s$/.test(item("tile-0").durationText));
    }
    function test_showInFinder() {
        generated(1);
        mouseClick(item("showInFinder"));
        tryVerify(() => Stage.pathOf(Stage.shownFolder()) === Stage.path("out"), limit);
        compare(Stage.shownFiles(), [app.generation.results.urlAt(0)]);
    }
    function test_deletedFileIsTold() {
        generated(2);
        Stage.removeFile(app.generation.results.urlAt(0));
        app.refresh();
        tryVerify(() => !item("tile-0").exists, limit);
        verifySeen("gone");
        verify(!item("play-0").enabled);
    }
    function test_thousandsOfResults() {
        Stage.setResults(20000);
        settle();
        compare(item("results").count, 20000);
        // What makes it fast: only the tiles in view exist.
        verify(Stage.countItems(window.contentItem, "tile-") < 40);
        focusOn("results");
        keyClick(Qt.Key_End);
        tryVerify(() => has("tile-19999"), limit);
        keyClick(Qt.Key_Home);
        tryVerify(() => has("tile-0"), limit);
    }
    function test_wheelScrollsSideways() {
        Stage.setResults(100);
        settle();
        const list = item("results");
        mouseWheel(list, 50, 20, 0, -240);
        tryVerify(() => list.contentX > 0, limit);
        mouseWheel(list, 50, 20, 0, 2400);
        tryVerify(() => list.contentX === list.originX, limit);
    }
    function test_newResultsKeepAChoice() {
        generated(5);
        focusOn("results");
        keyClick(Qt.Key_End);
        app.output.count = 2;
        app.generation.generate();
        idle();
        const list = item("results");
        verify(list.currentIndex >= 0 && list.currentIndex < list.count);
    }
}
