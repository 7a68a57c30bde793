import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// Every button and every choice of the window: by the mouse, by Space, by Return and by assistive technology.
WindowCase {
    id: testCase
    name: "Controls"

    SignalSpy {
        id: corpusChooser
        target: testCase.app?.corpus ?? null
        signalName: "chooserRequested"
    }
    SignalSpy {
        id: outputChooser
        target: testCase.app?.output ?? null
        signalName: "chooserRequested"
    }

    // What each button needs before, and what it must have done.
    readonly property var buttons: ({
            "chooseCorpus": {
                "done": () => corpusChooser.count === 1
            },
            "chooseOutput": {
                "done": () => outputChooser.count === 1
            },
            "train": {
                "before": () => scanned(3),
                "done": () => app.model.isReady
            },
            "generate": {
                "before": () => {
                    trained();
                    app.output.folderText = Stage.path("out");
                    app.output.count = 1;
                },
                "done": () => app.generation.results.count === 1
            },
            "audition": {
                "before": () => trained(),
                "done": () => isPlayingAudition()
            },
            "undo": {
                "before": () => app.character.parameters.setValue("pitch", 3),
                "done": () => app.character.parameters.get("pitch", "value") === 0
            },
            "redo": {
                "before": () => {
                    app.character.parameters.setValue("pitch", 3);
                    app.character.undo();
                },
                "done": () => app.character.parameters.get("pitch", "value") === 3
            },
            "preset-Wild": {
                "done": () => app.character.presetName === "Wild" && item("preset-Wild").checked && !item("preset-Balanced").checked
            },
            "preset-Balanced": {
                "before": () => app.character.parameters.setValue("pitch", 3),
                "done": () => app.character.parameters.get("pitch", "value") === 0 && item("preset-Balanced").checked
            },
            "savePreset": {
                "done": () => focusName() === "presetName"
            },
            "delete-Mine": {
                "before": () => app.character.saveOwnPreset("Mine"),
                "done": () => !has("preset-Mine")
            },
            "reset-pitch": {
                "before": () => app.character.parameters.setValue("pitch", 3),
                "done": () => app.character.parameters.get("pitch", "isDefault")
            },
            "lock-pitch": {
                "done": () => app.character.parameters.get("pitch", "locked") && item("lock-pitch").checked
            },
            "randomise": {
                "done": () => app.character.canUndo && app.character.presetEdited
            },
            "copySeed": {
                "before": () => generated(1),
                "done": () => Stage.clipboard() === app.character.lastSeed && app.character.lastSeed.length > 0
            },
            "reuseSeed": {
                "before": () => generated(1),
                "done": () => app.character.seedText === app.character.lastSeed && app.character.lastSeed.length > 0
            },
            "showInFinder": {
                "before": () => generated(1),
                "done": () => Stage.pathOf(Stage.shownFolder()) === Stage.path("out")
            },
            "copyError": {
                "before": () => failed(),
                "done": () => Stage.clipboard() === "Choose an output folder first."
            },
            "dismissError": {
                "before": () => failed(),
                "done": () => app.errorMessage === ""
            },
            "cancelGeneration": {
                "before": () => startGenerating(),
                "done": () => !app.generation.isGenerating && app.errorMessage === ""
            },
            "recentCorpora": {
                "before": () => scanned(3),
                "done": () => sees("Forget These Folders")
            },
            "appearance": {
                "done": () => sees("As the Desktop") && sees("Light") && sees("Dark")
            },
            "analysis": {
                "done": () => sees("Percussive (sharp attacks)")
            },
            "format": {
                "done": () => sees("WAV 32-bit float")
            }
        })

    function failed() {
        scanned(3);
        generateNowhere();
        tryVerify(() => has("errorBanner"), limit);
    }
    function rows(): var {
        return Object.keys(buttons).map(name => ({
                        "tag": name
                    }));
    }
    // Those that need no generation before: the others are buttons of the same two kinds.
    function quickRows(): var {
        const slow = ["generate", "audition", "copySeed", "reuseSeed", "showInFinder", "cancelGeneration"];
        return rows().filter(row => !slow.includes(row.tag));
    }
    function prepare(name) {
        corpusChooser.clear();
        outputChooser.clear();
        if (buttons[name].before)
            buttons[name].before();
        tryVerify(() => item(name).enabled, limit);
        focusOn(name);
        verify(!buttons[name].done());
    }
    function verifyDone(name) {
        tryVerify(buttons[name].done, limit);
        if (app.isBusy)
            idle();
    }

    function test_mouse_data() {
        return rows();
    }
    function test_mouse(row) {
        prepare(row.tag);
        mouseClick(item(row.tag));
        verifyDone(row.tag);
    }
    function test_enter_data() {
        return rows();
    }
    function test_enter(row) {
        prepare(row.tag);
        keyClick(Qt.Key_Enter);
        verifyDone(row.tag);
    }
    function test_return_data() {
        return quickRows();
    }
    function test_return(row) {
        prepare(row.tag);
        keyClick(Qt.Key_Return);
        verifyDone(row.tag);
    }
    function test_assistiveTechnology_data() {
        return quickRows();
    }
    function test_assistiveTechnology(row) {
        prepare(row.tag);
        Stage.doAccessibleAction(item(row.tag), row.tag.startsWith("lock-") ? "Toggle" : "Press");
        verifyDone(row.tag);
    }

    // ---- Menus and dialogs by the keyboard
    function test_appearanceMenuByKeys() {
        app.appearance.mode = Appearance.System;
        focusOn("appearance");
        keyClick(Qt.Key_Return);
        verifySeen("As the Desktop");
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        tryCompare(app.appearance, "mode", Appearance.Light, limit);
        verifyNotSeen("As the Desktop");
        compare(Theme.dark, false);
        app.appearance.mode = Appearance.System;
        compare(Theme.dark, app.appearance.dark);
    }
    function test_appearanceIsRemembered() {
        click("appearance");
        mouseClick(Stage.findText(window.contentItem, "Dark"));
        tryCompare(app.appearance, "mode", Appearance.Dark, limit);
        restartProgram();
        compare(Stage.app.appearance.mode, Appearance.Dark);
        compare(Theme.dark, true);
        compare(item("appearance").iconName, "moon");
    }
    function test_recentMenuByKeys() {
        app.corpus.choose(Stage.makeCorpus("First"));
        idle();
        app.corpus.choose(Stage.makeCorpus("Second"));
        idle();
        focusOn("recentCorpora");
        keyClick(Qt.Key_Return);
        verifySeen("Forget These Folders");
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Return);
        tryCompare(app.corpus, "name", "First", limit);
        idle();
    }
    function test_presetDialogByMouse() {
        app.character.parameters.setValue("pitch", 3);
        click("savePreset");
        tryVerify(() => focusName() === "presetName", limit);
        for (const letter of "Low")
            keyClick(letter);
        mouseClick(item("confirmPreset"));
        tryVerify(() => has("preset-Low"), limit);
        verify(item("preset-Low").isCurrent);
    }
    function test_presetDialogIsLeftByCancel() {
        click("savePreset");
        tryVerify(() => focusName() === "presetName", limit);
        mouseClick(item("cancelPreset"));
        tryVerify(() => !has("presetName"), limit);
        compare(app.character.presets.count, 8);
    }
    function test_textMenu() {
        type("seed", "123");
        const field = item("seed");
        mouseClick(field, 10, 10, Qt.RightButton);
        verifySeen("Select All");
        mouseClick(Stage.findText(window.contentItem, "Select All"));
        tryCompare(field, "selectedText", "123", limit);
        mouseClick(field, 10, 10, Qt.RightButton);
        mouseClick(Stage.findText(window.contentItem, "Cut"));
        tryCompare(field, "text", "", limit);
        compare(app.character.seedText, "");
        mouseClick(field, 10, 10, Qt.RightButton);
        verifySeen("Paste");
        mouseClick(Stage.findText(window.contentItem, "Paste"));
        tryCompare(field, "text", "123", limit);
        compare(app.character.seedText, "123");
    }
    function test_folderChooserAsksInTheGivenWords() {
        click("chooseCorpus");
        verifySeen("Choose the folder of audio samples to learn from");
        verifySeen("Use Folder");
    }
    function test_outputChooserAsksInTheGivenWords() {
        click("chooseOutput");
        verifySeen("Choose a folder for the generated samples — use New Folder to create one");
        verifySeen("Use Folder");
    }
}
