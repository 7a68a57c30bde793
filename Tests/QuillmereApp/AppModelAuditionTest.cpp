// Auditions: one variation in a temporary file, played and not kept.

#include <QObject>

#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

void prepareToAudition(AppModel& model, const TestWorld& world) {
    prepareTrained(model, world.makeCorpus("corpus"));
    model.parameters()->setValue("phase-iterations", 1);
}

void auditionAndWait(AppModel& model) {
    model.audition();
    QVERIFY(waitUntilIdle(model));
}

}  // namespace

class AppModelAuditionTest : public QObject {
    Q_OBJECT

private slots:
    void writesATemporaryFileAndPlaysIt() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToAudition(model, world);
        model.setFormatIndex(2);
        model.audition();
        QVERIFY(model.isAuditioning());
        QVERIFY(model.isBusy());
        QVERIFY(waitUntilIdle(model));
        const QString file = world.path("tmp/Quillmere-audition.wav");
        QTRY_COMPARE(model.playingURL(), QUrl::fromLocalFile(file));
        QVERIFY(model.isPlayingAudition());
        const QByteArray bytes = TestWorld::read(file);
        QCOMPARE(static_cast<int>(bytes.at(34)), 16);  // whatever the format of the output
        QCOMPARE(AudioIO::readMono(toPath(file)).sampleRate, 8000.0);
        QCOMPARE(model.results()->count(), 0);
        QCOMPARE(model.errorMessage(), QString());
    }

    void theSameSeedSoundsTheSame() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToAudition(model, world);
        const QString file = world.path("tmp/Quillmere-audition.wav");
        model.setSeedText("42");
        auditionAndWait(model);
        const QByteArray first = TestWorld::read(file);
        auditionAndWait(model);
        QCOMPARE(TestWorld::read(file), first);
        QCOMPARE(model.lastSeed(), QStringLiteral("42"));
        model.setSeedText("");
        auditionAndWait(model);
        QVERIFY(TestWorld::read(file) != first);
    }

    void isTheFirstVariationOfAGeneration() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToAudition(model, world);
        model.setSeedText("7");
        auditionAndWait(model);
        model.setOutputText(world.path("out"));
        model.setCount(1);
        model.setFormatIndex(0);
        model.generate();
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(TestWorld::read(world.path("out/corpus_var_0001.wav")),
                 TestWorld::read(world.path("tmp/Quillmere-audition.wav")));
    }

    void withoutAModelItTrainsNothingAndSaysWhatToDo() {
        TestWorld world;
        AppModel model(world.environment);
        prepare(model, world.makeCorpus("corpus"));
        QVERIFY(!model.canAudition());
        model.audition();
        QVERIFY(!model.isBusy());
        QVERIFY(!model.hasModel());
        QCOMPARE(model.errorMessage(),
                 QStringLiteral("There is no model to audition yet. Train one first, or press Generate."));
    }

    void doesNothingWhileBusy() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToAudition(model, world);
        model.setOutputText(world.path("out"));
        model.setCount(3);
        model.generate();
        const QString seed = model.lastSeed();
        model.audition();
        QVERIFY(!model.isAuditioning());
        QVERIFY(waitUntilIdle(model));
        QCOMPARE(model.lastSeed(), seed);
        QCOMPARE(world.player->asked.size(), 0);
    }

    void nothingElseStartsMeanwhile() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToAudition(model, world);
        model.setOutputText(world.path("out"));
        QSignalSpy notice(&model, &AppModel::notice);
        model.audition();
        model.generate();
        QVERIFY(!model.isGenerating());
        QCOMPARE(notice.count(), 1);
        QVERIFY(waitUntilIdle(model));
    }

    void aCancelledAuditionIsNotPlayed() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToAudition(model, world);
        model.audition();
        model.cancel();
        QVERIFY(model.isCancelling());
        QVERIFY(waitUntilIdle(model));
        QVERIFY(!model.isCancelling());
        QCOMPARE(world.player->asked.size(), 0);
        auditionAndWait(model);
        QCOMPARE(world.player->asked.size(), 1);
    }

    void waitsForAModelThatIsBeingLoaded() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToAudition(model, world);
        model.setCorpus(model.corpusURL());
        QVERIFY(QTest::qWaitFor([&] { return model.isLoadingModel(); }));
        model.audition();
        QTRY_VERIFY(model.isPlayingAudition());
        QCOMPARE(model.errorMessage(), QString());
    }

    void reportsATemporaryFolderThatIsGone() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToAudition(model, world);
        QVERIFY(QDir(world.path("tmp")).removeRecursively());
        auditionAndWait(model);
        QVERIFY2(model.errorMessage().contains("Quillmere-audition.wav"), qPrintable(model.errorMessage()));
        QVERIFY(model.playingURL().isEmpty());
    }

    void neverWritesThroughALink() {
        TestWorld world;
        AppModel model(world.environment);
        prepareToAudition(model, world);
        TestWorld::write(world.path("precious"), "keep me");
        QVERIFY(QFile::link(world.path("precious"), world.path("tmp/Quillmere-audition.wav")));
        auditionAndWait(model);
        QCOMPARE(TestWorld::read(world.path("precious")), QByteArray("keep me"));
        QVERIFY(!QFileInfo(world.path("tmp/Quillmere-audition.wav")).isSymLink());
        QCOMPARE(model.errorMessage(), QString());
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::AppModelAuditionTest)
#include "AppModelAuditionTest.moc"
