import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// The map in place of the sliders: by pointer and by keys.
WindowCase {
    name: "Map"

    function shown() {
        trained();
        keyClick(Qt.Key_M);
        tryVerify(() => app.map.isReady, limit);
        tryVerify(() => focusName() === "points", limit);
        settle();
    }
    function middleOf(point) {
        return item("points").positionOf(point);
    }
    function verifyPlays(point) {
        tryCompare(app.playback, "playingURL", app.map.urlAt(point), limit);
    }
    // Somewhere on the map that is no point.
    function emptyPlace() {
        const points = item("points");
        for (let y = 20; y < points.height; y += 10) {
            if (points.pointAt(Qt.point(20, y)) < 0)
                return Qt.point(20, y);
        }
        fail("there are points everywhere");
    }

    function test_byKeyAndBack() {
        trained();
        keyClick(Qt.Key_M);
        verify(app.map.isShown);
        verifySeen("Map");
        verifyNotSeen("Character");
        keyClick(Qt.Key_M);
        verify(!app.map.isShown);
        verifySeen("Character");
        verify(!has("points"));
    }
    function test_byMouseAndBack() {
        trained();
        mouseClick(item("showMap"));
        verifySeen("Map");
        mouseClick(item("closeMap"));
        verifySeen("Character");
    }
    function test_thereIsNoneWithoutAModel() {
        scanned(3);
        verify(!has("showMap"));
        keyClick(Qt.Key_M);
        verify(!app.map.isShown);
        verifySeen("Character");
    }
    function test_aClickPlaysAPoint() {
        shown();
        const at = middleOf(1);
        mouseClick(item("points"), at.x, at.y);
        verifyPlays(1);
        verifySeen("hit1.wav");
        mouseClick(item("points"), at.x, at.y);
        compare(String(app.playback.playingURL), "");
    }
    function test_aClickPlaysWhatThePointerHasPlayedAlready() {
        shown();
        const at = middleOf(2);
        mouseMove(item("points"), at.x, at.y);
        verifyPlays(2);
        mouseClick(item("points"), at.x, at.y);
        verifyPlays(2);
        mouseClick(item("points"), at.x, at.y);
        compare(String(app.playback.playingURL), "");
    }
    function test_restingOnAPointAgainPlaysItAgain() {
        shown();
        const at = middleOf(2);
        const aside = emptyPlace();
        for (let i = 0; i < 2; ++i) {
            mouseMove(item("points"), at.x, at.y);
            verifyPlays(2);
            app.playback.stop();
            mouseMove(item("points"), aside.x, aside.y);
        }
    }
    function test_aPointThatIsAnotherFileByNowIsNotChosenAnyMore() {
        generated(2);
        keyClick(Qt.Key_M);
        tryVerify(() => app.map.isReady && focusName() === "points", limit);
        const at = middleOf(4);
        const point = item("points").pointAt(at);
        mouseClick(item("points"), at.x, at.y);
        verifyPlays(point);
        verifySeen(app.map.nameAt(point));
        app.generation.generate();
        idle();
        if (point >= app.map.clips)
            verifySeen("Click a point to hear it, or between the points for something new.");
        else
            verifySeen(app.map.nameAt(point));
    }
    function test_restingThePointerPlaysUnlessItIsNotWanted() {
        shown();
        const at = middleOf(2);
        mouseMove(item("points"), at.x, at.y);
        verifyPlays(2);
        app.playback.stop();
        mouseClick(item("hoverPlays"));
        const other = middleOf(0);
        mouseMove(item("points"), other.x, other.y);
        wait(300);
        compare(String(app.playback.playingURL), "");
    }
    function test_aClickBetweenThePointsMakesSomethingNew() {
        shown();
        const at = emptyPlace();
        mouseClick(item("points"), at.x, at.y);
        tryVerify(isPlayingAudition, limit);
        idle();
    }
    function test_arrowsPlay() {
        shown();
        keyClick(Qt.Key_Right);
        tryVerify(() => String(app.playback.playingURL).length > 0, limit);
        // From one end to the other.
        const heard = new Set([String(app.playback.playingURL)]);
        for (const key of [Qt.Key_Left, Qt.Key_Left, Qt.Key_Left, Qt.Key_Right, Qt.Key_Right, Qt.Key_Right]) {
            keyClick(key);
            tryVerify(() => String(app.playback.playingURL).length > 0, limit);
            heard.add(String(app.playback.playingURL));
        }
        verify(heard.size > 1, "one point only");
        app.playback.stop();
        keyClick(Qt.Key_Space);
        tryVerify(() => String(app.playback.playingURL).length > 0, limit);
    }
    function test_spacePlaysThePointThoughThereAreResults() {
        generated(2);
        keyClick(Qt.Key_M);
        tryVerify(() => app.map.isReady && focusName() === "points", limit);
        const at = middleOf(0);
        mouseClick(item("points"), at.x, at.y);
        tryVerify(() => String(app.playback.playingURL).length > 0, limit);
        const point = app.playback.playingURL;
        app.playback.stop();
        keyClick(Qt.Key_Space);
        tryCompare(app.playback, "playingURL", point, limit);
    }
    function test_theInspectorComesBeforeIt() {
        generated(2);
        keyClick(Qt.Key_M);
        tryVerify(() => has("points"), limit);
        keyClick(Qt.Key_I);
        tryVerify(() => has("closeInspector") && !has("points"), limit);
        verifyNotSeen("Character");
        keyClick(Qt.Key_I);
        tryVerify(() => has("points") && !has("closeInspector"), limit);
        keyClick(Qt.Key_I);
        tryVerify(() => has("closeInspector"), limit);
        keyClick(Qt.Key_M);
        tryVerify(() => has("points") && !has("closeInspector"), limit);
        verify(!app.inspector.isOpen);
    }
    function test_zoomAndPan() {
        shown();
        const points = item("points");
        verify(!item("zoomOut").enabled);
        keyClick(Qt.Key_Plus);
        fuzzyCompare(points.zoom, 1.5, 0.01);
        mouseClick(item("zoomIn"));
        fuzzyCompare(points.zoom, 2.25, 0.01);
        mouseWheel(points, points.width / 2, points.height / 2, 0, 120);
        verify(points.zoom > 2.26);
        focusOn("points");  // the button has it
        const before = points.positionOf(0);
        keyClick(Qt.Key_Right, Qt.ShiftModifier);
        verify(points.positionOf(0).x < before.x);
        keyClick(Qt.Key_Home);
        compare(points.zoom, 1);
        mouseClick(item("zoomIn"));
        mouseClick(item("zoomOut"));
        compare(points.zoom, 1);
    }
    function test_draggingPansAndPlaysNothing() {
        shown();
        const points = item("points");
        for (let i = 0; i < 4; ++i)
            keyClick(Qt.Key_Plus);
        const before = points.positionOf(0);
        Stage.flick(points, Qt.point(100, 100), Qt.point(140, 100));
        verify(points.positionOf(0).x > before.x);
        verify(!app.isBusy);
    }
    function test_resultsAreOnIt() {
        generated(4);
        keyClick(Qt.Key_M);
        tryVerify(() => app.map.isReady, limit);
        compare(app.map.count, 7);
        const at = middleOf(5);
        const point = item("points").pointAt(at);
        mouseClick(item("points"), at.x, at.y);
        verifyPlays(point);
    }
    function test_fitsIntoEveryWindow_data() {
        return [[480, 360], [640, 480], [800, 600], [1180, 820], [1920, 1080], [3840, 2160]].map(size => ({
                        "tag": size.join("x"),
                        "size": size
                    }));
    }
    function test_fitsIntoEveryWindow(row) {
        shown();
        for (const dark of [true, false]) {
            app.appearance.mode = dark ? Appearance.Dark : Appearance.Light;
            resize(row.size[0], row.size[1]);
            compare(Stage.itemsOutside(window.contentItem), []);
            compare(Stage.clippedTexts(window.contentItem), []);
            compare(Stage.namelessControls(window.contentItem), []);
        }
    }
}
