#include "QuillmereApp/Controllers/CandidatesController.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <stop_token>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/Controllers/NoiseText.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/ResultsModel.h"
#include "QuillmereApp/Waveform.h"
#include "QuillmereCore/Generate/SoundFile.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Parallel.h"

namespace quillmere {
namespace {

// The variation of that index that a generation with the order's seed makes.
VariationPlan planOf(const SampleGenerator& generator, const CandidatesOrder& order, std::int64_t index) {
    const std::uint64_t seed = SampleGenerator::variationSeed(order.seed, static_cast<std::uint64_t>(index));
    SampleOrigin origin = generator.draw(order.aesthetics, index, seed);
    origin.detail = order.detail;
    return {std::move(origin), order.aesthetics};
}

CandidateHandle candidateOf(AuditionedSample made, const SampleGenerator& generator) {
    auto candidate = std::make_shared<Candidate>();
    candidate->number = static_cast<int>(made.origin.index) + 1;
    candidate->prefix = generator.bundle().metadata.corpusName;
    candidate->peaks = Waveform::peaks(made.samples, ResultsModel::peakCount);
    candidate->origin = std::move(made.origin);
    candidate->sound = {.samples = std::make_shared<const std::vector<float>>(std::move(made.samples)),
                        .sampleRate = static_cast<double>(generator.sampleRate())};
    return candidate;
}

// Hands over one candidate after the other: the first as early as possible, then as many at a time as there
// are processors. Returns how many have noise in place of detail.
int renderAll(SampleGenerator& generator, const CandidatesOrder& order, const std::stop_token& stop,
              const std::function<void(CandidateHandle)>& take) {
    validate(order.aesthetics);
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
            take(candidateOf(std::move(made), generator));
        }
    }
    return withNoise;
}

GeneratedSample write(const Candidate& candidate, const std::filesystem::path& folder, OutputFormat format,
                      const FolderLooks& looks) {
    if (looks.at(folder).kind == Place::Kind::noAnswer)
        throw Failure(Folders::noAnswer(toQString(folder)).toStdString());
    return SoundFile::writeNumbered(
        {*candidate.sound.samples, static_cast<int>(candidate.sound.sampleRate), format, candidate.origin},
        folder, candidate.prefix, {});
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

void CandidatesController::start() {
    emit commanded();
    if (activity().isBusy()) {
        emit notice(Activity::waitNotice());
        return;
    }
    links_.openModelAgain();
    links_.whenModelIsLoaded([this] { begin(); });
}

void CandidatesController::begin() {
    if (canTry()) {
        emit errorRaised({});
        auto set = std::make_shared<CandidateSet>();
        set->order = links_.order();
        addSet(set);
        render(set);
    } else if (!hasModel_) {
        emit notice(QStringLiteral("There is no model to try yet. Train one first, or press Generate."));
    }
}

void CandidatesController::addSet(const SetHandle& set) {
    if (sets_.size() == mostSets) forget(sets_.front());
    sets_.push_back(set);
    showSet(set);
    done_ = 0;
    emit progressed();
    trialCancel_ = std::make_shared<CancelFlag>();
    emit isTryingChanged();
}

void CandidatesController::render(const SetHandle& set) {
    tasks_.run(
        [this, set, generator = links_.generator(), order = set->order, stop = trialCancel_->token()] {
            return renderAll(*generator(), order, stop, [this, set](CandidateHandle candidate) {
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
    ++done_;
    emit progressed();
    if (done_ == 1 && !isCancelling()) emit playRequested(candidate->name, candidate->sound);
}

void CandidatesController::ended(const SetHandle& set, int withNoise) {
    trialCancel_.reset();
    if (done_ == 0) forget(set);
    emit isTryingChanged();
    if (withNoise > 0) emit notice(noiseText(withNoise, candidatesPerSet));
}

void CandidatesController::cancel() {
    if (!isTrying()) return;
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
    std::erase(sets_, set);
    std::erase_if(discarded_, [&](const auto& entry) { return entry.first == set; });
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
        emit errorRaised(QStringLiteral("Choose an output folder first."));
        return;
    }
    emit errorRaised({});
    candidate->isBeingKept = true;
    writing_.run([candidate = *candidate, folder = toPath(*folder), format = links_.format(),
                  looks = environment().looks] { return write(candidate, folder, format, *looks); },
                 [this, candidate](const GeneratedSample& sample) {
                     candidate->isBeingKept = false;
                     candidate->file = toUrl(sample.url);
                     list_.update(candidate);
                     emit kept(sample);
                     emit notice(QStringLiteral("Kept: %1").arg(candidate->file.fileName()));
                 },
                 [this, candidate](const TaskFailure& failure) {
                     candidate->isBeingKept = false;
                     report(failure);
                 });
}

void CandidatesController::discard(int row) {
    const CandidateHandle candidate = list_.at(row);
    if (!candidate || candidate->isKept() || candidate->isBeingKept) return;
    const SetHandle& set = sets_[static_cast<std::size_t>(shown_) - 1];
    discarded_.emplace_back(set, candidate);
    std::erase(set->candidates, candidate);
    list_.remove(row);
    emit removed(candidate->name);
    emit canUndoChanged();
}

bool CandidatesController::undo() {
    if (discarded_.empty()) return false;
    const auto [set, candidate] = discarded_.back();
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

}  // namespace quillmere
