import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

WindowCase {
    id: testCase
    name: "Keyboard"

    SignalSpy {
        id: chooser
        target: testCase.app?.corpus ?? null
        signalName: "chooserRequested"
    }

    function test_ctrlOChoosesACorpus() {
        chooser.clear();
        keyClick(Qt.Key_O, Qt.ControlModifier);
        compare(chooser.count, 1);
    }
    function test_ctrlTTrains() {
        scanned(3);
        keyClick(Qt.Key_T, Qt.ControlModifier);
        verify(app.model.isTraining);
        idle();
        verify(app.model.isReady);
    }
    function test_ctrlGGenerates() {
        trained();
        app.output.folderText = Stage.path("out");
        app.output.count = 2;
        keyClick(Qt.Key_G, Qt.ControlModifier);
        verify(app.generation.isGenerating);
        idle();
        compare(app.generation.results.count, 2);
    }
    function test_ctrlPAuditions() {
        trained();
        keyClick(Qt.Key_P, Qt.ControlModifier);
        verify(app.generation.isAuditioning);
        idle();
        tryVerify(() => isPlayingAudition(), limit);
    }
    function test_escapeCancelsTraining() {
        startTraining();
        keyClick(Qt.Key_Escape);
        idle();
        verify(!app.model.isReady);
    }
    function test_escapeCancelsFromATextField() {
        startTraining();
        focusOn("seed");
        keyClick(Qt.Key_Escape);
        idle();
        verify(!app.model.isReady);
    }
    function test_escapeCancelsGenerating() {
        startGenerating();
        keyClick(Qt.Key_Escape);
        idle();
        verify(app.generation.done < 9999);
    }
    function test_undoAndRedo() {
        focusOn("slider-pitch");
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        compare(app.character.parameters.get("pitch", "value"), 0);
        keyClick(Qt.Key_Z, Qt.ControlModifier | Qt.ShiftModifier);
        compare(app.character.parameters.get("pitch", "value"), 0.5);
    }
    function test_shortcutsRestBehindADialog() {
        app.character.parameters.setValue("pitch", 3);
        click("savePreset");
        tryVerify(() => focusName() === "presetName", limit);
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        compare(app.character.parameters.get("pitch", "value"), 3);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !has("presetName"), limit);
    }

    // Tab visits the controls in the order of the work, and comes back round.
    function tabOrder() {
        const names = [];
        window.contentItem.forceActiveFocus();
        for (let i = 0; i < 400; ++i) {
            keyClick(Qt.Key_Tab);
            const focused = Stage.focused(window.contentItem);
            const name = focused.objectName;
            verify(name.length > 0, "a control without a name takes the keyboard: " + focused);
            if (names.includes(name))
                break;
            names.push(name);
        }
        return names;
    }
    function test_tabOrder() {
        trained();
        app.output.folderText = Stage.path("out");
        app.output.count = 2;
        app.generation.generate();
        idle();
        const names = tabOrder();
        const landmarks = ["chooseCorpus", "recentCorpora", "device", "quality-1", "analysis", "train", "outputPath", "chooseOutput", "countInput", "format", "preset-Faithful", "preset-Robotic", "savePreset", "slider-sources", "value-sources", "lock-sources", "slider-drift", "slider-roughness", "slider-phase-iterations", "slider-normalize", "randomise", "randomiseAmount", "seed", "showInFinder", "tile-0", "appearance", "audition", "generate"];
        let last = -1;
        for (const name of landmarks) {
            const place = names.indexOf(name);
            verify(place > last, name + " comes too early or not at all: " + names.join(" "));
            last = place;
        }
    }
    function test_tabReachesWhatIsOutOfView() {
        resize(640, 480);
        for (const name of ["slider-normalize", "seed", "chooseCorpus", "generate"]) {
            focusOn(name);
            const target = item(name);
            const top = target.mapToItem(null, 0, 0).y;
            verify(top >= 0 && top + target.height <= 480, name + " at " + top);
        }
    }
    function test_focusIsVisible() {
        app.character.parameters.setValue("pitch", 1);  // for an undo button that takes the keyboard
        for (const name of ["chooseCorpus", "device", "quality-1", "analysis", "chooseOutput", "preset-Wild", "slider-drift", "lock-drift", "randomise", "appearance"]) {
            focusOn(name);
            verify(Stage.showsFocus(item(name)), name);
            focusOn("undo");
            verify(!Stage.showsFocus(item(name)), name);
        }
    }
    // At every stop there is more of the accent colour with the keyboard than without.
    function test_everyStopShowsTheKeyboard() {
        generated(2);
        app.appearance.mode = Appearance.Dark;
        app.output.folderText = "";
        app.generation.generate();  // brings the banner
        app.character.parameters.setValue("pitch", 1);
        const names = tabOrder();
        verify(names.length > 80);
        for (const name of names) {
            focusOn(name);
            const target = item(name);
            const place = name.endsWith("Input") || name === "errorMessage" ? target.parent : target;
            const shown = Stage.countPixels(place, Theme.accent);
            focusOn(name === "redo" || name === "undo" ? "generate" : "undo");
            const hidden = Stage.countPixels(place, Theme.accent);
            verify(shown >= hidden + 20, name + ": " + shown + ", without " + hidden);
        }
    }
    function test_mouseShowsNoRing() {
        mouseClick(item("randomise"));
        verify(!Stage.showsFocus(item("randomise")));
    }
}
