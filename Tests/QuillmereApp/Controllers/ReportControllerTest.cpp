// The report on what was learned, as the window shows it.

#include "QuillmereApp/Controllers/ReportController.h"

#include <QObject>
#include <memory>

#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/TestWorld.h"

namespace quillmere::testing {
namespace {

bool waitUntilMade(const ReportController& report) {
    return QTest::qWaitFor([&] { return !report.isMaking(); }, 60000);
}

}  // namespace

class ReportControllerTest : public QObject {
    Q_OBJECT

private slots:
    void reportsOnTheModel() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("corpus", 5));
        ReportController& report = *app.report();
        QVERIFY(report.canMake());
        QVERIFY(!report.isThere());
        QCOMPARE(report.verdict(), QString());
        report.make();
        QVERIFY(report.isMaking());
        QVERIFY(waitUntilMade(report));
        QVERIFY2(report.isThere(), qPrintable(report.problem()));
        const ReportCard& card = *report.card();
        QCOMPARE(card.clips.size(), 5U);
        QCOMPARE(report.verdict(), QString::fromStdString(card.verdict()));
        QCOMPARE(report.grade(), QStringLiteral("poor"));  // after two steps
        QVERIFY(report.advice().size() == static_cast<qsizetype>(card.advice().size()));
        QVERIFY(report.errorText().endsWith(" dB"));

        const QVariantList worst = report.worst();
        QCOMPARE(worst.size(), 3);
        for (const QVariant& row : worst) {
            const QVariantMap clip = row.toMap();
            QVERIFY(clip.value("name").toString().startsWith("hit"));
            for (const char* url : {"originalUrl", "learnedUrl"}) {
                const auto info = AudioIO::info(toPath(clip.value(url).toUrl()));
                QVERIFY2(info && info->duration > 0, url);
            }
        }
    }

    void namesWhatIsNearlyTheSameAndCanBePlayed() {
        TestWorld world;
        AppModel app(world.environment);
        const QUrl corpus = world.makeCorpus("corpus", 3);
        QFile::copy(world.path("corpus/hit1.wav"), world.path("corpus/twin.wav"));
        prepareTrained(app, corpus);
        app.report()->make();
        QVERIFY(waitUntilMade(*app.report()));
        const QVariantMap pair = app.report()->nearDuplicates().value(0).toMap();
        QCOMPARE(pair.value("first").toString(), QStringLiteral("hit1.wav"));
        QCOMPARE(pair.value("second").toString(), QStringLiteral("twin.wav"));
        QCOMPARE(pair.value("secondUrl").toUrl(), world.url("corpus/twin.wav"));
    }

    void isOfThePresentModelOnly() {
        TestWorld world;
        AppModel app(world.environment);
        const QUrl corpus = world.makeCorpus("corpus");
        QVERIFY(!app.report()->canMake());
        app.report()->make();
        QVERIFY(!app.report()->isMaking());
        prepareTrained(app, corpus);
        app.report()->make();
        QVERIFY(waitUntilMade(*app.report()));
        QVERIFY(app.report()->isThere());
        app.report()->make();  // once is enough
        QVERIFY(!app.report()->isMaking());
        app.train();
        QVERIFY(waitUntilIdle(app));
        QVERIFY(!app.report()->isThere());
        QVERIFY(app.report()->canMake());
        prepare(app, world.makeCorpus("other"));
        QVERIFY(!app.report()->canMake());
    }

    void whatIsNotWantedAnyMoreNeverComes() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("corpus"));
        app.report()->make();
        app.report()->cancel();
        QVERIFY(!app.report()->isMaking());
        AppModelProbe::waitForWork(*app.report());
        deliverEvents();
        QVERIFY(!app.report()->isThere());
        QCOMPARE(app.report()->problem(), QString());
    }

    void saysWhyThereIsNone() {
        TestWorld world;
        AppModel app(world.environment);
        const QUrl corpus = world.makeCorpus("corpus");
        prepareTrained(app, corpus);
        QFile::remove(world.path("corpus/hit0.wav"));
        app.report()->make();
        QVERIFY(waitUntilMade(*app.report()));
        QVERIFY(!app.report()->isThere());
        QVERIFY(!app.report()->problem().isEmpty());
        QCOMPARE(app.errorMessage(), QString());
        world.makeCorpus("corpus");
        app.report()->make();  // tries again
        QVERIFY(app.report()->isMaking());
        QCOMPARE(app.report()->problem(), QString());
        QVERIFY(waitUntilMade(*app.report()));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::ReportControllerTest)
#include "ReportControllerTest.moc"
