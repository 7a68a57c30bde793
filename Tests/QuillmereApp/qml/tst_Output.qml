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
        compare(chooser.count, 1);
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
