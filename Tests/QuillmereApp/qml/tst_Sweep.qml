import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// Sliders that can be heard.
WindowCase {
    name: "Sweep"

    function playing(): string {
        return String(app.playback.playingURL);
    }
    // The seven sounds along a slider, by the keyboard.
    function swept(parameter) {
        trained();
        app.character.seedText = "7";
        focusOn("slider-" + parameter);
        keyClick(Qt.Key_R);
        tryVerify(() => has("sweep-6"), limit);
        idle();
    }

    function test_sevenTilesAlongTheSlider() {
        swept("pitch");
        verifySeen("Return takes the value");
        compare(app.sweep.tiles.length, 7);
        for (let place = 0; place < 7; ++place)
            verifySeen(app.sweep.tiles[place].text);
        verify(item("sweep-3").content.isCurrent);
    }
    function test_keysPlayAndTake() {
        swept("pitch");
        keyClick(Qt.Key_Right);
        tryVerify(() => playing() === String(app.sweep.tiles[4].name), limit);
        keyClick(Qt.Key_End);
        tryVerify(() => playing() === String(app.sweep.tiles[6].name), limit);
        keyClick(Qt.Key_Space);
        tryVerify(() => playing() === "", limit);
        keyClick(Qt.Key_Return);
        tryVerify(() => !has("sweep-0"), limit);
        compare(app.character.parameters.get("pitch", "value"), app.character.parameters.get("pitch", "upper"));
        tryVerify(() => focusName() === "slider-pitch", limit);
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        compare(app.character.parameters.get("pitch", "value"), 0);
    }
    function test_clicksPlayAndTake() {
        swept("pitch");
        const tile = item("sweep-1");
        mouseClick(tile, tile.width / 2, 10);
        tryVerify(() => playing() === String(app.sweep.tiles[1].name), limit);
        mouseClick(item("takeSweep-1"));
        tryVerify(() => !has("sweep-0"), limit);
        verify(app.character.parameters.get("pitch", "value") < 0);
        compare(playing(), "");
    }
    function test_escapeLeavesEverythingAsItIs() {
        swept("pitch");
        keyClick(Qt.Key_Escape);
        tryVerify(() => !has("sweep-0"), limit);
        verify(!app.sweep.isOpen);
        compare(app.character.parameters.get("pitch", "value"), 0);
    }
    function test_theSliderUnderThePointer() {
        trained();
        focusOn("slider-pitch");
        hover(item("slider-drift"));
        keyClick(Qt.Key_R);
        tryCompare(app.sweep, "parameterId", "drift", limit);
        idle();
        keyClick(Qt.Key_Escape);
        tryVerify(() => !has("sweep-0"), limit);
        hover(item("slider-drift"));
        focusOn("slider-tilt");  // newer than the pointer
        keyClick(Qt.Key_R);
        tryCompare(app.sweep, "parameterId", "tilt", limit);
        idle();
    }
    function test_withoutAModelItIsSaid() {
        focusOn("slider-pitch");
        keyClick(Qt.Key_R);
        verifySeen("There is no model to audition yet. Train one first, or press Generate.");
        verify(!has("sweep-0"));
    }
    function test_aTextFieldKeepsTheLetter() {
        trained();
        type("value-pitch", "r");
        verify(!app.sweep.isOpen);
    }
    function test_fitsIntoEveryWindow_data() {
        return [[480, 360], [800, 600], [1180, 820], [3840, 2160]].map(size => ({
                        "tag": size.join("x"),
                        "size": size
                    }));
    }
    function test_fitsIntoEveryWindow(row) {
        Stage.switchAccessibilityOn();
        swept("pitch");
        resize(row.size[0], row.size[1]);
        compare(Stage.itemsOutside(window.contentItem), []);
        compare(Stage.clippedTexts(window.contentItem), []);
        compare(Stage.namelessControls(window.contentItem), []);
    }

    // ---- The state before
    function test_aHeldKeyShowsTheStateBefore() {
        trained();
        focusOn("slider-pitch");
        keyClick(Qt.Key_Right);
        const changed = app.character.parameters.get("pitch", "value");
        verify(changed > 0);
        keyPress(Qt.Key_B);
        compare(app.character.parameters.get("pitch", "value"), 0);
        verifySeen("Before");
        tryVerify(() => isPlayingAudition(), limit);
        keyRelease(Qt.Key_B);
        compare(app.character.parameters.get("pitch", "value"), changed);
        verifyNotSeen("Before");
        idle();
    }
    function test_aTextFieldKeepsThisLetterToo() {
        focusOn("slider-pitch");
        keyClick(Qt.Key_Right);
        focusOn("outputPath");
        keyPress(Qt.Key_B);
        verify(!app.character.isComparing);
        keyRelease(Qt.Key_B);
    }
}
