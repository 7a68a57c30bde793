import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// Contrast as WCAG AA asks: 4.5 for text, 3 for controls; in both appearances.
TestCase {
    name: "Theme"

    function appearances(rows) {
        const result = [];
        for (const dark of [true, false]) {
            for (const row of rows)
                result.push({
                        "tag": row[0] + " on " + row[1] + (dark ? " (dark)" : " (light)"),
                        "ink": row[0],
                        "ground": row[1],
                        "dark": dark
                    });
        }
        return result;
    }
    function verifyContrast(row, least) {
        Theme.dark = row.dark;
        const found = Stage.contrast(Theme[row.ink], Theme[row.ground]);
        verify(found >= least, row.tag + ": " + found);
    }

    function test_text_data() {
        const rows = [];
        for (const ground of ["window", "card", "control", "controlHover", "controlPressed", "popup", "field", "accentSoft", "errorSoft"])
            rows.push(["text", ground]);
        for (const ground of ["window", "card", "control", "controlHover", "popup", "field", "accentSoft", "errorSoft"])
            rows.push(["secondary", ground]);
        for (const ground of ["accent", "accentHover", "accentPressed"])
            rows.push(["accentInk", ground]);
        return appearances(rows.concat([["good", "card"], ["warning", "card"], ["error", "card"], ["error", "popup"], ["accent", "card"]]));
    }
    function test_text(row) {
        verifyContrast(row, 4.5);
    }
    function test_controls_data() {
        return appearances([["controlLine", "card"], ["controlLine", "window"], ["controlLine", "control"], ["controlLine", "field"], ["controlLine", "popup"], ["track", "card"], ["handle", "card"], ["accent", "card"], ["accent", "window"], ["accent", "accentSoft"], ["accent", "line"], ["accent", "controlHover"], ["secondary", "controlHover"], ["error", "errorSoft"]]);
    }
    function test_controls(row) {
        verifyContrast(row, 3);
    }
    // The folder chooser draws its current row so.
    function test_currentFolder_data() {
        return appearances([["text", "controlHover"]]);
    }
    function test_currentFolder(row) {
        Theme.dark = row.dark;
        const a = Theme.controlHover;
        const b = Theme.accent;
        const mix = (from, to) => from + 0.15 * (to - from);
        const ground = Qt.rgba(mix(a.r, b.r), mix(a.g, b.g), mix(a.b, b.b), 1);
        verify(Stage.contrast(Theme.text, ground) >= 4.5);
    }
    function test_meaningColoursDiffer() {
        for (const dark of [true, false]) {
            Theme.dark = dark;
            const colours = ["accent", "good", "warning", "error"].map(name => String(Theme[name]));
            compare(new Set(colours).size, 4);
        }
    }
    function test_lessMotion() {
        Theme.reducedMotion = true;
        compare(Theme.quick, 0);
        Theme.reducedMotion = false;
        verify(Theme.quick > 0 && Theme.quick < 150);
    }
    function test_figuresAreEquallyWide() {
        const metrics = createTemporaryQmlObject("import QtQuick; FontMetrics {}", this);
        metrics.font.family = Theme.figures;
        metrics.font.pixelSize = 100;
        const widths = "0123456789".split("").map(figure => metrics.advanceWidth(figure));
        compare(new Set(widths).size, 1);
    }
}
