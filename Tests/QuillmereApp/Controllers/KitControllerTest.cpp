// Kits for samplers, made of results.

#include <QObject>

#include "QuillmereApp/Controllers/KitController.h"
#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"
#include "QuillmereCore/Origin/Runs.h"

namespace quillmere::testing {
namespace {

// The application with a model and three files.
struct Studio {
    explicit Studio(TestWorld& ownWorld) : world(ownWorld), app(ownWorld.environment), told(*app.kits()) {
        prepareTrained(app, world.makeCorpus("Drums"));
        app.setOutputText(world.path("out"));
        app.setCount(3);
        app.generate();
        QVERIFY(waitUntilIdle(app));
    }

    [[nodiscard]] KitController& kits() { return *app.kits(); }
    void makeAndWait(int row) {
        app.makeKit(row);
        QVERIFY(kits().isMaking());
        QVERIFY(waitUntilIdle(app));
    }
    [[nodiscard]] QStringList filesIn(const QString& folder) const {
        QStringList names = QDir(world.path(folder)).entryList(QDir::Files | QDir::Hidden);
        names.sort();  // in whatever language
        return names;
    }

    TestWorld& world;
    AppModel app;
    Told told;
};

}  // namespace

class KitControllerTest : public QObject {
    Q_OBJECT

private slots:
    void makesOneOfASound() {
        TestWorld world;
        Studio studio(world);
        QSignalSpy made(&studio.kits(), &KitController::made);
        studio.makeAndWait(1);
        QCOMPARE(studio.told.error, QString());
        QCOMPARE(made.count(), 1);
        QCOMPARE(made.first().first().toUrl(), world.url("out/Drums_Kit"));
        QCOMPARE(studio.filesIn("out/Drums_Kit"),
                 QStringList({"01_Drums_var_0002_1.wav", "01_Drums_var_0002_2.wav", "01_Drums_var_0002_3.wav",
                              "01_Drums_var_0002_4.wav", "Drums_Kit.sfz", "drumkit.xml"}));
        QCOMPARE(studio.kits().done(), 4);
        QCOMPARE(studio.kits().total(), 4);
        QVERIFY(studio.told.notices.contains("Kit written: " + world.path("out/Drums_Kit")));
        const QByteArray sfz = TestWorld::read(world.path("out/Drums_Kit/Drums_Kit.sfz"));
        QVERIFY(sfz.contains("01_Drums_var_0002_3.wav"));
    }

    void makesOneOfTheSelection() {
        TestWorld world;
        Studio studio(world);
        studio.app.results()->toggleSelected(2);
        studio.app.results()->toggleSelected(0);
        studio.makeAndWait(1);
        QCOMPARE(studio.kits().done(), 8);
        const QStringList files = studio.filesIn("out/Drums_Kit");
        QVERIFY(files.contains("01_Drums_var_0001_1.wav") && files.contains("02_Drums_var_0003_1.wav"));
    }

    void theNextOneHasAnotherName() {
        TestWorld world;
        Studio studio(world);
        studio.makeAndWait(0);
        studio.makeAndWait(0);
        QVERIFY(QFileInfo::exists(world.path("out/Drums_Kit_2/Drums_Kit_2.sfz")));
    }

    void theJournalKnowsItsSounds() {
        TestWorld world;
        Studio studio(world);
        studio.makeAndWait(0);
        const auto runs =
            runsOf({.name = "Drums", .fingerprint = ""}, Journal(*world.environment.journalFile));
        std::size_t inKit = 0;
        for (const JournalRun& run : runs) {
            for (const JournalEntry& file : run.files) {
                if (file.file.find("Drums_Kit") == std::string::npos) continue;
                ++inKit;
                QVERIFY(file.recipe.fit);
            }
        }
        QCOMPARE(inKit, 4U);
    }

    void canBeCancelled() {
        TestWorld world;
        Studio studio(world);
        studio.app.makeKit(0);
        QVERIFY(studio.kits().isMaking() && studio.app.isBusy());
        studio.app.cancel();
        QVERIFY(studio.kits().isCancelling() || !studio.kits().isMaking());
        QVERIFY(waitUntilIdle(studio.app));
        QVERIFY(!QFileInfo::exists(world.path("out/Drums_Kit/drumkit.xml")));
        QCOMPARE(studio.told.error, QString());
        QCOMPARE(studio.told.notices.contains("The kit is not complete: " + world.path("out/Drums_Kit")),
                 QFileInfo::exists(world.path("out/Drums_Kit")));
    }

    void isRefusedWithASentence() {
        TestWorld world;
        Studio studio(world);
        studio.app.makeKit(-1);
        studio.app.makeKit(7);
        QCOMPARE(studio.told.notices, QStringList({"Choose sounds that the present model has made.",
                                                   "Choose sounds that the present model has made."}));
        std::vector<KitFolder::Chosen> many(93);
        studio.kits().make(many);
        QCOMPARE(studio.told.notices.last(), QStringLiteral("A kit has keys for 92 sounds. Choose fewer."));
        studio.kits().setActivity({.isTraining = true});
        QVERIFY(!studio.kits().canMake());
        studio.app.makeKit(0);
        QCOMPARE(studio.told.notices.last(), Activity::waitNotice());
        studio.kits().setActivity({});
        studio.app.setOutputText("");
        studio.app.makeKit(0);
        QCOMPARE(studio.told.error, QStringLiteral("Choose an output folder first."));
        QVERIFY(!studio.kits().isMaking());
    }

    void isOfOneModel() {
        TestWorld world;
        Studio studio(world);
        const auto samples = studio.app.results()->all();
        const auto base = studio.app.generation()->baseOf(studio.app.results()->urlAt(0));
        world.steps = 3;
        studio.app.train();
        QVERIFY(waitUntilIdle(studio.app));
        studio.app.generation()->showEarlier(samples, base, world.url("out"));
        studio.makeAndWait(0);
        QCOMPARE(studio.told.error,
                 QStringLiteral("A sound of these was made by another model: Drums_var_0001.wav. Choose "
                                "sounds of one model."));
    }

    void aFolderThatDoesNotAnswerIsTold() {
        TestWorld world;
        world.cutOff("dead");
        Studio studio(world);
        studio.app.setOutputText(world.path("dead"));
        studio.makeAndWait(0);
        QVERIFY2(studio.told.error.contains("does not answer"), qPrintable(studio.told.error));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::KitControllerTest)
#include "KitControllerTest.moc"
