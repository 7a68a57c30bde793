// Light or dark and moving or still, as the desktop has it while the program runs, or as the user chose. The
// desktop is a session bus of the test's own with a settings portal that the tests speak through.

#include "QuillmereApp/Appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QPalette>
#include <QQmlApplicationEngine>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QtQml/QQmlExtensionPlugin>
#include <memory>

#include "QuillmereApp/Preferences.h"
#include "QuillmereApp/Support/SessionBus.h"
#include "QuillmereApp/Support/TestWorld.h"

Q_IMPORT_QML_PLUGIN(QuillmereAppPlugin)

namespace quillmere::testing {
namespace {

enum ColourScheme : uint { noPreference, preferDark, preferLight };

// What desktops offer as org.freedesktop.portal.Desktop, on the bus as long as it lives.
class Portal : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    Portal(const QString& address, uint scheme, bool animations = true)
        : QObject(nullptr),
          bus_(QDBusConnection::connectToBus(address, "portal")),
          scheme_(scheme),
          animations_(animations) {
        if (!bus_.registerObject("/org/freedesktop/portal/desktop", this,
                                 QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals) ||
            !bus_.registerService("org.freedesktop.portal.Desktop"))
            qFatal("The portal is not on the bus.");
    }
    ~Portal() override {
        bus_.unregisterService("org.freedesktop.portal.Desktop");
        bus_.unregisterObject("/org/freedesktop/portal/desktop");
        QDBusConnection::disconnectFromBus("portal");
    }

    void setScheme(uint scheme) {
        scheme_ = scheme;
        emit SettingChanged("org.freedesktop.appearance", "color-scheme", QDBusVariant(scheme));
    }
    void setAnimations(bool animations) {
        animations_ = animations;
        emit SettingChanged("org.gnome.desktop.interface", "enable-animations", QDBusVariant(animations));
    }

    int asked = 0;

public slots:
    // In a variant within the variant, as portals answer.
    QDBusVariant Read(const QString& area, const QString& key) {
        ++asked;
        const bool isScheme = area == "org.freedesktop.appearance" && key == "color-scheme";
        return QDBusVariant(
            QVariant::fromValue(QDBusVariant(isScheme ? QVariant(scheme_) : QVariant(animations_))));
    }

signals:
    void SettingChanged(const QString& area, const QString& key, const QDBusVariant& value);

private:
    QDBusConnection bus_;
    uint scheme_;
    bool animations_;
};

QPalette darkPalette() {
    QPalette palette;
    palette.setColor(QPalette::Window, Qt::black);
    palette.setColor(QPalette::WindowText, Qt::white);
    return palette;
}

QPalette lightPalette() {
    QPalette palette;
    palette.setColor(QPalette::Window, Qt::white);
    palette.setColor(QPalette::WindowText, Qt::black);
    return palette;
}

// An appearance with preferences of its own.
struct Subject {
    explicit Subject(const TestWorld& world)
        : preferences(world.environment.settingsFile), appearance(preferences, true) {}

    Preferences preferences;
    Appearance appearance;
};

// The portal has been asked for everything and its answers are delivered.
void waitForAnswers(const Portal& portal) {
    QTRY_COMPARE(portal.asked, 2);
    QTest::qWait(50);
}

}  // namespace

class AppearanceTest : public QObject {
    Q_OBJECT

private slots:
    void init() { QGuiApplication::setPalette(lightPalette()); }

    void takesTheColourSchemeOfTheDesktop_data() {
        QTest::addColumn<uint>("scheme");
        QTest::addColumn<bool>("dark");
        QTest::newRow("none") << uint{noPreference} << false;
        QTest::newRow("dark") << uint{preferDark} << true;
        QTest::newRow("light") << uint{preferLight} << false;
    }
    void takesTheColourSchemeOfTheDesktop() {
        QFETCH(uint, scheme);
        QFETCH(bool, dark);
        TestWorld world;
        Portal portal(bus_.address(), scheme);
        const Subject subject(world);
        waitForAnswers(portal);
        QTRY_COMPARE(subject.appearance.isDark(), dark);
    }

    void followsTheDesktopWhileItRuns() {
        TestWorld world;
        Portal portal(bus_.address(), preferLight);
        Subject subject(world);
        waitForAnswers(portal);
        QSignalSpy changes(&subject.appearance, &Appearance::darkChanged);
        QVERIFY(!subject.appearance.isDark());
        portal.setScheme(preferDark);
        QTRY_VERIFY(subject.appearance.isDark());
        portal.setScheme(noPreference);
        QTRY_VERIFY(!subject.appearance.isDark());
        QCOMPARE(changes.count(), 2);
    }

    void theChoiceOfTheUserComesFirst() {
        TestWorld world;
        Portal portal(bus_.address(), preferDark);
        {
            Subject subject(world);
            QTRY_VERIFY(subject.appearance.isDark());
            subject.appearance.setMode(Appearance::Light);
            QVERIFY(!subject.appearance.isDark());
        }
        portal.asked = 0;
        Subject subject(world);  // the next start
        waitForAnswers(portal);
        QSignalSpy changes(&subject.appearance, &Appearance::darkChanged);
        QVERIFY(!subject.appearance.isDark());
        portal.setScheme(preferLight);
        portal.setScheme(preferDark);
        QTest::qWait(100);
        QCOMPARE(changes.count(), 0);
        // Back to the desktop's: as it is by now.
        subject.appearance.setMode(Appearance::System);
        QVERIFY(subject.appearance.isDark());
    }

    void followsThePaletteWhereThereIsNoPortal() {
        TestWorld world;
        Subject subject(world);
        QVERIFY(!subject.appearance.isDark());
        QGuiApplication::setPalette(darkPalette());
        QTRY_VERIFY(subject.appearance.isDark());
        QGuiApplication::setPalette(lightPalette());
        QTRY_VERIFY(!subject.appearance.isDark());
    }

    void thePortalOutranksThePalette() {
        TestWorld world;
        Portal portal(bus_.address(), preferLight);
        const Subject subject(world);
        waitForAnswers(portal);
        QGuiApplication::setPalette(darkPalette());
        QTest::qWait(50);
        QVERIFY(!subject.appearance.isDark());
    }

    void beginsAsTheDesktopWasLastTime() {
        TestWorld world;
        {
            Portal portal(bus_.address(), preferDark);
            const Subject subject(world);
            QVERIFY(!subject.appearance.isDark());
            QTRY_VERIFY(subject.appearance.isDark());
        }
        const Subject subject(world);
        QVERIFY(subject.appearance.isDark());  // before anybody answers
    }

    void isStillWhenTheDesktopWantsNoAnimations() {
        TestWorld world;
        Portal portal(bus_.address(), preferLight, false);
        const Subject subject(world);
        QTRY_VERIFY(subject.appearance.reducedMotion());
        portal.setAnimations(true);
        QTRY_VERIFY(!subject.appearance.reducedMotion());
    }

    void theWindowFollows() {
        TestWorld world;
        world.environment.followDesktop = true;
        Portal portal(bus_.address(), preferLight);
        AppModel model(world.environment);
        QQmlApplicationEngine engine;
        engine.setInitialProperties({{"app", QVariant::fromValue(&model)}});
        engine.load(QUrl("qrc:/qt-project.org/imports/QuillmereApp/qml/Main.qml"));
        QCOMPARE(engine.rootObjects().size(), 1);
        auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().constFirst());
        QVERIFY(QTest::qWaitForWindowExposed(window, longestWait));
        waitForAnswers(portal);
        const auto ground = [&] { return QColor(window->grabWindow().pixel(2, 2)).lightness(); };
        QTRY_VERIFY(ground() > 200);
        portal.setScheme(preferDark);
        QTRY_VERIFY(ground() < 60);
        portal.setScheme(preferLight);
        QTRY_VERIFY(ground() > 200);
    }

private:
    const SessionBus bus_;
};

}  // namespace quillmere::testing

int main(int argc, char** argv) {
    QQuickStyle::setStyle("Basic");
    return quillmere::testing::runTest<quillmere::testing::AppearanceTest>(argc, argv);
}
#include "AppearanceTest.moc"
