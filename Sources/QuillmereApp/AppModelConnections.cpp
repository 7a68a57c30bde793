// Which subject of the application tells which other one, and what they ask of one another.
#include <chrono>

#include "QuillmereApp/AppModel.h"
#include "QuillmereApp/FilePath.h"

namespace quillmere {

std::array<Controller*, 18> AppModel::controllers() {
    return {&playback_, &character_, &output_,   &corpus_,     &model_,      &corpusFiles_,
            &report_,   &models_,    &map_,      &generation_, &candidates_, &inspector_,
            &files_,    &runs_,      &measures_, &drops_,      &kits_,       &sweep_};
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
        awaited_.reset();
        corpusChanged();
        output_.setCorpus(corpus_.url());
        generation_.results()->setSamples({});
    });
    connect(&corpus_, &CorpusController::scanStarted, &model_, &ModelController::forget);
    connect(&corpus_, &CorpusController::scanStarted, &models_, &ModelsController::withdrawOffer);
    connect(&corpus_, &CorpusController::summaryChanged, this, &AppModel::corpusChanged);
    connect(&corpus_, &CorpusController::storedModelFound, this, &AppModel::openStoredModel);
    connect(&corpus_, &CorpusController::noStoredModelFound, this, [this] { openStoredModel({}); });
    connect(&models_, &ModelsController::loadRequested, &model_, &ModelController::load);
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
        if (!model_.isTraining()) playback_.stopIfPlaying(model_.sound()->url());
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
    connect(&map_, &MapController::isShownChanged, this, &AppModel::mapResults);
    connect(&map_, &MapController::candidatesWanted, &candidates_, &CandidatesController::startRelated);
    connect(&files_, &FilesController::favouritesChanged, &map_, &MapController::lookAtFavourites);
}

void AppModel::connectCandidates() {
    connect(&candidates_, &CandidatesController::isTryingChanged, this,
            &AppModel::activityOfControllersChanged);
    connect(&candidates_, &CandidatesController::playRequested, &playback_, &PlaybackController::playSound);
    connect(&candidates_, &CandidatesController::togglePlayRequested, &playback_,
            &PlaybackController::togglePlaySound);
    connect(&playback_, &PlaybackController::asked, &candidates_, &CandidatesController::asked);
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
    // A sound that is played again and again is followed by no other one.
    connect(&playback_, &PlaybackController::finished, this, [this](const QUrl& name) {
        if (!inspector_.playsAgain(name)) candidates_.finished(name);
    });
    connect(&inspector_, &InspectorController::candidatesWanted, &candidates_,
            &CandidatesController::startRelated);
    connect(&files_, &FilesController::trashed, &candidates_, &CandidatesController::fileTrashed);
    connect(&files_, &FilesController::cameBack, &candidates_, &CandidatesController::fileCameBack);
    connect(&files_, &FilesController::filesChanged, &inspector_, &InspectorController::refresh);
    connect(&files_, &FilesController::filesChanged, generation_.results(), &ResultsModel::refresh);
    connect(&files_, &FilesController::filesChanged, &output_, &OutputController::look);
    connect(&files_, &FilesController::renamed, &candidates_, &CandidatesController::rename);
    connect(&files_, &FilesController::renamed, &inspector_, &InspectorController::rename);
    connect(&files_, &FilesController::renamed, &generation_, &GenerationController::rename);
    connect(&files_, &FilesController::renamed, &playback_, &PlaybackController::rename);
    connect(&files_, &FilesController::renamed, this, &AppModel::mapResults);
    connect(&files_, &FilesController::favouritesChanged, &inspector_, &InspectorController::refresh);
    connect(&files_, &FilesController::favouritesChanged, generation_.results(),
            &ResultsModel::favouritesChanged);
    generation_.results()->setFavourites([this](const QUrl& file) { return files_.isFavourite(file); });
}

void AppModel::connectRunsOfBefore() {
    connect(&runs_, &RunsController::filesOpened, &generation_, &GenerationController::showEarlier);
    connect(&runs_, &RunsController::setWanted, &candidates_, &CandidatesController::startEarlier);
    connect(&runs_, &RunsController::settingsWanted, this, &AppModel::takeSettings);
}

void AppModel::connectMeasures() {
    generation_.results()->setMeasures([this](const QUrl& file) { return measures_.of(file); });
    candidates_.list()->setMeasures(
        [this](const Candidate& candidate) { return measures_.of(candidate.name, candidate.sound); });
    connect(&inspector_, &InspectorController::printsChanged, &measures_,
            &MeasuresController::comparisonChanged);
    connect(&measures_, &MeasuresController::changed, generation_.results(), &ResultsModel::measuresChanged);
    connect(&measures_, &MeasuresController::changed, candidates_.list(), &CandidatesModel::measuresChanged);
    connect(&measures_, &MeasuresController::settled, generation_.results(), &ResultsModel::measuresSettled);
    connect(&inspector_, &InspectorController::printsFailed, &measures_,
            &MeasuresController::comparisonFailed);
    connect(&candidates_, &CandidatesController::removed, &measures_, &MeasuresController::forget);
    connect(generation_.results(), &ResultsModel::replaced, &measures_, [this] {
        measures_.keepFiles([this](const QUrl& file) { return generation_.results()->rowOf(file) >= 0; });
    });
}

void AppModel::connectDrops() {
    connect(&drops_, &DropsController::folderDropped, this, &AppModel::takeFolder);
    connect(&drops_, &DropsController::soundDropped, this, &AppModel::takeSound);
    connect(&inspector_, &InspectorController::printsChanged, &drops_, &DropsController::comparisonChanged);
    connect(&inspector_, &InspectorController::printsFailed, &drops_, &DropsController::comparisonFailed);
    connect(&model_, &ModelController::bundleChanged, this, &AppModel::showAwaitedSound);
    connect(&character_, &CharacterController::detailWanted, &output_, &OutputController::setDetail);
    connect(&kits_, &KitController::isMakingChanged, this, &AppModel::activityOfControllersChanged);
    connect(&kits_, &KitController::made, &output_, &OutputController::look);
}

void AppModel::connectSliders() {
    connect(&sweep_, &SweepController::renderingChanged, this, &AppModel::activityOfControllersChanged);
    connect(&sweep_, &SweepController::playRequested, &playback_, &PlaybackController::playSound);
    connect(&sweep_, &SweepController::togglePlayRequested, &playback_, &PlaybackController::togglePlaySound);
    connect(&sweep_, &SweepController::removed, &playback_, &PlaybackController::stopIfPlaying);
    connect(&sweep_, &SweepController::taken, character_.parameters(), &ParameterModel::setValue);
    // A render starts when the value rests.
    followSoon_.setSingleShot(true);
    followSoon_.setInterval(std::chrono::milliseconds(120));
    connect(character_.parameters(), &ParameterModel::valuesChanged, this, [this] {
        if (playback_.followsSliders() && !character_.isComparing()) followSoon_.start();
    });
    connect(&followSoon_, &QTimer::timeout, &generation_, &GenerationController::follow);
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
        .presentSeed = [this] { return character_.presentSeed(); },
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
                auto folder = output_.folder();
                if (folder) output_.remember(*folder);
                return folder;
            },
        .format = [this] { return output_.format(); },
        .playsAll = [this] { return playback_.playsCandidates(); },
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

}  // namespace quillmere
