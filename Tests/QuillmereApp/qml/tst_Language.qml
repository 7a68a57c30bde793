import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// The window in the language that the environment asks for: whole, and with room for its words.
WindowCase {
    name: "Language"

    // What a view makes anew after a change of its width comes a frame or two later.
    readonly property int framesToRest: 10
    readonly property var sizes: [Qt.size(800, 700), Qt.size(1180, 820), Qt.size(1920, 1080)]
    // A text of a QML file, one of the core, and one with a count.
    readonly property var words: ({
            "de": ["Modell lernen", "Abweichung vom Korpus", "3 Samples"],
            "en": ["Train Model", "Departure from the corpus", "3 samples"],
            "es": ["Entrenar", "Distancia al corpus", "3 samples"],
            "fr": ["Entraîner", "Écart au corpus", "3 samples"],
            "ja": ["モデルを学習", "コーパスからの離れ方", "3 個のサンプル"]
        })
    // One of C++.
    readonly property var headStart: ({
            "de": "Starthilfe",
            "en": "Head start",
            "es": "Base preaprendida",
            "fr": "Base préapprise",
            "ja": "事前学習"
        })

    function faults() {
        return [...Stage.clippedTexts(window.contentItem), ...Stage.itemsOutside(window.contentItem), ...Stage.overlaps(window.contentItem)];
    }
    function verifyAllSizes() {
        for (const size of sizes) {
            resize(size.width, size.height);
            for (let frame = 0; frame < framesToRest && faults().length > 0; ++frame)
                settle();
            compare(faults().map(text => text + " at " + size.width + "x" + size.height), []);
        }
    }
    // A sheet or a menu lies over the window, on purpose.
    function verifyAllSizesOfSheet() {
        for (const size of sizes) {
            resize(size.width, size.height);
            compare([...Stage.clippedTexts(window.contentItem), ...Stage.itemsOutside(window.contentItem)].map(text => text + " at " + size.width + "x" + size.height), []);
        }
    }

    function test_windowAndCoreSpeakTheSame() {
        compare(Stage.language, Stage.wantedLanguage);
        scanned(3);
        resize(1920, 1080);
        for (const word of words[Stage.language])
            verifySeen(word);
        compare(app.model.startLabels[1], headStart[Stage.language]);
    }
    function test_englishHasTheWordsOfThisSystem() {
        verify(!seesMatch(/Finder|\bMac\b/));
        scanned(3);
        verify(!seesMatch(/Finder|\bMac\b/));
        generated(3);
        verify(!Stage.accessibleNames(window.contentItem).some(name => /Finder/.test(name)));
    }
    function test_presetsAndFilesKeepTheirNames() {
        generated(1);
        verify(has("preset-Balanced"));
        verify(String(app.generation.results.urlAt(0)).endsWith("Drums_var_0001.wav"));
    }
    function test_empty() {
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
    function test_candidates() {
        trained();
        app.output.folderText = Stage.path("out");
        mouseClick(item("try"));
        idle();
        verifyAllSizes();
    }
    function test_inspector() {
        generated(3);
        keyClick(Qt.Key_I);
        verifyAllSizes();
    }
    function test_map() {
        trained();
        keyClick(Qt.Key_M);
        tryVerify(() => app.map.isReady, limit);
        verifyAllSizes();
    }
    function test_error() {
        scanned(3);
        generateNowhere();
        verifyAllSizes();
    }
    function test_sheets() {
        generated(2);
        keyClick(Qt.Key_I, Qt.ControlModifier);
        tryVerify(() => app.report.isThere, limit);
        verifyAllSizesOfSheet();
        keyClick(Qt.Key_Escape);
        keyClick(Qt.Key_L, Qt.ControlModifier);
        tryVerify(() => app.corpusFiles.isRead, limit);
        verifyAllSizesOfSheet();
        keyClick(Qt.Key_Escape);
        keyClick(Qt.Key_M, Qt.ControlModifier);
        tryVerify(() => app.models.models.length === 1, limit);
        verifyAllSizesOfSheet();
        keyClick(Qt.Key_Escape);
        keyClick(Qt.Key_H, Qt.ControlModifier);
        tryVerify(() => app.runs.runs.length === 1, limit);
        verifyAllSizesOfSheet();
    }
}
