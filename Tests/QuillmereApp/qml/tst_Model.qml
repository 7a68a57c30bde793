import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

WindowCase {
    name: "Model"

    function test_qualityOfTheModelStandsBesideItsDate() {
        trained();
        verify(seesMatch(/ s per sample · trained .* · 2 steps$/));
    }
    function test_qualityByMouse_data() {
        return [0, 1, 2].map(index => ({
                        "tag": "quality-" + index,
                        "index": index
                    }));
    }
    function test_qualityByMouse(row) {
        mouseClick(item(row.tag));
        compare(app.model.qualityIndex, row.index);
        verify(item(row.tag).checked);
    }
    function test_qualityByArrowKeys() {
        focusOn("quality-1");
        keyClick(Qt.Key_Right);
        compare(app.model.qualityIndex, 2);
        keyClick(Qt.Key_Right);
        compare(app.model.qualityIndex, 2);
        keyClick(Qt.Key_Left);
        keyClick(Qt.Key_Left);
        compare(app.model.qualityIndex, 0);
        compare(focusName(), "quality-0");
    }
    function test_analysisByMouse() {
        click("analysis");
        const choice = Stage.findText(window.contentItem, "Tonal (sustained pitch)");
        mouseClick(choice);
        compare(app.model.analysisLabels[app.model.analysisIndex], "Tonal (sustained pitch)");
        verifySeen("Tonal (sustained pitch)");
    }
    function test_analysisByKeyboard() {
        focusOn("analysis");
        keyClick(Qt.Key_Down);
        compare(app.model.analysisIndex, 1);
        keyClick(Qt.Key_Up);
        compare(app.model.analysisIndex, 0);
    }
    function test_start() {
        compare(app.model.startIndex, 0);
        focusOn("start");
        keyClick(Qt.Key_Down);
        compare(app.model.startIndex, 1);
        verifySeen("Head start");
        scanned(3);
        verify(item("audition").enabled);
        focusOn("start");
        keyClick(Qt.Key_Up);
        verify(!item("audition").enabled);
    }
    function test_keepsSounds() {
        scanned(3);
        verifySeen("Store the sounds, too (up to 0.1 MB)");
        click("keepsSounds");
        verify(app.model.keepsSounds);
        verify(item("keepsSounds").checked);
        focusOn("keepsSounds");
        keyClick(Qt.Key_Return);
        verify(!app.model.keepsSounds);
        keyClick(Qt.Key_Space);  // plays, here as anywhere
        verify(!app.model.keepsSounds);
        keyClick(Qt.Key_Return);
        verify(app.model.keepsSounds);
        app.model.keepsSounds = false;
        verify(!item("keepsSounds").checked);
    }
    function test_trainAndRetrain() {
        scanned(3);
        click("train");
        idle();
        verify(app.model.isReady, app.errorMessage);
        compare(item("train").text, "Retrain");
        click("train");
        verify(app.model.isTraining);
        idle();
        verify(app.model.isReady);
    }
    function test_cancelTakesThePlaceOfTrain() {
        startTraining();
        compare(item("train").text, "Cancel");
        mouseClick(item("train"));
        idle();
        verify(!app.model.isReady);
        compare(app.errorMessage, "");
        compare(item("train").text, "Train Model");
    }
    function test_theKeyboardStaysOnTheButton() {
        scanned(12);
        Stage.setTrainingSteps(100000);
        focusOn("train");
        keyClick(Qt.Key_Return);
        verify(app.model.isTraining);
        compare(focusName(), "train");
        keyClick(Qt.Key_Return);
        idle();
        verify(!app.model.isReady);
        compare(focusName(), "train");
    }
    function test_doubleClickOnTrainDoesNotCancel() {
        scanned(12);
        Stage.setTrainingSteps(100000);
        Theme.calm = 400;
        const button = item("train");
        const place = button.mapToItem(window.contentItem, button.width / 2, button.height / 2);
        mouseClick(window.contentItem, place.x, place.y);
        verify(app.model.isTraining);
        mouseClick(window.contentItem, place.x, place.y);
        mouseClick(item("train"));
        wait(20);
        verify(app.model.isTraining && !app.model.isCancelling);
        wait(500);
        mouseClick(item("train"));
        verify(app.model.isCancelling);
        idle();
    }
    function test_cancelIsNowhereUnderThePointerThatPressedTrain_data() {
        return [{
                "tag": "wide",
                "size": Qt.size(1180, 820)
            }, {
                "tag": "narrow",
                "size": Qt.size(640, 480)
            }, {
                "tag": "tall",
                "size": Qt.size(700, 1300)
            }];
    }
    function test_cancelIsNowhereUnderThePointerThatPressedTrain(row) {
        for (const files of [3, 12]) {
            resize(row.size.width, row.size.height);
            scanned(files);
            Stage.setTrainingSteps(100000);
            focusOn("train");
            const before = item("train").mapToItem(null, 0, 0);
            const height = item("train").height;
            click("train");
            compare(item("train").text, "Cancel");
            settle();
            const after = item("train").mapToItem(null, 0, 0);
            verify(after.y + item("train").height <= before.y || after.y >= before.y + height, before + " and " + after);
            app.cancel();
            idle();
            close();
            Stage.restart();
            open();
        }
    }
    function test_stopHereKeepsWhatWasLearned() {
        startTraining();
        mouseClick(item("stopHere"));
        idle();
        verify(app.model.isReady);
        verify(seesMatch(/ · \d+ of 100000 steps$/));
        verify(!has("stopHere"));
    }
    function test_stopHereByKeyboard() {
        startTraining();
        focusOn("stopHere");
        keyClick(Qt.Key_Return);
        idle();
        verify(app.model.isReady);
    }
    function test_stopHereIsNotThereBeforeTheFirstStep() {
        Stage.holdTrainings();
        scanned(3);
        app.model.train();
        verify(!has("stopHere"));
        Stage.letTrainingsGo();
        idle();
    }
    function test_listeningWhileItLearns() {
        close();
        Stage.listenOften();
        restartProgram();
        startTraining();
        tryVerify(() => app.model.sound.isThere, limit);
        const play = item("playLearning");
        tryVerify(() => play.enabled, limit);
        mouseClick(play);
        tryCompare(app.playback, "playingURL", app.model.sound.url, limit);
        compare(play.text, "Stop");
        mouseClick(play);
        compare(String(app.playback.playingURL), "");
        focusOn("playLearning");
        keyClick(Qt.Key_Return);
        tryCompare(app.playback, "playingURL", app.model.sound.url, limit);
        app.model.stopHere();
        idle();
        compare(String(app.playback.playingURL), "");
    }
    function test_aModelThatIsNotStored() {
        scanned(3);
        Stage.blockModels();
        app.model.train();
        idle();
        verify(app.model.isReady);
        verifySeen("This model is not stored yet. You can use it, but it is lost when the program ends.");
        verify(item("generate").enabled);
        window.close();
        verifySeen("Close without storing?");
        Stage.unblockModels();
        mouseClick(item("keepLearning"));
        tryVerify(() => !app.model.isUnstored, limit);
        verifyNotSeen("Close without storing?");
        verify(!has("storeAgain"));
        compare(app.errorMessage, "");
    }
    function test_storingAgain() {
        scanned(3);
        Stage.blockModels();
        app.model.train();
        idle();
        Stage.unblockModels();
        click("storeAgain");
        tryVerify(() => !has("storeAgain"), limit);
        verifySeen("The model is stored.");
    }
    function test_openingTakesTimeAndCanBeCancelled() {
        trained();
        Theme.patience = 0;
        Stage.holdModels();
        app.corpus.choose(Stage.url("Drums"));
        tryVerify(() => app.model.isLoading, limit);
        verifySeen("Opening the model…");
        mouseClick(item("cancelLoading"));
        verify(!app.model.isLoading);
        verifySeen(app.model.problem);
        verifyNotSeen("Opening the model…");
        compare(item("train").text, "Retrain");
        Stage.letModelsGo();
        mouseClick(item("openAgain"));
        idle();
        verify(app.model.isReady);
        verify(!has("openAgain"));
    }
    function test_escapeCancelsTheOpening() {
        trained();
        Stage.holdModels();
        app.corpus.choose(Stage.url("Drums"));
        tryVerify(() => app.model.isLoading, limit);
        keyClick(Qt.Key_Escape);
        verify(!app.model.isLoading);
        verify(app.model.isUnopened);
        Stage.letModelsGo();
    }
    function test_chartGrowsWithTheTraining() {
        startTraining();
        const chart = item("lossChart");
        tryVerify(() => app.model.lossHistory.count >= 2, limit);
        compare(chart.points, app.model.lossHistory);
        compare(chart.steps, app.model.totalSteps);
        verify(/^Loss .+ at step \d+$/.test(chart.description));
        app.model.cancelTraining();
        idle();
    }
    function test_damagedModelIsTold() {
        trained();
        Stage.damageModels();
        restartProgram();
        app.corpus.choose(Stage.url("Drums"));
        idle();
        verify(app.model.problem.length > 0);
        verifySeen(app.model.problem);
        verify(!has("openAgain"));
        compare(item("train").text, "Retrain");
        verify(item("train").enabled);
    }
}
