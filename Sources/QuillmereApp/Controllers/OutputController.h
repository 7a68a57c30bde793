#pragma once

#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <optional>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Preferences.h"
#include "QuillmereCore/Audio/AudioIO.h"

namespace quillmere {

// Where the variations go, how many of them, and in which format.
class OutputController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(QString folderText READ folderText WRITE setFolderText NOTIFY folderTextChanged)
    Q_PROPERTY(Status status READ status NOTIFY statusChanged)
    Q_PROPERTY(QString chooserMessage READ chooserMessage CONSTANT)
    Q_PROPERTY(int count READ count WRITE setCount NOTIFY countChanged)  // at least 1
    Q_PROPERTY(QStringList formatLabels READ formatLabels CONSTANT)
    Q_PROPERTY(int formatIndex READ formatIndex WRITE setFormatIndex NOTIFY formatChanged)  // in formatLabels

public:
    enum Status {
        NoFolder,       // no path
        WillBeCreated,  // nothing there yet
        Exists,         // a folder
        IsNoFolder,     // something else has that name
    };
    Q_ENUM(Status)

    // Restores folder and count from preferences, which must outlive it.
    OutputController(const Environment& environment, Preferences& preferences);
    ~OutputController() override;

    // Asks the window for a folder chooser (chooserRequested), which answers with setFolder.
    Q_INVOKABLE void openChooser();
    Q_INVOKABLE void setFolder(const QUrl& folder);
    // Looks again for the folder, which other programs may have made or removed.
    void look();
    // folder and the count are those of the next start of the program.
    void remember(const QUrl& folder);
    // Opens the platform's file manager at folder with these files selected.
    void show(const QUrl& folder, const QList<QUrl>& files);

    [[nodiscard]] QString folderText() const { return folderText_; }
    void setFolderText(const QString& text);
    // The trimmed text with "~" expanded, as an absolute path; absent when blank.
    [[nodiscard]] std::optional<QUrl> folder() const;
    [[nodiscard]] Status status() const { return status_; }
    [[nodiscard]] QString chooserMessage() const;
    [[nodiscard]] int count() const { return count_; }
    void setCount(int count);
    [[nodiscard]] QStringList formatLabels() const;
    [[nodiscard]] OutputFormat format() const { return format_; }
    [[nodiscard]] int formatIndex() const;
    void setFormatIndex(int index);

signals:
    void folderTextChanged();
    void statusChanged();
    void countChanged();
    void formatChanged();
    // The window is to open a folder chooser that starts at startFolder.
    void chooserRequested(const QUrl& startFolder);

private:
    friend struct AppModelProbe;  // for tests

    Preferences& preferences_;
    QString folderText_;
    Status status_ = NoFolder;
    quint64 look_ = 0;  // number of the newest look
    QTimer lookSoon_;
    int count_ = 10;
    OutputFormat format_ = OutputFormat::wav24;
    CancelFlag closing_;     // ends the waiting for a file manager
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
