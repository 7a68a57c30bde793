import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// Nothing is cut off and nothing lies outside, in every state and size.
WindowCase {
    name: "Layout"

    // What a view makes anew after a change of its width comes a frame or two later.
    readonly property int framesToRest: 10
    readonly property var sizes: [Qt.size(480, 360), Qt.size(640, 480), Qt.size(899, 600), Qt.size(900, 600), Qt.size(1180, 760), Qt.size(1180, 820), Qt.size(1280, 1600), Qt.size(1699, 1000), Qt.size(1700, 900), Qt.size(1920, 1080), Qt.size(2560, 1440)]

    function verifyAllSizes() {
        for (const size of sizes) {
            resize(size.width, size.height);
            const faults = () => [...Stage.clippedTexts(window.contentItem), ...Stage.itemsOutside(window.contentItem), ...Stage.overlaps(window.contentItem)];
            for (let frame = 0; frame < framesToRest && faults().length > 0; ++frame)
                settle();
            compare(faults().map(text => text + " at " + size.width + "x" + size.height), []);
        }
    }

    function test_empty() {
        verifyAllSizes();
    }
    function test_emptyCorpus() {
        app.corpus.choose(Stage.makeFolder("Nothing"));
        idle();
        verifyAllSizes();
    }
    function test_fewSamples() {
        scanned(3);
        verifyAllSizes();
    }
    function test_training() {
        startTraining();
        tryVerify(() => app.model.timeLeft.length > 0, limit);
        verifyAllSizes();
        app.model.cancelTraining();
        idle();
    }
    function test_trained() {
        trained();
        app.output.folderText = Stage.path("new");
        verifyAllSizes();
    }
    function test_generating() {
        startGenerating();
        verifyAllSizes();
        app.cancel();
        idle();
    }
    function test_results() {
        generated(12);
        verifyAllSizes();
    }
    function test_dialogHoldsWhatItShows() {
        click("savePreset");
        tryVerify(() => focusName() === "presetName", limit);
        keyClick("/");  // brings a line about the name
        for (const size of sizes) {
            resize(size.width, size.height);
            const sheet = item("sheet");
            for (const name of ["presetName", "cancelPreset", "confirmPreset"]) {
                const place = item(name).mapToItem(sheet, 0, 0);
                verify(place.x >= 16 && place.x + item(name).width <= sheet.width - 16, name);
                verify(place.y >= 16 && place.y + item(name).height <= sheet.height - 16, name);
            }
            compare(Stage.clippedTexts(window.contentItem), []);
        }
    }
    function test_longestSeedStaysInItsColumn() {
        app.character.seedText = "18446744073709551615";
        generated(1);
        for (const size of sizes) {
            resize(size.width, size.height);
            const field = item("seed");
            const button = item("reuseSeed");
            verify(button.mapToItem(null, button.width, 0).x <= field.mapToItem(null, field.width, 0).x);
        }
    }
    function test_error() {
        scanned(3);
        generateNowhere();
        verifyAllSizes();
    }
    function test_longNames() {
        const name = "a very long name of a folder that goes on and on and on and on";
        Stage.makeCorpus(name, 3);
        app.corpus.choose(Stage.url(name));
        idle();
        app.output.folderText = Stage.path(name + "/" + name);
        for (const preset of ["An own preset", "Another one", "And yet another one"])
            app.character.saveOwnPreset(preset);
        verifyAllSizes();
    }
    function test_devices() {
        Stage.addDevice("A graphics card with a very long name that goes on and on (revision 7, 256 bits)", "discrete");
        Stage.addDevice("Old card", "integrated", "its driver offers Vulkan 1.0, and 1.1 is needed.");
        Stage.addDevice("llvmpipe (LLVM 15.0.6, 256 bits)", "software");
        app.devices.list();
        tryVerify(() => app.devices.isListed, limit);
        app.chooseDevice(2);
        verifyAllSizes();
        Stage.refuseNetworks("The card has not enough memory for this network.");
        tryVerify(() => app.devices.problem.length > 0, limit);
        verifyAllSizes();
    }
    function test_narrowWindowsStackTheSamePieces() {
        const names = ["chooseCorpus", "train", "outputPath", "preset-Wild", "slider-drift", "seed", "audition", "generate"];
        resize(640, 480);
        for (const name of names)
            verify(has(name), name);
        verify(item("train").mapToItem(null, 0, 0).y < item("slider-drift").mapToItem(null, 0, 0).y);
        resize(1180, 820);
        for (const name of names)
            verify(has(name), name);
        verify(item("train").mapToItem(null, 0, 0).x < item("slider-drift").mapToItem(null, 0, 0).x);
    }
    // While numbers change, everything stays where it is.
    function test_trainingMovesNothing() {
        startTraining();
        const first = app.model.step;
        settle();
        const places = Stage.places(window.contentItem);
        for (let i = 0; i < 3; ++i) {
            const step = app.model.step;
            tryVerify(() => app.model.step > step, limit);
            settle();
            compare(Stage.places(window.contentItem), places);
        }
        verify(app.model.step > first);
        app.model.cancelTraining();
        idle();
    }
    function test_generatingMovesNothing() {
        startGenerating();
        settle();
        const places = Stage.places(window.contentItem);
        for (let i = 0; i < 3; ++i) {
            const done = app.generation.done;
            tryVerify(() => app.generation.done > done, limit);
            settle();
            compare(Stage.places(window.contentItem), places);
        }
        app.cancel();
        idle();
    }
    function test_errorLeavesTheCardsWhereTheyAre() {
        scanned(12);
        const name = "outputPath";
        const place = item(name).mapToItem(null, 0, 0);
        generateNowhere();
        tryVerify(() => has("errorBanner"), limit);
        settle();
        compare(item(name).mapToItem(null, 0, 0), place);
    }
    function test_largeWindowsGiveTheResultsTheRoom_data() {
        return [{
                "tag": "broad",
                "size": Qt.size(2560, 1440),
                "shown": 60
            }, {
                "tag": "broader",
                "size": Qt.size(3840, 2160),
                "shown": 100
            }, {
                "tag": "full",
                "size": Qt.size(1920, 1080),
                "shown": 24
            }, {
                "tag": "high",
                "size": Qt.size(1280, 1800),
                "shown": 16
            }];
    }
    function test_largeWindowsGiveTheResultsTheRoom(row) {
        resize(row.size.width, row.size.height);
        Stage.setResults(200);
        settle();
        verify(item("slider-pitch").width <= 400, "slider " + item("slider-pitch").width);
        const list = item("results");
        const across = Math.floor(list.width / list.cellWidth);
        const down = Math.floor(list.height / list.cellHeight);
        verify(across * down >= row.shown, across + " by " + down);
    }
    // All sliders below one another fill its height, and the results have the rest of the width.
    function test_largeWindowsHaveOneColumnOfSliders() {
        resize(2560, 1440);
        Stage.setResults(200);
        settle();
        const bottomOf = name => item(name).mapToItem(null, 0, item(name).height).y;
        compare(item("slider-phase-iterations").mapToItem(null, 0, 0).x, item("slider-drift").mapToItem(null, 0, 0).x);
        verify(!item("characterPane").overflows);
        verify(bottomOf("seed") > 0.8 * bottomOf("characterPane"), bottomOf("seed") + " of " + bottomOf("characterPane"));
        verify(item("slider-drift").width >= 300, "slider " + item("slider-drift").width);
        generateNowhere();
        tryVerify(() => has("errorBanner"), limit);
        settle();
        verify(!item("characterPane").overflows);
        resize(2560, 1200);
        verify(item("slider-phase-iterations").mapToItem(null, 0, 0).x > item("slider-drift").mapToItem(null, 0, 0).x);
    }
    function test_theMapOfALargeWindowIsWide() {
        resize(2560, 1440);
        trained();
        const before = item("slider-drift").width;
        keyClick(Qt.Key_M);
        tryVerify(() => app.map.isReady, limit);
        settle();
        verify(item("points").width > 900, "map " + item("points").width);
        keyClick(Qt.Key_M);
        settle();
        compare(item("slider-drift").width, before);
    }
    function test_broadWindowsKeepAPlaceForTheResults() {
        resize(1920, 1080);
        verifySeen("The variations of the last run appear here.");
        const place = item("slider-pitch").mapToItem(null, 0, 0);
        generated(3);
        verifyNotSeen("The variations of the last run appear here.");
        compare(item("slider-pitch").mapToItem(null, 0, 0), place);
    }
    function test_smallWindowsScrollToWhatIsNew_data() {
        return [Qt.size(800, 600), Qt.size(640, 480), Qt.size(480, 360)].map(size => ({
                        "tag": size.width + "x" + size.height,
                        "size": size
                    }));
    }
    function test_smallWindowsScrollToWhatIsNew(row) {
        resize(row.size.width, row.size.height);
        generated(3);
        settle();
        const tile = item("tile-0");
        const footer = item("generate").mapToItem(null, 0, 0).y;
        tryVerify(() => {
                const top = tile.mapToItem(null, 0, 0).y;
                return top >= 0 && top + tile.height <= footer;
            }, limit);
    }
    // In a narrow window the inspector and the map are far above the results.
    function test_smallWindowsScrollToWhatIsOpened_data() {
        return [Qt.size(800, 600), Qt.size(640, 480), Qt.size(480, 360)].map(size => ({
                        "tag": size.width + "x" + size.height,
                        "size": size
                    }));
    }
    function test_smallWindowsScrollToWhatIsOpened(row) {
        generated(3);
        resize(row.size.width, row.size.height);
        focusOn("results");
        const inSight = name => {
            const top = item(name).mapToItem(null, 0, 0).y;
            return top >= 0 && top + item(name).height <= item("generate").mapToItem(null, 0, 0).y;
        };
        keyClick(Qt.Key_I);
        tryVerify(() => inSight("closeInspector"), limit);
        keyClick(Qt.Key_I);
        settle();
        focusOn("results");
        keyClick(Qt.Key_M);
        tryVerify(() => inSight("closeMap"), limit);
    }
    function test_footerStaysInView() {
        for (const size of sizes) {
            resize(size.width, size.height);
            const button = item("generate");
            verify(button.mapToItem(null, 0, 0).y + button.height <= size.height);
        }
    }
    function test_firstSizeNeedsNoScrolling() {
        verify(!item("cardsPane").overflows);
        verify(!item("characterPane").overflows);
        trained();
        app.output.folderText = Stage.path("new");
        settle();
        verify(!item("cardsPane").overflows);
        verify(!item("characterPane").overflows);
    }
}
