#include "QuillmereApp/Controllers/MeasuresController.h"

#include <chrono>
#include <utility>

#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

using namespace std::chrono_literals;
using Inspection::CorpusPrints;

struct Measured {
    std::shared_ptr<const SoundPrint> print;
    SoundMeasure measure;
    std::shared_ptr<const CorpusPrints> comparedWith;
};

PlayableSound soundOf(const QUrl& url, const PlayableSound& sound, const FolderLooks& looks) {
    if (sound.samples) return sound;
    const std::filesystem::path file = toPath(url);
    if (looks.at(file.parent_path()).kind == Place::Kind::noAnswer)
        throw Failure(Folders::noAnswer(toQString(file)).toStdString());
    return Inspection::read(file);
}

double noveltyOf(const SoundPrint& print, const CorpusPrints& corpus) {
    const auto nearest = corpus.nearest(print, 1);
    return nearest.empty() ? -1 : nearest.front().distance;
}

Measured measured(std::shared_ptr<const SoundPrint> print, std::shared_ptr<const CorpusPrints> corpus) {
    Measured found{.print = std::move(print), .measure = {}, .comparedWith = std::move(corpus)};
    if (!found.print) return found;
    found.measure.brightness = Inspection::brightness(*found.print);
    if (found.comparedWith) found.measure.novelty = noveltyOf(*found.print, *found.comparedWith);
    return found;
}

}  // namespace

MeasuresController::MeasuresController(const Environment& environment, Links links)
    : Controller(environment), links_(std::move(links)) {
    announceSoon_.setSingleShot(true);
    announceSoon_.setInterval(250ms);
    connect(&announceSoon_, &QTimer::timeout, this, &MeasuresController::announce);
    connect(this, &Controller::activityChanged, this, &MeasuresController::activityTurned);
}

void MeasuresController::setCorpus(const std::shared_ptr<const CorpusSummary>& corpus) {
    corpusFiles_ = corpus ? corpus->files.size() : 0;
    // Nobody looks at the sounds of another folder any more, or they are measured once more.
    if (corpus && std::exchange(corpusFolder_, corpus->directory) != corpus->directory) {
        known_.clear();
        waiting_.clear();
    }
    isAsked_ = false;
    hasWanted_ = false;
    hasGivenWay_ = false;
    hasFailed_ = false;
    comparisonChanged();
}

// What was found out by older prints stays until it is found out by the new ones.
void MeasuresController::comparisonChanged() {
    const CorpusPrints* const prints = links_.prints().get();
    for (auto known = known_.begin(); known != known_.end(); ++known) {
        if (known->comparedWith == prints) continue;
        if (!prints) {
            known->measure.novelty = -1;
            known->comparedWith = nullptr;
        }
        if (prints && known->print && !std::exchange(known->isWaiting, true))
            waiting_.push_back({.url = known.key(), .sound = {}});
    }
    announceSoon_.start();
    goOn();
}

void MeasuresController::comparisonFailed(const QString& reason) {
    hasFailed_ = true;
    if (std::exchange(isAsked_, false)) emit errorRaised(reason);
}

void MeasuresController::compareAnyway() {
    const bool wasAsked = std::exchange(isAsked_, true);
    if (std::exchange(hasFailed_, false) || !wasAsked) hasWanted_ = false;
    wantComparison();
}

void MeasuresController::forget(const QUrl& name) {
    known_.remove(name);
    std::erase_if(waiting_, [&](const Job& job) { return job.url == name; });
}

void MeasuresController::keepFiles(const std::function<bool(const QUrl& file)>& stays) {
    const auto isGone = [&](const QUrl& url) { return url.isLocalFile() && !stays(url); };
    known_.removeIf([&](QHash<QUrl, Known>::iterator known) { return isGone(known.key()); });
    std::erase_if(waiting_, [&](const Job& job) { return isGone(job.url); });
}

void MeasuresController::announce() {
    emit changed();
    if (isMeasuring_ && sinceSettled_.isValid() && !sinceSettled_.hasExpired(5000)) return;
    sinceSettled_.start();
    emit settled();
}

SoundMeasure MeasuresController::of(const QUrl& file) {
    return find(file, {});
}

SoundMeasure MeasuresController::of(const QUrl& name, const PlayableSound& sound) {
    return find(name, sound);
}

SoundMeasure MeasuresController::find(const QUrl& url, const PlayableSound& sound) {
    Known& known = known_[url];
    if (!known.print && !known.isWaiting && !known.isHopeless) {
        known.isWaiting = true;
        waiting_.push_back({.url = url, .sound = sound});
        // Not from here: a view is reading.
        if (!std::exchange(isDue_, true))
            QMetaObject::invokeMethod(this, &MeasuresController::goOn, Qt::QueuedConnection);
    }
    return known.measure;
}

void MeasuresController::wantComparison() {
    const bool isSmall = corpusFiles_ > 0 && corpusFiles_ <= mostUnasked;
    if (hasWanted_ || corpusFiles_ == 0 || !(isSmall || isAsked_) || activity().isBusy()) return;
    hasWanted_ = true;
    hasGivenWay_ = false;
    links_.makePrints(isAsked_);
}

// What nobody has asked for gives way to what runs, and is begun anew after it.
void MeasuresController::activityTurned() {
    if (activity().isBusy() && hasWanted_ && !hasFailed_ && !isAsked_ && !links_.prints()) {
        hasWanted_ = false;
        hasGivenWay_ = true;
        links_.withdrawPrints();
    }
    goOn();
}

// Unless it was forgotten meanwhile.
void MeasuresController::learn(const QUrl& url, Known known) {
    const auto entry = known_.find(url);
    if (entry != known_.end()) *entry = std::move(known);
}

void MeasuresController::goOn() {
    isDue_ = false;
    if (isMeasuring_ || activity().isBusy()) return;
    if (isAsked_ || hasGivenWay_ || !waiting_.empty()) wantComparison();
    if (waiting_.empty()) return;
    isMeasuring_ = true;
    const Job job = std::move(waiting_.front());
    waiting_.pop_front();
    tasks_.run(
        [job, print = known_[job.url].print, corpus = links_.prints(), looks = environment().looks] {
            return measured(print ? print : Inspection::printOf(soundOf(job.url, job.sound, *looks)), corpus);
        },
        [this, url = job.url](const Measured& found) {
            isMeasuring_ = false;
            learn(url, {.measure = found.measure,
                        .print = found.print,
                        .comparedWith = found.comparedWith.get(),
                        .isHopeless = !found.print});
            if (found.print && found.comparedWith != links_.prints()) comparisonChanged();
            if (!announceSoon_.isActive()) announceSoon_.start();
            goOn();
        },
        [this, url = job.url](const TaskFailure&) {
            isMeasuring_ = false;
            learn(url, {.measure = {}, .print = {}, .isHopeless = true});
            goOn();
        });
}

}  // namespace quillmere
