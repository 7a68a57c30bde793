// What a new AppModel shows, and what it restores from the preferences.

#include <QObject>

#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {

class AppModelStartTest : public QObject {
    Q_OBJECT

private slots:
    void beginsWithTheInitialValues() {
        TestWorld world;
        AppModel model(world.environment);
        QVERIFY(model.corpusURL().isEmpty());
        QVERIFY(!model.hasCorpus());
        QVERIFY(!model.hasSummary());
        QVERIFY(!model.isScanning());
        QVERIFY(!model.hasModel());
        QVERIFY(model.bundle() == nullptr);
        QCOMPARE(model.quality(), Quality::standard);
        QCOMPARE(model.analysis(), AnalysisProfile::automatic);
        QVERIFY(!model.training());
        QCOMPARE(model.lossHistory()->count(), 0);
        QVERIFY(!model.isTraining());
        QCOMPARE(model.outputText(), QString());
        QCOMPARE(model.count(), 10);
        QCOMPARE(model.format(), OutputFormat::wav24);
        QVERIFY(model.aesthetics() == Aesthetics());
        QCOMPARE(model.presetName(), QStringLiteral("Balanced"));
        QVERIFY(!model.presetEdited());
        QCOMPARE(model.seedText(), QString());
        QVERIFY(!model.isGenerating());
        QCOMPARE(model.generationDone(), 0);
        QCOMPARE(model.generationTotal(), 0);
        QCOMPARE(model.results()->count(), 0);
        QVERIFY(model.lastOutputFolder().isEmpty());
        QVERIFY(model.playingURL().isEmpty());
        QVERIFY(!model.isAuditioning());
        QVERIFY(!model.isBusy());
        QCOMPARE(model.errorMessage(), QString());
        QCOMPARE(model.outputStatus(), AppModel::NoOutput);
    }

    void offersTheQualitiesWithTheirTexts() {
        TestWorld world;
        const AppModel model(world.environment);
        QCOMPARE(model.qualityLabels(), QStringList({"Quick", "Standard", "Thorough"}));
        QCOMPARE(model.qualityHelps(), QStringList({"Minutes-ish. Blurrier, good for trying things out.",
                                                    "Balanced.", "Longest. Sharpest reconstructions."}));
    }

    void offersTheAnalysesAndFormats() {
        TestWorld world;
        const AppModel model(world.environment);
        QCOMPARE(model.analysisLabels(),
                 QStringList({"Automatic", "Percussive (sharp attacks)", "Tonal (sustained pitch)"}));
        QCOMPARE(model.formatLabels(), QStringList({"WAV 16-bit", "WAV 24-bit", "WAV 32-bit float"}));
        QCOMPARE(model.formatIndex(), 1);
    }

    void restoresCorpusOutputAndCount() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        world.writePreferences("corpusPath=" + world.path("corpus").toUtf8() +
                               "\noutputPath=/some/where\ncount=25\n");
        AppModel model(world.environment);
        QCOMPARE(model.corpusURL(), corpus);
        QVERIFY(model.isScanning());
        QCOMPARE(model.outputText(), QStringLiteral("/some/where"));
        QCOMPARE(model.count(), 25);
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.fileCount(), 3);
    }

    void ignoresAStoredCountBelowOne() {
        for (const QByteArray count : {"0", "-3"}) {
            TestWorld world;
            world.writePreferences("count=" + count + "\n");
            QCOMPARE(AppModel(world.environment).count(), 10);
        }
    }

    void doesNotRestoreACorpusThatIsGone() {
        TestWorld world;
        world.writePreferences("corpusPath=" + world.path("gone").toUtf8() + "\n");
        const AppModel model(world.environment);
        QVERIFY(!model.hasCorpus());
        QVERIFY(!model.isScanning());
        QCOMPARE(model.errorMessage(), QString());
    }

    void ignoresPreferencesOfWrongTypes_data() {
        QTest::addColumn<QByteArray>("lines");
        QTest::newRow("lists") << QByteArray("corpusPath=a, b\noutputPath=c, d\ncount=1, 2\n");
        QTest::newRow("bytes") << QByteArray(
            "corpusPath=@ByteArray(x)\noutputPath=@ByteArray(x)\ncount=@ByteArray(7)\n");
        QTest::newRow("points") << QByteArray(
            "corpusPath=@Point(1 2)\noutputPath=@Point(1 2)\ncount=@Point(1 2)\n");
        QTest::newRow("invalid") << QByteArray(
            "corpusPath=@Invalid()\noutputPath=@Invalid()\ncount=@Invalid()\n");
        QTest::newRow("no integer") << QByteArray("count=10.5\n");
        QTest::newRow("word") << QByteArray("count=many\n");
        QTest::newRow("too large") << QByteArray("count=99999999999\n");
        QTest::newRow("appearance") << QByteArray("appearance=7\ndesktopWasDark=@Point(1 2)\n");
        QTest::newRow("recent") << QByteArray("recentCorpora=@Point(1 2)\n");
    }
    void ignoresPreferencesOfWrongTypes() {
        QFETCH(QByteArray, lines);
        TestWorld world;
        world.writePreferences(lines);
        const AppModel model(world.environment);
        QVERIFY(!model.hasCorpus());
        QCOMPARE(model.outputText(), QString());
        QCOMPARE(model.count(), 10);
        QCOMPARE(model.recentCorpora().size(), 0);
        QCOMPARE(model.errorMessage(), QString());
    }

    void aTemporaryFolderThatIsNoneGivesWayToTheUsualOne() {
        const QByteArray before = qgetenv("TMPDIR");
        qputenv("TMPDIR", "/no/such/folder");
        QCOMPARE(Environment::standard().temporaryFolder, std::filesystem::path("/tmp"));
        before.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", before);
    }

    void startsWithDamagedPreferences() {
        TestWorld world;
        TestWorld::write(world.environment.settingsFile, QByteArray("\x00\xff[[[=%%%\ncount", 16));
        QCOMPARE(AppModel(world.environment).count(), 10);
    }

    void storesTheCorpusForTheNextStart() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus, with a comma");
        {
            AppModel model(world.environment);
            model.setCorpus(corpus);
        }
        const AppModel restarted(world.environment);
        QCOMPARE(restarted.corpusURL(), corpus);
    }

    void twoInstancesShareThePreferences() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        {
            AppModel one(world.environment);
            AppModel other(world.environment);
            one.appearance()->setMode(Appearance::Dark);
            other.setCorpus(corpus);
        }
        AppModel restarted(world.environment);
        QCOMPARE(restarted.corpusURL(), corpus);
        QCOMPARE(restarted.appearance()->mode(), Appearance::Dark);
    }

    void remembersTheAppearance() {
        TestWorld world;
        {
            AppModel model(world.environment);
            QSignalSpy dark(model.appearance(), &Appearance::darkChanged);
            model.appearance()->setMode(Appearance::Dark);
            QCOMPARE(dark.count(), 1);
            QVERIFY(model.appearance()->isDark());
        }
        AppModel restarted(world.environment);
        QVERIFY(restarted.appearance()->isDark());
        restarted.appearance()->forceLight();
        QVERIFY(!restarted.appearance()->isDark());
        AppModel again(world.environment);
        QVERIFY(again.appearance()->isDark());
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::AppModelStartTest)
#include "AppModelStartTest.moc"
