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
        tryCompare(chooser, "count", 1, limit);
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
    function test_ctrlDComparesDetail() {
        trained();
        keyClick(Qt.Key_D, Qt.ControlModifier);
        compare(app.output.detail, 1);
        verify(app.generation.isAuditioning);
        idle();
        tryVerify(() => isPlayingAudition(), limit);
        keyClick(Qt.Key_D, Qt.ControlModifier);
        compare(app.output.detail, 0);
        idle();
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
        trained();
        app.output.folderText = Stage.path("out");
        app.character.parameters.setValue("pitch", 3);
        click("savePreset");
        tryVerify(() => focusName() === "presetName", limit);
        focusOn("cancelPreset");  // a text field would take some of them for itself
        chooser.clear();
        for (const key of [Qt.Key_Z, Qt.Key_T, Qt.Key_G, Qt.Key_P, Qt.Key_O])
            keyClick(key, Qt.ControlModifier);
        compare(app.character.parameters.get("pitch", "value"), 3);
        verify(!app.isBusy);
        compare(chooser.count, 0);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !has("presetName"), limit);
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        compare(app.character.parameters.get("pitch", "value"), 0);
    }
    // Of a chooser that the desktop draws, the window sees only that it is open.
    function test_shortcutsRestBehindTheFolderChooser() {
        verify(Stage.countShortcuts(window.contentItem) > 5);
        keyClick(Qt.Key_O, Qt.ControlModifier);
        tryVerify(() => !window.listening, limit);
        compare(Stage.countShortcuts(window.contentItem), 0);
        keyClick(Qt.Key_Escape);
        tryVerify(() => window.listening, limit);
        verify(Stage.countShortcuts(window.contentItem) > 5);
    }

    // ---- What is typed and not yet taken
    function test_generateTakesTheTypedCount() {
        trained();
        app.output.folderText = Stage.path("out");
        type("countInput", "3");
        compare(app.output.count, 10);
        keyClick(Qt.Key_G, Qt.ControlModifier);
        compare(app.generation.total, 3);
        compare(focusName(), "countInput");
        idle();
        compare(app.generation.results.count, 3);
    }
    function test_auditionTakesTheTypedValue() {
        trained();
        type("value-pitch", "12");
        keyClick(Qt.Key_P, Qt.ControlModifier);
        verify(app.generation.isAuditioning);
        compare(app.character.parameters.get("pitch", "value"), 12);
        compare(item("value-pitch").text, "12.0 st");
        compare(focusName(), "value-pitch");
        idle();
    }
    function test_assistiveTechnologyTakesTheTypedCount() {
        trained();
        app.output.folderText = Stage.path("out");
        type("countInput", "2");
        Stage.doAccessibleAction(item("generate"), "Press");
        compare(app.generation.total, 2);
        idle();
    }

    // ---- Space plays
    function playing(): int {
        return app.generation.results.rowOf(app.playback.playingURL);
    }
    function test_spacePlaysWhereverTheKeyboardIs_data() {
        return ["generate", "train", "chooseCorpus", "preset-Wild", "lock-pitch", "quality-0", "slider-drift", "appearance", "analysis", "start", "format", "device", "detail", "results"].map(name => ({
                        "tag": name
                    }));
    }
    function test_spacePlaysWhereverTheKeyboardIs(row) {
        generated(2);
        focusOn(row.tag);
        keyClick(Qt.Key_Space);
        tryVerify(() => playing() === 0, limit);
        verify(!app.isBusy);
        compare(app.character.presetName, "Balanced");
        keyClick(Qt.Key_Space);
        tryVerify(() => playing() === -1, limit);
    }
    function test_spaceAfterAClickOnGeneratePlays() {
        trained();
        app.output.folderText = Stage.path("out");
        app.output.count = 2;
        mouseClick(item("generate"));
        idle();
        keyClick(Qt.Key_Space);
        tryVerify(() => playing() === 0, limit);
        verify(!app.isBusy);
        compare(app.generation.results.count, 2);
    }
    function test_spaceIsTypedInATextField() {
        generated(1);
        type("outputPath", "a b");
        compare(app.output.folderText, "a b");
        compare(playing(), -1);
    }
    function test_spaceWithoutResultsPressesNothing() {
        trained();
        app.output.folderText = Stage.path("out");
        focusOn("generate");
        keyClick(Qt.Key_Space);
        verify(!app.isBusy);
    }

    // ---- Esc
    function test_escapeStopsWhatSoundsFirst() {
        generated(1);
        app.playback.togglePlay(app.generation.results.urlAt(0));
        tryVerify(() => playing() === 0, limit);
        Stage.setTrainingSteps(100000);
        app.model.train();
        keyClick(Qt.Key_Escape);
        compare(playing(), -1);
        verify(app.model.isTraining && !app.model.isCancelling);
        keyClick(Qt.Key_Escape);
        idle();
        verify(app.model.isReady);
    }
    function test_escapeStopsAnAudition() {
        trained();
        keyClick(Qt.Key_P, Qt.ControlModifier);
        tryVerify(() => isPlayingAudition(), limit);
        keyClick(Qt.Key_Escape);
        verify(!isPlayingAudition());
    }

    // ---- Closing
    function test_closingWhileLearningAsks() {
        startTraining();
        keyClick(Qt.Key_Q, Qt.ControlModifier);
        tryVerify(() => has("keepLearning"), limit);
        verify(window.visible && app.model.isTraining);
        tryVerify(() => focusName() === "keepLearning", limit);
        keyClick(Qt.Key_Return);
        tryVerify(() => !has("keepLearning"), limit);
        verify(window.visible && app.model.isTraining);
        keyClick(Qt.Key_Q, Qt.ControlModifier);
        mouseClick(item("leave"));
        tryVerify(() => !window.visible, limit);
        app.cancel();
        idle();
    }
    function test_closingTakesTheTypedCount() {
        type("countInput", "7");
        keyClick(Qt.Key_Q, Qt.ControlModifier);
        tryVerify(() => !window.visible, limit);
        compare(app.output.count, 7);
    }
    function test_theQuestionGoesAwayWithTheLearning() {
        startTraining();
        window.close();
        tryVerify(() => has("leave"), limit);
        app.cancel();
        tryVerify(() => !has("leave"), limit);
        verify(window.visible);
        idle();
        window.close();
        tryVerify(() => !window.visible, limit);
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
        const landmarks = ["chooseCorpus", "recentCorpora", "device", "quality-1", "analysis", "start", "train", "outputPath", "chooseOutput", "countInput", "format", "detail", "preset-Faithful", "savePreset", "slider-sources", "randomise", "randomiseAmount", "seed", "showInFinder", "tile-0", "appearance", "audition", "generate"];
        let last = -1;
        for (const name of landmarks) {
            const place = names.indexOf(name);
            verify(place > last, name + " comes too early or not at all: " + names.join(" "));
            last = place;
        }
        const results = names.indexOf("tile-0");
        verify(results - names.indexOf("detail") <= 11, "a long way to the results: " + names.join(" "));
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
        generateNowhere();  // brings the banner
        app.character.parameters.setValue("pitch", 1);
        const names = tabOrder();
        verify(names.length > 20);
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
