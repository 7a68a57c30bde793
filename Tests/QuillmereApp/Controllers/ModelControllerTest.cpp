// The model of a corpus: its training with options, progress, cancellation and failures, and the stored one.

#include <QObject>
#include <QRegularExpression>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

#include "QuillmereApp/Controllers/ModelController.h"
#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"
#include "QuillmereCore/Model/KeptSounds.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "Support/FaultLayer.h"
#include "Support/HeadStartFiles.h"

namespace quillmere::testing {
namespace {

using Phase = TrainingProgress::Phase;

// A ModelController with all it needs.
struct Learner {
    explicit Learner(const TestWorld& world)
        : root(world.environment.modelsRoot),
          preferences(world.environment.settingsFile),
          devices(world.environment, preferences),
          model(world.environment, devices),
          told(model) {}

    // As after a scan of the folder.
    void open(const QUrl& folder);
    void openTrained(const QUrl& folder);

    std::filesystem::path root;
    std::shared_ptr<const CorpusSummary> summary;
    Preferences preferences;
    ComputeDevices devices;
    ModelController model;
    Told told;
};

// Waits until nothing is trained or loaded.
bool waitUntilLearned(const ModelController& model) {
    return QTest::qWaitFor([&] { return !model.isTraining() && !model.isLoading(); }, longestWait);
}

void Learner::open(const QUrl& folder) {
    summary = std::make_shared<const CorpusSummary>(Corpus::scan(toPath(folder)));
    model.setCorpus(true, summary);
    model.forget();
    const auto stored = ModelStore::directory(*summary, root);
    if (ModelStore::exists(stored)) model.load(stored);
    QVERIFY(waitUntilLearned(model));
}

void Learner::openTrained(const QUrl& folder) {
    open(folder);
    model.train();
    QVERIFY(waitUntilLearned(model));
    QVERIFY2(model.isReady(), qPrintable(told.error));
}

// A folder whose model cannot be stored: while it is learned, a file comes where all models are stored, at
// root.
struct Unstorable {
    Unstorable() : root(toQString(world.environment.modelsRoot)), learner(prepared()) {
        learner.open(world.makeCorpus("corpus"));
    }
    [[nodiscard]] const TestWorld& prepared() {
        world.steps = 5;
        world.inTheMidst(Run::training, 1, [this] {
            QDir(root).removeRecursively();
            TestWorld::write(root, "a file where the folder was");
        });
        return world;
    }
    // Learns a model that cannot be stored, and then makes room for it.
    [[nodiscard]] bool learn() {
        learner.model.train();
        const bool isUnstored = waitUntilLearned(learner.model) && learner.model.isUnstored();
        QFile::remove(root);
        return isUnstored;
    }

    TestWorld world;
    QString root;
    Learner learner;
};

}  // namespace

class ModelControllerTest : public QObject {
    Q_OBJECT

private slots:
    void trainsAndStoresAModel() {
        TestWorld world;
        world.steps = 12;
        Learner learner(world);
        ModelController& model = learner.model;
        learner.open(world.makeCorpus("corpus"));
        QSignalSpy training(&model, &ModelController::isTrainingChanged);
        QSignalSpy finished(&model, &ModelController::trainingFinished);
        QStringList phases;
        connect(&model, &ModelController::progressed, &model, [&] {
            if (phases.isEmpty() || phases.last() != model.phase()) phases.append(model.phase());
        });
        model.train();
        QVERIFY(model.isTraining());
        QCOMPARE(model.message(), QStringLiteral("Starting…"));
        QCOMPARE(model.phase(), QStringLiteral("analysing"));
        QVERIFY(waitUntilLearned(model));
        QCOMPARE(training.count(), 2);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(phases, QStringList({"analysing", "training", "finishing"}));
        QVERIFY(model.isReady());
        QCOMPARE(model.bundle()->metadata.steps, std::int64_t{12});
        QVERIFY(ModelStore::exists(ModelStore::directory(*learner.summary, world.environment.modelsRoot)));
    }

    void theChartHoldsTheReportedSteps() {
        TestWorld world;
        world.steps = 25;
        Learner learner(world);
        ModelController& model = learner.model;
        learner.openTrained(world.makeCorpus("corpus"));
        QList<qint64> steps;
        for (const LossPoint& point : model.lossHistory()->points()) {
            steps.append(point.id);
            QVERIFY(point.loss > 0);
        }
        QCOMPARE(steps, QList<qint64>({1, 10, 20, 25}));
        const QModelIndex second = model.lossHistory()->index(1);
        QCOMPARE(second.data(LossHistory::StepRole).toInt(), 10);
        QCOMPARE(second.data(LossHistory::LossRole).toDouble(), model.lossHistory()->points().at(1).loss);
        model.train();
        QCOMPARE(model.lossHistory()->count(), 0);
        QVERIFY(waitUntilLearned(model));
    }

    void recordsAtStepZeroAndRepeatedStepsAddNoPoint() {
        TestWorld world;
        Learner learner(world);
        ModelController& model = learner.model;
        learner.open(world.makeCorpus("corpus"));
        model.train();
        AppModelProbe::receive(model, Phase::training, 0, 1.0F);
        QCOMPARE(model.lossHistory()->count(), 0);
        AppModelProbe::receive(model, Phase::training, 10, 0.5F);
        AppModelProbe::receive(model, Phase::training, 10, 0.4F);
        QCOMPARE(model.lossHistory()->count(), 1);
        QCOMPARE(model.lossHistory()->points().at(0).loss, 0.5);
        QCOMPARE(model.training()->loss, 0.4F);
        AppModelProbe::receive(model, Phase::finishing, 20, 0.3F);
        AppModelProbe::receive(model, Phase::analysing, 30, 0.3F);
        QCOMPARE(model.lossHistory()->count(), 1);
        QVERIFY(waitUntilLearned(model));
    }

    void recordsAreIgnoredWhenNothingIsTrained() {
        TestWorld world;
        Learner learner(world);
        ModelController& model = learner.model;
        AppModelProbe::receive(model, Phase::training, 10, 0.5F);
        QVERIFY(!model.training());
        QCOMPARE(model.lossHistory()->count(), 0);
    }

    void everyQualityHasItsSteps() {
        TestWorld world;
        Learner learner(world);
        ModelController& model = learner.model;
        learner.open(world.makeCorpus("corpus"));
        const QList<int> steps{800, 2000, 5000};
        for (int quality = 0; quality < 3; ++quality) {
            model.setQualityIndex(quality);
            model.train();
            QVERIFY(waitUntilLearned(model));
            QCOMPARE(world.requestedTraining().steps, steps.at(quality));
        }
        model.setQualityIndex(3);
        QCOMPARE(model.quality(), Quality::thorough);
    }

    // ---- The head start

    void learnsFromTheHeadStart() {
        TestWorld world;
        writeHeadStart(world.environment.headStartFolder);
        Learner learner(world);
        ModelController& model = learner.model;
        learner.open(world.makeCorpus("corpus"));
        for (const Quality quality : {Quality::quick, Quality::thorough}) {
            model.setQualityIndex(static_cast<int>(quality));
            model.setStartIndex(1);
            model.train();
            QVERIFY(waitUntilLearned(model));
            QVERIFY2(model.isReady(), qPrintable(learner.told.error));
            QCOMPARE(world.requestedTraining().steps, info(quality).stepsFromStart);
            QVERIFY(world.requestedTraining().start);
            QVERIFY(model.bundle()->metadata.start->kind == ModelStart::Kind::headStart);
        }
        QCOMPARE(model.trainedQuality(), QStringLiteral("2 steps from a head start"));
        model.setStartIndex(0);
        model.train();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(!model.bundle()->metadata.start);
        QCOMPARE(model.trainedQuality(), QStringLiteral("2 steps"));
    }

    void withoutTheHeadStartLearningBeginsFromScratchAndSaysSo() {
        TestWorld world;
        Learner learner(world);
        learner.open(world.makeCorpus("corpus"));
        learner.model.setStartIndex(1);
        learner.model.train();
        QVERIFY(waitUntilLearned(learner.model));
        QVERIFY(learner.model.isReady());
        QCOMPARE(learner.told.notices.size(), 1);
        QVERIFY2(learner.told.notices.first().contains("learning begins from scratch") &&
                     learner.told.notices.first().contains("percussive.base"),
                 qPrintable(learner.told.notices.first()));
        QVERIFY(!learner.model.bundle()->metadata.start);
    }

    void canBeHeardBeforeItIsLearnedOnlyFromTheHeadStart() {
        TestWorld world;
        writeHeadStart(world.environment.headStartFolder);
        Learner learner(world);
        ModelController& model = learner.model;
        model.setStartIndex(1);
        QVERIFY(!model.canPreview());  // of what?
        learner.open(world.makeCorpus("corpus"));
        QVERIFY(model.canPreview());
        model.setStartIndex(0);
        QVERIFY(!model.canPreview());
        model.setStartIndex(2);
        QVERIFY(!model.canPreview());
        model.setStartIndex(1);
        const auto preview = model.preview()();
        QCOMPARE(preview->bundle().metadata.steps, std::int64_t{0});
        QCOMPARE(preview->bundle().latents.size(), 3U);
        deliverEvents();
        QVERIFY(model.preview()() == preview);  // made once
        model.train();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(!model.canPreview());
        QVERIFY(model.preview()()->bundle().metadata.steps > 0);
    }

    void aPreviewThatIsNotNeededEnds() {
        TestWorld world;
        writeHeadStart(world.environment.headStartFolder);
        Learner learner(world);
        learner.model.setStartIndex(1);
        learner.open(world.makeCorpus("corpus"));
        const PreparedGenerator preview = learner.model.preview();
        learner.model.cancelPreview();
        QVERIFY_THROWS_EXCEPTION(CancellationError, (void)preview());
    }

    void theOtherOptionsAreFixed() {
        TestWorld world;
        Learner learner(world);
        ModelController& model = learner.model;
        learner.open(world.makeCorpus("corpus"));
        model.setAnalysisIndex(2);
        model.train();
        QVERIFY(waitUntilLearned(model));
        const TrainingOptions options = world.requestedTraining();
        QCOMPARE(options.batchSize, 16);
        QCOMPARE(options.learningRate, 0.001F);
        QCOMPARE(options.klWeight, 0.002F);
        QCOMPARE(options.latentDim, 64);
        QVERIFY(!options.clipSeconds);
        QCOMPARE(options.profile, AnalysisProfile::tonal);
        QCOMPARE(options.seed, 1U);
        QCOMPARE(model.analysisLabel(), QStringLiteral("Tonal (sustained pitch)"));
    }

    void theSameCorpusGivesTheSameWeights() {
        TestWorld world;
        Learner learner(world);
        ModelController& model = learner.model;
        learner.openTrained(world.makeCorpus("corpus"));
        const auto weights = model.bundle()->weights;
        model.train();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(model.bundle()->weights == weights);
    }

    void nothingHappensWithoutASummary() {
        TestWorld world;
        Learner learner(world);
        ModelController& model = learner.model;
        QSignalSpy training(&model, &ModelController::isTrainingChanged);
        model.train();
        model.setCorpus(true, nullptr);  // being scanned
        model.train();
        QCOMPARE(training.count(), 0);
        QVERIFY(!model.isReady());
    }

    void aSecondCallWhileTrainingDoesNothing() {
        TestWorld world;
        Learner learner(world);
        ModelController& model = learner.model;
        learner.open(world.makeCorpus("corpus"));
        QSignalSpy finished(&model, &ModelController::trainingFinished);
        model.train();
        model.train();
        QVERIFY(waitUntilLearned(model));
        QCOMPARE(finished.count(), 1);
    }

    void cancellingKeepsThePreviousModel() {
        TestWorld world;
        Learner learner(world);
        ModelController& model = learner.model;
        learner.openTrained(world.makeCorpus("corpus"));
        const ModelBundle* before = model.bundle();
        world.steps = 1000000;
        model.train();
        QVERIFY(QTest::qWaitFor([&] { return model.lossHistory()->count() > 0; }, longestWait));
        model.cancelTraining();
        QVERIFY(model.isCancelling());
        QVERIFY(waitUntilLearned(model));
        QVERIFY(!model.isCancelling());
        QCOMPARE(model.bundle(), before);
        QCOMPARE(learner.told.error, QString());
        model.cancelTraining();  // nothing to cancel
        QVERIFY(!model.isCancelling());
    }

    // ---- Ending early

    void aTrainingThatIsStoppedKeepsWhatItHasLearned() {
        TestWorld world;
        world.steps = 1000000;
        Learner learner(world);
        ModelController& model = learner.model;
        learner.open(world.makeCorpus("corpus"));
        QVERIFY(!model.canStopHere());
        model.stopHere();  // nothing to stop
        QSignalSpy finished(&model, &ModelController::trainingFinished);
        model.train();
        QVERIFY(!model.canStopHere());  // nothing learned yet
        QVERIFY(QTest::qWaitFor([&] { return model.canStopHere(); }, longestWait));
        model.stopHere();
        QVERIFY(!model.canStopHere());
        QVERIFY(!model.isCancelling());
        QVERIFY(waitUntilLearned(model));
        QCOMPARE(learner.told.error, QString());
        QCOMPARE(finished.count(), 1);
        QVERIFY(model.isReady());
        const ModelMetadata metadata = model.bundle()->metadata;
        QVERIFY(metadata.steps >= 1 && metadata.steps < 1000000);
        QCOMPARE(metadata.plannedSteps, std::optional<std::int64_t>(1000000));
        QCOMPARE(model.trainedQuality(), QStringLiteral("%1 of 1000000 steps").arg(metadata.steps));
        QVERIFY(ModelStore::open(ModelStore::directory(*learner.summary, learner.root)).metadata == metadata);
    }

    // The window asks again whenever that is told.
    void whetherItCanStopIsKnownAtEveryMoment() {
        TestWorld world;
        world.steps = 1000000;
        std::vector<bool> told;
        Learner learner(world);
        ModelController& model = learner.model;
        learner.open(world.makeCorpus("corpus"));
        QObject::connect(&model, &ModelController::canStopHereChanged, &model,
                         [&] { told.push_back(model.canStopHere()); });
        model.train();
        QVERIFY(QTest::qWaitFor([&] { return model.canStopHere(); }, longestWait));
        model.cancelTraining();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(std::ranges::count(told, true) > 0);
        QVERIFY(!told.back());
    }

    void cancellingIsPossibleAfterStopping() {
        TestWorld world;
        world.steps = 1000000;
        Gate gate;
        gate.close();
        std::atomic<bool> isHeld = false;
        world.inTheMidst(Run::training, 20, [&] {
            isHeld = true;
            gate.pass();
        });
        Learner learner(world);
        ModelController& model = learner.model;
        learner.open(world.makeCorpus("corpus"));
        model.train();
        QVERIFY(QTest::qWaitFor([&] { return isHeld && model.canStopHere(); }, longestWait));
        model.stopHere();
        model.cancelTraining();
        gate.open();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(!model.isReady());
    }

    // ---- Listening to it

    void canBeHeardWhileItLearns() {
        TestWorld world;
        world.steps = 1000000;
        world.environment.glimpseInterval = std::chrono::milliseconds(0);
        Learner learner(world);
        ModelController& model = learner.model;
        learner.open(world.makeCorpus("corpus"));
        model.train();
        QVERIFY(!model.sound()->isThere());
        QVERIFY(QTest::qWaitFor([&] { return model.sound()->isThere(); }, longestWait));
        const int first = model.sound()->step();
        QVERIFY(!model.sound()->picture().isNull());
        const auto info = AudioIO::info(toPath(model.sound()->url()));
        QVERIFY(info && info->duration > 0);
        QVERIFY(QTest::qWaitFor([&] { return model.sound()->step() > first; }, longestWait));
        model.cancelTraining();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(!model.sound()->isThere());
        QVERIFY(model.sound()->picture().isNull());
        QCOMPARE(learner.told.notices, QStringList());
    }

    void listeningChangesNothing() {
        TestWorld world;
        world.steps = 12;
        const QUrl corpus = world.makeCorpus("corpus");
        Learner unheard(world);
        unheard.openTrained(corpus);
        const auto weights = unheard.model.bundle()->weights;
        world.environment.glimpseInterval = std::chrono::milliseconds(0);
        Learner learner(world);
        learner.open(corpus);
        learner.model.train();
        QVERIFY(waitUntilLearned(learner.model));
        QVERIFY(learner.model.bundle()->weights == weights);
    }

    void saysOnceThatNothingCanBeHeard() {
        TestWorld world;
        world.steps = 1000000;
        world.environment.glimpseInterval = std::chrono::milliseconds(0);
        TestWorld::write(world.path("file"), "no folder");
        world.environment.temporaryFolder = toPath(world.path("file/tmp"));
        Learner learner(world);
        learner.open(world.makeCorpus("corpus"));
        learner.model.train();
        QVERIFY(QTest::qWaitFor([&] { return !learner.told.notices.isEmpty(); }, longestWait));
        const int steps = learner.model.step();
        QVERIFY(QTest::qWaitFor([&] { return learner.model.step() > steps + 30; }, longestWait));
        learner.model.cancelTraining();
        QVERIFY(waitUntilLearned(learner.model));
        QCOMPARE(learner.told.notices.size(), 1);
    }

    void aCancelledTrainingLeavesNoFiles() {
        TestWorld world;
        world.steps = 1000000;
        Learner learner(world);
        ModelController& model = learner.model;
        learner.open(world.makeCorpus("corpus"));
        model.train();
        model.cancelTraining();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(!model.isReady());
        QVERIFY(
            !std::filesystem::exists(ModelStore::directory(*learner.summary, world.environment.modelsRoot)));
    }

    void closingDuringTrainingCancelsAndWaits() {
        TestWorld world;
        world.steps = 1000000;
        auto learner = std::make_unique<Learner>(world);
        learner->open(world.makeCorpus("corpus"));
        learner->model.train();
        QVERIFY(QTest::qWaitFor([&] { return learner->model.lossHistory()->count() > 0; }, longestWait));
        QElapsedTimer clock;
        clock.start();
        learner.reset();
        QVERIFY2(clock.elapsed() < 5000, "waits for a step, not for the whole run");
    }

    void saysThatTheFilesOfADeletedCorpusAreGone() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        Learner learner(world);
        ModelController& model = learner.model;
        learner.open(corpus);
        QVERIFY(QDir(corpus.toLocalFile()).removeRecursively());
        QSignalSpy gone(&model, &ModelController::filesGone);
        model.train();
        QVERIFY(waitUntilLearned(model));
        QCOMPARE(gone.count(), 1);
        QCOMPARE(gone.first().at(0).toInt(), 3);
        QVERIFY(!model.isTraining());
    }

    void reportsACorpusDeletedWhenItsFilesAreAboutToBeRead() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        world.inTheMidst(Run::training, 0, [&] { QDir(world.path("corpus")).removeRecursively(); });
        Learner learner(world);
        ModelController& model = learner.model;
        learner.open(corpus);
        model.train();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(!QFileInfo::exists(world.path("corpus")));
        QCOMPARE(learner.told.error, QStringLiteral("No usable audio files were found in that folder."));
        QVERIFY(!model.isReady());
        QVERIFY(
            !std::filesystem::exists(ModelStore::directory(*learner.summary, world.environment.modelsRoot)));
    }

    void survivesACorpusDeletedAtTheFirstStep() {
        TestWorld world;
        world.steps = 5;
        const QUrl corpus = world.makeCorpus("corpus");
        world.inTheMidst(Run::training, 1, [&] { QDir(world.path("corpus")).removeRecursively(); });
        Learner learner(world);
        ModelController& model = learner.model;
        learner.openTrained(corpus);  // the clips were read before
        QVERIFY(!QFileInfo::exists(world.path("corpus")));
        QCOMPARE(learner.told.error, QString());
        QCOMPARE(model.bundle()->latents.size(), 3U);
    }

    void aModelThatCannotBeStoredIsNotLost() {
        Unstorable unstorable;
        Learner& learner = unstorable.learner;
        ModelController& model = learner.model;
        const QString& root = unstorable.root;
        QSignalSpy finished(&model, &ModelController::trainingFinished);
        model.train();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(model.isReady());
        QVERIFY(model.isUnstored());
        QCOMPARE(finished.count(), 0);
        QVERIFY2(learner.told.error.contains("Models"), qPrintable(learner.told.error));
        QCOMPARE(TestWorld::read(root), QByteArray("a file where the folder was"));

        model.storeAgain();  // it is still there
        QVERIFY(model.isStoring());
        QCOMPARE(learner.told.error, QString());
        QVERIFY(QTest::qWaitFor([&] { return !model.isStoring(); }, longestWait));
        QVERIFY(model.isUnstored());
        QVERIFY2(learner.told.error.contains("Models"), qPrintable(learner.told.error));

        QFile::remove(root);
        model.storeAgain();
        QVERIFY(QTest::qWaitFor([&] { return !model.isStoring(); }, longestWait));
        QVERIFY(!model.isUnstored());
        QCOMPARE(learner.told.error, QString());
        QCOMPARE(learner.told.notices.last(), QStringLiteral("The model is stored."));
        const auto stored = ModelStore::open(ModelStore::directory(*learner.summary, learner.root));
        QVERIFY(stored.weights == model.bundle()->weights);
        QVERIFY(stored.metadata == model.bundle()->metadata);
        model.storeAgain();  // nothing to store
        QVERIFY(!model.isStoring());
    }

    void theSoundsOfAModelThatCouldNotBeStoredAreStoredWithIt() {
        Unstorable unstorable;
        ModelController& model = unstorable.learner.model;
        model.setKeepsSounds(true);
        QVERIFY(unstorable.learn());
        model.storeAgain();
        QVERIFY(QTest::qWaitFor([&] { return !model.isStoring(); }, longestWait));
        QVERIFY(KeptSounds::open(*model.bundle(), model.storedFolder()).has_value());
    }

    void aModelIsStoredWithoutSoundsThatCannotBeRead() {
        Unstorable unstorable;
        const Learner& learner = unstorable.learner;
        ModelController& model = unstorable.learner.model;
        model.setKeepsSounds(true);
        QVERIFY(unstorable.learn());
        watchFiles({learner.summary->directory,
                    [](const FileCall& call) { return call.kind == FileCall::Kind::open ? EIO : 0; }});
        model.storeAgain();
        const bool isDone = QTest::qWaitFor([&] { return !model.isStoring(); }, longestWait);
        watchFilesNoMore();
        QVERIFY(isDone);
        QVERIFY(!model.isUnstored());
        QVERIFY(!KeptSounds::open(*model.bundle(), model.storedFolder()).has_value());
        QCOMPARE(learner.told.error, QString());
        const QStringList notices = learner.told.notices;
        const QRegularExpression why("^The sounds could not be kept with the model\\. .+Input/output error");
        QVERIFY2(notices.indexOf(why) >= 0, qPrintable(notices.join('\n')));
        QCOMPARE(learner.told.notices.last(), QStringLiteral("The model is stored."));
    }

    void aModelThatIsNotStoredIsStoredWhenAnotherFolderIsChosen() {
        Unstorable unstorable;
        const Learner& learner = unstorable.learner;
        ModelController& model = unstorable.learner.model;
        QVERIFY(unstorable.learn());
        const auto folder = ModelStore::directory(*learner.summary, learner.root);
        model.forget();
        QVERIFY(!model.isReady());
        QVERIFY(QTest::qWaitFor([&] { return !model.isStoring(); }, longestWait));
        QVERIFY(!model.isUnstored());
        QVERIFY(ModelStore::isStored(folder));
    }

    void aModelThatCannotBeStoredEvenThenIsNotLost() {
        Unstorable unstorable;
        const Learner& learner = unstorable.learner;
        ModelController& model = unstorable.learner.model;
        const QString& root = unstorable.root;
        model.train();
        QVERIFY(waitUntilLearned(model));
        const auto folder = ModelStore::directory(*learner.summary, learner.root);
        const auto weights = model.bundle()->weights;
        model.forget();
        QVERIFY(QTest::qWaitFor([&] { return !model.isStoring(); }, longestWait));
        QVERIFY(!model.isReady() && model.isUnstored());
        QCOMPARE(model.unstoredText(),
                 QStringLiteral("The model of corpus is not stored yet. It is lost when the program ends."));
        // Tried again whenever a folder is chosen.
        QFile::remove(root);
        model.forget();
        QVERIFY(QTest::qWaitFor([&] { return !model.isUnstored(); }, longestWait));
        QVERIFY(ModelStore::open(folder).weights == weights);
        QCOMPARE(model.unstoredText(), QString());
    }

    // ---- Sounds kept with the model

    void keepsTheSoundsOfWhatItLearnsOnlyWhenAsked() {
        TestWorld world;
        Learner learner(world);
        ModelController& model = learner.model;
        model.setKeepsSounds(true);
        learner.openTrained(world.makeCorpus("corpus"));
        const auto kept = KeptSounds::open(*model.bundle(), model.storedFolder());
        QVERIFY(kept.has_value());
        for (std::size_t clip = 0; clip < 3; ++clip)
            QVERIFY(!kept->read(clip).value_or(std::vector<float>()).empty());
        model.setKeepsSounds(false);
        model.train();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(!KeptSounds::open(*model.bundle(), model.storedFolder()).has_value());
    }

    void saysHowMuchTheSoundsTake() {
        TestWorld world;
        Learner learner(world);
        ModelController& model = learner.model;
        const QSignalSpy changes(&model, &ModelController::keptSoundsTextChanged);
        QCOMPARE(model.keptSoundsText(), QStringLiteral("Store the sounds, too"));
        learner.open(world.makeCorpus("short", 3, 0.1));
        QCOMPARE(model.keptSoundsText(), QStringLiteral("Store the sounds, too (up to 0.1 MB)"));
        QVERIFY(!changes.isEmpty());
        // At 8 kHz and 16 bits.
        learner.open(world.makeCorpus("long", 40, 0.5));
        QCOMPARE(model.keptSoundsText(), QStringLiteral("Store the sounds, too (up to 0.3 MB)"));
    }

    // ---- Trouble

    void reportsAModelThatCannotBeStored() {
        TestWorld world;
        TestWorld::write(toQString(world.environment.modelsRoot), "a file where the folder should be");
        Learner learner(world);
        ModelController& model = learner.model;
        learner.open(world.makeCorpus("corpus"));
        model.train();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(!model.isReady());
        QVERIFY2(learner.told.error.contains("Models"), qPrintable(learner.told.error));
    }

    void twoInstancesStoreTheSameModelOneAfterTheOther() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        Learner one(world);
        Learner other(world);
        one.open(corpus);
        other.open(corpus);
        one.model.train();
        other.model.train();
        QVERIFY(waitUntilLearned(one.model));
        QVERIFY(waitUntilLearned(other.model));
        QCOMPARE(one.told.error, QString());
        QCOMPARE(other.told.error, QString());
        QVERIFY(one.model.isReady() && other.model.isReady());
        QVERIFY(one.model.bundle()->weights == other.model.bundle()->weights);
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
        Learner learner(world);
        ModelController& model = learner.model;
        learner.openTrained(corpus);
        const QString folder =
            toQString(ModelStore::directory(*learner.summary, world.environment.modelsRoot));
        const QString damaged = folder + "/" + file;
        const QByteArray whole = TestWorld::read(damaged);
        const QByteArray cut = whole.left(bytesLeft < 0 ? whole.size() + bytesLeft : bytesLeft);
        TestWorld::write(damaged, cut);

        learner.open(corpus);
        QVERIFY(!model.isReady());
        QVERIFY(!learner.told.error.isEmpty());
        if (bytesLeft < 0)
            QCOMPARE(learner.told.error,
                     QStringLiteral("Model weights do not match the saved configuration"));
        QVERIFY(model.problem().contains("Retrain"));
        QCOMPARE(TestWorld::read(damaged), cut);

        model.train();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(model.isReady());
        QCOMPARE(model.problem(), QString());
        QCOMPARE(TestWorld::read(damaged).size(), whole.size());
        QCOMPARE(TestWorld::read(folder + ".damaged/" + file), cut);

        TestWorld::write(damaged, cut);
        learner.openTrained(corpus);
        QCOMPARE(TestWorld::read(folder + ".damaged-2/" + file), cut);
        model.train();  // over a model that is whole
        QVERIFY(waitUntilLearned(model));
        QVERIFY(!QFileInfo::exists(folder + ".damaged-3"));
    }

    void aModelThatCouldNotBeOpenedIsNotCalledDamaged() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        Learner learner(world);
        ModelController& model = learner.model;
        learner.openTrained(corpus);
        const auto folder = ModelStore::directory(*learner.summary, learner.root);
        const QByteArray weights = TestWorld::read(toQString(folder / "weights.bin"));

        world.machine.beforeCompiling = [] { throw std::bad_alloc(); };
        model.load(folder);
        QVERIFY(waitUntilLearned(model));
        QVERIFY(!model.isReady() && model.isUnopened());
        QCOMPARE(learner.told.error, QStringLiteral("There is not enough memory for this."));
        QVERIFY2(model.problem().contains("could not be opened"), qPrintable(model.problem()));

        world.machine.beforeCompiling = nullptr;
        model.openAgain();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(model.isReady() && !model.isUnopened());
        QCOMPARE(model.problem(), QString());

        // Who retrains all the same keeps what may be whole.
        model.load(folder);
        model.cancelLoading();
        QVERIFY(model.isUnopened());
        model.train();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(model.isReady() && !model.isUnopened());
        QVERIFY(TestWorld::read(toQString(folder) + ".kept/weights.bin") == weights);
        model.train();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(!QFileInfo::exists(toQString(folder) + ".kept-2"));
    }

    void openingCanBeCancelled() {
        TestWorld world;
        Learner learner(world);
        ModelController& model = learner.model;
        learner.openTrained(world.makeCorpus("corpus"));
        model.forget();
        model.load(ModelStore::directory(*learner.summary, learner.root));
        bool returned = false;
        model.whenLoaded([&] {
            returned = true;
            QVERIFY(model.isUnopened());  // known before anyone goes on
        });
        model.cancelLoading();
        QVERIFY(returned && !model.isLoading() && !model.isReady());
        QCOMPARE(learner.told.error, QString());
        AppModelProbe::waitForWork(model);
        deliverEvents();
        QVERIFY(!model.isReady() && model.isUnopened());
        model.openAgain();
        QVERIFY(waitUntilLearned(model));
        QVERIFY(model.isReady());
        model.openAgain();  // nothing to do
        QVERIFY(!model.isLoading());
    }

    void findsWhatWasLearnedAgain() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        Learner(world).openTrained(corpus);
        Learner learner(world);
        learner.open(corpus);
        const ModelController& model = learner.model;
        QVERIFY(model.isReady());
        QCOMPARE(model.bundle()->metadata.steps, std::int64_t{2});
        QCOMPARE(model.bundle()->latents.size(), 3U);
        QCOMPARE(model.analysisLabel(), QStringLiteral("Percussive (sharp attacks)"));
        QCOMPARE(model.clipSeconds(), 32 * 256 / 8000.0);
        QCOMPARE(model.clipSecondsText(), QStringLiteral("1.0"));
        const QDateTime learned = QDateTime::fromString(model.learnedAt(), "d MMM yyyy, hh:mm");
        QVERIFY(std::abs(learned.secsTo(QDateTime::currentDateTime())) < 120);
        QCOMPARE(model.problem(), QString());
    }

    void whatIsForgottenWhileItIsLoadedStaysAway() {
        TestWorld world;
        Learner learner(world);
        ModelController& model = learner.model;
        learner.openTrained(world.makeCorpus("corpus"));
        model.forget();
        model.load(ModelStore::directory(*learner.summary, learner.root));
        bool returned = false;
        model.whenLoaded([&] { returned = true; });
        AppModelProbe::waitForWork(model);  // it is loaded and waits to be delivered
        QVERIFY(!returned);
        model.forget();
        QVERIFY(returned);
        QVERIFY(!model.isLoading());
        deliverEvents();
        QVERIFY(!model.isReady());
    }

    void offersTheQualitiesAndAnalysesWithTheirTexts() {
        TestWorld world;
        Learner learner(world);
        const ModelController& model = learner.model;
        QCOMPARE(model.qualityLabels(), QStringList({"Quick", "Standard", "Thorough"}));
        QCOMPARE(model.qualityHelps(), QStringList({"Minutes-ish. Blurrier, good for trying things out.",
                                                    "Balanced.", "Longest. Sharpest reconstructions."}));
        QCOMPARE(model.analysisLabels(),
                 QStringList({"Automatic", "Percussive (sharp attacks)", "Tonal (sustained pitch)"}));
    }

    void saysWhyNothingCanBeTrained() {
        TestWorld world;
        Learner learner(world);
        ModelController& model = learner.model;
        QSignalSpy changed(&model, &ModelController::canTrainChanged);
        QVERIFY(!model.canTrain());
        QCOMPARE(model.trainHint(), QStringLiteral("Choose a corpus first."));
        model.setActivity({.isScanning = true});
        model.setCorpus(true, nullptr);
        QVERIFY(!model.canTrain());
        QCOMPARE(model.trainHint(), QString());
        model.setActivity({});
        QVERIFY(!model.canTrain());
        QCOMPARE(model.trainHint(), QStringLiteral("This folder has not been scanned."));
        model.setCorpus(true, std::make_shared<const CorpusSummary>());
        QVERIFY(!model.canTrain());
        QCOMPARE(model.trainHint(), QStringLiteral("No audio files found in this folder."));
        learner.open(world.makeCorpus("corpus"));
        QVERIFY(model.canTrain());
        changed.clear();
        model.setActivity({.isAuditioning = true});
        QVERIFY(!model.canTrain());
        QCOMPARE(changed.count(), 1);
    }

    void tellsHowLongTheModelWasTrained() {
        TestWorld world;
        world.steps = 1;
        Learner learner(world);
        const QUrl corpus = world.makeCorpus("corpus");
        QCOMPARE(learner.model.trainedQuality(), QString());
        learner.openTrained(corpus);
        QCOMPARE(learner.model.trainedQuality(), QStringLiteral("1 step"));
        ModelBundle bundle = *learner.model.bundle();
        const auto folder = ModelStore::directory(*learner.summary, world.environment.modelsRoot);
        for (const auto& [steps, label] : {std::pair(800, "Quick"), std::pair(2000, "Standard"),
                                           std::pair(5000, "Thorough"), std::pair(801, "801 steps")}) {
            bundle.metadata.steps = steps;
            ModelStore::replace(bundle, folder);
            learner.open(corpus);
            QCOMPARE(learner.model.trainedQuality(), QString::fromLatin1(label));
        }
    }

    // Minutes of training would be for nothing.
    void aFolderWhoseNameLeavesNoRoomForAModelIsToldOfBeforeTheTraining() {
        TestWorld world;
        Learner learner(world);
        learner.open(world.makeCorpus(QString(250, QLatin1Char('n'))));
        bool hasBegun = false;
        connect(&learner.model, &ModelController::progressed, &learner.model,
                [&] { hasBegun = hasBegun || learner.model.message() != QStringLiteral("Starting…"); });
        learner.model.train();
        QVERIFY(waitUntilLearned(learner.model));
        QVERIFY(learner.told.error.startsWith("The name of this folder is too long"));
        QVERIFY(!hasBegun);
    }

    void trainingIsRefusedWhileSomethingElseRuns() {
        TestWorld world;
        Learner learner(world);
        learner.open(world.makeCorpus("corpus"));
        for (const Activity& activity : {Activity{.isGenerating = true}, Activity{.isAuditioning = true}}) {
            learner.told.notices.clear();
            learner.model.setActivity(activity);
            learner.model.train();
            QVERIFY(!learner.model.isTraining());
            QCOMPARE(learner.told.notices, QStringList(Activity::waitNotice()));
        }
    }

    void aGeneratorIsPreparedAsItWas() {
        TestWorld world;
        Learner learner(world);
        learner.openTrained(world.makeCorpus("corpus"));
        const PreparedGenerator generator = learner.model.preparedGenerator();
        const ModelBundle* bundle = learner.model.bundle();
        learner.model.forget();
        QCOMPARE(&generator()->bundle(), bundle);
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::ModelControllerTest)
#include "ModelControllerTest.moc"
