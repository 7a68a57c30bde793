import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

WindowCase {
    id: testCase
    name: "Corpus"

    SignalSpy {
        id: chooser
        target: testCase.app?.corpus ?? null
        signalName: "chooserRequested"
    }

    function test_buttonAsksForAFolder() {
        chooser.clear();
        click("chooseCorpus");
        tryCompare(chooser, "count", 1, limit);
    }
    function test_firstUseHasOneFilledButton() {
        verify(item("chooseCorpus").prominent);
        verify(!item("generate").prominent);
        verify(!item("generate").enabled);
        verify(!item("audition").enabled);
        verify(!item("train").enabled);
        scanned(3);
        verify(!item("chooseCorpus").prominent);
        verify(item("generate").prominent);
    }
    function test_changeIsRefusedWhileLearning() {
        startTraining();
        verify(!item("chooseCorpus").enabled);
        app.model.cancelTraining();
        idle();
        verify(item("chooseCorpus").enabled);
    }
    function test_scanCanBeCancelled() {
        Stage.holdScans();
        app.corpus.choose(Stage.makeCorpus("Many", 30));
        verify(app.corpus.isScanning);
        mouseClick(item("cancelScan"));
        Stage.letScansGo();
        idle();
        verify(!app.corpus.hasSummary);
        verify(!has("cancelScan"));
    }
    function test_recentFoldersCanBeChosenAndForgotten() {
        verify(!has("recentCorpora"));
        const first = Stage.makeCorpus("First");
        app.corpus.choose(first);
        idle();
        app.corpus.choose(Stage.makeCorpus("Second"));
        idle();
        click("recentCorpora");
        tryVerify(() => Stage.texts(window.contentItem).some(text => text.endsWith("First")), limit);
        const entry = Stage.findText(window.contentItem, "/First");
        mouseClick(entry);
        tryCompare(app.corpus, "name", "First", limit);
        idle();
        click("recentCorpora");
        verifySeen("Forget These Folders");
        mouseClick(Stage.findText(window.contentItem, "Forget These Folders"));
        tryVerify(() => !has("recentCorpora"), limit);
    }
    function test_droppedFolderBecomesTheCorpus() {
        const folder = Stage.makeCorpus("Dropped");
        Stage.drop(item("corpusCard"), [folder]);
        tryCompare(app.corpus, "url", folder, limit);
        idle();
        verifySeen("Dropped");
    }
    function test_cardShowsThatAFolderIsWelcome() {
        const card = item("corpusCard");
        const folder = Stage.makeCorpus("Dragged");
        Stage.dragOver(card, [folder]);
        tryVerify(() => card.targeted, limit);
        verify(card.highlighted);
        Stage.dragLeave(card);
        tryVerify(() => !card.targeted, limit);
        verify(!app.corpus.isChosen);
    }
    function test_droppedFolderBecomesTheCorpusAnywhere_data() {
        return ["corpusCard", "train", "slider-pitch", "seed", "generate"].map(name => ({
                        "tag": name
                    }));
    }
    function test_droppedFolderBecomesTheCorpusAnywhere(row) {
        const folder = Stage.makeCorpus("Dropped");
        Stage.dragOver(item(row.tag), [folder]);
        tryVerify(() => item("corpusCard").targeted, limit);
        Stage.drop(item(row.tag), [folder]);
        tryCompare(app.corpus, "url", folder, limit);
        idle();
    }
    function test_otherDropsAreToldOf() {
        Stage.makeFile("file.wav");
        Stage.drop(item("corpusCard"), [Stage.url("file.wav")]);
        verifySeen("This is a file, not a folder. Drop the folder that holds it.");
        verify(!item("corpusCard").targeted);
        Stage.drop(item("seed"), [Stage.makeFolder("One"), Stage.makeFolder("Other")]);
        verifySeen("Drop one folder: the one that holds the samples.");
        verify(!app.corpus.isChosen);
        verify(!has("errorBanner"));
    }
    function test_dropsHaveToWaitForATraining() {
        startTraining();
        Stage.drop(item("corpusCard"), [Stage.makeCorpus("Other")]);
        verifySeen("Wait until the present run has ended, or cancel it.");
        verify(!item("corpusCard").targeted);
        app.model.cancelTraining();
        idle();
    }
    function test_scanAgainAfterACancelledScan() {
        Stage.holdScans();
        app.corpus.choose(Stage.makeCorpus("Many", 30));
        verify(!has("scanAgain"));
        mouseClick(item("cancelScan"));
        Stage.letScansGo();
        idle();
        verifySeen("This folder has not been scanned.");
        click("scanAgain");
        idle();
        compare(app.corpus.fileCount, 30);
        verify(!has("scanAgain"));
        verifyNotSeen("This folder has not been scanned.");
    }
    function test_variationsInTheCorpusAreToldOf() {
        generated(2);
        verify(!seesMatch(/made here/));
        Stage.makeCorpus("out", 3);
        app.corpus.choose(Stage.url("out"));
        idle();
        verifySeen("2 files are named like variations made here. They are learned like the others.");
    }
    function test_unreadableFilesAreTold() {
        Stage.makeCorpus("Mixed", 12);
        Stage.makeFile("Mixed/broken.wav");
        app.corpus.choose(Stage.url("Mixed"));
        idle();
        compare(app.corpus.unreadable, 1);
        verifySeen("1 file could not be read and is left out.");
    }
}
