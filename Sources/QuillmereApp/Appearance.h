#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QQmlEngine>
#include <QString>

#include "QuillmereApp/BackgroundTask.h"

namespace quillmere {

class Preferences;

// Light or dark, and whether things may move: what the desktop asks for (XDG desktop portal, else the
// platform's palette), or what the user chose instead. Follows the desktop while it runs.
class Appearance : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(Mode mode READ mode WRITE setMode NOTIFY modeChanged)
    Q_PROPERTY(bool dark READ isDark NOTIFY darkChanged)
    Q_PROPERTY(bool reducedMotion READ reducedMotion NOTIFY reducedMotionChanged)

public:
    enum Mode { System, Light, Dark };
    Q_ENUM(Mode)

    // Remembers the choice in preferences, which must outlive it. followDesktop: false leaves the desktop
    // alone.
    Appearance(Preferences& preferences, bool followDesktop, QObject* parent = nullptr);

    [[nodiscard]] Mode mode() const { return mode_; }
    void setMode(Mode mode);
    // Light for this run only; the stored choice stays.
    void forceLight();
    // Nothing moves in this run, whatever the desktop asks for.
    void forceStill();
    [[nodiscard]] bool isDark() const { return mode_ == Dark || (mode_ == System && desktopIsDark_); }
    [[nodiscard]] bool reducedMotion() const { return reducedMotion_; }

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void modeChanged();
    void darkChanged();
    void reducedMotionChanged();

private slots:
    void desktopSettingChanged(const QString& area, const QString& key, const QDBusVariant& value);

private:
    void askDesktop();
    void followPalette();
    void setDesktopDark(bool dark);
    void applyMode(Mode mode);
    void setReducedMotion(bool reduced);

    Preferences& preferences_;
    Mode mode_ = System;
    bool desktopIsDark_ = false;
    bool portalAnswers_ = false;  // then the palette does not count
    bool reducedMotion_ = false;
    bool isStill_ = false;   // then reducedMotion_ stays set
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
