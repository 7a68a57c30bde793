import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

WindowCase {
    id: testCase
    name: "Output"

    SignalSpy {
        id: chooser
        target: testCase.app?.output ?? null
        signalName: "chooserRequested"
    }

    function test_typedPath() {
        type("outputPath", "/tmp/a b");
        compare(app.output.folderText, "/tmp/a b");
    }
    function test_fieldFollowsTheModel() {
        type("outputPath", "x");
        app.output.setFolder(Stage.makeFolder("chosen"));
        tryCompare(item("outputPath"), "text", Stage.path("chosen"), limit);
    }
    function test_chooserButton() {
        chooser.clear();
        click("chooseOutput");
        tryCompare(chooser, "count", 1, limit);
    }
    function test_droppedFolder() {
        const folder = Stage.makeFolder("dropped");
        Stage.drop(item("outputPath"), [folder]);
        tryCompare(app.output, "folderText", Stage.path("dropped"), limit);
        verify(!app.corpus.isChosen);
    }
    function test_fileInPlaceOfAFolder() {
        Stage.makeFile("taken");
        app.output.folderText = Stage.path("taken");
        verifySeen("This is a file, not a folder.");
    }
    function test_statusMovesNothing() {
        const before = item("count").mapToItem(null, 0, 0).y;
        app.output.folderText = Stage.path("new");
        verifySeen("Folder will be created.");
        compare(item("count").mapToItem(null, 0, 0).y, before);
        Stage.makeFolder("old");
        app.output.folderText = Stage.path("old");
        verifySeen("Existing folder — new files are added, nothing is overwritten.");
        compare(item("count").mapToItem(null, 0, 0).y, before);
    }
    function test_folderIsSuggestedWithTheCorpus() {
        compare(item("outputPath").text, "");
        scanned(3);
        compare(item("outputPath").text, Stage.path("Drums variations"));
        verifySeen("Folder will be created.");
        type("outputPath", "/my/own");
        app.corpus.choose(Stage.makeCorpus("Other"));
        idle();
        compare(item("outputPath").text, "/my/own");
    }
    function test_folderInTheCorpusIsToldOfBeforeTheRun() {
        const warning = "This folder is in the corpus: the next scan finds what is written here, and the model no longer fits.";
        scanned(3);
        verifyNotSeen(warning);
        app.output.folderText = Stage.path("Drums/new");
        verifySeen(warning);
        click("useSuggestion");
        verifyNotSeen(warning);
        compare(app.output.folderText, Stage.path("Drums variations"));
        verify(!has("useSuggestion"));
    }
    function test_folderThatDoesNotAnswer() {
        Stage.cutOff("dead");
        restartProgram();
        app.output.folderText = Stage.path("dead/folder");
        verifySeen("This folder does not answer.");
    }
    function test_detail() {
        compare(app.output.detail, 0);
        verifySeen("0 %");
        focusOn("detail");
        keyClick(Qt.Key_Right);
        compare(app.output.detail, 0.01);
        keyClick(Qt.Key_End);
        compare(app.output.detail, 1);
        verifySeen("100 %");
        keyClick(Qt.Key_Delete);
        compare(app.output.detail, 0);
        const slider = item("detail");
        mouseClick(slider, slider.width / 2, slider.height / 2);
        fuzzyCompare(app.output.detail, 0.5, 0.011);
    }
    function test_fileIsNoOutputFolder() {
        Stage.makeFile("file");
        Stage.drop(item("outputPath"), [Stage.url("file")]);
        verifySeen("This is a file, not a folder. Drop the folder that holds it.");
        compare(app.output.folderText, "");
    }
    // Typed and left; what is no count changes nothing.
    function test_countTakesWholeNumbersOnly_data() {
        const texts = {
            "-5": 10,
            "7.5": 10,
            "1e9": 10,
            "x": 10,
            "0": 1,
            "12345": 12345,
            "99999999999999": 1000000
        };
        return Object.keys(texts).map(text => ({
                        "tag": text,
                        "count": texts[text]
                    }));
    }
    function test_countTakesWholeNumbersOnly(row) {
        type("countInput", row.tag);
        keyClick(Qt.Key_Tab);
        tryCompare(app.output, "count", row.count, limit);
        compare(item("countInput").text, String(row.count));
        compare(item("generate").text, "Generate " + row.count + " Variations");
    }
    function test_countByButtons() {
        const count = item("count");
        mouseClick(count, count.width - 10, count.height / 2);
        compare(app.output.count, 11);
        mouseClick(count, 10, count.height / 2);
        mouseClick(count, 10, count.height / 2);
        compare(app.output.count, 9);
    }
    function test_countByKeyboard() {
        focusOn("count");
        keyClick(Qt.Key_Up);
        compare(app.output.count, 11);
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Down);
        compare(app.output.count, 9);
    }
    function test_countTyped() {
        const count = item("count");
        mouseClick(count, count.width / 2, count.height / 2);
        keyClick(Qt.Key_A, Qt.ControlModifier);
        keyClick("4");
        keyClick("2");
        keyClick(Qt.Key_Return);
        compare(app.output.count, 42);
    }
    function test_countIsNeverZero() {
        app.output.count = 1;
        const count = item("count");
        mouseClick(count, 10, count.height / 2);
        compare(app.output.count, 1);
    }
    function test_format() {
        click("format");
        mouseClick(Stage.findText(window.contentItem, "WAV 32-bit float"));
        compare(app.output.formatLabels[app.output.formatIndex], "WAV 32-bit float");
        focusOn("format");
        keyClick(Qt.Key_Up);
        compare(app.output.formatLabels[app.output.formatIndex], "WAV 24-bit");
    }
    function test_longPathsAreShownInFullByTheTooltip() {
        const path = "/a/" + "long/".repeat(40);
        app.output.folderText = path;
        const field = item("outputPath");
        mouseMove(field, 10, 10);
        mouseMove(field, 11, 10);
        tryVerify(() => Stage.texts(window.contentItem).filter(text => text === path).length === 2, limit);
    }
}
