// The application without its window: what it starts with, and what its subjects have to do with one another.

#include <QObject>
#include <memory>
#include <utility>

#include "QuillmereApp/AppModel.h"
#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/Gate.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereCore/Model/ModelIdentity.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "Support/HeadStartFiles.h"

namespace quillmere::testing {
namespace {

// A trained model with an output folder and few phase passes.
void prepareToGenerate(AppModel& app, const TestWorld& world, int count = 3) {
    prepareTrained(app, world.makeCorpus("corpus"));
    app.setOutputText(world.path("out"));
    app.setCount(count);
    app.character()->parameters()->setValue("phase-iterations", 1);
}

void generateAndWait(AppModel& app) {
    app.generate();
    QVERIFY(waitUntilIdle(app));
}

QStringList fileNames(AppModel& app) {
    QStringList names;
    for (int row = 0; row < app.results()->count(); ++row)
        names.append(app.results()->index(row).data(ResultsModel::FileNameRole).toString());
    return names;
}

QByteArray bytesOfResult(AppModel& app, int row) {
    return TestWorld::read(app.results()->urlAt(row).toLocalFile());
}

}  // namespace

class AppModelTest : public QObject {
    Q_OBJECT

private slots:
    // ---- The start

    void beginsWithTheInitialValues() {
        TestWorld world;
        AppModel app(world.environment);
        QVERIFY(app.corpusURL().isEmpty());
        QVERIFY(!app.corpus()->isChosen());
        QVERIFY(app.summary() == nullptr);
        QVERIFY(!app.isScanning());
        QVERIFY(!app.model()->isReady());
        QVERIFY(app.bundle() == nullptr);
        QCOMPARE(app.quality(), Quality::standard);
        QCOMPARE(app.analysis(), AnalysisProfile::automatic);
        QVERIFY(!app.training());
        QCOMPARE(app.lossHistory()->count(), 0);
        QVERIFY(!app.isTraining());
        QCOMPARE(app.outputText(), QString());
        QCOMPARE(app.count(), 10);
        QCOMPARE(app.format(), OutputFormat::wav24);
        QVERIFY(app.aesthetics() == Aesthetics());
        QCOMPARE(app.presetName(), QStringLiteral("Balanced"));
        QVERIFY(!app.character()->presetEdited());
        QCOMPARE(app.seedText(), QString());
        QVERIFY(!app.isGenerating());
        QCOMPARE(app.generationProgress(), std::pair(0, 0));
        QCOMPARE(app.results()->count(), 0);
        QVERIFY(app.lastOutputFolder().isEmpty());
        QVERIFY(app.playingURL().isEmpty());
        QVERIFY(!app.isAuditioning());
        QVERIFY(!app.isBusy());
        QCOMPARE(app.errorMessage(), QString());
        QCOMPARE(app.output()->status(), OutputController::NoFolder);
    }

    void restoresCorpusOutputAndCount() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        world.writePreferences("corpusPath=" + world.path("corpus").toUtf8() +
                               "\noutputPath=/some/where\ncount=25\n");
        AppModel app(world.environment);
        QCOMPARE(app.corpusURL(), corpus);
        QVERIFY(app.isScanning());
        QCOMPARE(app.outputText(), QStringLiteral("/some/where"));
        QCOMPARE(app.count(), 25);
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(app.corpus()->fileCount(), 3);
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
        QTest::newRow("appearance") << QByteArray("appearance=@Point(1 2)\n");
        QTest::newRow("appearance too large") << QByteArray("appearance=4294967297\n");
        QTest::newRow("no appearance") << QByteArray("appearance=7\n");
        QTest::newRow("recent") << QByteArray("recentCorpora=@Point(1 2)\n");
    }
    void ignoresPreferencesOfWrongTypes() {
        QFETCH(QByteArray, lines);
        TestWorld world;
        world.writePreferences(lines);
        AppModel app(world.environment);
        QVERIFY(!app.corpus()->isChosen());
        QCOMPARE(app.outputText(), QString());
        QCOMPARE(app.count(), 10);
        QCOMPARE(app.appearance()->mode(), Appearance::System);
        QCOMPARE(app.corpus()->recent().size(), 0);
        QCOMPARE(app.errorMessage(), QString());
    }

    void auditionsGoToAFolderOfTheUsersOwn() {
        const TestWorld world;
        const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
        const QByteArray cache = qgetenv("XDG_CACHE_HOME");
        qputenv("XDG_CACHE_HOME", world.path("cache").toUtf8());
        const auto folderFor = [&](const QString& session) {
            qputenv("XDG_RUNTIME_DIR", session.toUtf8());
            return Environment::standard().temporaryFolder;
        };
        QCOMPARE(folderFor(world.path("tmp")), toPath(world.path("tmp/quillmere")));
        for (const QString& unusable : {QString(), world.path("none"), QStringLiteral("tmp")})
            QCOMPARE(folderFor(unusable), toPath(world.path("cache/quillmere")));
        runtime.isNull() ? qunsetenv("XDG_RUNTIME_DIR") : qputenv("XDG_RUNTIME_DIR", runtime);
        cache.isNull() ? qunsetenv("XDG_CACHE_HOME") : qputenv("XDG_CACHE_HOME", cache);
    }

    void startsWithDamagedPreferences() {
        TestWorld world;
        TestWorld::write(world.environment.settingsFile, QByteArray("\x00\xff[[[=%%%\ncount", 16));
        QCOMPARE(AppModel(world.environment).count(), 10);
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
            AppModel app(world.environment);
            QSignalSpy dark(app.appearance(), &Appearance::darkChanged);
            app.appearance()->setMode(Appearance::Dark);
            QCOMPARE(dark.count(), 1);
            QVERIFY(app.appearance()->isDark());
        }
        AppModel restarted(world.environment);
        QVERIFY(restarted.appearance()->isDark());
        restarted.appearance()->forceLight();
        QVERIFY(!restarted.appearance()->isDark());
        AppModel again(world.environment);
        QVERIFY(again.appearance()->isDark());
    }

    // ---- Corpus and model

    void aNewCorpusDiscardsTheOldStateAtOnce() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("first"));
        app.setOutputText(world.path("out"));
        app.setCount(1);
        app.generate();
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(app.results()->count(), 1);
        app.setCorpus(world.makeCorpus("second"));
        QVERIFY(!app.corpus()->hasSummary());
        QVERIFY(!app.model()->isReady());
        QCOMPARE(app.results()->count(), 0);
        QCOMPARE(app.lastOutputFolder(), world.url("out"));
    }

    void findsTheModelOfTheFolderAgain() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        {
            AppModel app(world.environment);
            prepareTrained(app, corpus);
        }
        AppModel app(world.environment);  // restores the folder
        QVERIFY(waitUntilIdle(app));
        QVERIFY(app.model()->isReady());
        QCOMPARE(app.model()->problem(), QString());
    }

    void aChangedFolderHasNoModel() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        AppModel app(world.environment);
        prepareTrained(app, corpus);
        world.makeCorpus("corpus", 4);
        prepare(app, corpus);
        QVERIFY(!app.model()->isReady());
    }

    void aModelWithHalfItsFilesIsNone() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        AppModel app(world.environment);
        prepareTrained(app, corpus);
        const auto folder = ModelStore::directory(*app.summary(), world.environment.modelsRoot);
        std::filesystem::remove(folder / "model.json");
        prepare(app, corpus);
        QVERIFY(!app.model()->isReady());
        QCOMPARE(app.errorMessage(), QString());
        QCOMPARE(app.model()->problem(), QString());
    }

    void aChoiceWhileAModelIsLoadedWins() {
        TestWorld world;
        const QUrl trained = world.makeCorpus("trained");
        const QUrl other = world.makeCorpus("other", 2);
        AppModel app(world.environment);
        prepareTrained(app, trained);
        app.setCorpus(trained);
        QVERIFY(QTest::qWaitFor([&] { return app.model()->isLoading(); }));
        AppModelProbe::waitForWork(app);  // the model is loaded and waits to be delivered
        app.setCorpus(other);
        QVERIFY(!app.model()->isLoading());
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(app.corpus()->fileCount(), 2);
        QVERIFY(!app.model()->isReady());
    }

    void aCorpusCannotBeChosenWhileTraining() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        AppModel app(world.environment);
        prepare(app, corpus);
        QSignalSpy chooser(app.corpus(), &CorpusController::chooserRequested);
        app.train();
        app.setCorpus(world.makeCorpus("other"));
        app.chooseCorpus();
        QCOMPARE(app.corpusURL(), corpus);
        QVERIFY(app.corpus()->hasSummary());
        QCOMPARE(chooser.count(), 0);
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(app.corpusURL(), corpus);
    }

    void errorsCanBeCopiedAndDismissed() {
        TestWorld world;
        AppModel app(world.environment);
        app.setCorpus(world.url("missing"));
        QVERIFY(waitUntilIdle(app));
        app.copyError();
        QCOMPARE(world.clipboard, world.path("missing") + " is not a folder");
        app.dismissError();
        QCOMPARE(app.errorMessage(), QString());
    }

    void aCorpusWithoutAReadableFileIsToldOfWhenItIsLearned() {
        TestWorld world;
        for (int i = 0; i < 20; ++i)
            TestWorld::write(world.path(QStringLiteral("corpus/%1.wav").arg(i)), "no sound");
        AppModel app(world.environment);
        prepare(app, world.url("corpus"));
        QCOMPARE(app.corpus()->unreadable(), 20);
        QVERIFY(!app.model()->isReady());
        QCOMPARE(app.errorMessage(), QString());
        // Learning from it says what is wrong, and generating does, too.
        app.setOutputText(world.path("out"));
        app.generate();
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(app.errorMessage(), QStringLiteral("No usable audio files were found in that folder."));
        QVERIFY(!QFileInfo::exists(world.path("out")));
    }

    // Trained on what is left, the model would belong to no folder.
    void filesThatAreGoneAreToldOfAndCountedAgainBeforeATraining() {
        TestWorld world;
        AppModel app(world.environment);
        const QUrl corpus = world.makeCorpus("corpus", 5);
        for (const char* name : {"corpus/a.wav", "corpus/b.wav", "corpus/c.wav"})
            TestWorld::write(world.path(name), "no sound");
        prepare(app, corpus);
        QCOMPARE(app.corpus()->unreadable(), 3);
        QSignalSpy notices(&app, &AppModel::notice);
        for (const QStringList& gone :
             {QStringList{"corpus/hit1.wav"}, {"corpus/hit2.wav", "corpus/hit4.wav"}}) {
            for (const QString& name : gone)
                QVERIFY(QFile::remove(world.path(name)));
            app.train();
            QVERIFY(QTest::qWaitFor([&] { return notices.count() > 0; }, longestWait));
            QCOMPARE(notices.takeFirst().at(0).toString(),
                     (gone.size() == 1 ? QStringLiteral("1 file is") : QStringLiteral("2 files are")) +
                         " gone since the scan. The folder is scanned again; start once more then.");
            QVERIFY(waitUntilIdle(app));
        }
        QCOMPARE(app.corpus()->fileCount(), 5);
        QVERIFY(!app.model()->isReady());
        app.train();
        QVERIFY(waitUntilIdle(app));
        QVERIFY(app.model()->isReady());
    }

    void aCorpusThatIsGoneAltogetherIsToldOfAndLookedForAgain() {
        TestWorld world;
        AppModel app(world.environment);
        prepare(app, world.makeCorpus("corpus", 3));
        QSignalSpy notices(&app, &AppModel::notice);
        QVERIFY(QDir(world.path("corpus")).removeRecursively());
        app.train();
        QVERIFY(QTest::qWaitFor([&] { return notices.count() > 0; }, longestWait));
        QVERIFY(notices.takeFirst().at(0).toString().startsWith("3 files are gone since the scan."));
        QVERIFY(waitUntilIdle(app));
        QVERIFY(!app.corpus()->hasSummary());
        QCOMPARE(app.errorMessage(), world.path("corpus") + " is not a folder");
    }

    void aScanThatFailedLeavesAReasonAndAWayOn() {
        TestWorld world;
        AppModel app(world.environment);
        QSignalSpy notices(&app, &AppModel::notice);
        app.setCorpus(world.url("late"));
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(app.model()->trainHint(), QStringLiteral("This folder has not been scanned."));
        app.setOutputText(world.path("out"));
        app.generate();
        QCOMPARE(notices.takeFirst().at(0).toString(), QStringLiteral("This folder has not been scanned."));
        world.makeCorpus("late");
        app.corpus()->scanAgain();
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(app.corpus()->fileCount(), 3);
        QVERIFY(app.model()->canTrain());
        QCOMPARE(app.model()->trainHint(), QString());
    }

    void anOutputFolderThatDoesNotAnswerEndsAsAnError() {
        TestWorld world;
        world.cutOff("dead");
        AppModel app(world.environment);
        prepareToGenerate(app, world);
        app.setOutputText(world.path("dead/out"));
        generateAndWait(app);
        QCOMPARE(app.errorMessage(),
                 world.path("dead/out") + " does not answer. Check the drive or the network that it is on.");
    }

    // ---- From one start to the next

    void aRestartLeavesEverythingAsItWas() {
        TestWorld world;
        Aesthetics aesthetics = Preset::named("Wild")->aesthetics;
        {
            AppModel app(world.environment);
            app.model()->setQualityIndex(0);
            app.model()->setAnalysisIndex(2);
            app.model()->setStartIndex(1);
            app.model()->setKeepsSounds(true);
            app.character()->applyPreset("Wild");
            app.character()->parameters()->setValue("pitch", -7);
            aesthetics = app.aesthetics();
            app.setSeedText("18446744073709551615");
            app.output()->setFormatIndex(0);
            app.output()->setDetail(0.35);
            app.setOutputText("~/typed, not used");
            app.setCount(33);
        }
        AppModel app(world.environment);
        QCOMPARE(app.quality(), Quality::quick);
        QCOMPARE(app.analysis(), AnalysisProfile::tonal);
        QVERIFY(app.model()->start() == ModelController::Start::headStart);
        QVERIFY(app.model()->keepsSounds());
        QCOMPARE(app.presetName(), QStringLiteral("Wild"));
        QVERIFY(app.character()->presetEdited());
        QVERIFY(app.aesthetics() == aesthetics);
        QVERIFY(!app.character()->canUndo());
        QCOMPARE(app.seedText(), QStringLiteral("18446744073709551615"));
        QCOMPARE(app.format(), OutputFormat::wav16);
        QCOMPARE(app.output()->detail(), 0.35);
        QCOMPARE(app.outputText(), QStringLiteral("~/typed, not used"));
        QCOMPARE(app.count(), 33);
    }

    void twoWindowsStoreWhatWasSetInEachOfThem() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("Drums");
        {
            AppModel one(world.environment);
            AppModel other(world.environment);
            one.model()->setQualityIndex(0);
            one.output()->setFormatIndex(0);
            one.setCount(44);
            QTRY_VERIFY(TestWorld::read(world.environment.settingsFile).contains("count=44"));
            other.setSeedText("42");
            other.setCorpus(corpus);  // which suggests an output folder
            QVERIFY(waitUntilIdle(other));
        }
        AppModel app(world.environment);
        QCOMPARE(app.quality(), Quality::quick);
        QCOMPARE(app.format(), OutputFormat::wav16);
        QCOMPARE(app.count(), 44);
        QCOMPARE(app.seedText(), QStringLiteral("42"));
    }

    void whatIsSetIsStoredAMomentLater() {
        TestWorld world;
        AppModel app(world.environment);
        app.setSeedText("42");
        QTRY_VERIFY(TestWorld::read(world.environment.settingsFile).contains("seed=42"));
    }

    void presetsThatAreReadLaterAreNothingThatWasSet() {
        TestWorld world;
        {
            AppModel app(world.environment);
            app.character()->saveOwnPreset("Mine");
            QTRY_COMPARE(app.character()->presets()->count(), 9);
        }
        world.writePreferences("count=7\n");
        const QByteArray before = TestWorld::read(world.environment.settingsFile);
        {
            AppModel app(world.environment);
            QTRY_COMPARE(app.character()->presets()->count(), 9);
        }
        QCOMPARE(TestWorld::read(world.environment.settingsFile), before);
    }

    void aSessionThatMakesNoSenseIsForgotten_data() {
        QTest::addColumn<QByteArray>("lines");
        QTest::newRow("names") << QByteArray("quality=best\nanalysis=x\nformat=mp3\n");
        QTest::newRow("types") << QByteArray(
            "quality=@Point(1 2)\nformat=a, b\nstart=@Point(1 2)\ndetail=much\nparameters=@Point(1 2)\n");
        QTest::newRow("no object") << QByteArray("parameters=7\npreset=Wild\n");
        QTest::newRow("no numbers") << QByteArray("parameters=\"{\\\"drift\\\": \\\"x\\\"}\"\npreset=Wild\n");
    }
    void aSessionThatMakesNoSenseIsForgotten() {
        QFETCH(QByteArray, lines);
        TestWorld world;
        world.writePreferences(lines);
        AppModel app(world.environment);
        QCOMPARE(app.quality(), Quality::standard);
        QCOMPARE(app.analysis(), AnalysisProfile::automatic);
        QCOMPARE(app.format(), OutputFormat::wav24);
        QVERIFY(app.model()->start() == ModelController::Start::scratch);
        QVERIFY(!app.model()->keepsSounds());
        QCOMPARE(app.output()->detail(), 0.0);
        QVERIFY(app.aesthetics() == Aesthetics());
        QCOMPARE(app.presetName(), QStringLiteral("Balanced"));
        QCOMPARE(app.errorMessage(), QString());
    }

    // ---- The head start

    void aFolderIsHeardBeforeItIsLearned() {
        TestWorld world;
        writeHeadStart(world.environment.headStartFolder);
        AppModel app(world.environment);
        app.model()->setStartIndex(1);
        prepare(app, world.makeCorpus("Drums"));
        app.setSeedText("5");
        QVERIFY(app.generation()->canAudition());
        app.audition();
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(app.errorMessage(), QString());
        QTRY_COMPARE(app.playingURL(), app.generation()->auditionURL());
        QVERIFY(!app.model()->isReady());
        const QByteArray before = TestWorld::read(app.generation()->auditionURL().toLocalFile());
        app.train();
        QVERIFY(waitUntilIdle(app));
        QVERIFY(app.model()->isReady());
        app.audition();
        QVERIFY(waitUntilIdle(app));
        QVERIFY(TestWorld::read(app.generation()->auditionURL().toLocalFile()) != before);
    }

    // Who wants silence does not lose what is being learned.
    void cancellingAnAuditionLeavesTheLearningAlone() {
        TestWorld world;
        writeHeadStart(world.environment.headStartFolder);
        Gate learning;
        world.inTheMidst(Run::training, 1, [&] { learning.pass(); });
        AppModel app(world.environment);
        app.model()->setStartIndex(1);
        prepare(app, world.makeCorpus("Drums"));
        learning.close();
        app.train();
        QVERIFY(QTest::qWaitFor([&] { return app.generation()->canAudition(); }, longestWait));
        app.audition();
        app.cancel();
        QVERIFY(app.generation()->isCancelling());
        QVERIFY(QTest::qWaitFor([&] { return !app.generation()->isAuditioning(); }, longestWait));
        QVERIFY(app.playingURL().isEmpty());
        QVERIFY(app.isTraining() && !app.model()->isCancelling());
        app.cancel();
        QVERIFY(app.model()->isCancelling());
        learning.open();
        QVERIFY(waitUntilIdle(app));
        QVERIFY(!app.model()->isReady());
    }

    void aHeadStartThatIsMissingIsTheAuditionsError() {
        TestWorld world;
        AppModel app(world.environment);
        app.model()->setStartIndex(1);
        prepare(app, world.makeCorpus("Drums"));
        app.audition();
        QVERIFY(waitUntilIdle(app));
        QVERIFY2(app.errorMessage().contains("percussive.base"), qPrintable(app.errorMessage()));
    }

    // ---- Detail

    void aRunAndAnAuditionHaveTheDetailThatIsSet() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        app.setOutputText(world.path("out"));
        app.setCount(2);
        app.output()->setDetail(0.5);
        app.generate();
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(app.results()->rowCount(), 2);
        for (const GeneratedSample& sample : app.results()->all()) {
            QCOMPARE(sample.origin.detail, 0.5);
            QCOMPARE(sample.origin.detailBasis, DetailBasis::sources);
        }
    }

    void keptSoundsStandInForThoseOfAnotherFolder() {
        TestWorld world;
        AppModel app(world.environment);
        app.model()->setKeepsSounds(true);
        prepareTrained(app, world.makeCorpus("Drums"));
        const auto model = app.model()->storedFolder();
        prepare(app, world.makeCorpus("Others", 2));
        QVERIFY(!app.model()->isReady());
        app.model()->load(model);
        QVERIFY(waitUntilIdle(app));
        app.setOutputText(world.path("out"));
        app.setCount(2);
        app.output()->setDetail(1);
        generateAndWait(app);
        QCOMPARE(app.results()->rowCount(), 2);
        for (const GeneratedSample& sample : app.results()->all())
            QCOMPARE(sample.origin.detailBasis, DetailBasis::kept);
    }

    void noiseInPlaceOfTheSamplesIsToldOf() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        QVERIFY(QDir(world.path("Drums")).removeRecursively());
        const QSignalSpy notices(&app, &AppModel::notice);
        const QString all = "The learned samples could not be read: noise stands in for their detail.";
        app.setOutputText(world.path("out"));
        app.generate();
        QVERIFY(waitUntilIdle(app));
        QVERIFY(notices.isEmpty());
        app.output()->setDetail(1);
        app.generate();
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(notices.size(), 1);
        QCOMPARE(notices.at(0).at(0).toString(), all);
        app.audition();
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(notices.size(), 2);
        QCOMPARE(notices.at(1).at(0).toString(), all);
    }

    void comparesTheLastAuditionWithAndWithoutDetail() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        const auto heard = [&] {
            if (!waitUntilIdle(app)) qFatal("the audition does not end");
            return TestWorld::read(app.generation()->auditionURL().toLocalFile());
        };
        app.output()->setDetail(0.8);
        app.output()->setDetail(0);
        app.audition();
        const QByteArray without = heard();
        app.compareDetail();
        QCOMPARE(app.output()->detail(), 0.8);
        const QByteArray with = heard();
        QVERIFY(!with.isEmpty() && with != without);
        app.compareDetail();
        QCOMPARE(app.output()->detail(), 0.0);
        QCOMPARE(heard(), without);
    }

    void comparingWaitsForWhatRuns() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        app.audition();
        const QSignalSpy notices(&app, &AppModel::notice);
        app.compareDetail();
        QCOMPARE(app.output()->detail(), 0.0);
        QCOMPARE(notices.size(), 1);
        QVERIFY(waitUntilIdle(app));
    }

    // ---- What runs

    void isBusyWhileAnythingRuns() {
        TestWorld world;
        AppModel app(world.environment);
        QSignalSpy busy(&app, &AppModel::isBusyChanged);
        app.setCorpus(world.makeCorpus("corpus"));
        QVERIFY(app.isBusy() && app.canChooseDevice() && !app.generation()->canGenerate());
        QVERIFY(waitUntilIdle(app));
        QVERIFY(app.generation()->canGenerate() && app.model()->canTrain());
        app.train();
        QVERIFY(app.isBusy() && !app.canChooseDevice() && !app.corpus()->canChoose());
        QVERIFY(waitUntilIdle(app));
        QVERIFY(app.generation()->canAudition() && app.corpus()->canChoose());
        QCOMPARE(busy.count(), 4);
    }

    void cancelStopsAScan() {
        TestWorld world;
        Gate gate;
        world.holdRuns(gate);
        AppModel app(world.environment);
        app.setCorpus(world.makeCorpus("corpus", 40, 0.01));
        app.cancel();
        gate.open();
        QVERIFY(waitUntilIdle(app));
        QVERIFY(app.summary() == nullptr);
    }

    void cancelStopsAGeneration() {
        TestWorld world;
        AppModel app(world.environment);
        prepareToGenerate(app, world, 100000);
        app.generate();
        app.cancel();
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(app.results()->count(), 0);
        QCOMPARE(app.errorMessage(), QString());
    }

    void closingDuringAGenerationCancelsAndWaits() {
        TestWorld world;
        auto app = std::make_unique<AppModel>(world.environment);
        prepareToGenerate(*app, world, 100000);
        app->generate();
        QVERIFY(QTest::qWaitFor([&] { return app->generation()->done() > 0; }, longestWait));
        QElapsedTimer clock;
        clock.start();
        app.reset();
        QVERIFY2(clock.elapsed() < 10000, "waits for the running variations, not for all");
    }

    // ---- Generation

    void trainsFirstWhenThereIsNoModel() {
        TestWorld world;
        AppModel app(world.environment);
        prepare(app, world.makeCorpus("corpus"));
        app.setOutputText(world.path("out"));
        app.setCount(2);
        bool returned = false;
        app.generate([&] { returned = true; });
        QVERIFY(app.isTraining());
        QVERIFY(!app.isGenerating());
        QVERIFY(QTest::qWaitFor([&] { return returned; }, longestWait));
        QVERIFY(app.model()->isReady());
        QCOMPARE(app.results()->count(), 2);
        QVERIFY(!app.isBusy());
    }

    void stopsWhenTheTrainingGaveNoModel() {
        TestWorld world;
        world.steps = 1000000;
        AppModel app(world.environment);
        prepare(app, world.makeCorpus("corpus"));
        app.setOutputText(world.path("out"));
        bool returned = false;
        app.generate([&] { returned = true; });
        app.cancel();
        QVERIFY(QTest::qWaitFor([&] { return returned; }, longestWait));
        QVERIFY(!app.isBusy());
        QVERIFY(!QFileInfo::exists(world.path("out")));
        QCOMPARE(app.errorMessage(), QString());
    }

    void waitsForAModelThatIsBeingLoaded() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        AppModel app(world.environment);
        prepareTrained(app, corpus);
        app.setOutputText(world.path("out"));
        app.setCount(1);
        QSignalSpy training(app.model(), &ModelController::isTrainingChanged);
        app.setCorpus(corpus);
        QVERIFY(QTest::qWaitFor([&] { return app.model()->isLoading(); }));
        bool returned = false;
        app.generate([&] { returned = true; });
        QVERIFY(QTest::qWaitFor([&] { return returned; }, longestWait));
        QCOMPARE(training.count(), 0);
        QCOMPARE(app.results()->count(), 1);
    }

    void aDamagedModelThatIsBeingLoadedIsNotReplacedUnasked() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        AppModel app(world.environment);
        prepareTrained(app, corpus);
        const auto weights =
            ModelStore::directory(*app.summary(), world.environment.modelsRoot) / "weights.bin";
        std::filesystem::resize_file(weights, 100);
        app.setOutputText(world.path("out"));
        app.setCorpus(corpus);
        QVERIFY(QTest::qWaitFor([&] { return app.model()->isLoading(); }));
        bool returned = false;
        app.generate([&] { returned = true; });
        QVERIFY(QTest::qWaitFor([&] { return returned; }, longestWait));
        QVERIFY(!app.isTraining());
        QVERIFY(!app.model()->problem().isEmpty());
        QCOMPARE(std::filesystem::file_size(weights), 100U);
    }

    void trainingIsRefusedWhileGenerating() {
        TestWorld world;
        AppModel app(world.environment);
        prepareToGenerate(app, world);
        QSignalSpy training(app.model(), &ModelController::isTrainingChanged);
        app.generate();
        app.train();
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(training.count(), 0);
        QCOMPARE(app.results()->count(), 3);
    }

    void aNumberAsSeedRepeatsTheResults() {
        TestWorld world;
        AppModel app(world.environment);
        prepareToGenerate(app, world, 2);
        app.setSeedText(" 42 ");
        generateAndWait(app);
        QCOMPARE(app.character()->lastSeed(), QStringLiteral("42"));
        const QByteArray first = bytesOfResult(app, 0);
        const QByteArray second = bytesOfResult(app, 1);
        QVERIFY(first.size() > 44 && first != second);
        generateAndWait(app);
        QCOMPARE(fileNames(app), QStringList({"corpus_var_0003.wav", "corpus_var_0004.wav"}));
        QCOMPARE(bytesOfResult(app, 0), first);
        QCOMPARE(bytesOfResult(app, 1), second);
    }

    void resultsKnowTheModelThatMadeThemWhenAnotherOneIsLearned() {
        TestWorld world;
        AppModel app(world.environment);
        prepareToGenerate(app, world, 2);
        app.setSeedText("42");
        generateAndWait(app);
        const std::string first = modelIdentity(*app.bundle());
        world.steps = 3;
        app.train();
        QVERIFY(waitUntilIdle(app));
        QVERIFY(modelIdentity(*app.bundle()) != first);
        for (std::size_t i = 0; i < 2; ++i) {
            const SampleOrigin& origin = app.results()->all()[i].origin;
            QCOMPARE(origin.model, first);
            QCOMPARE(origin.seed, SampleGenerator::variationSeed(42, i));
            QCOMPARE(origin.index, static_cast<std::int64_t>(i));
            QVERIFY(!origin.sources.empty());
        }
    }

    void remembersOutputAndCountWhenItStarts() {
        TestWorld world;
        {
            AppModel app(world.environment);
            prepareToGenerate(app, world, 2);
        }
        {
            AppModel notYet(world.environment);  // as they were set, though nothing has been generated
            QCOMPARE(notYet.outputText(), world.path("out"));
            QCOMPARE(notYet.count(), 2);
        }
        {
            AppModel app(world.environment);
            QVERIFY(waitUntilIdle(app));
            app.setOutputText(world.path("out"));
            app.setCount(2);
            generateAndWait(app);
        }
        AppModel restarted(world.environment);
        QCOMPARE(restarted.outputText(), world.path("out"));
        QCOMPARE(restarted.count(), 2);
    }

    void doesNotNeedTheCorpusAnyMore() {
        TestWorld world;
        AppModel app(world.environment);
        prepareToGenerate(app, world, 1);
        QVERIFY(QDir(world.path("corpus")).removeRecursively());
        generateAndWait(app);
        QCOMPARE(app.errorMessage(), QString());
        QCOMPARE(app.results()->count(), 1);
    }

    void doesNotNeedTheCorpusOrTheStoredModelMeanwhile() {
        TestWorld world;
        world.inTheMidst(Run::generation, 1, [&] {
            QDir(world.path("corpus")).removeRecursively();
            QDir(toQString(world.environment.modelsRoot)).removeRecursively();
        });
        AppModel app(world.environment);
        prepareToGenerate(app, world, 5);
        generateAndWait(app);
        QVERIFY(!QFileInfo::exists(world.path("corpus")));
        QCOMPARE(app.errorMessage(), QString());
        QCOMPARE(app.results()->count(), 5);
    }

    void aCorpusCannotBeChosenMeanwhile() {
        TestWorld world;
        AppModel app(world.environment);
        prepareToGenerate(app, world);
        const QUrl corpus = app.corpusURL();
        app.generate();
        app.setCorpus(world.makeCorpus("other"));
        QCOMPARE(app.corpusURL(), corpus);
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(app.results()->count(), 3);
    }

    void stopsThePlayback() {
        TestWorld world;
        AppModel app(world.environment);
        prepareToGenerate(app, world, 1);
        app.play(world.url("corpus/hit0.wav"));
        QTRY_VERIFY(!app.playingURL().isEmpty());
        app.generate();
        QVERIFY(app.playingURL().isEmpty());
        QVERIFY(!world.player->isPlaying());
        QVERIFY(waitUntilIdle(app));
    }

    // New results silence results only: what is heard on the map or in a dialog is none.
    void leavesAloneWhatIsHeardMeanwhile() {
        TestWorld world;
        Gate writing;
        world.inTheMidst(Run::generation, 1, [&] { writing.pass(); });
        AppModel app(world.environment);
        prepareToGenerate(app, world, 2);
        writing.close();
        app.generate();
        app.play(world.url("corpus/hit0.wav"));
        QTRY_COMPARE(app.playingURL(), world.url("corpus/hit0.wav"));
        writing.open();
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(app.results()->count(), 2);
        QCOMPARE(app.playingURL(), world.url("corpus/hit0.wav"));
    }

    void twoInstancesNeverOverwriteEachOther() {
        TestWorld world;
        AppModel one(world.environment);
        prepareToGenerate(one, world, 8);
        QTRY_VERIFY(TestWorld::read(world.environment.settingsFile).contains("corpusPath="));
        AppModel other(world.environment);
        QVERIFY(waitUntilIdle(other));
        other.setOutputText(world.path("out"));
        other.setCount(8);
        one.generate();
        other.generate();
        QVERIFY(waitUntilIdle(one));
        QVERIFY(waitUntilIdle(other));
        QCOMPARE(one.errorMessage(), QString());
        QCOMPARE(other.errorMessage(), QString());
        QCOMPARE(QDir(world.path("out")).entryList({"*.wav"}, QDir::Files).size(), 16);
    }

    void showsTheFilesInTheFileManager() {
        TestWorld world;
        AppModel app(world.environment);
        app.showInFileManager();
        QCOMPARE(app.errorMessage(), QStringLiteral("Choose an output folder first."));
        prepareToGenerate(app, world, 2);
        generateAndWait(app);
        app.showInFileManager();
        QTRY_COMPARE(world.shownFolder, world.url("out"));
        QCOMPARE(world.shownFiles,
                 QList<QUrl>({world.url("out/corpus_var_0001.wav"), world.url("out/corpus_var_0002.wav")}));
        world.hasFileManager = false;
        app.showInFileManager();
        QTRY_VERIFY(app.errorMessage().contains(world.path("out")));
    }

    // ---- Auditions and playback

    void anAuditionIsPlayed() {
        TestWorld world;
        AppModel app(world.environment);
        prepareToGenerate(app, world, 1);
        app.output()->setFormatIndex(2);
        app.audition();
        QVERIFY(app.isAuditioning());
        QVERIFY(app.isBusy());
        QVERIFY(waitUntilIdle(app));
        const QString file = world.path("tmp/Quillmere-audition.wav");
        QTRY_COMPARE(app.playingURL(), QUrl::fromLocalFile(file));
        QVERIFY(app.playingURL() == app.generation()->auditionURL());
        const QByteArray bytes = TestWorld::read(file);
        QCOMPARE(static_cast<int>(bytes.at(34)), 16);  // whatever the format of the output
        QCOMPARE(AudioIO::readMono(toPath(file)).sampleRate, 8000.0);
        QCOMPARE(app.results()->count(), 0);
        QCOMPARE(app.errorMessage(), QString());
    }

    void anAuditionIsTheFirstVariationOfAGeneration() {
        TestWorld world;
        AppModel app(world.environment);
        prepareToGenerate(app, world, 1);
        app.setSeedText("7");
        app.audition();
        QVERIFY(waitUntilIdle(app));
        app.setOutputText(world.path("out"));
        app.setCount(1);
        app.output()->setFormatIndex(0);
        app.generate();
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(TestWorld::read(world.path("out/corpus_var_0001.wav")),
                 TestWorld::read(world.path("tmp/Quillmere-audition.wav")));
    }

    void nothingElseStartsDuringAnAudition() {
        TestWorld world;
        AppModel app(world.environment);
        prepareToGenerate(app, world, 1);
        app.setOutputText(world.path("out"));
        QSignalSpy notice(&app, &AppModel::notice);
        app.audition();
        app.generate();
        QVERIFY(!app.isGenerating());
        QCOMPARE(notice.count(), 1);
        QVERIFY(waitUntilIdle(app));
    }

    void noTrainingStartsDuringAnAudition() {
        TestWorld world;
        AppModel app(world.environment);
        prepareToGenerate(app, world, 1);
        QSignalSpy notice(&app, &AppModel::notice);
        app.audition();
        app.train();
        QVERIFY(!app.isTraining());
        QCOMPARE(notice.count(), 1);
        app.cancel();
        QVERIFY(waitUntilIdle(app));
        deliverEvents();
        QVERIFY(app.playingURL().isEmpty());
    }

    void whatIsNoLongerShownFallsSilent() {
        TestWorld world;
        AppModel app(world.environment);
        prepareToGenerate(app, world, 2);
        app.setOutputText(world.path("out"));
        app.generate();
        QVERIFY(waitUntilIdle(app));
        app.togglePlay(app.results()->urlAt(0));
        QTRY_COMPARE(app.playingURL(), app.results()->urlAt(0));
        app.setCorpus(app.corpusURL());
        QVERIFY(app.playingURL().isEmpty());
        QVERIFY(!world.player->isPlaying());
        QVERIFY(waitUntilIdle(app));
        app.audition();
        QTRY_VERIFY(app.playingURL() == app.generation()->auditionURL());
        app.setCorpus(app.corpusURL());  // its Stop stays where it is
        QVERIFY(app.playingURL() == app.generation()->auditionURL());
    }

    void generatingNeverReplacesAModelThatCouldNotBeLookedAt() {
        TestWorld world;
        AppModel app(world.environment);
        prepareToGenerate(app, world, 2);
        app.setOutputText(world.path("out"));
        const QString folder = toQString(ModelStore::directory(*app.summary(), world.environment.modelsRoot));
        const QString manifest = folder + "/model.json";
        QVERIFY(QFile::rename(manifest, folder + "/away"));
        QVERIFY(QFile::link(manifest, manifest));  // which leads nowhere but to itself
        app.setCorpus(app.corpusURL());
        QVERIFY(waitUntilIdle(app));
        QVERIFY(!app.errorMessage().isEmpty());
        QVERIFY(app.model()->isUnopened());
        app.generate();
        QVERIFY(!app.isTraining());
        QVERIFY(waitUntilIdle(app));
        QVERIFY(!app.isTraining() && !app.isGenerating());
        QVERIFY(!app.errorMessage().isEmpty());
        QVERIFY(QFile::remove(manifest) && QFile::rename(folder + "/away", manifest));
        app.generate();  // finds it
        QVERIFY(QTest::qWaitFor([&] { return app.results()->count() == 2; }, longestWait));
        QVERIFY(waitUntilIdle(app));
        QVERIFY(!QFileInfo::exists(folder + ".kept") && !QFileInfo::exists(folder + ".damaged"));
    }

    void anAuditionWaitsForAModelThatIsBeingLoaded() {
        TestWorld world;
        AppModel app(world.environment);
        prepareToGenerate(app, world, 1);
        app.setCorpus(app.corpusURL());
        QVERIFY(QTest::qWaitFor([&] { return app.model()->isLoading(); }));
        app.audition();
        QTRY_VERIFY(app.playingURL() == app.generation()->auditionURL());
        QCOMPARE(app.errorMessage(), QString());
    }

    void aResultDeletedBeforeItIsPlayedIsMarked() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("corpus"));
        app.setOutputText(world.path("out"));
        app.setCount(2);
        app.generate();
        QVERIFY(waitUntilIdle(app));
        const QUrl deleted = app.results()->urlAt(0);
        QVERIFY(QFile::remove(deleted.toLocalFile()));
        app.togglePlay(deleted);
        QTRY_VERIFY(!app.results()->existsAt(0));
        QVERIFY(app.results()->existsAt(1));
        QVERIFY(app.playingURL().isEmpty());
        QCOMPARE(app.errorMessage(), QString());
        app.togglePlay(app.results()->urlAt(1));
        QTRY_COMPARE(app.playingURL(), app.results()->urlAt(1));
        QVERIFY(app.results()->index(1).data(ResultsModel::IsPlayingRole).toBool());
        QVERIFY(!app.results()->index(0).data(ResultsModel::IsPlayingRole).toBool());
    }

    void whatIsAboutToSoundOfALearningIsSilentAfterIt() {
        TestWorld world;
        AppModel app(world.environment);
        prepare(app, world.makeCorpus("corpus"));
        const QUrl sound = app.model()->sound()->url();
        AudioIO::write(sine(440, 8000, 8000, 0.5), toPath(sound.toLocalFile()), 8000, OutputFormat::wav16);
        connect(app.model(), &ModelController::bundleChanged, &app, [&] { app.play(sound); });
        app.train();
        QVERIFY(waitUntilIdle(app));
        deliverEvents();
        QVERIFY(app.model()->isReady());
        QCOMPARE(app.playingURL(), QUrl());
        QVERIFY(!world.player->isPlaying());
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::AppModelTest)
#include "AppModelTest.moc"
