#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QStringList>
#include <QUrl>
#include <QVariantList>
#include <cstddef>
#include <filesystem>
#include <memory>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Preferences.h"
#include "QuillmereCore/Model/Corpus.h"

namespace quillmere {

// The folder of samples that is learned: the choice of it, its scan and what that found, and the folders that
// were chosen before.
class CorpusController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    Q_PROPERTY(QUrl url READ url NOTIFY urlChanged)
    Q_PROPERTY(bool isChosen READ isChosen NOTIFY urlChanged)
    Q_PROPERTY(QString path READ path NOTIFY urlChanged)   // for display, home as "~"
    Q_PROPERTY(QString name READ name NOTIFY nameChanged)  // the folder's own name
    Q_PROPERTY(bool canChoose READ canChoose NOTIFY activityChanged)
    Q_PROPERTY(QString chooserMessage READ chooserMessage CONSTANT)
    Q_PROPERTY(bool isScanning READ isScanning NOTIFY isScanningChanged)
    Q_PROPERTY(int scanDone READ scanDone NOTIFY scanProgressChanged)    // files measured
    Q_PROPERTY(int scanTotal READ scanTotal NOTIFY scanProgressChanged)  // 0 until they are counted
    // "about 2 min left", or empty
    Q_PROPERTY(QString scanTimeLeft READ scanTimeLeft NOTIFY scanProgressChanged)
    Q_PROPERTY(bool hasSummary READ hasSummary NOTIFY summaryChanged)
    Q_PROPERTY(int fileCount READ fileCount NOTIFY summaryChanged)
    Q_PROPERTY(QString totalDuration READ totalDuration NOTIFY summaryChanged)  // "4 min 05 s"
    Q_PROPERTY(QStringList sampleRates READ sampleRates NOTIFY summaryChanged)  // "44.1 kHz", ascending
    Q_PROPERTY(int unreadable READ unreadable NOTIFY summaryChanged)
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY summaryChanged)  // scanned, and no audio files
    // Files that are named as this program names what it writes, PREFIX_var_NNNN.wav, and most likely are its
    // own.
    Q_PROPERTY(int variations READ variations NOTIFY summaryChanged)
    // Scanned, with so few usable files (fewer than fewSamplesLimit) that variations stay close to them.
    Q_PROPERTY(bool hasFewSamples READ hasFewSamples NOTIFY summaryChanged)
    Q_PROPERTY(QVariantList recent READ recent NOTIFY recentChanged)  // {url, path, name}, the newest first

public:
    static constexpr int fewSamplesLimit = 10;
    static constexpr int recentLimit = 8;

    // Remembers the choices in preferences, which must outlive it.
    CorpusController(const Environment& environment, Preferences& preferences);
    ~CorpusController() override;

    // Chooses the folder of the last time. If it turns out that nothing is there any more, none is chosen.
    void restore();
    // Chooses a folder, scans it and looks for its stored model; the newest choice wins. Refused while
    // training or generating.
    Q_INVOKABLE void choose(const QUrl& folder);
    // Scans the folder again; everything but the results of the last generation begins anew. Does nothing
    // without a folder and when choose is refused.
    Q_INVOKABLE void scanAgain();
    // Asks the window for a folder chooser (chooserRequested), which answers with choose. It starts beside
    // the corpus; before the first one at home.
    Q_INVOKABLE void openChooser();
    Q_INVOKABLE void forgetRecent();
    void cancelScan();

    [[nodiscard]] QUrl url() const { return url_; }
    [[nodiscard]] bool isChosen() const { return !url_.isEmpty(); }
    [[nodiscard]] QString path() const;
    [[nodiscard]] QString name() const { return name_; }
    [[nodiscard]] bool canChoose() const { return !activity().isTraining && !activity().isGenerating; }
    [[nodiscard]] QString chooserMessage() const;
    [[nodiscard]] bool isScanning() const { return isScanning_; }
    [[nodiscard]] int scanDone() const { return scanDone_; }
    [[nodiscard]] int scanTotal() const { return scanTotal_; }
    [[nodiscard]] QString scanTimeLeft() const;
    [[nodiscard]] bool hasSummary() const { return summary_ != nullptr; }
    // Null when absent.
    [[nodiscard]] const std::shared_ptr<const CorpusSummary>& summary() const { return summary_; }
    [[nodiscard]] int fileCount() const;
    [[nodiscard]] QString totalDuration() const;
    [[nodiscard]] QStringList sampleRates() const;
    [[nodiscard]] int unreadable() const;
    [[nodiscard]] bool isEmpty() const;
    [[nodiscard]] int variations() const { return variations_; }
    [[nodiscard]] bool hasFewSamples() const;
    [[nodiscard]] QVariantList recent() const;

signals:
    void urlChanged();
    void nameChanged();
    void isScanningChanged();
    void scanProgressChanged();
    void summaryChanged();
    void recentChanged();
    // The window is to open a folder chooser that starts at startFolder.
    void chooserRequested(const QUrl& startFolder);
    // A scan has begun: what belongs to an older one is out of date.
    void scanStarted();
    // The scan has ended, and there is a stored model of what it found.
    void storedModelFound(const std::filesystem::path& modelFolder);
    // The scan has ended, and there is none.
    void noStoredModelFound();

private:
    friend struct AppModelProbe;  // for tests

    struct Scan;

    void remember(const QString& path);
    void take(const QString& path);
    void scan(bool mayBeGone = false);
    void scanProgressed(std::int64_t done, std::int64_t total);
    void scanned(Scan result);
    void scanFailed(const TaskFailure& failure);
    void scanEnded();

    Preferences& preferences_;
    QUrl url_;
    QString name_;
    quint64 choice_ = 0;  // number of the newest choice: what was begun for an older one is dropped
    QStringList recent_;
    quint64 recentChange_ = 0;  // number of the newest change to it
    bool isScanning_ = false;
    int scanDone_ = 0;
    int scanTotal_ = 0;
    QElapsedTimer scanClock_;  // since the files were counted
    std::shared_ptr<CancelFlag> scanCancel_;
    std::shared_ptr<const CorpusSummary> summary_;
    int variations_ = 0;
    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
