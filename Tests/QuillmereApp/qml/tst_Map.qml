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
    function test_theMiddleButtonPansAndPlaysNothing() {
        shown();
        const points = item("points");
        for (let i = 0; i < 4; ++i)
            keyClick(Qt.Key_Plus);
        const before = points.positionOf(0);
        dragOver([Qt.point(100, 100), Qt.point(120, 100), Qt.point(140, 100)], Qt.MiddleButton, Qt.NoModifier);
        verify(points.positionOf(0).x > before.x);
        mouseClick(points, 20, 20, Qt.RightButton);
        verify(!app.isBusy);
        compare(String(app.playback.playingURL), "");
    }
    // With a button down along these positions.
    function dragOver(positions, button, modifiers) {
        const points = item("points");
        mousePress(points, positions[0].x, positions[0].y, button, modifiers);
        for (const at of positions)
            mouseMove(points, at.x, at.y, -1, button);
        const last = positions[positions.length - 1];
        mouseRelease(points, last.x, last.y, button, modifiers);
    }
    function test_aDragSweepsThrough() {
        shown();
        mouseClick(item("hoverPlays"));  // the drag alone
        const from = emptyPlace();
        const at = middleOf(1);
        const point = item("points").pointAt(at);
        dragOver([from, Qt.point((from.x + at.x) / 2, (from.y + at.y) / 2), at], Qt.LeftButton, Qt.NoModifier);
        verifyPlays(point);
        idle();
        verifyPlays(point);  // what was made on the way is not heard any more
        verifySeen(app.map.nameAt(point));
        Stage.flick(item("points"), at, from);
        tryVerify(isPlayingAudition, limit);
        idle();
    }
    function test_shiftSelectsARegion() {
        shown();
        const points = item("points");
        verify(!has("moreLikeThese"));
        dragOver([Qt.point(2, 2), Qt.point(points.width / 2, 100), Qt.point(points.width - 2, points.height - 2)], Qt.LeftButton, Qt.ShiftModifier);
        verifySeen("3 selected");
        compare(app.map.selectedCount, 3);
        verify(!app.isBusy);
        compare(String(app.playback.playingURL), "");
        const box = item("region");
        fuzzyCompare(box.x, 2, 1);
        fuzzyCompare(box.y, 2, 1);
        fuzzyCompare(box.width, points.width - 4, 1);
        fuzzyCompare(box.height, points.height - 4, 1);
        compare(Stage.overlaps(window.contentItem), []);
        mouseClick(item("moreLikeThese"));
        idle();
        compare(app.candidates.list.count, 12);
        compare(app.candidates.about, "Like 3 sounds of the map");
        mousePress(points, 5, 5, Qt.LeftButton, Qt.ShiftModifier);
        mouseRelease(points, 5, 5, Qt.LeftButton, Qt.ShiftModifier);
        verify(!app.map.hasRegion);
        verify(!has("moreLikeThese"));
    }
    function test_keysSelectARegion() {
        shown();
        for (let i = 0; i < 3; ++i) {
            keyClick(Qt.Key_Left, Qt.ControlModifier);
            keyClick(Qt.Key_Down, Qt.ControlModifier);
        }
        verify(app.map.hasRegion);
        const box = item("region");
        fuzzyCompare(box.width, 90, 1);
        fuzzyCompare(box.height, 90, 1);
        compare(String(app.playback.playingURL), "");
        keyClick(Qt.Key_Escape);
        verify(!app.map.hasRegion);
        app.map.selectBetween(Qt.point(-1e6, -1e6), Qt.point(1e6, 1e6));
        focusOn("clearRegion");
        keyClick(Qt.Key_Return);
        verify(!app.map.hasRegion);
        compare(focusName(), "points");
        app.map.selectBetween(Qt.point(-1e6, -1e6), Qt.point(1e6, 1e6));
        focusOn("moreLikeThese");
        keyClick(Qt.Key_Return);
        idle();
        compare(app.candidates.list.count, 12);
    }
    function test_theRegionOfTheKeysStaysOnTheMap_data() {
        return [{
                "tag": "all is seen",
                "zooms": 0
            }, {
                "tag": "a part is seen",
                "zooms": 3
            }];
    }
    function test_theRegionOfTheKeysStaysOnTheMap(row) {
        shown();
        for (let i = 0; i < row.zooms; ++i)
            keyClick(Qt.Key_Plus);
        const points = item("points");
        const steps = Math.ceil(points.width * points.zoom / 30);
        for (let i = 0; i < steps; ++i) {
            keyClick(Qt.Key_Right, Qt.ControlModifier);
            keyClick(Qt.Key_Up, Qt.ControlModifier);
        }
        const box = item("region");
        const right = box.x + box.width;
        verify(right <= points.width && box.y >= 0, "the corner is in sight: " + right + ", " + box.y);
        for (let point = 0; point < app.map.count; ++point) {
            const at = middleOf(point);
            verify(at.x <= right && at.y >= box.y, "point " + point + " can be reached");
        }
        const before = Qt.size(box.width, box.height);
        keyClick(Qt.Key_Left, Qt.ControlModifier);
        keyClick(Qt.Key_Down, Qt.ControlModifier);
        fuzzyCompare(box.width, before.width - 30, 0.01);
        fuzzyCompare(box.height, before.height - 30, 0.01);
    }
    function test_aFingerSweepsAndScrollsNothing() {
        resize(480, 360);
        trained();
        keyClick(Qt.Key_M);
        tryVerify(() => app.map.isReady && focusName() === "points", limit);
        settle();
        const points = item("points");
        scrolling(points).interactive = true;  // as where there is no mouse
        const top = points.mapToItem(null, 0, 0).y;
        const x = points.width / 2;
        const y = item("generate").mapToItem(points, 0, 0).y - 80;  // in sight, above the footer
        dragFinger(points, Qt.point(x, y), Qt.point(x, y - 80));
        compare(points.mapToItem(null, 0, 0).y, top);
        tryVerify(() => String(app.playback.playingURL).length > 0, limit);
        idle();
        app.playback.stop();
        // Above the map it scrolls, as anywhere else.
        dragFinger(points, Qt.point(x, -15), Qt.point(x, 85));
        tryVerify(() => points.mapToItem(null, 0, 0).y > top + 20, limit);
        compare(String(app.playback.playingURL), "");
    }
    function scrolling(inside) {
        let up = inside;
        while (!up.overflows)
            up = up.parent;
        return up;
    }
    function dragFinger(target, from, to) {
        const moves = 8;
        touchEvent(target).press(0, target, from.x, from.y).commit();
        for (let i = 1; i <= moves; ++i)
            touchEvent(target).move(0, target, from.x + (to.x - from.x) * i / moves, from.y + (to.y - from.y) * i / moves).commit();
        touchEvent(target).release(0, target, to.x, to.y).commit();
    }
    function test_aDragThatIsTakenAwayMakesNothing() {
        shown();
        mouseClick(item("hoverPlays"));
        const from = emptyPlace();
        Stage.loseDrag(item("points"), from, Qt.point(from.x + 3, from.y + 15));
        idle();
        compare(String(app.playback.playingURL), "");
        Stage.flick(item("points"), from, Qt.point(from.x + 3, from.y + 15));
        tryVerify(isPlayingAudition, limit);
        idle();
    }
    function test_marksAResultAsAFavourite() {
        generated(1);
        keyClick(Qt.Key_M);
        tryVerify(() => app.map.isReady, limit);
        const result = app.map.clips;
        const at = middleOf(result);
        keyClick(Qt.Key_F);  // nothing is meant
        mouseClick(item("points"), at.x, at.y);
        verifyPlays(result);
        keyClick(Qt.Key_F);
        verify(app.map.isFavouriteAt(result));
        compare(item("points").Accessible.description, app.map.nameAt(result) + ", favourite");
        keyClick(Qt.Key_F);
        verify(!app.map.isFavouriteAt(result));
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        verify(app.map.isFavouriteAt(result));
        const clip = middleOf(0);
        mouseClick(item("points"), clip.x, clip.y);
        verifyPlays(0);
        const change = app.files.lastChange();
        keyClick(Qt.Key_F);  // a sample of the corpus is none
        compare(app.files.lastChange(), change);
    }
    function test_favouritesAreSaid() {
        generated(1);
        app.files.setFavourite(app.generation.results.urlAt(0), true);
        keyClick(Qt.Key_M);
        tryVerify(() => app.map.isReady, limit);
        const at = middleOf(3);
        const point = item("points").pointAt(at);
        compare(point, 3);
        mouseClick(item("points"), at.x, at.y);
        verifyPlays(3);
        compare(item("points").Accessible.description, app.map.nameAt(3) + ", favourite");
        app.files.setFavourite(app.map.urlAt(3), false);
        compare(item("points").Accessible.description, app.map.nameAt(3));
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
