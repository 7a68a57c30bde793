#include "QuillmereApp/Controllers/Controller.h"

#include <filesystem>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/FilePath.h"

namespace quillmere {

void Controller::setActivity(const Activity& activity) {
    assign(*this, activity_, activity, &Controller::activityChanged);
}

void Controller::report(const TaskFailure& failure) {
    if (failure.kind == TaskFailure::Kind::device) emit deviceFailed(failure.message);
    if (failure.kind != TaskFailure::Kind::cancelled) emit errorRaised(failure.message);
}

void Controller::takeDropped(BackgroundTasks& tasks, const QList<QUrl>& urls,
                             std::function<void(const QString& path)> taken) {
    const Folders::Dropped dropped = Folders::dropped(urls);
    if (!dropped.refusal.isEmpty()) {
        emit notice(dropped.refusal);
        return;
    }
    tasks.run([looks = environment_.looks, path = toPath(dropped.path)] { return looks->at(path).kind; },
              [this, path = dropped.path, taken = std::move(taken)](Place::Kind kind) {
                  const QString refusal = Folders::refusal(kind, path);
                  refusal.isEmpty() ? taken(path) : emit notice(refusal);
              },
              [this](const TaskFailure& failure) { report(failure); });
}

void Controller::findNearestFolder(BackgroundTasks& tasks, const QString& path,
                                   std::function<void(const QUrl& folder)> found) {
    tasks.run([looks = environment_.looks, path = toPath(path),
               home = toPath(environment_.homeFolder)] { return looks->nearestFolder(path, home); },
              [found = std::move(found)](const std::filesystem::path& nearest) { found(toUrl(nearest)); },
              [this](const TaskFailure& failure) { report(failure); });
}

void Controller::watched(Run run, std::int64_t done) const {
    if (environment_.onProgress) environment_.onProgress(run, done);
}

}  // namespace quillmere
