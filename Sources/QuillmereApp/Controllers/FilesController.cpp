#include "QuillmereApp/Controllers/FilesController.h"

#include <algorithm>
#include <utility>

#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/MoveFile.h"
#include "QuillmereApp/Trash.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

QStringList changedList(QStringList paths, const QString& path, bool isIn) {
    paths.removeAll(path);
    if (isIn) paths.prepend(path);
    return paths.mid(0, FilesController::mostFavourites);
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
      favourites_(preferences.value(favouritesKey).toStringList()) {}

void FilesController::changed(Change change) {
    change.when = std::chrono::steady_clock::now();
    changes_.push_back(std::move(change));
    emit canUndoChanged();
}

void FilesController::hasTrashed(Change change) {
    const QUrl file = toUrl(change.from);
    // The name may be another file's soon.
    change.wasFavourite = isFavourite(file);
    if (change.wasFavourite) setFavourite(file, false);
    emit trashed(file);
    emit filesChanged();
    emit notice(QStringLiteral("In the trash: %1").arg(toQString(change.from.filename())));
    changed(std::move(change));
}

void FilesController::trash(const QUrl& file) {
    tasks_.run(
        [move = environment().moveToTrash, path = toPath(file), looks = environment().looks] {
            Folders::requireAnswer(path.parent_path(), *looks);
            const auto place = move(path);
            if (!place) throw Failure(Text::utf8(path.filename()) + " could not be moved to the trash.");
            return Change{.from = path, .to = *place, .isInTrash = true};
        },
        [this](Change change) { hasTrashed(std::move(change)); },
        [this](const TaskFailure& failure) { report(failure); });
}

void FilesController::rename(const QUrl& file, const QString& name) {
    const QString wanted = soundName(name);
    if (wanted.isEmpty()) {
        emit errorRaised(QStringLiteral("“%1” is no name for a file.").arg(name.trimmed()));
        return;
    }
    const std::filesystem::path from = toPath(file);
    const Change change{.from = from, .to = from.parent_path() / toPath(wanted)};
    if (change.to == from) return;
    tasks_.run(
        [change, looks = environment().looks] {
            Folders::requireAnswer(change.from.parent_path(), *looks);
            if (!moveFile(change.from, change.to))
                throw Failure("There is a file called " + Text::utf8(change.to.filename()) + " already.");
        },
        [this, change] {
            changed(change);
            tellRenamed(change.from, change.to);
        },
        [this](const TaskFailure& failure) { report(failure); });
}

bool FilesController::undo() {
    if (changes_.empty()) return false;
    const Change change = changes_.back();
    changes_.pop_back();
    emit canUndoChanged();
    tasks_.run(
        [change, looks = environment().looks] {
            Folders::requireAnswer(change.from.parent_path(), *looks);
            Folders::requireAnswer(change.to.parent_path(), *looks);
            const bool isBack =
                change.isInTrash ? Trash::restore(change.to, change.from) : moveFile(change.to, change.from);
            if (!isBack)
                throw Failure("Another file is called " + Text::utf8(change.from.filename()) + " by now.");
        },
        [this, change] { hasTakenBack(change); },
        [this, change](const TaskFailure& failure) { couldNotTakeBack(change, failure); });
    return true;
}

void FilesController::hasTakenBack(const Change& change) {
    const QUrl file = toUrl(change.from);
    if (change.isInTrash) {
        if (change.wasFavourite) setFavourite(file, true);
        emit cameBack(file);
    } else {
        tellRenamed(change.to, change.from);
    }
    emit filesChanged();
    emit notice(QStringLiteral("Back again: %1").arg(toQString(change.from.filename())));
}

void FilesController::couldNotTakeBack(const Change& change, const TaskFailure& failure) {
    changes_.insert(std::ranges::upper_bound(changes_, change.when, {}, &Change::when), change);
    emit canUndoChanged();
    report(failure);
}

double FilesController::lastChange() const {
    return changes_.empty() ? 0
                            : std::chrono::duration<double>(changes_.back().when.time_since_epoch()).count();
}

void FilesController::tellRenamed(const std::filesystem::path& from, const std::filesystem::path& to) {
    const QUrl before = toUrl(from);
    const QUrl now = toUrl(to);
    if (isFavourite(before)) {
        setFavourite(before, false);
        setFavourite(now, true);
    }
    emit renamed(before, now);
}

bool FilesController::isFavourite(const QUrl& file) const {
    return favourites_.contains(file.toLocalFile());
}

void FilesController::setFavourite(const QUrl& file, bool isFavourite) {
    const QString path = file.toLocalFile();
    favourites_ = changedList(favourites_, path, isFavourite);
    // What another window has marked meanwhile stays marked.
    preferences_.edit(
        favouritesKey,
        [path, isFavourite](const QVariant& stored) {
            return changedList(stored.toStringList(), path, isFavourite);
        },
        [](const QVariant&) {});
    emit favouritesChanged();
}

}  // namespace quillmere
