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
        compare(model.qualityIndex, row.index);
        verify(item(row.tag).checked);
    }
    function test_qualityByArrowKeys() {
        focusOn("quality-1");
        keyClick(Qt.Key_Right);
        compare(model.qualityIndex, 2);
        keyClick(Qt.Key_Right);
        compare(model.qualityIndex, 2);
        keyClick(Qt.Key_Left);
        keyClick(Qt.Key_Left);
        compare(model.qualityIndex, 0);
        compare(focusName(), "quality-0");
    }
    function test_analysisByMouse() {
        click("analysis");
        const choice = Stage.findText(window.contentItem, "Tonal (sustained pitch)");
        mouseClick(choice);
        compare(model.analysisLabels[model.analysisIndex], "Tonal (sustained pitch)");
        verifySeen("Tonal (sustained pitch)");
    }
    function test_analysisByKeyboard() {
        focusOn("analysis");
        keyClick(Qt.Key_Down);
        compare(model.analysisIndex, 1);
        keyClick(Qt.Key_Up);
        compare(model.analysisIndex, 0);
    }
    function test_trainAndRetrain() {
        scanned(3);
        click("train");
        idle();
        verify(model.hasModel, model.errorMessage);
        compare(item("train").text, "Retrain");
        click("train");
        verify(model.isTraining);
        idle();
        verify(model.hasModel);
    }
    function test_cancelTakesThePlaceOfTrain() {
        startTraining();
        compare(item("train").text, "Cancel");
        mouseClick(item("train"));
        idle();
        verify(!model.hasModel);
        compare(model.errorMessage, "");
        compare(item("train").text, "Train Model");
    }
    function test_theKeyboardStaysOnTheButton() {
        scanned(12);
        Stage.setTrainingSteps(100000);
        focusOn("train");
        keyClick(Qt.Key_Return);
        verify(model.isTraining);
        compare(focusName(), "train");
        keyClick(Qt.Key_Return);
        idle();
        verify(!model.hasModel);
        compare(focusName(), "train");
    }
    function test_chartGrowsWithTheTraining() {
        startTraining();
        const chart = item("lossChart");
        tryVerify(() => model.lossHistory.count >= 2, limit);
        compare(chart.points, model.lossHistory);
        compare(chart.steps, model.trainingTotalSteps);
        verify(/^Loss .+ at step \d+$/.test(chart.description));
        model.cancelTraining();
        idle();
    }
    function test_damagedModelIsTold() {
        trained();
        Stage.damageModels();
        restartProgram();
        model.setCorpus(Stage.url("Drums"));
        idle();
        verify(model.modelProblem.length > 0);
        verifySeen(model.modelProblem);
        compare(item("train").text, "Train Model");
        verify(item("train").enabled);
    }
}
