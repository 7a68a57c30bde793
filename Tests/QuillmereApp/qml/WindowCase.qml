pragma ComponentBehavior: Bound

import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// A test case with a new window on a new model for each of its functions.
TestCase {
    id: testCase

    readonly property AppModel app: Stage.app
    property Main window: null
    property size firstSize: Qt.size(1180, 820)
    // Milliseconds until something that must come is missed: long, for machines that are busy with other work
    // and for sanitizers.
    readonly property int limit: 60000
    readonly property Component mainWindow: Component {
        Main {
        }
    }

    when: windowShown

    function init() {
        failOnWarning(/.?/);
        Theme.tipDelay = 0;
        Theme.patience = 500;
        Theme.calm = 0;  // no hand is so fast as a test
        Stage.restart();
        open();
    }
    function cleanup() {
        close();
    }
    function close() {
        if (window)
            window.destroy();
        window = null;
        wait(0);
    }
    // A window on the present model.
    function open() {
        window = mainWindow.createObject(null, {
                "app": Stage.app,
                "width": firstSize.width,
                "height": firstSize.height
            });
        verify(window);
        window.requestActivate();
        tryVerify(() => window.active, limit);
    }
    // As after quitting and starting again.
    function restartProgram() {
        close();
        Stage.restartProgram();
        open();
    }
    function resize(width, height) {
        window.width = width;
        window.height = height;
        settle();
    }
    // Layout and bindings have come to rest.
    function settle() {
        window.update();
        waitForRendering(window.contentItem, limit);
    }

    // ---- Finding
    function has(name): bool {
        return Stage.find(window.contentItem, name) !== null;
    }
    // It is where it belongs: what has just appeared has no place before the next frame.
    function item(name) {
        tryVerify(() => has(name), limit, name + " is not in the window");
        for (let up = Stage.find(window.contentItem, name); up; up = up.parent) {
            if (isPolishScheduled(up)) {
                settle();
                break;
            }
        }
        return Stage.find(window.contentItem, name);
    }
    function sees(text): bool {
        return Stage.texts(window.contentItem).includes(text);
    }
    function verifySeen(text) {
        tryVerify(() => sees(text), limit, "not in the window: " + text);
    }
    function verifyNotSeen(text) {
        tryVerify(() => !sees(text), limit, "in the window: " + text);
    }
    function seesMatch(pattern): bool {
        return Stage.texts(window.contentItem).some(text => pattern.test(text));
    }
    function seesIcon(name): bool {
        return Stage.icons(window.contentItem).includes(name);
    }
    function focusName(): string {
        const focused = Stage.focused(window.contentItem);
        return focused ? focused.objectName : "";
    }

    function isPlayingAudition(): bool {
        return String(app.playback.playingURL).endsWith("/Quillmere-audition.wav");
    }

    readonly property var parameterIds: ["sources", "drift", "mutation", "extrapolation", "pitch", "pitch-jitter", "stretch", "stretch-jitter", "tilt", "contrast", "smear", "grit", "roughness", "phase-iterations", "decay", "drive", "crush-bits", "decimate", "reverse-chance", "normalize"]

    // ---- Doing
    function hover(target) {
        mouseMove(target, target.width / 2, target.height / 2);
        mouseMove(target, target.width / 2 + 1, target.height / 2);
    }
    function focusOn(name) {
        item(name).forceActiveFocus(Qt.TabFocusReason);
        settle();
    }
    function click(name) {
        const target = item(name);
        target.forceActiveFocus(Qt.OtherFocusReason);  // scrolls to it
        settle();
        mouseClick(target);
    }
    // By the keyboard into the field of that name.
    function type(name, text) {
        focusOn(name);
        keyClick(Qt.Key_A, Qt.ControlModifier);
        for (const letter of text)
            keyClick(letter);
    }

    // ---- States of the model
    function idle() {
        tryVerify(() => !app.isBusy && !app.model.isLoading, limit);
    }
    function scanned(files) {
        app.corpus.choose(Stage.makeCorpus("Drums", files ?? 12));
        idle();
        verify(app.corpus.hasSummary);
    }
    function trained() {
        scanned(3);
        app.model.train();
        idle();
        verify(app.model.isReady, app.errorMessage);
    }
    // A training that goes on until it is cancelled.
    function startTraining() {
        scanned(12);
        Stage.setTrainingSteps(100000);
        app.model.train();
        tryVerify(() => app.model.step > 0, limit);
    }
    function generated(count) {
        trained();
        app.output.folderText = Stage.path("out");
        app.output.count = count;
        app.generation.generate();
        idle();
        compare(app.generation.results.count, count);
    }
    // A generation that ends in the error banner.
    function generateNowhere() {
        app.output.folderText = "";
        app.generation.generate();
    }
    // A generation that goes on until it is cancelled.
    function startGenerating() {
        trained();
        app.output.folderText = Stage.path("out");
        app.output.count = 9999;
        app.generation.generate();
        tryVerify(() => app.generation.done > 0, limit);
    }
}
