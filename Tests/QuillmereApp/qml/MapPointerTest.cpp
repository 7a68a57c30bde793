// The map under a real pointer, on an X server of the test's own.

#include <QGuiApplication>
#include <QObject>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QtQml/QQmlExtensionPlugin>
#include <memory>

#include "QuillmereApp/Items/PointMapItem.h"
#include "QuillmereApp/Support/RealPointer.h"
#include "QuillmereApp/Support/TestWorld.h"
#include "QuillmereApp/Support/XServer.h"

Q_IMPORT_QML_PLUGIN(QuillmereAppPlugin)

namespace quillmere::testing {
namespace {

// The window on a model, with its map open.
struct MapProgram {
    MapProgram() : app(world.environment) {
        prepareTrained(app, world.makeCorpus("corpus", 6));
        app.map()->setShown(true);
        QVERIFY(QTest::qWaitFor([this] { return app.map()->isReady(); }, longestWait));
        engine.setInitialProperties({{"app", QVariant::fromValue(&app)}});
        engine.load(QUrl("qrc:/qt-project.org/imports/QuillmereApp/qml/Main.qml"));
        QVERIFY(!engine.rootObjects().isEmpty());
        window = qobject_cast<QQuickWindow*>(engine.rootObjects().first());
        window->setPosition(0, 0);
        QVERIFY(QTest::qWaitForWindowExposed(window));
        QVERIFY(QTest::qWaitFor([this] { return points() != nullptr && points()->width() > 100; }));
    }

    [[nodiscard]] PointMapItem* points() const {
        return qobject_cast<PointMapItem*>(findItem(window->contentItem(), "points"));
    }
    [[nodiscard]] QPoint onScreen(QPointF position) const {
        return window->mapToGlobal(points()->mapToScene(position).toPoint());
    }
    // Somewhere without a point, there and a little farther down to the right.
    [[nodiscard]] QPointF emptyPlace() const {
        for (int y = 30; y < 400; y += 10) {
            const QPointF place(40, y);
            if (points()->pointAt(place) < 0 && points()->pointAt(place + QPointF(15, 15)) < 0) return place;
        }
        return {};
    }
    [[nodiscard]] bool plays(const QUrl& file) const {
        return QTest::qWaitFor([&] { return app.playingURL() == file; }, longestWait);
    }

    TestWorld world;
    AppModel app;
    QQmlApplicationEngine engine;
    QQuickWindow* window = nullptr;
};

}  // namespace

class MapPointerTest : public QObject {
    Q_OBJECT

private slots:
    void whatThePointerRestsOnIsPlayed() {
        MapProgram program;
        const QPointF position = program.points()->positionOf(3);
        const int wanted = program.points()->pointAt(position);
        point(moveTo(program.onScreen(program.emptyPlace())));
        point(moveTo(program.onScreen(position)));
        QVERIFY(program.plays(program.app.map()->urlAt(wanted)));
    }

    void aClickBetweenThePointsMakesSomethingOfThatPlace() {
        MapProgram program;
        point(moveTo(program.onScreen(program.emptyPlace())) + QStringList{"click", "1"});
        QVERIFY(program.plays(program.app.generation()->auditionURL()));
        QVERIFY(waitUntilIdle(program.app));
    }

    void aDragSweepsThroughAndTheNewestIsHeard() {
        MapProgram program;
        const QPointF position = program.points()->positionOf(3);
        const int wanted = program.points()->pointAt(position);
        const QPoint start = program.onScreen(program.emptyPlace());
        point(moveTo(start) + QStringList{"mousedown", "1"} + moveTo(start + QPoint(15, 15)));
        QVERIFY(program.plays(program.app.generation()->auditionURL()));
        point(moveTo(program.onScreen(position)) + QStringList{"mouseup", "1"});
        QVERIFY(program.plays(program.app.map()->urlAt(wanted)));
        QVERIFY(waitUntilIdle(program.app));
        QCOMPARE(program.app.playingURL(), program.app.map()->urlAt(wanted));
    }

    void shiftAndADragSelectARegion() {
        MapProgram program;
        const QPoint last(static_cast<int>(program.points()->width()) - 4,
                          static_cast<int>(program.points()->height()) - 4);
        point(moveTo(program.onScreen({4, 4})) + QStringList{"keydown", "shift", "mousedown", "1"} +
              moveTo(program.onScreen(last / 2)) + moveTo(program.onScreen(last)) +
              QStringList{"mouseup", "1", "keyup", "shift"});
        QTRY_COMPARE(program.app.map()->selectedCount(), 6);
        deliverEvents();
        QVERIFY(!program.app.isBusy());
    }

    void theWheelZoomsAndTheMiddleButtonPans() {
        MapProgram program;
        const QPointF middle(program.points()->width() / 2, program.points()->height() / 2);
        point(moveTo(program.onScreen(middle)) + QStringList{"click", "--repeat", "8", "4"});
        QTRY_VERIFY(program.points()->zoom() > 1.5);
        const QPointF from = program.emptyPlace();
        const QPointF place = program.points()->placeAt(from);
        const QPoint start = program.onScreen(from);
        point(moveTo(start) + QStringList{"mousedown", "2"} + moveTo(start + QPoint(20, 0)) +
              moveTo(start + QPoint(60, 30)));
        point(moveTo(start + QPoint(70, 40)) + QStringList{"mouseup", "2"});
        QTRY_VERIFY((program.points()->placeAt(from + QPointF(70, 40)) - place).manhattanLength() <
                    (program.points()->placeAt(from) - place).manhattanLength());
        deliverEvents();
        QVERIFY(!program.app.isBusy());  // nothing was made
    }
};

}  // namespace quillmere::testing

int main(int argc, char** argv) {
    using namespace quillmere::testing;
    const XServer display;
    if (display.name().isEmpty()) qFatal("Xvfb has not started");
    qputenv("DISPLAY", display.name().toLatin1());
    qputenv("QT_QPA_PLATFORM", "xcb");
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QQuickStyle::setStyle(QStringLiteral("Basic"));
    QGuiApplication app(argc, argv);
    MapPointerTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "MapPointerTest.moc"
