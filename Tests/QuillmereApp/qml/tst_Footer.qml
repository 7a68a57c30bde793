import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

WindowCase {
    name: "Footer"

    function test_generate() {
        trained();
        app.output.folderText = Stage.path("out");
        app.output.count = 2;
        mouseClick(item("generate"));
        idle();
        compare(app.generation.results.count, 2);
        verifySeen("2 variations written.");
    }
    function test_generateTrainsFirst() {
        scanned(3);
        app.output.folderText = Stage.path("out");
        app.output.count = 1;
        mouseClick(item("generate"));
        verify(app.model.isTraining);
        idle();
        compare(app.generation.results.count, 1);
    }
    function test_audition() {
        trained();
        mouseClick(item("audition"));
        idle();
        tryVerify(() => isPlayingAudition(), limit);
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
        compare(app.errorMessage, "");
    }
    function test_progressMovesNothing() {
        trained();
        const place = item("generate").mapToItem(null, 0, 0);
        app.output.folderText = Stage.path("out");
        app.output.count = 9999;
        settle();
        const wide = item("generate").mapToItem(null, 0, 0);
        app.generation.generate();
        tryVerify(() => app.generation.done > 0, limit);
        compare(item("generate").mapToItem(null, 0, 0), wide);
        app.cancel();
        idle();
        app.output.count = 100;
        settle();
        compare(item("generate").mapToItem(null, 0, 0), place);
    }
    function test_secondGenerationIsRefusedWithANotice() {
        startGenerating();
        app.generation.generate();
        tryVerify(() => item("newsOfRun").text.length > 0, limit);
        compare(app.errorMessage, "");
        app.cancel();
        idle();
    }
    function test_errorTakesThePlaceOfTheNews() {
        trained();
        verifySeen("Training finished.");
        app.output.folderText = "";
        app.generation.generate();
        verifySeen("Choose an output folder first.");
        verifyNotSeen("Training finished.");
    }
    function test_newsIsAnAlert() {
        trained();
        verifySeen("Training finished.");
        verify(Stage.accessibleNames(window.contentItem).includes("AlertMessage Training finished."));
    }
    function test_longAuditionShowsProgressAndCancel() {
        app.corpus.choose(Stage.makeCorpus("Long", 3, 2));
        idle();
        app.model.train();
        idle();
        app.character.parameters.setValue("stretch", 8);
        app.character.parameters.setValue("phase-iterations", 100000);
        Theme.patience = 0;
        mouseClick(item("audition"));
        while (app.generation.isAuditioning && !sees("Rendering…"))
            wait(0);
        verifySeen("Rendering…");
        mouseClick(item("cancelGeneration"));
        idle();
        verifyNotSeen("Rendering…");
        verify(!isPlayingAudition());
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
