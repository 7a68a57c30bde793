#include "QuillmereApp/DebugHooks.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QImage>
#include <QObject>
#include <QQuickWindow>
#include <QTimer>
#include <chrono>
#include <functional>
#include <utility>

#include "QuillmereApp/AppModel.h"

namespace quillmere {
namespace {

using namespace std::chrono_literals;

const QString snapshotVariable = QStringLiteral("QUILLMERE_SNAPSHOT");
const QString autorunVariable = QStringLiteral("QUILLMERE_AUTORUN");
const QString lightVariable = QStringLiteral("QUILLMERE_LIGHT");

// The first window on the screen; null when there is none.
QQuickWindow* contentWindow() {
    for (QWindow* window : QGuiApplication::topLevelWindows()) {
        auto* quickWindow = qobject_cast<QQuickWindow*>(window);
        if (quickWindow != nullptr && quickWindow->isVisible()) return quickWindow;
    }
    return nullptr;
}

// One unattended run, as a chain of waits on the window's thread. Belongs to the model and ends with it.
class UnattendedRun : public QObject {
public:
    UnattendedRun(AppModel& model, const QProcessEnvironment& environment)
        : QObject(&model),
          model_(model),
          picture_(environment.value(snapshotVariable)),
          generates_(environment.value(autorunVariable) == QLatin1String("generate")),
          isLight_(environment.contains(lightVariable)) {}

    // The waits leave the restored corpus time to be scanned and its model to be loaded, and the window to
    // be drawn. A picture must not show colours on their way to others.
    void start() {
        model_.appearance()->forceStill();
        after(3s, [this] { generate(); });
    }

private:
    void generate() {
        if (generates_) {
            // Each unattended run has a fresh one, whatever the field holds.
            model_.setSeedText({});
            model_.generate([this] { after(1s, [this] { light(); }); });
        } else {
            after(1s, [this] { light(); });
        }
    }

    void light() {
        if (!isLight_) {
            finish();
            return;
        }
        model_.appearance()->forceLight();
        after(1s, [this] { finish(); });
    }

    void finish() {
        // Nothing more to do when there is no window or the file cannot be written: the script finds no file.
        if (QQuickWindow* window = contentWindow()) window->grabWindow().save(picture_, "PNG");
        QCoreApplication::quit();
    }

    void after(std::chrono::milliseconds wait, std::function<void()> next) {
        QTimer::singleShot(wait, Qt::PreciseTimer, this, std::move(next));
    }

    AppModel& model_;
    const QString picture_;
    const bool generates_;
    const bool isLight_;
};

}  // namespace

void DebugHooks::install(AppModel& model, const QProcessEnvironment& environment) {
    if (!environment.contains(snapshotVariable)) return;
    (new UnattendedRun(model, environment))->start();
}

}  // namespace quillmere
