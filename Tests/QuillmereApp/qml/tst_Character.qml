import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

WindowCase {
    name: "Character"

    function value(id: string): real {
        return app.character.parameters.get(id, "value");
    }
    function parameterRows() {
        return parameterIds.map(id => ({
                        "tag": id
                    }));
    }

    // ---- Every row, with mouse and keyboard
    function test_dragMovesTheValueInOneUndoStep_data() {
        return parameterRows();
    }
    function test_dragMovesTheValueInOneUndoStep(row) {
        const before = value(row.tag);
        const slider = item("slider-" + row.tag);
        slider.forceActiveFocus();
        settle();
        const from = slider.xOf(slider.position);
        const way = slider.position > 0.5 ? -1 : 1;
        const y = slider.height / 2;
        mousePress(slider, from, y);
        for (let moved = 4; moved <= 32; moved += 4)
            mouseMove(slider, from + way * moved, y);
        mouseRelease(slider, from + way * 32, y);
        verify(way * (value(row.tag) - before) > 0);
        const place = app.character.parameters.get(row.tag, "position");
        fuzzyCompare(slider.xOf(place), from + way * 32, 8);
        app.character.undo();
        compare(value(row.tag), before);
        verify(!app.character.canUndo);
    }
    function test_keyboardMovesByOneStep_data() {
        return parameterRows();
    }
    function test_keyboardMovesByOneStep(row) {
        const step = app.character.parameters.get(row.tag, "step");
        const lower = app.character.parameters.get(row.tag, "lower");
        const upper = app.character.parameters.get(row.tag, "upper");
        focusOn("slider-" + row.tag);
        keyClick(Qt.Key_Home);
        fuzzyCompare(value(row.tag), lower, 1e-9);
        keyClick(Qt.Key_Right);
        fuzzyCompare(value(row.tag), lower + step, 1e-9);
        keyClick(Qt.Key_Right);
        fuzzyCompare(value(row.tag), lower + 2 * step, 1e-9);
        keyClick(Qt.Key_Left);
        keyClick(Qt.Key_Left);
        keyClick(Qt.Key_Left);
        fuzzyCompare(value(row.tag), lower, 1e-9);
        keyClick(Qt.Key_PageUp);
        fuzzyCompare(value(row.tag), Math.min(upper, lower + 10 * step), 1e-9);
        keyClick(Qt.Key_PageDown);
        fuzzyCompare(value(row.tag), lower, 1e-9);
        keyClick(Qt.Key_End);
        fuzzyCompare(value(row.tag), upper, 1e-9);
    }
    // All rows are one stop of Tab; the other keys do the rest.
    function test_arrowsGoFromRowToRow() {
        focusOn("slider-" + parameterIds[0]);
        keyClick(Qt.Key_Up);
        compare(focusName(), "slider-" + parameterIds[0]);
        for (const id of parameterIds.slice(1)) {
            keyClick(Qt.Key_Down);
            compare(focusName(), "slider-" + id);
        }
        keyClick(Qt.Key_Down);
        compare(focusName(), "slider-" + parameterIds[parameterIds.length - 1]);
        keyClick(Qt.Key_Up);
        compare(focusName(), "slider-" + parameterIds[parameterIds.length - 2]);
        verify(!app.character.canUndo);
    }
    function test_tabComesBackToTheRowItLeft() {
        focusOn("slider-drive");
        keyClick(Qt.Key_Tab);
        compare(focusName(), "randomise");
        keyClick(Qt.Key_Tab, Qt.ShiftModifier);
        compare(focusName(), "slider-drive");
    }
    function test_returnGoesToTheValueAndBack() {
        focusOn("slider-pitch");
        keyClick(Qt.Key_Return);
        compare(focusName(), "value-pitch");
        keyClick("3");
        keyClick(Qt.Key_Return);
        tryVerify(() => focusName() === "slider-pitch", limit);
        compare(value("pitch"), 3);
    }
    function test_keysLockAndReset() {
        focusOn("slider-pitch");
        keyClick(Qt.Key_L);
        verify(app.character.parameters.get("pitch", "locked"));
        keyClick(Qt.Key_L);
        verify(!app.character.parameters.get("pitch", "locked"));
        keyClick(Qt.Key_Right);
        keyClick(Qt.Key_Delete);
        verify(app.character.parameters.get("pitch", "isDefault"));
    }
    function test_arrowsGoFromPresetToPreset() {
        focusOn("preset-Faithful");
        keyClick(Qt.Key_Right);
        compare(focusName(), "preset-Balanced");
        keyClick(Qt.Key_Left);
        keyClick(Qt.Key_Left);
        compare(focusName(), "preset-Faithful");
        compare(app.character.presetName, "Balanced");
        keyClick(Qt.Key_Return);
        compare(app.character.presetName, "Faithful");
    }
    function test_doubleClickResets_data() {
        return parameterRows();
    }
    function test_doubleClickResets(row) {
        const slider = item("slider-" + row.tag);
        slider.forceActiveFocus();
        settle();
        const before = value(row.tag);
        keyClick(Qt.Key_Home);
        keyClick(Qt.Key_PageUp);
        mouseDoubleClickSequence(slider, slider.width * 0.8, slider.height / 2);
        compare(value(row.tag), before);
        verify(app.character.parameters.get(row.tag, "isDefault"));
    }
    function test_resetButton_data() {
        return parameterRows();
    }
    function test_resetButton(row) {
        const before = value(row.tag);
        verify(!has("reset-" + row.tag));
        focusOn("slider-" + row.tag);
        keyClick(Qt.Key_Home);
        if (value(row.tag) === before)
            keyClick(Qt.Key_End);
        const field = item("value-" + row.tag);
        const right = field.x + field.width;
        mouseClick(item("reset-" + row.tag));
        compare(value(row.tag), before);
        tryVerify(() => !has("reset-" + row.tag), limit);
        compare(field.x + field.width, right);
    }
    function test_typedWithAndWithoutUnit_data() {
        return parameterRows();
    }
    function test_typedWithAndWithoutUnit(row) {
        const lower = app.character.parameters.get(row.tag, "lower");
        const upper = app.character.parameters.get(row.tag, "upper");
        const unit = app.character.parameters.get(row.tag, "unit");
        type("value-" + row.tag, String(lower));
        keyClick(Qt.Key_Return);
        fuzzyCompare(value(row.tag), lower, 1e-9);
        compare(item("value-" + row.tag).text, app.character.parameters.get(row.tag, "text"));
        if (unit === "×" || unit.length === 0)
            return;  // no key has that sign
        type("value-" + row.tag, upper + " " + unit);
        keyClick(Qt.Key_Return);
        fuzzyCompare(value(row.tag), upper, 1e-9);
    }
    function test_lockKeepsTheValueWhenRandomising_data() {
        return parameterRows();
    }
    function test_lockKeepsTheValueWhenRandomising(row) {
        const before = value(row.tag);
        focusOn("lock-" + row.tag);
        mouseClick(item("lock-" + row.tag));
        verify(app.character.parameters.get(row.tag, "locked"));
        click("randomise");
        compare(value(row.tag), before);
        verify(app.character.canUndo);
        focusOn("lock-" + row.tag);
        keyClick(Qt.Key_Return);
        verify(!app.character.parameters.get(row.tag, "locked"));
    }

    // ---- Rows in general
    function test_nonsenseTypedIsForgotten() {
        type("value-pitch", "high");
        keyClick(Qt.Key_Return);
        compare(value("pitch"), 0);
        compare(item("value-pitch").text, "0.0 st");
    }
    function test_escapeForgetsTheTyping() {
        type("value-pitch", "12");
        keyClick(Qt.Key_Escape);
        compare(item("value-pitch").text, "0.0 st");
        focusOn("slider-pitch");
        compare(value("pitch"), 0);
    }
    function test_leavingTheFieldTakesTheTyping() {
        type("value-pitch", "12");
        keyClick(Qt.Key_Tab);
        compare(value("pitch"), 12);
        compare(item("value-pitch").text, "12.0 st");
    }
    function test_arrowsInTheFieldStep() {
        focusOn("value-decay");
        keyClick(Qt.Key_Up);
        keyClick(Qt.Key_Up);
        keyClick(Qt.Key_Down);
        compare(value("decay"), 5);
    }
    function test_undoInAFieldWithoutTyping() {
        app.character.parameters.setValue("pitch", 5);
        focusOn("value-pitch");
        keyClick(Qt.Key_Z, Qt.ControlModifier);
        compare(value("pitch"), 0);
        keyClick(Qt.Key_Z, Qt.ControlModifier | Qt.ShiftModifier);
        compare(value("pitch"), 5);
    }
    function test_logarithmicSlidersAreSo() {
        // 0.1 ... 8: the middle of the way is the geometric mean.
        const slider = item("slider-stretch");
        mouseClick(slider, slider.xOf(0.25), slider.height / 2);
        verify(value("stretch") < 0.5);
        const linear = item("slider-drift");
        mouseClick(linear, linear.xOf(0.25), linear.height / 2);
        fuzzyCompare(value("drift"), 1, 0.11);
    }
    function test_pressOnTheHandleMovesNothing() {
        const slider = item("slider-pitch");
        mouseClick(slider, slider.xOf(slider.position) + 4, slider.height / 2);
        compare(value("pitch"), 0);
        verify(!app.character.canUndo);
    }
    function test_helpKeepsAwayFromWhoDrags() {
        const help = app.character.parameters.get("pitch", "help");
        const slider = item("slider-pitch");
        hover(slider);
        verifySeen(help);
        mousePress(slider, slider.width / 2, slider.height / 2);
        mouseMove(slider, slider.width / 2 + 20, slider.height / 2);
        mouseRelease(slider, slider.width / 2 + 20, slider.height / 2);
        verifyNotSeen(help);
        mouseMove(slider, slider.width / 2, slider.height / 2);
        settle();
        verifyNotSeen(help);
        hover(item("slider-drift"));
        hover(slider);
        verifySeen(help);
    }
    function test_pressOnTheTrackGoesThere() {
        const slider = item("slider-pitch");
        mouseClick(slider, slider.xOf(0.75), slider.height / 2);
        fuzzyCompare(value("pitch"), 18, 1.5);
        compare(focusName(), "slider-pitch");
    }
    function test_valuesMoveNothing() {
        const field = item("value-normalize");
        const place = [field.x, field.width, item("slider-normalize").width];
        for (const wanted of [-24, -1, 0, -10.5]) {
            app.character.parameters.setValue("normalize", wanted);
            settle();
            compare([field.x, field.width, item("slider-normalize").width], place);
        }
    }
    function test_everyValueFitsItsField() {
        for (const id of parameterIds) {
            const field = item("value-" + id);
            for (const end of ["lower", "upper"]) {
                app.character.parameters.setValue(id, app.character.parameters.get(id, end));
                verify(field.contentWidth <= field.width - field.leftPadding - field.rightPadding, id + ": " + field.text);
            }
        }
    }
    function test_assistiveTechnologyMovesASlider() {
        const slider = item("slider-drift");
        compare(slider.value, 0.4);
        compare(slider.minimumValue, 0);
        compare(slider.maximumValue, 4);
        Stage.setAccessibleValue(slider, 2);
        compare(value("drift"), 2);
        Stage.setAccessibleValue(slider, 99);
        compare(value("drift"), 4);
        compare(slider.value, 4);
        Stage.doAccessibleAction(slider, "Decrease");
        fuzzyCompare(value("drift"), 3.95, 1e-9);
        app.character.undo();
        compare(slider.value, 4);
    }

    // ---- Undo and redo
    function test_undoAndRedoButtons() {
        verify(!item("undo").enabled);
        app.character.parameters.setValue("pitch", 3);
        click("undo");
        compare(value("pitch"), 0);
        click("redo");
        compare(value("pitch"), 3);
        verify(!item("redo").enabled);
    }

    // ---- Presets
    function test_presetChip_data() {
        return ["Faithful", "Explore", "Wild", "Extreme", "Lo-fi", "Ghostly", "Robotic"].map(name => ({
                        "tag": name
                    }));
    }
    function test_presetChip(row) {
        click("preset-" + row.tag);
        compare(app.character.presetName, row.tag);
        verify(item("preset-" + row.tag).isCurrent);
        verify(!item("preset-Balanced").isCurrent);
        app.character.undo();
        compare(app.character.presetName, "Balanced");
    }
    function test_presetByKeyboard() {
        focusOn("preset-Wild");
        keyClick(Qt.Key_Enter);
        compare(app.character.presetName, "Wild");
        focusOn("preset-Ghostly");
        keyClick(Qt.Key_Return);
        compare(app.character.presetName, "Ghostly");
    }
    function test_departureMarksThePreset() {
        const chip = item("preset-Balanced");
        verify(!chip.isEdited);
        const width = chip.width;
        app.character.parameters.setValue("pitch", 3);
        verify(chip.isEdited);
        verifySeen("Balanced, edited");
        compare(chip.width, width);
        app.character.parameters.setValue("pitch", 0);
        verify(!chip.isEdited);
        verifyNotSeen("Balanced, edited");
    }
    function test_ownPresetIsSavedAppliedAndDeleted() {
        app.character.parameters.setValue("pitch", 7);
        click("savePreset");
        tryVerify(() => has("presetName"), limit);
        tryVerify(() => focusName() === "presetName", limit);
        verify(!item("confirmPreset").enabled);
        for (const letter of "Glassy")
            keyClick(letter);
        keyClick(Qt.Key_Return);
        tryVerify(() => has("preset-Glassy"), limit);
        tryVerify(() => !has("presetName"), limit);
        compare(app.character.presetName, "Glassy");
        click("preset-Balanced");
        compare(value("pitch"), 0);
        click("preset-Glassy");
        compare(value("pitch"), 7);
        mouseClick(item("delete-Glassy"));
        tryVerify(() => !has("preset-Glassy"), limit);
        compare(value("pitch"), 7);
    }
    function test_takenNameIsToldWhileTyping() {
        app.character.saveOwnPreset("Taken");
        tryVerify(() => has("preset-Taken"), limit);
        click("savePreset");
        tryVerify(() => focusName() === "presetName", limit);
        for (const letter of "Taken")
            keyClick(letter);
        verify(!item("confirmPreset").enabled);
        verifySeen(app.character.presetNameProblem("Taken"));
        mouseClick(item("cancelPreset"));
        tryVerify(() => !has("presetName"), limit);
        compare(app.errorMessage, "");
    }
    function test_deleteKeyDeletesAnOwnPreset() {
        app.character.saveOwnPreset("Brief");
        focusOn("preset-Brief");
        keyClick(Qt.Key_Delete);
        tryVerify(() => !has("preset-Brief"), limit);
        focusOn("preset-Wild");
        keyClick(Qt.Key_Delete);
        verify(has("preset-Wild"));
    }

    // ---- Chance
    function test_randomiseTakesTheAmount() {
        const amount = item("randomiseAmount");
        focusOn("randomiseAmount");
        keyClick(Qt.Key_Home);
        verifySeen("0 %");
        click("randomise");
        verify(!app.character.canUndo);
        mouseClick(amount, amount.xOf(1), amount.height / 2);
        verifySeen("100 %");
        click("randomise");
        verify(app.character.canUndo);
        app.character.undo();
        verify(!app.character.canUndo);
        mouseDoubleClickSequence(amount, amount.xOf(0.2), amount.height / 2);
        verifySeen("50 %");
    }
    function test_seedTyped() {
        type("seed", "18446744073709551615");
        compare(app.character.seedText, "18446744073709551615");
        verify(app.character.seedIsFixed);
    }
    function test_seedThatIsNoNumberIsTold() {
        type("seed", "abc");
        compare(app.character.seedText, "abc");
        verifySeen("Not a whole number: a fresh roll.");
    }
    function test_seedOfTheLastRunIsCopiedAndReused() {
        verify(!has("copySeed"));
        generated(1);
        verifySeen("Last run: " + app.character.lastSeed);
        click("copySeed");
        compare(Stage.clipboard(), app.character.lastSeed);
        click("reuseSeed");
        compare(app.character.seedText, app.character.lastSeed);
        compare(item("seed").text, app.character.lastSeed);
    }
}
