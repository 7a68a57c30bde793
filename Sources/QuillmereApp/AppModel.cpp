#include "QuillmereApp/AppModel.h"

#include <utility>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/FilePath.h"

namespace quillmere {

AppModel::AppModel(Environment environment, QObject* parent)
    : QObject(parent),
      environment_(std::move(environment)),
      preferences_(environment_.settingsFile),
      appearance_(preferences_, environment_.followDesktop),
      devices_(environment_, preferences_),
      browser_(environment_.looks, environment_.homeFolder),
      playback_(environment_),
      character_(environment_),
      output_(environment_, preferences_),
      corpus_(environment_, preferences_),
      model_(environment_, devices_),
      corpusFiles_(environment_),
      report_(environment_, [this] { return model_.generator(); }),
      models_(environment_),
      map_(environment_, {.model = [this] { return model_.generator(); },
                          .audition = [this](auto origin) { generation_.auditionAt(std::move(origin)); }}),
      generation_(environment_, generationLinks()),
      candidates_(environment_, candidatesLinks()),
      inspector_(environment_),
      files_(environment_, preferences_),
      session_(preferences_, model_, character_, output_) {
    connectAll();
    connectCorpusAndModel();
    connectRuns();
    connectCandidates();
    connectInspector();
    corpus_.restore();
    character_.reloadPresets();
}

AppModel::~AppModel() {
    cancelAll();  // at once, before the first of them is waited for
}

// ---- Connections

std::array<Controller*, 13> AppModel::controllers() {
    return {&playback_, &character_, &output_,     &corpus_,     &model_,     &corpusFiles_, &report_,
            &models_,   &map_,       &generation_, &candidates_, &inspector_, &files_};
}

void AppModel::connectAll() {
    connect(&devices_, &ComputeDevices::notice, this, &AppModel::notice);
    for (Controller* controller : controllers()) {
        connect(controller, &Controller::notice, this, &AppModel::notice);
        connect(controller, &Controller::errorRaised, this, &AppModel::setError);
        connect(controller, &Controller::deviceFailed, &devices_, &ComputeDevices::failed);
    }
}

void AppModel::connectCorpusAndModel() {
    connect(&corpus_, &CorpusController::urlChanged, this, [this] {
        wantedModel_.clear();
        corpusChanged();
        output_.setCorpus(corpus_.url());
        generation_.results()->setSamples({});
    });
    connect(&corpus_, &CorpusController::scanStarted, &model_, &ModelController::forget);
    connect(&corpus_, &CorpusController::summaryChanged, this, &AppModel::corpusChanged);
    connect(&corpus_, &CorpusController::storedModelFound, &model_, &ModelController::load);
    connect(&corpus_, &CorpusController::noStoredModelFound, this, &AppModel::openWantedModel);
    connect(&models_, &ModelsController::openRequested, this, &AppModel::openModel);
    connect(&model_, &ModelController::bundleChanged, this,
            [this] { models_.setOpen(model_.storedFolder()); });
    connect(&model_, &ModelController::filesGone, this, &AppModel::filesGone);
    connect(&model_, &ModelController::bundleChanged, this, &AppModel::modelChanged);
    connect(&model_, &ModelController::bundleChanged, this, &AppModel::subjectChanged);
    connect(&model_, &ModelController::isLoadingChanged, this, &AppModel::modelChanged);
    connect(&model_, &ModelController::problemChanged, this, &AppModel::modelChanged);
    connect(&model_, &ModelController::startChanged, this, &AppModel::modelChanged);
}

void AppModel::connectRuns() {
    connect(&corpus_, &CorpusController::isScanningChanged, this, &AppModel::activityOfControllersChanged);
    connect(&model_, &ModelController::isTrainingChanged, this, [this] {
        activityOfControllersChanged();
        // What sounds has a button that stops it.
        if (!model_.isTraining() && playback_.playingURL() == model_.sound()->url()) playback_.stop();
    });
    connect(&generation_, &GenerationController::isGeneratingChanged, this, [this] {
        activityOfControllersChanged();
        if (!generation_.isGenerating()) output_.look();
    });
    connect(&generation_, &GenerationController::isAuditioningChanged, this,
            &AppModel::activityOfControllersChanged);
    connect(&generation_, &GenerationController::generationStarting, &playback_, &PlaybackController::stop);
    connect(&generation_, &GenerationController::auditionFinished, &playback_, &PlaybackController::play);
    connect(&playback_, &PlaybackController::playingURLChanged, this,
            [this] { generation_.results()->setPlaying(playback_.playingURL()); });
    connect(&playback_, &PlaybackController::fileFailed, generation_.results(), &ResultsModel::refresh);
    // What sounds has a button that stops it.
    connect(generation_.results(), &ResultsModel::playingGone, &playback_, &PlaybackController::stop);
    connect(generation_.results(), &ResultsModel::countChanged, this, &AppModel::mapResults);
}

void AppModel::connectCandidates() {
    connect(&candidates_, &CandidatesController::isTryingChanged, this,
            &AppModel::activityOfControllersChanged);
    connect(&candidates_, &CandidatesController::playRequested, &playback_, &PlaybackController::playSound);
    connect(&candidates_, &CandidatesController::togglePlayRequested, &playback_,
            &PlaybackController::togglePlaySound);
    connect(&candidates_, &CandidatesController::removed, &playback_, &PlaybackController::stopIfPlaying);
    connect(&candidates_, &CandidatesController::kept, &generation_, &GenerationController::addKept);
    connect(&candidates_, &CandidatesController::kept, &inspector_, &InspectorController::refresh);
    connect(&candidates_, &CandidatesController::kept, &output_, &OutputController::look);
    connect(&playback_, &PlaybackController::playingURLChanged, this,
            [this] { candidates_.list()->setPlaying(playback_.playingURL()); });
}

void AppModel::connectInspector() {
    connect(&inspector_, &InspectorController::playRequested, &playback_, &PlaybackController::playSound);
    connect(&inspector_, &InspectorController::togglePlayRequested, &playback_,
            &PlaybackController::togglePlaySound);
    connect(&inspector_, &InspectorController::candidatesWanted, &candidates_,
            &CandidatesController::startRelated);
    connect(&files_, &FilesController::filesChanged, generation_.results(), &ResultsModel::refresh);
    connect(&files_, &FilesController::filesChanged, &output_, &OutputController::look);
    connect(&files_, &FilesController::renamed, &candidates_, &CandidatesController::rename);
    connect(&files_, &FilesController::renamed, &inspector_, &InspectorController::rename);
    connect(&files_, &FilesController::renamed, &generation_, &GenerationController::rename);
    connect(&files_, &FilesController::renamed, this, &AppModel::mapResults);
    connect(&files_, &FilesController::favouritesChanged, &inspector_, &InspectorController::refresh);
    connect(&files_, &FilesController::favouritesChanged, generation_.results(),
            &ResultsModel::favouritesChanged);
    generation_.results()->setFavourites([this](const QUrl& file) { return files_.isFavourite(file); });
}

GenerationController::Links AppModel::generationLinks() {
    return {
        .outputFolder = [this] { return output_.folder(); },
        .generationRequest = [this](const QUrl& outputFolder) { return generationRequest(outputFolder); },
        .auditionRequest =
            [this](std::optional<std::uint64_t> seed) {
                return AuditionRequest{.aesthetics = character_.aesthetics(),
                                       .seed = seed ? *seed : character_.drawSeed(),
                                       .detail = output_.detail()};
            },
        .generator = [this] { return model_.preparedGenerator(); },
        .preview = [this] { return model_.preview(); },
        .cancelPreview = [this] { model_.cancelPreview(); },
        .openModelAgain = [this] { model_.openAgain(); },
        .whenModelIsLoaded = [this](auto returned) { model_.whenLoaded(std::move(returned)); },
        .train = [this](const auto& returned) { model_.train(returned); },
        .device = [this] { return devices_.chosen(); },
    };
}

CandidatesController::Links AppModel::candidatesLinks() {
    return {
        .order =
            [this] {
                return CandidatesOrder{.aesthetics = character_.aesthetics(),
                                       .seed = character_.drawSeed(),
                                       .detail = output_.detail()};
            },
        .generator = [this] { return model_.preparedGenerator(); },
        .openModelAgain = [this] { model_.openAgain(); },
        .whenModelIsLoaded = [this](auto returned) { model_.whenLoaded(std::move(returned)); },
        .outputFolder =
            [this] {
                const auto folder = output_.folder();
                if (folder) output_.remember(*folder);
                return folder;
            },
        .format = [this] { return output_.format(); },
        .device = [this] { return devices_.chosen(); },
    };
}

GenerationRequest AppModel::generationRequest(const QUrl& outputFolder) {
    output_.remember(outputFolder);
    return {.count = output_.count(),
            .outputDirectory = toPath(outputFolder),
            .aesthetics = character_.aesthetics(),
            .seed = character_.drawSeed(),
            .format = output_.format(),
            .namePrefix = std::nullopt,
            .detail = output_.detail()};
}

void AppModel::corpusChanged() {
    model_.setCorpus(corpus_.isChosen(), corpus_.summary());
    inspector_.setCorpus(corpus_.summary());
    corpusFiles_.setCorpus(corpus_.summary());
    modelChanged();
}

// What the report and the map are of.
void AppModel::subjectChanged() {
    report_.setCorpus(corpus_.summary());
    map_.setCorpus(corpus_.summary());
}

void AppModel::mapResults() {
    map_.setResults(generation_.results()->samples());
}

void AppModel::openModel(const QUrl& corpus, const std::filesystem::path& folder) {
    if (!corpus_.canChoose()) return;  // a run has begun meanwhile
    corpus_.choose(corpus);
    wantedModel_ = folder;
}

void AppModel::openWantedModel() {
    if (wantedModel_.empty()) return;
    model_.load(std::exchange(wantedModel_, {}));
    emit notice(QStringLiteral(
        "The folder has changed since this model was learned. Retrain to learn it as it is now."));
}

void AppModel::filesGone(int files) {
    corpus_.scanAgain();
    emit notice((files == 1 ? QStringLiteral("1 file is gone since the scan.")
                            : QStringLiteral("%1 files are gone since the scan.").arg(files)) +
                QStringLiteral(" The folder is scanned again; start once more then."));
}

void AppModel::modelChanged() {
    generation_.setSupplies({.corpusIsChosen = corpus_.isChosen(),
                             .hasSummary = corpus_.hasSummary(),
                             .modelIsLoading = model_.isLoading(),
                             .modelIsUnopened = model_.isUnopened(),
                             .hasModel = model_.isReady(),
                             .canPreview = model_.canPreview()});
    candidates_.setHasModel(model_.isReady());
}

void AppModel::activityOfControllersChanged() {
    const Activity activity{.isTraining = model_.isTraining(),
                            .isGenerating = generation_.isGenerating(),
                            .isScanning = corpus_.isScanning(),
                            .isAuditioning = generation_.isAuditioning(),
                            .isTrying = candidates_.isTrying()};
    const Activity before = std::exchange(activity_, activity);
    for (Controller* controller : controllers())
        controller->setActivity(activity);
    if (before.isBusy() != activity.isBusy()) emit isBusyChanged();
    if (before.isComputing() != activity.isComputing()) emit canChooseDeviceChanged();
}

// ---- What concerns several subjects

void AppModel::cancel() {
    // An audition while the model is learned was begun last: the learning goes on without it.
    if (generation_.isAuditioning() && model_.isTraining()) {
        generation_.cancel();
    } else {
        cancelAll();
    }
}

void AppModel::cancelAll() {
    model_.cancelTraining();
    model_.cancelLoading();
    generation_.cancel();
    candidates_.cancel();
    corpus_.cancelScan();
}

void AppModel::refresh() {
    output_.look();
    generation_.results()->refresh();
    character_.reloadPresets();
}

void AppModel::showInFileManager() {
    const QUrl last = generation_.lastOutputFolder();
    const QUrl folder = last.isEmpty() ? output_.folder().value_or(QUrl()) : last;
    if (folder.isEmpty()) {
        setError(QStringLiteral("Choose an output folder first."));
        return;
    }
    output_.show(folder, generation_.results()->existingFiles());
}

void AppModel::inspectCandidate(int row) {
    const CandidateHandle candidate = candidates_.list()->at(row);
    candidate ? inspector_.inspect(candidate) : inspector_.inspectNothing();
}

void AppModel::inspectResult(int row) {
    ResultsModel& results = *generation_.results();
    const QUrl file = results.urlAt(row);
    if (file.isEmpty()) {
        inspector_.inspectNothing();
    } else {
        inspector_.inspect(results.samples()[static_cast<std::size_t>(row)], generation_.baseOf(file));
    }
}

void AppModel::showInspectedFile() {
    const QUrl file = inspector_.file();
    if (!file.isEmpty()) output_.show(file.adjusted(QUrl::RemoveFilename | QUrl::StripTrailingSlash), {file});
}

void AppModel::trashInspectedFile() {
    const QUrl file = inspector_.file();
    if (file.isEmpty()) return;
    playback_.stopIfPlaying(file);
    files_.trash(file);
}

void AppModel::renameInspectedFile(const QString& name) {
    if (inspector_.isFile()) files_.rename(inspector_.file(), name);
}

bool AppModel::inspectedIsFavourite() const {
    return inspector_.isFile() && files_.isFavourite(inspector_.file());
}

void AppModel::toggleInspectedFavourite() {
    if (inspector_.isFile()) files_.setFavourite(inspector_.file(), !inspectedIsFavourite());
}

void AppModel::chooseDevice(int index) {
    if (canChooseDevice()) {
        devices_.choose(index);
    } else {
        emit notice(Activity::waitNotice());
    }
}

void AppModel::compareDetail() {
    if (isBusy() && !generation_.canAudition()) {
        emit notice(Activity::waitNotice());
        return;
    }
    output_.switchDetail();
    if (generation_.canAudition()) generation_.auditionAgain();
}

void AppModel::setError(const QString& message) {
    assign(*this, errorMessage_, message, &AppModel::errorMessageChanged);
}

void AppModel::dismissError() {
    setError({});
}

void AppModel::copyError() {
    if (!errorMessage_.isEmpty()) environment_.copyText(errorMessage_);
}

}  // namespace quillmere
