#pragma once

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Preferences.h"

namespace quillmere {

// What is done to files that were written: into the desktop's trash, another name, a favourite; and back.
// Files are moved in the background; what is asked for meanwhile is done, and taken back, in its turn.
class FilesController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY canUndoChanged)
    // Files are on their way, or wait for it: so many of so many are where they are to be.
    Q_PROPERTY(bool isMoving READ isMoving NOTIFY movingChanged)
    Q_PROPERTY(bool isCancelling READ isCancelling NOTIFY movingChanged)  // asked to stop, still moving
    Q_PROPERTY(int moved READ moved NOTIFY movingChanged)
    Q_PROPERTY(int toMove READ toMove NOTIFY movingChanged)

public:
    static const QString favouritesKey;             // in the preferences
    static constexpr int mostFavourites = 5000;     // the oldest are forgotten
    static constexpr std::size_t mostSteps = 1000;  // that can be taken back; the oldest are forgotten

    // Remembers favourites in preferences, which must outlive it.
    FilesController(const Environment& environment, Preferences& preferences);
    ~FilesController() override;

    // Moves the files to the trash, in the background. One that cannot be moved there stays, as do those
    // after it, and ends as an error.
    void trash(const QList<QUrl>& files);
    // Gives the file another name in its folder, in the background; ".wav" is added where it is missing. A
    // name that is taken, or is none, ends as an error.
    void rename(const QUrl& file, const QString& name);
    // Favourites from now on, or none any more.
    void setFavourites(const QList<QUrl>& files, bool isFavourite);
    Q_INVOKABLE void setFavourite(const QUrl& file, bool isFavourite) { setFavourites({file}, isFavourite); }
    // What was asked for last, of these, is taken back, after it is done. Where a file's name is another
    // one's by now, it can be tried again later. False when there is nothing.
    Q_INVOKABLE bool undo();
    // When that was asked for, in seconds of a clock that all undoing goes by; 0 when there is nothing.
    Q_INVOKABLE [[nodiscard]] double lastChange() const;

    // The file that is being moved is the last one; the others stay where they are, and a notice says how
    // many.
    Q_INVOKABLE void cancel();

    [[nodiscard]] bool canUndo() const { return !steps_.empty(); }
    [[nodiscard]] bool isMoving() const { return toMove_ > 0; }
    [[nodiscard]] bool isCancelling() const { return isMoving() && stop_->isCancelled(); }
    [[nodiscard]] int moved() const { return moved_; }
    [[nodiscard]] int toMove() const { return toMove_; }
    [[nodiscard]] bool isFavourite(const QUrl& file) const;

signals:
    void canUndoChanged();
    void movingChanged();
    // A file has gone or has come back.
    void filesChanged();
    // Before filesChanged: which.
    void trashed(const QUrl& file);
    void cameBack(const QUrl& file);
    void renamed(const QUrl& from, const QUrl& to);
    void favouritesChanged();

private:
    friend struct AppModelProbe;  // for tests

    struct Change {
        std::filesystem::path from;
        std::filesystem::path to;  // where the file is now
        bool isInTrash = false;
    };

    // What became of the favourites: few of thousands.
    struct Marks {
        QStringList added;                                   // the newest first
        std::vector<std::pair<qsizetype, QString>> removed;  // with their places before, in their order
    };

    // What is taken back at once: files that were moved, or marks.
    struct Step {
        std::chrono::steady_clock::time_point when = std::chrono::steady_clock::now();  // it was asked for
        std::optional<Marks> marks{};
        QSet<QString> favourites{};  // of the files, when they were to go
        // As far as it has come. Belongs to the work in the background, and to what answers it.
        std::shared_ptr<std::vector<Change>> changes = std::make_shared<std::vector<Change>>();
    };
    using StepHandle = std::shared_ptr<Step>;
    // Changes as far as they went well, and what became of the rest.
    struct Outcome {
        std::vector<Change> done;
        std::vector<Change> left;
        std::string problem;  // empty for those that were asked to stop
    };
    using Attempt = std::function<Change(const Change&)>;

    [[nodiscard]] Outcome tryAll(const std::vector<Change>& changes, const Attempt& attempt,
                                 const std::stop_token& stop);
    [[nodiscard]] static QStringList withMarks(QStringList paths, const QStringList& changed, bool isIn);
    [[nodiscard]] static Marks marksOf(const QStringList& now, const QStringList& changed, bool isIn);
    [[nodiscard]] static QStringList withoutMarks(const QStringList& now, const Marks& marks);

    [[nodiscard]] std::stop_token stopToken();
    void remember(const StepHandle& step);
    void forget(const StepHandle& step);
    void inTurn(std::function<Outcome()> work, std::function<void(const Outcome&)> ended);
    void expect(int files);
    void hasMoved();
    void takeBackFiles(const StepHandle& step);
    void hasTrashed(const StepHandle& step, const Outcome& outcome);
    void hasRenamed(const StepHandle& step, const Outcome& outcome);
    void hasTakenBack(const StepHandle& step, const Outcome& outcome);
    void areBack(const Step& step, const std::vector<Change>& changes);
    void tellOf(const Outcome& outcome, const QString& pattern);
    void mark(const QStringList& paths, bool isFavourite);
    void editFavourites(const std::function<QStringList(const QStringList&)>& edited);
    void tellRenamed(const std::filesystem::path& from, const std::filesystem::path& to);

    Preferences& preferences_;
    std::vector<StepHandle> steps_;  // in their order
    int waiting_ = 0;                // pieces of work that have not ended
    int moved_ = 0;
    int toMove_ = 0;
    std::shared_ptr<CancelFlag> stop_ = std::make_shared<CancelFlag>();  // of the files that are being moved
    QStringList favourites_;                                             // paths, the newest first
    QSet<QString> favouriteSet_;  // the same, for thousands of rows that ask
    BackgroundTasks tasks_{1};  // in order. Last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
