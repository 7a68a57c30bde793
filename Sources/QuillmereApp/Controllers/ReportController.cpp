#include "QuillmereApp/Controllers/ReportController.h"

#include <algorithm>
#include <utility>

#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/Controllers/Labels.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/TemporarySound.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/Text.h"

namespace quillmere {
namespace {

constexpr std::size_t examples = 3;

QString decibels(double value) {
    return QString::fromStdString(Text::fixed(value, 1)) + QStringLiteral(" dB");
}

}  // namespace

ReportController::ReportController(const Environment& environment, Subject subject)
    : Controller(environment), subject_(std::move(subject)), processor_(network::makeCPUBackend()) {}

ReportController::~ReportController() {
    cancel();
}

void ReportController::setCorpus(std::shared_ptr<const CorpusSummary> corpus) {
    cancel();
    corpus_ = std::move(corpus);
    show(std::nullopt, {});
    emit canMakeChanged();
}

void ReportController::make() {
    if (!canMake() || isMaking() || isThere()) return;
    show(std::nullopt, {});
    progress_ = {};
    emit progressed();
    setCancel(std::make_shared<CancelFlag>());
    const auto progress = [this, wanted = cancel_](const ReportProgress& now) {
        tasks_.post([this, wanted, now] {
            if (wanted != cancel_) return;
            progress_ = now;
            emit progressed();
        });
    };
    const auto files = [this](const char* kind) {
        std::vector<std::filesystem::path> made;
        for (std::size_t i = 0; i < examples; ++i)
            made.push_back(exampleFile(kind, i));
        return made;
    };
    tasks_.run(
        [this, corpus = corpus_, model = subject_(), stop = cancel_->token(), looks = environment().looks,
         progress, originals = files("original"), learned = files("learned")] {
            if (looks->at(corpus->directory).kind == Place::Kind::noAnswer)
                throw Failure(Folders::noAnswer(toQString(corpus->directory)).toStdString());
            const ModelBundle& bundle = model->bundle();
            ReportCard card = makeReport(bundle, *corpus, *processor_, {}, progress, stop);
            const std::vector<ReportExample> sounds =
                reportExamples(card, bundle, *corpus, *processor_, examples, stop);
            for (std::size_t i = 0; i < sounds.size(); ++i) {
                writeTemporarySound(sounds[i].original, originals[i], model->sampleRate());
                writeTemporarySound(sounds[i].learned, learned[i], model->sampleRate());
            }
            return card;
        },
        [this, wanted = cancel_](ReportCard card) {
            if (wanted != cancel_) return;
            setCancel(nullptr);
            show(std::move(card), {});
        },
        [this, wanted = cancel_](const TaskFailure& failure) {
            if (wanted != cancel_) return;
            setCancel(nullptr);
            show(std::nullopt, failure.message);
        });
}

void ReportController::cancel() {
    if (!cancel_) return;
    cancel_->cancel();
    setCancel(nullptr);
}

void ReportController::setCancel(std::shared_ptr<CancelFlag> cancel) {
    cancel_ = std::move(cancel);
    emit isMakingChanged();
}

void ReportController::show(std::optional<ReportCard> card, const QString& problem) {
    card_ = std::move(card);
    problem_ = problem;
    emit reportChanged();
}

QUrl ReportController::original(const std::string& name) const {
    return toUrl(corpus_->directory / name);
}

std::filesystem::path ReportController::exampleFile(const char* kind, std::size_t index) const {
    return environment().temporaryFolder /
           ("Quillmere-report-" + std::string(kind) + "-" + std::to_string(index + 1) + ".wav");
}

// ---- Values

QString ReportController::message() const {
    switch (progress_.part) {
        case ReportProgress::Part::reading:
            return tr("Reading the samples…");
        case ReportProgress::Part::comparing:
        case ReportProgress::Part::training:
            break;
    }
    return tr("Comparing the samples…");
}

double ReportController::fraction() const {
    return progress_.total > 0 ? static_cast<double>(progress_.done) / static_cast<double>(progress_.total)
                               : 0;
}

QString ReportController::grade() const {
    return card_ ? text(rawValue(card_->grade())) : QString();
}

QString ReportController::verdict() const {
    return card_ ? Words::of(card_->verdict()) : QString();
}

QStringList ReportController::advice() const {
    QStringList sentences;
    if (!card_) return sentences;
    for (const Message& sentence : card_->advice())
        sentences.append(Words::of(sentence));
    return sentences;
}

QString ReportController::errorText() const {
    return card_ ? decibels(card_->errorDB) : QString();
}

QVariantList ReportController::worst() const {
    QVariantList rows;
    if (!card_) return rows;
    for (std::size_t i = 0; i < card_->worst.size(); ++i) {
        const ReportCard::Clip& clip = card_->clips[card_->worst[i]];
        rows.append(QVariantMap{{QStringLiteral("name"), toQString(clip.name)},
                                {QStringLiteral("errorText"), decibels(clip.errorDB)},
                                {QStringLiteral("originalUrl"), toUrl(exampleFile("original", i))},
                                {QStringLiteral("learnedUrl"), toUrl(exampleFile("learned", i))}});
    }
    return rows;
}

QVariantList ReportController::nearDuplicates() const {
    QVariantList rows;
    if (!card_) return rows;
    for (std::size_t i = 0; i < std::min(card_->nearDuplicates.size(), mostRows); ++i) {
        const ReportCard::Pair& pair = card_->nearDuplicates[i];
        const std::string& first = card_->clips[pair.first].name;
        const std::string& second = card_->clips[pair.second].name;
        rows.append(
            QVariantMap{{QStringLiteral("first"), toQString(first)},
                        {QStringLiteral("second"), toQString(second)},
                        {QStringLiteral("both"), tr("%1 and %2").arg(toQString(first), toQString(second))},
                        {QStringLiteral("distanceText"), decibels(pair.distanceDB)},
                        {QStringLiteral("firstUrl"), original(first)},
                        {QStringLiteral("secondUrl"), original(second)}});
    }
    return rows;
}

QVariantList ReportController::outliers() const {
    QVariantList rows;
    if (!card_) return rows;
    for (std::size_t i = 0; i < std::min(card_->outliers.size(), mostRows); ++i) {
        const ReportCard::Clip& clip = card_->clips[card_->outliers[i]];
        rows.append(QVariantMap{{QStringLiteral("name"), toQString(clip.name)},
                                {QStringLiteral("distanceText"), decibels(clip.nearestDB)},
                                {QStringLiteral("url"), original(clip.name)}});
    }
    return rows;
}

}  // namespace quillmere
