import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

WindowCase {
    name: "Errors"

    function test_bannerComesAndGoes() {
        verify(!has("errorBanner"));
        scanned(3);
        generateNowhere();
        verifySeen("Choose an output folder first.");
        mouseClick(item("dismissError"));
        tryVerify(() => !has("errorBanner"), limit);
        compare(app.errorMessage, "");
    }
    function test_missingFolderTakesTheKeyboardToItsField() {
        scanned(3);
        focusOn("generate");
        generateNowhere();
        tryVerify(() => focusName() === "outputPath", limit);
    }
    function test_copy() {
        scanned(3);
        generateNowhere();
        click("copyError");
        compare(Stage.clipboard(), "Choose an output folder first.");
    }
    function test_escapeDismisses() {
        scanned(3);
        generateNowhere();
        tryVerify(() => has("errorBanner"), limit);
        keyClick(Qt.Key_Escape);
        tryVerify(() => !has("errorBanner"), limit);
    }
    function test_messageCanBeSelected() {
        scanned(3);
        generateNowhere();
        focusOn("errorMessage");
        keyClick(Qt.Key_A, Qt.ControlModifier);
        compare(item("errorMessage").selectedText, "Choose an output folder first.");
    }
    function test_longMessageCanBeReadInFull() {
        resize(640, 480);
        const name = "very long name ".repeat(60);
        app.output.folderText = Stage.path("out");
        app.corpus.choose(Stage.url(name));
        idle();
        verify(app.errorMessage.length > 300);
        const message = item("errorMessage");
        const banner = item("errorBanner");
        settle();
        verify(banner.height < 300);
        const pane = message.parent.parent;
        verify(pane.contentHeight >= message.implicitHeight);
        verify(!pane.overflows || message.implicitHeight > pane.height);
    }
    function test_bannerIsAnnounced() {
        scanned(3);
        generateNowhere();
        tryVerify(() => Stage.accessibleNames(window.contentItem).includes("AlertMessage Something went wrong"), limit);
        // The platform announces an alert with its description when it appears.
        compare(item("errorBanner").Accessible.description, "Choose an output folder first.");
    }
}
