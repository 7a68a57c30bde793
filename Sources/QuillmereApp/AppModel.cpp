#include "QuillmereApp/AppModel.h"

#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <mutex>
#include <system_error>
#include <utility>

#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/PresetFolder.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Util/RNG.h"

namespace quillmere {
namespace {

using namespace std::chrono_literals;

const QString corpusKey = QStringLiteral("corpusPath");
const QString outputKey = QStringLiteral("outputPath");
const QString countKey = QStringLiteral("count");
const QString recentKey = QStringLiteral("recentCorpora");

// The text under a key; nothing for a list or any other type.
std::optional<QString> storedText(const Preferences& preferences, const QString& key) {
    const QVariant value = preferences.value(key);
    if (value.typeId() != QMetaType::QString) return std::nullopt;
    return value.toString();
}

// INI files hold numbers as text; what was written by this process is still a number.
std::optional<int> storedInteger(const Preferences& preferences, const QString& key) {
    const QVariant value = preferences.value(key);
    if (value.typeId() == QMetaType::Int) return value.toInt();
    if (value.typeId() != QMetaType::QString) return std::nullopt;
    // Not QVariant's own conversion: it wraps numbers that are too large.
    bool isInteger = false;
    const int number = value.toString().toInt(&isInteger);
    return isInteger ? std::optional(number) : std::nullopt;
}

// Hands scan progress on at most every 50 ms: a scan measures thousands of files a second.
template <typename Report>
Corpus::ProgressCallback thinned(Report report) {
    return [report, last = std::chrono::steady_clock::time_point()](std::size_t done,
                                                                    std::size_t total) mutable {
        const auto now = std::chrono::steady_clock::now();
        if (done != 0 && now - last < 50ms) return;
        last = now;
        report(done, total);
    };
}

// Only one program at a time stores a model in a folder, and none reads one that is half replaced.
class ModelLock {
public:
    explicit ModelLock(const std::filesystem::path& modelFolder)
        : file_(toQString(modelFolder.parent_path() / ("." + modelFolder.filename().string() + ".lock"))) {
        std::error_code error;
        std::filesystem::create_directories(modelFolder.parent_path(), error);
        if (error) throw FileError(modelFolder.parent_path(), error);
        // Where no lock can be made (a read-only folder) the store itself says what is wrong.
        if (!file_.tryLock(10000) && file_.error() == QLockFile::LockFailedError)
            throw Failure("Another program is storing the model of this folder. Try again in a moment.");
    }

private:
    QLockFile file_;
};

std::shared_ptr<SampleGenerator> loadGenerator(const std::filesystem::path& folder, ChosenDevice& device) {
    const ModelLock lock(folder);
    ModelBundle bundle = ModelStore::load(folder);
    ModelStore::validate(bundle, folder);
    return std::make_shared<SampleGenerator>(std::move(bundle), device.backend());
}

bool isUsable(const std::filesystem::path& modelFolder) {
    try {
        ModelStore::validate(ModelStore::load(modelFolder), modelFolder);
        return true;
    } catch (const Failure&) {
        return false;
    }
}

// Gives the folder a name that is not taken, so that a model that cannot be used is still there when another
// one takes its place.
void setAside(const std::filesystem::path& modelFolder) {
    std::error_code error;
    for (int number = 1; number == 1 || error == std::errc::directory_not_empty; ++number) {
        std::filesystem::path aside = modelFolder;
        aside += number == 1 ? ".damaged" : ".damaged-" + std::to_string(number);
        std::filesystem::rename(modelFolder, aside, error);
    }
    if (error) throw FileError(modelFolder, error);
}

void storeModel(const ModelBundle& bundle, const std::filesystem::path& modelFolder) {
    const ModelLock lock(modelFolder);
    if (ModelStore::exists(modelFolder) && !isUsable(modelFolder)) setAside(modelFolder);
    ModelStore::save(bundle, modelFolder);
}

std::vector<GeneratedSample> sortedByName(std::vector<GeneratedSample> samples) {
    std::stable_sort(samples.begin(), samples.end(), [](const GeneratedSample& a, const GeneratedSample& b) {
        return a.url.filename().native() < b.url.filename().native();
    });
    return samples;
}

void writeAudition(const std::vector<float>& samples, const std::filesystem::path& file, int sampleRate) {
    // The folder is everybody's: a link of that name could lead anywhere.
    std::error_code ignored;  // then it is no link
    if (std::filesystem::is_symlink(file, ignored)) std::filesystem::remove(file);
    AudioIO::write(samples, file, sampleRate, OutputFormat::wav16);
}

AppModel::OutputStatus statusOf(const QUrl& folder) {
    const QFileInfo info(folder.toLocalFile());
    if (info.isDir()) return AppModel::OutputExists;
    return info.exists() ? AppModel::OutputIsNoFolder : AppModel::OutputWillBeCreated;
}

// The folder itself or the nearest one above it that exists.
QUrl existingFolder(const QString& path) {
    QDir folder(path);
    while (!folder.exists() && !folder.isRoot())
        folder.setPath(QFileInfo(folder.path()).path());
    return QUrl::fromLocalFile(folder.path());
}

}  // namespace

struct AppModel::Scan {
    std::shared_ptr<const CorpusSummary> summary;
    std::optional<std::filesystem::path> storedModel;
};

AppModel::AppModel(Environment environment, QObject* parent)
    : QObject(parent),
      environment_(std::move(environment)),
      preferences_(environment_.settingsFile),
      appearance_(preferences_, environment_.followDesktop),
      devices_(environment_, preferences_),
      parameters_([this](const Aesthetics& aesthetics) { editParameters(aesthetics); }),
      player_(environment_.makePlayer()) {
    connect(&devices_, &ComputeDevices::notice, this, &AppModel::notice);
    connect(player_.get(), &Player::started, this, &AppModel::playbackStarted);
    connect(player_.get(), &Player::failed, this, &AppModel::playbackFailed);
    connect(player_.get(), &Player::ended, this, &AppModel::clearIfPlayed);
    playTimer_.setSingleShot(true);
    playTimer_.setTimerType(Qt::PreciseTimer);
    connect(&playTimer_, &QTimer::timeout, this, &AppModel::clearIfPlayed);
    lookSoon_.setSingleShot(true);
    lookSoon_.setInterval(150ms);
    connect(&lookSoon_, &QTimer::timeout, this, &AppModel::lookAtOutput);
    showCharacter();
    restorePreferences();
    reloadPresets();
    announceDerived();
}

AppModel::~AppModel() {
    cancel();
}

// ---- Fields

template <typename T>
void AppModel::assign(T& field, T value, void (AppModel::*changed)()) {
    if (field == value) return;
    field = std::move(value);
    emit(this->*changed)();
}

void AppModel::assignRunning(bool& field, bool value, void (AppModel::*changed)()) {
    assign(field, value, changed);
    announceDerived();
}

void AppModel::announceDerived() {
    const Derived before = std::exchange(
        derived_, {isBusy(), canTrain(), canGenerate(), canAudition(), canChooseDevice(), trainHint()});
    if (before.isBusy != derived_.isBusy) emit isBusyChanged();
    if (before.canTrain != derived_.canTrain || before.trainHint != derived_.trainHint)
        emit canTrainChanged();
    if (before.canGenerate != derived_.canGenerate || before.canAudition != derived_.canAudition)
        emit canGenerateChanged();
    if (before.canChooseDevice != derived_.canChooseDevice) emit canChooseDeviceChanged();
}

void AppModel::setError(const QString& message) {
    assign(errorMessage_, message, &AppModel::errorMessageChanged);
}

void AppModel::report(const TaskFailure& failure) {
    if (failure.ofDevice) devices_.failed(failure.message);
    if (!failure.cancelled) setError(failure.message);
}

void AppModel::watched(Run run, std::int64_t done) const {
    if (environment_.onProgress) environment_.onProgress(run, done);
}

void AppModel::dismissError() {
    setError({});
}

void AppModel::copyError() {
    if (!errorMessage_.isEmpty()) environment_.copyText(errorMessage_);
}

void AppModel::restorePreferences() {
    if (const auto path = storedText(preferences_, outputKey)) setOutputText(*path);
    if (const auto count = storedInteger(preferences_, countKey); count && *count > 0) count_ = *count;
    const QVariant recent = preferences_.value(recentKey);
    if (recent.canConvert<QStringList>()) recentCorpora_ = recent.toStringList();
    recentCorpora_.removeAll(QString());
    recentCorpora_ = recentCorpora_.mid(0, recentCorporaLimit);
    const auto corpus = storedText(preferences_, corpusKey);
    if (corpus && QFileInfo::exists(*corpus)) setCorpus(QUrl::fromLocalFile(*corpus));
}

// ---- Corpus

void AppModel::setCorpus(const QUrl& folder) {
    if (isTraining_ || isGenerating_) return;
    if (!folder.isLocalFile()) {
        setError(QStringLiteral("Only folders on this computer can be used."));
        return;
    }
    ++corpusChoice_;
    if (scanCancel_) scanCancel_->cancel();
    setError({});
    const QString path = QDir::cleanPath(QDir::current().absoluteFilePath(folder.toLocalFile()));
    corpusURL_ = QUrl::fromLocalFile(path);
    emit corpusChanged();
    summary_.reset();
    emit summaryChanged();
    setGenerator(nullptr);
    results_.setSamples({});
    preferences_.setValue(corpusKey, path);
    scan();
}

void AppModel::rememberCorpus(const QString& path) {
    recentCorpora_.removeAll(path);
    recentCorpora_.prepend(path);
    recentCorpora_ = recentCorpora_.mid(0, recentCorporaLimit);
    preferences_.setValue(recentKey, recentCorpora_);
    emit recentCorporaChanged();
}

void AppModel::forgetRecentCorpora() {
    recentCorpora_.clear();
    preferences_.setValue(recentKey, recentCorpora_);
    emit recentCorporaChanged();
}

void AppModel::chooseCorpus() {
    if (isTraining_ || isGenerating_) return;
    emit corpusChooserRequested(
        existingFolder(hasCorpus() ? QFileInfo(corpusURL_.toLocalFile()).path() : environment_.homeFolder));
}

bool AppModel::isFolder(const QUrl& url) const {
    return url.isLocalFile() && QFileInfo(url.toLocalFile()).isDir();
}

void AppModel::scan() {
    scanDone_ = 0;
    scanTotal_ = 0;
    emit scanProgressChanged();
    scanCancel_ = std::make_shared<CancelFlag>();
    assignRunning(isScanning_, true, &AppModel::isScanningChanged);
    const auto tell = thinned([this, choice = corpusChoice_](std::size_t done, std::size_t total) {
        tasks_.post([=, this] {
            if (choice == corpusChoice_) scanProgressed(done, total);
        });
    });
    const auto progress = [this, tell](std::size_t done, std::size_t total) {
        tell(done, total);
        watched(Run::scan, static_cast<std::int64_t>(done));
    };
    runInBackground(
        tasks_,
        [folder = toPath(corpusURL_), root = environment_.modelsRoot, progress,
         cancel = scanCancel_->token()] {
            Scan result;
            result.summary = std::make_shared<const CorpusSummary>(Corpus::scan(folder, progress, cancel));
            const auto modelFolder = ModelStore::directory(*result.summary, root);
            if (ModelStore::exists(modelFolder)) result.storedModel = modelFolder;
            return result;
        },
        [this, choice = corpusChoice_](Scan result) {
            if (choice == corpusChoice_) scanned(std::move(result));
        },
        [this, choice = corpusChoice_](const TaskFailure& failure) {
            if (choice == corpusChoice_) scanFailed(failure);
        });
}

void AppModel::scanProgressed(std::size_t done, std::size_t total) {
    if (!isScanning_) return;
    if (done == 0) scanClock_.start();
    scanDone_ = static_cast<int>(done);
    scanTotal_ = static_cast<int>(total);
    emit scanProgressChanged();
}

void AppModel::scanned(Scan result) {
    summary_ = std::move(result.summary);
    emit summaryChanged();
    rememberCorpus(corpusURL_.toLocalFile());
    scanEnded();
    if (result.storedModel) loadModel(*result.storedModel);
}

void AppModel::scanFailed(const TaskFailure& failure) {
    report(failure);
    scanEnded();
}

void AppModel::scanEnded() {
    scanCancel_.reset();
    assign(isCancelling_, false, &AppModel::isCancellingChanged);
    assignRunning(isScanning_, false, &AppModel::isScanningChanged);
    emit scanProgressChanged();
}

// ---- Model

void AppModel::setGenerator(std::shared_ptr<SampleGenerator> generator,
                            std::shared_ptr<ChosenDevice> device) {
    ++modelLoad_;  // what is still being loaded is out of date
    generator_ = std::move(generator);
    generatorDevice_ = std::move(device);
    emit bundleChanged();
    assign(modelProblem_, QString(), &AppModel::modelProblemChanged);
    assign(isLoadingModel_, false, &AppModel::isLoadingModelChanged);
    announceDerived();
    for (const auto& waiting : std::exchange(whenLoaded_, {}))
        waiting();
}

std::shared_ptr<ChosenDevice> AppModel::deviceToCompileFor() {
    devices_.compiling();
    return devices_.chosen();
}

// Nothing when the generator is where it should be.
std::shared_ptr<ChosenDevice> AppModel::deviceToMoveTo() {
    return generatorDevice_ == devices_.chosen() ? nullptr : deviceToCompileFor();
}

// Called in the background: the generator compiled anew for device, which may be null to leave it as it is.
std::shared_ptr<SampleGenerator> AppModel::moved(const std::shared_ptr<SampleGenerator>& generator,
                                                 const std::shared_ptr<ChosenDevice>& device) {
    if (!device) return generator;
    auto compiled = std::make_shared<SampleGenerator>(generator->bundle(), device->backend());
    tasks_.post([this, generator, compiled, device] {
        if (generator_ != generator) return;  // another model has been chosen
        generator_ = compiled;
        generatorDevice_ = device;
    });
    return compiled;
}

void AppModel::loadModel(const std::filesystem::path& folder) {
    assign(isLoadingModel_, true, &AppModel::isLoadingModelChanged);
    const quint64 load = ++modelLoad_;
    const auto device = deviceToCompileFor();
    runInBackground(
        tasks_, [folder, device] { return loadGenerator(folder, *device); },
        [this, load, device](std::shared_ptr<SampleGenerator> generator) {
            if (load == modelLoad_) setGenerator(std::move(generator), device);
        },
        [this, load](const TaskFailure& failure) {
            if (load != modelLoad_) return;
            setGenerator(nullptr);
            report(failure);
            assign(modelProblem_,
                   QStringLiteral("The stored model cannot be used. Retrain to get a new one; the files of "
                                  "the old one are kept."),
                   &AppModel::modelProblemChanged);
        });
}

void AppModel::setQualityIndex(int index) {
    if (index < 0 || index >= static_cast<int>(allQualities.size())) return;
    assign(quality_, static_cast<Quality>(index), &AppModel::qualityChanged);
}

void AppModel::setAnalysisIndex(int index) {
    if (index < 0 || index >= static_cast<int>(allAnalysisProfiles.size())) return;
    assign(analysis_, allAnalysisProfiles[static_cast<std::size_t>(index)], &AppModel::analysisChanged);
}

TrainingOptions AppModel::trainingOptions() const {
    TrainingOptions options;
    options.steps = info(quality_).steps;
    options.batchSize = 16;
    options.learningRate = 0.001F;
    options.klWeight = 0.002F;
    options.latentDim = 64;
    options.clipSeconds = std::nullopt;
    options.profile = analysis_;
    options.seed = 1;
    return environment_.adjustTraining ? environment_.adjustTraining(options) : options;
}

void AppModel::chooseDevice(int index) {
    if (canChooseDevice()) {
        devices_.choose(index);
    } else {
        emit notice(busyNotice());
    }
}

void AppModel::train() {
    if (isGenerating_) {
        emit notice(busyNotice());
        return;
    }
    train([] {});
}

void AppModel::train(const Returned& returned) {
    if (!summary_ || isTraining_) {
        returned();
        return;
    }
    setError({});
    lossHistory_.clear();
    training_ = TrainingProgress();
    training_->message = "Starting…";
    emit trainingChanged();
    trainCancel_ = std::make_shared<CancelFlag>();
    assignRunning(isTraining_, true, &AppModel::isTrainingChanged);
    const auto progress = [this](const TrainingProgress& record) {
        tasks_.post([this, record] { receive(record); });
        watched(Run::training, record.step);
    };
    const auto device = deviceToCompileFor();
    runInBackground(
        tasks_,
        [summary = summary_, options = trainingOptions(), progress, cancel = trainCancel_->token(), device,
         root = environment_.modelsRoot] {
            ModelBundle bundle = ModelTrainer::train(*summary, options, progress, cancel, device->backend());
            storeModel(bundle, ModelStore::directory(*summary, root));
            return std::make_shared<SampleGenerator>(std::move(bundle), device->backend());
        },
        [this, returned, device](std::shared_ptr<SampleGenerator> generator) {
            setGenerator(std::move(generator), device);
            emit trainingFinished();
            trainingEnded(returned);
        },
        [this, returned](const TaskFailure& failure) {
            report(failure);
            trainingEnded(returned);
        });
}

void AppModel::trainingEnded(const Returned& returned) {
    trainCancel_.reset();
    assign(isCancelling_, false, &AppModel::isCancellingChanged);
    assignRunning(isTraining_, false, &AppModel::isTrainingChanged);
    returned();
}

void AppModel::receive(const TrainingProgress& progress) {
    if (!isTraining_) return;
    training_ = progress;
    emit trainingChanged();
    if (progress.phase == TrainingProgress::Phase::training && progress.step > 0)
        lossHistory_.add(progress.step, double{progress.loss});
}

void AppModel::cancelTraining() {
    if (!trainCancel_) return;
    trainCancel_->cancel();
    assign(isCancelling_, true, &AppModel::isCancellingChanged);
}

// ---- Output

void AppModel::chooseOutput() {
    const auto folder = outputFolder();
    emit outputChooserRequested(existingFolder(folder ? folder->toLocalFile() : environment_.homeFolder));
}

void AppModel::setOutputFolder(const QUrl& folder) {
    if (!folder.isLocalFile()) {
        setError(QStringLiteral("Only folders on this computer can be used."));
        return;
    }
    setOutputText(QDir::cleanPath(folder.toLocalFile()));
}

void AppModel::setOutputText(const QString& text) {
    if (text == outputText_) return;
    assign(outputText_, text, &AppModel::outputTextChanged);
    if (outputFolder()) {
        lookSoon_.start();
    } else {
        lookAtOutput();
    }
}

void AppModel::lookAtOutput() {
    const quint64 look = ++outputLook_;
    const auto folder = outputFolder();
    if (!folder) {
        assign(outputStatus_, NoOutput, &AppModel::outputStatusChanged);
        return;
    }
    runInBackground(
        tasks_, [folder = *folder] { return statusOf(folder); },
        [this, look](OutputStatus status) {
            if (look == outputLook_) assign(outputStatus_, status, &AppModel::outputStatusChanged);
        },
        [](const TaskFailure&) {});
}

void AppModel::refresh() {
    lookAtOutput();
    results_.refresh();
    reloadPresets();
}

void AppModel::setCount(int count) {
    assign(count_, std::max(count, 1), &AppModel::countChanged);
}

void AppModel::setFormatIndex(int index) {
    if (index < 0 || index >= static_cast<int>(allOutputFormats.size())) return;
    assign(format_, allOutputFormats[static_cast<std::size_t>(index)], &AppModel::formatChanged);
}

void AppModel::showInFileManager() {
    const QUrl folder = lastOutputFolder_.isEmpty() ? outputFolder().value_or(QUrl()) : lastOutputFolder_;
    if (folder.isEmpty()) {
        setError(QStringLiteral("Choose an output folder first."));
        return;
    }
    QList<QUrl> files;
    for (int row = 0; row < results_.count(); ++row) {
        if (results_.existsAt(row)) files.append(results_.urlAt(row));
    }
    runInBackground(
        tasks_, [show = environment_.showFiles, folder, files] { return show(folder, files); },
        [this, folder](bool shown) {
            if (!shown)
                setError(QStringLiteral("No file manager could be opened. The folder is %1")
                             .arg(folder.toLocalFile()));
        },
        [this](const TaskFailure& failure) { report(failure); });
}

// ---- Character

void AppModel::showCharacter() {
    parameters_.setValues(history_.current().aesthetics);
    presets_.setCurrent(presetName(), presetEdited());
    emit aestheticsChanged();
    emit presetChanged();
    emit historyChanged();
}

void AppModel::changeCharacter(Character next) {
    history_.change(std::move(next));
    showCharacter();
}

void AppModel::editParameters(const Aesthetics& aesthetics) {
    changeCharacter({aesthetics, presetName()});
}

void AppModel::beginEdit() {
    history_.begin();
}

void AppModel::endEdit() {
    history_.end();
    emit historyChanged();
}

void AppModel::undo() {
    if (history_.undo()) showCharacter();
}

void AppModel::redo() {
    if (history_.redo()) showCharacter();
}

void AppModel::apply(const Preset& preset) {
    changeCharacter({preset.aesthetics,
                     QString::fromUtf8(preset.name.data(), static_cast<qsizetype>(preset.name.size()))});
}

void AppModel::applyPreset(const QString& name) {
    if (const auto values = presets_.find(name)) {
        changeCharacter({*values, name});
    } else if (const QString problem = presets_.problemOf(name); !problem.isEmpty()) {
        setError(problem);
    }
}

void AppModel::randomise(double amount) {
    if (!(amount > 0)) return;
    SeededRNG rng(environment_.freshSeed());
    Aesthetics next = aesthetics();
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        const double target = double{rng.uniform()};
        if (parameters_.isLocked(QString::fromUtf8(spec.id.data(), static_cast<qsizetype>(spec.id.size()))))
            continue;
        const double from = ParameterScale::position(spec, spec.value(next));
        const double to = from + std::min(amount, 1.0) * (target - from);
        next.set(spec, ParameterScale::snapped(spec, ParameterScale::value(spec, to)));
    }
    editParameters(next);
}

void AppModel::reloadPresets() {
    runInBackground(
        tasks_, [folder = environment_.presetsFolder] { return PresetFolder::list(folder); },
        [this](QList<OwnPreset> own) {
            presets_.setOwn(std::move(own));
            showCharacter();
        },
        [this](const TaskFailure& failure) { report(failure); });
}

QString AppModel::presetNameProblem(const QString& name) const {
    const QString trimmed = name.trimmed();
    if (QString problem = PresetFolder::problemWithName(trimmed); !problem.isEmpty()) return problem;
    if (presets_.rowOf(trimmed) >= 0) return QStringLiteral("A preset of that name exists already.");
    return {};
}

void AppModel::saveOwnPreset(const QString& name) {
    if (const QString problem = presetNameProblem(name); !problem.isEmpty()) {
        setError(problem);
        return;
    }
    const QString trimmed = name.trimmed();
    const Aesthetics values = aesthetics();
    runInBackground(
        tasks_,
        [folder = environment_.presetsFolder, trimmed, values] {
            if (!PresetFolder::save(folder, trimmed, values))
                throw Failure("A preset of that name exists already.");
            return PresetFolder::list(folder);
        },
        [this, trimmed](QList<OwnPreset> own) {
            presets_.setOwn(std::move(own));
            changeCharacter({aesthetics(), trimmed});
            emit presetSaved(trimmed);
        },
        [this](const TaskFailure& failure) {
            report(failure);
            reloadPresets();  // another program may have saved one of that name
        });
}

void AppModel::deleteOwnPreset(const QString& name) {
    const QList<OwnPreset>& own = presets_.own();
    if (std::none_of(own.begin(), own.end(), [&](const OwnPreset& preset) { return preset.name == name; }))
        return;
    runInBackground(
        tasks_,
        [folder = environment_.presetsFolder, name] {
            PresetFolder::remove(folder, name);
            return PresetFolder::list(folder);
        },
        [this](QList<OwnPreset> left) {
            presets_.setOwn(std::move(left));
            showCharacter();
        },
        [this](const TaskFailure& failure) { report(failure); });
}

void AppModel::setSeedText(const QString& text) {
    assign(seedText_, text, &AppModel::seedTextChanged);
}

void AppModel::reuseSeed() {
    if (!lastSeed_.isEmpty()) setSeedText(lastSeed_);
}

void AppModel::copySeed() {
    if (!lastSeed_.isEmpty()) environment_.copyText(lastSeed_);
}

std::uint64_t AppModel::drawSeed() {
    const std::uint64_t seed = typedSeed() ? *typedSeed() : environment_.freshSeed();
    assign(lastSeed_, QString::number(seed), &AppModel::lastSeedChanged);
    return seed;
}

// ---- Generation

QString AppModel::busyNotice() const {
    return QStringLiteral("Wait until the present run has ended, or cancel it.");
}

void AppModel::generate() {
    generate([] {});
}

void AppModel::generate(Returned returned) {
    if (isBusy()) {
        emit notice(busyNotice());
        returned();
        return;
    }
    if (isLoadingModel_) {
        whenLoaded_.emplace_back([this, returned] { hasModel() ? generate(returned) : returned(); });
        return;
    }
    const auto folder = outputFolder();
    if (!folder) {
        setError(QStringLiteral("Choose an output folder first."));
        returned();
        return;
    }
    if (hasModel()) {
        startGeneration(*folder, returned);
        return;
    }
    if (!summary_) {
        emit notice(QStringLiteral("Choose a corpus first."));
        returned();
        return;
    }
    train([this, folder = *folder, returned = std::move(returned)] {
        hasModel() ? startGeneration(folder, returned) : returned();
    });
}

void AppModel::startGeneration(const QUrl& folder, const Returned& returned) {
    setError({});
    stop();
    preferences_.setValue(outputKey, folder.toLocalFile());
    preferences_.setValue(countKey, count_);
    generationDone_ = 0;
    generationTotal_ = count_;
    generationClock_.start();
    generateCancel_ = std::make_shared<CancelFlag>();
    assignRunning(isGenerating_, true, &AppModel::isGeneratingChanged);
    emit generationProgressChanged();
    const GenerationRequest request{.count = count_,
                                    .outputDirectory = toPath(folder),
                                    .aesthetics = aesthetics(),
                                    .seed = drawSeed(),
                                    .format = format_,
                                    .namePrefix = std::nullopt};
    const auto progress = [this](std::int64_t done, std::int64_t total) {
        tasks_.post([=, this] {
            generationDone_ = static_cast<int>(done);
            generationTotal_ = static_cast<int>(total);
            emit generationProgressChanged();
        });
        watched(Run::generation, done);
    };
    runInBackground(
        tasks_,
        [this, generator = generator_, device = deviceToMoveTo(), request, progress,
         cancel = generateCancel_->token()] {
            return sortedByName(moved(generator, device)->generate(request, progress, cancel));
        },
        [this, folder, returned](std::vector<GeneratedSample> samples) {
            generated(std::move(samples), folder);
            generationEnded(returned);
        },
        [this, returned](const TaskFailure& failure) {
            report(failure);
            generationEnded(returned);
        });
}

void AppModel::generated(std::vector<GeneratedSample> samples, const QUrl& folder) {
    results_.setSamples(std::move(samples));
    assign(lastOutputFolder_, folder, &AppModel::lastOutputFolderChanged);
    emit generationFinished(results_.count());
}

void AppModel::generationEnded(const Returned& returned) {
    generateCancel_.reset();
    assign(isCancelling_, false, &AppModel::isCancellingChanged);
    assignRunning(isGenerating_, false, &AppModel::isGeneratingChanged);
    lookAtOutput();
    returned();
}

void AppModel::cancelGeneration() {
    if (!generateCancel_) return;
    generateCancel_->cancel();
    assign(isCancelling_, true, &AppModel::isCancellingChanged);
}

// ---- Audition

void AppModel::audition() {
    if (isBusy()) return;
    if (isLoadingModel_) {
        whenLoaded_.emplace_back([this] {
            if (hasModel()) audition();
        });
        return;
    }
    if (!hasModel()) {
        setError(QStringLiteral("There is no model to audition yet. Train one first, or press Generate."));
        return;
    }
    setError({});
    auditionIsDropped_ = false;
    assignRunning(isAuditioning_, true, &AppModel::isAuditioningChanged);
    runInBackground(
        tasks_,
        [this, generator = generator_, device = deviceToMoveTo(), values = aesthetics(), seed = drawSeed(),
         file = toPath(auditionURL())] {
            writeAudition(moved(generator, device)->audition(values, seed), file, generator->sampleRate());
        },
        [this] {
            if (!auditionIsDropped_) play(auditionURL());
            auditionEnded();
        },
        [this](const TaskFailure& failure) {
            report(failure);
            auditionEnded();
        });
}

void AppModel::auditionEnded() {
    assign(isCancelling_, false, &AppModel::isCancellingChanged);
    assignRunning(isAuditioning_, false, &AppModel::isAuditioningChanged);
}

void AppModel::cancel() {
    cancelTraining();
    cancelGeneration();
    if (scanCancel_) scanCancel_->cancel();
    // One variation is one unit of work: it is rendered to its end and not played.
    auditionIsDropped_ = isAuditioning_;
    if (isBusy()) assign(isCancelling_, true, &AppModel::isCancellingChanged);
}

// ---- Playback

void AppModel::play(const QUrl& file) {
    stop();
    if (!file.isLocalFile()) return;
    openingURL_ = file;
    player_->play(file.toLocalFile());
}

void AppModel::togglePlay(const QUrl& file) {
    if (!file.isEmpty() && (file == playingURL_ || file == openingURL_)) {
        stop();
    } else {
        play(file);
    }
}

void AppModel::stop() {
    player_->stop();
    playTimer_.stop();
    openingURL_.clear();
    setPlaying({});
}

void AppModel::setPlaying(const QUrl& file) {
    results_.setPlaying(file);
    assign(playingURL_, file, &AppModel::playingURLChanged);
}

void AppModel::playbackStarted(const QString&, double seconds) {
    setPlaying(std::exchange(openingURL_, QUrl()));
    playTimer_.start(std::chrono::milliseconds(std::llround((seconds + 0.1) * 1000)));
}

void AppModel::playbackFailed(const QString&, const QString& reason) {
    openingURL_.clear();
    results_.refresh();  // most likely the file is gone
    emit notice(reason);
}

// The mark stays for the file's duration and 0.1 s, and longer while the sound card still plays.
void AppModel::clearIfPlayed() {
    if (playTimer_.isActive() || player_->isPlaying()) return;
    setPlaying({});
}

}  // namespace quillmere
