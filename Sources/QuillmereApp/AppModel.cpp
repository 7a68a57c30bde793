#include "QuillmereApp/AppModel.h"

#include <QDir>
#include <algorithm>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/FilePath.h"

namespace quillmere {

using Need = InspectorController::Need;

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
                          .audition = [this](auto origin) { generation_.auditionAt(std::move(origin)); },
                          .dropAudition = [this] { generation_.dropAudition(); },
                          .isFavourite = [this](const QUrl& file) { return files_.isFavourite(file); }}),
      generation_(environment_, generationLinks()),
      candidates_(environment_, candidatesLinks()),
      inspector_(environment_),
      files_(environment_, preferences_),
      runs_(
          environment_, [this](const Aesthetics& values) { return character_.presets()->nameOf(values); },
          [this] { return model_.generator(); }),
      measures_(environment_,
                {.prints = [this] { return inspector_.prints(); },
                 .makePrints =
                     [this](bool isAsked) { inspector_.makePrints(isAsked ? Need::novelty : Need::unasked); },
                 .withdrawPrints = [this] { inspector_.withdraw(Need::unasked); }}),
      drops_(environment_, {.corpus = [this] { return corpus_.summary(); },
                            .model = [this] { return model_.generator(); },
                            .prints = [this] { return inspector_.prints(); },
                            .makePrints = [this] { inspector_.makePrints(Need::similar); },
                            .withdrawPrints = [this] { inspector_.withdraw(Need::similar); }}),
      kits_(environment_, {.generator = [this] { return model_.preparedGenerator(); },
                           .outputFolder = [this] { return output_.folder(); },
                           .device = [this] { return devices_.chosen(); }}),
      sweep_(environment_, {.request =
                                [this] {
                                    return AuditionRequest{.aesthetics = character_.aesthetics(),
                                                           .seed = character_.presentSeed(),
                                                           .detail = output_.detail()};
                                },
                            .generator = [this] { return model_.preparedGenerator(); }}),
      session_(preferences_, model_, character_, output_, playback_) {
    connectAll();
    connectCorpusAndModel();
    connectRuns();
    connectCandidates();
    connectInspector();
    connectRunsOfBefore();
    connectMeasures();
    connectDrops();
    connectSliders();
    corpus_.restore();
    character_.reloadPresets();
}

AppModel::~AppModel() {
    cancelAll();  // at once, before the first of them is waited for
}

// ---- What follows from what

void AppModel::corpusChanged() {
    model_.setCorpus(corpus_.isChosen(), corpus_.summary());
    inspector_.setCorpus(corpus_.summary());
    corpusFiles_.setCorpus(corpus_.summary());
    runs_.setCorpus(corpus_.summary());
    measures_.setCorpus(corpus_.summary());
    modelChanged();
}

// What the report, the map and the places on it are of.
void AppModel::subjectChanged() {
    report_.setCorpus(corpus_.summary());
    map_.setCorpus(corpus_.summary());
    generation_.forgetOrigins();
}

// Thousands of results are copied for it: not before somebody looks.
void AppModel::mapResults() {
    if (map_.isShown()) map_.setResults(generation_.results()->all());
}

void AppModel::openModel(const QUrl& corpus, const std::filesystem::path& folder) {
    if (!corpus_.canChoose()) return;  // a run has begun meanwhile
    corpus_.choose(corpus);
    wantedModel_ = folder;
}

// The model of the folder as it is now, if there is one; before it the one that was asked for by its own
// place.
void AppModel::openStoredModel(const std::filesystem::path& ofTheFolder) {
    const std::filesystem::path wanted = std::exchange(wantedModel_, {});
    const std::filesystem::path& found = wanted.empty() ? ofTheFolder : wanted;
    if (found.empty()) {
        models_.offerFor(corpus_.summary());
        return;
    }
    model_.load(found);
    if (found == ofTheFolder) return;
    emit notice(tr("The folder has changed since this model was learned. Retrain to learn it as it is now."));
}

void AppModel::filesGone(int files) {
    corpus_.scanAgain();
    emit notice(files == 1
                    ? tr("1 file is gone since the scan. The folder is scanned again; start once more then.")
                    : tr("%n files are gone since the scan. The folder is scanned again; start once more "
                         "then.",
                         nullptr, files));
}

void AppModel::modelChanged() {
    generation_.setSupplies({.corpusIsChosen = corpus_.isChosen(),
                             .hasSummary = corpus_.hasSummary(),
                             .modelIsLoading = model_.isLoading(),
                             .modelIsUnopened = model_.isUnopened(),
                             .hasModel = model_.isReady(),
                             .canPreview = model_.canPreview()});
    candidates_.setHasModel(model_.isReady());
    kits_.setHasModel(model_.isReady());
    sweep_.setHasModel(model_.isReady());
}

void AppModel::activityOfControllersChanged() {
    const Activity activity{.isTraining = model_.isTraining(),
                            .isGenerating = generation_.isGenerating(),
                            .isScanning = corpus_.isScanning(),
                            .isAuditioning = generation_.isAuditioning(),
                            .isTrying = candidates_.isTrying(),
                            .isMakingKit = kits_.isMaking(),
                            .isSweeping = sweep_.isRendering()};
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
        return;
    }
    const bool runs = isBusy() || model_.isLoading();
    cancelRuns();
    // Who cancels a run does not mean the files that go to the trash meanwhile.
    if (!runs) files_.cancel();
}

void AppModel::cancelAll() {
    cancelRuns();
    files_.cancel();
}

void AppModel::cancelRuns() {
    model_.cancelTraining();
    model_.cancelLoading();
    generation_.cancel();
    candidates_.cancel();
    kits_.cancel();
    sweep_.close();
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
        setError(tr("Choose an output folder first."));
        return;
    }
    output_.show(folder, generation_.results()->existingFiles());
}

// ---- Several results

void AppModel::trashResults(int row) {
    const QList<QUrl> files = generation_.results()->chosenFiles(row);
    for (const QUrl& file : files)
        playback_.stopIfPlaying(file);
    files_.trash(files);
    generation_.results()->clearSelection();
}

void AppModel::switchFavourites(int row) {
    const QList<QUrl> files = generation_.results()->chosenFiles(row);
    const bool areAll =
        std::ranges::all_of(files, [this](const QUrl& file) { return files_.isFavourite(file); });
    if (!files.isEmpty()) files_.setFavourites(files, !areAll);
}

void AppModel::makeKit(int row) {
    const ResultsModel& results = *generation_.results();
    std::vector<KitFolder::Chosen> sounds;
    for (const QUrl& file : results.chosenFiles(row)) {
        const GeneratedSample& sample = results.sampleAt(results.rowOf(file));
        if (const auto base = generation_.baseOf(file))
            sounds.push_back({.source = sample.url, .recipe = makeRecipe(sample.origin, *base)});
    }
    kits_.make(std::move(sounds));
}

// ---- The state before

void AppModel::beginComparison() {
    if (character_.beginComparison()) generation_.follow();
}

void AppModel::endComparison() {
    if (!character_.isComparing()) return;
    character_.endComparison();
    generation_.follow();
}

// ---- What was dropped

void AppModel::takeFolder(const QUrl& folder) {
    corpus_.canChoose() ? corpus_.choose(folder) : emit notice(Activity::waitNotice());
}

void AppModel::takeSound(const KnownSound& sound) {
    if (isBusy()) {
        emit notice(Activity::waitNotice());
        return;
    }
    takeSettings(sound.recipe);
    offered_.reset();
    // One that could not be stored has no folder.
    const bool isOpen = model_.isReady() && (sound.present ? sound.present == model_.generator()
                                                           : model_.storedFolder() == sound.modelFolder);
    if (isOpen || sound.modelFolder.empty() || sound.corpus.isEmpty()) {
        showTaken(sound);
        emit notice(isOpen ? tr("This sound was made here: its settings are set again.")
                           : tr("This sound was made here: its settings are set again. Its model or "
                                "the folder of that is gone."));
        return;
    }
    offered_ = sound;
    if (!corpus_.isChosen()) {  // nothing is lost
        openOfferedModel();
        emit notice(tr("This sound was made here: its settings are set again, and its model is opened."));
        return;
    }
    showTaken(sound);
    emit notice(tr("This sound was made here: its settings are set again."));
    emit modelOffered(QDir(sound.corpus).dirName());
}

void AppModel::openOfferedModel() {
    const std::optional<KnownSound> sound = std::exchange(offered_, std::nullopt);
    if (!sound || !corpus_.canChoose()) return;
    openModel(QUrl::fromLocalFile(sound->corpus), sound->modelFolder);
    awaited_ = sound;
}

void AppModel::showTaken(const KnownSound& sound) {
    const QUrl file = toUrl(sound.file);
    if (generation_.results()->rowOf(file) < 0)
        generation_.addKept({.url = sound.file, .seconds = sound.seconds, .origin = sound.recipe.origin()},
                            std::make_shared<const RecipeBase>(baseOf(sound.recipe)));
    emit soundTaken(file);
}

void AppModel::showAwaitedSound() {
    if (!awaited_ || !model_.isReady() || model_.storedFolder() != awaited_->modelFolder) return;
    showTaken(*std::exchange(awaited_, std::nullopt));
}

void AppModel::sortResults(int order) {
    if (order < ResultsModel::AsMade || order > ResultsModel::ByNovelty) return;
    if (order == ResultsModel::ByNovelty) measures_.compareAnyway();
    generation_.results()->setOrder(static_cast<ResultsModel::Order>(order));
}

// As they were when a sound was made.
void AppModel::takeSettings(const Recipe& recipe) {
    character_.take(recipe.aesthetics,
                    {.before = {.seedText = character_.seedText(), .detail = output_.detail()},
                     .after = {.seedText = QString::number(recipe.seed), .detail = recipe.detail}});
    generation_.forgetOrigins();
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
        inspector_.inspect(results.sampleAt(row), generation_.baseOf(file));
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
    files_.trash({file});
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
