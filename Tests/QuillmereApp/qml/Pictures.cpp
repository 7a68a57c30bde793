// Takes a picture of the window in every state and appearance and writes them as PNG files.
//
//     quillmere-pictures [--steps N] [--language LANGUAGE] FOLDER [NAME...]
//
// N: steps of the training (default 500). LANGUAGE: "de" … (default: that of the sources). NAME: only
// pictures whose names begin so. The model behind the window is real: it scans, learns and generates in a
// folder of its own. Runs on the offscreen platform unless another one is asked for.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QImage>
#include <QKeyEvent>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTest>
#include <QtQml/QQmlExtensionPlugin>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <optional>

#include "QuillmereApp/AppModel.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/WindowLanguage.h"
#include "QuillmereCore/Util/Language.h"

Q_IMPORT_QML_PLUGIN(QuillmereAppPlugin)

namespace quillmere::testing {
namespace {

// Strokes on a pair of small drums, from the package sonic-pi-samples (all of it in the public domain).
QFileInfoList drumStrokes() {
    const QDir folder(QStringLiteral("/usr/share/sonic-pi/samples"), QStringLiteral("tabla_*.flac"));
    QFileInfoList files = folder.entryInfoList();
    if (files.size() < 20) qFatal("The package sonic-pi-samples is missing.");
    return files;
}

// The offscreen platform has no desktop whose font the window could take: that of the usual desktops.
void useDesktopFont() {
    for (const char* family : {"Roboto", "Noto Sans", "Cantarell"}) {
        const QString name = QString::fromLatin1(family);
        if (!QFontDatabase::hasFamily(name)) continue;
        QGuiApplication::setFont(QFont(name));
        return;
    }
}

// From now on the window speaks that language, as if the environment asked for it.
void speak(const QString& language, std::optional<WindowLanguage>& window) {
    qputenv("LC_ALL", language.toUtf8());
    qunsetenv("LANGUAGE");
    Language::takeFromEnvironment(QUILLMERE_CATALOGUES);
    if (Language::name() != language.toStdString())
        qFatal("There is no catalogue of %s.", qPrintable(language));
    window.emplace(QUILLMERE_CATALOGUES);
}

class Photographer {
public:
    Photographer(QString folder, QStringList wanted, int steps)
        : folder_(std::move(folder)), wanted_(std::move(wanted)), steps_(steps) {
        QDir().mkpath(folder_);
        world_.environment.adjustTraining = [this](TrainingOptions options) {
            options.steps = world_.steps;
            options.batchSize = 8;
            return options;
        };
        // As long as a seed from the system's random numbers is.
        world_.environment.glimpseInterval = std::chrono::seconds(2);
        world_.environment.freshSeed = [] { return 7249384027461839206U; };
        // The window says where its folders are; the real places have ugly names.
        world_.environment.homeFolder = world_.path(QStringLiteral("home"));
    }

    void takeAll() {
        app_ = std::make_unique<AppModel>(world_.environment);
        makeCorpora();
        open();
        empty();
        scanning();
        fewSamples();
        untrained();
        if (isWanted(QStringLiteral("training-dark")) || isWanted(QStringLiteral("training-light")) ||
            isWanted(QStringLiteral("training-small")))
            training();
        train();
        trained();
        sheets();
        generating();
        results();
        candidates();
        map();
        selection();
        earlierRuns();
        sweep();
        similar();
        outputInCorpus();
        chooser();
        error();
        devices();
    }

private:
    QUrl corpus(const QString& name, int files = std::numeric_limits<int>::max()) {
        const QString folder = QStringLiteral("home/Samples/") + name;
        QDir().mkpath(world_.path(folder));
        for (const QFileInfo& file : drumStrokes().mid(0, files))
            QFile::copy(file.filePath(), world_.path(folder + "/" + file.fileName()));
        return world_.url(folder);
    }

    void makeCorpora() {
        tabla_ = corpus(QStringLiteral("Tabla"));
        few_ = corpus(QStringLiteral("Three Strokes"), 3);
        app_->setOutputText(QStringLiteral("~/Samples/New strokes"));
    }

    void open() {
        engine_.setInitialProperties({{QStringLiteral("app"), QVariant::fromValue(app_.get())}});
        engine_.load(QUrl(QStringLiteral("qrc:/qt-project.org/imports/QuillmereApp/qml/Main.qml")));
        if (engine_.rootObjects().isEmpty()) qFatal("The window could not be loaded.");
        window_ = qobject_cast<QQuickWindow*>(engine_.rootObjects().constFirst());
        if (!QTest::qWaitForWindowExposed(window_)) qFatal("The window does not appear.");
    }

    [[nodiscard]] bool isWanted(const QString& name) const {
        return wanted_.isEmpty() || std::any_of(wanted_.begin(), wanted_.end(),
                                                [&](const QString& start) { return name.startsWith(start); });
    }

    // The window now, in one size and appearance.
    void take(const QString& name, QSize size = {1180, 820}, Appearance::Mode mode = Appearance::Dark) {
        if (!isWanted(name)) return;
        app_->appearance()->setMode(mode);
        window_->resize(size);
        QTest::qWait(600);
        const QString file = QStringLiteral("%1/app-%2.png").arg(folder_, name);
        if (!window_->grabWindow().save(file, "PNG")) qFatal("cannot write %s", qPrintable(file));
        std::printf("%s\n", qPrintable(file));
        std::fflush(stdout);
    }
    void takeBoth(const QString& name, QSize size = {1180, 820}) {
        take(name + QStringLiteral("-dark"), size, Appearance::Dark);
        take(name + QStringLiteral("-light"), size, Appearance::Light);
    }

    static void waitFor(const std::function<bool()>& state) {
        constexpr int patience = 600000;
        if (!QTest::qWaitFor(state, patience)) qFatal("A state of the window does not come.");
    }
    void waitUntilIdle() {
        waitFor([&] { return !app_->isBusy() && !app_->model()->isLoading(); });
    }

    void empty() {
        takeBoth(QStringLiteral("empty"));
        take(QStringLiteral("empty-small"), {640, 480});
    }
    void scanning() {
        const QUrl many = corpus(QStringLiteral("Everything"), 1);
        const std::filesystem::path folder = toPath(many.toLocalFile());
        const std::filesystem::path first = std::filesystem::directory_iterator(folder)->path();
        for (int i = 2; i <= 20000; ++i)
            std::filesystem::create_hard_link(first, folder / ("stroke " + std::to_string(i) + ".flac"));
        app_->setCorpus(many);
        waitFor([&] { return app_->corpus()->scanDone() > 4000 || !app_->isScanning(); });
        take(QStringLiteral("scanning-dark"));
        app_->cancel();
        waitUntilIdle();
    }
    void fewSamples() {
        app_->setCorpus(few_);
        waitUntilIdle();
        takeBoth(QStringLiteral("few-samples"));
    }
    void untrained() {
        app_->setCorpus(tabla_);
        waitUntilIdle();
        takeBoth(QStringLiteral("untrained"));
    }
    void training() {
        // As many steps as the quality Standard has; the picture shows the first of them.
        world_.steps = 2000;
        app_->train();
        waitFor([&] { return app_->model()->step() > steps_ * 3 / 4 || !app_->isTraining(); });
        takeBoth(QStringLiteral("training"));
        take(QStringLiteral("training-small"), {640, 480});
        app_->model()->cancelTraining();
        waitUntilIdle();
    }
    void train() {
        world_.steps = steps_;
        app_->train();
        waitUntilIdle();
    }
    void trained() {
        app_->character()->applyPreset(QStringLiteral("Explore"));
        app_->character()->parameters()->setValue(QStringLiteral("pitch"), -7);
        takeBoth(QStringLiteral("trained"));
        take(QStringLiteral("trained-small"), {640, 480});
        take(QStringLiteral("trained-small-light"), {640, 480}, Appearance::Light);
    }
    // What becomes of the files, what was learned of them, and the stored models.
    void sheets() {
        takeSheet(QStringLiteral("files"), Qt::Key_L, [&] { return app_->corpusFiles()->isRead(); });
        takeSheet(QStringLiteral("report"), Qt::Key_I, [&] { return app_->report()->isThere(); });
        takeSheet(QStringLiteral("models"), Qt::Key_M, [&] { return !app_->models()->isLooking(); });
    }
    void takeSheet(const QString& name, Qt::Key key, const std::function<bool()>& isThere) {
        if (!isWanted(name)) return;
        press(key, Qt::ControlModifier);
        waitFor(isThere);
        takeBoth(name);
        take(name + QStringLiteral("-small"), {640, 480});
        press(Qt::Key_Escape);
        QTest::qWait(300);
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QTest::keyClick(window_, key, modifiers);
    }
    void generating() {
        app_->setCount(400);
        app_->generate();
        waitFor([&] { return app_->generation()->done() > 120 || !app_->isGenerating(); });
        takeBoth(QStringLiteral("generating"));
        app_->cancel();
        waitUntilIdle();
    }
    void results() {
        app_->setOutputText(QStringLiteral("~/Samples/Strokes"));
        app_->setCount(12);
        app_->generate();
        waitUntilIdle();
        window_->findChild<QObject*>(QStringLiteral("results"))->setProperty("currentIndex", 2);
        app_->togglePlay(app_->results()->urlAt(2));
        QTest::qWait(800);
        takeBoth(QStringLiteral("results"));
        take(QStringLiteral("results-1080p"), {1920, 1080});
        take(QStringLiteral("results-1440p"), {2560, 1440});
        take(QStringLiteral("results-narrow"), {640, 1600});
        app_->generate();
        waitUntilIdle();
        take(QStringLiteral("results-small"), {800, 600});
    }
    // Two of the first five are kept, one is gone, the sixth is heard.
    void candidates() {
        CandidatesController& candidates = *app_->candidates();
        app_->setOutputText(QStringLiteral("~/Samples/Strokes"));
        candidates.start();
        waitUntilIdle();
        for (const int row : {1, 4}) {
            candidates.keep(row);
            waitFor([&] { return app_->results()->count() > 0 && candidates.list()->at(row)->isKept(); });
        }
        candidates.discard(2);
        window_->findChild<QObject*>(QStringLiteral("candidates"))->setProperty("currentIndex", 4);
        candidates.play(4);
        QTest::qWait(800);
        takeBoth(QStringLiteral("candidates"));
        take(QStringLiteral("candidates-1080p"), {1920, 1080});
        take(QStringLiteral("candidates-narrow"), {640, 1600});
        inspector();
        candidates.start();
        waitUntilIdle();
        take(QStringLiteral("candidates-small"), {800, 600});
        app_->playback()->stop();
    }
    // Of the candidate that is heard.
    void inspector() {
        InspectorController& inspector = *app_->inspector();
        inspector.setOpen(true);
        app_->inspectCandidate(4);
        waitFor([&] { return !inspector.nearest().isEmpty(); });
        app_->candidates()->play(4);
        takeBoth(QStringLiteral("inspector"));
        take(QStringLiteral("inspector-1080p"), {1920, 1080});
        take(QStringLiteral("inspector-narrow"), {640, 1600});
        take(QStringLiteral("inspector-small"), {800, 600});
        app_->candidates()->keep(4);
        waitFor([&] { return inspector.isFile(); });
        take(QStringLiteral("kept-dark"));
        inspector.setOpen(false);
    }
    void map() {
        if (!isWanted(QStringLiteral("map"))) return;
        app_->map()->setShown(true);
        waitFor([&] { return app_->map()->isReady(); });
        QTest::qWait(300);
        window_->findChild<QQuickItem*>(QStringLiteral("points"))->forceActiveFocus();
        press(Qt::Key_Right);
        takeBoth(QStringLiteral("map"));
        take(QStringLiteral("map-1080p"), {1920, 1080});
        take(QStringLiteral("map-small"), {800, 600});
        app_->map()->setShown(false);
    }
    // Three results at once, in two rows.
    void selection() {
        if (!isWanted(QStringLiteral("selection"))) return;
        app_->setOutputText(QStringLiteral("~/Samples/Strokes"));
        app_->generate();
        waitUntilIdle();
        app_->results()->selectRange(1, 3);
        QTest::qWait(2000);  // how new they are
        takeBoth(QStringLiteral("selection"));
        app_->results()->clearSelection();
    }
    void earlierRuns() {
        takeSheet(QStringLiteral("runs"), Qt::Key_H, [&] { return !app_->runs()->isLooking(); });
    }
    // One sound along a slider.
    void sweep() {
        if (!isWanted(QStringLiteral("sweep"))) return;
        app_->sweep()->open(QStringLiteral("pitch"));
        waitUntilIdle();
        app_->sweep()->play(4);
        takeBoth(QStringLiteral("sweep"));
        take(QStringLiteral("sweep-small"), {640, 480});
        app_->sweep()->close();
        QTest::qWait(300);
    }
    // What is like a sound from elsewhere.
    void similar() {
        if (!isWanted(QStringLiteral("similar"))) return;
        const QString file = QDir(few_.toLocalFile()).entryInfoList(QDir::Files).constFirst().filePath();
        app_->drops()->drop({QUrl::fromLocalFile(file)});
        waitFor([&] { return !app_->drops()->foreignName().isEmpty(); });
        app_->drops()->findSimilar();
        waitFor([&] { return app_->drops()->isFound(); });
        takeBoth(QStringLiteral("similar"));
        press(Qt::Key_Escape);
        QTest::qWait(300);
    }
    void outputInCorpus() {
        app_->setOutputText(app_->corpusURL().toLocalFile());
        take(QStringLiteral("output-in-corpus"), {1280, 800});
        app_->output()->useSuggestion();
    }
    void chooser() {
        app_->chooseCorpus();
        take(QStringLiteral("chooser"), {1280, 800});
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QCoreApplication::sendEvent(window_, &escape);
    }
    void error() {
        app_->setOutputText(QString());
        app_->generate();
        takeBoth(QStringLiteral("error"));
        take(QStringLiteral("error-small"), {640, 480});
    }

    // Three devices beside the processor, with the choice of one open.
    void devices() {
        using Type = FakeMachine::Type;
        world_.machine.add("GeForce RTX 4070", Type::discrete);
        world_.machine.add("Intel(R) UHD Graphics 770 (ADL-S GT1)", Type::integrated);
        world_.machine.add("llvmpipe (LLVM 15.0.6, 256 bits)", Type::software);
        app_->dismissError();
        window_->resize(1180, 820);
        app_->devices()->list();
        waitFor([&] { return app_->devices()->isListed() && !app_->devices()->isListing(); });
        app_->chooseDevice(0);
        QMetaObject::invokeMethod(window_->findChild<QObject*>(QStringLiteral("device")), "clicked");
        takeBoth(QStringLiteral("devices"));
    }

    QString folder_;
    QStringList wanted_;
    int steps_;  // of the model behind the pictures
    TestWorld world_;
    QUrl tabla_, few_;
    std::unique_ptr<AppModel> app_;
    QQmlApplicationEngine engine_;
    QQuickWindow* window_ = nullptr;
};

}  // namespace
}  // namespace quillmere::testing

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    quillmere::testing::useDesktopFont();
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    QStringList arguments = QGuiApplication::arguments().mid(1);
    int steps = 500;
    if (arguments.size() > 1 && arguments[0] == QLatin1String("--steps")) {
        steps = arguments[1].toInt();
        arguments = arguments.mid(2);
    }
    std::optional<quillmere::WindowLanguage> language;
    if (arguments.size() > 1 && arguments[0] == QLatin1String("--language")) {
        quillmere::testing::speak(arguments[1], language);
        arguments = arguments.mid(2);
    }
    if (arguments.isEmpty() || steps < 1) {
        std::fprintf(stderr,
                     "usage: quillmere-pictures [--steps N] [--language LANGUAGE] FOLDER [NAME...]\n");
        return 2;
    }
    quillmere::testing::Photographer(arguments[0], arguments.mid(1), steps).takeAll();
    return 0;
}
