// Runs: what a generation and an audition write and show, what they refuse, how they fail.

#include <sys/resource.h>

#include <QObject>
#include <csignal>
#include <memory>
#include <optional>
#include <system_error>

#include "QuillmereApp/Controllers/GenerationController.h"
#include "QuillmereApp/Support/Gate.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/Told.h"
#include "QuillmereCore/Network/Backend.h"
#include "QuillmereCore/Origin/RecipeLookup.h"
#include "QuillmereCore/Origin/Runs.h"
#include "Support/SmallModel.h"

namespace quillmere::testing {
namespace {

// While it lives no file can grow beyond bytes, as on a full disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &before_);
        rlimit limited = before_;
        limited.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FullDisk() { ::setrlimit(RLIMIT_FSIZE, &before_); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before_{};
};

// A GenerationController with a model that has learned nothing, and all that a run asks of others.
struct Studio {
    explicit Studio(const TestWorld& world)
        : folder(world.url("out")), runs(world.environment, links()), told(runs) {
        ModelBundle bundle = smallModel();
        bundle.metadata.corpusName = "corpus";
        generator = std::make_shared<SampleGenerator>(std::move(bundle), *cpu);
        aesthetics.phaseIterations = 1;
        runs.setSupplies({.corpusIsChosen = true, .hasSummary = true, .hasModel = true});
        QObject::connect(&runs, &GenerationController::auditionFinished, &runs, [this] { ++auditions; });
    }

    [[nodiscard]] GenerationController::Links links() {
        return {
            .outputFolder = [this] { return folder; },
            .generationRequest =
                [this](const QUrl& outputFolder) {
                    return GenerationRequest{.count = count,
                                             .outputDirectory = toPath(outputFolder),
                                             .aesthetics = aesthetics,
                                             .seed = seed,
                                             .format = format,
                                             .namePrefix = std::nullopt};
                },
            .auditionRequest =
                [this](std::optional<std::uint64_t> again) {
                    return AuditionRequest{.aesthetics = aesthetics, .seed = again.value_or(seed)};
                },
            .presentSeed = [this] { return seed; },
            .generator = [this]() -> PreparedGenerator {
                return [this, ready = generator] {
                    holdGenerator.pass();
                    return ready;
                };
            },
            .preview = [this]() -> PreparedGenerator { return [ready = generator] { return ready; }; },
            .cancelPreview = [this] { ++previewsCancelled; },
            .openModelAgain =
                [this] {
                    ++opened;
                    runs.setSupplies({.corpusIsChosen = true, .hasSummary = true, .modelIsLoading = true});
                },
            .whenModelIsLoaded = [this](auto returned) { waiting = std::move(returned); },
            .train = [this](auto returned) { training = std::move(returned); },
        };
    }

    std::unique_ptr<network::Backend> cpu = network::makeCPUBackend();
    std::shared_ptr<SampleGenerator> generator;
    std::optional<QUrl> folder;
    int count = 3;
    Aesthetics aesthetics;
    std::uint64_t seed = 42;
    OutputFormat format = OutputFormat::wav24;
    Gate holdGenerator;              // a run waits there before it begins
    int opened = 0;                  // how often the model was to be opened again
    std::function<void()> waiting;   // for the model to be loaded
    std::function<void()> training;  // what is to be called when it has ended
    int auditions = 0;
    int previewsCancelled = 0;
    GenerationController runs;
    Told told;
};

bool waitUntilEnded(const GenerationController& runs) {
    return QTest::qWaitFor([&] { return !runs.isGenerating() && !runs.isAuditioning(); }, longestWait);
}

void generateAndWait(Studio& studio) {
    studio.runs.generate();
    QVERIFY(waitUntilEnded(studio.runs));
}

void auditionAndWait(Studio& studio) {
    studio.runs.audition();
    QVERIFY(waitUntilEnded(studio.runs));
}

QStringList fileNames(GenerationController& runs) {
    QStringList names;
    for (int row = 0; row < runs.results()->count(); ++row)
        names.append(runs.results()->index(row).data(ResultsModel::FileNameRole).toString());
    return names;
}

QByteArray bytesOfResult(GenerationController& runs, int row) {
    return TestWorld::read(runs.results()->urlAt(row).toLocalFile());
}

// There are files in the folder, and each of them is a variation to its last sample.
void verifyAllWhole(const QString& folder) {
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files | QDir::Hidden);
    QVERIFY(!files.isEmpty());
    for (const QFileInfo& file : files) {
        QCOMPARE(file.suffix(), QStringLiteral("wav"));
        const auto info = AudioIO::info(toPath(file.filePath()));
        QVERIFY2(info, qPrintable(file.fileName()));
        const auto samples = AudioIO::readMono(toPath(file.filePath())).samples.size();
        QCOMPARE(static_cast<double>(samples), info->duration * info->sampleRate);
        QCOMPARE(file.size(), static_cast<qint64>(44 + 3 * samples + samples % 2));
    }
}

}  // namespace

class GenerationControllerTest : public QObject {
    Q_OBJECT

private slots:
    void writesTheVariationsSortedByName() {
        TestWorld world;
        Studio studio(world);
        studio.count = 12;
        QSignalSpy generating(&studio.runs, &GenerationController::isGeneratingChanged);
        QSignalSpy finished(&studio.runs, &GenerationController::generationFinished);
        QList<int> done;
        connect(&studio.runs, &GenerationController::progressed, &studio.runs,
                [&] { done.append(studio.runs.done()); });
        studio.runs.generate();
        QVERIFY(studio.runs.isGenerating());
        QCOMPARE(studio.runs.total(), 12);
        QVERIFY(waitUntilEnded(studio.runs));
        QCOMPARE(studio.told.error, QString());
        QCOMPARE(generating.count(), 2);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(finished.at(0).at(0).toInt(), 12);
        QCOMPARE(done.size(), 13);
        QVERIFY(std::is_sorted(done.begin(), done.end()));
        const QStringList names = fileNames(studio.runs);
        QCOMPARE(names.size(), 12);
        QCOMPARE(names.first(), QStringLiteral("corpus_var_0001.wav"));
        QCOMPARE(names.last(), QStringLiteral("corpus_var_0012.wav"));
        QVERIFY(std::is_sorted(names.begin(), names.end()));
        QCOMPARE(studio.runs.lastOutputFolder(), world.url("out"));
    }

    void writesTheChosenFormat_data() {
        QTest::addColumn<int>("format");
        QTest::addColumn<int>("bits");
        QTest::newRow("16") << 0 << 16;
        QTest::newRow("24") << 1 << 24;
        QTest::newRow("32") << 2 << 32;
    }
    void writesTheChosenFormat() {
        QFETCH(int, format);
        QFETCH(int, bits);
        TestWorld world;
        Studio studio(world);
        studio.count = 1;
        studio.format = static_cast<OutputFormat>(format);
        generateAndWait(studio);
        QCOMPARE(static_cast<int>(bytesOfResult(studio.runs, 0).at(34)), bits);
    }

    void reportsAnOutputPathThatIsAFile() {
        TestWorld world;
        Studio studio(world);
        studio.count = 3;
        TestWorld::write(world.path("out"), "x");
        generateAndWait(studio);
        QVERIFY2(studio.told.error.contains("out"), qPrintable(studio.told.error));
        QCOMPARE(studio.runs.results()->count(), 0);
        QVERIFY(studio.runs.lastOutputFolder().isEmpty());
        QCOMPARE(TestWorld::read(world.path("out")), QByteArray("x"));
    }

    void reportsAnOutputFolderThatVanishes() {
        TestWorld world;
        // Renamed, not emptied: files are being written into it.
        world.inTheMidst(Run::generation, 3, [&] {
            QDir().rename(world.path("out"), world.path("moved"));
            TestWorld::write(world.path("out"), "not a folder any more");
        });
        Studio studio(world);
        studio.count = 2;
        generateAndWait(studio);
        const QStringList before = fileNames(studio.runs);
        QCOMPARE(before.size(), 2);
        studio.count = 40;
        generateAndWait(studio);
        QVERIFY2(!studio.told.error.isEmpty(), "writing into a folder that is gone must fail");
        QCOMPARE(fileNames(studio.runs), before);  // the previous results stay
        QTRY_VERIFY(!studio.runs.results()->existsAt(0));
        verifyAllWhole(world.path("moved"));
    }

    void reportsADiskThatFillsUpMeanwhile() {
        TestWorld world;
        std::optional<FullDisk> full;
        world.inTheMidst(Run::generation, 3, [&] { full.emplace(300); });
        Studio studio(world);
        studio.count = 60;
        generateAndWait(studio);
        QVERIFY(full);
        full.reset();
        // What was written before is there in full, and nothing else; the results show it.
        verifyAllWhole(world.path("out"));
        const QStringList written = QDir(world.path("out")).entryList(QDir::Files);
        QVERIFY(written.size() >= 3);
        QCOMPARE(fileNames(studio.runs), written);
        QCOMPARE(studio.runs.lastOutputFolder(), world.url("out"));
        QVERIFY2(
            studio.told.error.endsWith(QStringLiteral("\n%1 of 60 variations written.").arg(written.size())),
            qPrintable(studio.told.error));
        generateAndWait(studio);
        QCOMPARE(studio.told.error, QString());
        QCOMPARE(studio.runs.results()->count(), 60);
    }

    void reportsAFullDisk() {
        TestWorld world;
        Studio studio(world);
        studio.count = 2;
        {
            const FullDisk full(300);
            generateAndWait(studio);
        }
        QVERIFY2(!studio.told.error.isEmpty(), "a full disk must be reported");
        QCOMPARE(studio.runs.results()->count(), 0);
        QCOMPARE(QDir(world.path("out")).entryList(QDir::Files | QDir::Hidden).size(), 0);
    }

    void aCancelledRunShowsWhatItHasWritten() {
        TestWorld world;
        Studio studio(world);
        studio.count = 2;
        generateAndWait(studio);
        QSignalSpy finished(&studio.runs, &GenerationController::generationFinished);
        studio.folder = world.url("long");
        studio.count = 100000;
        studio.runs.generate();
        QVERIFY(QTest::qWaitFor([&] { return studio.runs.done() > 0; }, longestWait));
        studio.runs.cancel();
        QVERIFY(studio.runs.isCancelling());
        QVERIFY(waitUntilEnded(studio.runs));
        QVERIFY(!studio.runs.isCancelling());
        QCOMPARE(studio.told.error, QString());
        const QStringList written = QDir(world.path("long")).entryList(QDir::Files);
        QVERIFY(!written.isEmpty());
        QCOMPARE(fileNames(studio.runs), written);
        QCOMPARE(studio.runs.lastOutputFolder(), world.url("long"));
        QCOMPARE(finished.count(), 0);
        QCOMPARE(
            studio.told.notices,
            QStringList(QStringLiteral("Cancelled: %1 of 100000 variations written.").arg(written.size())));
    }

    void aRunCancelledBeforeItsFirstFileKeepsThePreviousResults() {
        TestWorld world;
        Studio studio(world);
        studio.count = 2;
        generateAndWait(studio);
        const QStringList before = fileNames(studio.runs);
        for (const int count : {2, 1}) {
            studio.count = count;
            studio.holdGenerator.close();
            studio.runs.generate();
            studio.runs.cancel();
            studio.holdGenerator.open();
            QVERIFY(waitUntilEnded(studio.runs));
            QCOMPARE(fileNames(studio.runs), before);
        }
        QCOMPARE(studio.told.notices, QStringList({"Cancelled: 0 of 2 variations written.",
                                                   "Cancelled: 0 of 1 variation written."}));
    }

    void needsAnOutputFolder() {
        TestWorld world;
        Studio studio(world);
        studio.folder.reset();
        QSignalSpy missing(&studio.runs, &GenerationController::outputFolderMissing);
        for (const bool hasModel : {true, false}) {
            studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true, .hasModel = hasModel});
            bool returned = false;
            studio.runs.generate([&] { returned = true; });
            QVERIFY(returned);
            QCOMPARE(studio.told.error, QStringLiteral("Choose an output folder first."));
            QCOMPARE(missing.count(), hasModel ? 1 : 2);
            QVERIFY(!studio.runs.isGenerating());
            QVERIFY(!studio.training);
        }
    }

    void withoutASummaryItSaysWhatToDo() {
        TestWorld world;
        Studio studio(world);
        studio.runs.setSupplies({});
        QVERIFY(!studio.runs.canGenerate());
        bool returned = false;
        studio.runs.generate([&] { returned = true; });
        QVERIFY(returned);
        QCOMPARE(studio.told.notices, QStringList("Choose a corpus first."));
        QCOMPARE(studio.told.error, QString());
        QVERIFY(!studio.training);
    }

    void trainsFirstWhenThereIsNoModel() {
        TestWorld world;
        Studio studio(world);
        studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true});
        QVERIFY(studio.runs.canGenerate() && !studio.runs.canAudition());
        bool returned = false;
        studio.runs.generate([&] { returned = true; });
        QVERIFY(studio.training && !studio.runs.isGenerating());
        studio.folder = world.url("another");  // too late for this run
        studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true, .hasModel = true});
        studio.training();
        QVERIFY(studio.runs.isGenerating() && !returned);
        QVERIFY(waitUntilEnded(studio.runs));
        QVERIFY(returned);
        QCOMPARE(studio.runs.lastOutputFolder(), world.url("out"));
    }

    void stopsWhenTheTrainingGaveNoModel() {
        TestWorld world;
        Studio studio(world);
        studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true});
        bool returned = false;
        studio.runs.generate([&] { returned = true; });
        studio.training();
        QVERIFY(returned);
        QVERIFY(!studio.runs.isGenerating());
    }

    void waitsForAModelThatIsBeingLoaded() {
        TestWorld world;
        Studio studio(world);
        studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true, .modelIsLoading = true});
        QSignalSpy commanded(&studio.runs, &GenerationController::commanded);
        studio.runs.generate();
        QVERIFY(studio.waiting && !studio.runs.isGenerating());
        studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true, .hasModel = true});
        studio.waiting();
        QVERIFY(studio.runs.isGenerating());
        QCOMPARE(commanded.count(), 1);  // by then the user may be typing something else
        QVERIFY(waitUntilEnded(studio.runs));
    }

    void aModelThatCouldNotBeLoadedIsNotReplacedUnasked() {
        TestWorld world;
        Studio studio(world);
        studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true, .modelIsLoading = true});
        bool returned = false;
        studio.runs.generate([&] { returned = true; });
        studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true});
        studio.waiting();
        QVERIFY(returned);
        QVERIFY(!studio.training);
    }

    void aModelThatCouldNotBeOpenedIsTriedAgainAndNeverTrained() {
        TestWorld world;
        Studio studio(world);
        const GenerationController::Supplies unopened{
            .corpusIsChosen = true, .hasSummary = true, .modelIsUnopened = true};
        studio.runs.setSupplies(unopened);
        bool returned = false;
        studio.runs.generate([&] { returned = true; });
        QCOMPARE(studio.opened, 1);
        QVERIFY(studio.waiting && studio.runs.isWaiting());
        studio.runs.setSupplies(unopened);
        studio.waiting();
        QVERIFY(returned && !studio.runs.isWaiting());
        QVERIFY(!studio.training && !studio.runs.isGenerating());
        studio.runs.generate();
        QCOMPARE(studio.opened, 2);
        studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true, .hasModel = true});
        studio.waiting();
        QVERIFY(studio.runs.isGenerating());
        QVERIFY(waitUntilEnded(studio.runs));
    }

    void saysThatVariationsFollowTheTraining() {
        TestWorld world;
        Studio studio(world);
        QSignalSpy waiting(&studio.runs, &GenerationController::isWaitingChanged);
        studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true});
        studio.runs.generate();
        QVERIFY(studio.runs.isWaiting());
        studio.runs.generate();  // once is enough
        QCOMPARE(studio.told.notices, QStringList(Activity::waitNotice()));
        studio.training();  // without success
        QVERIFY(!studio.runs.isWaiting());
        QCOMPARE(waiting.count(), 2);
    }

    void asksForWhatIsBeingTypedBeforeItLooks() {
        TestWorld world;
        Studio studio(world);
        studio.count = 1;
        connect(&studio.runs, &GenerationController::commanded, &studio.runs, [&] { studio.count = 4; });
        generateAndWait(studio);
        QCOMPARE(studio.runs.results()->count(), 4);
        QSignalSpy commanded(&studio.runs, &GenerationController::commanded);
        auditionAndWait(studio);
        QCOMPARE(commanded.count(), 1);
    }

    void isRefusedPolitelyWhileAnotherRunIsActive() {
        TestWorld world;
        Studio studio(world);
        QSignalSpy able(&studio.runs, &GenerationController::canGenerateChanged);
        studio.runs.setActivity({.isTraining = true});
        QVERIFY(!studio.runs.canGenerate() && !studio.runs.canAudition());
        QCOMPARE(able.count(), 1);
        bool returned = false;
        studio.runs.generate([&] { returned = true; });
        QVERIFY(returned);
        QCOMPARE(studio.told.notices, QStringList(Activity::waitNotice()));
        QCOMPARE(studio.told.error, QString());
        studio.runs.audition();
        QVERIFY(!studio.runs.isGenerating() && !studio.runs.isAuditioning());
    }

    void closingDuringGenerationCancelsAndWaits() {
        TestWorld world;
        auto studio = std::make_unique<Studio>(world);
        studio->count = 100000;
        studio->runs.generate();
        QVERIFY(QTest::qWaitFor([&] { return studio->runs.done() > 0; }, longestWait));
        QElapsedTimer clock;
        clock.start();
        studio.reset();
        QVERIFY2(clock.elapsed() < 10000, "waits for the running variations, not for all");
    }

    // ---- How the results were made

    void knowsHowEachResultWasMade() {
        TestWorld world;
        Studio studio(world);
        studio.count = 2;
        studio.format = OutputFormat::wav16;
        generateAndWait(studio);
        const QUrl first = studio.runs.results()->urlAt(0);
        const auto base = studio.runs.baseOf(first);
        QVERIFY(base);
        QCOMPARE(base->corpusName, std::string("corpus"));
        QCOMPARE(base->device, std::string(deviceProcessor));
        QCOMPARE(base->aesthetics, studio.aesthetics);
        QCOMPARE(base->format, OutputFormat::wav16);
        QVERIFY(!studio.runs.baseOf(world.url("out/none.wav")));
        // It is enough to make the file again.
        const GeneratedSample made = studio.runs.results()->all().front();
        const Recipe recipe = makeRecipe(made.origin, *base);
        const auto remade = studio.generator->remake(std::vector{recipe.plan()});
        QCOMPARE(AudioIO::readMono(made.url).samples,
                 AudioIO::asWritten(remade.front().samples, OutputFormat::wav16));
    }

    void aKeptFileBringsItsOwn() {
        TestWorld world;
        Studio studio(world);
        studio.count = 1;
        generateAndWait(studio);
        const auto base = std::make_shared<const RecipeBase>(RecipeBase{.corpusName = "another"});
        studio.runs.addKept({.url = toPath(world.path("out/kept.wav")), .seconds = 1}, base);
        QCOMPARE(studio.runs.results()->count(), 2);
        QCOMPARE(studio.runs.baseOf(world.url("out/kept.wav")), base);
        studio.runs.rename(world.url("out/kept.wav"), world.url("out/renamed.wav"));
        QCOMPARE(studio.runs.baseOf(world.url("out/renamed.wav")), base);
        QVERIFY(studio.runs.baseOf(studio.runs.results()->urlAt(0)) != base);
        // The next generation has rows of its own.
        generateAndWait(studio);
        QCOMPARE(studio.runs.results()->count(), 1);
        QVERIFY(!studio.runs.baseOf(world.url("out/renamed.wav")));
    }

    // ---- The journal

    void theJournalHasEveryFile() {
        TestWorld world;
        Studio studio(world);
        generateAndWait(studio);
        const Journal journal(*world.environment.journalFile);
        const auto runs = runsOf({.name = "corpus", .fingerprint = ""}, journal);
        QCOMPARE(runs.size(), 1U);
        QCOMPARE(runs[0].files.size(), 3U);
        QCOMPARE(runs[0].recipe().seed, studio.seed);
        for (int row = 0; row < 3; ++row) {
            const JournalEntry& entry = runs[0].files[static_cast<std::size_t>(row)];
            const GeneratedSample& sample = studio.runs.results()->all()[static_cast<std::size_t>(row)];
            QCOMPARE(entry.file, sample.url.string());
            QCOMPARE(entry.recipe, makeRecipe(sample.origin, *studio.runs.baseOf(toUrl(sample.url))));
            QCOMPARE(entry.digests.bytes, fileDigest(sample.url));
        }
        // Auditions are of no file.
        auditionAndWait(studio);
        QCOMPARE(runsOf({.name = "corpus", .fingerprint = ""}, journal).size(), 1U);
    }

    void theJournalIsLeftAloneWhereNobodyWantsIt() {
        TestWorld world;
        world.wantsJournal = false;
        Studio studio(world);
        generateAndWait(studio);
        QCOMPARE(studio.runs.results()->count(), 3);
        QVERIFY(!QFileInfo::exists(world.path("data/Quillmere/journal.jsonl")));
        QVERIFY(studio.told.notices.isEmpty());
    }

    void withoutAHomeThereIsNoJournal() {
        TestWorld world;
        world.environment.journalFile.reset();
        Studio studio(world);
        generateAndWait(studio);
        QCOMPARE(studio.runs.results()->count(), 3);
        QVERIFY(studio.told.notices.isEmpty());
    }

    void saysWhyTheJournalLacksThem() {
        TestWorld world;
        QDir().mkpath(world.path("data/Quillmere/journal.jsonl"));  // a folder has its name
        Studio studio(world);
        generateAndWait(studio);
        QCOMPARE(studio.runs.results()->count(), 3);
        QCOMPARE(studio.told.error, QString());
        QCOMPARE(studio.told.notices.size(), 1);
        QVERIFY(studio.told.notices.first().startsWith(
            "How the files were made could not be noted everywhere. "));
    }

    void saysSoOfARunThatWasCancelled() {
        TestWorld world;
        QDir().mkpath(world.path("data/Quillmere/journal.jsonl"));  // a folder has its name
        Studio studio(world);
        studio.count = 100000;
        studio.runs.generate();
        QVERIFY(QTest::qWaitFor([&] { return studio.runs.done() > 0; }, longestWait));
        studio.runs.cancel();
        QVERIFY(waitUntilEnded(studio.runs));
        QCOMPARE(studio.told.notices.size(), 2);
        QVERIFY(studio.told.notices.first().startsWith("Cancelled: "));
        QVERIFY(
            studio.told.notices.last().startsWith("How the files were made could not be noted everywhere. "));
    }

    void theJournalIsLeftAloneWhereNobodyCanTell() {
        TestWorld world;
        world.environment.journalIsOn = []() -> bool {
            throw FileError("/config/no-journal", std::make_error_code(std::errc::permission_denied));
        };
        Studio studio(world);
        generateAndWait(studio);
        QVERIFY(!QFileInfo::exists(world.path("data/Quillmere/journal.jsonl")));
        QCOMPARE(studio.told.notices.size(), 1);
        QVERIFY(studio.told.notices.first().startsWith(
            "The journal stays as it is, because it cannot be told whether it is wanted. "));
    }

    void filesOfBeforeTakeTheirPlace() {
        TestWorld world;
        Studio studio(world);
        generateAndWait(studio);
        const std::vector<GeneratedSample> before = studio.runs.results()->all();
        const auto base = std::make_shared<const RecipeBase>(RecipeBase{.corpusName = "before"});
        studio.folder = world.url("elsewhere");
        generateAndWait(studio);
        studio.runs.showEarlier(before, base, world.url("out"));
        QCOMPARE(studio.runs.results()->count(), 3);
        QCOMPARE(studio.runs.results()->urlAt(0), toUrl(before.front().url));
        QCOMPARE(studio.runs.baseOf(toUrl(before.front().url)), base);
        QCOMPARE(studio.runs.lastOutputFolder(), world.url("out"));
    }

    // ---- Auditions

    void auditionsInto16BitsWhateverTheFormat() {
        TestWorld world;
        Studio studio(world);
        studio.format = OutputFormat::wav32float;
        QSignalSpy finished(&studio.runs, &GenerationController::auditionFinished);
        studio.runs.audition();
        QVERIFY(studio.runs.isAuditioning());
        QVERIFY(waitUntilEnded(studio.runs));
        QCOMPARE(finished.count(), 1);
        QCOMPARE(finished.at(0).at(0).toUrl(), world.url("tmp/Quillmere-audition.wav"));
        const QByteArray bytes = TestWorld::read(world.path("tmp/Quillmere-audition.wav"));
        QCOMPARE(static_cast<int>(bytes.at(34)), 16);
        QCOMPARE(studio.runs.results()->count(), 0);
        QCOMPARE(studio.told.error, QString());
    }

    void withoutAModelAnAuditionSaysWhatToDo() {
        TestWorld world;
        Studio studio(world);
        studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true});
        studio.runs.audition();
        QVERIFY(!studio.runs.isAuditioning());
        QVERIFY(!studio.training);
        QCOMPARE(studio.told.error, QString());
        QCOMPARE(studio.told.notices,
                 QStringList("There is no model to audition yet. Train one first, or press Generate."));
    }
    void whatIsNotLearnedYetIsHeardWhileItIsBeingLearned() {
        TestWorld world;
        Studio studio(world);
        studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true, .canPreview = true});
        QVERIFY(studio.runs.canAudition());
        for (const Activity& other : {Activity{.isGenerating = true}, Activity{.isScanning = true}}) {
            studio.runs.setActivity(other);
            QVERIFY(!studio.runs.canAudition());
        }
        studio.runs.setActivity({.isTraining = true});
        QVERIFY(studio.runs.canAudition());
        auditionAndWait(studio);
        QCOMPARE(studio.auditions, 1);
        QCOMPARE(studio.told.notices, QStringList("Before learning: this is the head start."));
        // A model that is being replaced is not heard meanwhile.
        studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true, .hasModel = true});
        QVERIFY(!studio.runs.canAudition());
    }
    void anAuditionOpensAModelThatCouldNotBeOpened() {
        TestWorld world;
        Studio studio(world);
        studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true, .modelIsUnopened = true});
        studio.runs.audition();
        QCOMPARE(studio.opened, 1);
        QVERIFY(studio.waiting);
        studio.runs.setSupplies({.corpusIsChosen = true, .hasSummary = true, .hasModel = true});
        studio.waiting();
        QVERIFY(studio.runs.isAuditioning());
        QVERIFY(waitUntilEnded(studio.runs));
        QCOMPARE(studio.auditions, 1);
    }

    void aCancelledAuditionIsNotHandedOn() {
        TestWorld world;
        Studio studio(world);
        studio.runs.audition();
        studio.runs.cancel();
        QVERIFY(studio.runs.isCancelling());
        QVERIFY(waitUntilEnded(studio.runs));
        QVERIFY(!studio.runs.isCancelling());
        QCOMPARE(studio.auditions, 0);
        auditionAndWait(studio);
        QCOMPARE(studio.auditions, 1);
    }

    void theSameSeedSoundsTheSame() {
        TestWorld world;
        Studio studio(world);
        const QString file = world.path("tmp/Quillmere-audition.wav");
        studio.seed = 42;
        auditionAndWait(studio);
        const QByteArray first = TestWorld::read(file);
        auditionAndWait(studio);
        QCOMPARE(TestWorld::read(file), first);
        studio.seed = 43;
        auditionAndWait(studio);
        QVERIFY(TestWorld::read(file) != first);
    }

    void repeatsTheSeedOfTheLastAudition() {
        const TestWorld world;
        Studio studio(world);
        const auto heard = [&] { return TestWorld::read(world.path("tmp/Quillmere-audition.wav")); };
        studio.seed = 7;
        auditionAndWait(studio);
        const QByteArray seven = heard();
        studio.seed = 8;
        studio.runs.auditionAgain();
        QVERIFY(waitUntilEnded(studio.runs));
        QCOMPARE(heard(), seven);
        auditionAndWait(studio);
        QVERIFY(heard() != seven);
    }
    void makesTheFolderOfTheAudition() {
        TestWorld world;
        Studio studio(world);
        QVERIFY(QDir(world.path("tmp")).removeRecursively());
        auditionAndWait(studio);
        QCOMPARE(studio.told.error, QString());
        QVERIFY(QFileInfo::exists(world.path("tmp/Quillmere-audition.wav")));
    }

    void reportsATemporaryFolderThatIsNone() {
        TestWorld world;
        Studio studio(world);
        QVERIFY(QDir(world.path("tmp")).removeRecursively());
        TestWorld::write(world.path("tmp"), "a file");
        auditionAndWait(studio);
        QVERIFY2(studio.told.error.contains("Quillmere-audition.wav"), qPrintable(studio.told.error));
        QCOMPARE(studio.auditions, 0);
    }

    void neverWritesThroughALink() {
        TestWorld world;
        Studio studio(world);
        TestWorld::write(world.path("precious"), "keep me");
        QVERIFY(QFile::link(world.path("precious"), world.path("tmp/Quillmere-audition.wav")));
        auditionAndWait(studio);
        QCOMPARE(TestWorld::read(world.path("precious")), QByteArray("keep me"));
        QVERIFY(!QFileInfo(world.path("tmp/Quillmere-audition.wav")).isSymLink());
        QCOMPARE(studio.told.error, QString());
    }
};

}  // namespace quillmere::testing

QUILLMERE_APP_TEST(quillmere::testing::GenerationControllerTest)
#include "GenerationControllerTest.moc"
