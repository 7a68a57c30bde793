import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// The program's own folder chooser, which stands in where the platform has none, as here.
WindowCase {
    name: "Chooser"

    Component {
        id: anotherWindow

        Window {
            visible: true
        }
    }

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
    function test_comesEachTimeThatItIsAskedFor() {
        for (let time = 0; time < 3; ++time) {
            openForTheCorpus();
            keyClick(Qt.Key_Escape);
            tryVerify(() => !has("chooserPath"), limit);
        }
    }
    function test_windowsThatTheToolkitDrawsAreCounted() {
        const before = DrawnWindows.count();
        const another = createTemporaryObject(anotherWindow, this);
        compare(DrawnWindows.count(), before + 1);
        another.close();
        compare(DrawnWindows.count(), before);
    }
    function test_showsWhereTheKeyboardIs() {
        app.appearance.mode = Appearance.Light;
        openForTheCorpus();
        const folders = item("chooserFolders");
        tryCompare(folders, "activeFocus", true, limit);
        tryVerify(() => Stage.countPixels(folders, Theme.accentSoft) > 500, limit);
        for (const name of ["chooserPath", "chooserUp", "newFolderName", "cancelChooser", "chooserFolders"]) {
            const place = item(name);
            const frame = name === "chooserFolders" || name.endsWith("Path") || name.endsWith("Name") ? place.parent : place;
            focusOn(name === "cancelChooser" ? "chooserUp" : "cancelChooser");
            const without = Stage.countPixels(frame, Theme.accent);
            focusOn(name);
            tryVerify(() => Stage.countPixels(frame, Theme.accent) >= without + 20, limit, name);
        }
    }
    function test_lettersLeadToAFolder() {
        Stage.makeCorpus("home/loops", 1);
        Stage.makeCorpus("home/kits", 1);
        Stage.makeCorpus("home/Kicks", 1);
        app.corpus.openChooser();
        tryVerify(() => has("folder-loops"), limit);
        const folders = item("chooserFolders");
        tryCompare(folders, "activeFocus", true, limit);
        const letters = {
            "l": "loops",
            "k": "Kicks"
        };
        for (const letter in letters) {
            folders.typed = "";
            keyClick(letter);
            compare(app.browser.names[folders.currentIndex], letters[letter]);
        }
        keyClick("i");
        keyClick("t");
        compare(app.browser.names[folders.currentIndex], "kits");
        keyClick(Qt.Key_Return);
        tryCompare(item("chooserPath"), "text", "~/kits", limit);
    }
    function test_secondReturnUsesTheTypedFolder() {
        openForTheCorpus();
        type("chooserPath", "~/kits/Kicks");
        keyClick(Qt.Key_Return);
        verifySeen("12 audio files in this folder.");
        verify(!app.corpus.isChosen);
        keyClick(Qt.Key_Return);
        tryCompare(app.corpus, "name", "Kicks", limit);
        idle();
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
