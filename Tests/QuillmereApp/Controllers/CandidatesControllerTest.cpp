// Candidates: what a set is, what becomes of those that are kept and discarded, and what it refuses.

#include <QObject>
#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <span>

#include "QuillmereApp/Controllers/CandidatesController.h"
#include "QuillmereApp/Support/AppModelProbe.h"
#include "QuillmereApp/Support/Gate.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"
#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Origin/Likeness.h"
#include "QuillmereCore/Origin/Runs.h"
#include "Support/SmallModel.h"

namespace quillmere::testing {
namespace {

// A CandidatesController with a model that has learned nothing, and all that a set asks of others.
struct Studio {
    explicit Studio(const TestWorld& world)
        : folder(world.url("out")), candidates(world.environment, links()), told(candidates) {
        ModelBundle bundle = smallModel();
        bundle.metadata.corpusName = "corpus";
        generator = std::make_shared<SampleGenerator>(std::move(bundle), *cpu);
        order.aesthetics.phaseIterations = 1;
        order.seed = 42;
        candidates.setHasModel(true);
        QObject::connect(&candidates, &CandidatesController::playRequested, &candidates,
                         [this](const QUrl& name) { played.append(name); });
        QObject::connect(&candidates, &CandidatesController::kept, &candidates,
                         [this](const GeneratedSample& sample) { kept.push_back(sample); });
    }

    [[nodiscard]] CandidatesController::Links links() {
        return {
            .order = [this] { return order; },
            .generator = [this]() -> PreparedGenerator {
                return [this, ready = generator] {
                    holdGenerator.pass();
                    return ready;
                };
            },
            .openModelAgain = [this] { ++opened; },
            .whenModelIsLoaded =
                [this](auto returned) {
                    if (isLoading) {
                        waiting = std::move(returned);
                    } else {
                        returned();
                    }
                },
            .outputFolder = [this] { return folder; },
            .format = [this] { return format; },
            .playsAll = [this] { return playsAll; },
        };
    }

    [[nodiscard]] QVariant value(int row, int role) { return candidates.list()->index(row).data(role); }
    [[nodiscard]] QList<int> numbers() {
        QList<int> numbers;
        for (int row = 0; row < candidates.list()->count(); ++row)
            numbers.append(value(row, CandidatesModel::NumberRole).toInt());
        return numbers;
    }
    [[nodiscard]] bool waitUntilEnded() const {
        return QTest::qWaitFor([&] { return !candidates.isTrying(); }, longestWait);
    }

    std::unique_ptr<network::Backend> cpu = network::makeCPUBackend();
    std::shared_ptr<SampleGenerator> generator;
    CandidatesOrder order;
    std::optional<QUrl> folder;
    OutputFormat format = OutputFormat::wav24;
    Gate holdGenerator;  // a set waits there before it begins
    bool playsAll = false;
    int opened = 0;  // how often the model was to be opened again
    bool isLoading = false;
    std::function<void()> waiting;  // for the model to be loaded
    QList<QUrl> played;
    std::vector<GeneratedSample> kept;
    CandidatesController candidates;
    Told told;
};

void tryAndWait(Studio& studio) {
    studio.candidates.start();
    QVERIFY(studio.waitUntilEnded());
}

void keepAndWait(Studio& studio, int row) {
    studio.candidates.keep(row);
    QTRY_VERIFY(studio.value(row, CandidatesModel::IsKeptRole).toBool());
}

// What the journal knows, when everything has been noted.
std::vector<JournalRun> runsIn(const TestWorld& world) {
    const Journal journal(*world.environment.journalFile);
    const auto runs = [&] { return runsOf({.name = "corpus", .fingerprint = ""}, journal); };
    (void)QTest::qWaitFor([&] { return !runs().empty(); });
    return runs();
}

QStringList filesIn(const TestWorld& world, const QString& folder) {
    return QDir(world.path(folder)).entryList(QDir::Files | QDir::Hidden);
}

const QList<int> wholeSet{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};

}  // namespace

class CandidatesControllerTest : public QObject {
    Q_OBJECT

private slots:
    void aSetHasTwelveSoundsAndNoFile() {
        TestWorld world;
        Studio studio(world);
        QList<int> done;
        connect(&studio.candidates, &CandidatesController::progressed, &studio.candidates,
                [&] { done.append(studio.candidates.done()); });
        studio.candidates.start();
        QVERIFY(studio.candidates.isTrying());
        QVERIFY(studio.waitUntilEnded());
        QCOMPARE(done, QList<int>({0}) + wholeSet);  // one by one
        QCOMPARE(studio.numbers(), wholeSet);
        QCOMPARE(studio.told.error, QString());
        QCOMPARE(studio.candidates.seed(), QStringLiteral("42"));
        for (int row = 0; row < 12; ++row) {
            QVERIFY(studio.value(row, CandidatesModel::SecondsRole).toDouble() > 0);
            QVERIFY(!studio.value(row, CandidatesModel::DurationTextRole).toString().isEmpty());
            QVERIFY(!studio.value(row, CandidatesModel::PeaksRole).value<QList<qreal>>().isEmpty());
            QVERIFY(!studio.value(row, CandidatesModel::IsKeptRole).toBool());
        }
        QVERIFY(!QFileInfo::exists(world.path("out")));
        QVERIFY(filesIn(world, "tmp").isEmpty());
    }

    void theFirstIsHeardAtOnce() {
        TestWorld world;
        Studio studio(world);
        studio.candidates.start();
        QTRY_VERIFY(studio.candidates.done() > 0);
        QCOMPARE(studio.played, QList<QUrl>({QUrl(QStringLiteral("candidate:1"))}));
        QVERIFY(studio.waitUntilEnded());
        QCOMPARE(studio.played.size(), 1);
    }

    void whatIsKeptIsTheFileOfAGeneration_data() {
        QTest::addColumn<OutputFormat>("format");
        QTest::addColumn<double>("detail");
        for (const OutputFormat format : allOutputFormats)
            QTest::newRow(rawValue(format).data()) << format << 0.0;
        QTest::newRow("with detail") << OutputFormat::wav24 << 0.5;
    }
    void whatIsKeptIsTheFileOfAGeneration() {
        QFETCH(OutputFormat, format);
        QFETCH(double, detail);
        TestWorld world;
        Studio studio(world);
        studio.format = format;
        studio.order.detail = detail;
        const auto generated = studio.generator->generate({.count = 12,
                                                           .outputDirectory = toPath(world.path("generated")),
                                                           .aesthetics = studio.order.aesthetics,
                                                           .seed = studio.order.seed,
                                                           .format = format,
                                                           .namePrefix = std::nullopt,
                                                           .detail = detail},
                                                          {}, {});
        QCOMPARE(generated.size(), 12U);
        tryAndWait(studio);
        for (const int row : {6, 0, 11})
            keepAndWait(studio, row);
        QCOMPARE(filesIn(world, "out"),
                 QStringList({"corpus_var_0001.wav", "corpus_var_0002.wav", "corpus_var_0003.wav"}));
        const auto bytesOf = [&](const char* name) { return TestWorld::read(world.path(name)); };
        QVERIFY(!bytesOf("generated/corpus_var_0007.wav").isEmpty());
        QCOMPARE(bytesOf("out/corpus_var_0001.wav"), bytesOf("generated/corpus_var_0007.wav"));
        QCOMPARE(bytesOf("out/corpus_var_0002.wav"), bytesOf("generated/corpus_var_0001.wav"));
        QCOMPARE(bytesOf("out/corpus_var_0003.wav"), bytesOf("generated/corpus_var_0012.wav"));
        QCOMPARE(studio.value(6, CandidatesModel::FileNameRole).toString(),
                 QStringLiteral("corpus_var_0001.wav"));
        QCOMPARE(studio.kept.size(), 3U);
        QCOMPARE(studio.kept[0].url, toPath(world.path("out/corpus_var_0001.wav")));
        QCOMPARE(studio.kept[0].origin.index, 6);
        QVERIFY(studio.told.notices.contains("Kept: corpus_var_0001.wav"));
        QCOMPARE(studio.told.error, QString());
    }

    void isKeptOnce() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        studio.candidates.keep(0);
        studio.candidates.keep(0);  // while it is being written
        QTRY_VERIFY(studio.value(0, CandidatesModel::IsKeptRole).toBool());
        studio.candidates.keep(0);
        keepAndWait(studio, 1);
        QCOMPARE(filesIn(world, "out").size(), 2);
    }

    void keepingNeedsAnOutputFolder() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        studio.folder.reset();
        studio.candidates.keep(0);
        QCOMPARE(studio.told.error, QStringLiteral("Choose an output folder first."));
        studio.folder = world.url("out");
        keepAndWait(studio, 0);
        QCOMPARE(studio.told.error, QString());
    }

    void saysWhyItCannotKeep() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        TestWorld::write(world.path("out"), "a file");
        studio.candidates.keep(3);
        QTRY_VERIFY(studio.told.error.contains("out"));
        QVERIFY(!studio.value(3, CandidatesModel::IsKeptRole).toBool());
        QVERIFY(studio.kept.empty());
        studio.folder = world.url("elsewhere");
        keepAndWait(studio, 3);  // it was not lost
    }

    void aFolderThatDoesNotAnswerIsTold() {
        TestWorld world;
        world.cutOff("out");
        Studio studio(world);
        tryAndWait(studio);
        studio.candidates.keep(0);
        QTRY_VERIFY2(studio.told.error.contains("does not answer"), qPrintable(studio.told.error));
    }

    void discardsAndBringsBack() {
        TestWorld world;
        Studio studio(world);
        QSignalSpy removed(&studio.candidates, &CandidatesController::removed);
        QSignalSpy back(&studio.candidates, &CandidatesController::broughtBack);
        tryAndWait(studio);
        QVERIFY(!studio.candidates.canUndo() && !studio.candidates.undo());
        studio.candidates.discard(2);
        studio.candidates.discard(2);
        studio.candidates.discard(9);
        QCOMPARE(studio.numbers(), QList<int>({1, 2, 5, 6, 7, 8, 9, 10, 11}));
        QCOMPARE(removed.first().first().toUrl(), QUrl(QStringLiteral("candidate:3")));
        QVERIFY(studio.candidates.canUndo());
        QVERIFY(studio.candidates.undo());
        QCOMPARE(studio.numbers(), QList<int>({1, 2, 5, 6, 7, 8, 9, 10, 11, 12}));
        QVERIFY(studio.candidates.undo());
        QCOMPARE(studio.numbers(), QList<int>({1, 2, 4, 5, 6, 7, 8, 9, 10, 11, 12}));
        QVERIFY(studio.candidates.undo());
        QCOMPARE(studio.numbers(), wholeSet);
        QVERIFY(!studio.candidates.canUndo());
        QCOMPARE(back.at(0).first().toInt(), 9);
        QCOMPARE(back.at(1).first().toInt(), 2);
        QCOMPARE(back.at(2).first().toInt(), 2);
    }

    void whatIsKeptIsNotDiscarded() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        keepAndWait(studio, 4);
        studio.candidates.discard(4);
        QCOMPARE(studio.numbers(), wholeSet);
    }

    void rowsThatAreNotThereArePassedOver() {
        TestWorld world;
        Studio studio(world);
        for (const int row : {-1, 0, 12}) {
            studio.candidates.play(row);
            studio.candidates.togglePlay(row);
            studio.candidates.keep(row);
            studio.candidates.discard(row);
        }
        studio.candidates.show(1);
        studio.candidates.copySeed();
        QCOMPARE(studio.candidates.shown(), 0);
        QVERIFY(studio.played.isEmpty());
        QCOMPARE(world.clipboard, QString());
    }

    void theLastSetsStay() {
        TestWorld world;
        Studio studio(world);
        for (const std::uint64_t seed : {7U, 8U, 9U}) {
            studio.order.seed = seed;
            tryAndWait(studio);
        }
        QCOMPARE(studio.candidates.sets(), 3);
        QCOMPARE(studio.candidates.shown(), 3);
        studio.candidates.discard(0);
        studio.candidates.show(1);
        QCOMPARE(studio.candidates.seed(), QStringLiteral("7"));
        QCOMPARE(studio.numbers(), wholeSet);
        keepAndWait(studio, 5);
        QCOMPARE(studio.kept.front().origin.seed, SampleGenerator::variationSeed(7, 5));
        studio.candidates.copySeed();
        QCOMPARE(world.clipboard, QStringLiteral("7"));
        // What is brought back is seen.
        QVERIFY(studio.candidates.undo());
        QCOMPARE(studio.candidates.shown(), 3);
        QCOMPARE(studio.numbers(), wholeSet);
        studio.candidates.show(4);
        studio.candidates.show(0);
        QCOMPARE(studio.candidates.shown(), 3);
    }

    void theOldestSetsAreForgotten() {
        TestWorld world;
        Studio studio(world);
        studio.order.seed = 0;
        tryAndWait(studio);
        studio.candidates.discard(0);
        for (std::size_t i = 1; i <= CandidatesController::mostSets; ++i) {
            studio.order.seed = i;
            tryAndWait(studio);
        }
        QCOMPARE(studio.candidates.sets(), static_cast<int>(CandidatesController::mostSets));
        QVERIFY(!studio.candidates.canUndo());
        QCOMPARE(studio.told.notices,
                 QStringList("The oldest candidates were forgotten to make room for new ones."));
        studio.candidates.show(1);
        QCOMPARE(studio.candidates.seed(), QStringLiteral("1"));
        // A set that comes to nothing costs none.
        studio.holdGenerator.close();
        studio.candidates.start();
        studio.candidates.cancel();
        studio.holdGenerator.open();
        QVERIFY(studio.waitUntilEnded());
        QCOMPARE(studio.candidates.sets(), static_cast<int>(CandidatesController::mostSets));
        studio.candidates.show(1);
        QCOMPARE(studio.candidates.seed(), QStringLiteral("1"));
    }

    void fewerSetsOfLongSoundsStay() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        std::size_t bytes = 0;
        for (int row = 0; row < 12; ++row)
            bytes += sizeof(float) * studio.candidates.list()->at(row)->sound.samples->size();
        AppModelProbe::setMostBytes(studio.candidates, 2 * bytes);
        QSignalSpy removed(&studio.candidates, &CandidatesController::removed);
        tryAndWait(studio);
        QCOMPARE(studio.candidates.sets(), 2);
        QVERIFY(studio.told.notices.isEmpty());
        studio.candidates.discard(0);  // it may come back, so it counts
        tryAndWait(studio);
        QCOMPARE(studio.candidates.sets(), 2);
        QCOMPARE(studio.told.notices,
                 QStringList("The oldest candidates were forgotten to make room for new ones."));
        QCOMPARE(removed.count(), 1 + 12);  // one of them may be playing
        QVERIFY(studio.candidates.canUndo());
        // The newest one stays, however large.
        AppModelProbe::setMostBytes(studio.candidates, 1);
        tryAndWait(studio);
        QCOMPARE(studio.candidates.sets(), 1);
        QCOMPARE(studio.numbers(), wholeSet);
        QVERIFY(!studio.candidates.canUndo());
    }

    void whatIsPlayingIsMarked() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        studio.candidates.play(3);
        studio.candidates.list()->setPlaying(studio.played.last());
        QVERIFY(studio.value(3, CandidatesModel::IsPlayingRole).toBool());
        QVERIFY(!studio.value(2, CandidatesModel::IsPlayingRole).toBool());
        studio.candidates.list()->setPlaying({});
        QVERIFY(!studio.value(3, CandidatesModel::IsPlayingRole).toBool());
    }

    // ---- Relatives

    void allAreHeardOneAfterTheOtherIfThatIsWanted() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        QCOMPARE(studio.played.size(), 1);
        studio.candidates.finished(studio.played.last());
        QCOMPARE(studio.played.size(), 1);  // nobody wants it
        studio.playsAll = true;
        studio.played.clear();
        tryAndWait(studio);
        const auto nameOf = [&](int row) { return studio.candidates.list()->at(row)->name; };
        QCOMPARE(studio.played, QList<QUrl>({nameOf(0)}));  // it sounds
        studio.candidates.finished(QUrl(QStringLiteral("file:///other.wav")));
        QCOMPARE(studio.played.size(), 1);
        studio.candidates.finished(nameOf(0));
        QCOMPARE(studio.played, QList<QUrl>({nameOf(0), nameOf(1)}));
        studio.candidates.discard(2);
        studio.candidates.finished(nameOf(1));
        QCOMPARE(studio.played.last(), nameOf(2));  // the fourth
        for (int row = 2; row < 11; ++row)
            studio.candidates.finished(nameOf(row));
        QCOMPARE(studio.played.size(), 11);
    }

    void whoStopsThemOrHearsSomethingElseHearsNoMore() {
        TestWorld world;
        Studio studio(world);
        studio.playsAll = true;
        for (const QUrl& asked : {QUrl(), QUrl(QStringLiteral("file:///other.wav"))}) {
            studio.played.clear();
            tryAndWait(studio);
            const QUrl first = studio.candidates.list()->at(0)->name;
            studio.candidates.asked(first);
            studio.candidates.asked(asked);
            studio.candidates.finished(first);  // which was played once more, later
            QCOMPARE(studio.played, QList<QUrl>({first}));
        }
    }

    void whatComesLaterCutsNothingOff() {
        TestWorld world;
        Gate gate;
        world.holdRuns(gate);
        Studio studio(world);
        studio.playsAll = true;
        studio.candidates.start();
        QTRY_COMPARE(studio.played.size(), 1);
        studio.candidates.finished(studio.played.last());
        studio.candidates.asked(studio.played.last());  // again, by hand
        gate.open();
        QVERIFY(studio.waitUntilEnded());
        QCOMPARE(studio.played.size(), 1);
    }

    void whatComesLaterIsHeardWhenItComes() {
        TestWorld world;
        Gate gate;
        world.holdRuns(gate);
        Studio studio(world);
        studio.playsAll = true;
        studio.candidates.start();
        QTRY_COMPARE(studio.played.size(), 1);
        studio.candidates.finished(studio.played.last());
        QCOMPARE(studio.played.size(), 1);  // there is no other one yet
        gate.open();
        QTRY_COMPARE(studio.played.size(), 2);
        QVERIFY(studio.waitUntilEnded());
        QCOMPARE(studio.played.last(), studio.candidates.list()->at(1)->name);
    }

    void thoseAroundSeveralTakeThemInTurn() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        std::vector<Recipe> parents;
        for (int row = 0; row < 5; ++row) {
            const CandidateHandle parent = studio.candidates.list()->at(row);
            parents.push_back(makeRecipe(parent->origin, *parent->base));
        }
        studio.order.seed = 77;
        studio.order.aesthetics.pitch = 5;
        studio.candidates.startRelated(
            {.way = CandidatesRelation::Way::inTurn, .name = "5 sounds", .parents = parents});
        QVERIFY(studio.waitUntilEnded());
        QCOMPARE(studio.told.error, QString());
        QCOMPARE(studio.numbers(), wholeSet);
        QCOMPARE(studio.candidates.about(), QStringLiteral("Like 5 sounds"));
        for (int row = 0; row < 12; ++row) {
            const CandidateHandle child = studio.candidates.list()->at(row);
            const auto& parent = parents[static_cast<std::size_t>(row % 5)];
            const SampleOrigin expected =
                Likeness::around(*studio.generator, std::span(&parent, 1), 0.7, 77, row);
            QCOMPARE(child->origin.latent, expected.latent);
            QCOMPARE(child->base->aesthetics.pitch, 5.0);
        }
        QCOMPARE(runsIn(world).size(), 1U);  // the set of before alone
        parents.front().model = "another";
        studio.candidates.startRelated(
            {.way = CandidatesRelation::Way::inTurn, .name = "5 sounds", .parents = parents});
        QVERIFY(studio.waitUntilEnded());
        QVERIFY(studio.told.error.startsWith("This sound was made by another model."));
    }

    void relativesComeFromTheirParent() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        QCOMPARE(studio.candidates.about(), QStringLiteral("Seed 42"));
        const CandidateHandle parent = studio.candidates.list()->at(2);
        const Recipe recipe = makeRecipe(parent->origin, *parent->base);
        studio.order.seed = 77;
        studio.order.aesthetics.pitch = 5;  // the sliders have moved since
        using Way = CandidatesRelation::Way;
        for (const auto& [way, about] :
             {std::pair(Way::like, "Like that one"), std::pair(Way::body, "New skins of that one"),
              std::pair(Way::skin, "New bodies for that one")}) {
            studio.candidates.startRelated({.way = way, .parent = recipe, .name = "that one"});
            QVERIFY(studio.waitUntilEnded());
            QCOMPARE(studio.told.error, QString());
            QCOMPARE(studio.numbers(), wholeSet);
            QCOMPARE(studio.candidates.about(), QString::fromLatin1(about));
            const CandidateHandle child = studio.candidates.list()->at(0);
            QCOMPARE(child->base->aesthetics, recipe.aesthetics);
            QCOMPARE(child->origin.latent == parent->origin.latent, way == Way::body);
            QCOMPARE(child->origin.state == parent->origin.state, way == Way::skin);
            QVERIFY(*child->sound.samples != *parent->sound.samples);
            // A recipe of theirs gives them again.
            const auto again =
                studio.generator->remake(std::vector{makeRecipe(child->origin, *child->base).plan()});
            QCOMPARE(again.front().samples, *child->sound.samples);
        }
    }

    void relativesNeedTheModelOfTheirParent() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        const CandidateHandle parent = studio.candidates.list()->at(0);
        Recipe recipe = makeRecipe(parent->origin, *parent->base);
        recipe.model = "another";
        studio.candidates.startRelated({.parent = recipe, .name = "that one"});
        QVERIFY(studio.waitUntilEnded());
        QCOMPARE(studio.told.error,
                 QStringLiteral("This sound was made by another model. Choose the folder that it was made "
                                "from first."));
        QCOMPARE(studio.candidates.sets(), 1);
    }

    void aRenamedFileIsStillThatOfItsCandidate() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        keepAndWait(studio, 1);
        studio.candidates.rename(world.url("out/corpus_var_0001.wav"), world.url("out/kick.wav"));
        QCOMPARE(studio.value(1, CandidatesModel::FileNameRole).toString(), QStringLiteral("kick.wav"));
        QVERIFY(!studio.value(0, CandidatesModel::IsKeptRole).toBool());
    }

    // ---- The journal

    void theJournalHasWhatWasHeardAndWhatWasKept() {
        TestWorld world;
        Studio studio(world);
        studio.order.detail = 0.5;
        tryAndWait(studio);
        keepAndWait(studio, 3);
        const std::vector<JournalRun> runs = runsIn(world);
        QCOMPARE(runs.size(), 2U);
        QVERIFY(runs[1].set);
        QCOMPARE(runs[1].set->count, 12);
        QCOMPARE(runs[1].recipe().seed, studio.order.seed);
        QCOMPARE(runs[1].recipe().detail, 0.5);
        QCOMPARE(runs[1].recipe().aesthetics, studio.order.aesthetics);
        QCOMPARE(runs[1].recipe().index, 0);
        QCOMPARE(runs[0].files.size(), 1U);
        QCOMPARE(runs[0].recipe().index, 3);
        QCOMPARE(runs[0].files.front().file, world.path("out/corpus_var_0001.wav").toStdString());
        const CandidateHandle kept = studio.candidates.list()->at(3);
        QCOMPARE(runs[0].recipe(), makeRecipe(kept->origin, *kept->base));
        QCOMPARE(studio.told.error, QString());
    }

    void theJournalIsLeftAloneWhereNobodyWantsIt() {
        TestWorld world;
        world.wantsJournal = false;
        Studio studio(world);
        tryAndWait(studio);
        keepAndWait(studio, 0);
        QVERIFY(!QFileInfo::exists(world.path("data/Quillmere/journal.jsonl")));
    }

    void saysWhyTheJournalLacksASet() {
        TestWorld world;
        QDir().mkpath(world.path("data/Quillmere/journal.jsonl"));  // a folder has its name
        Studio studio(world);
        tryAndWait(studio);
        const auto isTold = [&] {
            return std::ranges::any_of(studio.told.notices, [](const QString& text) {
                return text.startsWith("How the files were made could not be noted everywhere. ");
            });
        };
        QTRY_VERIFY(isTold());
        QCOMPARE(studio.numbers(), wholeSet);  // they are there all the same
    }

    void aSetOfBeforeIsRenderedOnceMore() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        const auto before = *studio.candidates.list()->at(5)->sound.samples;
        CandidatesOrder order = studio.order;
        order.isNoted = true;
        studio.order.seed = 7;
        studio.candidates.startEarlier(order);
        QVERIFY(studio.waitUntilEnded());
        QCOMPARE(studio.candidates.sets(), 2);
        QCOMPARE(studio.candidates.seed(), QStringLiteral("42"));
        QCOMPARE(*studio.candidates.list()->at(5)->sound.samples, before);
        QCOMPARE(runsIn(world).size(), 1U);  // noted once
    }

    void aSetOfBeforeNeedsItsModel() {
        TestWorld world;
        Studio studio(world);
        CandidatesOrder order = studio.order;
        order.model = "another";
        studio.candidates.startEarlier(order);
        QVERIFY(studio.waitUntilEnded());
        QCOMPARE(
            studio.told.error,
            QStringLiteral("These candidates were made by another model. Open it first, or try new ones."));
        QCOMPARE(studio.candidates.sets(), 0);
        order.model = studio.generator->identity();
        studio.candidates.startEarlier(order);
        QVERIFY(studio.waitUntilEnded());
        QCOMPARE(studio.numbers(), wholeSet);
    }

    // ---- Cancelling

    // Its name is free then, and another candidate may get it.
    void whatIsInTheTrashCanBeKeptAgain() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        keepAndWait(studio, 2);
        const QUrl first = toUrl(studio.kept.back().url);
        QVERIFY(QFile::remove(first.toLocalFile()));
        studio.candidates.fileTrashed(first);
        QVERIFY(!studio.value(2, CandidatesModel::IsKeptRole).toBool());
        keepAndWait(studio, 5);
        QCOMPARE(toUrl(studio.kept.back().url), first);
        keepAndWait(studio, 2);
        const QUrl second = toUrl(studio.kept.back().url);
        QVERIFY(second != first);
        // The one that was kept anew has its newer file.
        studio.candidates.fileCameBack(first);
        QCOMPARE(studio.candidates.list()->at(2)->file, second);
        QCOMPARE(studio.candidates.list()->at(5)->file, first);
    }

    void whatComesBackFromTheTrashIsKept() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        keepAndWait(studio, 0);
        const QUrl file = toUrl(studio.kept.back().url);
        studio.candidates.fileTrashed(file);
        studio.candidates.discard(0);
        QVERIFY(studio.candidates.lastDiscarded() > 0);
        studio.candidates.fileCameBack(file);
        QVERIFY(studio.candidates.undo());
        QCOMPARE(studio.candidates.list()->at(0)->file, file);
        QVERIFY(studio.value(0, CandidatesModel::IsKeptRole).toBool());
        QCOMPARE(studio.candidates.lastDiscarded(), 0.0);
    }

    void aCancelledSetKeepsWhatHasCome() {
        TestWorld world;
        Gate gate;
        world.inTheMidst(Run::generation, 1, [&] { gate.pass(); });
        gate.close();
        Studio studio(world);
        studio.candidates.start();
        QTRY_COMPARE(studio.candidates.done(), 1);
        studio.candidates.cancel();
        QVERIFY(studio.candidates.isCancelling());
        gate.open();
        QVERIFY(studio.waitUntilEnded());
        QVERIFY(!studio.candidates.isCancelling());
        QCOMPARE(studio.numbers(), QList<int>({1}));
        QCOMPARE(studio.told.error, QString());
    }

    void aSetWithoutAnySoundIsNone() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        studio.holdGenerator.close();
        studio.candidates.start();
        QCOMPARE(studio.candidates.shown(), 2);
        QCOMPARE(studio.candidates.list()->count(), 0);
        studio.candidates.cancel();
        studio.holdGenerator.open();
        QVERIFY(studio.waitUntilEnded());
        QCOMPARE(studio.candidates.sets(), 1);
        QCOMPARE(studio.candidates.shown(), 1);
        QCOMPARE(studio.numbers(), wholeSet);
    }

    void anotherSetCanBeSeenMeanwhile() {
        TestWorld world;
        Studio studio(world);
        tryAndWait(studio);
        studio.candidates.discard(0);
        studio.holdGenerator.close();
        studio.candidates.start();
        studio.candidates.show(1);
        studio.holdGenerator.open();
        QVERIFY(studio.waitUntilEnded());
        QCOMPARE(studio.candidates.shown(), 1);
        QCOMPARE(studio.candidates.list()->count(), 11);
        studio.candidates.show(2);
        QCOMPARE(studio.numbers(), wholeSet);
    }

    void tellsOnceThatItCancels() {
        TestWorld world;
        int told = 0;
        {
            Studio studio(world);
            studio.holdGenerator.close();
            studio.candidates.start();
            QObject::connect(&studio.candidates, &CandidatesController::isTryingChanged, [&] { ++told; });
            studio.candidates.cancel();
            studio.candidates.cancel();
            studio.holdGenerator.open();
        }
        QCOMPARE(told, 1);
    }

    void closingCancelsAndWaits() {
        TestWorld world;
        Gate gate;
        std::atomic<std::int64_t> rendered = 0;
        world.environment.onProgress = [&](Run, std::int64_t done) {
            rendered = done;
            gate.pass();
        };
        gate.close();
        auto studio = std::make_unique<Studio>(world);
        studio->candidates.start();
        QTRY_COMPARE(rendered.load(), 1);
        // Cancelled already when the gate opens, because that comes after it.
        connect(&studio->candidates, &CandidatesController::isTryingChanged, [&] { gate.open(); });
        studio.reset();
        QCOMPARE(rendered.load(), 1);
    }

    // ---- What it refuses

    void isRefusedPolitelyWhileAnotherRunIsActive() {
        TestWorld world;
        Studio studio(world);
        studio.candidates.setActivity({.isTraining = true});
        QVERIFY(!studio.candidates.canTry());
        studio.candidates.start();
        QVERIFY(!studio.candidates.isTrying());
        QCOMPARE(studio.told.notices, QStringList(Activity::waitNotice()));
        QCOMPARE(studio.candidates.sets(), 0);
    }

    void withoutAModelItSaysWhatToDo() {
        TestWorld world;
        Studio studio(world);
        studio.candidates.setHasModel(false);
        QVERIFY(!studio.candidates.canTry());
        studio.candidates.start();
        QVERIFY(!studio.candidates.isTrying());
        QCOMPARE(studio.opened, 1);  // perhaps it is only not open
        QCOMPARE(studio.told.notices,
                 QStringList("There is no model to try yet. Train one first, or press Generate."));
    }

    void waitsForAModelThatIsBeingLoaded() {
        TestWorld world;
        Studio studio(world);
        studio.candidates.setHasModel(false);
        studio.isLoading = true;
        QSignalSpy commanded(&studio.candidates, &CandidatesController::commanded);
        studio.candidates.start();
        QVERIFY(studio.waiting && !studio.candidates.isTrying());
        studio.candidates.setHasModel(true);
        studio.waiting();
        QVERIFY(studio.candidates.isTrying());
        QVERIFY(studio.waitUntilEnded());
        QCOMPARE(commanded.count(), 1);
    }

    void parametersThatMakeNoSenseAreTold() {
        TestWorld world;
        Studio studio(world);
        studio.order.aesthetics.drive = std::numeric_limits<float>::quiet_NaN();
        tryAndWait(studio);
        QVERIFY(!studio.told.error.isEmpty());
        QCOMPARE(studio.candidates.sets(), 0);
        QCOMPARE(studio.candidates.shown(), 0);
    }

    void saysThatNoiseStandsIn() {
        TestWorld world;
        Studio studio(world);
        studio.order.detail = 1;  // of a model without sounds
        tryAndWait(studio);
        QCOMPARE(studio.told.notices,
                 QStringList("The learned samples could not be read: noise stands in for their detail."));
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::CandidatesControllerTest)
#include "CandidatesControllerTest.moc"
