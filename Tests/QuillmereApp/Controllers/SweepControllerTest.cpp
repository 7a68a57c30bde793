// One sound along a slider: what is rendered, played and taken.

#include <QObject>
#include <memory>

#include "QuillmereApp/Controllers/SweepController.h"
#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/Gate.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"
#include "QuillmereCore/Network/Backend.h"
#include "Support/SmallModel.h"

namespace quillmere::testing {
namespace {

// A SweepController with a model that has learned nothing.
struct Studio {
    explicit Studio(const TestWorld& world)
        : sweep(world.environment, {.request = [this] { return request; },
                                    .generator = [this]() -> PreparedGenerator {
                                        return [this, ready = generator] {
                                            holdGenerator.pass();
                                            return ready;
                                        };
                                    }}),
          told(sweep) {
        generator = std::make_shared<SampleGenerator>(smallModel(), *cpu);
        request.aesthetics.phaseIterations = 1;
        request.seed = 42;
        sweep.setHasModel(true);
        QObject::connect(&sweep, &SweepController::playRequested, &sweep,
                         [this](const QUrl& name, const PlayableSound& sound) {
                             played.append(name);
                             sounds.push_back(sound);
                         });
    }

    [[nodiscard]] QVariantMap tile(int place) const { return sweep.tiles().value(place).toMap(); }
    [[nodiscard]] bool isRendered(int place) const {
        return !tile(place).value("peaks").value<QList<qreal>>().isEmpty();
    }
    [[nodiscard]] bool waitUntilRendered() const {
        return QTest::qWaitFor([&] { return !sweep.isRendering(); }, longestWait);
    }
    [[nodiscard]] QStringList texts() const {
        QStringList found;
        for (const QVariant& one : sweep.tiles())
            found.append(one.toMap().value("text").toString());
        return found;
    }

    std::unique_ptr<network::Backend> cpu = network::makeCPUBackend();
    std::shared_ptr<SampleGenerator> generator;
    AuditionRequest request;
    Gate holdGenerator;
    QList<QUrl> played;
    std::vector<PlayableSound> sounds;
    SweepController sweep;
    Told told;
};

void openAndWait(Studio& studio, const QString& parameter) {
    studio.sweep.open(parameter);
    QVERIFY(studio.sweep.isOpen());
    QVERIFY(studio.waitUntilRendered());
}

}  // namespace

class SweepControllerTest : public QObject {
    Q_OBJECT

private slots:
    void sevenPlacesLieAlongTheSlider() {
        TestWorld world;
        Studio studio(world);
        openAndWait(studio, "pitch");
        QCOMPARE(studio.sweep.title(), QStringLiteral("Pitch"));
        const QStringList texts = studio.texts();
        QCOMPARE(texts.size(), 7);
        const ParameterSpec& spec = *Aesthetics::spec("pitch");
        QCOMPARE(texts.first(), QString::fromStdString(spec.format(spec.lower)));
        QCOMPARE(texts.last(), QString::fromStdString(spec.format(spec.upper)));
        QVERIFY(studio.tile(3).value("isCurrent").toBool());
        QVERIFY(!studio.tile(2).value("isCurrent").toBool());
        for (int place = 0; place < 7; ++place)
            QVERIFY(studio.isRendered(place));
        QCOMPARE(studio.told.error, QString());
    }

    void eachIsTheAuditionWithThatValue() {
        TestWorld world;
        Studio studio(world);
        openAndWait(studio, "drive");
        const ParameterSpec& spec = *Aesthetics::spec("drive");
        for (const int place : {0, 6}) {
            studio.sweep.play(place);
            AuditionRequest request = studio.request;
            request.aesthetics.set(spec, place == 0 ? spec.lower : spec.upper);
            QCOMPARE(*studio.sounds.back().samples, studio.generator->audition(request).samples);
            QCOMPARE(studio.played.back(), studio.tile(place).value("name").toUrl());
        }
    }

    void aTakenValueEndsIt() {
        TestWorld world;
        Studio studio(world);
        QSignalSpy taken(&studio.sweep, &SweepController::taken);
        QSignalSpy removed(&studio.sweep, &SweepController::removed);
        openAndWait(studio, "pitch");
        studio.sweep.take(7);
        QCOMPARE(taken.count(), 0);
        studio.sweep.take(6);
        QCOMPARE(taken.count(), 1);
        QCOMPARE(taken.first().first().toString(), QStringLiteral("pitch"));
        QCOMPARE(taken.first().at(1).toDouble(), Aesthetics::spec("pitch")->upper);
        QVERIFY(!studio.sweep.isOpen());
        QCOMPARE(studio.sweep.tiles().size(), 0);
        QCOMPARE(removed.count(), 7);
        studio.sweep.take(0);
        QCOMPARE(taken.count(), 1);
    }

    void whatIsNotRenderedYetIsPassedOver() {
        TestWorld world;
        Studio studio(world);
        studio.holdGenerator.close();
        studio.sweep.open("pitch");
        QVERIFY(studio.sweep.isRendering());
        for (const int place : {-1, 0, 6, 7}) {
            studio.sweep.play(place);
            studio.sweep.togglePlay(place);
        }
        QVERIFY(studio.played.isEmpty());
        studio.sweep.close();
        QVERIFY(!studio.sweep.isOpen());
        studio.holdGenerator.open();
        QVERIFY(studio.waitUntilRendered());
        QCOMPARE(studio.sweep.tiles().size(), 0);
        QCOMPARE(studio.told.error, QString());
    }

    void isRefusedWithASentence() {
        TestWorld world;
        Studio studio(world);
        studio.sweep.open("nothing");
        QVERIFY(!studio.sweep.isOpen() && studio.told.notices.isEmpty());
        studio.sweep.setActivity({.isGenerating = true});
        studio.sweep.open("pitch");
        QCOMPARE(studio.told.notices.last(), Activity::waitNotice());
        studio.sweep.setActivity({});
        studio.sweep.setHasModel(false);
        studio.sweep.open("pitch");
        QVERIFY(!studio.sweep.isOpen());
        QCOMPARE(studio.told.notices.last(),
                 QStringLiteral("There is no model to audition yet. Train one first, or press Generate."));
    }

    void closingTheProgramWaits() {
        TestWorld world;
        auto studio = std::make_unique<Studio>(world);
        studio->request.aesthetics.phaseIterations = 2000;
        studio->sweep.open("pitch");
        studio.reset();
    }

    // ---- In the application

    void theValueThatIsTakenIsAnEdit() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        app.setSeedText("5");
        app.sweep()->open("pitch");
        QVERIFY(app.isBusy());
        QVERIFY(waitUntilIdle(app));
        app.sweep()->take(6);
        QCOMPARE(app.aesthetics().pitch, Aesthetics::spec("pitch")->upper);
        app.character()->undo();
        QCOMPARE(app.aesthetics().pitch, 0.0);
    }

    void theSeedIsThatOfTheLastSound() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        app.audition();
        QVERIFY(waitUntilIdle(app));
        const QString seed = app.character()->lastSeed();
        app.sweep()->open("pitch");
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(app.character()->lastSeed(), seed);
        app.sweep()->close();
    }

    // ---- Sounds that follow a slider

    void aSliderThatRestsIsHeardIfThatIsWanted() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        QSignalSpy heard(app.generation(), &GenerationController::auditionFinished);
        app.character()->parameters()->setValue("pitch", 3);
        QTest::qWait(300);
        QCOMPARE(heard.count(), 0);
        app.playback()->setFollowsSliders(true);
        for (int value = 1; value < 8; ++value)
            app.character()->parameters()->setValue("pitch", value);
        QVERIFY(heard.wait());
        QVERIFY(waitUntilIdle(app));
        const QString seed = app.character()->lastSeed();
        QCOMPARE(heard.count(), 1);  // one for all of them
        app.character()->parameters()->setValue("pitch", -5);
        QVERIFY(heard.wait());
        QCOMPARE(app.character()->lastSeed(), seed);
    }

    void olderOnesAreDropped() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        QSignalSpy heard(app.generation(), &GenerationController::auditionFinished);
        app.generation()->follow();
        QVERIFY(app.isAuditioning());
        app.character()->parameters()->setValue("pitch", 12);
        app.generation()->follow();
        app.generation()->follow();
        QVERIFY(QTest::qWaitFor([&] { return heard.count() == 1 && !app.isBusy(); }, longestWait));
        deliverEvents();
        QCOMPARE(heard.count(), 1);
        const QByteArray last =
            TestWorld::read(toQString(world.environment.temporaryFolder) + "/Quillmere-audition.wav");
        app.generation()->auditionAgain();
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(TestWorld::read(toQString(world.environment.temporaryFolder) + "/Quillmere-audition.wav"),
                 last);
    }

    // ---- The state before

    void theStateBeforeIsHeardAndComesBack() {
        TestWorld world;
        AppModel app(world.environment);
        prepareTrained(app, world.makeCorpus("Drums"));
        QSignalSpy heard(app.generation(), &GenerationController::auditionFinished);
        app.beginComparison();
        QVERIFY(!app.character()->isComparing());  // there is none
        app.character()->parameters()->setValue("pitch", 7);
        app.beginComparison();
        app.beginComparison();
        QVERIFY(app.character()->isComparing());
        QCOMPARE(app.aesthetics().pitch, 0.0);
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(heard.count(), 1);
        app.endComparison();
        QVERIFY(!app.character()->isComparing());
        QCOMPARE(app.aesthetics().pitch, 7.0);
        QVERIFY(waitUntilIdle(app));
        QCOMPARE(heard.count(), 2);
        app.endComparison();
        QVERIFY(app.character()->canUndo() && !app.character()->canRedo());
    }

    void anEditEndsTheComparison() {
        TestWorld world;
        AppModel app(world.environment);
        app.character()->parameters()->setValue("pitch", 7);
        app.beginComparison();
        app.character()->parameters()->setValue("drift", 1);
        QVERIFY(!app.character()->isComparing());
        QCOMPARE(app.aesthetics().drift, 1.0);
        app.beginComparison();
        app.character()->undo();
        QVERIFY(!app.character()->isComparing());
    }

    void theSameSeedIsKept() {
        TestWorld world;
        AppModel app(world.environment);
        CharacterController& character = *app.character();
        const auto first = character.drawSeed();
        QVERIFY(character.drawSeed() != first);
        const auto second = character.lastSeed();
        character.setKeepsSeed(true);
        QCOMPARE(QString::number(character.drawSeed()), second);
        app.setSeedText("9");
        QCOMPARE(character.drawSeed(), 9U);
        app.setSeedText("");
        QCOMPARE(character.drawSeed(), 9U);
        character.setKeepsSeed(false);
        QCOMPARE(character.presentSeed(), 9U);
        QVERIFY(character.drawSeed() != 9U);
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::SweepControllerTest)
#include "SweepControllerTest.moc"
