#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <memory>

#include "QuillmereApp/BackgroundTask.h"
#include "QuillmereApp/FolderLooks.h"

namespace quillmere {

// The folders on this computer, for a chooser of the program's own: where it stands, what is there, and a way
// to make a folder. Folders are read in the background; one that does not answer is told of.
//
// Threads: as for Controller.
class FolderBrowser : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(QUrl folder READ folder NOTIFY changed)  // empty until the first one has been read
    Q_PROPERTY(QString path READ path NOTIFY changed)   // for display, home as "~"
    Q_PROPERTY(bool isTop READ isTop NOTIFY changed)    // there is nothing above it
    Q_PROPERTY(
        QStringList names READ names NOTIFY changed)  // the folders in it, as a file manager sorts them
    Q_PROPERTY(int audioFiles READ audioFiles NOTIFY changed)       // in it, by their names; not below it
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged)  // with the last wish; empty: none

public:
    // Names of folders that are shown; the others of a folder with more can be typed.
    static constexpr int mostNames = 10'000;

    FolderBrowser(std::shared_ptr<const FolderLooks> looks, QString home);

    // Each of these ends as changed or as problemChanged; the newest wish wins.
    Q_INVOKABLE void begin(const QUrl& folder);
    // What somebody has typed: "~" and file: URLs are understood.
    Q_INVOKABLE void goTo(const QString& text);
    Q_INVOKABLE void enter(const QString& name);
    Q_INVOKABLE void goUp();
    // Makes a folder in this one and goes there.
    Q_INVOKABLE void makeFolder(const QString& name);

    [[nodiscard]] QUrl folder() const { return QUrl::fromLocalFile(folder_); }
    [[nodiscard]] QString path() const;
    [[nodiscard]] bool isTop() const { return folder_ == QLatin1String("/"); }
    [[nodiscard]] QStringList names() const { return names_; }
    [[nodiscard]] int audioFiles() const { return audioFiles_; }
    [[nodiscard]] QString problem() const { return problem_; }

signals:
    void changed();
    void problemChanged();

private:
    friend struct AppModelProbe;  // for tests

    struct Content;

    void read(const QString& path, bool isMade = false);
    void setProblem(const QString& problem);

    std::shared_ptr<const FolderLooks> looks_;
    QString home_;
    QString folder_;
    QStringList names_;
    int audioFiles_ = 0;
    QString problem_;
    quint64 wish_ = 0;       // number of the newest
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
