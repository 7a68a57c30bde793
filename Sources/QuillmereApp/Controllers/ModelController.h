#pragma once

#include <QStringList>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "QuillmereApp/CancelFlag.h"
#include "QuillmereApp/ComputeDevices.h"
#include "QuillmereApp/Controllers/Controller.h"
#include "QuillmereApp/Controllers/LearningSound.h"
#include "QuillmereApp/Controllers/PreparedGenerator.h"
#include "QuillmereApp/LossHistory.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Model/Trainer.h"
#include "QuillmereCore/Model/Training/Quality.h"
#include "QuillmereCore/Network/Backend.h"

namespace quillmere {

// What is learned of the corpus: the stored model, and the training of a new one.
class ModelController : public Controller {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("AppModel owns it")
    // ---- The model
    Q_PROPERTY(bool isLoading READ isLoading NOTIFY isLoadingChanged)
    Q_PROPERTY(bool isReady READ isReady NOTIFY bundleChanged)
    Q_PROPERTY(QString analysisLabel READ analysisLabel NOTIFY bundleChanged)      // of its profile
    Q_PROPERTY(QString clipSecondsText READ clipSecondsText NOTIFY bundleChanged)  // "1.5"
    Q_PROPERTY(QString learnedAt READ learnedAt NOTIFY bundleChanged)
    // How long it was trained: the label of a quality, or "250 steps".
    Q_PROPERTY(QString trainedQuality READ trainedQuality NOTIFY bundleChanged)
    // Why the stored model of this corpus is not in use, with advice; empty otherwise.
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged)
    // There is a problem, but none of the model itself: opening it again may do.
    Q_PROPERTY(bool isUnopened READ isUnopened NOTIFY problemChanged)
    // The model could not be stored: it is in use, and lost when the program ends.
    Q_PROPERTY(bool isUnstored READ isUnstored NOTIFY isUnstoredChanged)
    Q_PROPERTY(QString unstoredText READ unstoredText NOTIFY
                   isUnstoredChanged)                                  // what is not stored, and what follows
    Q_PROPERTY(bool isStoring READ isStoring NOTIFY isStoringChanged)  // again
    // ---- Pickers: the index counts in the lists of labels.
    Q_PROPERTY(QStringList qualityLabels READ qualityLabels CONSTANT)
    Q_PROPERTY(QStringList qualityHelps READ qualityHelps CONSTANT)
    Q_PROPERTY(int qualityIndex READ qualityIndex WRITE setQualityIndex NOTIFY qualityChanged)
    Q_PROPERTY(QStringList analysisLabels READ analysisLabels CONSTANT)
    Q_PROPERTY(QString analysisHelp READ analysisHelp CONSTANT)
    Q_PROPERTY(int analysisIndex READ analysisIndex WRITE setAnalysisIndex NOTIFY analysisChanged)
    // What a training begins from.
    Q_PROPERTY(QStringList startLabels READ startLabels CONSTANT)
    Q_PROPERTY(QString startHelp READ startHelp CONSTANT)
    Q_PROPERTY(int startIndex READ startIndex WRITE setStartIndex NOTIFY startChanged)
    // A training stores the sounds of the folder with the model.
    Q_PROPERTY(bool keepsSounds READ keepsSounds WRITE setKeepsSounds NOTIFY keepsSoundsChanged)
    Q_PROPERTY(QString keptSoundsText READ keptSoundsText NOTIFY keptSoundsTextChanged)  // with their size
    // ---- The training
    Q_PROPERTY(bool isTraining READ isTraining NOTIFY isTrainingChanged)
    Q_PROPERTY(
        bool isCancelling READ isCancelling NOTIFY isCancellingChanged)  // asked to stop, still training
    // Steps are being done: what has been learned can be kept.
    Q_PROPERTY(bool canStopHere READ canStopHere NOTIFY canStopHereChanged)
    Q_PROPERTY(bool canTrain READ canTrain NOTIFY canTrainChanged)
    Q_PROPERTY(QString trainHint READ trainHint NOTIFY canTrainChanged)  // "Choose a corpus first.", or empty
    Q_PROPERTY(QString phase READ phase NOTIFY progressed)               // analysing, training, finishing
    Q_PROPERTY(QString message READ message NOTIFY progressed)
    Q_PROPERTY(int step READ step NOTIFY progressed)
    Q_PROPERTY(int totalSteps READ totalSteps NOTIFY progressed)
    Q_PROPERTY(double fraction READ fraction NOTIFY progressed)   // 0 ... 1
    Q_PROPERTY(QString timeLeft READ timeLeft NOTIFY progressed)  // "about 2 min left", or empty
    Q_PROPERTY(quillmere::LossHistory* lossHistory READ lossHistory CONSTANT)
    Q_PROPERTY(quillmere::LearningSound* sound READ sound CONSTANT)  // what it sounds like by then

public:
    using Returned = std::function<void()>;  // called when an operation has ended, however it ended

    enum class Start {
        scratch,    // random weights
        headStart,  // a network that knows many sounds
    };

    // devices must outlive it.
    ModelController(const Environment& environment, ComputeDevices& devices);
    ~ModelController() override;

    // What a training would learn: whether a folder is chosen, and what is in it; null until it is scanned.
    void setCorpus(bool isChosen, std::shared_ptr<const CorpusSummary> summary);
    // There is no model any more, and none is on its way. One that is not stored is stored now, if that can
    // be.
    void forget();
    // Loads a stored model. One that cannot be used or opened ends as problem and as an error.
    void load(const std::filesystem::path& folder);
    // Does nothing unless isUnopened.
    Q_INVOKABLE void openAgain();
    // What is being loaded stays unopened.
    Q_INVOKABLE void cancelLoading();
    // Calls returned when the model has been loaded, or cannot be or need not be.
    void whenLoaded(Returned returned);
    // There must be a model. It is as it is now, whatever becomes of the present one.
    [[nodiscard]] PreparedGenerator preparedGenerator();
    // While there is no model: whether the folder can be heard before it is learned.
    [[nodiscard]] bool canPreview() const;
    // canPreview, or there is a model: that is what it gives then. What it makes in the background is made
    // once for a corpus. Throws as ModelTrainer::beforeLearning and HeadStart::load.
    [[nodiscard]] PreparedGenerator preview();
    // What is being made for a preview is not needed any more.
    void cancelPreview();

    // Trains a model of the corpus and stores it, unless files of it are gone (filesGone); the files of a
    // stored one that cannot be used or opened are kept under another name. One that cannot be stored now is
    // there all the same (isUnstored). Does nothing without a summary and while something runs.
    Q_INVOKABLE void train();
    // As train, for a run that is about to generate.
    void train(const Returned& returned);
    Q_INVOKABLE void cancelTraining();
    // Ends the training at its present step; what has been learned becomes the model, as at the end.
    Q_INVOKABLE void stopHere();
    // Tries again to store a model that could not be stored. Does nothing unless isUnstored.
    Q_INVOKABLE void storeAgain();

    [[nodiscard]] bool isLoading() const { return isLoading_; }
    [[nodiscard]] bool isReady() const { return generator_ != nullptr; }
    [[nodiscard]] const ModelBundle* bundle() const;  // null when absent
    // Where it is stored, or belongs; empty when absent.
    [[nodiscard]] std::filesystem::path storedFolder() const {
        return isReady() ? folder_ : std::filesystem::path();
    }
    // For who needs the bundle in the background; null when absent.
    [[nodiscard]] std::shared_ptr<const SampleGenerator> generator() const { return generator_; }
    [[nodiscard]] QString analysisLabel() const;
    [[nodiscard]] double clipSeconds() const;
    [[nodiscard]] QString clipSecondsText() const;
    [[nodiscard]] QString learnedAt() const;
    [[nodiscard]] QString trainedQuality() const;
    [[nodiscard]] QString problem() const { return problem_; }
    [[nodiscard]] bool isUnopened() const { return isUnopened_; }
    [[nodiscard]] bool isUnstored() const { return !unstored_.empty(); }
    [[nodiscard]] QString unstoredText() const;
    [[nodiscard]] bool isStoring() const { return isStoring_; }

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
    [[nodiscard]] QStringList startLabels() const;
    [[nodiscard]] QString startHelp() const;
    [[nodiscard]] Start start() const { return start_; }
    [[nodiscard]] int startIndex() const { return static_cast<int>(start_); }
    void setStartIndex(int index);
    [[nodiscard]] bool keepsSounds() const { return keepsSounds_; }
    void setKeepsSounds(bool keeps);
    [[nodiscard]] QString keptSoundsText() const;

    [[nodiscard]] bool isTraining() const { return isTraining_; }
    [[nodiscard]] bool isCancelling() const { return isCancelling_; }
    [[nodiscard]] bool canStopHere() const;
    [[nodiscard]] bool canTrain() const;
    [[nodiscard]] QString trainHint() const;
    [[nodiscard]] const std::optional<TrainingProgress>& training() const { return training_; }
    [[nodiscard]] QString phase() const;
    [[nodiscard]] QString message() const;
    [[nodiscard]] int step() const;
    [[nodiscard]] int totalSteps() const;
    [[nodiscard]] double fraction() const;
    [[nodiscard]] QString timeLeft() const;
    [[nodiscard]] LossHistory* lossHistory() { return &lossHistory_; }
    [[nodiscard]] LearningSound* sound() { return &sound_; }

signals:
    void isLoadingChanged();
    void bundleChanged();
    void problemChanged();
    void isUnstoredChanged();
    void isStoringChanged();
    void qualityChanged();
    void analysisChanged();
    void startChanged();
    void keepsSoundsChanged();
    void keptSoundsTextChanged();
    void isTrainingChanged();
    void isCancellingChanged();
    void canStopHereChanged();
    void canTrainChanged();
    void progressed();
    // A training has ended well: something to announce.
    void trainingFinished();
    // A training has not begun, because so many of the corpus's files are gone since they were counted.
    void filesGone(int files);

private:
    friend struct AppModelProbe;  // for tests

    struct Trained;
    struct Training;
    // Where a model belongs, what becomes of the one that is there, and what is stored with it.
    struct Storing {
        std::filesystem::path folder;
        ModelStore::Former former;
        std::shared_ptr<const CorpusSummary> sounds;  // of which the sounds are kept; null: of none
    };
    // A model that could not be stored.
    struct Unstored {
        std::shared_ptr<SampleGenerator> generator;
        Storing storing;
    };

    void setGenerator(std::shared_ptr<SampleGenerator> generator,
                      std::shared_ptr<network::ChosenDevice> device = nullptr);
    void setProblem(const QString& problem, bool isUnopened);
    void loadFailed(const TaskFailure& failure);
    void endLoading(const QString& problem, bool isUnopened);
    [[nodiscard]] ModelStore::Former former() const;
    [[nodiscard]] std::shared_ptr<network::ChosenDevice> deviceToCompileFor();
    [[nodiscard]] std::shared_ptr<SampleGenerator> moved(const std::shared_ptr<SampleGenerator>& generator,
                                                         const std::shared_ptr<network::ChosenDevice>& device,
                                                         const CorpusSummary* corpus,
                                                         const std::filesystem::path& folder);
    struct TrainingOrder;
    [[nodiscard]] TrainingOrder trainingOrder() const;
    [[nodiscard]] Trained learn(const Training& training);
    void learned(Trained trained, const std::shared_ptr<network::ChosenDevice>& device);
    void addUnstored(Unstored unstored);
    void removeUnstored(const std::filesystem::path& folder);
    void hasStored(const Unstored& stored);
    void tellOfStart(const QString& problem);
    void store(const ModelBundle& bundle, const Storing& storing, const std::stop_token& cancel);
    [[nodiscard]] std::string soundsToKeep(const ModelBundle& bundle, const CorpusSummary& corpus,
                                           const std::stop_token& cancel);
    [[nodiscard]] std::optional<TaskFailure> whyNotStored(const ModelBundle& bundle, const Storing& storing,
                                                          const std::stop_token& cancel);
    void trainingEnded(const Returned& returned);
    void receive(const TrainingProgress& progress);

    ComputeDevices& devices_;
    bool corpusIsChosen_ = false;
    std::shared_ptr<const CorpusSummary> summary_;
    bool isLoading_ = false;
    quint64 load_ = 0;                                        // number of the newest load
    std::vector<Returned> whenLoaded_;                        // what waits for it
    std::shared_ptr<SampleGenerator> generator_;              // and the bundle
    std::shared_ptr<network::ChosenDevice> generatorDevice_;  // generator_ was compiled for
    QString problem_;
    bool isUnopened_ = false;
    std::vector<Unstored> unstored_;  // one for each folder, the newest last
    bool isStoring_ = false;
    std::filesystem::path folder_;  // of the newest load or training
    Quality quality_ = Quality::standard;
    AnalysisProfile analysis_ = AnalysisProfile::automatic;
    Start start_ = Start::scratch;
    bool keepsSounds_ = false;
    const std::unique_ptr<network::Backend> processor_;  // for previews and glimpses
    std::shared_ptr<SampleGenerator> preview_;           // of summary_, before it is learned
    std::shared_ptr<CancelFlag> previewCancel_ = std::make_shared<CancelFlag>();
    bool isTraining_ = false;
    bool isCancelling_ = false;
    std::optional<TrainingProgress> training_;
    LossHistory lossHistory_;
    LearningSound sound_;
    std::shared_ptr<CancelFlag> trainCancel_;
    std::shared_ptr<CancelFlag> enough_;  // of the present training; set: it ends with what it has learned
    CancelFlag storeCancel_;              // ends the waiting for another program
    BackgroundTasks tasks_;               // last: its destructor waits for work that knows the members above
};

}  // namespace quillmere
