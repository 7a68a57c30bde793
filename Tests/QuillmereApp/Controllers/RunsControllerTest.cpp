// Earlier runs: which ones there are, and what it means to open one.

#include <QObject>

#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/Gate.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"
#include "QuillmereCore/Model/ModelIdentity.h"

namespace quillmere::testing {
namespace {

// The application with a model, and three files and a set of candidates made of it.
struct Past {
    Past() : told(*app.runs()) {
        prepareTrained(app, world.makeCorpus("Drums"));
        app.setOutputText(world.path("out"));
        app.setCount(3);
        app.setSeedText("7");
        app.generate();
        wait();
        app.setSeedText("8");
        app.candidates()->start();
        wait();
        AppModelProbe::waitForWork(app);
    }

    void wait() { QVERIFY(waitUntilIdle(app)); }
    [[nodiscard]] RunsController& runs() { return *app.runs(); }
    [[nodiscard]] QVariant value(int row, const char* key) {
        return runs().runs().value(row).toMap().value(QLatin1String(key));
    }
    void look() {
        runs().look();
        QTRY_VERIFY(!runs().isLooking());
    }

    TestWorld world;
    AppModel app{world.environment};
    Told told;
};

}  // namespace

class RunsControllerTest : public QObject {
    Q_OBJECT

private slots:
    void withoutAFolderThereAreNone() {
        TestWorld world;
        AppModel app(world.environment);
        QVERIFY(!app.runs()->canShow());
        app.runs()->look();
        QVERIFY(!app.runs()->isLooking());
        app.runs()->open(0);
        app.runs()->useSettings(-1);
        QVERIFY(app.runs()->runs().isEmpty());
    }

    void aNewFolderHasNone() {
        TestWorld world;
        AppModel app(world.environment);
        prepare(app, world.makeCorpus("Drums"));
        QVERIFY(app.runs()->canShow());
        app.runs()->look();
        QTRY_VERIFY(!app.runs()->isLooking());
        QVERIFY(app.runs()->runs().isEmpty());
        QCOMPARE(app.errorMessage(), QString());
    }

    void theNewestIsFirst() {
        Past past;
        past.look();
        QCOMPARE(past.runs().runs().size(), 2);
        QVERIFY(past.value(0, "isSet").toBool());
        QCOMPARE(past.value(0, "what").toString(), QStringLiteral("12 candidates"));
        QCOMPARE(past.value(0, "seed").toString(), QStringLiteral("8"));
        QCOMPARE(past.value(0, "preset").toString(), QStringLiteral("Balanced"));
        QVERIFY(!past.value(1, "isSet").toBool());
        QCOMPARE(past.value(1, "what").toString(), QStringLiteral("3 files"));
        QCOMPARE(past.value(1, "seed").toString(), QStringLiteral("7"));
        QCOMPARE(past.value(1, "place").toString(), past.world.path("out"));
        const QDateTime date = QDateTime::fromString(past.value(1, "date").toString(), "d MMM yyyy, hh:mm");
        QVERIFY(date.isValid());
        QVERIFY(std::abs(date.secsTo(QDateTime::currentDateTime())) < 600);
    }

    void filesAreTheResultsAgain() {
        Past past;
        const std::vector<GeneratedSample> before = past.app.results()->all();
        past.app.setSeedText("9");
        past.app.setOutputText(past.world.path("elsewhere"));
        past.app.generate();
        past.wait();
        past.look();
        QCOMPARE(past.runs().runs().size(), 3);
        past.runs().open(2);
        QTRY_COMPARE(past.app.results()->urlAt(0), toUrl(before.front().url));
        QCOMPARE(past.app.results()->count(), 3);
        for (std::size_t i = 0; i < 3; ++i) {
            const GeneratedSample& now = past.app.results()->all()[i];
            QCOMPARE(now.url, before[i].url);
            QCOMPARE(now.origin.latent, before[i].origin.latent);
            QVERIFY(std::abs(now.seconds - before[i].seconds) < 1e-9);
        }
        // What made them is known.
        const auto base = past.app.generation()->baseOf(toUrl(before.front().url));
        QVERIFY(base);
        QCOMPARE(base->corpusName, std::string("Drums"));
        QCOMPARE(past.app.lastOutputFolder(), past.world.url("out"));
    }

    void filesThatAreGoneAreSeenToBe() {
        Past past;
        const QUrl gone = past.app.results()->urlAt(1);
        QVERIFY(QFile::remove(gone.toLocalFile()));
        past.look();
        past.app.results()->setSamples({});
        past.runs().open(1);
        QTRY_COMPARE(past.app.results()->count(), 3);
        QTRY_VERIFY(!past.app.results()->existsAt(1));
        QVERIFY(past.app.results()->existsAt(0));
    }

    void aSetIsRenderedOnceMore() {
        Past past;
        const auto before = *past.app.candidates()->list()->at(4)->sound.samples;
        past.app.setSeedText("10");
        past.look();
        past.runs().open(0);
        QVERIFY(past.app.candidates()->isTrying());
        past.wait();
        QCOMPARE(past.app.candidates()->sets(), 2);
        QCOMPARE(past.app.candidates()->seed(), QStringLiteral("8"));
        QCOMPARE(*past.app.candidates()->list()->at(4)->sound.samples, before);
        AppModelProbe::waitForWork(past.app);
        past.look();
        QCOMPARE(past.runs().runs().size(), 2);  // it is there already
    }

    void relativesAreRenderedOnceMore() {
        Past past;
        const CandidateHandle parent = past.app.candidates()->list()->at(2);
        past.app.candidates()->startRelated({.way = CandidatesRelation::Way::body,
                                             .parent = makeRecipe(parent->origin, *parent->base),
                                             .name = "Candidate 3"});
        past.wait();
        const auto before = *past.app.candidates()->list()->at(1)->sound.samples;
        AppModelProbe::waitForWork(past.app);
        past.look();
        QCOMPARE(past.value(0, "place").toString(), QStringLiteral("Relatives of Candidate 3"));
        past.runs().open(0);
        past.wait();
        QCOMPARE(past.app.candidates()->about(), QStringLiteral("New skins of Candidate 3"));
        QCOMPARE(*past.app.candidates()->list()->at(1)->sound.samples, before);
    }

    void settingsComeBack() {
        Past past;
        past.app.output()->setDetail(0.5);
        past.app.apply(*Preset::named("Wild"));
        past.look();
        past.runs().useSettings(1);
        QCOMPARE(past.app.aesthetics(), Preset::named("Balanced")->aesthetics);
        QCOMPARE(past.app.presetName(), QStringLiteral("Balanced"));
        QCOMPARE(past.app.seedText(), QStringLiteral("7"));
        QCOMPARE(past.app.output()->detail(), 0.0);
        past.app.character()->undo();
        QCOMPARE(past.app.presetName(), QStringLiteral("Wild"));
    }

    void nothingIsOpenedWhileSomethingRuns() {
        Past past;
        past.look();
        past.runs().setActivity({.isTraining = true});
        past.runs().open(0);
        past.runs().open(1);
        QVERIFY(!past.runs().isLooking());
        QCOMPARE(past.told.notices, QStringList({Activity::waitNotice(), Activity::waitNotice()}));
    }

    void aGenerationComesBeforeWhatIsBeingOpened() {
        Past past;
        past.look();
        past.app.results()->setSamples({});
        past.runs().open(1);
        QVERIFY(past.runs().isLooking());
        past.runs().setActivity({.isAuditioning = true});
        QVERIFY(past.runs().isLooking());
        past.runs().setActivity({.isGenerating = true});
        QVERIFY(!past.runs().isLooking());
        AppModelProbe::waitForWork(past.runs());
        deliverEvents();
        QCOMPARE(past.app.results()->count(), 0);
    }

    void whatNobodySeesIsForgottenButOpened() {
        Past past;
        past.look();
        past.app.results()->setSamples({});
        past.runs().open(1);
        past.runs().forget();
        QVERIFY(past.runs().runs().isEmpty());
        QTRY_COMPARE(past.app.results()->count(), 3);
        past.runs().look();
        past.runs().forget();
        AppModelProbe::waitForWork(past.runs());
        deliverEvents();
        QVERIFY(past.runs().runs().isEmpty());
    }

    void theyAreThoseOfTheFolder() {
        Past past;
        past.look();
        prepare(past.app, past.world.makeCorpus("Bells", 4));
        QVERIFY(past.runs().runs().isEmpty());
        past.look();
        QVERIFY(past.runs().runs().isEmpty());
        prepare(past.app, past.world.url("Drums"));
        past.look();
        QCOMPARE(past.runs().runs().size(), 2);
    }

    void anUnreadableJournalIsTold() {
        Past past;
        const QString journal = past.world.path("data/Quillmere/journal.jsonl");
        QVERIFY(QFile::remove(journal));
        QDir().mkpath(journal);
        past.runs().look();
        QTRY_VERIFY(!past.told.error.isEmpty());
        QVERIFY(past.told.error.contains("journal.jsonl"));
        QVERIFY(!past.runs().isLooking());
    }

    void aFolderThatDoesNotAnswerIsNotWaitedFor() {
        TestWorld world;
        {
            AppModel app(world.environment);
            prepareTrained(app, world.makeCorpus("Drums"));
            app.setOutputText(world.path("out"));
            app.setCount(1);
            app.generate();
            QVERIFY(waitUntilIdle(app));
        }
        world.cutOff("out");
        AppModel app(world.environment);
        QVERIFY(waitUntilIdle(app));
        app.runs()->look();
        QTRY_COMPARE(app.runs()->runs().size(), 1);
        app.runs()->open(0);
        QTRY_COMPARE(app.results()->count(), 1);
        QTRY_VERIFY(!app.results()->existsAt(0));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::RunsControllerTest)
#include "RunsControllerTest.moc"
