// The longest time the window's thread was busy without looking at its events, in each part of a full run:
// the real window offscreen, a corpus of 20,000 files, a training, a generation, an audition, thousands of
// results in every order, and a map of 20,000 points. Prints two figures per part: by the clock, which other
// programs on the machine lengthen, and in processor time of the thread, which they do not. Between them the
// time from the key of an audition to its first buffer on a sound card that is none, because a musician waits
// for it: the first time, and of ten more the median and the longest.
//
//   WindowResponsiveness [FILES] [RESULTS] [POINTS]

#include <QElapsedTimer>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTimer>
#include <QtQml/QQmlExtensionPlugin>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "QuillmereApp/Items/PointMapItem.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereCore/Model/ModelIdentity.h"
#include "Support/SmallModel.h"

Q_IMPORT_QML_PLUGIN(QuillmereAppPlugin)

namespace quillmere {
namespace {

using testing::TestWorld;
using testing::waitUntilIdle;

double threadMilliseconds() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1000 + static_cast<double>(time.tv_nsec) / 1e6;
}

// Ticks every 5 ms; what lies between two ticks beyond that kept the thread from its events.
class Watch {
public:
    Watch() {
        timer_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer_, &QTimer::timeout, [this] { tick(); });
        timer_.start(std::chrono::milliseconds(period));
        restart();
    }

    void restart() {
        clock_.start();
        processor_ = threadMilliseconds();
        longest_ = longestProcessor_ = 0;
    }

    void print(const char* part) {
        tick();
        std::printf("%-34s %8.1f ms  %8.1f ms\n", part, longest_, longestProcessor_);
        std::fflush(stdout);
        total_ = std::max(total_, longest_);
        totalProcessor_ = std::max(totalProcessor_, longestProcessor_);
        restart();
    }
    void printTotal() const { std::printf("%-34s %8.1f ms  %8.1f ms\n", "longest", total_, totalProcessor_); }

private:
    static constexpr int period = 5;

    void tick() {
        longest_ = std::max(longest_, static_cast<double>(clock_.nsecsElapsed()) / 1e6 - period);
        longestProcessor_ = std::max(longestProcessor_, threadMilliseconds() - processor_);
        clock_.start();
        processor_ = threadMilliseconds();
    }

    QTimer timer_;
    QElapsedTimer clock_;
    double processor_ = 0;
    double longest_ = 0, longestProcessor_ = 0, total_ = 0, totalProcessor_ = 0;
};

// Many names of one short file.
QUrl makeLargeCorpus(const TestWorld& world, int files) {
    const std::filesystem::path first = toPath(world.makeCorpus("large", 1)) / "hit0.wav";
    for (int i = 1; i < files; ++i)
        std::filesystem::create_hard_link(first, first.parent_path() / ("hit" + std::to_string(i) + ".wav"));
    return world.url("large");
}

std::vector<GeneratedSample> makeResults(const TestWorld& world, int count) {
    std::vector<GeneratedSample> samples;
    samples.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        samples.push_back({toPath(world.path(QStringLiteral("large/hit%1.wav").arg(i))), 0.1});
    return samples;
}

void require(bool condition, const AppModel& app) {
    if (condition) return;
    std::fprintf(stderr, "WindowResponsiveness: it did not work: %s\n", qPrintable(app.errorMessage()));
    std::exit(EXIT_FAILURE);
}

void letPass(std::chrono::milliseconds time) {
    QTest::qWait(static_cast<int>(time.count()));
}

QQuickItem* itemNamed(const QString& name, QQuickItem* root) {
    if (root->objectName() == name) return root;
    for (QQuickItem* child : root->childItems()) {
        if (QQuickItem* found = itemNamed(name, child)) return found;
    }
    return nullptr;
}

void scrollThrough(QQuickWindow& window) {
    QQuickItem* list = itemNamed(QStringLiteral("results"), window.contentItem());
    if (list == nullptr) std::abort();
    const double end = list->property("contentWidth").toDouble() - list->width();
    for (int step = 0; step <= 100; ++step) {
        list->setProperty("contentX", end * step / 100);
        letPass(std::chrono::milliseconds(10));
    }
}

// Results all over the map of the model.
std::vector<GeneratedSample> makePoints(const TestWorld& world, const AppModel& app, int count) {
    std::vector<GeneratedSample> samples = makeResults(world, count);
    const std::string identity = modelIdentity(*app.bundle());
    const auto latents = testing::randomLatents(samples.size(), app.bundle()->latents.front().size(), 5);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        samples[i].origin.model = identity;
        samples[i].origin.latent = latents[i];
    }
    return samples;
}

// In every order, by what is measured while it goes on, too.
void sortAll(AppModel& app) {
    using namespace std::chrono_literals;
    for (const auto order : {ResultsModel::ByName, ResultsModel::ByLength, ResultsModel::ByBrightness,
                             ResultsModel::ByNovelty, ResultsModel::AsMade}) {
        app.sortResults(order);
        letPass(500ms);
    }
}

// From the key to the moment at which the sound card has the sound.
double millisecondsToSound(AppModel& app, QQuickWindow& window) {
    app.playback()->stop();
    QElapsedTimer clock;
    double heardAfter = -1;
    const auto heard = QObject::connect(app.playback(), &PlaybackController::playingURLChanged, [&] {
        if (heardAfter < 0) heardAfter = static_cast<double>(clock.nsecsElapsed()) / 1e6;
    });
    clock.start();
    QTest::keyClick(&window, Qt::Key_P, Qt::ControlModifier);
    require(QTest::qWaitFor([&] { return heardAfter >= 0; }, 60000), app);
    QObject::disconnect(heard);
    require(waitUntilIdle(app, 60000) && app.errorMessage().isEmpty(), app);
    return heardAfter;
}

void hearAuditions(AppModel& app, QQuickWindow& window) {
    window.requestActivate();
    require(QTest::qWaitForWindowActive(&window), app);
    const double first = millisecondsToSound(app, window);
    constexpr std::size_t times = 10;
    std::vector<double> more;
    more.reserve(times);
    for (std::size_t i = 0; i < times; ++i)
        more.push_back(millisecondsToSound(app, window));
    std::ranges::sort(more);
    std::printf("%-34s %8.1f ms; then %.1f ms, longest %.1f ms\n", "from the key to the sound", first,
                more[more.size() / 2], more.back());
    std::fflush(stdout);
}

void lookAtTheMap(AppModel& app, QQuickWindow& window) {
    using namespace std::chrono_literals;
    app.map()->setShown(true);
    require(QTest::qWaitFor([&] { return app.map()->isReady(); }, 60000), app);
    letPass(500ms);
    QQuickItem* const item = itemNamed(QStringLiteral("points"), window.contentItem());
    auto* const points = qobject_cast<PointMapItem*>(item);
    if (points == nullptr) std::abort();
    points->zoomAt({points->width() / 2, points->height() / 2}, 2);
    for (int step = 0; step < 50; ++step) {
        points->pan({step % 2 == 0 ? 10.0 : -10.0, 5.0});
        letPass(10ms);
    }
    app.map()->selectBetween({-1e3, -1e3}, {1e3, 1e3});
    letPass(100ms);
}

void measure(int files, int results, int points) {
    using namespace std::chrono_literals;
    TestWorld world;
    world.steps = 300;
    world.environment.makePlayer = Player::forSoundCard;
    const QUrl large = makeLargeCorpus(world, files);
    const QUrl small = world.makeCorpus("small", 16);

    std::printf("%-34s %11s  %11s\n", "", "by clock", "processor");
    Watch watch;
    AppModel app(world.environment);
    QQmlApplicationEngine engine;
    engine.setInitialProperties({{QStringLiteral("app"), QVariant::fromValue(&app)}});
    engine.load(QUrl(QStringLiteral("qrc:/qt-project.org/imports/QuillmereApp/qml/Main.qml")));
    auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().value(0));
    if (window == nullptr) std::abort();
    letPass(500ms);
    watch.restart();  // the start is measured elsewhere

    app.setCorpus(large);
    require(waitUntilIdle(app, 300000) && app.corpus()->fileCount() == files, app);
    letPass(100ms);
    watch.print(qPrintable(QStringLiteral("opening %1 files").arg(files)));

    app.setCorpus(small);
    require(waitUntilIdle(app) && app.corpus()->hasSummary(), app);
    letPass(100ms);
    watch.print("opening another corpus");

    app.train();
    require(waitUntilIdle(app, 600000) && app.model()->isReady(), app);
    letPass(100ms);
    watch.print("training");

    app.setOutputText(world.path("out"));
    app.setCount(100);
    app.generate();
    require(waitUntilIdle(app, 600000) && app.results()->count() == 100, app);
    letPass(500ms);
    watch.print("generating 100 variations");

    hearAuditions(app, *window);
    letPass(500ms);
    watch.print("auditions");

    for (const Preset& preset : Preset::all()) {
        app.apply(preset);
        letPass(30ms);
        app.character()->randomise(1);
        letPass(30ms);
    }
    watch.print("presets and randomising");

    app.results()->setSamples(makeResults(world, results));
    letPass(500ms);
    watch.print(qPrintable(QStringLiteral("showing %1 results").arg(results)));
    scrollThrough(*window);
    watch.print("scrolling through them");
    app.refresh();
    letPass(1000ms);
    watch.print("looking at their files again");
    sortAll(app);
    watch.print(qPrintable(QStringLiteral("sorting %1 results").arg(results)));
    app.results()->setSamples(makePoints(world, app, points));
    letPass(500ms);
    watch.print(qPrintable(QStringLiteral("showing %1 results").arg(points)));
    sortAll(app);
    watch.print(qPrintable(QStringLiteral("sorting %1 results").arg(points)));
    lookAtTheMap(app, *window);
    watch.print(qPrintable(QStringLiteral("a map of %1 points").arg(points)));
    app.map()->setShown(false);
    letPass(100ms);

    app.appearance()->setMode(app.appearance()->isDark() ? Appearance::Light : Appearance::Dark);
    letPass(300ms);
    watch.print("changing the appearance");
    window->resize(700, 600);
    letPass(300ms);
    watch.print("stacking the window");
    watch.printTotal();
}

}  // namespace
}  // namespace quillmere

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("SDL_AUDIODRIVER", "dummy");
    QGuiApplication app(argc, argv);
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    quillmere::measure(argc > 1 ? std::atoi(argv[1]) : 20000, argc > 2 ? std::atoi(argv[2]) : 5000,
                       argc > 3 ? std::atoi(argv[3]) : 20000);
}
