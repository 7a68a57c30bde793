import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

WindowCase {
    name: "Model"

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
        compare(item("train").text, "Train Model");
        verify(item("train").enabled);
    }
}
