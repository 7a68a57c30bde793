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
    function test_auditionCanBeStopped() {
        trained();
        const place = item("generate").mapToItem(null, 0, 0);
        mouseClick(item("audition"));
        tryVerify(() => isPlayingAudition(), limit);
        tryCompare(item("audition"), "text", "Stop", limit);
        compare(item("audition").iconName, "stop.fill");
        compare(item("generate").mapToItem(null, 0, 0), place);
        verify(Stage.accessibleNames(window.contentItem).includes("Button Stop"));
        mouseClick(item("audition"));
        verify(!isPlayingAudition());
        compare(item("audition").text, "Audition");
        mouseClick(item("audition"));
        tryVerify(() => isPlayingAudition(), limit);
        Stage.finishPlaying();
        tryCompare(item("audition"), "text", "Audition", limit);
    }
    function test_stopStaysWhenTheModelIsGone() {
        trained();
        mouseClick(item("audition"));
        tryVerify(() => isPlayingAudition(), limit);
        app.corpus.choose(Stage.makeFolder("Nothing"));
        idle();
        verify(item("audition").enabled);
        mouseClick(item("audition"));
        verify(!isPlayingAudition());
        verify(!item("audition").enabled);
    }

    // ---- Clicks that were meant for what a button did before
    SignalSpy {
        id: runs
        signalName: "isGeneratingChanged"
    }
    function test_doubleClickOnGenerateRunsOnce() {
        trained();
        app.output.folderText = Stage.path("out");
        app.output.count = 1;
        runs.target = app.generation;
        runs.clear();
        Theme.calm = 400;
        const button = item("generate");
        mouseClick(button);
        idle();  // a short run: it is over between the two
        mouseClick(button);
        idle();
        compare(runs.count, 2);
        compare(app.generation.results.count, 1);
        Theme.calm = 50;
        wait(500);
        mouseClick(button);
        idle();
        compare(runs.count, 4);
    }
    function test_cancelTakesNoClickThatCameTooSoon() {
        trained();
        app.output.folderText = Stage.path("out");
        app.output.count = 9999;
        Theme.calm = 400;
        mouseClick(item("generate"));
        mouseClick(item("cancelGeneration"));
        verify(!app.generation.isCancelling);
        wait(500);
        mouseClick(item("cancelGeneration"));
        verify(app.generation.isCancelling);
        idle();
    }
    function test_saysThatVariationsFollowTheLearning() {
        scanned(12);
        app.output.folderText = Stage.path("out");
        app.output.count = 4;
        Stage.setTrainingSteps(100000);
        mouseClick(item("generate"));
        verifySeen("Learning first: 4 variations follow.");
        app.output.count = 1;
        verifySeen("Learning first: 1 variation follows.");
        mouseClick(item("cancelGeneration"));
        idle();
        verify(!has("cancelGeneration"));
        verify(!app.model.isReady);
        compare(app.generation.results.count, 0);
    }
    function test_learningAloneSaysNothingOfVariations() {
        startTraining();
        verify(!has("cancelGeneration"));
        app.cancel();
        idle();
    }
    function test_cancelledRunSaysWhatItHasWritten() {
        startGenerating();
        mouseClick(item("cancelGeneration"));
        idle();
        const written = app.generation.results.count;
        verify(written > 0);
        verifySeen("Cancelled: " + written + " of 9999 variations written.");
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
