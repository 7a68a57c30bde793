#include "QuillmereApp/Controllers/InspectorController.h"

#include <algorithm>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/TimeText.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

// With a sign that is as wide as a digit, for figures that change in place.
QString decibelText(double dB) {
    const QString figure = QString::number(std::abs(dB), 'f', 1);
    return (dB < 0 && figure != QLatin1String("0.0") ? QStringLiteral("−") : QString()) + figure +
           QStringLiteral(" dB");
}

QString nameOf(const std::string& clip) {
    return toQString(fs::path(clip));
}

PlayableSound readFrom(const fs::path& file, const FolderLooks& looks) {
    Folders::requireAnswer(file.parent_path(), looks);
    return Inspection::read(file);
}

struct Pair {
    PlayableSound relative;
    float subjectGain = 1;
};

// A relative, as loud as the sound that it is compared with.
Pair matched(const fs::path& file, const LevelMatch::Level& subject, const FolderLooks& looks) {
    Pair pair{.relative = readFrom(file, looks)};
    const auto level = LevelMatch::measure(*pair.relative.samples, pair.relative.sampleRate);
    const auto gains = LevelMatch::gains(subject, level);
    pair.relative.gain = gains.second;
    pair.subjectGain = gains.first;
    return pair;
}

}  // namespace

InspectorController::InspectorController(const Environment& environment) : Controller(environment) {}

InspectorController::~InspectorController() {
    stale_->cancel();
    if (comparing_) comparing_->cancel();
}

void InspectorController::setOpen(bool isOpen) {
    if (isOpen == isOpen_) return;
    isOpen_ = isOpen;
    if (!isOpen) {
        inspectNothing();
        withdraw(Need::sound);
    }
    emit isOpenChanged();
}

void InspectorController::setCorpus(std::shared_ptr<const CorpusSummary> corpus) {
    if (corpus == corpus_) return;
    corpus_ = std::move(corpus);
    fingerprint_ = corpus_ ? corpus_->fingerprint() : std::string();
    prints_.reset();
    measured_ = std::make_shared<Inspection::MeasuredFiles>();
    nearest_.clear();
    isCompared_ = false;
    ++turn_;
    stopComparing();
    emit relativesChanged();
    emit printsChanged();
    if (facts_) compare();
}

void InspectorController::makePrints(Need need) {
    if (!corpus_ || prints_) return;
    needs_.insert(need);
    measureCorpus();
}

void InspectorController::withdraw(Need need) {
    if (needs_.erase(need) > 0 && needs_.empty()) stopComparing();
}

// ---- The subject

void InspectorController::inspect(const CandidateHandle& candidate) {
    if (!isOpen_ || (subject_ && subject_->candidate == candidate)) return;
    begin(Subject{.candidate = candidate, .file = {}, .origin = candidate->origin, .base = candidate->base});
}

void InspectorController::inspect(const GeneratedSample& sample, std::shared_ptr<const RecipeBase> base) {
    if (!isOpen_ || (subject_ && !subject_->candidate && subject_->file == sample.url)) return;
    begin(
        Subject{.candidate = nullptr, .file = sample.url, .origin = sample.origin, .base = std::move(base)});
}

void InspectorController::inspectNothing() {
    if (subject_) begin(std::nullopt);
}

void InspectorController::refresh() {
    if (subject_) emit subjectChanged();
}

void InspectorController::rename(const QUrl& from, const QUrl& to) {
    if (!subject_) return;
    if (!subject_->candidate && subject_->file == toPath(from)) subject_->file = toPath(to);
    emit subjectChanged();
}

void InspectorController::begin(std::optional<Subject> subject) {
    stale_->cancel();
    stale_ = std::make_shared<CancelFlag>();
    subject_ = std::move(subject);
    facts_.reset();
    problem_.clear();
    nearest_.clear();
    isCompared_ = false;
    inTurn_ = 0;
    gain_ = 1;
    ++turn_;
    emit subjectChanged();
    emit factsChanged();
    emit relativesChanged();
    if (subject_) lookCloser();
}

void InspectorController::lookCloser() {
    const CandidateHandle& candidate = subject_->candidate;
    tasks_.run(
        [sound = candidate ? candidate->sound : PlayableSound(), file = subject_->file,
         looks = environment().looks, stale = stale_] {
            throwIfCancelled(stale->token());
            return Inspection::factsOf(sound.samples ? sound : readFrom(file, *looks));
        },
        [this, stale = stale_](Inspection::Facts facts) { taken(stale, std::move(facts)); },
        [this, stale = stale_](const TaskFailure& failure) {
            if (stale->isCancelled()) return;
            problem_ = failure.message;
            emit factsChanged();
        },
        1);
}

void InspectorController::taken(const std::shared_ptr<CancelFlag>& stale, Inspection::Facts facts) {
    if (stale->isCancelled()) return;
    facts_ = std::move(facts);
    emit factsChanged();
    compare();
}

// ---- Comparing

void InspectorController::compare() {
    if (!facts_->print || !corpus_) return;
    prints_ ? findNearest() : makePrints(Need::sound);
}

Inspection::CorpusPrints::Pace InspectorController::neededPace() const {
    using Pace = Inspection::CorpusPrints::Pace;
    return needs_ == std::set{Need::unasked} ? Pace::calm : Pace::quick;
}

// Begins anew, with all processors, when somebody asks for what was being made unasked.
void InspectorController::measureCorpus() {
    const auto pace = neededPace();
    if (comparing_ && (pace == pace_ || pace == Inspection::CorpusPrints::Pace::calm)) return;
    if (comparing_) comparing_->cancel();
    pace_ = pace;
    startMeasuring();
}

void InspectorController::startMeasuring() {
    comparing_ = std::make_shared<CancelFlag>();
    compared_ = 0;
    emit comparingChanged();
    const auto step = std::max<std::int64_t>(1, std::ssize(corpus_->files) / 100);
    const auto progress = [this, step, stop = comparing_](std::int64_t done) {
        watched(Run::comparison, done);
        if (done % step != 0) return;
        tasks_.post([this, done, stop] {
            if (stop->isCancelled()) return;
            compared_ = static_cast<int>(done);
            emit comparingChanged();
        });
    };
    tasks_.run(
        [corpus = corpus_, progress, looks = environment().looks, stop = comparing_->token(), pace = pace_,
         known = measured_] {
            Folders::requireAnswer(corpus->directory, *looks);
            return std::make_shared<const Inspection::CorpusPrints>(corpus, progress, stop, pace, known);
        },
        [this, stop = comparing_](const std::shared_ptr<const Inspection::CorpusPrints>& prints) {
            if (stop->isCancelled()) return;
            endComparing();
            prints_ = prints;
            measured_ = std::make_shared<Inspection::MeasuredFiles>();  // its work is done
            emit printsChanged();
            if (facts_) compare();
        },
        [this, stop = comparing_](const TaskFailure& failure) {
            if (stop->isCancelled()) return;
            endComparing();
            if (isOpen_) report(failure);
            emit printsFailed(failure.message);
        });
}

void InspectorController::endComparing() {
    needs_.clear();
    if (!comparing_) return;
    comparing_.reset();
    emit comparingChanged();
}

void InspectorController::stopComparing() {
    if (comparing_) comparing_->cancel();
    endComparing();
}

void InspectorController::findNearest() {
    tasks_.run(
        [prints = prints_, print = *facts_->print] { return prints->nearest(print, nearestShown); },
        [this, prints = prints_, stale = stale_](std::vector<Inspection::CorpusPrints::Neighbour> found) {
            if (stale->isCancelled() || prints != prints_) return;
            nearest_ = std::move(found);
            isCompared_ = true;
            emit relativesChanged();
        },
        [this](const TaskFailure& failure) { report(failure); });
}

int InspectorController::toCompare() const {
    return corpus_ ? corpus_->fileCount() : 0;
}

// ---- What can be heard

void InspectorController::togglePlay() {
    if (!facts_) return;
    inTurn_ = 0;
    gain_ = 1;
    ++turn_;
    emit togglePlayRequested(soundURL(), facts_->sound);
}

void InspectorController::setLoops(bool loops) {
    assign(*this, loops_, loops, &InspectorController::loopsChanged);
}

bool InspectorController::playsAgain(const QUrl& url) {
    const bool isLooped = loops_ && isOpen_ && facts_ && url == soundURL();
    if (isLooped) playSubject(gain_);
    return isLooped;
}

void InspectorController::playSubject(float gain) {
    gain_ = gain;
    PlayableSound sound = facts_->sound;
    sound.gain = gain;
    emit playRequested(soundURL(), sound);
}

void InspectorController::playInTurn(int key) {
    const std::vector<Relative> all = playableRelatives();
    if (!facts_ || !corpus_ || key < 1 || key > static_cast<int>(all.size())) return;
    const std::string clip = all[static_cast<std::size_t>(key) - 1].name;
    const bool isSubjectsTurn = inTurn_ == key;
    inTurn_ = isSubjectsTurn ? 0 : key;
    const quint64 turn = ++turn_;
    tasks_.run([file = corpus_->directory / fs::path(clip), level = facts_->level,
                looks = environment().looks] { return matched(file, level, *looks); },
               [this, turn, clip, isSubjectsTurn](const Pair& pair) {
                   if (turn != turn_) return;  // something else was asked for since
                   if (isSubjectsTurn) {
                       playSubject(pair.subjectGain);
                   } else {
                       emit playRequested(urlOf(clip), pair.relative);
                   }
               },
               [this, turn](const TaskFailure& failure) {
                   if (turn == turn_) emit notice(failure.message);
               },
               2);
}

// ---- What can be made of it

std::optional<Recipe> InspectorController::recipe() const {
    if (!hasRecipe()) return std::nullopt;
    // A candidate that was kept meanwhile has its file's format.
    const auto& base = subject_->candidate ? subject_->candidate->base : subject_->base;
    return makeRecipe(subject_->origin, *base);
}

void InspectorController::wish(CandidatesRelation::Way way) {
    const auto parent = recipe();
    if (!parent) return;
    const QString name = isFile() ? title() : Words::keptName(subject_->candidate->number);
    emit candidatesWanted({.way = way, .parent = *parent, .name = name});
}

void InspectorController::copyRecipe() {
    const auto copied = recipe();
    if (!copied) return;
    environment().copyText(QString::fromStdString(encodeJSON(*copied)));
    emit notice(tr("Recipe copied"));
}

// ---- Values

QString InspectorController::title() const {
    if (!subject_) return {};
    if (isFile()) return file().fileName();
    return Words::ofSound(Words::keptName(subject_->candidate->number));
}

QUrl InspectorController::soundURL() const {
    if (!subject_) return {};
    return subject_->candidate ? subject_->candidate->name : toUrl(subject_->file);
}

QUrl InspectorController::file() const {
    if (!subject_) return {};
    return subject_->candidate ? subject_->candidate->file : toUrl(subject_->file);
}

QString InspectorController::durationText() const {
    return facts_ ? TimeText::duration(facts_->sound.seconds()) : QString();
}

QString InspectorController::levelText() const {
    if (!facts_) return {};
    if (!(facts_->level.loudness > 0)) return tr("silent");
    return tr("%1, peak %2")
        .arg(decibelText(LevelMatch::decibels(facts_->level.loudness)),
             decibelText(LevelMatch::decibels(facts_->level.peak)));
}

double InspectorController::level() const {
    constexpr double lowest = 60;  // dB below full scale
    return facts_ ? std::clamp(1 + LevelMatch::decibels(facts_->level.loudness) / lowest, 0.0, 1.0) : 0;
}

QUrl InspectorController::urlOf(const std::string& clip) {
    QUrl url;
    url.setScheme(QStringLiteral("clip"));
    url.setPath(nameOf(clip));
    return url;
}

std::vector<InspectorController::Relative> InspectorController::sourceRelatives() const {
    std::vector<Relative> found;
    if (!subject_) return found;
    for (const SampleOrigin::Source& source : subject_->origin.sources) {
        if (source.name.empty() || found.size() == sourcesShown) break;
        found.push_back(
            {source.name, QStringLiteral("%1 %").arg(std::lround(100 * static_cast<double>(source.weight)))});
    }
    return found;
}

std::vector<InspectorController::Relative> InspectorController::nearestRelatives() const {
    std::vector<Relative> found;
    for (const auto& [name, distance] : nearest_)
        found.push_back({name, decibelText(distance)});
    return found;
}

std::vector<InspectorController::Relative> InspectorController::playableRelatives() const {
    std::vector<Relative> all;
    if (isOfThisCorpus()) all = sourceRelatives();
    for (Relative& relative : nearestRelatives())
        all.push_back(std::move(relative));
    return all;
}

QVariantList InspectorController::list(const std::vector<Relative>& relatives, int firstKey) const {
    QVariantList entries;
    for (const auto& [name, detail] : relatives) {
        entries.append(QVariantMap{{QStringLiteral("key"), firstKey > 0 ? firstKey++ : 0},
                                   {QStringLiteral("name"), nameOf(name)},
                                   {QStringLiteral("detail"), detail},
                                   {QStringLiteral("url"), urlOf(name)}});
    }
    return entries;
}

QVariantList InspectorController::sources() const {
    return list(sourceRelatives(), isOfThisCorpus() ? 1 : 0);
}

QVariantList InspectorController::nearest() const {
    const std::size_t before = isOfThisCorpus() ? sourceRelatives().size() : 0;
    return list(nearestRelatives(), static_cast<int>(before) + 1);
}

double InspectorController::distance() const {
    return nearest_.empty() ? -1 : nearest_.front().distance;
}

bool InspectorController::isOfThisCorpus() const {
    return corpus_ && subject_ && subject_->base && subject_->base->fingerprint == fingerprint_;
}

bool InspectorController::isLikeNearest() const {
    return !nearest_.empty() && kinship(distance()) == Kinship::copy;
}

bool InspectorController::isLikeSource() const {
    return subject_ && subject_->origin.sameness >= nearCopy;
}

QString InspectorController::verdict() const {
    // Which one is not known.
    if (isLikeSource() && !isLikeNearest()) return tr("Nearly a copy of a sample that it is made of");
    if (nearest_.empty()) return isCompared_ ? tr("Nothing to compare with") : QString();
    const QString name = nameOf(nearest_.front().name);
    switch (kinship(distance())) {
        case Kinship::copy:
            return tr("Nearly a copy of %1").arg(name);
        case Kinship::close:
            return tr("Close to %1").arg(name);
        case Kinship::fresh:
            return tr("New, of the kind of %1").arg(name);
        case Kinship::far:
            break;
    }
    return tr("New, and far from every sample");
}

}  // namespace quillmere
