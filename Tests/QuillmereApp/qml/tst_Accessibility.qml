import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// What assistive technology is told.
WindowCase {
    name: "Accessibility"

    function init() {
        failOnWarning(/.?/);
        Theme.calm = 0;
        Stage.restart();
        open();
        Stage.switchAccessibilityOn();
    }
    function verifyAllNamed() {
        settle();
        compare(Stage.namelessControls(window.contentItem), []);
    }

    function test_everyControlHasNameAndRole() {
        verifyAllNamed();
    }
    function test_withAModelAndResults() {
        generated(2);
        verifyAllNamed();
    }
    function test_whileLearning() {
        startTraining();
        verifyAllNamed();
        app.model.cancelTraining();
        idle();
    }
    function test_withAnErrorAndADialog() {
        scanned(3);
        generateNowhere();
        click("savePreset");
        tryVerify(() => has("presetName"), limit);
        verifyAllNamed();
    }
    function test_inASmallWindow() {
        resize(640, 480);
        verifyAllNamed();
    }

    function test_tree_data() {
        return ["Button Choose Folder…", "RadioButton Standard", "Button Device: Processor", "ComboBox Analysis", "Button Train Model", "EditableText Output folder", "Button Choose the output folder", "SpinBox Variations", "ComboBox Format", "RadioButton Balanced", "Button Save as preset", "Slider Drift", "EditableText Drift value", "CheckBox Lock Drift", "EditableText Seed", "Button Randomise", "Slider Amount of Randomise", "Button Audition", "Button Generate 10 Variations", "StaticText Choose the folder of audio samples to learn from", "Heading Spectral shaping", "Grouping Sample corpus"].map(name => ({
                        "tag": name
                    }));
    }
    function test_tree(row) {
        settle();
        const told = Stage.accessibleNames(window.contentItem);
        verify(told.includes(row.tag));
    }
    function test_treeOfResults() {
        generated(1);
        const told = Stage.accessibleNames(window.contentItem);
        verify(told.includes("List Results"));
        verify(told.some(name => name.startsWith("ListItem ")));
        verify(told.some(name => name.startsWith("Button Play ")));
    }
    function test_treeOfALesson() {
        startTraining();
        const told = Stage.accessibleNames(window.contentItem);
        verify(told.includes("Chart Loss by step"));
        verify(told.includes("ProgressBar Training"));
        app.model.cancelTraining();
        idle();
    }
    function test_pressByAssistiveTechnology() {
        scanned(3);
        Stage.doAccessibleAction(item("train"), "Press");
        tryVerify(() => app.model.isReady, limit);
        idle();
    }
}
