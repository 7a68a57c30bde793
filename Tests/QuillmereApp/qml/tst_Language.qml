import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// The window in the language that the environment asks for: whole, and with room for its words.
WindowCase {
    name: "Language"

    // What a view makes anew after a change of its width comes a frame or two later.
    readonly property int framesToRest: 10
    readonly property var sizes: [Qt.size(480, 360), Qt.size(640, 480), Qt.size(800, 700), Qt.size(1180, 820), Qt.size(1920, 1080)]
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

    readonly property var processor: ({
            "de": "Prozessor",
            "en": "Processor",
            "es": "Procesador",
            "fr": "Processeur",
            "ja": "プロセッサー"
        })
    readonly property var showing: ({
            "de": "Im Dateimanager zeigen",
            "en": "Show in File Manager",
            "es": "Ver en el gestor de archivos",
            "fr": "Voir dans le gestionnaire de fichiers",
            "ja": "ファイルマネージャーで表示"
        })

    function faults() {
        return [...cutOff(), ...Stage.overlaps(window.contentItem)];
    }
    function verifyAllSizes() {
        for (const size of sizes) {
            resize(size.width, size.height);
            for (let frame = 0; frame < framesToRest && faults().length > 0; ++frame)
                settle();
            compare(faults().map(text => text + " at " + size.width + "x" + size.height), []);
        }
    }
    // A sheet or a menu lies over the window, on purpose. names: of buttons that must be within it.
    function verifyAllSizesOfSheet(names) {
        for (const size of sizes) {
            resize(size.width, size.height);
            const found = () => [...sheetFaults(names ?? []), ...cutOff()];
            for (let frame = 0; frame < framesToRest && found().length > 0; ++frame)
                settle();
            compare(found().map(text => text + " at " + size.width + "x" + size.height), []);
        }
    }
    function sheetFaults(names) {
        const sheet = item("sheet");
        const top = sheet.mapToItem(null, 0, 0).y;
        const faults = top < 0 || top + sheet.height > window.height ? ["the sheet is cut off"] : [];
        for (const name of names) {
            const place = item(name).mapToItem(sheet, 0, 0);
            if (place.x < 16 || place.x + item(name).width > sheet.width - 16)
                faults.push(name + " from " + place.x + " to " + (place.x + item(name).width) + " of " + sheet.width);
            if (place.y < 0 || place.y + item(name).height > sheet.height - 16)
                faults.push(name + " down to " + (place.y + item(name).height) + " of " + sheet.height);
        }
        return faults;
    }
    function cutOff() {
        return [...Stage.clippedTexts(window.contentItem), ...Stage.itemsOutside(window.contentItem)];
    }
    function openByShortcut(key) {
        keyClick(key, Qt.ControlModifier);
        tryVerify(() => has("closeSheet"), limit);
    }
    function closeSheet() {
        keyClick(Qt.Key_Escape);
        tryVerify(() => !has("sheet"), limit);
    }
    // In every size by its button; the narrowest has no room for each.
    function verifyMenuOf(button) {
        for (const size of sizes) {
            resize(size.width, size.height);
            if (size.width < 640 && !has(button))
                continue;
            click(button);
            tryVerify(() => Stage.menuTexts(window.contentItem).length > 1, limit, button);
            const found = [...cutOff(), ...Stage.cutMenuTexts(window.contentItem)];
            compare(found.map(text => button + ": " + text + " at " + size.width + "x" + size.height), []);
            keyClick(Qt.Key_Escape);
            tryVerify(() => Stage.menuTexts(window.contentItem).length === 0, limit, button);
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
    function test_itHasTheWordsOfThisSystem() {
        verify(!seesMatch(/Finder|\bMac\b/));
        scanned(3);
        verify(!seesMatch(/Finder|\bMac\b/));
        generated(3);
        verify(!Stage.accessibleNames(window.contentItem).some(name => /Finder/.test(name)));
        verifySeen(showing[Stage.language]);
    }
    function test_theProcessorHasAName() {
        scanned(3);
        verifySeen(processor[Stage.language]);
        compare(app.devices.devices[0].name, processor[Stage.language]);
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
    // In the line of the results there is the way to the candidates, too.
    function test_resultsBesideCandidates() {
        generated(3);
        mouseClick(item("try"));
        idle();
        mouseClick(item("showResults"));
        tryVerify(() => has("showCandidates"), limit);
        verifyAllSizes();
        resize(480, 360);
        compare(item("showInFinder").Accessible.name, showing[Stage.language]);
        if (Stage.language === "fr")
            compare(item("showInFinder").text, "");  // the icon alone
        resize(1180, 820);
        verifySeen(showing[Stage.language]);
    }
    function test_setsOfCandidates() {
        trained();
        for (let set = 0; set < 2; ++set) {
            mouseClick(item("try"));
            idle();
        }
        compare(app.candidates.sets, 2);
        verifyAllSizes();
        keyClick(Qt.Key_I);
        tryVerify(() => has("closeInspector"), limit);
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
        app.map.selectBetween(Qt.point(-1e6, -1e6), Qt.point(1e6, 1e6));
        tryVerify(() => has("moreLikeThese"), limit);
        verifyAllSizes();
    }
    function test_sweep() {
        trained();
        for (const parameter of ["pitch", "normalize"]) {
            focusOn("slider-" + parameter);
            keyClick(Qt.Key_R);
            tryVerify(() => has("sweep-6"), limit);
            idle();
            verifyAllSizesOfSheet();
            closeSheet();
        }
    }
    function test_droppedSound() {
        trained();
        Stage.makeCorpus("Elsewhere", 1);
        Stage.drop(item("corpusCard"), [Stage.url("Elsewhere/hit0.wav")]);
        verifyAllSizesOfSheet(["findSimilar", "closeSheet"]);
        mouseClick(item("findSimilar"));
        tryVerify(() => has("similar-0"), limit);
        verifyAllSizesOfSheet(["closeSheet", "playForeign"]);
    }
    function test_questions() {
        generated(1);
        click("savePreset");
        tryVerify(() => focusName() === "presetName", limit);
        keyClick("/");  // brings a line about the name
        verifyAllSizesOfSheet(["cancelPreset", "confirmPreset"]);
        closeSheet();
        const file = app.generation.results.urlAt(0);
        startTraining();
        window.close();
        tryVerify(() => has("leave"), limit);
        verifyAllSizesOfSheet(["leave", "keepLearning"]);
        app.cancel();
        tryVerify(() => !has("leave"), limit);
        idle();
        app.corpus.choose(Stage.makeCorpus("Bells", 4));
        idle();
        Stage.drop(item("seed"), [file]);
        tryVerify(() => has("openOfferedModel"), limit);
        verifyAllSizesOfSheet(["keepModel", "openOfferedModel"]);
    }
    function test_folderChooser() {
        Stage.makeCorpus("home/kits/Kicks", 12);
        app.corpus.openChooser();
        tryVerify(() => has("chooserPath"), limit);
        const names = ["chooserUp", "newFolder", "cancelChooser", "useFolder"];
        verifyAllSizesOfSheet(names);
        type("chooserPath", "~/nowhere");
        keyClick(Qt.Key_Return);
        tryVerify(() => String(item("chooserState").color) === String(Theme.error), limit);
        verifyAllSizesOfSheet(names);
    }
    function test_menus() {
        generated(1);
        for (const button of ["device", "appearance", "listening", "sortResults"])
            verifyMenuOf(button);
    }
    function test_error() {
        scanned(3);
        generateNowhere();
        verifyAllSizes();
    }
    function test_sheets() {
        generated(2);
        openByShortcut(Qt.Key_I);
        tryVerify(() => app.report.isThere, limit);
        verifyAllSizesOfSheet(["closeSheet"]);
        closeSheet();
        openByShortcut(Qt.Key_L);
        tryVerify(() => app.corpusFiles.isRead, limit);
        verifyAllSizesOfSheet(["closeSheet"]);
        closeSheet();
        openByShortcut(Qt.Key_M);
        tryVerify(() => app.models.models.length === 1, limit);
        verifyAllSizesOfSheet(["closeSheet"]);
        closeSheet();
        openByShortcut(Qt.Key_H);
        tryVerify(() => app.runs.runs.length === 1, limit);
        verifyAllSizesOfSheet(["closeSheet"]);
    }
}
