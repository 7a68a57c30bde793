// Choosing a corpus: the scan, its facts, newer choices, and the stored model that is found.

#include <QObject>

#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/Gate.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereCore/Model/ModelStore.h"

namespace quillmere::testing {

class AppModelCorpusTest : public QObject {
    Q_OBJECT

private slots:
    void showsTheFactsOfTheFolder() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("kicks", 12, 0.25);
        AudioIO::write(std::vector<float>(44100, 0.1F), toPath(world.path("kicks/other rate.wav")), 44100,
                       OutputFormat::wav16);
        TestWorld::write(world.path("kicks/text.wav"), "no sound");
        AppModel model(world.environment);
        QSignalSpy scanning(&model, &AppModel::isScanningChanged);
        QSignalSpy summary(&model, &AppModel::summaryChanged);
        model.setCorpus(corpus);
        QVERIFY(model.isScanning());
        QVERIFY(model.isBusy());
        QVERIFY(!model.hasSummary());
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(scanning.count(), 2);
        QCOMPARE(summary.count(), 2);
        QCOMPARE(model.corpusName(), QStringLiteral("kicks"));
        QCOMPARE(model.fileCount(), 14);
        QCOMPARE(model.unreadable(), 1);
        QCOMPARE(model.totalSeconds(), 12 * 0.25 + 1);
        QCOMPARE(model.totalDuration(), QStringLiteral("4.00 s"));
        QCOMPARE(model.sampleRates(), QStringList({"8 kHz", "44.1 kHz"}));
        QVERIFY(!model.corpusIsEmpty());
        QVERIFY(!model.hasFewSamples());
        QVERIFY(!model.hasModel());
        QVERIFY(model.canTrain());
    }

    void warnsOfFewUsableSamples() {
        TestWorld world;
        AppModel model(world.environment);
        model.setCorpus(world.makeCorpus("few", AppModel::fewSamplesLimit - 1));
        QVERIFY(waitUntilIdle(model));
        QVERIFY(model.hasFewSamples());
        model.setCorpus(world.makeCorpus("enough", AppModel::fewSamplesLimit));
        QVERIFY(waitUntilIdle(model));
        QVERIFY(!model.hasFewSamples());
    }

    void saysThatAFolderHasNoAudio() {
        TestWorld world;
        QDir().mkpath(world.path("empty"));
        AppModel model(world.environment);
        QCOMPARE(model.trainHint(), QStringLiteral("Choose a corpus first."));
        model.setCorpus(world.url("empty"));
        QVERIFY(waitUntilIdle(model));
        QVERIFY(model.corpusIsEmpty());
        QVERIFY(!model.hasFewSamples());
        QVERIFY(!model.canTrain());
        QCOMPARE(model.errorMessage(), QString());
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
        AppModel model(world.environment);
        model.setCorpus(world.url(name));
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.errorMessage(), world.path(name) + " is not a folder");
        QVERIFY(!model.hasSummary());
    }

    void refusesWhatIsNotOnThisComputer() {
        TestWorld world;
        AppModel model(world.environment);
        model.setCorpus(QUrl("https://example.org/samples"));
        QVERIFY(!model.hasCorpus());
        QVERIFY(!model.errorMessage().isEmpty());
        QVERIFY(!model.isFolder(QUrl("https://example.org/samples")));
        QVERIFY(!model.isFolder(world.url("missing")));
        QVERIFY(model.isFolder(world.makeCorpus("corpus")));
    }

    void aSecondChoiceDropsTheScanOfTheFirst() {
        TestWorld world;
        const QUrl first = world.makeCorpus("first", 5);
        const QUrl second = world.makeCorpus("second", 2);
        AppModel model(world.environment);
        QSignalSpy summaries(&model, &AppModel::summaryChanged);
        model.setCorpus(first);
        AppModelProbe::waitForWork(model);  // the first scan has ended and its result waits to be delivered
        model.setCorpus(second);
        QVERIFY(model.isScanning());
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.corpusURL(), second);
        QCOMPARE(model.fileCount(), 2);
        QCOMPARE(summaries.count(), 3);  // cleared twice, set once
    }

    void aFailedScanOfAnOlderChoiceIsNotReported() {
        TestWorld world;
        AppModel model(world.environment);
        model.setCorpus(world.url("missing"));
        AppModelProbe::waitForWork(model);
        model.setCorpus(world.makeCorpus("there"));
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.errorMessage(), QString());
        QVERIFY(model.hasSummary());
    }

    void choosingTheSameFolderAgainScansAgain() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus", 2);
        AppModel model(world.environment);
        prepare(model, corpus);
        world.makeCorpus("corpus", 4);
        model.setCorpus(corpus);
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.fileCount(), 4);
    }

    void aFolderDeletedOnceItsFilesAreCountedHasNoneThatCanBeRead() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus", 20, 0.01);
        world.inTheMidst(Run::scan, 0, [&] { QDir(world.path("corpus")).removeRecursively(); });
        AppModel model(world.environment);
        prepare(model, corpus);
        QVERIFY(!QFileInfo::exists(world.path("corpus")));
        QCOMPARE(model.unreadable(), 20);
        QVERIFY(!model.hasModel());
        QCOMPARE(model.errorMessage(), QString());
        // Learning from it says what is wrong, and generating does, too.
        model.setOutputText(world.path("out"));
        model.generate();
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.errorMessage(), QStringLiteral("No usable audio files were found in that folder."));
        QVERIFY(!QFileInfo::exists(world.path("out")));
    }

    void aFolderDeletedHalfWayThroughItsScanKeepsWhatWasMeasured() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus", 60, 0.01);
        world.inTheMidst(Run::scan, 10, [&] { QDir(world.path("corpus")).removeRecursively(); });
        AppModel model(world.environment);
        prepare(model, corpus);
        QCOMPARE(model.fileCount(), 60);
        // The files that other threads were at, at that moment, may have come through.
        QVERIFY2(model.unreadable() > 0 && model.unreadable() <= 50,
                 qPrintable(QString::number(model.unreadable())));
        model.setCorpus(corpus);
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.errorMessage(), world.path("corpus") + " is not a folder");
    }

    void aFolderDeletedBeforeItIsScannedIsNone() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        QVERIFY(QDir(world.path("corpus")).removeRecursively());
        AppModel model(world.environment);
        model.setCorpus(corpus);
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.errorMessage(), world.path("corpus") + " is not a folder");
        QVERIFY(!model.hasSummary());
    }

    void aScanCanBeCancelled() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus", 40, 0.01);
        Gate gate;
        gate.close();
        world.environment.onProgress = [&gate](Run, std::int64_t) { gate.pass(); };
        AppModel model(world.environment);
        model.setCorpus(corpus);
        model.cancel();
        gate.open();
        QVERIFY(model.isCancelling());
        QVERIFY(waitUntilIdle(model));
        QVERIFY(!model.isCancelling());
        QVERIFY(!model.hasSummary());
        QCOMPARE(model.errorMessage(), QString());
        model.setCorpus(corpus);
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.fileCount(), 40);
    }

    void countsTheFilesWhileItScans() {
        TestWorld world;
        AppModel model(world.environment);
        QSignalSpy progress(&model, &AppModel::scanProgressChanged);
        int total = 0;
        connect(&model, &AppModel::scanProgressChanged, &model,
                [&] { total = std::max(total, model.scanTotal()); });
        prepare(model, world.makeCorpus("corpus", 20));
        QVERIFY(progress.count() >= 2);
        QCOMPARE(total, 20);
    }

    void aNewCorpusDiscardsTheOldStateAtOnce() {
        TestWorld world;
        AppModel model(world.environment);
        prepareTrained(model, world.makeCorpus("first"));
        model.setOutputText(world.path("out"));
        model.setCount(1);
        model.generate();
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.results()->count(), 1);
        model.setCorpus(world.makeCorpus("second"));
        QVERIFY(!model.hasSummary());
        QVERIFY(!model.hasModel());
        QCOMPARE(model.results()->count(), 0);
        QCOMPARE(model.lastOutputFolder(), world.url("out"));
    }

    void findsTheModelOfTheFolderAgain() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        {
            AppModel model(world.environment);
            prepareTrained(model, corpus);
        }
        AppModel model(world.environment);  // restores the folder
        QVERIFY(waitUntilIdle(model));
        QVERIFY(model.hasModel());
        QCOMPARE(model.modelSteps(), 2);
        QCOMPARE(model.modelClipCount(), 3);
        QCOMPARE(model.modelAnalysis(), QStringLiteral("Percussive (sharp attacks)"));
        QCOMPARE(model.modelClipSeconds(), 32 * 256 / 8000.0);
        QCOMPARE(model.modelClipSecondsText(), QStringLiteral("1.0"));
        QVERIFY(std::abs(model.modelTrainedAt().secsTo(QDateTime::currentDateTime())) < 120);
        QCOMPARE(model.modelProblem(), QString());
    }

    void aChangedFolderHasNoModel() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        AppModel model(world.environment);
        prepareTrained(model, corpus);
        world.makeCorpus("corpus", 4);
        prepare(model, corpus);
        QVERIFY(!model.hasModel());
    }

    void reportsADamagedModelAndKeepsItsFiles_data() {
        QTest::addColumn<QString>("file");
        QTest::addColumn<int>("bytesLeft");  // negative: that many less
        QTest::newRow("one byte of weights missing") << "weights.bin" << -1;
        QTest::newRow("empty weights") << "weights.bin" << 0;
        QTest::newRow("JSON cut in half") << "model.json" << 300;
        QTest::newRow("empty JSON") << "model.json" << 0;
    }
    void reportsADamagedModelAndKeepsItsFiles() {
        QFETCH(QString, file);
        QFETCH(int, bytesLeft);
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        AppModel model(world.environment);
        prepareTrained(model, corpus);
        const QString folder =
            toQString(ModelStore::directory(*model.summary(), world.environment.modelsRoot));
        const QString damaged = folder + "/" + file;
        const QByteArray whole = TestWorld::read(damaged);
        const QByteArray cut = whole.left(bytesLeft < 0 ? whole.size() + bytesLeft : bytesLeft);
        TestWorld::write(damaged, cut);

        prepare(model, corpus);
        QVERIFY(!model.hasModel());
        QVERIFY(!model.errorMessage().isEmpty());
        if (bytesLeft < 0)
            QCOMPARE(model.errorMessage(),
                     QStringLiteral("Model weights do not match the saved configuration"));
        QVERIFY(model.modelProblem().contains("Retrain"));
        QCOMPARE(TestWorld::read(damaged), cut);

        model.train();
        QVERIFY(waitUntilIdle(model));
        QVERIFY(model.hasModel());
        QCOMPARE(model.modelProblem(), QString());
        QCOMPARE(TestWorld::read(damaged).size(), whole.size());
        QCOMPARE(TestWorld::read(folder + ".damaged/" + file), cut);

        TestWorld::write(damaged, cut);
        prepareTrained(model, corpus);
        QCOMPARE(TestWorld::read(folder + ".damaged-2/" + file), cut);
        model.train();  // over a model that is whole
        QVERIFY(waitUntilIdle(model));
        QVERIFY(!QFileInfo::exists(folder + ".damaged-3"));
    }

    void aModelWithHalfItsFilesIsNone() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        AppModel model(world.environment);
        prepareTrained(model, corpus);
        const auto folder = ModelStore::directory(*model.summary(), world.environment.modelsRoot);
        std::filesystem::remove(folder / "model.json");
        prepare(model, corpus);
        QVERIFY(!model.hasModel());
        QCOMPARE(model.errorMessage(), QString());
        QCOMPARE(model.modelProblem(), QString());
    }

    void aChoiceWhileAModelIsLoadedWins() {
        TestWorld world;
        const QUrl trained = world.makeCorpus("trained");
        const QUrl other = world.makeCorpus("other", 2);
        AppModel model(world.environment);
        prepareTrained(model, trained);
        model.setCorpus(trained);
        QVERIFY(QTest::qWaitFor([&] { return model.isLoadingModel(); }));
        AppModelProbe::waitForWork(model);  // the model is loaded and waits to be delivered
        model.setCorpus(other);
        QVERIFY(!model.isLoadingModel());
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.fileCount(), 2);
        QVERIFY(!model.hasModel());
    }

    void isRefusedWhileTraining() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        AppModel model(world.environment);
        prepare(model, corpus);
        QSignalSpy chooser(&model, &AppModel::corpusChooserRequested);
        model.train();
        model.setCorpus(world.makeCorpus("other"));
        model.chooseCorpus();
        QCOMPARE(model.corpusURL(), corpus);
        QVERIFY(model.hasSummary());
        QCOMPARE(chooser.count(), 0);
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.corpusURL(), corpus);
    }

    void theChooserStartsBesideTheCorpusOrAtHome() {
        TestWorld world;
        AppModel model(world.environment);
        QSignalSpy chooser(&model, &AppModel::corpusChooserRequested);
        model.chooseCorpus();
        QCOMPARE(chooser.takeFirst().at(0).toUrl(), world.url("home"));
        prepare(model, world.makeCorpus("kits/corpus"));
        model.chooseCorpus();
        QCOMPARE(chooser.takeFirst().at(0).toUrl(), world.url("kits"));
        QCOMPARE(model.corpusChooserMessage(),
                 QStringLiteral("Choose the folder of audio samples to learn from"));
        QCOMPARE(model.chooserButton(), QStringLiteral("Use Folder"));
    }

    void remembersRecentFoldersNewestFirst() {
        TestWorld world;
        {
            AppModel model(world.environment);
            for (int i = 0; i < AppModel::recentCorporaLimit + 2; ++i)
                prepare(model, world.makeCorpus(QStringLiteral("home/folder%1").arg(i), 1, 0.01));
            prepare(model, world.url("home/folder5"));
        }
        AppModel model(world.environment);
        const QVariantList recent = model.recentCorpora();
        QCOMPARE(recent.size(), AppModel::recentCorporaLimit);
        QCOMPARE(recent.at(0).toMap().value("url").toUrl(), world.url("home/folder5"));
        QCOMPARE(recent.at(0).toMap().value("path").toString(), QStringLiteral("~/folder5"));
        QCOMPARE(recent.at(1).toMap().value("name").toString(), QStringLiteral("folder9"));
        model.forgetRecentCorpora();
        QCOMPARE(model.recentCorpora().size(), 0);
    }

    void aFolderThatCannotBeScannedIsNoRecentOne() {
        TestWorld world;
        AppModel model(world.environment);
        model.setCorpus(world.url("missing"));
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.recentCorpora().size(), 0);
        model.setCorpus(world.makeCorpus("corpus"));
        QCOMPARE(model.recentCorpora().size(), 0);  // not before it is scanned
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.recentCorpora().size(), 1);
    }

    void errorsCanBeCopiedAndDismissed() {
        TestWorld world;
        AppModel model(world.environment);
        model.setCorpus(world.url("missing"));
        QVERIFY(waitUntilIdle(model));
        model.copyError();
        QCOMPARE(world.clipboard, world.path("missing") + " is not a folder");
        model.dismissError();
        QCOMPARE(model.errorMessage(), QString());
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::AppModelCorpusTest)
#include "AppModelCorpusTest.moc"
