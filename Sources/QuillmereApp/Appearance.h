#pragma once

#include <QObject>
#include <QQmlEngine>

#include "QuillmereApp/BackgroundTask.h"

class QSettings;

namespace quillmere {

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

    // Remembers the choice in settings, which must outlive it. askDesktop: false leaves the desktop alone.
    Appearance(QSettings& settings, bool askDesktop, QObject* parent = nullptr);
    ~Appearance() override;

    [[nodiscard]] Mode mode() const { return mode_; }
    void setMode(Mode mode);
    // Light for this run only; the stored choice stays.
    void forceLight();
    [[nodiscard]] bool isDark() const;
    [[nodiscard]] bool reducedMotion() const { return reducedMotion_; }

signals:
    void modeChanged();
    void darkChanged();
    void reducedMotionChanged();

private slots:
    void desktopSettingChanged(const QString& area, const QString& key, const QDBusVariant& value);

private:
    void askDesktop();
    void setDesktopDark(bool dark);
    void setReducedMotion(bool reduced);
    void applyMode(Mode mode);

    QSettings& settings_;
    Mode mode_ = System;
    bool desktopDark_ = false;
    bool reducedMotion_ = false;
    BackgroundTasks tasks_;
};

}  // namespace quillmere
