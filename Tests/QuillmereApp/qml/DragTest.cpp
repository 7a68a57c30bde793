// Results dragged into another program, with a real pointer on an X server of the test's own.
//
//   DragTest            the test
//   DragTest --target   the other program: a window that writes what is dragged over it and dropped on it to
//                       its standard output

#include <QDrag>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMimeData>
#include <QObject>
#include <QProcess>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QRasterWindow>
#include <QtQml/QQmlExtensionPlugin>
#include <atomic>
#include <cstdio>
#include <memory>

#include "QuillmereApp/Support/Gate.h"
#include "QuillmereApp/Support/RealPointer.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/XServer.h"

Q_IMPORT_QML_PLUGIN(QuillmereAppPlugin)

namespace quillmere::testing {
namespace {

constexpr QPoint targetMiddle(1290, 100);

// ---- The other program

class Target : public QRasterWindow {
public:
    Target() {
        setFlags(Qt::BypassWindowManagerHint);
        setGeometry(QRect(targetMiddle - QPoint(90, 90), QSize(180, 180)));
    }

protected:
    bool event(QEvent* event) override {
        switch (event->type()) {
            case QEvent::DragEnter:
            case QEvent::DragMove:
                say(QStringLiteral("over"));
                static_cast<QDropEvent*>(event)->acceptProposedAction();
                return true;
            case QEvent::Drop:
                take(*static_cast<QDropEvent*>(event));
                return true;
            default:
                return QRasterWindow::event(event);
        }
    }

private:
    void take(QDropEvent& drop) {
        QStringList files;
        for (const QUrl& url : drop.mimeData()->urls())
            files.append(QFileInfo(url.toLocalFile()).size() > 44 ? url.toLocalFile() : "empty");
        say(QStringLiteral("drop ") + files.join(QLatin1Char('|')));
        drop.acceptProposedAction();
    }
    static void say(const QString& line) {
        std::puts(qPrintable(line));
        std::fflush(stdout);
    }
};

int runTarget(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    Target target;
    target.show();
    std::puts("ready");
    std::fflush(stdout);
    return QGuiApplication::exec();
}

class TargetProgram {
public:
    TargetProgram() {
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(QCoreApplication::applicationFilePath(), {"--target"});
    }
    ~TargetProgram() {
        process_.kill();
        process_.waitForFinished();
    }
    TargetProgram(const TargetProgram&) = delete;
    TargetProgram& operator=(const TargetProgram&) = delete;

    // Its next line; empty when it has said nothing more.
    QString hear() {
        return process_.canReadLine() ? QString::fromUtf8(process_.readLine().trimmed()) : QString();
    }

private:
    QProcess process_;
};

// The picture at the pointer: there as long as the platform drags something.
bool isDragging() {
    for (const QWindow* window : QGuiApplication::topLevelWindows()) {
        if (window->isVisible() && window->inherits("QShapedPixmapWindow")) return true;
    }
    return false;
}

// ---- The program, and a hand that drags

// The window on a model that has learned something and generated a few files. Runs wait at their last file
// until they are let go.
struct Program {
    Program() {
        world.environment.onProgress = [this](Run run, std::int64_t done) {
            if (run == Run::generation && done == files) end.pass();
        };
        app = std::make_unique<AppModel>(world.environment);
        prepareTrained(*app, world.makeCorpus("corpus"));
        app->setOutputText(world.path("out"));
        app->setCount(files);
        app->generate();
        QVERIFY(waitUntilIdle(*app));
        engine.setInitialProperties({{"app", QVariant::fromValue(app.get())}});
        engine.load(QUrl("qrc:/qt-project.org/imports/QuillmereApp/qml/Main.qml"));
        QVERIFY(!engine.rootObjects().isEmpty());
        window = qobject_cast<QQuickWindow*>(engine.rootObjects().first());
        window->setPosition(0, 0);
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QVERIFY(QTest::qWaitFor([this] { return tile(files - 1) != nullptr; }));
    }
    ~Program() { end.open(); }

    [[nodiscard]] QQuickItem* tile(int row) const {
        return findItem(window->contentItem(), QStringLiteral("tile-%1").arg(row));
    }
    // A place of the tile without a button.
    [[nodiscard]] QPoint grip(int row) const {
        const QQuickItem* item = tile(row);
        return window->mapToGlobal(item->mapToScene({item->width() / 2, 20}).toPoint());
    }

    static constexpr int files = 3;

    Gate end;
    TestWorld world;
    std::unique_ptr<AppModel> app;
    QQmlApplicationEngine engine;
    QQuickWindow* window = nullptr;
};

// Drags one result after the other onto the target, each while a run begins and ends. It acts by a timer,
// because the platform has an event loop of its own during a drag.
class Hand : public QObject {
public:
    Hand(Program& program, int drags) : QObject(nullptr), program_(program), drags_(drags) {
        pointer_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        pointer_.start("xdotool", {"-"});
        QObject::connect(&timer_, &QTimer::timeout, this, [this] { act(); });
        timer_.start(2);
        clock_.start();
    }
    ~Hand() override {
        pointer_.closeWriteChannel();
        pointer_.waitForFinished();
    }

    [[nodiscard]] bool isDone() const { return done_ == drags_ || !failure_.isEmpty(); }
    [[nodiscard]] const QString& failure() const { return failure_; }
    [[nodiscard]] int done() const { return done_; }

private:
    enum class Step { ready, pressed, dragging, overTarget, accepted, released };

    void act() {
        if (isDone()) return;
        constexpr int patience = 30000;  // milliseconds; other work may keep the machine busy
        if (clock_.elapsed() > patience) {
            failure_ = QStringLiteral("drag %1 is stuck at step %2").arg(done_).arg(static_cast<int>(step_));
            QDrag::cancel();
            return;
        }
        switch (step_) {
            case Step::ready:
                if (isTargetReady()) press();
                return;
            case Step::pressed:
                if (isDragging()) {
                    program_.end.open();
                    next(Step::dragging);
                }
                return;
            case Step::dragging:
                if (program_.app->isGenerating()) return;
                // The run has ended, and the row that is dragged is still what it was.
                if (dragged(done_ % Program::files) != wanted_)
                    failure_ = QStringLiteral("the row of drag %1 has changed").arg(done_);
                move(targetMiddle);
                next(Step::overTarget);
                return;
            case Step::overTarget:
                if (target_.hear() != QLatin1String("over")) return;
                // A button that goes up before the answer has come back drops nothing. The platform tells the
                // target of the next place only after that.
                move(targetMiddle + QPoint(5, 5));
                next(Step::accepted);
                return;
            case Step::accepted:
                if (target_.hear() != QLatin1String("over")) return;
                point("mouseup 1");
                next(Step::released);
                return;
            case Step::released:
                expectTheFile();
                return;
        }
    }

    // What goes with the row: the whole selection, if it is one of it.
    [[nodiscard]] QString dragged(int row) const {
        const ResultsModel& results = *program_.app->results();
        if (!results.isSelected(row)) return results.urlAt(row).toLocalFile();
        QStringList files;
        for (const QUrl& file : results.chosenFiles(row))
            files.append(file.toLocalFile());
        return files.join(QLatin1Char('|'));
    }
    bool isTargetReady() {
        if (!targetIsReady_) targetIsReady_ = target_.hear() == QLatin1String("ready");
        return targetIsReady_ && !isDragging();
    }
    void press() {
        const int row = done_ % Program::files;
        if (program_.tile(row) == nullptr) return;
        wanted_ = dragged(row);
        program_.end.close();
        program_.app->generate();
        const QPoint grip = program_.grip(row);
        move(grip);
        point("mousedown 1");
        move(grip + QPoint(12, 2));
        move(grip + QPoint(30, 5));
        next(Step::pressed);
    }
    void expectTheFile() {
        const QString heard = target_.hear();
        if (heard.isEmpty() || heard == QLatin1String("over")) return;
        if (heard != QLatin1String("drop ") + wanted_)
            failure_ = QStringLiteral("drag %1 of %2 gave %3").arg(done_).arg(wanted_, heard);
        ++done_;
        next(Step::ready);
    }

    void next(Step step) {
        step_ = step;
        clock_.restart();
    }
    void move(QPoint place) { point(QStringLiteral("mousemove %1 %2").arg(place.x()).arg(place.y())); }
    void point(const QString& command) { pointer_.write(command.toLatin1() + '\n'); }

    Program& program_;
    const int drags_;
    TargetProgram target_;
    bool targetIsReady_ = false;
    QProcess pointer_;
    QTimer timer_;
    QElapsedTimer clock_;  // since the step began
    Step step_ = Step::ready;
    QString wanted_;
    int done_ = 0;
    QString failure_;
};

}  // namespace

class DragTest : public QObject {
    Q_OBJECT

private slots:
    // The row that is dragged is gone when the button goes up.
    void everyDragArrivesThoughARunEndsMeanwhile() {
        constexpr int drags = 200;
        Program program;
        Hand hand(program, drags);
        QVERIFY(QTest::qWaitFor([&] { return hand.isDone(); }, 170000));
        QCOMPARE(hand.failure(), QString());
        QCOMPARE(hand.done(), drags);
        QVERIFY(QTest::qWaitFor([] { return !isDragging(); }));
        QVERIFY(waitUntilIdle(*program.app));
        // They have changed as often.
        const int last = (drags + 1) * Program::files;
        QCOMPARE(
            program.app->results()->urlAt(Program::files - 1),
            program.world.url(QStringLiteral("out/corpus_var_%1.wav").arg(last, 4, 10, QLatin1Char('0'))));
    }

    void theWholeSelectionIsDragged() {
        Program program;
        program.app->results()->selectRange(0, 1);
        Hand hand(program, 1);
        QVERIFY(QTest::qWaitFor([&] { return hand.isDone(); }, 60000));
        QCOMPARE(hand.failure(), QString());
        QVERIFY(QTest::qWaitFor([] { return !isDragging(); }));
        QVERIFY(waitUntilIdle(*program.app));
        QCOMPARE(program.app->results()->selectedCount(), 0);  // those were others
    }

    // The drag begins when control returns to the event loop; by then the button may be up, and a drag
    // without it would hang on the pointer.
    void aFlickStartsNoDrag() {
        Program program;
        const QPoint grip = program.grip(1);
        point(moveTo(grip) + QStringList{"mousedown", "1"} + moveTo(grip + QPoint(12, 2)) +
              moveTo(grip + QPoint(40, 5)) + QStringList{"mouseup", "1"});
        auto* list = findItem(program.window->contentItem(), "results");
        QTRY_COMPARE(list->property("currentIndex").toInt(), 1);  // it was seen
        QVERIFY(!QTest::qWaitFor([] { return isDragging(); }, 300));
    }

    void aFileThatIsGoneIsNotDragged() {
        Program program;
        const QPoint grip = program.grip(1);
        QVERIFY(QFile::remove(program.app->results()->urlAt(1).toLocalFile()));
        point(moveTo(grip) + QStringList{"mousedown", "1"} + moveTo(grip + QPoint(12, 2)) +
              moveTo(grip + QPoint(40, 5)));
        QTRY_VERIFY(!program.app->results()->existsAt(1));
        QVERIFY(!QTest::qWaitFor([] { return isDragging(); }, 300));
        point({"mouseup", "1"});
        program.app->generate();  // nobody holds the rows
        QVERIFY(waitUntilIdle(*program.app));
        QTRY_VERIFY(program.app->results()->existsAt(1));
    }
};

}  // namespace quillmere::testing

int main(int argc, char** argv) {
    using namespace quillmere::testing;
    if (argc > 1 && QByteArray(argv[1]) == "--target") return runTarget(argc, argv);
    const XServer display;
    if (display.name().isEmpty()) qFatal("Xvfb has not started");
    qputenv("DISPLAY", display.name().toLatin1());
    qputenv("QT_QPA_PLATFORM", "xcb");
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    QGuiApplication app(argc, argv);
    DragTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "DragTest.moc"
