// What is found out about a sound, what it is compared with, and what can be made of it.

#include <QObject>
#include <atomic>
#include <chrono>
#include <cmath>
#include <memory>
#include <optional>
#include <semaphore>
#include <set>
#include <thread>

#include "QuillmereApp/Controllers/InspectorController.h"
#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/Gate.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere::testing {
namespace {

std::vector<float> hit(double frequency, double amplitude = 0.8) {
    std::vector<float> samples = sine(frequency, 8000, 800, amplitude);
    for (std::size_t n = 0; n < samples.size(); ++n)
        samples[n] *= std::exp(-static_cast<float>(n) / 200);
    return samples;
}

CandidateHandle makeCandidate(std::vector<float> samples, int number, const std::string& fingerprint) {
    auto candidate = std::make_shared<Candidate>();
    candidate->number = number;
    candidate->name = QUrl(QStringLiteral("candidate:%1").arg(number));
    candidate->sound = {.samples = std::make_shared<const std::vector<float>>(std::move(samples)),
                        .sampleRate = 8000};
    candidate->origin.latent = {1, 2, 3, 4};
    candidate->origin.sources = {{.clip = 1, .name = "hit1.wav", .weight = 0.75F},
                                 {.clip = 0, .name = "hit0.wav", .weight = 0.25F}};
    candidate->base = std::make_shared<const RecipeBase>(
        RecipeBase{.corpusName = "Drums", .fingerprint = fingerprint, .aesthetics = {}});
    return candidate;
}

// An inspector that is open, with a corpus of hits of 300, 450, 600 ... Hz.
struct Desk {
    explicit Desk(const TestWorld& world, int files = 4) : inspector(world.environment), told(inspector) {
        const QUrl folder = world.makeCorpus("Drums", files);
        const auto corpus = std::make_shared<const CorpusSummary>(Corpus::scan(toPath(folder)));
        fingerprint = corpus->fingerprint();
        inspector.setCorpus(corpus);
        inspector.setOpen(true);
        QObject::connect(&inspector, &InspectorController::playRequested, &inspector,
                         [this](const QUrl& name, const PlayableSound& sound) {
                             played.append(name.toString());
                             sounds.push_back(sound);
                         });
        QObject::connect(&inspector, &InspectorController::candidatesWanted, &inspector,
                         [this](const CandidatesRelation& relation) { wanted = relation; });
    }

    // One that was made of this corpus.
    [[nodiscard]] CandidateHandle candidate(std::vector<float> samples, int number = 3) const {
        return makeCandidate(std::move(samples), number, fingerprint);
    }

    InspectorController inspector;
    Told told;
    std::string fingerprint;
    QStringList played;
    std::vector<PlayableSound> sounds;
    std::optional<CandidatesRelation> wanted;
};

void inspectAndWait(Desk& desk, const CandidateHandle& candidate) {
    desk.inspector.inspect(candidate);
    QTRY_VERIFY(!desk.inspector.verdict().isEmpty());
}

// Comparisons stop after each file while the gate is closed, as it is now.
void holdComparisons(TestWorld& world, Gate& gate, std::atomic<int>& measured) {
    gate.close();
    world.environment.onProgress = [&](Run run, std::int64_t) {
        if (run != Run::comparison) return;
        ++measured;
        gate.pass();
    };
}

QStringList namesOf(const QVariantList& relatives) {
    QStringList names;
    for (const QVariant& relative : relatives)
        names.append(relative.toMap().value("name").toString());
    return names;
}

}  // namespace

class InspectorControllerTest : public QObject {
    Q_OBJECT

private slots:
    void showsWhatASoundLooksLike() {
        TestWorld world;
        Desk desk(world);
        desk.inspector.inspect(desk.candidate(hit(500)));
        QVERIFY(desk.inspector.hasSubject());
        QCOMPARE(desk.inspector.title(), QStringLiteral("Candidate 3"));
        QCOMPARE(desk.inspector.soundURL(), QUrl(QStringLiteral("candidate:3")));
        QVERIFY(!desk.inspector.isFile());
        QVERIFY(desk.inspector.peaks().isEmpty() && desk.inspector.picture().isNull());
        QTRY_VERIFY(!desk.inspector.peaks().isEmpty());
        QCOMPARE(desk.inspector.durationText(), QStringLiteral("0.10 s"));
        QVERIFY(desk.inspector.levelText().endsWith(QStringLiteral("peak −2.1 dB")));
        QVERIFY(desk.inspector.level() > 0.5 && desk.inspector.level() < 1);
        const QImage picture = desk.inspector.picture();
        QVERIFY(picture.width() > 100 && picture.height() == 64);
        // Low sounds are at the bottom, and the sound is louder at its beginning.
        const auto brightness = [&](int x, int y) { return qGray(picture.pixel(x, y)); };
        QVERIFY(brightness(20, 45) > brightness(20, 3));
        QVERIFY(brightness(20, 45) > brightness(picture.width() - 1, 45));
    }

    void findsTheNearestOfTheCorpus() {
        TestWorld world;
        Desk desk(world);
        inspectAndWait(desk, desk.candidate(hit(610, 0.3)));
        const QStringList names = namesOf(desk.inspector.nearest());
        QCOMPARE(names.size(), 4);
        QCOMPARE(names.first(), QStringLiteral("hit2.wav"));  // that of 600 Hz
        QVERIFY(desk.inspector.distance() > 0);
        QCOMPARE(desk.inspector.verdict(), QStringLiteral("Nearly a copy of hit2.wav"));
        QCOMPARE(desk.inspector.nearest().first().toMap().value("key").toInt(), 3);
        QVERIFY(!desk.inspector.isComparing());
    }

    void raisesTheAlarmForACopy() {
        TestWorld world;
        Desk desk(world);
        inspectAndWait(desk, desk.candidate(hit(450, 0.4)));
        QVERIFY(desk.inspector.isCopy());
        QCOMPARE(desk.inspector.verdict(), QStringLiteral("Nearly a copy of hit1.wav"));
        inspectAndWait(desk, desk.candidate(sine(3000, 8000, 4000, 0.5)));
        QVERIFY(!desk.inspector.isCopy());
        QCOMPARE(desk.inspector.verdict(), QStringLiteral("New, and far from every sample"));
        // As good as a copy by its waveform, however it was finished.
        const CandidateHandle detailed = desk.candidate(sine(3000, 8000, 4000, 0.5));
        detailed->origin.sameness = 0.97F;
        // Told at once, and the nearest by its spectrum need not be the one.
        const QString verdict = QStringLiteral("Nearly a copy of a sample that it is made of");
        desk.inspector.inspect(detailed);
        QVERIFY(desk.inspector.isCopy());
        QCOMPARE(desk.inspector.verdict(), verdict);
        QTRY_VERIFY(!desk.inspector.nearest().isEmpty());
        QVERIFY(desk.inspector.isCopy());
        QCOMPARE(desk.inspector.verdict(), verdict);
    }

    void saysWhatItIsMadeOf() {
        TestWorld world;
        Desk desk(world);
        desk.inspector.inspect(desk.candidate(hit(500)));
        const QVariantList sources = desk.inspector.sources();
        QCOMPARE(namesOf(sources), QStringList({"hit1.wav", "hit0.wav"}));
        QCOMPARE(sources.first().toMap().value("detail").toString(), QStringLiteral("75 %"));
        QCOMPARE(sources.last().toMap().value("key").toInt(), 2);
    }

    void comparesTheCorpusOnce() {
        TestWorld world;
        Desk desk(world, 12);
        QSignalSpy comparing(&desk.inspector, &InspectorController::comparingChanged);
        desk.inspector.inspect(desk.candidate(hit(500)));
        QCOMPARE(desk.inspector.toCompare(), 12);
        QTRY_VERIFY(!desk.inspector.verdict().isEmpty());
        const auto reports = comparing.count();
        QVERIFY(reports > 2);
        inspectAndWait(desk, desk.candidate(hit(700), 4));
        QCOMPARE(comparing.count(), reports);
        QCOMPARE(desk.inspector.nearest().size(), InspectorController::nearestShown);
    }

    void anotherCorpusIsComparedAnew() {
        TestWorld world;
        Desk desk(world);
        inspectAndWait(desk, desk.candidate(hit(500)));
        const QUrl folder = world.makeCorpus("Others", 1);
        desk.inspector.setCorpus(std::make_shared<const CorpusSummary>(Corpus::scan(toPath(folder))));
        QVERIFY(desk.inspector.verdict().isEmpty());
        QTRY_COMPARE(desk.inspector.nearest().size(), 1);
        desk.inspector.setCorpus(nullptr);
        QVERIFY(desk.inspector.nearest().isEmpty() && !desk.inspector.isComparing());
    }

    void neighboursOfAnotherCorpusAreDropped() {
        TestWorld world;
        Desk desk(world);
        inspectAndWait(desk, desk.candidate(hit(500)));
        // With the answer on its way.
        connect(
            &desk.inspector, &InspectorController::factsChanged, &desk.inspector,
            [&] {
                if (desk.inspector.peaks().isEmpty()) return;
                AppModelProbe::waitForWork(desk.inspector);
                desk.inspector.setCorpus(nullptr);
            },
            Qt::QueuedConnection);
        desk.inspector.inspect(desk.candidate(hit(700), 4));
        QTRY_COMPARE(desk.inspector.toCompare(), 0);
        deliverEvents();
        QVERIFY(desk.inspector.nearest().isEmpty());
        QCOMPARE(desk.inspector.verdict(), QString());
    }

    void aSoundOfAnotherFolderIsComparedWithThisOne() {
        TestWorld world;
        Desk desk(world);
        desk.inspector.inspect(desk.candidate(hit(500)));
        QVERIFY(desk.inspector.isOfThisCorpus());
        inspectAndWait(desk, makeCandidate(hit(700), 4, "of another one"));
        QVERIFY(!desk.inspector.isOfThisCorpus());
        // The files of that name are others here.
        for (const QVariant& source : desk.inspector.sources())
            QCOMPARE(source.toMap().value("key").toInt(), 0);
        QCOMPARE(desk.inspector.nearest().first().toMap().value("key").toInt(), 1);
        desk.inspector.playInTurn(1);
        QTRY_COMPARE(desk.played, QStringList("clip:" + namesOf(desk.inspector.nearest()).first()));
    }

    void aFolderThatDoesNotAnswerIsTold() {
        TestWorld world;
        world.cutOff("Drums");
        Desk desk(world);
        desk.inspector.inspect(desk.candidate(hit(500)));
        QTRY_VERIFY2(desk.told.error.contains("does not answer"), qPrintable(desk.told.error));
        QVERIFY(!desk.inspector.isComparing());
    }

    void aSilentSoundIsComparedWithNothing() {
        TestWorld world;
        Desk desk(world);
        desk.inspector.inspect(desk.candidate(std::vector<float>(800)));
        QTRY_COMPARE(desk.inspector.levelText(), QStringLiteral("silent"));
        QVERIFY(!desk.inspector.isComparing());
        QCOMPARE(desk.inspector.distance(), -1.0);
    }

    // ---- Hearing

    void playsRelativesInTurnWithTheSoundAtOneLevel() {
        TestWorld world;
        Desk desk(world);
        inspectAndWait(desk, desk.candidate(hit(500, 0.2)));
        desk.inspector.playInTurn(1);
        QTRY_COMPARE(desk.played, QStringList({"clip:hit1.wav"}));
        // The clip is four times as loud.
        QVERIFY(std::abs(desk.sounds[0].gain - 0.25F) < 0.02F);
        desk.inspector.playInTurn(1);
        QTRY_COMPARE(desk.played, QStringList({"clip:hit1.wav", "candidate:3"}));
        QCOMPARE(desk.sounds[1].gain, 1.0F);
        desk.inspector.playInTurn(1);
        QTRY_COMPARE(desk.played.size(), 3);
        QCOMPARE(desk.played.last(), QStringLiteral("clip:hit1.wav"));
        desk.inspector.playInTurn(3);  // the nearest one
        QTRY_COMPARE(desk.played.size(), 4);
        QVERIFY(desk.played.last().startsWith("clip:"));
        for (const int key : {0, -1, 7, 99})
            desk.inspector.playInTurn(key);
        deliverEvents();
        QCOMPARE(desk.played.size(), 4);
    }

    void ofQuickPressesOnlyTheLastIsHeard() {
        TestWorld world;
        Desk desk(world);
        inspectAndWait(desk, desk.candidate(hit(500)));
        desk.inspector.playInTurn(1);
        desk.inspector.playInTurn(2);
        AppModelProbe::waitForWork(desk.inspector);
        deliverEvents();
        QCOMPARE(desk.played, QStringList({"clip:hit0.wav"}));
        desk.inspector.playInTurn(1);
        desk.inspector.togglePlay();  // the sound itself
        AppModelProbe::waitForWork(desk.inspector);
        deliverEvents();
        QCOMPARE(desk.played.size(), 1);
    }

    void aLoudSoundIsPlayedSofterThanIsNeededForItsRelative() {
        TestWorld world;
        Desk desk(world);
        // A steady tone at full scale: no hit becomes so loud without exceeding it.
        inspectAndWait(desk, desk.candidate(sine(500, 8000, 4000, 1.0)));
        desk.inspector.playInTurn(1);
        QTRY_COMPARE(desk.played.size(), 1);
        desk.inspector.playInTurn(1);
        QTRY_COMPARE(desk.played.size(), 2);
        QVERIFY(desk.sounds[0].gain > 1);
        QVERIFY(desk.sounds[1].gain < 1);
        // Again and again as loud as before.
        desk.inspector.setLoops(true);
        QVERIFY(desk.inspector.playsAgain(QUrl(QStringLiteral("candidate:3"))));
        QCOMPARE(desk.played.size(), 3);
        QCOMPARE(desk.sounds[2].gain, desk.sounds[1].gain);
    }

    void saysThatARelativeIsGone() {
        TestWorld world;
        Desk desk(world);
        inspectAndWait(desk, desk.candidate(hit(500)));
        QFile::remove(world.path("Drums/hit1.wav"));
        desk.inspector.playInTurn(1);
        QTRY_COMPARE(desk.told.notices.size(), 1);
        QVERIFY2(desk.told.notices.first().contains("hit1.wav"), qPrintable(desk.told.notices.first()));
        QVERIFY(desk.played.isEmpty());
    }

    // ---- Results

    void readsAResultFromItsFile() {
        TestWorld world;
        Desk desk(world);
        AudioIO::write(hit(500), toPath(world.path("a.wav")), 8000, OutputFormat::wav24);
        desk.inspector.inspect({.url = toPath(world.path("a.wav")), .seconds = 0.1}, nullptr);
        QCOMPARE(desk.inspector.title(), QStringLiteral("a.wav"));
        QVERIFY(desk.inspector.isFile());
        QCOMPARE(desk.inspector.file(), world.url("a.wav"));
        QCOMPARE(desk.inspector.soundURL(), world.url("a.wav"));
        QVERIFY(!desk.inspector.hasRecipe());
        QTRY_VERIFY(!desk.inspector.nearest().isEmpty());
        QVERIFY(desk.inspector.sources().isEmpty());
        desk.inspector.copyRecipe();
        desk.inspector.moreLikeThis();
        QVERIFY(!desk.wanted && world.clipboard.isEmpty());
    }

    void saysWhyAFileCannotBeRead() {
        TestWorld world;
        Desk desk(world);
        desk.inspector.inspect({.url = toPath(world.path("gone.wav")), .seconds = 0.1}, nullptr);
        QTRY_VERIFY(desk.inspector.problem().contains("gone.wav"));
        desk.inspector.inspect(desk.candidate(hit(500)));
        QVERIFY(desk.inspector.problem().isEmpty());
    }

    // ---- What can be made of it

    void copiesTheRecipe() {
        TestWorld world;
        Desk desk(world);
        const CandidateHandle candidate = desk.candidate(hit(500));
        desk.inspector.inspect(candidate);
        desk.inspector.copyRecipe();
        QCOMPARE(world.clipboard.toStdString(), encodeJSON(makeRecipe(candidate->origin, *candidate->base)));
        QCOMPARE(desk.told.notices, QStringList("Recipe copied"));
    }

    void wishesForRelatives() {
        TestWorld world;
        Desk desk(world);
        desk.inspector.inspect(desk.candidate(hit(500)));
        using Way = CandidatesRelation::Way;
        desk.inspector.moreLikeThis();
        QCOMPARE(desk.wanted->way, Way::like);
        QCOMPARE(desk.wanted->name, QStringLiteral("Candidate 3"));
        QCOMPARE(desk.wanted->parent.latent, std::vector<float>({1, 2, 3, 4}));
        desk.inspector.newSkins();
        QCOMPARE(desk.wanted->way, Way::body);  // which is the same
        desk.inspector.newBodies();
        QCOMPARE(desk.wanted->way, Way::skin);
    }

    // ---- Opening and closing

    void looksAtNothingWhileItIsClosed() {
        TestWorld world;
        Desk desk(world);
        desk.inspector.setOpen(false);
        desk.inspector.inspect(desk.candidate(hit(500)));
        QVERIFY(!desk.inspector.hasSubject());
        desk.inspector.setOpen(true);
        desk.inspector.inspect(desk.candidate(hit(500)));
        QVERIFY(desk.inspector.hasSubject());
        desk.inspector.setOpen(false);
        QVERIFY(!desk.inspector.hasSubject());
        deliverEvents();
        QVERIFY(desk.inspector.peaks().isEmpty());
    }

    void lateAnswersAreDropped() {
        TestWorld world;
        Desk desk(world);
        desk.inspector.inspect(desk.candidate(hit(500)));
        desk.inspector.inspect(desk.candidate(std::vector<float>(1600), 4));
        QTRY_VERIFY(!desk.inspector.durationText().isEmpty());
        QCOMPARE(desk.inspector.durationText(), QStringLiteral("0.20 s"));
        deliverEvents();
        QCOMPARE(desk.inspector.durationText(), QStringLiteral("0.20 s"));
    }

    void theSameOneAgainChangesNothing() {
        TestWorld world;
        Desk desk(world);
        const CandidateHandle candidate = desk.candidate(hit(500));
        inspectAndWait(desk, candidate);
        QSignalSpy facts(&desk.inspector, &InspectorController::factsChanged);
        desk.inspector.inspect(candidate);
        QCOMPARE(facts.count(), 0);
        candidate->file = world.url("kept.wav");
        desk.inspector.refresh();
        QCOMPARE(desk.inspector.title(), QStringLiteral("kept.wav"));
        QVERIFY(desk.inspector.isFile());
        QCOMPARE(desk.inspector.soundURL(), QUrl(QStringLiteral("candidate:3")));
    }

    void closingEndsTheComparison() {
        TestWorld world;
        Gate gate;
        std::atomic<int> measured = 0;
        holdComparisons(world, gate, measured);
        Desk desk(world, 200);
        desk.inspector.inspect(desk.candidate(hit(500)));
        QTRY_VERIFY(measured > 0);
        desk.inspector.inspectNothing();
        QVERIFY(desk.inspector.isComparing());  // for the next one
        desk.inspector.setOpen(false);
        QVERIFY(!desk.inspector.isComparing());
        gate.open();
        AppModelProbe::waitForWork(desk.inspector);
        QVERIFY2(measured < 200, qPrintable(QString::number(measured)));
        // It begins anew when it is needed again.
        desk.inspector.setOpen(true);
        inspectAndWait(desk, desk.candidate(hit(500)));
    }

    void closingTheProgramWaitsForNothing() {
        TestWorld world;
        Gate gate;
        std::atomic<int> measured = 0;
        holdComparisons(world, gate, measured);
        auto desk = std::make_unique<Desk>(world, 200);
        desk->inspector.inspect(desk->candidate(hit(500)));
        QTRY_VERIFY(measured > 0);
        std::binary_semaphore closing(0);
        std::thread opener([&] {
            closing.acquire();
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            gate.open();
        });
        closing.release();
        desk.reset();
        opener.join();
        QVERIFY2(measured < 200, qPrintable(QString::number(measured)));
    }

    void loopsItsSoundIfThatIsWanted() {
        TestWorld world;
        Desk desk(world);
        const CandidateHandle candidate = desk.candidate(hit(500));
        inspectAndWait(desk, candidate);
        QVERIFY(!desk.inspector.playsAgain(candidate->name));
        QVERIFY(desk.played.isEmpty());
        desk.inspector.setLoops(true);
        QVERIFY(!desk.inspector.playsAgain(QUrl(QStringLiteral("candidate:99"))));
        QVERIFY(desk.played.isEmpty());
        QVERIFY(desk.inspector.playsAgain(candidate->name));
        QCOMPARE(desk.played, QStringList(candidate->name.toString()));
        desk.inspector.setOpen(false);
        QVERIFY(!desk.inspector.playsAgain(candidate->name));
        QCOMPARE(desk.played.size(), 1);
    }

    void whatOthersNeedGoesOnWhenItIsClosed() {
        TestWorld world;
        Gate gate;
        std::atomic<int> measured = 0;
        holdComparisons(world, gate, measured);
        Desk desk(world);
        QSignalSpy made(&desk.inspector, &InspectorController::printsChanged);
        desk.inspector.makePrints(InspectorController::Need::similar);
        QVERIFY(desk.inspector.isComparing() && !desk.inspector.prints());
        desk.inspector.setOpen(false);
        QVERIFY(desk.inspector.isComparing());
        gate.open();
        QTRY_VERIFY(desk.inspector.prints());
        QCOMPARE(made.count(), 1);
        desk.inspector.makePrints(InspectorController::Need::similar);  // once
        QVERIFY(!desk.inspector.isComparing());
    }

    void whatNobodyWaitsForAnyMoreEnds() {
        TestWorld world;
        Gate gate;
        std::atomic<int> measured = 0;
        holdComparisons(world, gate, measured);
        Desk desk(world);
        desk.inspector.makePrints(InspectorController::Need::similar);
        desk.inspector.makePrints(InspectorController::Need::novelty);
        desk.inspector.withdraw(InspectorController::Need::similar);
        QVERIFY(desk.inspector.isComparing());
        desk.inspector.withdraw(InspectorController::Need::similar);  // once
        QVERIFY(desk.inspector.isComparing());
        desk.inspector.withdraw(InspectorController::Need::novelty);
        QVERIFY(!desk.inspector.isComparing());
        gate.open();
        AppModelProbe::waitForWork(desk.inspector);
        deliverEvents();
        QVERIFY(!desk.inspector.prints());
    }

    void whatNobodyHasAskedForTakesOneThread() {
        TestWorld world;
        Mutex mutex;
        std::set<std::thread::id> threads;
        world.environment.onProgress = [&](Run, std::int64_t) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));  // time for others to begin
            const MutexLock lock(mutex);
            threads.insert(std::this_thread::get_id());
        };
        Desk desk(world, 12);
        desk.inspector.makePrints(InspectorController::Need::unasked);
        QTRY_VERIFY(desk.inspector.prints());
        QCOMPARE(threads.size(), std::size_t{1});
    }

    void whatSomebodyAsksForBeginsAnewWithAllProcessors() {
        TestWorld world;
        Gate gate;
        std::atomic<int> measured = 0;
        holdComparisons(world, gate, measured);
        Desk desk(world);
        desk.inspector.makePrints(InspectorController::Need::unasked);
        QTRY_COMPARE(measured.load(), 1);
        desk.inspector.makePrints(InspectorController::Need::novelty);
        QTRY_VERIFY(measured.load() > 1);  // another thread, while the first is held
        desk.inspector.withdraw(InspectorController::Need::unasked);
        QVERIFY(desk.inspector.isComparing());
        gate.open();
        QTRY_VERIFY(desk.inspector.prints());
    }

    void whatWasMeasuredBeforeIsNotMeasuredAgain() {
        TestWorld world;
        Gate gate;
        std::atomic<int> measured = 0;
        holdComparisons(world, gate, measured);
        Desk desk(world);
        desk.inspector.makePrints(InspectorController::Need::unasked);
        QTRY_COMPARE(measured.load(), 1);
        desk.inspector.withdraw(InspectorController::Need::unasked);
        gate.open();
        AppModelProbe::waitForWork(desk.inspector);
        QVERIFY(!desk.inspector.prints());
        // It could not be measured any more.
        const auto first = Inspection::printOf(Inspection::read(toPath(world.path("Drums/hit0.wav"))));
        QVERIFY(first && QFile::remove(world.path("Drums/hit0.wav")));
        desk.inspector.makePrints(InspectorController::Need::unasked);
        QTRY_VERIFY(desk.inspector.prints());
        const auto nearest = desk.inspector.prints()->nearest(*first, 1);
        QCOMPARE(nearest.size(), std::size_t{1});
        QCOMPARE(nearest.front().name, std::string("hit0.wav"));
        QCOMPARE(nearest.front().distance, 0.0);
    }

    void saysThatTheCorpusCannotBeCompared() {
        TestWorld world;
        world.cutOff("Drums");
        Desk desk(world);
        desk.inspector.setOpen(false);
        QSignalSpy failed(&desk.inspector, &InspectorController::printsFailed);
        desk.inspector.makePrints(InspectorController::Need::similar);
        QVERIFY(failed.wait());
        QVERIFY(failed.first().first().toString().contains("does not answer"));
        QCOMPARE(desk.told.error, QString());  // nobody looks at a sound
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::InspectorControllerTest)
#include "InspectorControllerTest.moc"
