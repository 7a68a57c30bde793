#include "QuillmereApp/Appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>
#include <optional>
#include <utility>

#include "QuillmereApp/Preferences.h"

namespace quillmere {
namespace {

const QString modeKey = QStringLiteral("appearance");
const QString wasDarkKey = QStringLiteral("desktopWasDark");

const QString portal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceArea = QStringLiteral("org.freedesktop.appearance");
const QString colourSchemeKey = QStringLiteral("color-scheme");
const QString gnomeArea = QStringLiteral("org.gnome.desktop.interface");
const QString animationsKey = QStringLiteral("enable-animations");
constexpr int portalTimeout = 2000;  // milliseconds
constexpr uint prefersDark = 1;

QVariant unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

// Waits for the portal's answer; invalid when there is none.
QVariant readSetting(const QDBusConnection& bus, const QString& area, const QString& key) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(portal, portalPath, settingsInterface, QStringLiteral("Read"));
    call << area << key;
    const QDBusMessage reply = bus.call(call, QDBus::Block, portalTimeout);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return {};
    return unwrapped(reply.arguments().constFirst());
}

bool paletteIsDark() {
    const QPalette palette = QGuiApplication::palette();
    return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

struct DesktopWish {
    QVariant colourScheme;
    QVariant animations;
};

}  // namespace

Appearance::Appearance(Preferences& preferences, bool followDesktop, QObject* parent)
    : QObject(parent), preferences_(preferences), tasks_(1) {
    const int stored = preferences.integer(modeKey).value_or(mode_);
    if (stored >= System && stored <= Dark) mode_ = static_cast<Mode>(stored);
    if (!followDesktop) return;
    // Until the desktop answers: what it answered last time, so that the window does not flash.
    desktopIsDark_ = paletteIsDark() || preferences.text(wasDarkKey) == QStringLiteral("true");
    qGuiApp->installEventFilter(this);
    askDesktop();
}

void Appearance::askDesktop() {
    tasks_.run(
        [this] {
            QDBusConnection bus = QDBusConnection::sessionBus();
            if (!bus.isConnected()) return DesktopWish();
            bus.connect(portal, portalPath, settingsInterface, QStringLiteral("SettingChanged"), this,
                        SLOT(desktopSettingChanged(QString, QString, QDBusVariant)));
            return DesktopWish{readSetting(bus, appearanceArea, colourSchemeKey),
                               readSetting(bus, gnomeArea, animationsKey)};
        },
        [this](const DesktopWish& wish) {
            if (wish.colourScheme.isValid())
                desktopSettingChanged(appearanceArea, colourSchemeKey, QDBusVariant(wish.colourScheme));
            if (wish.animations.isValid())
                desktopSettingChanged(gnomeArea, animationsKey, QDBusVariant(wish.animations));
        },
        [](const TaskFailure&) {});
}

void Appearance::desktopSettingChanged(const QString& area, const QString& key, const QDBusVariant& value) {
    const QVariant plain = unwrapped(value.variant());
    if (area == appearanceArea && key == colourSchemeKey) {
        portalAnswers_ = true;
        setDesktopDark(plain.toUInt() == prefersDark);
    } else if (area == gnomeArea && key == animationsKey) {
        setReducedMotion(!plain.toBool());
    }
}

void Appearance::followPalette() {
    if (!portalAnswers_) setDesktopDark(paletteIsDark());
}

bool Appearance::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange) followPalette();
    return QObject::eventFilter(watched, event);
}

void Appearance::setDesktopDark(bool dark) {
    preferences_.setValue(wasDarkKey, dark ? QStringLiteral("true") : QStringLiteral("false"));
    const bool before = isDark();
    desktopIsDark_ = dark;
    if (isDark() != before) emit darkChanged();
}

void Appearance::setMode(Mode mode) {
    preferences_.setValue(modeKey, static_cast<int>(mode));
    applyMode(mode);
}

void Appearance::forceLight() {
    applyMode(Light);
}

void Appearance::forceStill() {
    isStill_ = true;
    setReducedMotion(true);
}

void Appearance::setReducedMotion(bool reduced) {
    const bool now = reduced || isStill_;
    if (std::exchange(reducedMotion_, now) != now) emit reducedMotionChanged();
}

void Appearance::applyMode(Mode mode) {
    if (mode == mode_) return;
    const bool before = isDark();
    mode_ = mode;
    emit modeChanged();
    if (isDark() != before) emit darkChanged();
}

}  // namespace quillmere
