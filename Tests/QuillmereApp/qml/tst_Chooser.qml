import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// The program's own folder chooser, which stands in where the platform has none, as here.
WindowCase {
    name: "Chooser"

    function openForTheCorpus() {
        Stage.makeCorpus("home/kits/Kicks", 12);
        app.corpus.openChooser();
        tryVerify(() => has("chooserPath"), limit);
        tryCompare(item("chooserPath"), "text", "~", limit);
    }
    function test_clicksLeadToAFolder() {
        openForTheCorpus();
        verifySeen("Choose the folder of audio samples to learn from");
        tryCompare(item("chooserFolders"), "activeFocus", true, limit);
        mouseClick(item("folder-kits"));
        verifySeen("No audio files in this folder itself.");
        mouseClick(item("folder-Kicks"));
        verifySeen("12 audio files in this folder.");
        mouseClick(item("useFolder"));
        tryCompare(app.corpus, "name", "Kicks", limit);
        tryVerify(() => !has("chooserPath"), limit);
        idle();
    }
    function test_keysLeadToAFolder() {
        openForTheCorpus();
        tryCompare(item("chooserFolders"), "activeFocus", true, limit);
        keyClick(Qt.Key_Return);
        tryCompare(item("chooserPath"), "text", "~/kits", limit);
        keyClick(Qt.Key_Return);
        tryCompare(item("chooserPath"), "text", "~/kits/Kicks", limit);
        keyClick(Qt.Key_Backspace);
        tryCompare(item("chooserPath"), "text", "~/kits", limit);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !has("chooserPath"), limit);
        verify(!app.corpus.isChosen);
    }
    function test_typedPath() {
        openForTheCorpus();
        type("chooserPath", "~/kits/Kicks");
        keyClick(Qt.Key_Return);
        verifySeen("12 audio files in this folder.");
        type("chooserPath", "~/none");
        keyClick(Qt.Key_Return);
        tryVerify(() => seesMatch(/^There is no folder .*none\.$/), limit);
        tryCompare(item("chooserPath"), "text", "~/kits/Kicks", limit);
    }
    function test_newFolderForTheOutput() {
        app.output.openChooser();
        tryVerify(() => has("chooserPath"), limit);
        tryCompare(item("chooserPath"), "text", "~", limit);
        verify(!item("newFolder").enabled);
        type("newFolderName", "takes");
        mouseClick(item("newFolder"));
        tryCompare(item("chooserPath"), "text", "~/takes", limit);
        mouseClick(item("useFolder"));
        tryCompare(app.output, "folderText", Stage.path("home/takes"), limit);
        verifySeen("Existing folder — new files are added, nothing is overwritten.");
    }
    function test_shortcutsRestBehindIt() {
        openForTheCorpus();
        app.character.parameters.setValue("pitch", 3);
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        compare(app.character.parameters.get("pitch", "value"), 3);
    }
    function test_fitsSmallWindows() {
        openForTheCorpus();
        for (const size of [Qt.size(480, 360), Qt.size(800, 600), Qt.size(2560, 1440)]) {
            resize(size.width, size.height);
            compare(Stage.clippedTexts(window.contentItem), []);
            verify(item("chooserFolders").height >= 28);
            const button = item("useFolder");
            verify(button.mapToItem(null, 0, button.height).y < size.height);
        }
        compare(Stage.namelessControls(window.contentItem), []);
    }
}
