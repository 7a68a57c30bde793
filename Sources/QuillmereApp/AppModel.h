#pragma once

#include <QDateTime>
#include <QElapsedTimer>
#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QUrl>
#include <QVariantList>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "QuillmereApp/Appearance.h"
#include "QuillmereApp/BackgroundTask.h"
#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/ComputeDevices.h"
#include "QuillmereApp/EditHistory.h"
#include "QuillmereApp/Environment.h"
#include "QuillmereApp/LossHistory.h"
#include "QuillmereApp/ParameterModel.h"
#include "QuillmereApp/Player.h"
#include "QuillmereApp/Preferences.h"
#include "QuillmereApp/PresetModel.h"
#include "QuillmereApp/Quality.h"
#include "QuillmereApp/ResultsModel.h"
#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Generate/Generator.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/Trainer.h"

namespace quillmere {

// The application without its window: all state the user sees, and every operation on it.
//
// Threads: everything here belongs to the user-interface thread. Scanning, training, loading, generating and
// auditioning run in the background on copies of what they need; their results arrive as queued calls. No
// call blocks. The destructor cancels what runs and waits for its current unit of work.
//
// Every property changes only through the operations below and tells so by its signal. An empty string, an
// empty URL and an invalid date stand for "absent".
class AppModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("created once, before the window")

    // ---- Sample corpus
    Q_PROPERTY(QUrl corpusURL READ corpusURL NOTIFY corpusChanged)
    Q_PROPERTY(QString corpusPath READ corpusPath NOTIFY corpusChanged)  // for display, home as "~"
    Q_PROPERTY(QString corpusName READ corpusName NOTIFY corpusChanged)  // the folder's own name
    Q_PROPERTY(bool hasCorpus READ hasCorpus NOTIFY corpusChanged)
    Q_PROPERTY(bool isScanning READ isScanning NOTIFY isScanningChanged)
    Q_PROPERTY(int scanDone READ scanDone NOTIFY scanProgressChanged)              // files measured
    Q_PROPERTY(int scanTotal READ scanTotal NOTIFY scanProgressChanged)            // 0 until they are counted
    Q_PROPERTY(QString scanTimeLeft READ scanTimeLeft NOTIFY scanProgressChanged)  // as trainingTimeLeft
    Q_PROPERTY(bool hasSummary READ hasSummary NOTIFY summaryChanged)
    Q_PROPERTY(int fileCount READ fileCount NOTIFY summaryChanged)
    Q_PROPERTY(double totalSeconds READ totalSeconds NOTIFY summaryChanged)
    Q_PROPERTY(QString totalDuration READ totalDuration NOTIFY summaryChanged)  // "4 min 05 s"
    Q_PROPERTY(QStringList sampleRates READ sampleRates NOTIFY summaryChanged)  // "44.1 kHz", ascending
    Q_PROPERTY(int unreadable READ unreadable NOTIFY summaryChanged)
    Q_PROPERTY(bool corpusIsEmpty READ corpusIsEmpty NOTIFY summaryChanged)  // scanned, and no audio files
    // Scanned, with so few usable files (fewer than fewSamplesLimit) that variations stay close to them.
    Q_PROPERTY(bool hasFewSamples READ hasFewSamples NOTIFY summaryChanged)
    Q_PROPERTY(QVariantList recentCorpora READ recentCorpora NOTIFY recentCorporaChanged)  // {url, path}
    Q_PROPERTY(QString corpusChooserMessage READ corpusChooserMessage CONSTANT)
    Q_PROPERTY(QString outputChooserMessage READ outputChooserMessage CONSTANT)
    Q_PROPERTY(QString chooserButton READ chooserButton CONSTANT)

    // ---- Model
    Q_PROPERTY(bool isLoadingModel READ isLoadingModel NOTIFY isLoadingModelChanged)
    Q_PROPERTY(bool hasModel READ hasModel NOTIFY bundleChanged)
    Q_PROPERTY(QString modelAnalysis READ modelAnalysis NOTIFY bundleChanged)  // label of its profile
    Q_PROPERTY(double modelClipSeconds READ modelClipSeconds NOTIFY bundleChanged)
    Q_PROPERTY(QString modelClipSecondsText READ modelClipSecondsText NOTIFY bundleChanged)  // "1.5"
    Q_PROPERTY(QDateTime modelTrainedAt READ modelTrainedAt NOTIFY bundleChanged)            // local time
    Q_PROPERTY(int modelSteps READ modelSteps NOTIFY bundleChanged)
    Q_PROPERTY(int modelClipCount READ modelClipCount NOTIFY bundleChanged)
    // Why the stored model of this corpus cannot be used, with the advice to train again; empty otherwise.
    Q_PROPERTY(QString modelProblem READ modelProblem NOTIFY modelProblemChanged)
    // Pickers: the index counts in the lists of labels.
    Q_PROPERTY(QStringList qualityLabels READ qualityLabels CONSTANT)
    Q_PROPERTY(QStringList qualityHelps READ qualityHelps CONSTANT)
    Q_PROPERTY(int qualityIndex READ qualityIndex WRITE setQualityIndex NOTIFY qualityChanged)
    Q_PROPERTY(QStringList analysisLabels READ analysisLabels CONSTANT)
    Q_PROPERTY(QString analysisHelp READ analysisHelp CONSTANT)
    Q_PROPERTY(int analysisIndex READ analysisIndex WRITE setAnalysisIndex NOTIFY analysisChanged)
    Q_PROPERTY(bool isTraining READ isTraining NOTIFY isTrainingChanged)
    Q_PROPERTY(bool canTrain READ canTrain NOTIFY canTrainChanged)
    Q_PROPERTY(QString trainHint READ trainHint NOTIFY canTrainChanged)  // "Choose a corpus first.", or empty
    Q_PROPERTY(
        QString trainingPhase READ trainingPhase NOTIFY trainingChanged)  // analysing, training, finishing
    Q_PROPERTY(QString trainingMessage READ trainingMessage NOTIFY trainingChanged)
    Q_PROPERTY(int trainingStep READ trainingStep NOTIFY trainingChanged)
    Q_PROPERTY(int trainingTotalSteps READ trainingTotalSteps NOTIFY trainingChanged)
    Q_PROPERTY(double trainingLoss READ trainingLoss NOTIFY trainingChanged)
    Q_PROPERTY(double trainingReconstruction READ trainingReconstruction NOTIFY trainingChanged)
    Q_PROPERTY(double trainingFraction READ trainingFraction NOTIFY trainingChanged)  // 0 ... 1
    Q_PROPERTY(QString trainingTimeLeft READ trainingTimeLeft NOTIFY
                   trainingChanged)  // "about 2 min left", or empty
    Q_PROPERTY(quillmere::LossHistory* lossHistory READ lossHistory CONSTANT)
    Q_PROPERTY(quillmere::ComputeDevices* devices READ devices CONSTANT)
    Q_PROPERTY(bool canChooseDevice READ canChooseDevice NOTIFY canChooseDeviceChanged)  // nothing computes

    // ---- Output
    Q_PROPERTY(QString outputText READ outputText WRITE setOutputText NOTIFY outputTextChanged)
    Q_PROPERTY(OutputStatus outputStatus READ outputStatus NOTIFY outputStatusChanged)
    Q_PROPERTY(int count READ count WRITE setCount NOTIFY countChanged)  // at least 1
    Q_PROPERTY(QStringList formatLabels READ formatLabels CONSTANT)
    Q_PROPERTY(int formatIndex READ formatIndex WRITE setFormatIndex NOTIFY formatChanged)

    // ---- Character
    Q_PROPERTY(quillmere::ParameterModel* parameters READ parameters CONSTANT)
    Q_PROPERTY(quillmere::PresetModel* presets READ presets CONSTANT)
    Q_PROPERTY(QString presetName READ presetName NOTIFY presetChanged)
    Q_PROPERTY(bool presetEdited READ presetEdited NOTIFY presetChanged)
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY historyChanged)
    Q_PROPERTY(bool canRedo READ canRedo NOTIFY historyChanged)
    Q_PROPERTY(QString seedText READ seedText WRITE setSeedText NOTIFY seedTextChanged)
    Q_PROPERTY(bool seedIsFixed READ seedIsFixed NOTIFY seedTextChanged)  // seedText is a usable number
    Q_PROPERTY(QString lastSeed READ lastSeed NOTIFY lastSeedChanged)  // decimal; of the last run or audition

    // ---- Runs and results
    Q_PROPERTY(bool isGenerating READ isGenerating NOTIFY isGeneratingChanged)
    Q_PROPERTY(bool isAuditioning READ isAuditioning NOTIFY isAuditioningChanged)
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY isBusyChanged)
    Q_PROPERTY(
        bool canGenerate READ canGenerate NOTIFY canGenerateChanged)  // nothing runs, and a corpus is chosen
    Q_PROPERTY(
        bool canAudition READ canAudition NOTIFY canGenerateChanged)  // nothing runs, and there is a model
    Q_PROPERTY(int generationDone READ generationDone NOTIFY generationProgressChanged)
    Q_PROPERTY(int generationTotal READ generationTotal NOTIFY generationProgressChanged)
    Q_PROPERTY(QString generationTimeLeft READ generationTimeLeft NOTIFY generationProgressChanged)
    Q_PROPERTY(
        bool isCancelling READ isCancelling NOTIFY isCancellingChanged)  // asked to stop, still running
    Q_PROPERTY(quillmere::ResultsModel* results READ results CONSTANT)
    Q_PROPERTY(QUrl lastOutputFolder READ lastOutputFolder NOTIFY lastOutputFolderChanged)
    Q_PROPERTY(QUrl playingURL READ playingURL NOTIFY playingURLChanged)
    Q_PROPERTY(bool isPlayingAudition READ isPlayingAudition NOTIFY playingURLChanged)
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)
    Q_PROPERTY(quillmere::Appearance* appearance READ appearance CONSTANT)

public:
    enum OutputStatus {
        NoOutput,             // no path
        OutputWillBeCreated,  // nothing there yet
        OutputExists,         // a folder
        OutputIsNoFolder,     // something else has that name
    };
    Q_ENUM(OutputStatus)

    static constexpr int fewSamplesLimit = 10;
    static constexpr int recentCorporaLimit = 8;

    explicit AppModel(Environment environment = Environment::standard(), QObject* parent = nullptr);
    ~AppModel() override;

    // ---- Operations on the corpus

    // Chooses a folder, scans it and looks up its model; the newest choice wins. Refused while training or
    // generating.
    Q_INVOKABLE void setCorpus(const QUrl& folder);
    // Asks the window for a folder chooser (corpusChooserRequested), which answers with setCorpus. It starts
    // beside the corpus; before the first one at home.
    Q_INVOKABLE void chooseCorpus();
    Q_INVOKABLE void forgetRecentCorpora();
    // Whether a dropped URL is a folder of this computer.
    Q_INVOKABLE [[nodiscard]] bool isFolder(const QUrl& url) const;

    // ---- Operations on the model

    // Trains a model of the corpus and stores it; the files of a stored one that cannot be used are kept
    // under another name. Does nothing without a summary and while something else than an audition runs.
    Q_INVOKABLE void train();
    Q_INVOKABLE void cancelTraining();
    // index: as in devices(). From the next run on; a model that is loaded goes along with its next use.
    // While something computes, nothing happens but notice().
    Q_INVOKABLE void chooseDevice(int index);

    // ---- Operations on the output

    // Asks the window for a folder chooser (outputChooserRequested), which answers with setOutputFolder.
    Q_INVOKABLE void chooseOutput();
    Q_INVOKABLE void setOutputFolder(const QUrl& folder);
    // Looks again for the output folder, the results and the own presets, which other programs may have
    // changed: call it when the window becomes active.
    Q_INVOKABLE void refresh();
    // Opens the platform's file manager at the folder of the last results, with these selected; before the
    // first results at the output folder.
    Q_INVOKABLE void showInFileManager();

    // ---- Operations on the parameters. Values are edited through parameters().

    // All edits between the two are one undo step (a drag on a slider). Calls nest.
    Q_INVOKABLE void beginEdit();
    Q_INVOKABLE void endEdit();
    Q_INVOKABLE void undo();
    Q_INVOKABLE void redo();
    // A built-in or own preset by its name; unknown names do nothing. An own preset whose file cannot be used
    // changes nothing but errorMessage.
    Q_INVOKABLE void applyPreset(const QString& name);
    void apply(const Preset& preset);
    // Moves every parameter that is not locked toward a random place on its slider: 0 not at all, 1 all the
    // way.
    Q_INVOKABLE void randomise(double amount);
    // Saves the values under a new name; presetName becomes it. An existing name is never overwritten: that
    // and unusable names end as errorMessage. presetSaved tells of success.
    Q_INVOKABLE void saveOwnPreset(const QString& name);
    Q_INVOKABLE void deleteOwnPreset(const QString& name);
    // Why a preset cannot be saved under name ("" when it can), for a dialog to show while typing.
    Q_INVOKABLE [[nodiscard]] QString presetNameProblem(const QString& name) const;
    // lastSeed into the seed field, and into the clipboard.
    Q_INVOKABLE void reuseSeed();
    Q_INVOKABLE void copySeed();

    // ---- Runs

    // Writes count variations into the output folder, training first when there is no model. While another
    // run is active, and without a summary to train on, nothing happens but notice().
    Q_INVOKABLE void generate();
    // As generate(); returned is called when everything it started has ended, however it ended.
    void generate(std::function<void()> returned);
    Q_INVOKABLE void cancelGeneration();
    // Renders one variation into a temporary file and plays it. Does nothing while busy.
    Q_INVOKABLE void audition();
    // Stops whatever runs (training, generation, scan, audition).
    Q_INVOKABLE void cancel();

    // ---- Playback

    Q_INVOKABLE void play(const QUrl& file);
    // Plays file, or stops it if it is the one playing.
    Q_INVOKABLE void togglePlay(const QUrl& file);
    Q_INVOKABLE void stop();

    // ---- Errors

    Q_INVOKABLE void dismissError();
    Q_INVOKABLE void copyError();

    // ---- Values. See the properties above.
    [[nodiscard]] QUrl corpusURL() const { return corpusURL_; }
    [[nodiscard]] QString corpusPath() const;
    [[nodiscard]] QString corpusName() const;
    [[nodiscard]] bool hasCorpus() const { return !corpusURL_.isEmpty(); }
    [[nodiscard]] bool isScanning() const { return isScanning_; }
    [[nodiscard]] int scanDone() const { return scanDone_; }
    [[nodiscard]] int scanTotal() const { return scanTotal_; }
    [[nodiscard]] QString scanTimeLeft() const;
    [[nodiscard]] bool hasSummary() const { return summary_ != nullptr; }
    [[nodiscard]] const CorpusSummary* summary() const { return summary_.get(); }  // null when absent
    [[nodiscard]] int fileCount() const;
    [[nodiscard]] double totalSeconds() const;
    [[nodiscard]] QString totalDuration() const;
    [[nodiscard]] QStringList sampleRates() const;
    [[nodiscard]] int unreadable() const;
    [[nodiscard]] bool corpusIsEmpty() const;
    [[nodiscard]] bool hasFewSamples() const;
    [[nodiscard]] QVariantList recentCorpora() const;
    [[nodiscard]] QString corpusChooserMessage() const;
    [[nodiscard]] QString outputChooserMessage() const;
    [[nodiscard]] QString chooserButton() const;

    [[nodiscard]] bool isLoadingModel() const { return isLoadingModel_; }
    [[nodiscard]] bool hasModel() const { return generator_ != nullptr; }
    [[nodiscard]] const ModelBundle* bundle() const;  // the generator's; null when absent
    [[nodiscard]] QString modelAnalysis() const;
    [[nodiscard]] double modelClipSeconds() const;
    [[nodiscard]] QString modelClipSecondsText() const;
    [[nodiscard]] QDateTime modelTrainedAt() const;
    [[nodiscard]] int modelSteps() const;
    [[nodiscard]] int modelClipCount() const;
    [[nodiscard]] QString modelProblem() const { return modelProblem_; }
    [[nodiscard]] QStringList qualityLabels() const;
    [[nodiscard]] QStringList qualityHelps() const;
    [[nodiscard]] Quality quality() const { return quality_; }
    [[nodiscard]] int qualityIndex() const { return static_cast<int>(quality_); }
    void setQualityIndex(int index);
    [[nodiscard]] QStringList analysisLabels() const;
    [[nodiscard]] QString analysisHelp() const;
    [[nodiscard]] AnalysisProfile analysis() const { return analysis_; }
    [[nodiscard]] int analysisIndex() const;
    void setAnalysisIndex(int index);
    [[nodiscard]] bool isTraining() const { return isTraining_; }
    [[nodiscard]] bool canTrain() const;
    [[nodiscard]] QString trainHint() const;
    [[nodiscard]] const std::optional<TrainingProgress>& training() const { return training_; }
    [[nodiscard]] QString trainingPhase() const;
    [[nodiscard]] QString trainingMessage() const;
    [[nodiscard]] int trainingStep() const;
    [[nodiscard]] int trainingTotalSteps() const;
    [[nodiscard]] double trainingLoss() const;
    [[nodiscard]] double trainingReconstruction() const;
    [[nodiscard]] double trainingFraction() const;
    [[nodiscard]] QString trainingTimeLeft() const;
    [[nodiscard]] LossHistory* lossHistory() { return &lossHistory_; }
    [[nodiscard]] ComputeDevices* devices() { return &devices_; }
    [[nodiscard]] bool canChooseDevice() const { return !isTraining_ && !isGenerating_ && !isAuditioning_; }

    [[nodiscard]] QString outputText() const { return outputText_; }
    void setOutputText(const QString& text);
    // The trimmed text with "~" expanded, as an absolute path; absent when blank.
    [[nodiscard]] std::optional<QUrl> outputFolder() const;
    [[nodiscard]] OutputStatus outputStatus() const { return outputStatus_; }
    [[nodiscard]] int count() const { return count_; }
    void setCount(int count);
    [[nodiscard]] QStringList formatLabels() const;
    [[nodiscard]] OutputFormat format() const { return format_; }
    [[nodiscard]] int formatIndex() const;
    void setFormatIndex(int index);

    [[nodiscard]] const Aesthetics& aesthetics() const { return parameters_.values(); }
    [[nodiscard]] ParameterModel* parameters() { return &parameters_; }
    [[nodiscard]] PresetModel* presets() { return &presets_; }
    [[nodiscard]] QString presetName() const { return history_.current().presetName; }
    [[nodiscard]] bool presetEdited() const;
    [[nodiscard]] bool canUndo() const { return history_.canUndo(); }
    [[nodiscard]] bool canRedo() const { return history_.canRedo(); }
    [[nodiscard]] QString seedText() const { return seedText_; }
    void setSeedText(const QString& text);
    [[nodiscard]] bool seedIsFixed() const { return typedSeed().has_value(); }
    [[nodiscard]] QString lastSeed() const { return lastSeed_; }

    [[nodiscard]] bool isGenerating() const { return isGenerating_; }
    [[nodiscard]] bool isAuditioning() const { return isAuditioning_; }
    [[nodiscard]] bool isBusy() const {
        return isTraining_ || isGenerating_ || isScanning_ || isAuditioning_;
    }
    [[nodiscard]] bool canGenerate() const { return hasCorpus() && !isBusy(); }
    [[nodiscard]] bool canAudition() const { return hasModel() && !isBusy(); }
    [[nodiscard]] int generationDone() const { return generationDone_; }
    [[nodiscard]] int generationTotal() const { return generationTotal_; }
    [[nodiscard]] QString generationTimeLeft() const;
    [[nodiscard]] bool isCancelling() const { return isCancelling_; }
    [[nodiscard]] ResultsModel* results() { return &results_; }
    [[nodiscard]] QUrl lastOutputFolder() const { return lastOutputFolder_; }
    [[nodiscard]] QUrl playingURL() const { return playingURL_; }
    [[nodiscard]] bool isPlayingAudition() const;
    [[nodiscard]] QString errorMessage() const { return errorMessage_; }
    [[nodiscard]] Appearance* appearance() { return &appearance_; }

signals:
    void corpusChanged();
    void isScanningChanged();
    void scanProgressChanged();
    void summaryChanged();
    void recentCorporaChanged();
    void isLoadingModelChanged();
    void bundleChanged();
    void modelProblemChanged();
    void qualityChanged();
    void analysisChanged();
    void isTrainingChanged();
    void canTrainChanged();
    void canChooseDeviceChanged();
    void trainingChanged();
    void outputTextChanged();
    void outputStatusChanged();
    void countChanged();
    void formatChanged();
    void aestheticsChanged();
    void presetChanged();
    void historyChanged();
    void seedTextChanged();
    void lastSeedChanged();
    void isGeneratingChanged();
    void isAuditioningChanged();
    void isBusyChanged();
    void canGenerateChanged();
    void generationProgressChanged();
    void isCancellingChanged();
    void lastOutputFolderChanged();
    void playingURLChanged();
    void errorMessageChanged();

    // The window is to open a folder chooser that starts at startFolder.
    void corpusChooserRequested(const QUrl& startFolder);
    void outputChooserRequested(const QUrl& startFolder);
    // A sentence that is no failure: shown in passing and announced, never in the error banner.
    void notice(const QString& text);
    void presetSaved(const QString& name);
    // A run has ended well: something to announce.
    void trainingFinished();
    void generationFinished(int files);

private:
    friend struct AppModelProbe;  // for tests

    using Returned = std::function<void()>;  // called when an operation has ended

    template <typename T>
    void assign(T& field, T value, void (AppModel::*changed)());
    void assignRunning(bool& field, bool value, void (AppModel::*changed)());
    // Tells of isBusy, canTrain and what else follows from several fields.
    void announceDerived();
    void setError(const QString& message);
    void report(const TaskFailure& failure);
    // From any thread.
    void watched(Run run, std::int64_t done) const;

    void restorePreferences();
    void rememberCorpus(const QString& path);

    void scan();
    void scanProgressed(std::size_t done, std::size_t total);
    struct Scan;
    void scanned(Scan result);
    void scanFailed(const TaskFailure& failure);
    void scanEnded();
    void loadModel(const std::filesystem::path& folder);
    void setGenerator(std::shared_ptr<SampleGenerator> generator,
                      std::shared_ptr<ChosenDevice> device = nullptr);
    [[nodiscard]] std::shared_ptr<ChosenDevice> deviceToCompileFor();
    [[nodiscard]] std::shared_ptr<ChosenDevice> deviceToMoveTo();
    [[nodiscard]] std::shared_ptr<SampleGenerator> moved(const std::shared_ptr<SampleGenerator>& generator,
                                                         const std::shared_ptr<ChosenDevice>& device);

    void train(const Returned& returned);
    [[nodiscard]] TrainingOptions trainingOptions() const;
    void trainingEnded(const Returned& returned);
    void receive(const TrainingProgress& progress);

    [[nodiscard]] QString busyNotice() const;
    void startGeneration(const QUrl& folder, const Returned& returned);
    void generated(std::vector<GeneratedSample> samples, const QUrl& folder);
    void generationEnded(const Returned& returned);
    void auditionEnded();
    [[nodiscard]] std::optional<std::uint64_t> typedSeed() const;
    [[nodiscard]] std::uint64_t drawSeed();

    void editParameters(const Aesthetics& aesthetics);
    void changeCharacter(Character next);
    void showCharacter();
    void reloadPresets();

    [[nodiscard]] QUrl auditionURL() const;
    void setPlaying(const QUrl& file);
    void playbackStarted(const QString& file, double seconds);
    void playbackFailed(const QString& file, const QString& reason);
    void clearIfPlayed();
    void lookAtOutput();

    const Environment environment_;
    Preferences preferences_;
    Appearance appearance_;
    ComputeDevices devices_;

    // Corpus and model. A choice of a corpus has a number; what was begun for an older one is dropped.
    QUrl corpusURL_;
    quint64 corpusChoice_ = 0;
    QStringList recentCorpora_;
    bool isScanning_ = false;
    int scanDone_ = 0;
    int scanTotal_ = 0;
    QElapsedTimer scanClock_;  // since the files were counted
    std::shared_ptr<CancelFlag> scanCancel_;
    std::shared_ptr<const CorpusSummary> summary_;
    bool isLoadingModel_ = false;
    quint64 modelLoad_ = 0;                          // number of the newest load
    std::vector<Returned> whenLoaded_;               // what waits for it
    std::shared_ptr<SampleGenerator> generator_;     // and the bundle
    std::shared_ptr<ChosenDevice> generatorDevice_;  // generator_ was compiled for
    QString modelProblem_;
    Quality quality_ = Quality::standard;
    AnalysisProfile analysis_ = AnalysisProfile::automatic;
    bool isTraining_ = false;
    std::optional<TrainingProgress> training_;
    LossHistory lossHistory_;
    std::shared_ptr<CancelFlag> trainCancel_;

    // Output and character.
    QString outputText_;
    OutputStatus outputStatus_ = NoOutput;
    quint64 outputLook_ = 0;  // number of the newest look
    QTimer lookSoon_;
    int count_ = 10;
    OutputFormat format_ = OutputFormat::wav24;
    EditHistory history_{{Aesthetics(), QStringLiteral("Balanced")}};
    ParameterModel parameters_;
    PresetModel presets_;
    QString seedText_;
    QString lastSeed_;

    // Runs and results.
    bool isGenerating_ = false;
    int generationDone_ = 0;
    int generationTotal_ = 0;
    QElapsedTimer generationClock_;
    std::shared_ptr<CancelFlag> generateCancel_;
    bool isAuditioning_ = false;
    bool auditionIsDropped_ = false;
    bool isCancelling_ = false;
    ResultsModel results_;
    QUrl lastOutputFolder_;
    QString errorMessage_;

    // Playback.
    std::unique_ptr<Player> player_;
    QUrl openingURL_;  // asked for, not yet started
    QUrl playingURL_;
    QTimer playTimer_;

    // What was last told by announceDerived.
    struct Derived {
        bool isBusy = false, canTrain = false, canGenerate = false, canAudition = false;
        bool canChooseDevice = true;
        QString trainHint;
    };
    Derived derived_;

    BackgroundTasks tasks_;  // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
