// Training: its options, progress, cancellation and failures.

#include <QObject>
#include <memory>

#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereCore/Model/ModelStore.h"

namespace quillmere::testing {

using Phase = TrainingProgress::Phase;

class AppModelTrainingTest : public QObject {
    Q_OBJECT

private slots:
    void trainsAndStoresAModel() {
        TestWorld world;
        world.steps = 12;
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        QSignalSpy training(&model, &AppModel::isTrainingChanged);
        QSignalSpy finished(&model, &AppModel::trainingFinished);
        QStringList phases;
        connect(&model, &AppModel::trainingChanged, &model, [&] {
            if (phases.isEmpty() || phases.last() != model.trainingPhase())
                phases.append(model.trainingPhase());
        });
        model.train();
        QVERIFY(model.isTraining());
        QVERIFY(model.isBusy());
        QVERIFY(!model.canTrain());
        QCOMPARE(model.trainingMessage(), QStringLiteral("Starting…"));
        QCOMPARE(model.trainingPhase(), QStringLiteral("analysing"));
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(training.count(), 2);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(phases, QStringList({"analysing", "training", "finishing"}));
        QVERIFY(model.hasModel());
        QCOMPARE(model.modelSteps(), 12);
        QVERIFY(ModelStore::exists(ModelStore::directory(*model.summary(), world.environment.modelsRoot)));
    }

    void theChartHoldsTheReportedSteps() {
        TestWorld world;
        world.steps = 25;
        AppModel model(world.environment);
        prepareTrained(model, world.makeCorpus("corpus"));
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
        QVERIFY(waitUntilIdle(model));
    }

    void recordsAtStepZeroAndRepeatedStepsAddNoPoint() {
        TestWorld world;
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        model.train();
        AppModelProbe::receive(model, Phase::training, 0, 1.0F);
        QCOMPARE(model.lossHistory()->count(), 0);
        AppModelProbe::receive(model, Phase::training, 10, 0.5F);
        AppModelProbe::receive(model, Phase::training, 10, 0.4F);
        QCOMPARE(model.lossHistory()->count(), 1);
        QCOMPARE(model.lossHistory()->points().at(0).loss, 0.5);
        QCOMPARE(model.trainingLoss(), double{0.4F});
        AppModelProbe::receive(model, Phase::finishing, 20, 0.3F);
        AppModelProbe::receive(model, Phase::analysing, 30, 0.3F);
        QCOMPARE(model.lossHistory()->count(), 1);
        QVERIFY(waitUntilIdle(model));
    }

    void recordsAreIgnoredWhenNothingIsTrained() {
        TestWorld world;
        AppModel model(world.environment);
        AppModelProbe::receive(model, Phase::training, 10, 0.5F);
        QVERIFY(!model.training());
        QCOMPARE(model.lossHistory()->count(), 0);
    }

    void everyQualityHasItsSteps() {
        TestWorld world;
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        const QList<int> steps{800, 2000, 5000};
        for (int quality = 0; quality < 3; ++quality) {
            model.setQualityIndex(quality);
            model.train();
            QVERIFY(waitUntilIdle(model));
            QCOMPARE(world.requestedTraining.steps, steps.at(quality));
        }
        model.setQualityIndex(3);
        QCOMPARE(model.quality(), Quality::thorough);
    }

    void theOtherOptionsAreFixed() {
        TestWorld world;
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        model.setAnalysisIndex(2);
        model.train();
        QVERIFY(waitUntilIdle(model));
        const TrainingOptions options = world.requestedTraining;
        QCOMPARE(options.batchSize, 16);
        QCOMPARE(options.learningRate, 0.001F);
        QCOMPARE(options.klWeight, 0.002F);
        QCOMPARE(options.latentDim, 64);
        QVERIFY(!options.clipSeconds);
        QCOMPARE(options.profile, AnalysisProfile::tonal);
        QCOMPARE(options.seed, 1U);
        QCOMPARE(model.modelAnalysis(), QStringLiteral("Tonal (sustained pitch)"));
    }

    void theSameCorpusGivesTheSameWeights() {
        TestWorld world;
        AppModel model(world.environment);
        prepareTrained(model, world.makeCorpus("corpus"));
        const auto weights = model.bundle()->weights;
        model.train();
        QVERIFY(waitUntilIdle(model));
        QVERIFY(model.bundle()->weights == weights);
    }

    void nothingHappensWithoutASummary() {
        TestWorld world;
        AppModel model(world.environment);
        QSignalSpy training(&model, &AppModel::isTrainingChanged);
        model.train();
        model.setCorpus(world.makeCorpus("corpus"));
        model.train();  // still scanning
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(training.count(), 0);
        QVERIFY(!model.hasModel());
    }

    void aSecondCallWhileTrainingDoesNothing() {
        TestWorld world;
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        QSignalSpy finished(&model, &AppModel::trainingFinished);
        model.train();
        model.train();
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(finished.count(), 1);
    }

    void cancellingKeepsThePreviousModel() {
        TestWorld world;
        AppModel model(world.environment);
        prepareTrained(model, world.makeCorpus("corpus"));
        const ModelBundle* before = model.bundle();
        world.steps = 1000000;
        model.train();
        QVERIFY(QTest::qWaitFor([&] { return model.lossHistory()->count() > 0; }, 30000));
        model.cancelTraining();
        QVERIFY(model.isCancelling());
        QVERIFY(waitUntilIdle(model));
        QVERIFY(!model.isCancelling());
        QCOMPARE(model.bundle(), before);
        QCOMPARE(model.errorMessage(), QString());
        model.cancelTraining();  // nothing to cancel
        QVERIFY(!model.isCancelling());
    }

    void aCancelledTrainingLeavesNoFiles() {
        TestWorld world;
        world.steps = 1000000;
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        model.train();
        model.cancel();
        QVERIFY(waitUntilIdle(model));
        QVERIFY(!model.hasModel());
        QVERIFY(
            !std::filesystem::exists(ModelStore::directory(*model.summary(), world.environment.modelsRoot)));
    }

    void closingDuringTrainingCancelsAndWaits() {
        TestWorld world;
        world.steps = 1000000;
        auto model = std::make_unique<AppModel>(world.environment);
        prepare(*model, world.makeCorpus("corpus"));
        model->train();
        QVERIFY(QTest::qWaitFor([&] { return model->lossHistory()->count() > 0; }, 30000));
        QElapsedTimer clock;
        clock.start();
        model.reset();
        QVERIFY2(clock.elapsed() < 5000, "waits for a step, not for the whole run");
    }

    void saysThatADeletedCorpusCannotBeLearned() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        AppModel model(world.environment);
        prepare(model, corpus);
        QVERIFY(QDir(corpus.toLocalFile()).removeRecursively());
        model.train();
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.errorMessage(), QStringLiteral("No usable audio files were found in that folder."));
        QVERIFY(!model.isTraining());
    }

    void reportsACorpusDeletedWhenItsFilesAreAboutToBeRead() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        world.inTheMidst(Run::training, 0, [&] { QDir(world.path("corpus")).removeRecursively(); });
        AppModel model(world.environment);
        prepare(model, corpus);
        model.train();
        QVERIFY(waitUntilIdle(model));
        QVERIFY(!QFileInfo::exists(world.path("corpus")));
        QCOMPARE(model.errorMessage(), QStringLiteral("No usable audio files were found in that folder."));
        QVERIFY(!model.hasModel());
        QVERIFY(
            !std::filesystem::exists(ModelStore::directory(*model.summary(), world.environment.modelsRoot)));
    }

    void survivesACorpusDeletedAtTheFirstStep() {
        TestWorld world;
        world.steps = 5;
        const QUrl corpus = world.makeCorpus("corpus");
        world.inTheMidst(Run::training, 1, [&] { QDir(world.path("corpus")).removeRecursively(); });
        AppModel model(world.environment);
        prepareTrained(model, corpus);  // the clips were read before
        QVERIFY(!QFileInfo::exists(world.path("corpus")));
        QCOMPARE(model.errorMessage(), QString());
        QCOMPARE(model.modelClipCount(), 3);
    }

    void reportsAModelFolderThatVanishesMeanwhile() {
        TestWorld world;
        world.steps = 5;
        const QString root = toQString(world.environment.modelsRoot);
        world.inTheMidst(Run::training, 1, [&] {
            QDir(root).removeRecursively();
            TestWorld::write(root, "a file where the folder was");
        });
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        model.train();
        QVERIFY(waitUntilIdle(model));
        QVERIFY(!model.hasModel());
        QVERIFY2(model.errorMessage().contains("Models"), qPrintable(model.errorMessage()));
        QCOMPARE(TestWorld::read(root), QByteArray("a file where the folder was"));
    }

    void reportsAModelThatCannotBeStored() {
        TestWorld world;
        TestWorld::write(toQString(world.environment.modelsRoot), "a file where the folder should be");
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        model.train();
        QVERIFY(waitUntilIdle(model));
        QVERIFY(!model.hasModel());
        QVERIFY2(model.errorMessage().contains("Models"), qPrintable(model.errorMessage()));
    }

    void twoInstancesStoreTheSameModelOneAfterTheOther() {
        TestWorld world;
        const QUrl corpus = world.makeCorpus("corpus");
        AppModel one(world.environment);
        AppModel other(world.environment);
        prepare(one, corpus);
        prepare(other, corpus);
        one.train();
        other.train();
        QVERIFY(waitUntilIdle(one));
        QVERIFY(waitUntilIdle(other));
        QCOMPARE(one.errorMessage(), QString());
        QCOMPARE(other.errorMessage(), QString());
        QVERIFY(one.hasModel() && other.hasModel());
        QVERIFY(one.bundle()->weights == other.bundle()->weights);
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::AppModelTrainingTest)
#include "AppModelTrainingTest.moc"
