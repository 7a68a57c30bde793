import QtQuick
import QtTest
import QuillmereApp
import QuillmereStage

// The large dialogs: the files of the corpus, and what was learned of them.
WindowCase {
    id: testCase
    name: "Sheets"

    function readFiles() {
        tryVerify(() => app.corpusFiles.isRead, limit);
        tryVerify(() => has("file-0"), limit);
    }
    function reported() {
        trained();
        keyClick(Qt.Key_I, Qt.ControlModifier);
        tryVerify(() => app.report.isThere, limit);
        tryVerify(() => has("worst-0"), limit);
    }

    Component {
        id: laterView

        Later {
            view: "qrc:/qt-project.org/imports/QuillmereApp/qml/OpeningView.qml"
            needs: ({
                    "model": testCase.app.model
                })
        }
    }
    function test_aViewIsMadeWhenItIsFirstWanted() {
        const later = createTemporaryObject(laterView, window.contentItem);
        verify(!later.item);
        const view = later.made();
        compare(view.model, app.model);
        compare(later.made(), view);
        later.wanted = true;
        compare(later.item, view);
        later.wanted = false;
        verify(!later.item);
        later.wanted = true;
        verify(later.item);
        verify(createTemporaryObject(laterView, window.contentItem, {
                    "wanted": true
                }).item);
    }
    function test_theFilesByMouse() {
        scanned(3);
        click("showFiles");
        readFiles();
        verifySeen("Files of “Drums”");
        verifySeen("3 files: 3 fine");
        verifySeen("hit1.wav");
        verify(!has("whichFiles-0"));
        mouseClick(Stage.find(item("file-1"), "play hit1.wav") ?? item("play hit1.wav"));
        tryVerify(() => String(app.playback.playingURL).endsWith("hit1.wav"), limit);
        mouseClick(item("closeSheet"));
        tryVerify(() => !has("file-0"), limit);
        compare(String(app.playback.playingURL), "");
    }
    function test_theFilesByKeyboard() {
        scanned(3);
        keyClick(Qt.Key_L, Qt.ControlModifier);
        readFiles();
        compare(focusName(), "file-0");
        keyClick(Qt.Key_Down);
        keyClick(Qt.Key_Space);
        tryVerify(() => String(app.playback.playingURL).endsWith("hit1.wav"), limit);
        keyClick(Qt.Key_Space);
        compare(String(app.playback.playingURL), "");
        keyClick(Qt.Key_Escape);
        tryVerify(() => !has("file-0"), limit);
    }
    function test_theListCutsNoFocusRingOff() {
        const files = 15;
        resize(640, 480);
        scanned(files);
        keyClick(Qt.Key_L, Qt.ControlModifier);
        readFiles();
        const list = item("corpusFileList");
        verify(list.contentHeight > list.height);
        for (let row = 0; row < files; ++row) {
            const name = "file-" + row;
            tryVerify(() => Stage.showsFocus(item(name)), limit, name);
            const ring = Array.from(item(name).children).find(child => child.objectName === "ring");
            const isWhole = () => {
                const place = list.mapFromItem(ring, Qt.rect(0, 0, ring.width, ring.height));
                return place.x >= 0 && place.y >= 0 && place.x + place.width <= list.width && place.y + place.height <= list.height;
            };
            tryVerify(isWhole, limit, name);
            keyClick(Qt.Key_Down);
        }
    }
    function test_onlyWhatIsConspicuous() {
        Stage.makeFile("Drums/notes.wav");
        scanned(3);
        click("showFiles");
        readFiles();
        verifySeen("4 files: 3 fine, 1 unreadable");
        mouseClick(item("whichFiles-1"));
        verifySeen("notes.wav");
        verifyNotSeen("hit1.wav");
    }
    function test_thereAreNoFilesToShowWithoutAFolder() {
        keyClick(Qt.Key_L, Qt.ControlModifier);
        keyClick(Qt.Key_I, Qt.ControlModifier);
        settle();
        verify(!has("closeSheet"));
        verify(!has("showFiles"));
        verify(!has("showReport"));
    }
    function test_theReportSaysHowWellItWasLearned() {
        reported();
        verifySeen(app.report.verdict);
        for (const sentence of app.report.advice)
            verifySeen("·  " + sentence);
        verifySeen("Farthest off");
        keyClick(Qt.Key_Escape);
        tryVerify(() => !has("worst-0"), limit);
    }
    function test_oneKeyPlaysTheSampleAndWhatWasLearnedInTurn() {
        reported();
        focusOn("worst-0");
        const clip = app.report.worst[0];
        for (const url of [clip.originalUrl, clip.learnedUrl, clip.originalUrl]) {
            keyClick(Qt.Key_Space);
            tryCompare(app.playback, "playingURL", url, limit);
        }
    }
    function test_fromTheReportToTheFiles() {
        reported();
        mouseClick(item("reportFiles"));
        readFiles();
        tryVerify(() => !has("worst-0"), limit);
    }
    function test_theReportByMouse() {
        trained();
        click("showReport");
        tryVerify(() => has("worst-0"), limit);
        mouseClick(item("play what was learned of it"));
        tryVerify(() => String(app.playback.playingURL).length > 0, limit);
    }
    function test_aReportThatCannotBeMade() {
        trained();
        Stage.removeFile(Stage.url("Drums/hit0.wav"));
        click("showReport");
        tryVerify(() => app.report.problem.length > 0, limit);
        verifySeen(app.report.problem);
        Stage.makeCorpus("Drums");
        mouseClick(item("reportAgain"));
        tryVerify(() => !app.report.isMaking, limit);
    }
    function test_fitIntoEveryWindow_data() {
        return [[480, 360], [800, 600], [1180, 820], [3840, 2160]].map(size => ({
                        "tag": size.join("x"),
                        "size": size
                    }));
    }
    function test_fitIntoEveryWindow(row) {
        reported();
        resize(row.size[0], row.size[1]);
        compare(Stage.itemsOutside(window.contentItem), []);
        compare(Stage.clippedTexts(window.contentItem), []);
        compare(Stage.namelessControls(window.contentItem), []);
        keyClick(Qt.Key_Escape);
        keyClick(Qt.Key_L, Qt.ControlModifier);
        readFiles();
        compare(Stage.itemsOutside(window.contentItem), []);
        compare(Stage.clippedTexts(window.contentItem), []);
        compare(Stage.namelessControls(window.contentItem), []);
    }
    function twoModels() {
        trained();
        app.corpus.choose(Stage.makeCorpus("Bells", 4));
        idle();
        app.model.train();
        idle();
        keyClick(Qt.Key_M, Qt.ControlModifier);
        tryVerify(() => app.models.models.length === 2, limit);
    }
    function rowOf(name): int {
        return Array.from(app.models.models).findIndex(model => model.name === name);
    }

    function test_noModelsYet() {
        keyClick(Qt.Key_M, Qt.ControlModifier);
        verifySeen("Stored models");
        verifySeen("No folder has been learned yet.");
    }
    function test_openingAModelByMouse() {
        twoModels();
        verifySeen("In use");
        mouseClick(item("openModel-" + rowOf("Drums")));
        tryVerify(() => !has("modelList"), limit);
        tryCompare(app.corpus, "name", "Drums", limit);
        idle();
        verify(app.model.isReady);
    }
    function test_openingAModelByKeyboard() {
        twoModels();
        compare(focusName(), "model-0");
        keyClick(rowOf("Drums") === 0 ? Qt.Key_Up : Qt.Key_Down);
        keyClick(Qt.Key_Return);
        tryCompare(app.corpus, "name", "Drums", limit);
        idle();
        verify(app.model.isReady);
    }
    function test_throwingAModelAwayAndBringingItBack() {
        twoModels();
        mouseClick(item("removeModel-" + rowOf("Drums")));
        tryVerify(() => app.models.models.length === 1, limit);
        verifyNotSeen("Drums");
        mouseClick(item("restoreModel"));
        tryVerify(() => app.models.models.length === 2, limit);
        tryVerify(() => !has("restoreModel"), limit);
    }
    function test_theModelsFitIntoEveryWindow_data() {
        return test_fitIntoEveryWindow_data();
    }
    function test_theModelsFitIntoEveryWindow(row) {
        twoModels();
        resize(row.size[0], row.size[1]);
        compare(Stage.itemsOutside(window.contentItem), []);
        compare(Stage.clippedTexts(window.contentItem), []);
        compare(Stage.namelessControls(window.contentItem), []);
    }
}
