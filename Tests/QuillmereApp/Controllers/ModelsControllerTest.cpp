// The stored models: the list of them, opening, and throwing away.

#include "QuillmereApp/Controllers/ModelsController.h"

#include <QObject>

#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

bool waitUntilSeen(const ModelsController& models) {
    return QTest::qWaitFor([&] { return !models.isLooking(); }, longestWait);
}

QVariantMap at(const ModelsController& models, int row) {
    return models.models().value(row).toMap();
}

int rowOf(const ModelsController& models, const QString& name) {
    for (int row = 0; row < models.models().size(); ++row) {
        if (at(models, row).value("name") == name) return row;
    }
    return -1;
}

// Models of two folders, the second one open, and listed.
struct TwoModels {
    TwoModels() : app(world.environment) {
        prepareTrained(app, world.makeCorpus("First"));
        prepareTrained(app, world.makeCorpus("Second", 4));
        models().look();
        QVERIFY(waitUntilSeen(models()));
    }
    [[nodiscard]] ModelsController& models() { return *app.models(); }
    [[nodiscard]] int row(const QString& name) { return rowOf(models(), name); }

    TestWorld world;
    AppModel app;
};

}  // namespace

class ModelsControllerTest : public QObject {
    Q_OBJECT

private slots:
    void thereAreNoneAtFirst() {
        TestWorld world;
        AppModel app(world.environment);
        app.models()->look();
        QVERIFY(app.models()->isLooking());
        QVERIFY(waitUntilSeen(*app.models()));
        QVERIFY(app.models()->models().isEmpty());
        QCOMPARE(app.errorMessage(), QString());
    }

    void aLookCanBeEnded() {
        TwoModels two;
        const QVariantList before = two.models().models();
        TestWorld::write(two.world.path("data/Quillmere/Models/Third-0123456789abcdef/weights.bin"),
                         "a part");
        QSignalSpy changed(&two.models(), &ModelsController::modelsChanged);
        two.models().look();
        two.models().stopLooking();
        QVERIFY(!two.models().isLooking());
        AppModelProbe::waitForWork(two.models());
        deliverEvents();
        QCOMPARE(changed.count(), 0);
        QCOMPARE(two.models().models(), before);
        two.models().stopLooking();  // there is none
        two.models().look();
        QVERIFY(waitUntilSeen(two.models()));
        QCOMPARE(two.models().models().size(), 3);
    }

    void listsThemWithWhatTellsThemApart() {
        TwoModels two;
        QCOMPARE(two.models().models().size(), 2);
        const QVariantMap first = at(two.models(), two.row("First"));
        QCOMPARE(first.value("path").toString(), two.world.path("First"));
        QVERIFY(first.value("detail").toString().startsWith("3 samples · trained "));
        QVERIFY(first.value("detail").toString().endsWith(" · 2 steps"));
        QVERIFY(first.value("sizeText").toString().endsWith(" MB"));
        QCOMPARE(first.value("problem").toString(), QString());
        QVERIFY(!first.value("isOpen").toBool());
        QVERIFY(at(two.models(), two.row("Second")).value("isOpen").toBool());
        QVERIFY(two.models().totalText().startsWith("2 models, "));
    }

    void saysWhatCannotBeUsed() {
        TwoModels two;
        const auto folders = ModelStore::list(two.world.environment.modelsRoot);
        TestWorld::write(toQString(folders.front().folder / "weights.bin"), "spoilt");
        two.models().look();
        QVERIFY(waitUntilSeen(two.models()));
        QCOMPARE(two.models().models().size(), 2);
        const QVariantMap last = at(two.models(), 1);  // those that can be used come first
        QVERIFY(!last.value("problem").toString().isEmpty());
        two.models().open(1);
        AppModelProbe::waitForWork(two.models());
        deliverEvents();
        QCOMPARE(two.app.corpusURL(), two.world.url("Second"));
    }

    void opensTheFolderWithItsModel() {
        TwoModels two;
        two.models().open(two.row("First"));
        QVERIFY(QTest::qWaitFor([&] { return two.app.corpusURL() == two.world.url("First"); }, longestWait));
        QVERIFY(waitUntilIdle(two.app));
        QVERIFY(two.app.model()->isReady());
        QCOMPARE(two.app.bundle()->metadata.corpusName, std::string("First"));
        QVERIFY(at(two.models(), two.row("First")).value("isOpen").toBool());
        QVERIFY(!at(two.models(), two.row("Second")).value("isOpen").toBool());
    }

    void opensTheModelOfAFolderThatHasChanged() {
        TwoModels two;
        QSignalSpy notices(&two.app, &AppModel::notice);
        QFile::copy(two.world.path("First/hit0.wav"), two.world.path("First/one more.wav"));
        two.models().open(two.row("First"));
        QVERIFY(QTest::qWaitFor([&] { return two.app.corpusURL() == two.world.url("First"); }, longestWait));
        QVERIFY(waitUntilIdle(two.app));
        QVERIFY(two.app.model()->isReady());
        QCOMPARE(two.app.bundle()->metadata.clipNames.size(), 3U);
        QCOMPARE(two.app.corpus()->fileCount(), 4);
        QVERIFY(notices.last().first().toString().startsWith("The folder has changed"));
        // Chosen as any other folder, it has none.
        two.app.setCorpus(two.world.url("First"));
        QVERIFY(waitUntilIdle(two.app));
        QVERIFY(!two.app.model()->isReady());
    }

    void saysThatAFolderIsGone() {
        TwoModels two;
        QDir(two.world.path("First")).removeRecursively();
        two.models().open(two.row("First"));
        QVERIFY(QTest::qWaitFor([&] { return !two.app.errorMessage().isEmpty(); }, longestWait));
        QVERIFY2(two.app.errorMessage().startsWith("There is no folder"), qPrintable(two.app.errorMessage()));
        QCOMPARE(two.app.corpusURL(), two.world.url("Second"));
    }

    void opensNothingWhileSomethingIsLearned() {
        TwoModels two;
        two.world.steps = 1000000;
        two.app.train();
        two.models().open(two.row("First"));
        AppModelProbe::waitForWork(two.models());
        deliverEvents();
        QCOMPARE(two.app.corpusURL(), two.world.url("Second"));
        two.app.cancel();
        QVERIFY(waitUntilIdle(two.app));
    }

    void movesOneToTheTrashAndBack() {
        TwoModels two;
        const QVariantMap before = at(two.models(), two.row("First"));
        two.models().remove(two.row("First"));
        QVERIFY(QTest::qWaitFor([&] { return two.models().models().size() == 1; }, longestWait));
        QCOMPARE(two.models().removedName(), QStringLiteral("First"));
        QCOMPARE(ModelStore::list(two.world.environment.modelsRoot).size(), 1U);
        QCOMPARE(QDir(two.world.path("trash/files")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 1);

        two.models().restore();
        QVERIFY(QTest::qWaitFor([&] { return two.models().models().size() == 2; }, longestWait));
        QCOMPARE(at(two.models(), two.row("First")), before);
        QCOMPARE(two.models().removedName(), QString());
    }

    void bringsBackOneAfterTheOther() {
        TwoModels two;
        prepareTrained(two.app, two.world.makeCorpus("Third", 5));
        two.models().look();
        QVERIFY(waitUntilSeen(two.models()));
        for (const char* name : {"First", "Second"}) {
            two.models().remove(two.row(name));
            two.models().remove(two.row(name));  // on its way already
            QVERIFY(QTest::qWaitFor([&] { return two.row(name) < 0; }, longestWait));
        }
        AppModelProbe::waitForWork(two.models());
        deliverEvents();
        QCOMPARE(two.app.errorMessage(), QString());
        QCOMPARE(two.models().removedName(), QStringLiteral("Second"));
        two.models().restore();
        QVERIFY(QTest::qWaitFor([&] { return two.row("Second") >= 0; }, longestWait));
        QCOMPARE(two.models().removedName(), QStringLiteral("First"));
        two.models().restore();
        QVERIFY(QTest::qWaitFor([&] { return two.row("First") >= 0; }, longestWait));
        QCOMPARE(two.models().removedName(), QString());
    }

    // A folder that got samples and was learned again has two.
    void opensTheModelThatWasAskedFor() {
        TwoModels two;
        QFile::copy(two.world.path("First/hit0.wav"), two.world.path("First/one more.wav"));
        prepareTrained(two.app, two.world.url("First"));
        prepareTrained(two.app, two.world.url("Second"));
        two.models().look();
        QVERIFY(waitUntilSeen(two.models()));
        int older = -1;
        for (int row = 0; row < 3; ++row) {
            if (at(two.models(), row).value("detail").toString().startsWith("3 samples")) older = row;
        }
        QCOMPARE(at(two.models(), older).value("name").toString(), QStringLiteral("First"));
        two.models().open(older);
        QVERIFY(QTest::qWaitFor([&] { return two.app.corpusURL() == two.world.url("First"); }, longestWait));
        QVERIFY(waitUntilIdle(two.app));
        QCOMPARE(two.app.bundle()->metadata.clipNames.size(), 3U);
        // Scanned again, the folder has the model of its present samples.
        two.app.corpus()->scanAgain();
        QVERIFY(waitUntilIdle(two.app));
        QCOMPARE(two.app.bundle()->metadata.clipNames.size(), 4U);
    }

    void theOneThatIsInUseStaysOpen() {
        TwoModels two;
        const auto generator = two.app.bundle();
        two.models().open(two.row("Second"));
        AppModelProbe::waitForWork(two.models());
        deliverEvents();
        QVERIFY(!two.app.corpus()->isScanning());
        QCOMPARE(two.app.bundle(), generator);
    }

    void deletesTheRemainsOfOne() {
        TwoModels two;
        const QString name = QStringLiteral("Third-0123456789abcdef");
        const QString remains = two.world.path("data/Quillmere/Models/.") + name + ".new-1-1";
        TestWorld::write(remains + "/weights.bin", "a part");
        two.models().look();
        QVERIFY(waitUntilSeen(two.models()));
        QVERIFY(at(two.models(), two.row(name)).value("isRemains").toBool());
        QVERIFY(!at(two.models(), two.row("First")).value("isRemains").toBool());
        two.models().remove(two.row(name));
        QVERIFY(QTest::qWaitFor([&] { return two.models().models().size() == 2; }, longestWait));
        QVERIFY(!QFileInfo::exists(remains));
        QCOMPARE(two.app.errorMessage(), QString());
        QCOMPARE(two.models().removedName(), QString());  // nothing that could come back
    }

    void keepsTheOneThatIsInUse() {
        TwoModels two;
        two.models().remove(two.row("Second"));
        two.models().remove(7);  // there is none
        AppModelProbe::waitForWork(two.models());
        deliverEvents();
        QCOMPARE(two.models().models().size(), 2);
        QCOMPARE(two.models().removedName(), QString());
    }

    void saysThatThereIsNoTrash() {
        TwoModels two;
        two.world.hasTrash = false;
        two.models().remove(two.row("First"));
        QVERIFY(QTest::qWaitFor([&] { return !two.app.errorMessage().isEmpty(); }, longestWait));
        QVERIFY(two.app.errorMessage().startsWith("The model could not be moved to the trash."));
        QCOMPARE(ModelStore::list(two.world.environment.modelsRoot).size(), 2U);
    }

    void bringsNothingBackOverANewerModel() {
        TwoModels two;
        two.models().remove(two.row("First"));
        QVERIFY(QTest::qWaitFor([&] { return two.models().models().size() == 1; }, longestWait));
        prepareTrained(two.app, two.world.url("First"));
        two.models().restore();
        QVERIFY(QTest::qWaitFor([&] { return !two.app.errorMessage().isEmpty(); }, longestWait));
        QCOMPARE(QDir(two.world.path("trash/files")).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 1);
        QCOMPARE(two.models().removedName(), QStringLiteral("First"));
    }

    // ---- A model of the same samples

    void aRenamedFolderFindsItsModel() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        QVERIFY(QDir().rename(world.path("Drums"), world.path("Percussion")));
        prepare(app, world.url("Percussion"));
        QTRY_COMPARE(app.models()->offered(), world.path("Drums"));
        QVERIFY(!app.model()->isReady());
        app.models()->useOffered();
        QVERIFY(waitUntilIdle(app));
        QVERIFY2(app.model()->isReady(), qPrintable(app.errorMessage()));
        QCOMPARE(app.models()->offered(), QString());
    }

    void aCopiedFolderFindsItsModel() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        world.copyFolder("Drums", "Copy");
        prepare(app, world.url("Copy"));
        QTRY_COMPARE(app.models()->offered(), world.path("Drums"));
        QVERIFY(!app.models()->offeredByNames());
        // Another folder withdraws it.
        prepare(app, world.makeCorpus("Bells", 4));
        QCOMPARE(app.models()->offered(), QString());
        app.models()->useOffered();
        QVERIFY(!app.model()->isReady());
    }

    void whatCannotBeComparedIsOfferedByItsNames() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        QVERIFY(QDir(world.path("Drums")).removeRecursively());
        prepare(app, world.makeCorpus("Others", 3, 0.2));
        QTRY_COMPARE(app.models()->offered(), world.path("Drums"));
        QVERIFY(app.models()->offeredByNames());
    }

    void otherSamplesOfTheSameNamesAreOthers() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        prepare(app, world.makeCorpus("Others", 3, 0.2));  // as many files of the same names, but longer
        AppModelProbe::waitForWork(*app.models());
        deliverEvents();
        QCOMPARE(app.models()->offered(), QString());
    }

    void aFolderWithManyMoreIsAnother() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        prepare(app, world.makeCorpus("More", 30));
        AppModelProbe::waitForWork(*app.models());
        deliverEvents();
        QCOMPARE(app.models()->offered(), QString());
    }

    void learningWithdrawsTheOffer() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        world.copyFolder("Drums", "Copy");
        prepare(app, world.url("Copy"));
        QTRY_VERIFY(!app.models()->offered().isEmpty());
        app.train();
        QVERIFY(waitUntilIdle(app));
        QVERIFY(app.model()->isReady());
        QCOMPARE(app.models()->offered(), QString());
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::ModelsControllerTest)
#include "ModelsControllerTest.moc"
