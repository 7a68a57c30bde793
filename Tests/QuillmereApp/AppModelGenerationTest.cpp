// Generation: what it writes and shows, what it refuses, how it fails.

#include <sys/resource.h>

#include <QObject>
#include <csignal>
#include <memory>
#include <optional>

#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

// While it lives no file can grow beyond bytes, as on a full disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limited = before_;
        limited.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &before_); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before_{};
};

// A trained model with an output folder and few phase passes.
void prepareToGenerate(AppModel& model, const TestWorld& world, int count = 3) {
    prepareTrained(model, world.makeCorpus("corpus"));
    model.setOutputText(world.path("out"));
    model.setCount(count);
    model.parameters()->setValue("phase-iterations", 1);
}

void generateAndWait(AppModel& model) {
    model.generate();
    QVERIFY(waitUntilIdle(model));
}

QStringList fileNames(AppModel& model) {
    QStringList names;
    for (int row = 0; row < model.results()->count(); ++row)
        names.append(model.results()->index(row).data(ResultsModel::FileNameRole).toString());
    return names;
}

QByteArray bytesOfResult(AppModel& model, int row) {
    return TestWorld::read(model.results()->urlAt(row).toLocalFile());
}

// There are files in the folder, and each of them is a variation to its last sample.
void verifyAllWhole(const QString& folder) {
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files | QDir::Hidden);
    QVERIFY(!files.isEmpty());
    for (const QFileInfo& file : files) {
        QCOMPARE(file.suffix(), QStringLiteral("wav"));
        const auto info = AudioIO::info(toPath(file.filePath()));
        QVERIFY2(info, qPrintable(file.fileName()));
        const auto samples = AudioIO::readMono(toPath(file.filePath())).samples.size();
        QCOMPARE(static_cast<double>(samples), info->duration * info->sampleRate);
        QCOMPARE(file.size(), static_cast<qint64>(44 + 3 * samples + samples % 2));
    }
}

}  // namespace

class AppModelGenerationTest : public QObject {
    Q_OBJECT

private slots:
    void writesTheVariationsSortedByName() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToGenerate(model, world, 12);
        QSignalSpy generating(&model, &AppModel::isGeneratingChanged);
        QSignalSpy finished(&model, &AppModel::generationFinished);
        QList<int> done;
        connect(&model, &AppModel::generationProgressChanged, &model,
                [&] { done.append(model.generationDone()); });
        model.generate();
        QVERIFY(model.isGenerating());
        QVERIFY(model.isBusy());
        QCOMPARE(model.generationTotal(), 12);
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.errorMessage(), QString());
        QCOMPARE(generating.count(), 2);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 12);
        QCOMPARE(done.size(), 13);
        QVERIFY(std::is_sorted(done.begin(), done.end()));
        const QStringList names = fileNames(model);
        QCOMPARE(names.size(), 12);
        QCOMPARE(names.first(), QStringLiteral("corpus_var_0001.wav"));
        QCOMPARE(names.last(), QStringLiteral("corpus_var_0012.wav"));
        QVERIFY(std::is_sorted(names.begin(), names.end()));
        QCOMPARE(model.lastOutputFolder(), world.url("out"));
        QTRY_COMPARE(model.outputStatus(), AppModel::OutputExists);
    }

    void needsAnOutputFolder_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("empty") << "";
        QTest::newRow("blank") << " \t\n ";
    }
    void needsAnOutputFolder() {
        QFETCH(QString, text);
        TestWorld world;
        AppModel model(world.environment);
        prepareToGenerate(model, world);
        model.setOutputText(text);
        QSignalSpy generating(&model, &AppModel::isGeneratingChanged);
        bool returned = false;
        model.generate([&] { returned = true; });
        QVERIFY(returned);
        QCOMPARE(model.errorMessage(), QStringLiteral("Choose an output folder first."));
        QCOMPARE(generating.count(), 0);
        QCOMPARE(model.results()->count(), 0);
    }

    void withoutAnOutputFolderNothingIsTrainedEither() {
        TestWorld world;
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        model.generate();
        QCOMPARE(model.errorMessage(), QStringLiteral("Choose an output folder first."));
        QVERIFY(!model.isTraining());
    }

    void withoutACorpusItSaysWhatToDo() {
        TestWorld world;
        AppModel model(world.environment);
        model.setOutputText(world.path("out"));
        QSignalSpy notice(&model, &AppModel::notice);
        model.generate();
        QCOMPARE(notice.count(), 1);
        QCOMPARE(notice.at(0).at(0).toString(), QStringLiteral("Choose a corpus first."));
        QCOMPARE(model.errorMessage(), QString());
        QVERIFY(!model.isBusy());
        QVERIFY(!QFileInfo::exists(world.path("out")));
    }

    void trainsFirstWhenThereIsNoModel() {
        TestWorld world;
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        model.setOutputText(world.path("out"));
        model.setCount(2);
        bool returned = false;
        model.generate([&] { returned = true; });
        QVERIFY(model.isTraining());
        QVERIFY(!model.isGenerating());
        QVERIFY(QTest::qWaitFor([&] { return returned; }, 30000));
        QVERIFY(model.hasModel());
        QCOMPARE(model.results()->count(), 2);
        QVERIFY(!model.isBusy());
    }

    void stopsWhenTheTrainingGaveNoModel() {
        TestWorld world;
        world.steps = 1000000;
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        model.setOutputText(world.path("out"));
        bool returned = false;
        model.generate([&] { returned = true; });
        model.cancel();
        QVERIFY(QTest::qWaitFor([&] { return returned; }, 30000));
        QVERIFY(!model.isBusy());
        QVERIFY(!QFileInfo::exists(world.path("out")));
        QCOMPARE(model.errorMessage(), QString());
    }

    void waitsForAModelThatIsBeingLoaded() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        AppModel model(world.environment);
        prepareTrained(model, corpus);
        model.setOutputText(world.path("out"));
        model.setCount(1);
        QSignalSpy training(&model, &AppModel::isTrainingChanged);
        model.setCorpus(corpus);
        QVERIFY(QTest::qWaitFor([&] { return model.isLoadingModel(); }));
        bool returned = false;
        model.generate([&] { returned = true; });
        QVERIFY(QTest::qWaitFor([&] { return returned; }, 30000));
        QCOMPARE(training.count(), 0);
        QCOMPARE(model.results()->count(), 1);
    }

    void aDamagedModelThatIsBeingLoadedIsNotReplacedUnasked() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        AppModel model(world.environment);
        prepareTrained(model, corpus);
        const auto weights =
            ModelStore::directory(*model.summary(), world.environment.modelsRoot) / "weights.bin";
        std::filesystem::resize_file(weights, 100);
        model.setOutputText(world.path("out"));
        model.setCorpus(corpus);
        QVERIFY(QTest::qWaitFor([&] { return model.isLoadingModel(); }));
        bool returned = false;
        model.generate([&] { returned = true; });
        QVERIFY(QTest::qWaitFor([&] { return returned; }, 30000));
        QVERIFY(!model.isTraining());
        QVERIFY(!model.modelProblem().isEmpty());
        QCOMPARE(std::filesystem::file_size(weights), 100U);
    }

    void isRefusedPolitelyWhileAnotherRunIsActive() {
        TestWorld world;
        world.steps = 1000000;
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        model.setOutputText(world.path("out"));
        model.train();
        QSignalSpy notice(&model, &AppModel::notice);
        bool returned = false;
        model.generate([&] { returned = true; });
        QVERIFY(returned);
        QCOMPARE(notice.count(), 1);
        QCOMPARE(model.errorMessage(), QString());
        QVERIFY(model.isTraining());
        model.cancel();
        QVERIFY(waitUntilIdle(model));
    }

    void trainingIsRefusedWhileGenerating() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToGenerate(model, world);
        QSignalSpy training(&model, &AppModel::isTrainingChanged);
        model.generate();
        model.train();
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(training.count(), 0);
        QCOMPARE(model.results()->count(), 3);
    }

    void aNumberAsSeedRepeatsTheResults() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToGenerate(model, world, 2);
        model.setSeedText(" 42 ");
        QVERIFY(model.seedIsFixed());
        generateAndWait(model);
        QCOMPARE(model.lastSeed(), QStringLiteral("42"));
        const QByteArray first = bytesOfResult(model, 0);
        const QByteArray second = bytesOfResult(model, 1);
        QVERIFY(first.size() > 44 && first != second);
        generateAndWait(model);
        QCOMPARE(fileNames(model), QStringList({"corpus_var_0003.wav", "corpus_var_0004.wav"}));
        QCOMPARE(bytesOfResult(model, 0), first);
        QCOMPARE(bytesOfResult(model, 1), second);
    }

    void anyOtherSeedTextIsAFreshRoll_data() {
        QTest::addColumn<QString>("text");
        QTest::newRow("word") << "abc";
        QTest::newRow("empty") << "";
        QTest::newRow("negative") << "-1";
        QTest::newRow("beyond 64 bits") << "18446744073709551616";
        QTest::newRow("fraction") << "4.2";
    }
    void anyOtherSeedTextIsAFreshRoll() {
        QFETCH(QString, text);
        TestWorld world;
        AppModel model(world.environment);
        prepareToGenerate(model, world, 1);
        model.setSeedText(text);
        QVERIFY(!model.seedIsFixed());
        generateAndWait(model);
        const QByteArray first = bytesOfResult(model, 0);
        const QString firstSeed = model.lastSeed();
        generateAndWait(model);
        QVERIFY(model.lastSeed() != firstSeed);
        QVERIFY(bytesOfResult(model, 0) != first);
    }

    void theLastSeedCanBeCopiedAndPutBack() {
        TestWorld world;
        AppModel model(world.environment);
        model.reuseSeed();
        QCOMPARE(model.seedText(), QString());
        world.environment.freshSeed = [] { return UINT64_MAX; };
        AppModel other(world.environment);
        prepareToGenerate(other, world, 1);
        generateAndWait(other);
        QCOMPARE(other.lastSeed(), QStringLiteral("18446744073709551615"));
        const QByteArray first = bytesOfResult(other, 0);
        other.copySeed();
        QCOMPARE(world.clipboard, other.lastSeed());
        other.reuseSeed();
        QCOMPARE(other.seedText(), other.lastSeed());
        generateAndWait(other);
        QCOMPARE(bytesOfResult(other, 0), first);
    }

    void remembersOutputAndCountWhenItStarts() {
        TestWorld world;
        {
            AppModel model(world.environment);
            prepareToGenerate(model, world, 2);
        }
        {
            const AppModel notYet(world.environment);
            QCOMPARE(notYet.outputText(), QString());
            QCOMPARE(notYet.count(), 10);
        }
        {
            AppModel model(world.environment);
            QVERIFY(waitUntilIdle(model));
            model.setOutputText(world.path("out"));
            model.setCount(2);
            generateAndWait(model);
        }
        const AppModel restarted(world.environment);
        QCOMPARE(restarted.outputText(), world.path("out"));
        QCOMPARE(restarted.count(), 2);
    }

    void writesTheChosenFormat_data() {
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("bits");
        QTest::newRow("16") << 0 << 16;
        QTest::newRow("24") << 1 << 24;
        QTest::newRow("32") << 2 << 32;
    }
    void writesTheChosenFormat() {
        QFETCH(int, format);
        QFETCH(int, bits);
        TestWorld world;
        AppModel model(world.environment);
        prepareToGenerate(model, world, 1);
        model.setFormatIndex(format);
        generateAndWait(model);
        QCOMPARE(static_cast<int>(bytesOfResult(model, 0).at(34)), bits);
        model.setFormatIndex(3);
        QCOMPARE(model.formatIndex(), format);
    }

    void expandsTheHomeFolder() {
        TestWorld world;
        AppModel model(world.environment);
        model.setOutputText("  ~/takes/one \n");
        QCOMPARE(*model.outputFolder(), world.url("home/takes/one"));
        model.setOutputText("~");
        QCOMPARE(*model.outputFolder(), world.url("home"));
        model.setOutputText("/a/~b");
        QCOMPARE(*model.outputFolder(), QUrl::fromLocalFile("/a/~b"));
        model.setOutputText("relative");
        QCOMPARE(*model.outputFolder(), QUrl::fromLocalFile(QDir::current().absoluteFilePath("relative")));
    }

    void tellsWhatIsAtTheOutputPath() {
        TestWorld world;
        AppModel model(world.environment);
        model.setOutputText(world.path("new/folder"));
        QTRY_COMPARE(model.outputStatus(), AppModel::OutputWillBeCreated);
        model.setOutputText(world.path("home"));
        QTRY_COMPARE(model.outputStatus(), AppModel::OutputExists);
        TestWorld::write(world.path("file"), "x");
        model.setOutputText(world.path("file"));
        QTRY_COMPARE(model.outputStatus(), AppModel::OutputIsNoFolder);
        model.setOutputText(" ");
        QCOMPARE(model.outputStatus(), AppModel::NoOutput);
        model.setOutputText(world.path("later"));
        QTRY_COMPARE(model.outputStatus(), AppModel::OutputWillBeCreated);
        QDir().mkpath(world.path("later"));
        model.refresh();
        QTRY_COMPARE(model.outputStatus(), AppModel::OutputExists);
    }

    void theOutputChooserStartsAtTheFolderOrAboveItOrAtHome() {
        TestWorld world;
        AppModel model(world.environment);
        QSignalSpy chooser(&model, &AppModel::outputChooserRequested);
        model.chooseOutput();
        QCOMPARE(chooser.takeFirst().at(0).toUrl(), world.url("home"));
        model.setOutputText(world.path("home"));
        model.chooseOutput();
        QCOMPARE(chooser.takeFirst().at(0).toUrl(), world.url("home"));
        model.setOutputText(world.path("home/not/there"));
        model.chooseOutput();
        QCOMPARE(chooser.takeFirst().at(0).toUrl(), world.url("home"));
        model.setOutputFolder(world.url("home/chosen"));
        QCOMPARE(model.outputText(), world.path("home/chosen"));
        QCOMPARE(model.outputChooserMessage(),
                 QStringLiteral("Choose a folder for the generated samples — use New Folder to create one"));
    }

    void reportsAnOutputPathThatIsAFile() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToGenerate(model, world);
        TestWorld::write(world.path("out"), "x");
        generateAndWait(model);
        QVERIFY2(model.errorMessage().contains("out"), qPrintable(model.errorMessage()));
        QCOMPARE(model.results()->count(), 0);
        QVERIFY(model.lastOutputFolder().isEmpty());
        QCOMPARE(TestWorld::read(world.path("out")), QByteArray("x"));
    }

    void reportsAnOutputFolderThatVanishes() {
        TestWorld world;
        {
            AppModel model(world.environment);
            prepareTrained(model, world.makeCorpus("corpus"));
        }
        // Renamed, not emptied: files are being written into it.
        world.inTheMidst(Run::generation, 3, [&] {
            QDir().rename(world.path("out"), world.path("moved"));
            TestWorld::write(world.path("out"), "not a folder any more");
        });
        AppModel model(world.environment);
        QVERIFY(waitUntilIdle(model));
        model.setOutputText(world.path("out"));
        model.setCount(2);
        generateAndWait(model);
        const QStringList before = fileNames(model);
        QCOMPARE(before.size(), 2);
        model.setCount(40);
        generateAndWait(model);
        QVERIFY2(!model.errorMessage().isEmpty(), "writing into a folder that is gone must fail");
        QCOMPARE(fileNames(model), before);  // the previous results stay
        QTRY_VERIFY(!model.results()->existsAt(0));
        verifyAllWhole(world.path("moved"));
    }

    void reportsADiskThatFillsUpMeanwhile() {
        TestWorld world;
        std::optional<FullDisk> full;
        world.inTheMidst(Run::generation, 3, [&] { full.emplace(300); });
        AppModel model(world.environment);
        prepareToGenerate(model, world, 60);
        generateAndWait(model);
        QVERIFY(full);
        full.reset();
        QVERIFY2(!model.errorMessage().isEmpty(), "a full disk must be reported");
        QCOMPARE(model.results()->count(), 0);
        // What was written before is there in full, and nothing else.
        verifyAllWhole(world.path("out"));
        generateAndWait(model);
        QCOMPARE(model.errorMessage(), QString());
        QCOMPARE(model.results()->count(), 60);
    }

    void reportsAFullDisk() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToGenerate(model, world, 2);
        {
            const FullDisk full(300);
            generateAndWait(model);
        }
        QVERIFY2(!model.errorMessage().isEmpty(), "a full disk must be reported");
        QCOMPARE(model.results()->count(), 0);
        QCOMPARE(QDir(world.path("out")).entryList(QDir::Files | QDir::Hidden).size(), 0);
    }

    void doesNotNeedTheCorpusAnyMore() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToGenerate(model, world, 1);
        QVERIFY(QDir(world.path("corpus")).removeRecursively());
        generateAndWait(model);
        QCOMPARE(model.errorMessage(), QString());
        QCOMPARE(model.results()->count(), 1);
    }

    void doesNotNeedTheCorpusOrTheStoredModelMeanwhile() {
        TestWorld world;
        world.inTheMidst(Run::generation, 1, [&] {
            QDir(world.path("corpus")).removeRecursively();
            QDir(toQString(world.environment.modelsRoot)).removeRecursively();
        });
        AppModel model(world.environment);
        prepareToGenerate(model, world, 5);
        generateAndWait(model);
        QVERIFY(!QFileInfo::exists(world.path("corpus")));
        QCOMPARE(model.errorMessage(), QString());
        QCOMPARE(model.results()->count(), 5);
    }

    void cancellingKeepsThePreviousResults() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToGenerate(model, world, 2);
        generateAndWait(model);
        const QStringList before = fileNames(model);
        model.setCount(100000);
        model.generate();
        QVERIFY(QTest::qWaitFor([&] { return model.generationDone() > 0; }, 30000));
        model.cancelGeneration();
        QVERIFY(model.isCancelling());
        QVERIFY(waitUntilIdle(model));
        QVERIFY(!model.isCancelling());
        QCOMPARE(model.errorMessage(), QString());
        QCOMPARE(fileNames(model), before);
    }

    void closingDuringGenerationCancelsAndWaits() {
        TestWorld world;
        auto model = std::make_unique<AppModel>(world.environment);
        prepareToGenerate(*model, world, 100000);
        model->generate();
        QVERIFY(QTest::qWaitFor([&] { return model->generationDone() > 0; }, 30000));
        QElapsedTimer clock;
        clock.start();
        model.reset();
        QVERIFY2(clock.elapsed() < 10000, "waits for the running variations, not for all");
    }

    void aCorpusCannotBeChosenMeanwhile() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToGenerate(model, world);
        const QUrl corpus = model.corpusURL();
        model.generate();
        model.setCorpus(world.makeCorpus("other"));
        QCOMPARE(model.corpusURL(), corpus);
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.results()->count(), 3);
    }

    void stopsThePlayback() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToGenerate(model, world, 1);
        model.play(world.url("corpus/hit0.wav"));
        QTRY_VERIFY(!model.playingURL().isEmpty());
        model.generate();
        QVERIFY(model.playingURL().isEmpty());
        QVERIFY(!world.player->isPlaying());
        QVERIFY(waitUntilIdle(model));
    }

    void twoInstancesNeverOverwriteEachOther() {
        TestWorld world;
        AppModel one(world.environment);
        prepareToGenerate(one, world, 8);
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
        AppModel model(world.environment);
        model.showInFileManager();
        QCOMPARE(model.errorMessage(), QStringLiteral("Choose an output folder first."));
        prepareToGenerate(model, world, 2);
        generateAndWait(model);
        model.showInFileManager();
        QTRY_COMPARE(world.shownFolder, world.url("out"));
        QCOMPARE(world.shownFiles,
                 QList<QUrl>({world.url("out/corpus_var_0001.wav"), world.url("out/corpus_var_0002.wav")}));
        world.hasFileManager = false;
        model.showInFileManager();
        QTRY_VERIFY(model.errorMessage().contains(world.path("out")));
    }

    void theCountIsAtLeastOne() {
        TestWorld world;
        AppModel model(world.environment);
        model.setCount(0);
        QCOMPARE(model.count(), 1);
        model.setCount(-5);
        QCOMPARE(model.count(), 1);
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::AppModelGenerationTest)
#include "AppModelGenerationTest.moc"
