#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QTimer>
#include <QUrl>
#include <array>
#include <filesystem>
#include <functional>
#include <optional>
#include <utility>

#include "QuillmereApp/Appearance.h"
#include "QuillmereApp/ComputeDevices.h"
#include "QuillmereApp/Controllers/CandidatesController.h"
#include "QuillmereApp/Controllers/CharacterController.h"
#include "QuillmereApp/Controllers/CorpusController.h"
#include "QuillmereApp/Controllers/CorpusFilesController.h"
#include "QuillmereApp/Controllers/DropsController.h"
#include "QuillmereApp/Controllers/FilesController.h"
#include "QuillmereApp/Controllers/GenerationController.h"
#include "QuillmereApp/Controllers/InspectorController.h"
#include "QuillmereApp/Controllers/KitController.h"
#include "QuillmereApp/Controllers/MapController.h"
#include "QuillmereApp/Controllers/MeasuresController.h"
#include "QuillmereApp/Controllers/ModelController.h"
#include "QuillmereApp/Controllers/ModelsController.h"
#include "QuillmereApp/Controllers/OutputController.h"
#include "QuillmereApp/Controllers/PlaybackController.h"
#include "QuillmereApp/Controllers/ReportController.h"
#include "QuillmereApp/Controllers/RunsController.h"
#include "QuillmereApp/Controllers/SweepController.h"
#include "QuillmereApp/Environment.h"
#include "QuillmereApp/FolderBrowser.h"
#include "QuillmereApp/Preferences.h"
#include "QuillmereApp/Session.h"

namespace quillmere {

// The application without its window: all state the user sees, and every operation on it. One controller per
// subject holds the state and does the work; this connects them, and has what is nobody's alone: the error,
// notices, and what runs. A view binds to the controller of the subject it shows.
//
// Threads: as for Controller.
class AppModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("created once, before the window")

    Q_PROPERTY(quillmere::CorpusController* corpus READ corpus CONSTANT)
    Q_PROPERTY(quillmere::ModelController* model READ model CONSTANT)
    Q_PROPERTY(quillmere::OutputController* output READ output CONSTANT)
    Q_PROPERTY(quillmere::CharacterController* character READ character CONSTANT)
    Q_PROPERTY(quillmere::GenerationController* generation READ generation CONSTANT)
    Q_PROPERTY(quillmere::CandidatesController* candidates READ candidates CONSTANT)
    Q_PROPERTY(quillmere::InspectorController* inspector READ inspector CONSTANT)
    Q_PROPERTY(quillmere::FilesController* files READ files CONSTANT)
    Q_PROPERTY(quillmere::PlaybackController* playback READ playback CONSTANT)
    Q_PROPERTY(quillmere::CorpusFilesController* corpusFiles READ corpusFiles CONSTANT)
    Q_PROPERTY(quillmere::ReportController* report READ report CONSTANT)
    Q_PROPERTY(quillmere::ModelsController* models READ models CONSTANT)
    Q_PROPERTY(quillmere::MapController* map READ map CONSTANT)
    Q_PROPERTY(quillmere::RunsController* runs READ runs CONSTANT)
    Q_PROPERTY(quillmere::DropsController* drops READ drops CONSTANT)
    Q_PROPERTY(quillmere::KitController* kits READ kits CONSTANT)
    Q_PROPERTY(quillmere::SweepController* sweep READ sweep CONSTANT)
    Q_PROPERTY(quillmere::ComputeDevices* devices READ devices CONSTANT)
    Q_PROPERTY(quillmere::FolderBrowser* browser READ browser CONSTANT)
    Q_PROPERTY(bool canChooseDevice READ canChooseDevice NOTIFY canChooseDeviceChanged)  // nothing computes
    Q_PROPERTY(quillmere::Appearance* appearance READ appearance CONSTANT)
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY isBusyChanged)
    Q_PROPERTY(QString errorMessage READ errorMessage NOTIFY errorMessageChanged)

public:
    explicit AppModel(Environment environment = Environment::standard(), QObject* parent = nullptr);
    ~AppModel() override;

    [[nodiscard]] CorpusController* corpus() { return &corpus_; }
    [[nodiscard]] ModelController* model() { return &model_; }
    [[nodiscard]] OutputController* output() { return &output_; }
    [[nodiscard]] CharacterController* character() { return &character_; }
    [[nodiscard]] GenerationController* generation() { return &generation_; }
    [[nodiscard]] CandidatesController* candidates() { return &candidates_; }
    [[nodiscard]] InspectorController* inspector() { return &inspector_; }
    [[nodiscard]] FilesController* files() { return &files_; }
    [[nodiscard]] PlaybackController* playback() { return &playback_; }
    [[nodiscard]] CorpusFilesController* corpusFiles() { return &corpusFiles_; }
    [[nodiscard]] ReportController* report() { return &report_; }
    [[nodiscard]] ModelsController* models() { return &models_; }
    [[nodiscard]] MapController* map() { return &map_; }
    [[nodiscard]] RunsController* runs() { return &runs_; }
    [[nodiscard]] MeasuresController* measures() { return &measures_; }
    [[nodiscard]] DropsController* drops() { return &drops_; }
    [[nodiscard]] KitController* kits() { return &kits_; }
    [[nodiscard]] SweepController* sweep() { return &sweep_; }
    [[nodiscard]] ComputeDevices* devices() { return &devices_; }
    [[nodiscard]] Appearance* appearance() { return &appearance_; }
    [[nodiscard]] FolderBrowser* browser() { return &browser_; }

    // ---- What concerns several subjects

    // Stops whatever runs (training, generation, scan, audition, candidates, kit, sweep) and the opening of a
    // model; where there is nothing of these, files on their way to the trash or back.
    Q_INVOKABLE void cancel();
    // Looks again for the output folder, the results and the own presets, which other programs may have
    // changed: call it when the window becomes active.
    Q_INVOKABLE void refresh();
    // Opens the platform's file manager at the folder of the last results, with these selected; before the
    // first results at the output folder.
    Q_INVOKABLE void showInFileManager();
    // index: as in devices(). From the next run on; the present model is compiled for that device when it is
    // used next. While something computes, nothing happens but notice().
    Q_INVOKABLE void chooseDevice(int index);
    // Of the results that are selected, or, where none is, that of row: into the desktop's trash; favourites,
    // or none where all of them are; a kit for samplers.
    Q_INVOKABLE void trashResults(int row);
    Q_INVOKABLE void switchFavourites(int row);
    Q_INVOKABLE void makeKit(int row);
    // The parameters as they were before the last edit, and as they are, each heard with the present seed if
    // there is a model.
    Q_INVOKABLE void beginComparison();
    Q_INVOKABLE void endComparison();
    // The rows of the results in that order (ResultsModel::Order).
    Q_INVOKABLE void sortResults(int order);
    // The model of the sound that was dropped last, if it is not open; the results make room for that sound.
    Q_INVOKABLE void openOfferedModel();
    // The last audition once more, with detail if it had none, else without; what follows is made the same
    // way. While something runs, nothing happens but notice().
    Q_INVOKABLE void compareDetail();
    // The inspector, if it is open, looks at that row of the candidates or of the results, or at nothing.
    Q_INVOKABLE void inspectCandidate(int row);
    Q_INVOKABLE void inspectResult(int row);
    // The file that is inspected, if there is one: selected in the platform's file manager; into the
    // desktop's trash.
    Q_INVOKABLE void showInspectedFile();
    Q_INVOKABLE void trashInspectedFile();
    Q_INVOKABLE void renameInspectedFile(const QString& name);
    // Whether it is one of the favourites.
    Q_INVOKABLE [[nodiscard]] bool inspectedIsFavourite() const;
    Q_INVOKABLE void toggleInspectedFavourite();
    Q_INVOKABLE void dismissError();
    Q_INVOKABLE void copyError();

    [[nodiscard]] QString errorMessage() const { return errorMessage_; }
    [[nodiscard]] bool isBusy() const { return activity_.isBusy(); }
    [[nodiscard]] bool canChooseDevice() const { return !activity_.isComputing(); }

    // ---- The operations of the subjects, as the controllers describe them

    void setCorpus(const QUrl& folder) { corpus_.choose(folder); }
    void chooseCorpus() { corpus_.openChooser(); }
    void chooseOutput() { output_.openChooser(); }
    void train() { model_.train(); }
    void generate() { generation_.generate(); }
    void generate(std::function<void()> returned) { generation_.generate(std::move(returned)); }
    void audition() { generation_.audition(); }
    void play(const QUrl& file) { playback_.play(file); }
    void togglePlay(const QUrl& file) { playback_.togglePlay(file); }
    void apply(const Preset& preset) { character_.apply(preset); }

    // ---- The fields of the subjects

    [[nodiscard]] QUrl corpusURL() const { return corpus_.url(); }
    [[nodiscard]] const CorpusSummary* summary() const { return corpus_.summary().get(); }
    [[nodiscard]] bool isScanning() const { return corpus_.isScanning(); }
    [[nodiscard]] const ModelBundle* bundle() const { return model_.bundle(); }
    [[nodiscard]] Quality quality() const { return model_.quality(); }
    [[nodiscard]] AnalysisProfile analysis() const { return model_.analysis(); }
    [[nodiscard]] const std::optional<TrainingProgress>& training() const { return model_.training(); }
    [[nodiscard]] LossHistory* lossHistory() { return model_.lossHistory(); }
    [[nodiscard]] bool isTraining() const { return model_.isTraining(); }
    [[nodiscard]] QString outputText() const { return output_.folderText(); }
    void setOutputText(const QString& text) { output_.setFolderText(text); }
    [[nodiscard]] std::optional<QUrl> outputFolder() const { return output_.folder(); }
    [[nodiscard]] int count() const { return output_.count(); }
    void setCount(int count) { output_.setCount(count); }
    [[nodiscard]] OutputFormat format() const { return output_.format(); }
    [[nodiscard]] const Aesthetics& aesthetics() const { return character_.aesthetics(); }
    [[nodiscard]] QString presetName() const { return character_.presetName(); }
    [[nodiscard]] QString seedText() const { return character_.seedText(); }
    void setSeedText(const QString& text) { character_.setSeedText(text); }
    [[nodiscard]] bool isGenerating() const { return generation_.isGenerating(); }
    [[nodiscard]] bool isAuditioning() const { return generation_.isAuditioning(); }
    // {done, total}
    [[nodiscard]] std::pair<int, int> generationProgress() const {
        return {generation_.done(), generation_.total()};
    }
    [[nodiscard]] ResultsModel* results() { return generation_.results(); }
    [[nodiscard]] QUrl lastOutputFolder() const { return generation_.lastOutputFolder(); }
    [[nodiscard]] QUrl playingURL() const { return playback_.playingURL(); }

signals:
    void isBusyChanged();
    void canChooseDeviceChanged();
    void errorMessageChanged();
    // A sound that was dropped is one of the results now.
    void soundTaken(const QUrl& file);
    // It was made by another model, which openOfferedModel() opens; corpus: the name of its folder.
    void modelOffered(const QString& corpus);
    // A sentence that is no failure: shown in passing and announced, never in the error banner.
    void notice(const QString& text);

private:
    [[nodiscard]] std::array<Controller*, 18> controllers();
    [[nodiscard]] GenerationController::Links generationLinks();
    [[nodiscard]] CandidatesController::Links candidatesLinks();
    [[nodiscard]] GenerationRequest generationRequest(const QUrl& outputFolder);
    void connectAll();
    void connectCorpusAndModel();
    void connectRuns();
    void connectCandidates();
    void connectInspector();
    void connectRunsOfBefore();
    void connectMeasures();
    void connectDrops();
    void connectSliders();
    void takeFolder(const QUrl& folder);
    void takeSound(const KnownSound& sound);
    void showTaken(const KnownSound& sound);
    void showAwaitedSound();
    void corpusChanged();
    void filesGone(int files);
    void modelChanged();
    void subjectChanged();
    void mapResults();
    void takeSettings(const Recipe& recipe);
    void openModel(const QUrl& corpus, const std::filesystem::path& folder);
    void openStoredModel(const std::filesystem::path& ofTheFolder);
    void activityOfControllersChanged();
    void cancelAll();
    void cancelRuns();
    void setError(const QString& message);

    const Environment environment_;
    Preferences preferences_;
    Appearance appearance_;
    ComputeDevices devices_;
    FolderBrowser browser_;
    QString errorMessage_;
    Activity activity_;

    // Those whose work in the background calls another one come after it, because the last goes first.
    PlaybackController playback_;
    CharacterController character_;
    OutputController output_;
    CorpusController corpus_;
    ModelController model_;
    CorpusFilesController corpusFiles_;
    ReportController report_;
    ModelsController models_;
    std::filesystem::path wantedModel_;  // to be opened though it is not that of the folder as it is now
    MapController map_;
    GenerationController generation_;
    CandidatesController candidates_;
    InspectorController inspector_;
    FilesController files_;
    RunsController runs_;
    MeasuresController measures_;
    DropsController drops_;
    KitController kits_;
    SweepController sweep_;
    QTimer followSoon_;                  // a slider has moved
    std::optional<KnownSound> offered_;  // whose model is not open
    std::optional<KnownSound> awaited_;  // whose model is being opened
    Session session_;
};

}  // namespace quillmere
