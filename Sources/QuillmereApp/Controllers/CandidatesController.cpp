#include "QuillmereApp/Controllers/CandidatesController.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <stop_token>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/Controllers/NoiseText.h"
#include "QuillmereApp/Controllers/Noting.h"
#include "QuillmereApp/Controllers/RecipeBases.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/ResultsModel.h"
#include "QuillmereApp/Waveform.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Generate/SoundFile.h"
#include "QuillmereCore/Origin/Likeness.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"

namespace quillmere {
namespace {

constexpr double closenessToParent = 0.7;

bool isInTurn(const CandidatesOrder& order) {
    return order.relation && order.relation->way == CandidatesRelation::Way::inTurn;
}

const Recipe& parentOf(const CandidatesRelation& relation, std::int64_t index) {
    if (relation.way != CandidatesRelation::Way::inTurn) return relation.parent;
    return relation.parents[static_cast<std::size_t>(index) % relation.parents.size()];
}

// The variation of that index that a generation with the order's seed makes, or a relative.
SampleOrigin originOf(const SampleGenerator& generator, const CandidatesOrder& order, std::int64_t index) {
    if (!order.relation) {
        const auto seed = SampleGenerator::variationSeed(order.seed, static_cast<std::uint64_t>(index));
        return generator.draw(order.aesthetics, index, seed);
    }
    const Recipe& parent = parentOf(*order.relation, index);
    switch (order.relation->way) {
        case CandidatesRelation::Way::body:
            return Likeness::sameBody(parent, order.seed, index);
        case CandidatesRelation::Way::skin:
            return Likeness::sameSkin(generator, parent, order.aesthetics, order.seed, index);
        case CandidatesRelation::Way::like:
        case CandidatesRelation::Way::inTurn:
            break;
    }
    return Likeness::around(generator, std::span(&parent, 1), closenessToParent, order.seed, index);
}

VariationPlan planOf(const SampleGenerator& generator, const CandidatesOrder& order, std::int64_t index) {
    SampleOrigin origin = originOf(generator, order, index);
    origin.detail = order.detail;
    return {std::move(origin), order.aesthetics};
}

void requireItsModel(const SampleGenerator& generator, const CandidatesOrder& order) {
    if (!order.model.empty() && order.model != generator.identity())
        throw Failure(
            Words::tr("These candidates were made by another model. Open it first, or try new ones.")
                .toStdString());
    if (order.relation && parentOf(*order.relation, 0).model != generator.identity())
        throw Failure(
            Words::tr("This sound was made by another model. Choose the folder that it was made from first.")
                .toStdString());
}

// As recipes say it.
Lineage lineageOf(const CandidatesRelation& relation) {
    switch (relation.way) {
        case CandidatesRelation::Way::body:
            return {.way = "body", .parents = {}, .values = {}};
        case CandidatesRelation::Way::skin:
            return {.way = "skin", .parents = {}, .values = {}};
        case CandidatesRelation::Way::like:
        case CandidatesRelation::Way::inTurn:
            break;
    }
    return {.way = "like", .parents = {}, .values = {{"closeness", closenessToParent}}};
}

std::shared_ptr<const RecipeBase> baseOf(const SampleGenerator& generator, const CandidatesOrder& order,
                                         const std::shared_ptr<network::ChosenDevice>& device) {
    RecipeBase base = recipeBaseOf(generator, device);
    base.aesthetics = order.aesthetics;
    if (order.relation) base.lineage = lineageOf(*order.relation);
    return std::make_shared<const RecipeBase>(std::move(base));
}

CandidateHandle candidateOf(AuditionedSample made, const SampleGenerator& generator,
                            const std::shared_ptr<const RecipeBase>& base) {
    auto candidate = std::make_shared<Candidate>();
    candidate->number = static_cast<int>(made.origin.index) + 1;
    candidate->base = base;
    candidate->peaks = Waveform::peaks(made.samples, ResultsModel::peakCount);
    candidate->origin = std::move(made.origin);
    candidate->sound = {.samples = std::make_shared<const std::vector<float>>(std::move(made.samples)),
                        .sampleRate = static_cast<double>(generator.sampleRate())};
    return candidate;
}

// Hands over one candidate after the other: the first as early as possible, then as many at a time as there
// are processors. Returns how many have noise in place of detail.
int renderAll(SampleGenerator& generator, const CandidatesOrder& order,
              const std::shared_ptr<const RecipeBase>& base, const std::stop_token& stop,
              const std::function<void(CandidateHandle)>& take) {
    validate(order.aesthetics);
    requireItsModel(generator, order);
    const std::int64_t atOnce = WorkerTeam().threads();
    int withNoise = 0;
    for (std::int64_t start = 0; start < CandidatesController::candidatesPerSet;) {
        const std::int64_t end =
            start == 0 ? 1 : std::min<std::int64_t>(start + atOnce, CandidatesController::candidatesPerSet);
        std::vector<VariationPlan> plans;
        for (; start < end; ++start)
            plans.push_back(planOf(generator, order, start));
        for (AuditionedSample& made : generator.remake(plans, stop)) {
            if (made.origin.detailBasis == DetailBasis::noise) ++withNoise;
            take(candidateOf(std::move(made), generator, base));
        }
    }
    return withNoise;
}

struct Written {
    GeneratedSample sample;
    std::shared_ptr<const RecipeBase> base;
    QString noteProblem;  // why the journal lacks it; empty if it does not
};

Written write(const Candidate& candidate, const std::filesystem::path& folder, OutputFormat format,
              const FolderLooks& looks, const Noting& noting) {
    if (looks.at(folder).kind == Place::Kind::noAnswer)
        throw Failure(Folders::noAnswer(toQString(folder)).toStdString());
    RecipeBase base = *candidate.base;
    base.format = format;
    QString noteProblem;
    RecipeKeeper keeper(noting.carriers(noteProblem), base);
    GeneratedSample sample = SoundFile::writeNumbered(
        {*candidate.sound.samples, static_cast<int>(candidate.sound.sampleRate), format, candidate.origin},
        folder, base.corpusName, keeper.hooks());
    return {.sample = std::move(sample),
            .base = std::make_shared<const RecipeBase>(std::move(base)),
            .noteProblem = noteProblem.isEmpty() ? Noting::problemOf(keeper) : noteProblem};
}

}  // namespace

CandidatesController::CandidatesController(const Environment& environment, Links links)
    : Controller(environment), links_(std::move(links)) {
    connect(this, &Controller::activityChanged, this, &CandidatesController::canTryChanged);
}

CandidatesController::~CandidatesController() {
    cancel();
}

void CandidatesController::setHasModel(bool hasModel) {
    assign(*this, hasModel_, hasModel, &CandidatesController::canTryChanged);
}

// ---- A new set

void CandidatesController::start(const std::optional<CandidatesRelation>& relation) {
    startAs([this, relation] {
        CandidatesOrder order = links_.order();
        order.relation = relation;
        if (relation && !isInTurn(order)) {
            order.aesthetics = relation->parent.aesthetics;
            order.detail = relation->parent.detail;
        }
        return order;
    });
}

void CandidatesController::startEarlier(const CandidatesOrder& order) {
    startAs([order] { return order; });
}

void CandidatesController::startAs(const OrderSource& order) {
    emit commanded();
    if (activity().isBusy()) {
        emit notice(Activity::waitNotice());
        return;
    }
    links_.openModelAgain();
    links_.whenModelIsLoaded([this, order] { begin(order); });
}

void CandidatesController::begin(const OrderSource& order) {
    if (canTry()) {
        emit errorRaised({});
        auto set = std::make_shared<CandidateSet>();
        set->order = order();
        addSet(set);
        render(set);
    } else if (!hasModel_) {
        emit notice(tr("There is no model to try yet. Train one first, or press Generate."));
    }
}

void CandidatesController::addSet(const SetHandle& set) {
    sets_.push_back(set);
    showSet(set);
    done_ = 0;
    emit progressed();
    hearNoMore();
    trialCancel_ = std::make_shared<CancelFlag>();
    emit isTryingChanged();
}

void CandidatesController::render(const SetHandle& set) {
    tasks_.run(
        [this, set, generator = links_.generator(), order = set->order, stop = trialCancel_->token(),
         device = links_.device ? links_.device() : nullptr] {
            const auto ready = generator();
            const auto base = baseOf(*ready, order, device);
            return renderAll(*ready, order, base, stop, [this, set](CandidateHandle candidate) {
                const int number = candidate->number;
                tasks_.post([this, set, candidate = std::move(candidate)] { arrived(set, candidate); });
                watched(Run::generation, number);
            });
        },
        [this, set](int withNoise) { ended(set, withNoise); },
        [this, set](const TaskFailure& failure) {
            report(failure);
            ended(set, 0);
        });
}

void CandidatesController::arrived(const SetHandle& set, const CandidateHandle& candidate) {
    candidate->name = QUrl(QStringLiteral("candidate:%1").arg(++candidates_));
    set->candidates.push_back(candidate);
    if (sets_[static_cast<std::size_t>(shown_) - 1] == set) list_.insert(candidate);
    makeRoom();
    ++done_;
    emit progressed();
    // The journal's note of a set has room for one parent.
    if (done_ == 1 && !set->order.isNoted && !isInTurn(set->order)) note(set->order, *candidate);
    if (isCancelling()) return;
    if (done_ == 1) {
        hear(candidate);
    } else if (heard_ && isHeardOver_ && links_.playsAll()) {
        hearNext();
    }
}

void CandidatesController::hear(const CandidateHandle& candidate) {
    heard_ = candidate;
    isHeardOver_ = false;
    emit playRequested(candidate->name, candidate->sound);
    const int row = list_.rowOf(candidate);
    if (row >= 0) emit heard(row);
}

void CandidatesController::hearNoMore() {
    heard_.reset();
    isHeardOver_ = false;
}

void CandidatesController::asked(const QUrl& name) {
    if (!heard_) return;
    if (name != heard_->name) return hearNoMore();
    isHeardOver_ = false;
}

void CandidatesController::finished(const QUrl& name) {
    if (!heard_ || name != heard_->name) return;
    isHeardOver_ = true;
    if (links_.playsAll()) hearNext();
}

void CandidatesController::hearNext() {
    const std::vector<CandidateHandle>& newest = sets_.back()->candidates;
    const auto next = std::ranges::upper_bound(newest, heard_->number, {}, &Candidate::number);
    if (next != newest.end()) hear(*next);
}

// Not before there is something in place of what goes. The newest set stays, however large it is.
void CandidatesController::makeRoom() {
    const std::size_t before = sets_.size();
    while (sets_.size() > 1 && (sets_.size() > mostSets || bytes() > mostBytes_)) {
        const SetHandle oldest = sets_.front();
        forget(oldest);
        for (const CandidateHandle& candidate : oldest->candidates)
            emit removed(candidate->name);
    }
    if (sets_.size() < before)
        emit notice(tr("The oldest candidates were forgotten to make room for new ones."));
}

std::size_t CandidatesController::bytes() const {
    std::size_t samples = 0;
    for (const CandidateHandle& candidate : allCandidates())
        samples += candidate->sound.samples->size();
    return samples * sizeof(float);
}

// At once, so that it is known whatever becomes of the rest.
void CandidatesController::note(const CandidatesOrder& order, const Candidate& first) {
    JournalSet set{.count = candidatesPerSet,
                   .made = journalTime(),
                   .first = makeRecipe(first.origin, *first.base),
                   .parent = {}};
    if (order.relation)
        set.parent = {.name = order.relation->name.toStdString(), .recipe = order.relation->parent};
    writing_.run([set = std::move(set), noting = Noting(environment())] { return noting.note(set); },
                 [this](const QString& problem) {
                     if (!problem.isEmpty()) emit notice(problem);
                 },
                 [this](const TaskFailure& failure) { report(failure); });
}

void CandidatesController::ended(const SetHandle& set, int withNoise) {
    trialCancel_.reset();
    if (done_ == 0) forget(set);
    emit isTryingChanged();
    if (withNoise > 0) emit notice(noiseText(withNoise, candidatesPerSet));
}

// Tells once: when it is asked again in the destructor, those that listen may have gone.
void CandidatesController::cancel() {
    if (!isTrying() || isCancelling()) return;
    trialCancel_->cancel();
    emit isTryingChanged();
}

// ---- Sets

void CandidatesController::showSet(const SetHandle& set) {
    const auto place = std::ranges::find(sets_, set);
    shown_ = place == sets_.end() ? 0 : static_cast<int>(place - sets_.begin()) + 1;
    list_.show(set ? set->candidates : std::vector<CandidateHandle>());
    emit setsChanged();
}

void CandidatesController::forget(const SetHandle& set) {
    const SetHandle before = shown_ > 0 ? sets_[static_cast<std::size_t>(shown_) - 1] : nullptr;
    if (set == sets_.back()) hearNoMore();
    std::erase(sets_, set);
    std::erase_if(discarded_, [&](const Discarded& entry) { return entry.set == set; });
    emit canUndoChanged();
    showSet(before != set ? before : sets_.empty() ? nullptr : sets_.back());
}

void CandidatesController::show(int number) {
    if (number >= 1 && number <= sets() && number != shown_)
        showSet(sets_[static_cast<std::size_t>(number) - 1]);
}

QString CandidatesController::seed() const {
    return shown_ > 0 ? QString::number(sets_[static_cast<std::size_t>(shown_) - 1]->order.seed) : QString();
}

QString CandidatesController::about() const {
    if (shown_ == 0) return {};
    const auto& relation = sets_[static_cast<std::size_t>(shown_) - 1]->order.relation;
    if (!relation) return tr("Seed %1").arg(seed());
    const QString name = Words::ofSound(relation->name);
    switch (relation->way) {
        case CandidatesRelation::Way::body:
            return tr("New skins of %1").arg(name);
        case CandidatesRelation::Way::skin:
            return tr("New bodies for %1").arg(name);
        case CandidatesRelation::Way::like:
        case CandidatesRelation::Way::inTurn:
            break;
    }
    return tr("Like %1").arg(name);
}

void CandidatesController::copySeed() {
    if (shown_ > 0) environment().copyText(seed());
}

// ---- Candidates

void CandidatesController::play(int row) {
    if (const CandidateHandle candidate = list_.at(row))
        emit playRequested(candidate->name, candidate->sound);
}

void CandidatesController::togglePlay(int row) {
    if (const CandidateHandle candidate = list_.at(row))
        emit togglePlayRequested(candidate->name, candidate->sound);
}

void CandidatesController::keep(int row) {
    const CandidateHandle candidate = list_.at(row);
    if (!candidate || candidate->isKept() || candidate->isBeingKept) return;
    const std::optional<QUrl> folder = links_.outputFolder();
    if (!folder) {
        emit errorRaised(tr("Choose an output folder first."));
        return;
    }
    emit errorRaised({});
    candidate->isBeingKept = true;
    const OutputFormat format = links_.format();
    writing_.run(
        [candidate = *candidate, folder = toPath(*folder), format, looks = environment().looks,
         noting = Noting(environment())] { return write(candidate, folder, format, *looks, noting); },
        [this, candidate](const Written& written) {
            candidate->isBeingKept = false;
            candidate->file = toUrl(written.sample.url);
            candidate->base = written.base;
            list_.update(candidate);
            emit kept(written.sample, candidate->base);
            emit notice(tr("Kept: %1").arg(candidate->file.fileName()));
            if (!written.noteProblem.isEmpty()) emit notice(written.noteProblem);
        },
        [this, candidate](const TaskFailure& failure) {
            candidate->isBeingKept = false;
            report(failure);
        });
}

void CandidatesController::rename(const QUrl& from, const QUrl& to) {
    for (const CandidateHandle& candidate : allCandidates()) {
        if (candidate->file != from) continue;
        candidate->file = to;
        list_.update(candidate);
    }
}

void CandidatesController::fileTrashed(const QUrl& file) {
    for (const CandidateHandle& candidate : allCandidates()) {
        if (candidate->file != file) continue;
        candidate->trashed = std::exchange(candidate->file, QUrl());
        list_.update(candidate);
    }
}

void CandidatesController::fileCameBack(const QUrl& file) {
    for (const CandidateHandle& candidate : allCandidates()) {
        if (candidate->trashed != file) continue;
        candidate->trashed.clear();
        // One that was kept anew has its newer file.
        if (!candidate->isKept()) candidate->file = file;
        list_.update(candidate);
    }
}

// The discarded ones, too.
std::vector<CandidateHandle> CandidatesController::allCandidates() const {
    std::vector<CandidateHandle> all;
    for (const SetHandle& set : sets_)
        all.insert(all.end(), set->candidates.begin(), set->candidates.end());
    for (const Discarded& entry : discarded_)
        all.push_back(entry.candidate);
    return all;
}

void CandidatesController::discard(int row) {
    const CandidateHandle candidate = list_.at(row);
    if (!candidate || candidate->isKept() || candidate->isBeingKept) return;
    const SetHandle& set = sets_[static_cast<std::size_t>(shown_) - 1];
    discarded_.push_back({set, candidate, std::chrono::steady_clock::now()});
    std::erase(set->candidates, candidate);
    list_.remove(row);
    emit removed(candidate->name);
    emit canUndoChanged();
}

bool CandidatesController::undo() {
    if (discarded_.empty()) return false;
    const Discarded last = discarded_.back();
    const SetHandle& set = last.set;
    const CandidateHandle& candidate = last.candidate;
    discarded_.pop_back();
    const auto place = std::ranges::upper_bound(set->candidates, candidate->number, {}, &Candidate::number);
    set->candidates.insert(place, candidate);
    emit canUndoChanged();
    if (sets_[static_cast<std::size_t>(shown_) - 1] == set) {
        list_.insert(candidate);
    } else {
        showSet(set);
    }
    emit broughtBack(list_.rowOf(candidate));
    return true;
}

double CandidatesController::lastDiscarded() const {
    return discarded_.empty()
               ? 0
               : std::chrono::duration<double>(discarded_.back().when.time_since_epoch()).count();
}

}  // namespace quillmere
