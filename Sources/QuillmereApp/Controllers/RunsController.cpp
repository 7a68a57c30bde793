#include "QuillmereApp/Controllers/RunsController.h"

#include <QDateTime>
#include <QVariantMap>
#include <algorithm>
#include <map>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/ModelIdentity.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

std::vector<JournalRun> runsOfCorpus(const CorpusSummary& corpus, const SampleGenerator* model,
                                     const std::optional<fs::path>& journal, const std::stop_token& stop) {
    if (!journal) return {};
    return runsOf({.name = ModelStore::corpusName(corpus.directory),
                   .fingerprint = corpus.fingerprint(),
                   .model = model ? modelIdentity(model->bundle()) : std::string()},
                  Journal(*journal), {}, stop);
}

fs::path pathOf(const JournalEntry& entry) {
    return toPath(QString::fromStdString(entry.file));
}

// Those that are gone have no length.
std::vector<GeneratedSample> samplesOf(const JournalRun& run, const FolderLooks& looks,
                                       const std::stop_token& stop) {
    std::map<fs::path, bool> answers;
    std::vector<GeneratedSample> samples;
    for (const JournalEntry& entry : run.files) {
        throwIfCancelled(stop);
        const fs::path file = pathOf(entry);
        const auto [folder, isNew] = answers.try_emplace(file.parent_path(), false);
        if (isNew) folder->second = looks.at(folder->first).kind == Place::Kind::folder;
        const auto info = folder->second ? AudioIO::info(file) : std::nullopt;
        samples.push_back(
            {.url = file, .seconds = info ? info->duration : 0, .origin = entry.recipe.origin()});
    }
    return samples;
}

std::optional<CandidatesRelation> relationOf(const JournalSet& set) {
    if (!set.parent || !set.first.lineage) return std::nullopt;
    using Way = CandidatesRelation::Way;
    const std::map<std::string, Way> ways{{"like", Way::like}, {"body", Way::body}, {"skin", Way::skin}};
    const auto way = ways.find(set.first.lineage->way);
    if (way == ways.end()) return std::nullopt;
    return CandidatesRelation{
        .way = way->second, .parent = set.parent->recipe, .name = QString::fromStdString(set.parent->name)};
}

CandidatesOrder orderOf(const JournalSet& set) {
    return {.aesthetics = set.first.aesthetics,
            .seed = set.first.seed,
            .detail = set.first.detail,
            .relation = relationOf(set),
            .isNoted = true,
            .model = set.first.model};
}

QString dateText(const std::string& made) {
    return Words::of(QDateTime::fromString(QString::fromStdString(made), Qt::ISODate));
}

}  // namespace

RunsController::RunsController(const Environment& environment, PresetNamer presetOf, PresentModel model)
    : Controller(environment), presetOf_(std::move(presetOf)), model_(std::move(model)) {
    connect(this, &Controller::activityChanged, this, &RunsController::giveWay);
}

RunsController::~RunsController() {
    cancel();
}

void RunsController::setCorpus(std::shared_ptr<const CorpusSummary> corpus) {
    if (corpus == corpus_) return;
    cancel();
    corpus_ = std::move(corpus);
    take({});
    emit canShowChanged();
}

void RunsController::setLooking(std::shared_ptr<CancelFlag> cancel) {
    isOpening_ = false;
    cancel_ = std::move(cancel);
    assign(*this, isLooking_, cancel_ != nullptr, &RunsController::isLookingChanged);
}

void RunsController::cancel() {
    if (cancel_) cancel_->cancel();
    setLooking(nullptr);
}

void RunsController::forget() {
    if (!isOpening_) cancel();
    take({});
}

// The results are to be those of the run that begins.
void RunsController::giveWay() {
    if (isOpening_ && activity().isGenerating) cancel();
}

void RunsController::take(std::vector<JournalRun> runs) {
    runs_ = std::make_shared<const std::vector<JournalRun>>(std::move(runs));
    emit runsChanged();
}

void RunsController::look() {
    if (!canShow()) return;
    cancel();
    setLooking(std::make_shared<CancelFlag>());
    tasks_.run([corpus = corpus_, model = model_(), journal = environment().journalFile,
                stop = cancel_->token()] { return runsOfCorpus(*corpus, model.get(), journal, stop); },
               [this, wanted = cancel_](std::vector<JournalRun> runs) {
                   if (wanted->isCancelled()) return;
                   setLooking(nullptr);
                   take(std::move(runs));
               },
               [this, wanted = cancel_](const TaskFailure& failure) {
                   if (wanted->isCancelled()) return;
                   setLooking(nullptr);
                   report(failure);
               });
}

const JournalRun* RunsController::at(int row) const {
    return row >= 0 && row < std::ssize(*runs_) ? &(*runs_)[static_cast<std::size_t>(row)] : nullptr;
}

void RunsController::open(int row) {
    const JournalRun* const run = at(row);
    if (!run) return;
    if (activity().isBusy()) {
        emit notice(Activity::waitNotice());
    } else if (run->set) {
        emit setWanted(orderOf(*run->set));
    } else {
        openFiles(row);
    }
}

void RunsController::openFiles(int row) {
    cancel();
    setLooking(std::make_shared<CancelFlag>());
    isOpening_ = true;
    tasks_.run(
        [runs = runs_, row, looks = environment().looks, stop = cancel_->token()] {
            return samplesOf(runs->at(static_cast<std::size_t>(row)), *looks, stop);
        },
        [this, wanted = cancel_, runs = runs_, row](const std::vector<GeneratedSample>& samples) {
            if (wanted->isCancelled()) return;
            setLooking(nullptr);
            const JournalRun& run = runs->at(static_cast<std::size_t>(row));
            emit filesOpened(samples, std::make_shared<const RecipeBase>(baseOf(run.recipe())),
                             toUrl(pathOf(run.files.front()).parent_path()));
        },
        [this, wanted = cancel_](const TaskFailure& failure) {
            if (wanted->isCancelled()) return;
            setLooking(nullptr);
            report(failure);
        });
}

void RunsController::useSettings(int row) {
    if (const JournalRun* const run = at(row)) emit settingsWanted(run->recipe());
}

// ---- Values

QVariantMap RunsController::shown(const JournalRun& run) const {
    const Recipe& recipe = run.recipe();
    QString what;
    QString place;
    if (run.set) {
        const auto count = static_cast<int>(run.set->count);
        what = count == 1 ? tr("1 candidate") : tr("%n candidates", nullptr, count);
        if (run.set->parent)
            place = tr("Relatives of %1").arg(Words::ofSound(QString::fromStdString(run.set->parent->name)));
    } else {
        const auto count = static_cast<int>(run.files.size());
        what = count == 1 ? tr("1 file") : tr("%n files", nullptr, count);
        place =
            Folders::displayed(toQString(pathOf(run.files.front()).parent_path()), environment().homeFolder);
    }
    return {{QStringLiteral("date"), dateText(run.made())},
            {QStringLiteral("what"), what},
            {QStringLiteral("preset"), presetOf_(recipe.aesthetics)},
            {QStringLiteral("seed"), QString::number(recipe.seed)},
            {QStringLiteral("place"), place},
            {QStringLiteral("isSet"), run.set.has_value()}};
}

QVariantList RunsController::runs() const {
    QVariantList rows;
    for (const JournalRun& run : *runs_)
        rows.append(shown(run));
    return rows;
}

}  // namespace quillmere
