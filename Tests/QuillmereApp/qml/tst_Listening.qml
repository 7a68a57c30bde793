import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// How sounds are heard: volume and level, what plays by itself, loops, the seed that is kept.
WindowCase {
    id: testCase
    name: "Listening"

    SignalSpy {
        id: plays
        target: testCase.app?.playback ?? null
        signalName: "playingURLChanged"
    }

    function playing(): int {
        return app.generation.results.rowOf(app.playback.playingURL);
    }
    function choose(text) {
        mouseClick(item("listening"));
        tryVerify(() => Stage.findText(window.contentItem, text) !== null, limit);
        mouseClick(Stage.findText(window.contentItem, text));
    }

    function test_volumeByKeyboard() {
        focusOn("volume");
        compare(app.playback.volume, 1);
        for (let step = 0; step < 10; ++step)
            keyClick(Qt.Key_Left);
        fuzzyCompare(app.playback.volume, 0.5, 0.001);
        keyClick(Qt.Key_Home);
        compare(app.playback.volume, 0);
        compare(item("listening").iconName, "speaker");
        keyClick(Qt.Key_Delete);
        compare(app.playback.volume, 1);
        keyClick(Qt.Key_PageDown);
        restartProgram();
        fuzzyCompare(app.playback.volume, 0.5, 0.001);
    }
    function test_withLittleRoomTheButtonTurnsTheVolume() {
        resize(920, 700);
        verify(!has("volume"));
        focusOn("listening");
        keyClick(Qt.Key_Down);
        fuzzyCompare(app.playback.volume, 0.95, 0.001);
        keyClick(Qt.Key_Up);
        compare(app.playback.volume, 1);
        resize(640, 480);
        verify(has("volume") || has("listening"));
    }
    function test_theLevelIsSeenWhileItSounds() {
        generated(1);
        compare(app.playback.level, 0);
        mouseClick(item("play-0"));
        tryVerify(() => app.playback.level > 0.5, limit);
        Stage.finishPlaying();
        tryCompare(app.playback, "level", 0, limit);
    }
    function test_resultsPlayWhenTheyAreSelectedIfThatIsWanted() {
        generated(3);
        focusOn("results");
        keyClick(Qt.Key_Right);
        settle();
        compare(playing(), -1);
        choose("Play results when they are selected");
        verify(app.playback.playsAtOnce);
        focusOn("results");
        keyClick(Qt.Key_Right);
        tryVerify(() => playing() === 2, limit);
        keyClick(Qt.Key_Left);
        tryVerify(() => playing() === 1, limit);
        keyClick(Qt.Key_Space);
        tryVerify(() => playing() === -1, limit);
        const tile = item("tile-0");
        mouseClick(tile, tile.width / 2, tile.height - 12);
        tryVerify(() => playing() === 0, limit);
        restartProgram();
        verify(app.playback.playsAtOnce);
    }
    function test_changesOfASliderPlayIfThatIsWanted() {
        trained();
        choose("Play every change of a slider");
        focusOn("slider-pitch");
        keyClick(Qt.Key_Right);
        tryVerify(() => isPlayingAudition(), limit);
        idle();
        restartProgram();
        verify(app.playback.followsSliders);
    }
    function test_candidatesPlayAsTheyComeIfThatIsWanted() {
        verify(!app.playback.playsCandidates);
        trained();
        choose("Play candidates as they come");
        mouseClick(item("try"));
        idle();
        for (let row = 0; row < 3; ++row) {
            tryVerify(() => item("candidate-" + row).isPlaying, limit);
            Stage.finishPlaying();
        }
        restartProgram();
        verify(app.playback.playsCandidates);
    }
    function test_theCandidateThatIsHeardIsKept() {
        trained();
        app.output.folderText = Stage.path("out");
        choose("Play candidates as they come");
        mouseClick(item("try"));
        idle();
        for (let row = 0; row < 2; ++row) {
            tryVerify(() => item("candidate-" + row).isPlaying, limit);
            Stage.finishPlaying();
        }
        tryVerify(() => item("candidate-2").isPlaying, limit);
        focusOn("candidates");
        keyClick(Qt.Key_K);
        tryVerify(() => item("candidate-2").isKept, limit);
        verify(!item("candidate-0").isKept);
        // Who looks at another one stays there.
        item("candidates").currentIndex = 0;
        Stage.finishPlaying();
        tryVerify(() => item("candidate-3").isPlaying, limit);
        compare(item("candidates").currentIndex, 0);
    }
    function test_theInspectedSoundLoops() {
        generated(1);
        focusOn("results");
        keyClick(Qt.Key_I);
        tryVerify(() => app.inspector.durationText.length > 0, limit);
        mouseClick(item("loopInspected"));
        verify(app.inspector.loops);
        mouseClick(item("inspectedSound"));
        tryVerify(() => String(app.playback.playingURL) === String(app.inspector.soundURL), limit);
        plays.clear();
        Stage.finishPlaying();
        tryVerify(() => plays.count >= 2 && String(app.playback.playingURL) === String(app.inspector.soundURL), limit);
        mouseClick(item("loopInspected"));
        Stage.finishPlaying();
        tryVerify(() => String(app.playback.playingURL) === "", limit);
    }
    function test_theSeedIsKept() {
        trained();
        app.generation.audition();
        idle();
        const seed = app.character.lastSeed;
        click("keepSeed");
        verify(app.character.keepsSeed);
        app.generation.audition();
        idle();
        compare(app.character.lastSeed, seed);
        focusOn("slider-pitch");
        keyClick(Qt.Key_S);
        verify(!app.character.keepsSeed);
        app.generation.audition();
        idle();
        verify(app.character.lastSeed !== seed);
    }
    function test_theModelOfTheSameSamplesIsOffered() {
        trained();
        Stage.copyFolder("Drums", "Copied");
        app.corpus.choose(Stage.url("Copied"));
        idle();
        tryVerify(() => has("useOffered"), limit);
        verify(seesMatch(/The same samples were learned in .*Drums\./));
        click("useOffered");
        idle();
        tryVerify(() => app.model.isReady, limit);
        verify(!has("useOffered"));
    }
    function test_nothingIsCutOffInAnySize() {
        generated(3);
        for (const size of [Qt.size(480, 360), Qt.size(640, 480), Qt.size(840, 600), Qt.size(900, 600), Qt.size(1180, 820), Qt.size(3840, 2160)]) {
            resize(size.width, size.height);
            const where = " at " + size.width + "x" + size.height;
            compare(Stage.clippedTexts(window.contentItem).map(text => text + where), []);
            compare(Stage.itemsOutside(window.contentItem).map(text => text + where), []);
            compare(Stage.overlaps(window.contentItem).map(text => text + where), []);
        }
    }
}
