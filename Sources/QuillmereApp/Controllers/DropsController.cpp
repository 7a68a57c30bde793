#include "QuillmereApp/Controllers/DropsController.h"

#include <QVariantMap>
#include <span>
#include <utility>

#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Origin/RecipeLookup.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;
using Inspection::CorpusPrints;

void findItsModel(KnownSound& sound, const fs::path& modelsRoot, const FolderLooks& looks,
                  const std::stop_token& stop) {
    const FoundModel found = findModel(sound.recipe, modelsRoot, stop);
    if (!found.bundle) return;
    sound.modelFolder = found.folder;
    const QString corpus = QString::fromStdString(found.bundle->metadata.corpusPath);
    if (looks.at(toPath(corpus)).kind == Place::Kind::folder) sound.corpus = corpus;
}

std::vector<CorpusPrints::Neighbour> nearestTo(const fs::path& file, const CorpusPrints& prints) {
    const auto print = Inspection::printOf(Inspection::read(file));
    if (!print) throw Failure(Words::tr("This sound is silent: nothing is like it.").toStdString());
    return prints.nearest(*print, DropsController::mostSimilar);
}

}  // namespace

DropsController::DropsController(const Environment& environment, Links links)
    : Controller(environment), links_(std::move(links)) {}

DropsController::~DropsController() {
    if (looking_) looking_->cancel();
    if (finding_) finding_->cancel();
}

// ---- What was dropped

void DropsController::drop(const QList<QUrl>& urls) {
    const Folders::Dropped dropped = Folders::dropped(urls);
    if (!dropped.refusal.isEmpty()) {
        emit notice(dropped.refusal);
        return;
    }
    if (looking_) looking_->cancel();
    looking_ = std::make_shared<CancelFlag>();
    tasks_.run([question = Question{.path = toPath(dropped.path),
                                    .looks = environment().looks,
                                    .journal = environment().journalFile,
                                    .modelsRoot = environment().modelsRoot,
                                    .hasCorpus = links_.corpus() != nullptr,
                                    .model = links_.model()},
                stop = looking_->token()] { return lookAt(question, stop); },
               [this, wanted = looking_](const Dropped& found) {
                   if (!wanted->isCancelled()) take(found);
               },
               [this, wanted = looking_](const TaskFailure& failure) {
                   if (!wanted->isCancelled()) report(failure);
               });
}

DropsController::Dropped DropsController::lookAt(const Question& question, const std::stop_token& stop) {
    const Place::Kind kind = question.looks->at(question.path).kind;
    if (kind == Place::Kind::folder) return Folder{question.path};
    if (kind == Place::Kind::file) return lookAtFile(question, stop);
    return Refusal{Folders::refusal(kind, toQString(question.path))};
}

DropsController::Dropped DropsController::lookAtFile(const Question& question, const std::stop_token& stop) {
    const Refusal noSound{Folders::refusal(Place::Kind::file, toQString(question.path))};
    const auto info = AudioIO::info(question.path);
    if (!info) return noSound;
    const std::optional<Journal> journal =
        question.journal ? std::optional<Journal>(*question.journal) : std::nullopt;
    const KnownFile known =
        std::move(lookUp(std::span(&question.path, 1), journal ? &*journal : nullptr, stop).front());
    if (!known.recipes.empty()) {
        KnownSound sound{.file = question.path,
                         .seconds = info->duration,
                         .recipe = known.recipes.front(),
                         .modelFolder = {},
                         .corpus = {},
                         .present = {}};
        if (question.model && question.model->identity() == sound.recipe.model)
            sound.present = question.model;
        findItsModel(sound, question.modelsRoot, *question.looks, stop);
        return sound;
    }
    if (!known.isUnknown) return Refusal{Words::of(known.problem)};
    if (!question.hasCorpus) return noSound;
    return Foreign{question.path};
}

void DropsController::take(const Dropped& dropped) {
    if (const auto* const refusal = std::get_if<Refusal>(&dropped)) {
        emit notice(refusal->text);
    } else if (const auto* const folder = std::get_if<Folder>(&dropped)) {
        emit folderDropped(toUrl(folder->path));
    } else if (const auto* const sound = std::get_if<KnownSound>(&dropped)) {
        emit soundDropped(*sound);
    } else {
        cancel();
        foreign_ = std::get<Foreign>(dropped).file;
        isFound_ = false;
        similar_.clear();
        emit foreignChanged();
        emit similarChanged();
        emit foreignDropped();
    }
}

// ---- What is like it

void DropsController::findSimilar() {
    if (foreign_.empty() || isFinding() || !links_.corpus()) return;
    finding_ = std::make_shared<CancelFlag>();
    isFound_ = false;
    emit similarChanged();
    compare();
}

void DropsController::cancel() {
    if (finding_) finding_->cancel();
    if (isFinding() && !isComparing_) links_.withdrawPrints();
    endFinding();
}

void DropsController::endFinding() {
    isComparing_ = false;
    if (std::exchange(finding_, nullptr)) emit similarChanged();
}

void DropsController::comparisonChanged() {
    if (isFinding() && !isComparing_) compare();
}

void DropsController::comparisonFailed(const QString& reason) {
    if (!isFinding() || isComparing_) return;
    endFinding();
    emit errorRaised(reason);
}

void DropsController::compare() {
    const auto prints = links_.prints();
    const auto corpus = links_.corpus();
    if (!corpus) {
        endFinding();
        return;
    }
    if (!prints) {
        links_.makePrints();
        return;
    }
    isComparing_ = true;
    tasks_.run([file = foreign_, prints] { return nearestTo(file, *prints); },
               [this, wanted = finding_, corpus](std::vector<CorpusPrints::Neighbour> found) {
                   if (wanted->isCancelled()) return;
                   similar_ = std::move(found);
                   corpus_ = corpus->directory;
                   isFound_ = true;
                   endFinding();
               },
               [this, wanted = finding_](const TaskFailure& failure) {
                   if (wanted->isCancelled()) return;
                   endFinding();
                   report(failure);
               });
}

// ---- Values

QString DropsController::foreignName() const {
    return toQString(foreign_.filename());
}

QUrl DropsController::foreignUrl() const {
    return foreign_.empty() ? QUrl() : toUrl(foreign_);
}

QVariantList DropsController::similar() const {
    QVariantList rows;
    for (const auto& [name, distance] : similar_)
        rows.append(QVariantMap{{QStringLiteral("name"), toQString(fs::path(name))},
                                {QStringLiteral("detail"), QStringLiteral("%1 dB").arg(distance, 0, 'f', 1)},
                                {QStringLiteral("url"), toUrl(corpus_ / fs::path(name))}});
    return rows;
}

}  // namespace quillmere
