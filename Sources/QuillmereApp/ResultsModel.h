#pragma once

#include <QAbstractListModel>
#include <QFileSystemWatcher>
#include <QHash>
#include <QList>
#include <QQmlEngine>
#include <QSet>
#include <QTimer>
#include <QUrl>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include "QuillmereApp/BackgroundTask.h"
#include "QuillmereApp/FolderLooks.h"
#include "QuillmereApp/SoundMeasure.h"
#include "QuillmereCore/Generate/Generator.h"

namespace quillmere {

// The files of the last generation, and those that were kept since. Roles:
//   url          file URL (for dragging out too)
//   fileName     string
//   seconds      double; durationText: "1.24 s"
//   exists       bool; follows deletions by other programs
//   isPlaying    bool
//   peaks        list of numbers 0 ... 1, the largest |sample| of equal stretches of the file; empty until
//                the thumbnail is computed, which reading the role starts
//   isFavourite  bool
//   label        string: what tells the file from the others, "7" for Drums_var_0007.wav
//   isSelected   bool: one of several that something is to be done with
//   novelty      string: "copy", "close", "new", "far"; empty while it is unknown
//   noveltyText  string, the same for people
// Thousands of rows cost nothing: files are looked at in the background, thumbnails only of the rows that
// are read, newest request first. Files in a folder that does not answer count as gone until it does.
//
// The rows may be fewer than the files (onlyFavourites), and in another order than these were made in.
class ResultsModel : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("GenerationController owns it")
    Q_PROPERTY(int count READ count NOTIFY countChanged)  // of rows
    Q_PROPERTY(int total READ total NOTIFY countChanged)  // of files
    Q_PROPERTY(int selectedCount READ selectedCount NOTIFY selectionChanged)
    Q_PROPERTY(Order order READ order WRITE setOrder NOTIFY orderChanged)
    Q_PROPERTY(bool onlyFavourites READ onlyFavourites WRITE setOnlyFavourites NOTIFY onlyFavouritesChanged)

public:
    // Least first, and what is not known last.
    enum Order { AsMade, ByName, ByLength, ByBrightness, ByNovelty };
    Q_ENUM(Order)

    enum Role {
        UrlRole = Qt::UserRole + 1,
        FileNameRole,
        SecondsRole,
        DurationTextRole,
        ExistsRole,
        IsPlayingRole,
        PeaksRole,
        IsFavouriteRole,
        LabelRole,
        NoveltyRole,
        NoveltyTextRole,
        IsSelectedRole,
    };

    // Stretches per thumbnail; fewer when the file has fewer samples.
    static constexpr int peakCount = 128;
    // Rows that change their places one by one when they are sorted: a view's work grows with the square of
    // their number. More of them are shown anew, and whoever looks restores what was looked at.
    static constexpr std::size_t mostMoved = 1000;

    explicit ResultsModel(std::shared_ptr<const FolderLooks> looks = std::make_shared<FolderLooks>(),
                          QObject* parent = nullptr);
    ~ResultsModel() override;

    [[nodiscard]] int count() const { return static_cast<int>(rows_.size()); }
    [[nodiscard]] int total() const { return static_cast<int>(all_.size()); }
    // Of a row that is there.
    [[nodiscard]] const GeneratedSample& sampleAt(int row) const;
    // Every file, in the order in which they came.
    [[nodiscard]] const std::vector<GeneratedSample>& all() const { return all_; }
    [[nodiscard]] Order order() const { return order_; }
    void setOrder(Order order);
    [[nodiscard]] bool onlyFavourites() const { return onlyFavourites_; }
    void setOnlyFavourites(bool only);
    // All files, none of them hidden. The rows change at once, or, while somebody holds them, as soon as
    // nobody does.
    void setSamples(std::vector<GeneratedSample> samples);
    // One more file at the end, in the same way; in place of the same file, which has given up its name.
    void add(GeneratedSample sample);
    // A row's file has got another name; rows that wait while they are held, too.
    void rename(const QUrl& from, const QUrl& to);
    // How favourites are known. favouritesChanged: some are others now.
    void setFavourites(std::function<bool(const QUrl& file)> isFavourite);
    void favouritesChanged();
    // How bright and how new they are; what is not known yet is found out, and measuresChanged follows. The
    // rows get their new places with measuresSettled.
    void setMeasures(std::function<SoundMeasure(const QUrl& file)> measureOf);
    void measuresChanged();
    void measuresSettled();
    void hold() { ++holds_; }
    void release();
    void setPlaying(const QUrl& url);

    // ---- Several rows, for what is done with all of them at once

    [[nodiscard]] int selectedCount() const { return static_cast<int>(selected_.size()); }
    Q_INVOKABLE void toggleSelected(int row);
    // The rows between two, both included, and no others.
    Q_INVOKABLE void selectRange(int from, int to);
    Q_INVOKABLE void selectAll() { selectRange(0, count() - 1); }
    Q_INVOKABLE void clearSelection();
    // The files that are selected, in the order of their rows; where none is, that of row. Only those that
    // exist.
    [[nodiscard]] QList<QUrl> chosenFiles(int row) const;
    [[nodiscard]] bool isSelected(int row) const { return selected_.contains(urlAt(row)); }

    // The row's file; empty for a row that is not there.
    Q_INVOKABLE [[nodiscard]] QUrl urlAt(int row) const;
    Q_INVOKABLE [[nodiscard]] int rowOf(const QUrl& url) const;  // -1 when there is none
    Q_INVOKABLE [[nodiscard]] bool existsAt(int row) const;
    // Of all rows that existsAt.
    [[nodiscard]] QList<QUrl> existingFiles() const;
    // existsAt as it is at this moment, for answer, after a look in the background. No answer comes when the
    // files are others meanwhile.
    void look(int row, std::function<void(bool exists)> answer);
    // Looks at all files again in the background: call it when the window becomes active.
    Q_INVOKABLE void refresh();

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

signals:
    void countChanged();
    void orderChanged();
    void onlyFavouritesChanged();
    void selectionChanged();
    // What plays was one of the files, and is none of them any more.
    void playingGone();
    // All files are others.
    void replaced();

private:
    friend struct AppModelProbe;  // for tests

    struct Row {
        std::size_t file = 0;  // its place in all_
        QUrl url;
        QString fileName;
        bool exists = true;
        bool peaksRequested = false;
        QList<qreal> peaks;
    };

    // The rows as they are to be: places in all_.
    [[nodiscard]] std::vector<std::size_t> wanted() const;
    void showWanted();
    void replaceAll(std::vector<GeneratedSample> samples);
    [[nodiscard]] Row rowFor(std::size_t file) const;
    [[nodiscard]] std::vector<Row> takeRows(const std::vector<std::size_t>& files);
    [[nodiscard]] bool areShown(const std::vector<std::size_t>& files) const;
    void permute(const std::vector<std::size_t>& files);
    void reorder(const std::vector<std::size_t>& files);
    void resetRows(const std::function<void()>& change);
    void indexRows();
    void addFile(GeneratedSample sample);
    void addRow(std::size_t file);
    void renameFile(const QUrl& from, const QUrl& to);
    void setExists(std::size_t file, bool exists);
    void setSelection(QSet<QUrl> selected);
    void requestPeaks(int row);
    void watchFolders();
    void announce(int row, int role);

    const std::shared_ptr<const FolderLooks> looks_;
    std::vector<GeneratedSample> all_;
    Order order_ = AsMade;
    bool onlyFavourites_ = false;
    std::vector<Row> rows_;
    std::vector<int> rowByFile_;  // of all_; -1 for none
    QHash<QUrl, int> rowByUrl_;
    std::function<bool(const QUrl& file)> isFavourite_ = [](const QUrl&) { return false; };
    std::function<SoundMeasure(const QUrl& file)> measureOf_ = [](const QUrl&) { return SoundMeasure(); };
    int holds_ = 0;
    bool isOutdated_ = false;                           // the rows are not those that are wanted, but held
    std::optional<std::vector<GeneratedSample>> next_;  // the files to come when nobody holds the rows
    QSet<QUrl> selected_;                               // of the rows
    QUrl playing_;
    QFileSystemWatcher watcher_;
    std::set<std::filesystem::path> watched_;  // the folders of the rows
    QTimer refreshSoon_;
    std::shared_ptr<CancelFlag> staleFiles_;  // set when all_ gives way to others: late answers are dropped
    int nextPriority_ = 0;                    // grows: the newest request is answered first
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
