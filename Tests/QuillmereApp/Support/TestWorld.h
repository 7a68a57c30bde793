#pragma once

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QString>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUrl>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "QuillmereApp/AppModel.h"
#include "QuillmereApp/Environment.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/FolderLooks.h"
#include "QuillmereApp/Support/Gate.h"
#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Util/ThreadSafety.h"
#include "Support/FakeMachine.h"
#include "Support/Signals.h"
#include "Support/SmallModel.h"

// Qt's own patience of five seconds is no match for a disk and processors that are busy with other work.
#undef QTRY_VERIFY
#undef QTRY_VERIFY2
#undef QTRY_COMPARE
#define QTRY_VERIFY(expression) QTRY_VERIFY_WITH_TIMEOUT(expression, quillmere::testing::longestWait)
#define QTRY_VERIFY2(expression, message) \
    QTRY_VERIFY2_WITH_TIMEOUT(expression, message, quillmere::testing::longestWait)
#define QTRY_COMPARE(expression, expected) \
    QTRY_COMPARE_WITH_TIMEOUT(expression, expected, quillmere::testing::longestWait)

namespace quillmere::testing {

// Milliseconds until something that must come is missed.
constexpr int longestWait = 60000;

// A player without a sound card. A play begins when the event loop runs, as with the real one, and ends when
// the test says so.
class FakePlayer : public Player {
public:
    void play(const QString& file) override {
        ask(file, [file]() -> std::optional<double> {
            const auto info = AudioIO::info(toPath(file));
            return info ? std::optional(info->duration) : std::nullopt;
        });
    }
    void playSound(const QString& name, const PlayableSound& sound) override {
        lastSound = sound;
        ask(name, [sound] { return std::optional(sound.seconds()); });
    }
    void stop() override {
        ++number_;
        playing.clear();
    }
    [[nodiscard]] bool isPlaying() const override { return !playing.isEmpty(); }
    void setVolume(float wanted) override { volume = wanted; }
    [[nodiscard]] double peakAt(double) const override { return playing.isEmpty() ? 0 : peak; }

    // The last sample has been played.
    void finish() { emit ended(std::exchange(playing, QString())); }

    QStringList asked;        // every file or name that was to be played
    PlayableSound lastSound;  // of those in memory
    QString playing;
    float volume = 1;
    double peak = 0.1;  // of whatever plays
    bool hasSoundCard = true;

private:
    using Duration = std::function<std::optional<double>()>;

    void ask(const QString& name, const Duration& duration) {
        stop();
        asked.append(name);
        const int number = number_;
        QTimer::singleShot(0, this, [this, name, duration, number] {
            if (number == number_) begin(name, duration());
        });
    }
    void begin(const QString& name, std::optional<double> seconds) {
        if (!seconds || !hasSoundCard) {
            emit failed(name, hasSoundCard ? "The file is gone." : "There is no sound card.");
            return;
        }
        playing = name;
        emit started(name, *seconds);
    }

    int number_ = 0;
};

// Everything an AppModel reaches, in a folder of its own, with trainings of a few steps and without a sound
// card, a clipboard and a desktop.
class TestWorld {
public:
    TestWorld() {
        environment.settingsFile = path("config/Quillmere/Quillmere.conf");
        environment.presetsFolder = path("config/Quillmere/presets");
        environment.modelsRoot = toPath(path("data/Quillmere/Models"));
        environment.headStartFolder = toPath(path("head-start"));
        environment.temporaryFolder = toPath(path("tmp"));
        environment.homeFolder = path("home");
        environment.followDesktop = false;
        environment.adjustTraining = [this](const TrainingOptions& options) {
            {
                const MutexLock lock(requestedMutex_);
                requestedTraining_ = options;
            }
            return tiny(options);
        };
        environment.glimpseInterval = std::chrono::hours(1);
        environment.freshSeed = [seed = std::uint64_t{1000}]() mutable { return seed++; };
        environment.makePlayer = [this] {
            auto made = std::make_unique<FakePlayer>();
            player = made.get();
            return made;
        };
        environment.copyText = [this](const QString& text) { clipboard = text; };
        environment.showFiles = [this](const QUrl& folder, const QList<QUrl>& files, const std::stop_token&) {
            shownFolder = folder;
            shownFiles = files;
            return hasFileManager;
        };
        environment.moveToTrash =
            [this](const std::filesystem::path& file) -> std::optional<std::filesystem::path> {
            if (!hasTrash) return std::nullopt;
            const std::filesystem::path trash = toPath(path("trash/files"));
            std::filesystem::create_directories(trash);
            std::filesystem::path place = trash / file.filename();
            for (int other = 2; std::filesystem::exists(place); ++other)
                place.replace_filename(file.stem().string() + "." + std::to_string(other) +
                                       file.extension().string());
            std::filesystem::rename(file, place);
            return place;
        };
        environment.journalFile = toPath(path("data/Quillmere/journal.jsonl"));
        environment.journalIsOn = [this] { return wantsJournal.load(); };
        environment.mayHaveGraphicsCard = false;
        environment.machine = &machine;
        environment.looks = std::make_shared<FolderLooks>(FolderLooks::onDisk, std::chrono::minutes(2));
        QDir(folder_.path()).mkpath("tmp");
        QDir(folder_.path()).mkpath("home");
    }

    ~TestWorld() { dead_->open(); }
    TestWorld(const TestWorld&) = delete;
    TestWorld& operator=(const TestWorld&) = delete;

    // From now on the folder and all in it do not answer, as on a mount whose server is gone. Models made
    // later notice; they give up after that long, which must do for healthy folders on a busy machine.
    void cutOff(const QString& name, std::chrono::milliseconds patience = std::chrono::milliseconds(500)) {
        dead_->close();
        const auto look = [dead = dead_, folder = toPath(path(name)),
                           looks = looksAtDead](const std::filesystem::path& asked) {
            if (asked.native().starts_with(folder.native())) {
                ++*looks;
                dead->pass();
            }
            return FolderLooks::onDisk(asked);
        };
        environment.looks = std::make_shared<FolderLooks>(look, patience);
    }

    // It answers again.
    void reconnect() const { dead_->open(); }

    [[nodiscard]] QString path(const QString& name) const { return folder_.filePath(name); }
    [[nodiscard]] QUrl url(const QString& name) const { return QUrl::fromLocalFile(path(name)); }

    // A folder of short clicks that a tiny network learns in well under a second.
    QUrl makeCorpus(const QString& name, int files = 3, double seconds = 0.1) const {
        QDir(folder_.path()).mkpath(name);
        constexpr int rate = 8000;
        for (int i = 0; i < files; ++i) {
            std::vector<float> samples =
                sine(300.0 + 150 * i, rate, static_cast<std::size_t>(seconds * rate), 0.8);
            for (std::size_t n = 0; n < samples.size(); ++n)
                samples[n] *= std::exp(-static_cast<float>(n) / 200);
            const QString file = QStringLiteral("%1/hit%2.wav").arg(path(name)).arg(i);
            AudioIO::write(samples, toPath(file), rate, OutputFormat::wav16);
        }
        return url(name);
    }

    // A folder of files, each copied as it is but for its time.
    void copyFolder(const QString& from, const QString& to) const {
        QDir(folder_.path()).mkpath(to);
        for (const QFileInfo& file : QDir(path(from)).entryInfoList(QDir::Files)) {
            const std::filesystem::path copy = toPath(path(to) + "/" + file.fileName());
            std::filesystem::copy_file(toPath(file.filePath()), copy);
            std::filesystem::last_write_time(
                copy, std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
        }
    }

    static void write(const QString& file, const QByteArray& bytes) {
        QDir().mkpath(QFileInfo(file).path());
        QFile stream(file);
        if (!stream.open(QIODevice::WriteOnly) || stream.write(bytes) != bytes.size()) qFatal("cannot write");
    }
    static QByteArray read(const QString& file) {
        QFile stream(file);
        return stream.open(QIODevice::ReadOnly) ? stream.readAll() : QByteArray();
    }
    void writePreferences(const QByteArray& lines) const {
        write(environment.settingsFile, "[General]\n" + lines);
    }

    // Does something once in the midst of a run: when it tells that it has come that far, before it goes on.
    // On the run's own thread. Models made later take part.
    void inTheMidst(Run wanted, std::int64_t reached, std::function<void()> act) {
        environment.onProgress = [=, act = std::move(act), done = std::make_shared<std::atomic<bool>>(false)](
                                     Run run, std::int64_t now) {
            if (run == wanted && now >= reached && !done->exchange(true)) act();
        };
    }

    // Runs of models made later stop at every report while the gate, which must outlive them, is closed.
    void holdRuns(Gate& gate) {
        gate.close();
        environment.onProgress = [&gate](Run, std::int64_t) { gate.pass(); };
    }

    // Steps of a test training; more make it last.
    std::atomic<std::int64_t> steps = 2;

    Environment environment;
    FakePlayer* player = nullptr;  // of the newest model
    FakeMachine machine;
    QString clipboard;
    QUrl shownFolder;
    QList<QUrl> shownFiles;
    bool hasFileManager = true;
    bool hasTrash = true;
    std::atomic<bool> wantsJournal = true;
    // How often somebody has looked at what cutOff has cut off.
    std::shared_ptr<std::atomic<int>> looksAtDead = std::make_shared<std::atomic<int>>(0);

    // The options of the newest training as they were before they were made tiny.
    [[nodiscard]] TrainingOptions requestedTraining() const {
        const MutexLock lock(requestedMutex_);
        return requestedTraining_;
    }

private:
    [[nodiscard]] TrainingOptions tiny(TrainingOptions options) const {
        options.steps = steps;
        options.batchSize = 2;
        if (!options.start) options.latentDim = 4;
        return options;
    }

    QTemporaryDir folder_;
    // Learning and an audition before it ask in threads of their own.
    mutable Mutex requestedMutex_;
    TrainingOptions requestedTraining_ QUILLMERE_GUARDED_BY(requestedMutex_);
    std::shared_ptr<Gate> dead_ = std::make_shared<Gate>();  // outlives this for threads that are left behind
};

// Compiles a network for the device that the model has chosen, as work in the background does.
inline void compileOnDevice(AppModel& model) {
    (void)model.devices()->chosen()->backend().compile(VAEGraphBuilder{smallConfig, 1}.build(),
                                                       network::Purpose::inference);
}

// Returns when everything has been delivered that waits now: queued calls, and timers that are due.
inline void deliverEvents() {
    bool delivered = false;
    QTimer::singleShot(0, [&] { QTimer::singleShot(0, [&] { delivered = true; }); });
    QVERIFY(QTest::qWaitFor([&] { return delivered; }));
}

// Waits until nothing runs and what is stored has been loaded.
inline bool waitUntilIdle(AppModel& app, int milliseconds = 120000) {
    return QTest::qWaitFor([&] { return !app.isBusy() && !app.model()->isLoading(); }, milliseconds);
}

// An AppModel with a corpus, and with a trained model if asked for.
inline void prepare(AppModel& app, const QUrl& corpus) {
    app.setCorpus(corpus);
    QVERIFY(waitUntilIdle(app));
    QVERIFY(app.corpus()->hasSummary());
}
inline void prepareTrained(AppModel& app, const QUrl& corpus) {
    prepare(app, corpus);
    app.train();
    QVERIFY(waitUntilIdle(app));
    QVERIFY2(app.model()->isReady(), qPrintable(app.errorMessage()));
}

// QTEST_MAIN on the offscreen platform.
template <typename Test>
int runTest(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

}  // namespace quillmere::testing

#define QUILLMERE_APP_TEST(Test)                              \
    int main(int argc, char** argv) {                         \
        return quillmere::testing::runTest<Test>(argc, argv); \
    }
