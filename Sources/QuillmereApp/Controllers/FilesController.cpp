#include "QuillmereApp/Controllers/FilesController.h"

#include <algorithm>
#include <utility>

#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/MoveFile.h"
#include "QuillmereApp/Trash.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Language.h"

namespace quillmere {
namespace {

QStringList changedList(QStringList paths, const QStringList& changed, bool isIn) {
    const QSet<QString> all(changed.begin(), changed.end());
    paths.removeIf([&](const QString& path) { return all.contains(path); });
    if (isIn) paths = changed + paths;
    return paths.mid(0, FilesController::mostFavourites);
}

// As they are now, but for what became of them then.
QStringList withoutChange(const QStringList& now, const QStringList& before, const QStringList& after) {
    const QSet<QString> present(now.begin(), now.end());
    const QSet<QString> old(before.begin(), before.end());
    const QSet<QString> changed(after.begin(), after.end());
    QStringList paths;
    for (const QString& path : now) {
        if (!old.contains(path) && !changed.contains(path)) paths.append(path);  // marked since
    }
    for (const QString& path : before) {
        if (present.contains(path) || !changed.contains(path)) paths.append(path);
    }
    return paths.mid(0, FilesController::mostFavourites);
}

// One file by its name, more by their number.
QString namesOf(std::size_t count, const std::filesystem::path& first) {
    return count == 1 ? toQString(first.filename()) : Words::tr("%n files", nullptr, static_cast<int>(count));
}

// What somebody typed as the name of a sound; empty for what is no name.
QString soundName(const QString& typed) {
    QString name = typed.trimmed();
    if (name.isEmpty() || name.startsWith(u'.') || name.contains(u'/') || name.contains(QChar::Null))
        return {};
    if (!name.endsWith(QLatin1String(".wav"), Qt::CaseInsensitive)) name += QLatin1String(".wav");
    return name;
}

}  // namespace

const QString FilesController::favouritesKey = QStringLiteral("favourites");

FilesController::FilesController(const Environment& environment, Preferences& preferences)
    : Controller(environment),
      preferences_(preferences),
      favourites_(preferences.value(favouritesKey).toStringList()),
      favouriteSet_(favourites_.begin(), favourites_.end()) {}

FilesController::~FilesController() {
    cancel();
}

void FilesController::remember(Step step) {
    step.when = std::chrono::steady_clock::now();
    steps_.push_back(std::move(step));
    emit canUndoChanged();
}

// Of what begins now: what was to end before has been told so.
std::stop_token FilesController::stopToken() {
    if (stop_->isCancelled()) stop_ = std::make_shared<CancelFlag>();
    return stop_->token();
}

// Up to the first that cannot be done, or to the one at which it is asked to stop.
FilesController::Outcome FilesController::tryAll(const std::vector<Change>& changes,
                                                 const std::function<Change(const Change&)>& attempt,
                                                 const std::stop_token& stop) {
    Outcome outcome;
    try {
        for (const Change& change : changes) {
            if (stop.stop_requested()) break;
            outcome.done.push_back(attempt(change));
        }
    } catch (const Failure& failure) {
        outcome.problem = Language::text(failure.message());
    }
    outcome.left.assign(changes.begin() + std::ssize(outcome.done), changes.end());
    return outcome;
}

void FilesController::trash(const QList<QUrl>& files) {
    if (files.isEmpty()) return;
    std::vector<Change> wanted;
    for (const QUrl& file : files)
        wanted.push_back({.from = toPath(file), .to = {}, .isInTrash = true});
    tasks_.run(
        [move = environment().moveToTrash, wanted = std::move(wanted), looks = environment().looks,
         stop = stopToken()] {
            const auto trashed = [&](Change change) {
                Folders::requireAnswer(change.from.parent_path(), *looks);
                const auto place = move(change.from);
                if (!place)
                    throw Failure(tr("%1 could not be moved to the trash.")
                                      .arg(toQString(change.from.filename()))
                                      .toStdString());
                change.to = *place;
                return change;
            };
            return tryAll(wanted, trashed, stop);
        },
        [this](const Outcome& outcome) {
            if (!outcome.done.empty()) hasTrashed(outcome.done);
            if (!outcome.problem.empty()) emit errorRaised(QString::fromStdString(outcome.problem));
        },
        [this](const TaskFailure& failure) { report(failure); });
}

void FilesController::hasTrashed(std::vector<Change> changes) {
    QList<QUrl> favourites;
    for (Change& change : changes) {
        const QUrl file = toUrl(change.from);
        // The name may be another file's soon.
        change.wasFavourite = isFavourite(file);
        if (change.wasFavourite) favourites.append(file);
        emit trashed(file);
    }
    if (!favourites.isEmpty()) mark(favourites, false);
    emit filesChanged();
    emit notice(tr("In the trash: %1").arg(namesOf(changes.size(), changes.front().from)));
    remember({.changes = std::move(changes), .marks = {}});
}

void FilesController::rename(const QUrl& file, const QString& name) {
    const QString wanted = soundName(name);
    if (wanted.isEmpty()) {
        emit errorRaised(tr("“%1” is no name for a file.").arg(name.trimmed()));
        return;
    }
    const std::filesystem::path from = toPath(file);
    const Change change{.from = from, .to = from.parent_path() / toPath(wanted)};
    if (change.to == from) return;
    tasks_.run(
        [change, looks = environment().looks] {
            Folders::requireAnswer(change.from.parent_path(), *looks);
            if (!moveFile(change.from, change.to))
                throw Failure(tr("There is a file called %1 already.")
                                  .arg(toQString(change.to.filename()))
                                  .toStdString());
        },
        [this, change] {
            remember({.changes = {change}, .marks = {}});
            tellRenamed(change.from, change.to);
        },
        [this](const TaskFailure& failure) { report(failure); });
}

bool FilesController::undo() {
    if (steps_.empty()) return false;
    const Step step = steps_.back();
    steps_.pop_back();
    emit canUndoChanged();
    if (step.marks) {
        takeBackMarks(*step.marks);
    } else {
        takeBackFiles(step);
    }
    return true;
}

void FilesController::takeBackFiles(const Step& step) {
    tasks_.run(
        [changes = step.changes, looks = environment().looks, stop = stopToken()] {
            const auto takenBack = [&](const Change& change) {
                Folders::requireAnswer(change.from.parent_path(), *looks);
                Folders::requireAnswer(change.to.parent_path(), *looks);
                const bool isBack = change.isInTrash ? Trash::restore(change.to, change.from)
                                                     : moveFile(change.to, change.from);
                if (!isBack)
                    throw Failure(tr("Another file is called %1 by now.")
                                      .arg(toQString(change.from.filename()))
                                      .toStdString());
                return change;
            };
            return tryAll(changes, takenBack, stop);
        },
        [this, when = step.when](const Outcome& outcome) {
            if (!outcome.done.empty()) hasTakenBack(outcome.done);
            if (!outcome.left.empty())
                couldNotTakeBack({.changes = outcome.left, .marks = {}, .when = when}, outcome.problem);
        },
        [this, step](const TaskFailure& failure) { couldNotTakeBack(step, failure.message.toStdString()); });
}

void FilesController::takeBackMarks(const Marks& marks) {
    editFavourites([marks](const QStringList& now) { return withoutChange(now, marks.before, marks.after); });
}

void FilesController::hasTakenBack(const std::vector<Change>& changes) {
    QList<QUrl> favourites;
    for (const Change& change : changes) {
        const QUrl file = toUrl(change.from);
        if (!change.isInTrash) {
            tellRenamed(change.to, change.from);
            continue;
        }
        if (change.wasFavourite) favourites.append(file);
        emit cameBack(file);
    }
    if (!favourites.isEmpty()) mark(favourites, true);
    emit filesChanged();
    emit notice(tr("Back again: %1").arg(namesOf(changes.size(), changes.front().from)));
}

void FilesController::couldNotTakeBack(Step left, const std::string& problem) {
    steps_.insert(std::ranges::upper_bound(steps_, left.when, {}, &Step::when), std::move(left));
    emit canUndoChanged();
    if (!problem.empty()) emit errorRaised(QString::fromStdString(problem));
}

double FilesController::lastChange() const {
    return steps_.empty() ? 0 : std::chrono::duration<double>(steps_.back().when.time_since_epoch()).count();
}

void FilesController::tellRenamed(const std::filesystem::path& from, const std::filesystem::path& to) {
    const QUrl before = toUrl(from);
    const QUrl now = toUrl(to);
    if (isFavourite(before)) {
        mark({before}, false);
        mark({now}, true);
    }
    emit renamed(before, now);
}

bool FilesController::isFavourite(const QUrl& file) const {
    return favouriteSet_.contains(file.toLocalFile());
}

void FilesController::setFavourites(const QList<QUrl>& files, bool isFavourite) {
    const bool changesSome =
        std::ranges::any_of(files, [&](const QUrl& file) { return this->isFavourite(file) != isFavourite; });
    QStringList before = favourites_;
    mark(files, isFavourite);
    if (changesSome)
        remember({.changes = {}, .marks = Marks{.before = std::move(before), .after = favourites_}});
}

void FilesController::mark(const QList<QUrl>& files, bool isFavourite) {
    QStringList paths;
    for (const QUrl& file : files)
        paths.append(file.toLocalFile());
    editFavourites(
        [paths, isFavourite](const QStringList& now) { return changedList(now, paths, isFavourite); });
}

void FilesController::editFavourites(const std::function<QStringList(const QStringList&)>& edited) {
    favourites_ = edited(favourites_);
    favouriteSet_ = QSet<QString>(favourites_.begin(), favourites_.end());
    // What another window has marked meanwhile stays marked.
    preferences_.edit(
        favouritesKey, [edited](const QVariant& stored) { return edited(stored.toStringList()); },
        [](const QVariant&) {});
    emit favouritesChanged();
}

}  // namespace quillmere
