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
    stop_->cancel();
}

// ---- Steps

void FilesController::remember(const StepHandle& step) {
    while (steps_.size() >= mostSteps)
        steps_.erase(steps_.begin());
    steps_.push_back(step);
    emit canUndoChanged();
}

void FilesController::forget(const StepHandle& step) {
    if (std::erase(steps_, step) > 0) emit canUndoChanged();
}

bool FilesController::undo() {
    if (steps_.empty()) return false;
    const StepHandle step = steps_.back();
    steps_.pop_back();
    emit canUndoChanged();
    if (!step->marks) {
        takeBackFiles(step);
        return true;
    }
    const auto takeBack = [this, step] {
        editFavourites([step](const QStringList& now) { return withoutMarks(now, *step->marks); });
        emit favouritesChanged();
    };
    // What comes back before may bring its marks along.
    if (waiting_ == 0) {
        takeBack();
    } else {
        inTurn([] { return Outcome(); }, [takeBack](const Outcome&) { takeBack(); });
    }
    return true;
}

double FilesController::lastChange() const {
    return steps_.empty() ? 0 : std::chrono::duration<double>(steps_.back()->when.time_since_epoch()).count();
}

// ---- Work in the background

// Tells once: when it is asked again in a destructor, those that listen may have gone.
void FilesController::cancel() {
    if (stop_->isCancelled()) return;
    stop_->cancel();
    if (isMoving()) emit movingChanged();
}

// Of what begins now: what was to end before has been told so.
std::stop_token FilesController::stopToken() {
    if (stop_->isCancelled()) stop_ = std::make_shared<CancelFlag>();
    return stop_->token();
}

void FilesController::expect(int files) {
    toMove_ += files;
    emit movingChanged();
}

void FilesController::hasMoved() {
    ++moved_;
    emit movingChanged();
}

void FilesController::inTurn(std::function<Outcome()> work, std::function<void(const Outcome&)> ended) {
    ++waiting_;
    const auto over = [this, ended = std::move(ended)](const Outcome& outcome) {
        if (--waiting_ == 0) {
            moved_ = toMove_ = 0;
            emit movingChanged();
        }
        ended(outcome);
    };
    tasks_.run(std::move(work), over, [over](const TaskFailure& failure) {
        over({.done = {}, .left = {}, .problem = failure.message.toStdString()});
    });
}

// Up to the first that cannot be done, or to the one at which it is asked to stop.
FilesController::Outcome FilesController::tryAll(const std::vector<Change>& changes, const Attempt& attempt,
                                                 const std::stop_token& stop) {
    Outcome outcome;
    try {
        for (const Change& change : changes) {
            if (stop.stop_requested()) break;
            outcome.done.push_back(attempt(change));
            tasks_.post([this] { hasMoved(); });
        }
    } catch (const Failure& failure) {
        outcome.problem = Language::text(failure.message());
    }
    outcome.left.assign(changes.begin() + std::ssize(outcome.done), changes.end());
    return outcome;
}

// What has been done, and what was not because it was asked to stop.
void FilesController::tellOf(const Outcome& outcome, const QString& pattern) {
    const auto& [done, left, problem] = outcome;
    const bool wasStopped = !left.empty() && problem.empty();
    if (!done.empty() && wasStopped) {
        emit notice(tr("%1. Not moved: %2")
                        .arg(pattern.arg(namesOf(done.size(), done.front().from)),
                             namesOf(left.size(), left.front().from)));
    } else if (!done.empty()) {
        emit notice(pattern.arg(namesOf(done.size(), done.front().from)));
    } else if (wasStopped) {
        emit notice(tr("Not moved: %1").arg(namesOf(left.size(), left.front().from)));
    }
    if (!problem.empty()) emit errorRaised(QString::fromStdString(problem));
}

// ---- The trash

void FilesController::trash(const QList<QUrl>& files) {
    if (files.isEmpty()) return;
    const std::stop_token stop = stopToken();
    const auto step = std::make_shared<Step>();
    std::vector<Change> wanted;
    for (const QUrl& file : files) {
        wanted.push_back({.from = toPath(file), .to = {}, .isInTrash = true});
        if (isFavourite(file)) step->favourites.insert(file.toLocalFile());
    }
    remember(step);
    expect(static_cast<int>(wanted.size()));
    inTurn(
        [this, move = environment().moveToTrash, wanted = std::move(wanted), looks = environment().looks,
         stop, changes = step->changes] {
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
            Outcome outcome = tryAll(wanted, trashed, stop);
            *changes = outcome.done;
            return outcome;
        },
        [this, step](const Outcome& outcome) { hasTrashed(step, outcome); });
}

void FilesController::hasTrashed(const StepHandle& step, const Outcome& outcome) {
    QStringList favourites;
    for (const Change& change : outcome.done) {
        const QUrl file = toUrl(change.from);
        // The name may be another file's soon.
        if (isFavourite(file)) favourites.append(file.toLocalFile());
        emit trashed(file);
    }
    if (!favourites.isEmpty()) mark(favourites, false);
    if (outcome.done.empty()) {
        forget(step);
    } else {
        emit filesChanged();
    }
    tellOf(outcome, tr("In the trash: %1"));
}

// ---- Names

void FilesController::rename(const QUrl& file, const QString& name) {
    const QString wanted = soundName(name);
    if (wanted.isEmpty()) {
        emit errorRaised(tr("“%1” is no name for a file.").arg(name.trimmed()));
        return;
    }
    const std::filesystem::path from = toPath(file);
    const Change change{.from = from, .to = from.parent_path() / toPath(wanted)};
    if (change.to == from) return;
    const std::stop_token stop = stopToken();
    const auto step = std::make_shared<Step>();
    remember(step);
    expect(1);
    inTurn(
        [this, change, looks = environment().looks, stop, changes = step->changes] {
            const auto renamed = [&](const Change& one) {
                Folders::requireAnswer(one.from.parent_path(), *looks);
                if (!moveFile(one.from, one.to))
                    throw Failure(tr("There is a file called %1 already.")
                                      .arg(toQString(one.to.filename()))
                                      .toStdString());
                return one;
            };
            Outcome outcome = tryAll({change}, renamed, stop);
            *changes = outcome.done;
            return outcome;
        },
        [this, step](const Outcome& outcome) { hasRenamed(step, outcome); });
}

void FilesController::hasRenamed(const StepHandle& step, const Outcome& outcome) {
    for (const Change& change : outcome.done)
        tellRenamed(change.from, change.to);
    if (!outcome.done.empty()) return;
    forget(step);
    tellOf(outcome, {});
}

// ---- Back again

void FilesController::takeBackFiles(const StepHandle& step) {
    inTurn(
        [this, looks = environment().looks, stop = stopToken(), changes = step->changes] {
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
            tasks_.post([this, files = static_cast<int>(changes->size())] { expect(files); });
            Outcome outcome = tryAll(*changes, takenBack, stop);
            *changes = outcome.left;
            return outcome;
        },
        [this, step](const Outcome& outcome) { hasTakenBack(step, outcome); });
}

void FilesController::hasTakenBack(const StepHandle& step, const Outcome& outcome) {
    if (!outcome.done.empty()) areBack(*step, outcome.done);
    if (!step->changes->empty()) {
        const auto when = [](const StepHandle& one) { return one->when; };
        steps_.insert(std::ranges::upper_bound(steps_, step->when, {}, when), step);
        emit canUndoChanged();
    }
    tellOf(outcome, tr("Back again: %1"));
}

void FilesController::areBack(const Step& step, const std::vector<Change>& changes) {
    QStringList favourites;
    for (const Change& change : changes) {
        const QUrl file = toUrl(change.from);
        if (!change.isInTrash) {
            tellRenamed(change.to, change.from);
            continue;
        }
        if (step.favourites.contains(file.toLocalFile())) favourites.append(file.toLocalFile());
        emit cameBack(file);
    }
    if (!favourites.isEmpty()) mark(favourites, true);
    emit filesChanged();
}

// Those that listen find the file by its new name among the favourites.
void FilesController::tellRenamed(const std::filesystem::path& from, const std::filesystem::path& to) {
    const QUrl before = toUrl(from);
    const QUrl now = toUrl(to);
    const bool wasFavourite = isFavourite(before);
    if (wasFavourite) {
        editFavourites([from = before.toLocalFile(), to = now.toLocalFile()](QStringList paths) {
            paths.removeAll(to);
            std::ranges::replace(paths, from, to);
            return paths;
        });
    }
    emit renamed(before, now);
    if (wasFavourite) emit favouritesChanged();
}

// ---- Favourites

QStringList FilesController::withMarks(QStringList paths, const QStringList& changed, bool isIn) {
    const QSet<QString> all(changed.begin(), changed.end());
    paths.removeIf([&](const QString& path) { return all.contains(path); });
    if (isIn) paths = changed + paths;
    return paths.mid(0, mostFavourites);
}

FilesController::Marks FilesController::marksOf(const QStringList& now, const QStringList& changed,
                                                bool isIn) {
    const QSet<QString> all(changed.begin(), changed.end());
    Marks marks{.added = isIn ? changed.mid(0, mostFavourites) : QStringList(), .removed = {}};
    qsizetype room = mostFavourites - marks.added.size();
    for (qsizetype place = 0; place < now.size(); ++place) {
        if (!all.contains(now[place]) && room > 0) {
            --room;
        } else {
            marks.removed.emplace_back(place, now[place]);
        }
    }
    return marks;
}

// As they are now, but for what became of them then.
QStringList FilesController::withoutMarks(const QStringList& now, const Marks& marks) {
    const QSet<QString> present(now.begin(), now.end());
    const QSet<QString> added(marks.added.begin(), marks.added.end());
    QStringList paths;
    auto next = now.begin();
    const auto takeUpTo = [&](qsizetype place) {
        for (; paths.size() < place && next != now.end(); ++next) {
            if (!added.contains(*next)) paths.append(*next);
        }
    };
    for (const auto& [place, path] : marks.removed) {
        // One that was moved to the front has to be there still, any other not to be there again.
        if (present.contains(path) != added.contains(path)) continue;
        takeUpTo(place);
        paths.append(path);
    }
    takeUpTo(mostFavourites);
    return paths.mid(0, mostFavourites);
}

bool FilesController::isFavourite(const QUrl& file) const {
    return favouriteSet_.contains(file.toLocalFile());
}

void FilesController::setFavourites(const QList<QUrl>& files, bool isFavourite) {
    QStringList paths;
    bool changesSome = false;
    for (const QUrl& file : files) {
        paths.append(file.toLocalFile());
        changesSome = changesSome || this->isFavourite(file) != isFavourite;
    }
    const auto step = std::make_shared<Step>();
    step->marks = marksOf(favourites_, paths, isFavourite);
    mark(paths, isFavourite);
    if (changesSome) remember(step);
}

void FilesController::mark(const QStringList& paths, bool isFavourite) {
    editFavourites(
        [paths, isFavourite](const QStringList& now) { return withMarks(now, paths, isFavourite); });
    emit favouritesChanged();
}

void FilesController::editFavourites(const std::function<QStringList(const QStringList&)>& edited) {
    favourites_ = edited(favourites_);
    favouriteSet_ = QSet<QString>(favourites_.begin(), favourites_.end());
    // What another window has marked meanwhile stays marked.
    preferences_.edit(
        favouritesKey, [edited](const QVariant& stored) { return edited(stored.toStringList()); },
        [](const QVariant&) {});
}

}  // namespace quillmere
