#pragma once

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Preferences.h"

namespace quillmere {

// What is done to files that were written: into the desktop's trash, another name, a favourite; and back.
class FilesController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY canUndoChanged)

public:
    static const QString favouritesKey;          // in the preferences
    static constexpr int mostFavourites = 5000;  // the oldest are forgotten

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
    // What was done last, of these, is taken back. Where a file's name is another one's by now, it can be
    // tried again later. False when there is nothing.
    Q_INVOKABLE bool undo();
    // When that was done, in seconds of a clock that all undoing goes by; 0 when there is nothing.
    Q_INVOKABLE [[nodiscard]] double lastChange() const;

    // The file that is being moved is the last one; the others stay where they are.
    void cancel() { stop_->cancel(); }

    [[nodiscard]] bool canUndo() const { return !steps_.empty(); }
    [[nodiscard]] bool isFavourite(const QUrl& file) const;

signals:
    void canUndoChanged();
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
        bool wasFavourite = false;
    };

    // All favourites, the newest first.
    struct Marks {
        QStringList before;
        QStringList after;
    };

    // What is taken back at once: files that were moved, or marks.
    struct Step {
        std::vector<Change> changes;
        std::optional<Marks> marks;
        std::chrono::steady_clock::time_point when{};  // it was done
    };
    // Changes as far as they went well, and what became of the rest.
    struct Outcome {
        std::vector<Change> done;
        std::vector<Change> left;
        std::string problem;
    };
    [[nodiscard]] static Outcome tryAll(const std::vector<Change>& changes,
                                        const std::function<Change(const Change&)>& attempt,
                                        const std::stop_token& stop);

    [[nodiscard]] std::stop_token stopToken();
    void remember(Step step);
    void takeBackFiles(const Step& step);
    void takeBackMarks(const Marks& marks);
    void hasTrashed(std::vector<Change> changes);
    void hasTakenBack(const std::vector<Change>& changes);
    void couldNotTakeBack(Step left, const std::string& problem);
    // Without a step.
    void mark(const QList<QUrl>& files, bool isFavourite);
    void editFavourites(const std::function<QStringList(const QStringList&)>& edited);
    void tellRenamed(const std::filesystem::path& from, const std::filesystem::path& to);

    Preferences& preferences_;
    std::vector<Step> steps_;                                            // in their order
    std::shared_ptr<CancelFlag> stop_ = std::make_shared<CancelFlag>();  // of the files that are being moved
    QStringList favourites_;                                             // paths, the newest first
    QSet<QString> favouriteSet_;  // the same, for thousands of rows that ask
    BackgroundTasks tasks_{1};  // in order. Last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
