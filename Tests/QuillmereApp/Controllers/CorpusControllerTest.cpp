// Choosing a corpus: the scan, its facts, newer choices, and the folders chosen before.

#include <QObject>
#include <filesystem>
#include <vector>

#include "QuillmereApp/Controllers/CorpusController.h"
#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/Gate.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "Support/SmallModel.h"

namespace quillmere::testing {
namespace {

// A CorpusController with all it needs.
struct Opener {
    explicit Opener(const TestWorld& world)
        : preferences(world.environment.settingsFile), corpus(world.environment, preferences), told(corpus) {}

    Preferences preferences;
    CorpusController corpus;
    Told told;
};

bool waitUntilScanned(const CorpusController& corpus) {
    return QTest::qWaitFor([&] { return !corpus.isScanning(); }, longestWait);
}

void prepare(CorpusController& corpus, const QUrl& folder) {
    corpus.choose(folder);
    QVERIFY(waitUntilScanned(corpus));
    QVERIFY(corpus.hasSummary());
}

}  // namespace

class CorpusControllerTest : public QObject {
    Q_OBJECT

private slots:
    void showsTheFactsOfTheFolder() {
        TestWorld world;
        const QUrl folder = world.makeCorpus("kicks", 12, 0.25);
        AudioIO::write(std::vector<float>(44100, 0.1F), toPath(world.path("kicks/other rate.wav")), 44100,
                       OutputFormat::wav16);
        TestWorld::write(world.path("kicks/text.wav"), "no sound");
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        QSignalSpy scanning(&corpus, &CorpusController::isScanningChanged);
        QSignalSpy summary(&corpus, &CorpusController::summaryChanged);
        corpus.choose(folder);
        QVERIFY(corpus.isScanning());
        QVERIFY(!corpus.hasSummary());
        QVERIFY(waitUntilScanned(corpus));
        QCOMPARE(scanning.count(), 2);
        QCOMPARE(summary.count(), 2);
        QCOMPARE(corpus.name(), QStringLiteral("kicks"));
        QCOMPARE(corpus.fileCount(), 14);
        QCOMPARE(corpus.unreadable(), 1);
        QCOMPARE(corpus.totalDuration(), QStringLiteral("4.00 s"));
        QCOMPARE(corpus.sampleRates(), QStringList({"8 kHz", "44.1 kHz"}));
        QVERIFY(!corpus.isEmpty());
        QVERIFY(!corpus.hasFewSamples());
    }

    void warnsOfFewUsableSamples() {
        TestWorld world;
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        corpus.choose(world.makeCorpus("few", CorpusController::fewSamplesLimit - 1));
        QVERIFY(waitUntilScanned(corpus));
        QVERIFY(corpus.hasFewSamples());
        corpus.choose(world.makeCorpus("enough", CorpusController::fewSamplesLimit));
        QVERIFY(waitUntilScanned(corpus));
        QVERIFY(!corpus.hasFewSamples());
    }

    void saysThatAFolderHasNoAudio() {
        TestWorld world;
        QDir().mkpath(world.path("empty"));
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        corpus.choose(world.url("empty"));
        QVERIFY(waitUntilScanned(corpus));
        QVERIFY(corpus.isEmpty());
        QVERIFY(!corpus.hasFewSamples());
        QCOMPARE(opener.told.error, QString());
    }

    void reportsAFolderThatIsNone_data() {
        QTest::addColumn<QString>("name");
        QTest::newRow("missing") << "missing";
        QTest::newRow("file") << "file";
    }
    void reportsAFolderThatIsNone() {
        QFETCH(QString, name);
        TestWorld world;
        TestWorld::write(world.path("file"), "x");
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        corpus.choose(world.url(name));
        QVERIFY(waitUntilScanned(corpus));
        QCOMPARE(opener.told.error, world.path(name) + " is not a folder");
        QVERIFY(!corpus.hasSummary());
    }

    void refusesWhatIsNotOnThisComputer() {
        TestWorld world;
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        corpus.choose(QUrl("https://example.org/samples"));
        QVERIFY(!corpus.isChosen());
        QVERIFY(!opener.told.error.isEmpty());
    }

    void aSecondChoiceDropsTheScanOfTheFirst() {
        TestWorld world;
        const QUrl first = world.makeCorpus("first", 5);
        const QUrl second = world.makeCorpus("second", 2);
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        QSignalSpy summaries(&corpus, &CorpusController::summaryChanged);
        corpus.choose(first);
        AppModelProbe::waitForWork(corpus);  // the first scan has ended and its result waits to be delivered
        corpus.choose(second);
        QVERIFY(corpus.isScanning());
        QVERIFY(waitUntilScanned(corpus));
        QCOMPARE(corpus.url(), second);
        QCOMPARE(corpus.fileCount(), 2);
        QCOMPARE(summaries.count(), 3);  // cleared twice, set once
    }

    void aFailedScanOfAnOlderChoiceIsNotReported() {
        TestWorld world;
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        corpus.choose(world.url("missing"));
        AppModelProbe::waitForWork(corpus);
        corpus.choose(world.makeCorpus("there"));
        QVERIFY(waitUntilScanned(corpus));
        QCOMPARE(opener.told.error, QString());
        QVERIFY(corpus.hasSummary());
    }

    void choosingTheSameFolderAgainScansAgain() {
        TestWorld world;
        const QUrl folder = world.makeCorpus("corpus", 2);
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        prepare(corpus, folder);
        world.makeCorpus("corpus", 4);
        corpus.choose(folder);
        QVERIFY(waitUntilScanned(corpus));
        QCOMPARE(corpus.fileCount(), 4);
    }

    void aFolderDeletedOnceItsFilesAreCountedHasNoneThatCanBeRead() {
        TestWorld world;
        const QUrl folder = world.makeCorpus("corpus", 20, 0.01);
        world.inTheMidst(Run::scan, 0, [&] { QDir(world.path("corpus")).removeRecursively(); });
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        prepare(corpus, folder);
        QVERIFY(!QFileInfo::exists(world.path("corpus")));
        QCOMPARE(corpus.unreadable(), 20);
        QCOMPARE(opener.told.error, QString());
    }

    void aFolderDeletedHalfWayThroughItsScanKeepsWhatWasMeasured() {
        TestWorld world;
        const QUrl folder = world.makeCorpus("corpus", 60, 0.01);
        world.inTheMidst(Run::scan, 10, [&] { QDir(world.path("corpus")).removeRecursively(); });
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        prepare(corpus, folder);
        QCOMPARE(corpus.fileCount(), 60);
        // The files that other threads were at, at that moment, may have come through.
        QVERIFY2(corpus.unreadable() > 0 && corpus.unreadable() <= 50,
                 qPrintable(QString::number(corpus.unreadable())));
        corpus.choose(folder);
        QVERIFY(waitUntilScanned(corpus));
        QCOMPARE(opener.told.error, world.path("corpus") + " is not a folder");
    }

    void aFolderDeletedBeforeItIsScannedIsNone() {
        TestWorld world;
        const QUrl folder = world.makeCorpus("corpus");
        QVERIFY(QDir(world.path("corpus")).removeRecursively());
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        corpus.choose(folder);
        QVERIFY(waitUntilScanned(corpus));
        QCOMPARE(opener.told.error, world.path("corpus") + " is not a folder");
        QVERIFY(!corpus.hasSummary());
    }

    void aScanCanBeCancelled() {
        TestWorld world;
        const QUrl folder = world.makeCorpus("corpus", 40, 0.01);
        Gate gate;
        world.holdRuns(gate);
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        corpus.choose(folder);
        corpus.cancelScan();
        gate.open();
        QVERIFY(waitUntilScanned(corpus));
        QVERIFY(!corpus.hasSummary());
        QCOMPARE(opener.told.error, QString());
        corpus.choose(folder);
        QVERIFY(waitUntilScanned(corpus));
        QCOMPARE(corpus.fileCount(), 40);
    }

    void countsTheFilesWhileItScans() {
        TestWorld world;
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        QSignalSpy progress(&corpus, &CorpusController::scanProgressChanged);
        int total = 0;
        connect(&corpus, &CorpusController::scanProgressChanged, &corpus,
                [&] { total = std::max(total, corpus.scanTotal()); });
        prepare(corpus, world.makeCorpus("corpus", 20));
        QVERIFY(progress.count() >= 2);
        QCOMPARE(total, 20);
    }

    void theChooserStartsBesideTheCorpusOrAtHome() {
        TestWorld world;
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        QSignalSpy chooser(&corpus, &CorpusController::chooserRequested);
        corpus.openChooser();
        QTRY_COMPARE(chooser.count(), 1);
        QCOMPARE(chooser.takeFirst().at(0).toUrl(), world.url("home"));
        prepare(corpus, world.makeCorpus("kits/corpus"));
        corpus.openChooser();
        QTRY_COMPARE(chooser.count(), 1);
        QCOMPARE(chooser.takeFirst().at(0).toUrl(), world.url("kits"));
        QCOMPARE(corpus.chooserMessage(), QStringLiteral("Choose the folder of audio samples to learn from"));
    }

    void remembersRecentFoldersNewestFirst() {
        TestWorld world;
        {
            Opener opener(world);
            CorpusController& corpus = opener.corpus;
            for (int i = 0; i < CorpusController::recentLimit + 2; ++i)
                prepare(corpus, world.makeCorpus(QStringLiteral("home/folder%1").arg(i), 1, 0.01));
            prepare(corpus, world.url("home/folder5"));
        }
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        const QVariantList recent = corpus.recent();
        QCOMPARE(recent.size(), CorpusController::recentLimit);
        QCOMPARE(recent.at(0).toMap().value("url").toUrl(), world.url("home/folder5"));
        QCOMPARE(recent.at(0).toMap().value("path").toString(), QStringLiteral("~/folder5"));
        QCOMPARE(recent.at(1).toMap().value("name").toString(), QStringLiteral("folder9"));
        corpus.forgetRecent();
        QCOMPARE(corpus.recent().size(), 0);
    }

    void twoWindowsShareTheirRecentFolders() {
        TestWorld world;
        const auto paths = [](const CorpusController& corpus) {
            QStringList names;
            for (const QVariant& entry : corpus.recent())
                names.append(entry.toMap().value("name").toString());
            return names;
        };
        Opener one(world);
        Opener other(world);
        prepare(one.corpus, world.makeCorpus("kicks", 1, 0.01));
        QTRY_VERIFY(TestWorld::read(world.environment.settingsFile).contains("kicks"));
        prepare(other.corpus, world.makeCorpus("snares", 1, 0.01));
        QTRY_COMPARE(paths(other.corpus), QStringList({"snares", "kicks"}));
        prepare(one.corpus, world.makeCorpus("hats", 1, 0.01));
        QTRY_COMPARE(paths(one.corpus), QStringList({"hats", "snares", "kicks"}));
        one.corpus.forgetRecent();
        QCOMPARE(paths(one.corpus), QStringList());
        deliverEvents();
        QCOMPARE(paths(one.corpus), QStringList());
    }

    void aFolderThatCannotBeScannedIsNoRecentOne() {
        TestWorld world;
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        corpus.choose(world.url("missing"));
        QVERIFY(waitUntilScanned(corpus));
        QCOMPARE(corpus.recent().size(), 0);
        corpus.choose(world.makeCorpus("corpus"));
        QCOMPARE(corpus.recent().size(), 0);  // not before it is scanned
        QVERIFY(waitUntilScanned(corpus));
        QCOMPARE(corpus.recent().size(), 1);
    }

    void isRefusedWhileTrainingOrGenerating() {
        TestWorld world;
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        QSignalSpy chooser(&corpus, &CorpusController::chooserRequested);
        const QUrl folder = world.makeCorpus("corpus");
        for (const Activity activity : {Activity{.isTraining = true}, Activity{.isGenerating = true}}) {
            corpus.setActivity(activity);
            QVERIFY(!corpus.canChoose());
            corpus.choose(folder);
            corpus.openChooser();
            QVERIFY(!corpus.isChosen());
            QCOMPARE(chooser.count(), 0);
        }
        corpus.setActivity({.isAuditioning = true});
        corpus.choose(folder);
        QVERIFY(corpus.isChosen());
    }

    void tellsOfAStoredModel() {
        TestWorld world;
        const QUrl folder = world.makeCorpus("corpus");
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        std::vector<std::filesystem::path> found;
        connect(&corpus, &CorpusController::storedModelFound, &corpus,
                [&](const std::filesystem::path& path) {
                    QVERIFY(!corpus.isScanning() && corpus.hasSummary());
                    found.push_back(path);
                });
        prepare(corpus, folder);
        QVERIFY(found.empty());
        const auto expected = ModelStore::directory(*corpus.summary(), world.environment.modelsRoot);
        ModelStore::save(smallModel(), expected);
        prepare(corpus, folder);
        QCOMPARE(found.size(), 1U);
        QCOMPARE(found.front(), expected);
    }

    void storesTheCorpusForTheNextStart() {
        TestWorld world;
        const QUrl folder = world.makeCorpus("corpus, with a comma");
        {
            Opener opener(world);
            opener.corpus.choose(folder);
        }
        Opener restarted(world);
        QVERIFY(!restarted.corpus.isChosen());
        restarted.corpus.restore();
        QCOMPARE(restarted.corpus.url(), folder);
        QVERIFY(restarted.corpus.isScanning());
    }

    void doesNotRestoreACorpusThatIsGone() {
        TestWorld world;
        world.writePreferences("corpusPath=" + world.path("gone").toUtf8() + "\n");
        Opener opener(world);
        opener.corpus.restore();
        QVERIFY(waitUntilScanned(opener.corpus));
        QVERIFY(!opener.corpus.isChosen());
        QCOMPARE(opener.corpus.name(), QString());
        QCOMPARE(opener.told.error, QString());
    }

    void aFolderOfTheLastTimeThatIsAFileNowIsToldOf() {
        TestWorld world;
        TestWorld::write(world.path("file"), "x");
        world.writePreferences("corpusPath=" + world.path("file").toUtf8() + "\n");
        Opener opener(world);
        opener.corpus.restore();
        QVERIFY(waitUntilScanned(opener.corpus));
        QCOMPARE(opener.told.error, world.path("file") + " is not a folder");
    }

    // ---- Folders that do not answer

    void theStartDoesNotWaitForAFolderThatDoesNotAnswer() {
        TestWorld world;
        world.makeCorpus("dead");
        world.cutOff("dead");
        world.writePreferences("corpusPath=" + world.path("dead").toUtf8() + "\n");
        Opener opener(world);
        opener.corpus.restore();
        QVERIFY(opener.corpus.isScanning());
        QVERIFY(waitUntilScanned(opener.corpus));
        QCOMPARE(opener.told.error,
                 world.path("dead") + " does not answer. Check the drive or the network that it is on.");
        QCOMPARE(opener.corpus.url(), world.url("dead"));
    }

    void noMoreThanOneLookWaitsForAFolderThatDoesNotAnswer() {
        TestWorld world;
        world.makeCorpus("dead");
        world.cutOff("dead");
        const QUrl alive = world.makeCorpus("alive");
        Opener opener(world);
        for (int i = 0; i < 50; ++i)
            opener.corpus.choose(world.url("dead"));
        opener.corpus.choose(alive);
        QVERIFY(waitUntilScanned(opener.corpus));
        QCOMPARE(opener.corpus.fileCount(), 3);
        AppModelProbe::waitForWork(opener.corpus);
        QCOMPARE(world.looksAtDead->load(), 1);
    }

    void theChooserStartsAtHomeWhereTheFolderDoesNotAnswer() {
        TestWorld world;
        world.makeCorpus("dead/corpus");
        world.cutOff("dead");
        Opener opener(world);
        opener.corpus.choose(world.url("dead/corpus"));
        QVERIFY(waitUntilScanned(opener.corpus));
        QSignalSpy chooser(&opener.corpus, &CorpusController::chooserRequested);
        opener.corpus.openChooser();
        QTRY_COMPARE(chooser.count(), 1);
        QCOMPARE(chooser.takeFirst().at(0).toUrl(), world.url("home"));
    }

    // ---- Scanning again

    void scansAgainAfterAScanThatWasCancelled() {
        TestWorld world;
        const QUrl folder = world.makeCorpus("corpus", 40, 0.01);
        Gate gate;
        world.holdRuns(gate);
        Opener opener(world);
        CorpusController& corpus = opener.corpus;
        QSignalSpy started(&corpus, &CorpusController::scanStarted);
        corpus.scanAgain();
        QVERIFY(!corpus.isScanning());
        corpus.choose(folder);
        corpus.cancelScan();
        gate.open();
        QVERIFY(waitUntilScanned(corpus));
        QVERIFY(!corpus.hasSummary());
        corpus.scanAgain();
        QVERIFY(corpus.isScanning());
        QVERIFY(waitUntilScanned(corpus));
        QCOMPARE(corpus.fileCount(), 40);
        QCOMPARE(started.count(), 2);
        corpus.setActivity({.isTraining = true});
        corpus.scanAgain();
        QVERIFY(!corpus.isScanning());
    }

    // ---- Files of this program

    void countsTheFilesThatAreNamedAsVariations() {
        TestWorld world;
        const QUrl folder = world.makeCorpus("corpus", 2);
        for (const char* name : {"kick_var_0001.wav", "sub/kick_var_12345.wav", "kick_var_1.wav",
                                 "kick_var_0002.flac", "kick_variation_0003.wav", "kick_var_0004.wav.wav"}) {
            QDir().mkpath(world.path("corpus/sub"));
            QVERIFY(QFile::copy(world.path("corpus/hit0.wav"), world.path(QStringLiteral("corpus/") + name)));
        }
        Opener opener(world);
        prepare(opener.corpus, folder);
        QCOMPARE(opener.corpus.variations(), 2);
        prepare(opener.corpus, world.makeCorpus("other"));
        QCOMPARE(opener.corpus.variations(), 0);
    }

    // ---- Links

    void theFolderAboveALinkIsThatOfWhatItLeadsTo() {
        TestWorld world;
        world.makeCorpus("far", 5);
        QDir().mkpath(world.path("far/away"));
        QVERIFY(QFile::link(world.path("far/away"), world.path("link")));
        Opener opener(world);
        opener.corpus.choose(QUrl::fromLocalFile(world.path("link") + "/.."));
        QVERIFY(waitUntilScanned(opener.corpus));
        QCOMPARE(opener.told.error, QString());
        QCOMPARE(opener.corpus.fileCount(), 5);
        QCOMPARE(opener.corpus.name(), QStringLiteral("far"));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::CorpusControllerTest)
#include "CorpusControllerTest.moc"
