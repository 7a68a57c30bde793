#pragma once

#include <QList>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <optional>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Preferences.h"
#include "QuillmereCore/Audio/AudioIO.h"

namespace quillmere {

// Where the variations go, how many of them, in which format, and with how much detail.
class OutputController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(QString folderText READ folderText WRITE setFolderText NOTIFY folderTextChanged)
    Q_PROPERTY(Status status READ status NOTIFY statusChanged)
    Q_PROPERTY(QString chooserMessage READ chooserMessage CONSTANT)
    // The folder is the corpus or in it: the next scan would find what is written there.
    Q_PROPERTY(bool isInCorpus READ isInCorpus NOTIFY isInCorpusChanged)
    // A folder beside the corpus, as people write it; empty without a corpus.
    Q_PROPERTY(QString suggestion READ suggestion NOTIFY suggestionChanged)
    Q_PROPERTY(int count READ count WRITE setCount NOTIFY countChanged)  // 1 ... mostVariations
    Q_PROPERTY(int mostVariations READ mostVariations CONSTANT)
    Q_PROPERTY(QStringList formatLabels READ formatLabels CONSTANT)
    Q_PROPERTY(int formatIndex READ formatIndex WRITE setFormatIndex NOTIFY formatChanged)  // in formatLabels
    // How much of the samples' fine structure the variations get, in steps of detailStep: 0 none ... 1 all.
    Q_PROPERTY(double detail READ detail WRITE setDetail NOTIFY detailChanged)
    Q_PROPERTY(double detailStep READ detailStep CONSTANT)

public:
    enum Status {
        NoFolder,       // no path
        WillBeCreated,  // nothing there yet
        Exists,         // a folder
        IsNoFolder,     // something else has that name
        NoAnswer,       // nobody knows: the file system does not answer
    };
    Q_ENUM(Status)

    static constexpr int countLimit = 1'000'000;
    static const QString folderKey;  // in the preferences
    static const QString countKey;
    static constexpr int detailSteps = 100;

    // Restores folder and count from preferences, which must outlive it.
    OutputController(const Environment& environment, Preferences& preferences);
    ~OutputController() override;

    // Asks the window for a folder chooser (chooserRequested), which answers with setFolder.
    Q_INVOKABLE void openChooser();
    Q_INVOKABLE void setFolder(const QUrl& folder);
    // Takes what was dropped if it is one folder; a notice says why it is not taken otherwise.
    Q_INVOKABLE void drop(const QList<QUrl>& urls);
    // Takes suggestion.
    Q_INVOKABLE void useSuggestion();
    // The folder that is learned; empty for none. While no folder has been set, the suggestion for it is.
    void setCorpus(const QUrl& corpus);
    // Looks again for the folder, which other programs may have made or removed.
    void look();
    // folder and the count are those of the next start of the program.
    void remember(const QUrl& folder);
    // The same of what is set now, of the folder only as far as the user has set it.
    void storeFolder();
    void storeCount();
    // Opens the platform's file manager at folder with these files selected.
    void show(const QUrl& folder, const QList<QUrl>& files);

    [[nodiscard]] QString folderText() const { return folderText_; }
    void setFolderText(const QString& text);
    // The trimmed text with "~" expanded, as an absolute path; absent when blank. A path between quotation
    // marks and a file: URL are understood, too.
    [[nodiscard]] std::optional<QUrl> folder() const;
    [[nodiscard]] Status status() const { return status_; }
    [[nodiscard]] bool isInCorpus() const { return isInCorpus_; }
    [[nodiscard]] QString suggestion() const;
    [[nodiscard]] QString chooserMessage() const;
    [[nodiscard]] int mostVariations() const { return countLimit; }
    [[nodiscard]] int count() const { return count_; }
    void setCount(int count);
    [[nodiscard]] QStringList formatLabels() const;
    [[nodiscard]] OutputFormat format() const { return format_; }
    [[nodiscard]] int formatIndex() const;
    void setFormatIndex(int index);
    [[nodiscard]] double detail() const { return detail_; }
    void setDetail(double detail);
    [[nodiscard]] double detailStep() const { return 1.0 / detailSteps; }
    // No detail, or, where there is none, as much as there was last, else all.
    void switchDetail();

signals:
    void folderTextChanged();
    void statusChanged();
    void isInCorpusChanged();
    void suggestionChanged();
    void countChanged();
    void formatChanged();
    void detailChanged();
    // The window is to open a folder chooser that starts at startFolder.
    void chooserRequested(const QUrl& startFolder);

private:
    friend struct AppModelProbe;  // for tests

    struct Seen;

    Preferences& preferences_;
    QUrl corpus_;
    bool isInCorpus_ = false;
    QString suggested_;  // what the program has put into the field
    QString folderText_;
    Status status_ = NoFolder;
    quint64 look_ = 0;  // number of the newest look
    QTimer lookSoon_;
    int count_ = 10;
    OutputFormat format_ = OutputFormat::wav24;
    double detail_ = 0;
    double otherDetail_ = 1;  // what switchDetail goes back to
    CancelFlag closing_;      // ends the waiting for a file manager
    BackgroundTasks tasks_;   // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
