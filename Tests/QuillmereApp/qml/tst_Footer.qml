import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

WindowCase {
    name: "Footer"

    function test_generate() {
        trained();
        model.outputText = Stage.path("out");
        model.count = 2;
        mouseClick(item("generate"));
        idle();
        compare(model.results.count, 2);
        verifySeen("2 variations written.");
    }
    function test_generateTrainsFirst() {
        scanned(3);
        model.outputText = Stage.path("out");
        model.count = 1;
        mouseClick(item("generate"));
        verify(model.isTraining);
        idle();
        compare(model.results.count, 1);
    }
    function test_audition() {
        trained();
        mouseClick(item("audition"));
        idle();
        tryVerify(() => model.isPlayingAudition, limit);
    }
    function test_auditionNeedsAModel() {
        scanned(3);
        verify(!item("audition").enabled);
    }
    function test_cancelButton() {
        startGenerating();
        verify(!item("generate").enabled);
        mouseClick(item("cancelGeneration"));
        idle();
        verify(!has("cancelGeneration"));
        compare(model.errorMessage, "");
    }
    function test_progressMovesNothing() {
        trained();
        const place = item("generate").mapToItem(null, 0, 0);
        model.outputText = Stage.path("out");
        model.count = 9999;
        settle();
        const wide = item("generate").mapToItem(null, 0, 0);
        model.generate();
        tryVerify(() => model.generationDone > 0, limit);
        compare(item("generate").mapToItem(null, 0, 0), wide);
        model.cancel();
        idle();
        model.count = 100;
        settle();
        compare(item("generate").mapToItem(null, 0, 0), place);
    }
    function test_secondGenerationIsRefusedWithANotice() {
        startGenerating();
        model.generate();
        tryVerify(() => item("newsOfRun").text.length > 0, limit);
        compare(model.errorMessage, "");
        model.cancel();
        idle();
    }
    function test_errorTakesThePlaceOfTheNews() {
        trained();
        verifySeen("Training finished.");
        model.outputText = "";
        model.generate();
        verifySeen("Choose an output folder first.");
        verifyNotSeen("Training finished.");
    }
    function test_newsIsAnAlert() {
        trained();
        verifySeen("Training finished.");
        verify(Stage.accessibleNames(window.contentItem).includes("AlertMessage Training finished."));
    }
    function test_longAuditionShowsProgressAndCancel() {
        model.setCorpus(Stage.makeCorpus("Long", 3, 2));
        idle();
        model.train();
        idle();
        model.parameters.setValue("stretch", 8);
        model.parameters.setValue("phase-iterations", 100000);
        Theme.patience = 0;
        mouseClick(item("audition"));
        while (model.isAuditioning && !sees("Rendering…"))
            wait(0);
        verifySeen("Rendering…");
        mouseClick(item("cancelGeneration"));
        idle();
        verifyNotSeen("Rendering…");
        verify(!model.isPlayingAudition);
    }
    function test_appearance_data() {
        return [{
                "tag": "Light",
                "dark": false
            }, {
                "tag": "Dark",
                "dark": true
            }];
    }
    function test_appearance(row) {
        click("appearance");
        mouseClick(Stage.findText(window.contentItem, row.tag));
        tryCompare(Theme, "dark", row.dark, limit);
        compare(window.color, Theme.window);
    }
}
