// How bright and how new sounds are: when it is found out, and of which.

#include <QObject>
#include <optional>

#include "QuillmereApp/Controllers/MeasuresController.h"
#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"
#include "QuillmereCore/Model/Corpus.h"

namespace quillmere::testing {
namespace {

PlayableSound tone(double hertz) {
    constexpr int rate = 44100;
    return {.samples = std::make_shared<const std::vector<float>>(sine(hertz, rate, 8000, 0.5)),
            .sampleRate = rate};
}

// A MeasuresController, and the corpus that it compares with.
struct Laboratory {
    explicit Laboratory(int files = 3)
        : corpus(
              std::make_shared<const CorpusSummary>(Corpus::scan(toPath(world.makeCorpus("Drums", files))))),
          measures(world.environment, {.prints = [this] { return prints; },
                                       .makePrints =
                                           [this](bool isAsked) {
                                               ++printsWanted;
                                               wasAsked = isAsked;
                                           },
                                       .withdrawPrints = [this] { ++printsWithdrawn; }}) {
        measures.setCorpus(corpus);
    }

    void makePrints() {
        prints = std::make_shared<const Inspection::CorpusPrints>(
            corpus, [](std::int64_t) {}, std::stop_token());
        measures.comparisonChanged();
    }
    [[nodiscard]] SoundMeasure known(const QUrl& name, const PlayableSound& sound) {
        (void)QTest::qWaitFor([&] { return measures.of(name, sound).brightness >= 0; });
        return measures.of(name, sound);
    }

    TestWorld world;
    std::shared_ptr<const CorpusSummary> corpus;
    std::shared_ptr<const Inspection::CorpusPrints> prints;
    int printsWanted = 0;
    int printsWithdrawn = 0;
    bool wasAsked = false;  // for those that were wanted last
    MeasuresController measures;
};

const QUrl low(QStringLiteral("candidate:1"));
const QUrl high(QStringLiteral("candidate:2"));

}  // namespace

class MeasuresControllerTest : public QObject {
    Q_OBJECT

private slots:
    void higherSoundsAreBrighter() {
        Laboratory laboratory;
        QSignalSpy changed(&laboratory.measures, &MeasuresController::changed);
        QCOMPARE(laboratory.measures.of(low, tone(200)), SoundMeasure());
        const double dark = laboratory.known(low, tone(200)).brightness;
        const double bright = laboratory.known(high, tone(6000)).brightness;
        QVERIFY2(dark > 0 && bright < 1, "within the bands");
        QVERIFY(dark + 0.2 < bright);
        QTRY_VERIFY(changed.count() > 0);
    }

    void noveltyIsKnownWhenTheCorpusIs() {
        Laboratory laboratory;
        const PlayableSound sound = Inspection::read(toPath(laboratory.world.path("Drums/hit1.wav")));
        QCOMPARE(laboratory.known(low, sound).novelty, -1.0);
        QCOMPARE(laboratory.known(low, sound).noveltyText(), QString());
        QCOMPARE(laboratory.printsWanted, 1);  // once, unasked: it is a small one
        laboratory.makePrints();
        QTRY_COMPARE(laboratory.measures.of(low, sound).novelty, 0.0);  // it is one of them
        QCOMPARE(laboratory.measures.of(low, sound).noveltyText(), QStringLiteral("copy"));
        QVERIFY(laboratory.known(high, tone(6000)).novelty > 0);
        QCOMPARE(laboratory.printsWanted, 1);
    }

    void filesAreReadThemselves() {
        Laboratory laboratory;
        const QUrl file = laboratory.world.url("Drums/hit0.wav");
        QTRY_VERIFY(laboratory.measures.of(file).brightness >= 0);
    }

    void whatCannotBeReadStaysUnknown() {
        Laboratory laboratory;
        const QUrl gone = laboratory.world.url("Drums/none.wav");
        QCOMPARE(laboratory.measures.of(gone), SoundMeasure());
        const PlayableSound silence{.samples = std::make_shared<const std::vector<float>>(4000, 0.0F),
                                    .sampleRate = 8000};
        QCOMPARE(laboratory.measures.of(low, silence), SoundMeasure());
        QVERIFY(laboratory.known(high, tone(500)).brightness > 0);  // after these
        QCOMPARE(laboratory.measures.of(gone), SoundMeasure());
        QCOMPARE(laboratory.measures.of(low, silence), SoundMeasure());
    }

    void aLargeCorpusIsComparedOnlyWhenSomebodyWantsIt() {
        Laboratory laboratory;
        auto large = *laboratory.corpus;
        large.files.resize(MeasuresController::mostUnasked + 1, large.files.front());
        laboratory.measures.setCorpus(std::make_shared<const CorpusSummary>(large));
        (void)laboratory.known(low, tone(200));
        QCOMPARE(laboratory.printsWanted, 0);
        laboratory.measures.compareAnyway();
        laboratory.measures.compareAnyway();
        QCOMPARE(laboratory.printsWanted, 1);
        QVERIFY(laboratory.wasAsked);
    }

    void whatNobodyHasAskedForGivesWayToWhatRuns() {
        Laboratory laboratory;
        (void)laboratory.known(low, tone(200));
        QCOMPARE(laboratory.printsWanted, 1);
        QVERIFY(!laboratory.wasAsked);
        laboratory.measures.setActivity({.isAuditioning = true});
        QCOMPARE(laboratory.printsWithdrawn, 1);
        laboratory.measures.setActivity({.isTraining = true});
        QCOMPARE(laboratory.printsWithdrawn, 1);
        laboratory.measures.setActivity({});
        QCOMPARE(laboratory.printsWanted, 2);
        QVERIFY(!laboratory.wasAsked);
    }

    void whatSomebodyHasAskedForGoesOn() {
        Laboratory laboratory;
        (void)laboratory.known(low, tone(200));
        laboratory.measures.compareAnyway();
        QCOMPARE(laboratory.printsWanted, 2);
        QVERIFY(laboratory.wasAsked);
        laboratory.measures.setActivity({.isTraining = true});
        laboratory.measures.setActivity({});
        QCOMPARE(laboratory.printsWithdrawn, 0);
        QCOMPARE(laboratory.printsWanted, 2);
    }

    void theWindowsComparisonGivesWay() {
        TestWorld world;
        Gate gate;
        world.holdRuns(gate);
        gate.open();
        AppModel app(world.environment);
        prepare(app, world.makeCorpus("Drums"));
        gate.close();
        (void)app.measures()->of(world.url("Drums/hit0.wav"));
        QTRY_VERIFY(app.inspector()->isComparing());
        app.measures()->setActivity({.isTrying = true});
        QVERIFY(!app.inspector()->isComparing());
        app.measures()->setActivity({});
        QTRY_VERIFY(app.inspector()->isComparing());  // after the sound that is measured just now
        gate.open();
        QTRY_VERIFY(app.inspector()->prints());
    }

    void whatWasWantedWhileSomethingRanFollows() {
        Laboratory laboratory;
        auto large = *laboratory.corpus;
        large.files.resize(MeasuresController::mostUnasked + 1, large.files.front());
        laboratory.measures.setCorpus(std::make_shared<const CorpusSummary>(large));
        (void)laboratory.known(low, tone(200));
        laboratory.measures.setActivity({.isTraining = true});
        laboratory.measures.compareAnyway();
        QCOMPARE(laboratory.printsWanted, 0);
        laboratory.measures.setActivity({});
        QCOMPARE(laboratory.printsWanted, 1);
    }

    void aComparisonThatFailsIsNotBegunAgain() {
        Laboratory laboratory;
        (void)laboratory.known(low, tone(200));
        QCOMPARE(laboratory.printsWanted, 1);
        laboratory.measures.comparisonFailed("Broken.");
        laboratory.measures.setActivity({.isTrying = true});
        laboratory.measures.setActivity({});
        QCOMPARE(laboratory.printsWanted, 1);
    }

    void aComparisonThatFailsIsToldOfWhereItWasWanted() {
        Laboratory laboratory;
        Told told(laboratory.measures);
        (void)laboratory.known(low, tone(200));
        laboratory.measures.comparisonFailed("Broken.");
        QCOMPARE(told.error, QString());
        laboratory.measures.compareAnyway();
        QCOMPARE(laboratory.printsWanted, 2);
        laboratory.measures.comparisonFailed("Broken.");
        QCOMPARE(told.error, QStringLiteral("Broken."));
    }

    void settlesWhenNothingMoreIsMeasured() {
        Laboratory laboratory;
        QSignalSpy settled(&laboratory.measures, &MeasuresController::settled);
        (void)laboratory.known(low, tone(200));
        (void)laboratory.known(high, tone(400));
        QTRY_VERIFY(settled.count() > 0);
        laboratory.measures.forget(low);
        QCOMPARE(laboratory.measures.of(low, tone(200)), SoundMeasure());
    }

    void filesThatAreGoneTakeNoMemory() {
        Laboratory laboratory;
        const QUrl file = laboratory.world.url("Drums/hit0.wav");
        QTRY_VERIFY(laboratory.measures.of(file).brightness >= 0);
        (void)laboratory.known(low, tone(200));
        laboratory.measures.keepFiles([&](const QUrl& one) { return one == file; });
        QVERIFY(laboratory.measures.of(file).brightness >= 0);
        laboratory.measures.keepFiles([](const QUrl&) { return false; });
        QCOMPARE(laboratory.measures.of(file), SoundMeasure());
        QVERIFY(laboratory.measures.of(low, tone(200)).brightness >= 0);  // no file
        QTRY_VERIFY(laboratory.measures.of(file).brightness >= 0);        // wanted again
    }

    void otherResultsTakeThePlaceOfWhatIsKnown() {
        TestWorld world;
        AppModel app(world.environment);
        prepare(app, world.makeCorpus("Drums"));
        const QUrl file = world.url("Drums/hit0.wav");
        app.results()->setSamples({{.url = toPath(file), .seconds = 0.1}});
        QTRY_VERIFY(app.measures()->of(file).brightness >= 0);
        app.results()->setOnlyFavourites(true);  // hidden, and still a result
        QVERIFY(app.measures()->of(file).brightness >= 0);
        app.results()->setSamples({{.url = toPath(world.path("Drums/hit1.wav")), .seconds = 0.1}});
        QCOMPARE(app.measures()->of(file), SoundMeasure());
    }

    void withoutACorpusThereIsNothingToCompareWith() {
        Laboratory laboratory;
        laboratory.measures.setCorpus(nullptr);
        (void)laboratory.known(low, tone(200));
        laboratory.measures.compareAnyway();
        QCOMPARE(laboratory.printsWanted, 0);
    }

    void anotherCorpusIsAnotherComparison() {
        Laboratory laboratory;
        laboratory.makePrints();
        QVERIFY(laboratory.known(low, tone(200)).novelty > 0);
        laboratory.prints.reset();
        laboratory.measures.setCorpus(laboratory.corpus);
        QCOMPARE(laboratory.measures.of(low, tone(200)).novelty, -1.0);
        laboratory.makePrints();
        QTRY_VERIFY(laboratory.measures.of(low, tone(200)).novelty > 0);
    }

    void waitsWhileSomethingRuns() {
        Laboratory laboratory;
        laboratory.measures.setActivity({.isTrying = true});
        (void)laboratory.measures.of(low, tone(200));
        deliverEvents();
        AppModelProbe::waitForWork(laboratory.measures);
        deliverEvents();
        QCOMPARE(laboratory.measures.of(low, tone(200)), SoundMeasure());
        QCOMPARE(laboratory.printsWanted, 0);
        laboratory.measures.setActivity({});
        QVERIFY(laboratory.known(low, tone(200)).brightness > 0);
        QCOMPARE(laboratory.printsWanted, 1);
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::MeasuresControllerTest)
#include "MeasuresControllerTest.moc"
