import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// Every text of the window, each in the state that shows it.
WindowCase {
    name: "Texts"

    function test_withoutCorpus_data() {
        return [{
                "text": "Sample corpus"
            }, {
                "text": "Model"
            }, {
                "text": "Output"
            }, {
                "text": "Choose the folder of audio samples to learn from"
            }, {
                "text": "Choose a folder of WAV, AIFF, FLAC, MP3 or M4A files. A few dozen is plenty."
            }, {
                "text": "Choose Folder…"
            }, {
                "text": "Quick"
            }, {
                "text": "Standard"
            }, {
                "text": "Thorough"
            }, {
                "text": "Balanced."
            }, {
                "text": "Analysis"
            }, {
                "text": "Automatic"
            }, {
                "text": "No model for this folder yet. It learns on this Mac — nothing leaves your machine. It's created automatically when you generate, or you can train it now."
            }, {
                "text": "Train Model"
            }, {
                "text": "Choose a corpus first."
            }, {
                "text": "Folder path (created if it doesn't exist)"
            }, {
                "text": "Format"
            }, {
                "text": "WAV 24-bit"
            }, {
                "text": "Departure from the corpus"
            }, {
                "text": "Spectral shaping"
            }, {
                "text": "Signal & degradation"
            }, {
                "text": "Output"
            }, {
                "text": "Seed"
            }, {
                "text": "random"
            }, {
                "text": "Generate 10 Variations"
            }, {
                "text": "Audition"
            }].map(row => ({
                        "tag": row.text,
                        "text": row.text
                    }));
    }
    function test_withoutCorpus(row) {
        verifySeen(row.text);
    }

    function test_presets_data() {
        return ["Faithful", "Balanced", "Explore", "Wild", "Extreme", "Lo-fi", "Ghostly", "Robotic"].map(name => ({
                        "tag": name
                    }));
    }
    function test_presets(row) {
        verifySeen(row.tag);
    }

    function test_parameterTitlesAndValues_data() {
        return [["Sources blended", "2"], ["Drift", "0.40"], ["Mutation", "0.00"], ["Push beyond", "0.00"], ["Pitch", "0.0 st"], ["Pitch jitter", "0.0 st"], ["Time stretch", "1.00 ×"], ["Stretch jitter", "0.00 oct"], ["Brightness tilt", "0.0 dB/oct"], ["Contrast", "1.00"], ["Smear", "0.00"], ["Grit", "0.00"], ["Roughness", "0.00"], ["Phase passes", "48"], ["Extra decay", "0 ms"], ["Drive", "0.0 dB"], ["Bit depth", "24 bit"], ["Sample-rate crush", "1 ×"], ["Reverse chance", "0.00"], ["Peak level", "-1.0 dBFS"]].map(pair => ({
                        "tag": pair[0],
                        "value": pair[1]
                    }));
    }
    function test_parameterTitlesAndValues(row) {
        verifySeen(row.tag);
        verifySeen(row.value);
    }

    // Tooltips, by what they belong to.
    function test_tooltips_data() {
        return [{
                "tag": "quality-0",
                "text": "Minutes-ish. Blurrier, good for trying things out."
            }, {
                "tag": "quality-1",
                "text": "Balanced."
            }, {
                "tag": "quality-2",
                "text": "Longest. Sharpest reconstructions."
            }, {
                "tag": "analysis",
                "text": "Automatic picks a fine-frequency analysis for sustained, pitched samples and a fine-time analysis for percussive ones."
            }, {
                "tag": "seed",
                "text": "Enter a number to get identical results every time. Leave empty for a fresh roll."
            }, {
                "tag": "audition",
                "text": "Render a single variation with the current settings and play it, without saving."
            }, {
                "tag": "train",
                "text": "Choose a corpus first."
            }, {
                "tag": "preset-Faithful",
                "text": "Close relatives of the originals."
            }, {
                "tag": "preset-Robotic",
                "text": "Few phase passes: buzzy, metallic, hard-edged."
            }];
    }
    // Some of the texts stand in the window, too.
    function test_tooltips(row) {
        const count = () => Stage.texts(window.contentItem).filter(text => text === row.text).length;
        const before = count();
        hover(item(row.tag));
        tryVerify(() => count() === before + 1, limit);
    }
    function test_helpOfEveryParameter_data() {
        return parameterIds.map(id => ({
                        "tag": id
                    }));
    }
    function test_helpOfEveryParameter(row) {
        const help = app.character.parameters.get(row.tag, "help");
        const slider = item("slider-" + row.tag);
        verify(help.length > 10);
        verifyNotSeen(help);
        hover(slider);
        verifySeen(help);
        mouseMove(window.contentItem, 2, 2);
        verifyNotSeen(help);
        hover(Stage.findText(slider.parent, app.character.parameters.get(row.tag, "title")));
        verifySeen(help);
    }
    function test_helpAsWritten() {
        compare(app.character.parameters.get("sources", "help"), "How many corpus samples are mixed together in each variation.");
        compare(app.character.parameters.get("phase-iterations", "help"), "Griffin–Lim iterations that reconstruct phase. Very low = buzzy, robotic, smeared transients. High = cleaner.");
    }
    function test_iconOfAudition() {
        verify(seesIcon("play.circle"));
    }
    function test_resetTooltip() {
        app.character.parameters.setValue("drift", 1);
        const target = item("reset-drift");
        mouseMove(target, 5, 5);
        verifySeen("Reset to default");
        verify(seesIcon("arrow.counterclockwise"));
    }

    function test_choicesOfThePickers() {
        click("analysis");
        for (const text of ["Automatic", "Tonal (sustained pitch)", "Percussive (sharp attacks)"])
            verifySeen(text);
        keyClick(Qt.Key_Escape);
        verifyNotSeen("Tonal (sustained pitch)");
        click("format");
        for (const text of ["WAV 16-bit", "WAV 24-bit", "WAV 32-bit float"])
            verifySeen(text);
    }
    function test_qualityHelps() {
        click("quality-0");
        verifySeen("Minutes-ish. Blurrier, good for trying things out.");
        click("quality-2");
        verifySeen("Longest. Sharpest reconstructions.");
    }

    function test_scanning() {
        Stage.holdScans();
        app.corpus.choose(Stage.makeCorpus("Many", 30));
        verify(sees("Scanning"));
        verify(sees("Cancel"));
        tryVerify(() => seesMatch(/^[01] of 30$/), limit);
        app.cancel();
        Stage.letScansGo();
        idle();
        verifyNotSeen("Scanning");
    }
    function test_scannedCorpus() {
        scanned(12);
        for (const text of ["Change Folder…", "12 samples", "8 kHz", "Drums", app.corpus.totalDuration])
            verifySeen(text);
        verifyNotSeen("Choose a corpus first.");
        verifyNotSeen("Choose the folder of audio samples to learn from");
        verifyNotSeen("Very few samples — expect variations that stay close to them.");
    }
    function test_fewSamples() {
        scanned(3);
        verifySeen("Very few samples — expect variations that stay close to them.");
        verify(seesIcon("exclamationmark.triangle.fill"));
    }
    function test_emptyCorpus() {
        app.corpus.choose(Stage.makeFolder("Nothing"));
        idle();
        verifySeen("No audio files found in this folder.");
        verify(seesIcon("exclamationmark.triangle.fill"));
        verifyNotSeen("0 samples");
    }
    function test_training() {
        startTraining();
        verifySeen(app.model.message);
        tryVerify(() => Stage.texts(window.contentItem).some(text => text.startsWith("Step ")), limit);
        verifySeen("Step");
        verifySeen("Loss");
        verifySeen("Cancel");
        tryVerify(() => Stage.texts(window.contentItem).some(text => /^about .* left$/.test(text)), limit);
        verifyNotSeen("Train Model");
        app.model.cancelTraining();
        idle();
        verifySeen("Train Model");
    }
    function test_trained() {
        trained();
        verifySeen("Trained and ready");
        verify(seesIcon("checkmark.circle.fill"));
        verifySeen("Retrain");
        verify(Stage.texts(window.contentItem).some(text => text.includes(" s per sample · trained ") && text.startsWith(app.model.analysisLabel)));
        verifyNotSeen("Train Model");
    }
    function test_outputFolder() {
        app.output.folderText = Stage.path("new");
        verifySeen("Folder will be created.");
        verify(seesIcon("folder.badge.plus"));
        Stage.makeFolder("old");
        app.output.folderText = Stage.path("old");
        verifySeen("Existing folder — new files are added, nothing is overwritten.");
        verify(!seesIcon("folder.badge.plus"));
    }
    function test_countInTheButton() {
        app.output.count = 25;
        verifySeen("Generate 25 Variations");
    }
    function test_generating() {
        startGenerating();
        tryVerify(() => seesMatch(/^\d+ of 9999$/), limit);
        tryVerify(() => seesMatch(/^about .* left$/), limit);
        verifySeen("Cancel");
        app.cancel();
        idle();
    }
    function test_results() {
        generated(2);
        verifySeen("Show in Finder");
        verify(seesIcon("play.circle"));
        tryVerify(() => Stage.texts(window.contentItem).some(text => /^\d+\.\d+ s$/.test(text)), limit);
        app.playback.togglePlay(app.generation.results.urlAt(0));
        tryVerify(() => seesIcon("stop.fill"), limit);
    }
    function test_error() {
        scanned(3);
        app.output.folderText = "";
        click("generate");
        verifySeen("Something went wrong");
        verifySeen("Choose an output folder first.");
        verify(seesIcon("exclamationmark.triangle.fill"));
    }
}
