#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <cstdint>

#include "QuillmereApp/BackgroundTask.h"
#include "QuillmereApp/Controllers/Activity.h"
#include "QuillmereApp/Environment.h"

namespace quillmere {

// What the controllers have in common. A controller holds the state of one subject of the window and the
// operations on it. It knows no other controller: AppModel tells it what it has to know of them, and connects
// their signals.
//
// Threads: everything belongs to the user-interface thread. Long work runs in the background on copies of
// what it needs; its results arrive as queued calls. No call blocks. The destructor asks what runs to stop
// and waits for its current unit of work.
//
// Every property changes only through operations and tells so by its signal. An empty string, an empty URL
// and an invalid date stand for "absent".
class Controller : public QObject {
    Q_OBJECT
    QML_ANONYMOUS

public:
    // environment must outlive it.
    explicit Controller(const Environment& environment) : environment_(environment) {}

    // What runs in the whole application.
    [[nodiscard]] const Activity& activity() const { return activity_; }
    void setActivity(const Activity& activity);

signals:
    void activityChanged();
    // Something went wrong; an empty message: what went wrong before is over.
    void errorRaised(const QString& message);
    // A run ended because its compute device failed. An errorRaised of the same message follows.
    void deviceFailed(const QString& message);
    // A sentence that is no failure.
    void notice(const QString& text);

protected:
    [[nodiscard]] const Environment& environment() const { return environment_; }
    // Tells of the failure of work in the background, unless it was asked to stop.
    void report(const TaskFailure& failure);
    // Looks at what is dropped on the window in the background, and hands the path of a folder to taken. A
    // notice says why it is not taken otherwise.
    void takeDropped(BackgroundTasks& tasks, const QList<QUrl>& urls,
                     std::function<void(const QString& path)> taken);
    // Finds in the background where a chooser of path can start: there, or as near above as there is a
    // folder.
    void findNearestFolder(BackgroundTasks& tasks, const QString& path,
                           std::function<void(const QUrl& folder)> found);
    // A run has come that far. From any thread.
    void watched(Run run, std::int64_t done) const;

private:
    const Environment& environment_;
    Activity activity_;
};

}  // namespace quillmere
