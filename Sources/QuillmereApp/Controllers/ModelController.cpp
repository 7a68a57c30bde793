#include "QuillmereApp/Controllers/ModelController.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/Controllers/Labels.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/ModelText.h"
#include "QuillmereApp/TimeText.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Model/HeadStart.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

int clampedToInt(std::int64_t value) {
    return static_cast<int>(std::clamp<std::int64_t>(value, 0, std::numeric_limits<int>::max()));
}

// Files that the scan has found and that are there no longer. One of them is enough to make another corpus
// of the folder, and nobody would find a model under the fingerprint of this one.
int goneFiles(const CorpusSummary& summary) {
    const auto isGone = [](const CorpusFile& file) {
        std::error_code unknown;  // then it may be there
        return std::filesystem::status(file.url, unknown).type() == std::filesystem::file_type::not_found;
    };
    return static_cast<int>(std::ranges::count_if(summary.files, isGone));
}

// To be called in the background.
std::shared_ptr<SampleGenerator> makeGenerator(ModelBundle bundle, ClipSounds sounds,
                                               network::Backend& backend) {
    return std::make_shared<SampleGenerator>(std::move(bundle), backend, std::move(sounds));
}

// The sounds that a model has learned: those of the corpus, if that is it, or those that are kept with the
// model, which the corpus may be null for.
ClipSounds soundsOf(const ModelBundle& bundle, const CorpusSummary* corpus,
                    const std::filesystem::path& folder) {
    return corpus ? ClipSounds::find(bundle, *corpus, folder) : ClipSounds::keptWith(bundle, folder);
}

}  // namespace

// What work in the background needs to know of the training that is wanted.
struct ModelController::TrainingOrder {
    Quality quality;
    AnalysisProfile profile;
    bool keepsSounds;
    std::optional<std::filesystem::path> headStart;  // its folder; absent: random weights
    std::function<TrainingOptions(TrainingOptions)> adjust;

    // Throws as HeadStart::load.
    [[nodiscard]] TrainingOptions options() const {
        return withStart(headStart ? std::make_shared<const TrainingStart>(HeadStart::load(*headStart))
                                   : nullptr);
    }
    [[nodiscard]] TrainingOptions withStart(std::shared_ptr<const TrainingStart> start) const {
        TrainingOptions options = info(quality).training(std::move(start));
        options.profile = profile;
        return adjust ? adjust(options) : options;
    }
};

// What a training takes along into the background.
struct ModelController::Training {
    std::shared_ptr<const CorpusSummary> summary;
    TrainingOrder order;
    ModelTrainer::ProgressCallback progress;
    std::stop_token cancel;
    TrainingHooks hooks;
    std::shared_ptr<network::ChosenDevice> device;
    std::filesystem::path root;  // of the stored models
    std::shared_ptr<const FolderLooks> looks;
    ModelStore::Former former;
};

// Files that are gone, or a generator.
struct ModelController::Trained {
    int gone = 0;
    std::filesystem::path folder{};  // where the model belongs
    std::shared_ptr<SampleGenerator> generator{};
    std::optional<TaskFailure> storingFailure{};  // there when unstored is
    std::optional<Unstored> unstored{};           // its generator is that above
};

ModelController::ModelController(const Environment& environment, ComputeDevices& devices)
    : Controller(environment),
      devices_(devices),
      processor_(network::makeCPUBackend()),
      sound_(environment, *processor_) {
    connect(this, &Controller::activityChanged, this, &ModelController::canTrainChanged);
    connect(this, &ModelController::progressed, this, &ModelController::canStopHereChanged);
    connect(this, &ModelController::isTrainingChanged, this, &ModelController::canStopHereChanged);
    connect(this, &ModelController::isCancellingChanged, this, &ModelController::canStopHereChanged);
    connect(this, &ModelController::qualityChanged, this, &ModelController::keptSoundsTextChanged);
    connect(this, &ModelController::analysisChanged, this, &ModelController::keptSoundsTextChanged);
    connect(&sound_, &LearningSound::notice, this, &Controller::notice);
}

ModelController::~ModelController() {
    cancelTraining();
    cancelPreview();
    storeCancel_.cancel();
}

void ModelController::setCorpus(bool isChosen, std::shared_ptr<const CorpusSummary> summary) {
    corpusIsChosen_ = isChosen;
    if (summary != summary_) cancelPreview();
    summary_ = std::move(summary);
    emit canTrainChanged();
    emit keptSoundsTextChanged();
}

// ---- The model

void ModelController::setGenerator(std::shared_ptr<SampleGenerator> generator,
                                   std::shared_ptr<network::ChosenDevice> device) {
    ++load_;  // what is still being loaded is out of date
    generator_ = std::move(generator);
    generatorDevice_ = std::move(device);
    if (generator_) cancelPreview();
    emit bundleChanged();
    emit isUnstoredChanged();  // its text
    setProblem({}, false);
    assign(*this, isLoading_, false, &ModelController::isLoadingChanged);
    for (const auto& waiting : std::exchange(whenLoaded_, {}))
        waiting();
}

void ModelController::forget() {
    storeAgain();  // no better opportunity will come; if it fails, it can be tried again
    setGenerator(nullptr);
}

void ModelController::addUnstored(Unstored unstored) {
    unstored_.push_back(std::move(unstored));
    emit isUnstoredChanged();
}

void ModelController::removeUnstored(const std::filesystem::path& folder) {
    if (std::erase_if(unstored_,
                      [&](const Unstored& unstored) { return unstored.storing.folder == folder; }) > 0)
        emit isUnstoredChanged();
}

QString ModelController::unstoredText() const {
    if (!isUnstored()) return {};
    const Unstored& newest = unstored_.back();
    if (newest.generator == generator_)
        return tr("This model is not stored yet. You can use it, but it is lost when the program ends.");
    return tr("The model of %1 is not stored yet. It is lost when the program ends.")
        .arg(QString::fromStdString(newest.generator->bundle().metadata.corpusName));
}

void ModelController::storeAgain() {
    if (!isUnstored() || isStoring_) return;
    assign(*this, isStoring_, true, &ModelController::isStoringChanged);
    emit errorRaised({});
    tasks_.run(
        [this, unstored = unstored_.back(), cancel = storeCancel_.token()] {
            store(unstored.generator->bundle(), unstored.storing, cancel);
        },
        [this, stored = unstored_.back()] { hasStored(stored); },
        [this](const TaskFailure& failure) {
            assign(*this, isStoring_, false, &ModelController::isStoringChanged);
            report(failure);
        });
}

void ModelController::hasStored(const Unstored& stored) {
    assign(*this, isStoring_, false, &ModelController::isStoringChanged);
    // Unless the folder has been learned anew meanwhile.
    if (std::erase_if(unstored_, [&](const Unstored& other) { return other.generator == stored.generator; }) >
        0)
        emit isUnstoredChanged();
    emit notice(tr("The model is stored."));
    storeAgain();  // the others
}

void ModelController::setProblem(const QString& problem, bool isUnopened) {
    isUnopened_ = isUnopened;
    assign(*this, problem_, problem, &ModelController::problemChanged);
}

void ModelController::load(const std::filesystem::path& folder) {
    folder_ = folder;
    assign(*this, isLoading_, true, &ModelController::isLoadingChanged);
    const quint64 load = ++load_;
    const auto device = deviceToCompileFor();
    tasks_.run(
        [folder, device, corpus = summary_] {
            ModelBundle bundle = ModelStore::open(folder);
            ClipSounds sounds = soundsOf(bundle, corpus.get(), folder);
            return makeGenerator(std::move(bundle), std::move(sounds), device->backend());
        },
        [this, load, device](std::shared_ptr<SampleGenerator> generator) {
            if (load == load_) setGenerator(std::move(generator), device);
        },
        [this, load](const TaskFailure& failure) {
            if (load == load_) loadFailed(failure);
        });
}

void ModelController::loadFailed(const TaskFailure& failure) {
    const bool isDamaged = failure.kind == TaskFailure::Kind::damage;
    const QString problem =
        isDamaged ? tr("The stored model cannot be used. Retrain to get a new one; the files of "
                       "the old one are kept.")
                  : tr("The stored model could not be opened, which need not be its fault. Open it "
                       "again, or retrain to get a new one; the files of the old one are kept.");
    endLoading(problem, !isDamaged);
    report(failure);
}

void ModelController::openAgain() {
    if (isUnopened_) load(folder_);
}

void ModelController::cancelLoading() {
    if (!isLoading_) return;
    endLoading(tr("The stored model was not opened. Open it, or retrain to get a new one; the files "
                  "of the old one are kept."),
               true);
}

// Without a model. Whoever waited for one is told last, when everything else is known.
void ModelController::endLoading(const QString& problem, bool isUnopened) {
    const auto waiting = std::exchange(whenLoaded_, {});
    setGenerator(nullptr);
    setProblem(problem, isUnopened);
    for (const auto& returned : waiting)
        returned();
}

void ModelController::whenLoaded(Returned returned) {
    if (isLoading_) {
        whenLoaded_.push_back(std::move(returned));
    } else {
        returned();
    }
}

std::shared_ptr<network::ChosenDevice> ModelController::deviceToCompileFor() {
    devices_.compiling();
    return devices_.chosen();
}

PreparedGenerator ModelController::preparedGenerator() {
    // Nothing when the generator is where it should be.
    const auto device = generatorDevice_ == devices_.chosen() ? nullptr : deviceToCompileFor();
    return [this, generator = generator_, device, corpus = summary_, folder = folder_] {
        return moved(generator, device, corpus.get(), folder);
    };
}

// Called in the background: the generator compiled anew for device, which may be null to leave it as it is.
std::shared_ptr<SampleGenerator> ModelController::moved(const std::shared_ptr<SampleGenerator>& generator,
                                                        const std::shared_ptr<network::ChosenDevice>& device,
                                                        const CorpusSummary* corpus,
                                                        const std::filesystem::path& folder) {
    if (!device) return generator;
    const ModelBundle& bundle = generator->bundle();
    auto compiled = makeGenerator(bundle, soundsOf(bundle, corpus, folder), device->backend());
    tasks_.post([this, generator, compiled, device] {
        if (generator_ != generator) return;  // another model has been chosen
        generator_ = compiled;
        generatorDevice_ = device;
    });
    return compiled;
}

// ---- Before learning

bool ModelController::canPreview() const {
    return start_ == Start::headStart && summary_ && !summary_->files.empty() && !isReady();
}

PreparedGenerator ModelController::preview() {
    if (isReady()) return preparedGenerator();
    if (preview_) return [ready = preview_] { return ready; };
    // On the processor, also where something else learns meanwhile.
    return [this, order = trainingOrder(), summary = summary_, cancel = previewCancel_] {
        ModelBundle bundle =
            ModelTrainer::beforeLearning(*summary, order.options(), {}, cancel->token(), *processor_);
        ClipSounds sounds = ClipSounds::inFolder(bundle, *summary);
        auto made = makeGenerator(std::move(bundle), std::move(sounds), *processor_);
        tasks_.post([this, made, cancel] {
            if (cancel == previewCancel_) preview_ = made;
        });
        return made;
    };
}

void ModelController::cancelPreview() {
    previewCancel_->cancel();
    previewCancel_ = std::make_shared<CancelFlag>();
    preview_.reset();
}

// ---- The training

ModelController::TrainingOrder ModelController::trainingOrder() const {
    return {
        .quality = quality_,
        .profile = analysis_,
        .keepsSounds = keepsSounds_,
        .headStart = start_ == Start::headStart ? std::optional(environment().headStartFolder) : std::nullopt,
        .adjust = environment().adjustTraining};
}

// One that nobody could look at is no worse than the new one.
ModelStore::Former ModelController::former() const {
    return isUnopened_ ? ModelStore::Former::kept : ModelStore::Former::replaced;
}

void ModelController::train() {
    if (activity().isGenerating || activity().isAuditioning || activity().isTrying) {
        emit notice(Activity::waitNotice());
        return;
    }
    train([] {});
}

void ModelController::train(const Returned& returned) {
    if (!summary_ || isTraining_) {
        returned();
        return;
    }
    emit errorRaised({});
    lossHistory_.clear();
    training_ = TrainingProgress();
    training_->message = Message::verbatim(tr("Starting…").toStdString());
    emit progressed();
    trainCancel_ = std::make_shared<CancelFlag>();
    enough_ = std::make_shared<CancelFlag>();
    assign(*this, isTraining_, true, &ModelController::isTrainingChanged);
    const auto progress = [this](const TrainingProgress& record) {
        tasks_.post([this, record] { receive(record); });
        watched(Run::training, record.step);
    };
    const auto device = deviceToCompileFor();
    tasks_.run([this, training = Training{.summary = summary_,
                                          .order = trainingOrder(),
                                          .progress = progress,
                                          .cancel = trainCancel_->token(),
                                          .hooks = sound_.begin(enough_->token()),
                                          .device = device,
                                          .root = environment().modelsRoot,
                                          .looks = environment().looks,
                                          .former = former()}] { return learn(training); },
               [this, returned, device](Trained trained) {
                   const int gone = trained.gone;
                   if (gone == 0) learned(std::move(trained), device);
                   trainingEnded(returned);
                   if (gone > 0) emit filesGone(gone);
               },
               [this, returned](const TaskFailure& failure) {
                   report(failure);
                   trainingEnded(returned);
               });
}

// In the background.
ModelController::Trained ModelController::learn(const Training& training) {
    const CorpusSummary& summary = *training.summary;
    if (training.looks->at(summary.directory).kind == Place::Kind::noAnswer)
        throw Failure(Folders::noAnswer(toQString(summary.directory)).toStdString());
    if (const int gone = goneFiles(summary); gone > 0) return {.gone = gone};
    const auto folder = ModelStore::directory(summary, training.root);
    ModelStore::requireRoom(folder);
    TrainingOptions options;
    try {
        options = training.order.options();
    } catch (const Failure& failure) {
        tellOfStart(Words::of(failure));
        options = training.order.withStart(nullptr);
    }
    network::Backend& backend = training.device->backend();
    ModelBundle bundle =
        ModelTrainer::train(summary, options, training.progress, training.cancel, backend, training.hooks);
    Trained trained;
    trained.folder = folder;
    const Storing storing{.folder = folder,
                          .former = training.former,
                          .sounds = training.order.keepsSounds ? training.summary : nullptr};
    trained.storingFailure = whyNotStored(bundle, storing, training.cancel);
    if (trained.storingFailure) trained.unstored = Unstored{.generator = nullptr, .storing = storing};
    ClipSounds sounds = ClipSounds::inFolder(bundle, summary);
    trained.generator = makeGenerator(std::move(bundle), std::move(sounds), backend);
    if (trained.unstored) trained.unstored->generator = trained.generator;
    return trained;
}

void ModelController::learned(Trained trained, const std::shared_ptr<network::ChosenDevice>& device) {
    folder_ = trained.folder;
    setGenerator(std::move(trained.generator), device);
    removeUnstored(folder_);
    if (trained.unstored) addUnstored(*std::move(trained.unstored));
    trained.storingFailure ? report(*trained.storingFailure) : emit trainingFinished();
}

// From work in the background.
void ModelController::tellOfStart(const QString& problem) {
    tasks_.post([this, problem] {
        emit notice(tr("The head start cannot be used, so learning begins from scratch. %1").arg(problem));
    });
}

// In the background. Throws as ModelStore::replace.
void ModelController::store(const ModelBundle& bundle, const Storing& storing,
                            const std::stop_token& cancel) {
    const std::string sounds = storing.sounds ? soundsToKeep(bundle, *storing.sounds, cancel) : std::string();
    ModelStore::replace(bundle, storing.folder, cancel, ModelStore::storingPatience, storing.former, sounds);
}

// In the background. A model is worth more than its sounds: without those that cannot be read it is stored
// all the same.
std::string ModelController::soundsToKeep(const ModelBundle& bundle, const CorpusSummary& corpus,
                                          const std::stop_token& cancel) {
    try {
        return ClipSounds::inFolder(bundle, corpus).toKeep(bundle, cancel);
    } catch (const Failure& failure) {
        tasks_.post([this, problem = Words::of(failure)] {
            emit notice(tr("The sounds could not be kept with the model. %1").arg(problem));
        });
        return {};
    }
}

// Stores a model. Returns why that could not be done where it may be done later, so that nothing is lost of
// what took minutes to learn. Throws as ModelStore::replace for everything else.
std::optional<TaskFailure> ModelController::whyNotStored(const ModelBundle& bundle, const Storing& storing,
                                                         const std::stop_token& cancel) {
    try {
        store(bundle, storing, cancel);
    } catch (const ModelBusyError& error) {
        return TaskFailure{Words::of(error)};
    } catch (const FileError& error) {
        return TaskFailure{Words::of(error)};
    }
    return std::nullopt;
}

void ModelController::trainingEnded(const Returned& returned) {
    trainCancel_.reset();
    enough_.reset();
    sound_.end();
    assign(*this, isCancelling_, false, &ModelController::isCancellingChanged);
    assign(*this, isTraining_, false, &ModelController::isTrainingChanged);
    returned();
}

void ModelController::receive(const TrainingProgress& progress) {
    if (!isTraining_) return;
    training_ = progress;
    emit progressed();
    if (progress.phase == TrainingProgress::Phase::training && progress.step > 0)
        lossHistory_.add(progress.step, double{progress.loss});
}

void ModelController::cancelTraining() {
    if (!trainCancel_) return;
    trainCancel_->cancel();
    assign(*this, isCancelling_, true, &ModelController::isCancellingChanged);
}

void ModelController::stopHere() {
    if (!canStopHere()) return;
    enough_->cancel();
    emit canStopHereChanged();
}

// ---- Values

bool ModelController::canStopHere() const {
    return enough_ && !enough_->isCancelled() && !isCancelling_ && training_ &&
           training_->phase == TrainingProgress::Phase::training && training_->step > 0;
}

const ModelBundle* ModelController::bundle() const {
    return generator_ ? &generator_->bundle() : nullptr;
}

QString ModelController::analysisLabel() const {
    return bundle() ? Words::inTable(label(bundle()->config.profile)) : QString();
}

double ModelController::clipSeconds() const {
    return bundle() ? bundle()->config.clipSeconds() : 0;
}

QString ModelController::clipSecondsText() const {
    return bundle() ? QString::fromStdString(Text::fixed(clipSeconds(), 1)) : QString();
}

QString ModelController::learnedAt() const {
    return bundle() ? ModelText::learnedAt(bundle()->metadata) : QString();
}

QString ModelController::trainedQuality() const {
    return bundle() ? ModelText::effort(bundle()->metadata) : QString();
}

QStringList ModelController::qualityLabels() const {
    QStringList labels;
    for (const QualityInfo& quality : allQualities)
        labels.append(Words::inTable(quality.label));
    return labels;
}

QStringList ModelController::qualityHelps() const {
    QStringList helps;
    for (const QualityInfo& quality : allQualities)
        helps.append(Words::inTable(quality.help));
    return helps;
}

void ModelController::setQualityIndex(int index) {
    if (index < 0 || index >= static_cast<int>(allQualities.size())) return;
    assign(*this, quality_, static_cast<Quality>(index), &ModelController::qualityChanged);
}

QStringList ModelController::analysisLabels() const {
    return labelsOf(allAnalysisProfiles);
}

QString ModelController::analysisHelp() const {
    return tr(
        "Automatic picks a fine-frequency analysis for sustained, pitched samples and a fine-time analysis "
        "for percussive ones.");
}

int ModelController::analysisIndex() const {
    return indexIn(allAnalysisProfiles, analysis_);
}

void ModelController::setAnalysisIndex(int index) {
    if (index < 0 || index >= static_cast<int>(allAnalysisProfiles.size())) return;
    assign(*this, analysis_, allAnalysisProfiles[static_cast<std::size_t>(index)],
           &ModelController::analysisChanged);
}

QStringList ModelController::startLabels() const {
    return {tr("From scratch"), tr("Head start")};
}

QString ModelController::startHelp() const {
    return tr(
        "A head start begins with a network that has learned thousands of sounds made by rule: learning "
        "takes "
        "seconds, and Audition works before it.");
}

void ModelController::setStartIndex(int index) {
    if (index < 0 || index >= startLabels().size() || index == startIndex()) return;
    start_ = static_cast<Start>(index);
    cancelPreview();
    emit startChanged();
}

void ModelController::setKeepsSounds(bool keeps) {
    assign(*this, keepsSounds_, keeps, &ModelController::keepsSoundsChanged);
}

// The length of the clips depends on the analysis, and the size on the folder.
QString ModelController::keptSoundsText() const {
    if (!summary_ || summary_->files.empty()) return tr("Store the sounds, too");
    const TrainingOptions options = trainingOrder().withStart(nullptr);
    constexpr double megabyte = 1e6;
    const double size = static_cast<double>(ClipSounds::mostToKeep(*summary_, options)) / megabyte;
    return tr("Store the sounds, too (up to %1 MB)")
        .arg(QString::fromStdString(Text::fixed(std::max(size, 0.1), 1)));
}

bool ModelController::canTrain() const {
    return summary_ && !summary_->files.empty() && !activity().isBusy();
}

QString ModelController::trainHint() const {
    if (!corpusIsChosen_) return tr("Choose a corpus first.");
    if (summary_ && summary_->files.empty()) return tr("No audio files found in this folder.");
    if (!summary_ && !activity().isScanning) return tr("This folder has not been scanned.");
    return {};
}

QString ModelController::phase() const {
    return training_ ? text(rawValue(training_->phase)) : QString();
}

QString ModelController::message() const {
    return training_ ? Words::of(training_->message) : QString();
}

int ModelController::step() const {
    return training_ ? clampedToInt(training_->step) : 0;
}

int ModelController::totalSteps() const {
    return training_ ? clampedToInt(training_->totalSteps) : 0;
}

double ModelController::fraction() const {
    return training_ ? training_->fraction : 0;
}

QString ModelController::timeLeft() const {
    if (!training_ || !training_->secondsRemaining) return {};
    return TimeText::left(*training_->secondsRemaining);
}

}  // namespace quillmere
