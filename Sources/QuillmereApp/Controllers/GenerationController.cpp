#include "QuillmereApp/Controllers/GenerationController.h"

#include <algorithm>
#include <exception>
#include <span>
#include <system_error>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/Controllers/NoiseText.h"
#include "QuillmereApp/Controllers/Noting.h"
#include "QuillmereApp/Controllers/RecipeBases.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/TemporarySound.h"
#include "QuillmereApp/TimeText.h"

namespace quillmere {
namespace {

std::vector<GeneratedSample> sortedByName(std::vector<GeneratedSample> samples) {
    std::stable_sort(samples.begin(), samples.end(), [](const GeneratedSample& a, const GeneratedSample& b) {
        return a.url.filename().native() < b.url.filename().native();
    });
    return samples;
}

// Those whose files nobody has moved or deleted meanwhile.
std::vector<GeneratedSample> existing(std::vector<GeneratedSample> samples) {
    std::erase_if(samples, [](const GeneratedSample& sample) {
        std::error_code unknown;  // then it cannot be played either
        return !std::filesystem::is_regular_file(sample.url, unknown);
    });
    return samples;
}

// The variation of that origin, with what the request says.
AuditionedSample remade(SampleGenerator& generator, const AuditionRequest& request,
                        const GenerationController::Origin& origin) {
    VariationPlan plan{.origin = origin(generator, request.seed), .aesthetics = request.aesthetics};
    plan.origin.detail = request.detail;
    return std::move(generator.remake(std::span(&plan, 1)).front());
}

int countWithNoise(const std::vector<GeneratedSample>& samples) {
    return static_cast<int>(
        std::ranges::count(samples, DetailBasis::noise,
                           [](const GeneratedSample& sample) { return sample.origin.detailBasis; }));
}

}  // namespace

GenerationController::GenerationController(const Environment& environment, Links links)
    : Controller(environment), links_(std::move(links)), results_(environment.looks) {
    connect(this, &Controller::activityChanged, this, &GenerationController::canGenerateChanged);
}

GenerationController::~GenerationController() {
    cancel();
}

void GenerationController::setSupplies(const Supplies& supplies) {
    supplies_ = supplies;
    emit canGenerateChanged();
}

// ---- Generation

void GenerationController::generate() {
    generate([] {});
}

void GenerationController::generate(Returned returned) {
    emit commanded();
    begin(std::move(returned));
}

void GenerationController::begin(Returned returned) {
    if (activity().isBusy() || isWaiting_) {
        emit notice(Activity::waitNotice());
        returned();
        return;
    }
    // What was in the way may be gone. If it is not, nothing is learned in place of what nobody could see.
    if (supplies_.modelIsUnopened) links_.openModelAgain();
    if (supplies_.modelIsLoading) {
        waitForModel(returned);
        return;
    }
    const auto folder = links_.outputFolder();
    if (!folder) {
        emit errorRaised(tr("Choose an output folder first."));
        emit outputFolderMissing();
        returned();
        return;
    }
    if (supplies_.hasModel) {
        start(*folder, returned);
        return;
    }
    if (!supplies_.hasSummary) {
        emit notice(supplies_.corpusIsChosen ? tr("This folder has not been scanned.")
                                             : tr("Choose a corpus first."));
        returned();
        return;
    }
    assign(*this, isWaiting_, true, &GenerationController::isWaitingChanged);
    links_.train([this, folder = *folder, returned = std::move(returned)] {
        assign(*this, isWaiting_, false, &GenerationController::isWaitingChanged);
        supplies_.hasModel ? start(folder, returned) : returned();
    });
}

void GenerationController::waitForModel(const Returned& returned) {
    assign(*this, isWaiting_, true, &GenerationController::isWaitingChanged);
    links_.whenModelIsLoaded([this, returned] {
        assign(*this, isWaiting_, false, &GenerationController::isWaitingChanged);
        supplies_.hasModel ? begin(returned) : returned();
    });
}

void GenerationController::start(const QUrl& folder, const Returned& returned) {
    emit errorRaised({});
    emit generationStarting();
    const GenerationRequest request = links_.generationRequest(folder);
    done_ = 0;
    total_ = static_cast<int>(request.count);
    clock_.start();
    generateCancel_ = std::make_shared<CancelFlag>();
    assign(*this, isGenerating_, true, &GenerationController::isGeneratingChanged);
    emit progressed();
    const auto progress = [this](std::int64_t done, std::int64_t total) {
        tasks_.post([=, this] {
            done_ = static_cast<int>(done);
            total_ = static_cast<int>(total);
            emit progressed();
        });
        watched(Run::generation, done);
    };
    tasks_.run(
        [generator = links_.generator(), request, progress, cancel = generateCancel_->token(),
         looks = environment().looks, device = links_.device ? links_.device() : nullptr,
         noting = Noting(environment())] {
            if (looks->at(request.outputDirectory).kind == Place::Kind::noAnswer)
                throw Failure(Folders::noAnswer(toQString(request.outputDirectory)).toStdString());
            const auto ready = generator();
            RecipeBase base = recipeBaseOf(*ready, device);
            base.aesthetics = request.aesthetics;
            base.format = request.format;
            QString noteProblem;
            RecipeKeeper keeper(noting.carriers(noteProblem), base);
            GenerationOutcome outcome = ready->tryToGenerate(request, keeper.hooks(), progress, cancel);
            if (noteProblem.isEmpty()) noteProblem = Noting::problemOf(keeper);
            const int withNoise = countWithNoise(outcome.written);
            return Ended{.written = sortedByName(existing(std::move(outcome.written))),
                         .withNoise = withNoise,
                         .noteProblem = noteProblem,
                         .base = std::make_shared<const RecipeBase>(std::move(base)),
                         .failure = BackgroundTasks::attempt([&] {
                             if (outcome.failure) std::rethrow_exception(outcome.failure);
                         })};
        },
        [this, folder, returned](Ended run) {
            ended(std::move(run), folder);
            generationEnded(returned);
        },
        [this, returned](const TaskFailure& failure) {
            report(failure);
            generationEnded(returned);
        });
}

void GenerationController::ended(Ended run, const QUrl& folder) {
    const auto files = static_cast<int>(run.written.size());
    if (!run.failure || files > 0) {
        base_ = std::move(run.base);
        keptBases_.clear();
        results_.setSamples(std::move(run.written));
        lastOutputFolder_ = folder;
    }
    if (run.failure) {
        endedEarly(*std::move(run.failure), files);
    } else {
        emit generationFinished(files);
        if (run.withNoise > 0) emit notice(noiseText(run.withNoise, files));
    }
    if (files > 0 && !run.noteProblem.isEmpty()) emit notice(run.noteProblem);
}

void GenerationController::showEarlier(std::vector<GeneratedSample> samples,
                                       std::shared_ptr<const RecipeBase> base, const QUrl& folder) {
    if (isGenerating_) return;
    base_ = std::move(base);
    keptBases_.clear();
    results_.setSamples(std::move(samples));
    lastOutputFolder_ = folder;
}

void GenerationController::addKept(const GeneratedSample& sample,
                                   const std::shared_ptr<const RecipeBase>& base) {
    keptBases_.insert(toUrl(sample.url), base);
    results_.add(sample);
}

void GenerationController::rename(const QUrl& from, const QUrl& to) {
    results_.rename(from, to);
    if (const auto base = keptBases_.take(from)) keptBases_.insert(to, base);
}

std::shared_ptr<const RecipeBase> GenerationController::baseOf(const QUrl& result) const {
    return results_.rowOf(result) < 0 ? nullptr : keptBases_.value(result, base_);
}

void GenerationController::endedEarly(TaskFailure failure, int files) {
    const QString written =
        (total_ == 1 ? tr("%1 of 1 variation written.") : tr("%1 of %n variations written.", nullptr, total_))
            .arg(files);
    if (failure.kind == TaskFailure::Kind::cancelled) {
        emit notice(tr("Cancelled: %1").arg(written));
    } else if (files > 0) {
        failure.message += QLatin1Char('\n') + written;
    }
    report(failure);
}

void GenerationController::generationEnded(const Returned& returned) {
    generateCancel_.reset();
    assign(*this, isCancelling_, false, &GenerationController::isCancellingChanged);
    assign(*this, isGenerating_, false, &GenerationController::isGeneratingChanged);
    returned();
}

// ---- Audition

void GenerationController::audition() {
    emit commanded();
    beginAudition(std::nullopt, {});
}

void GenerationController::auditionAgain() {
    emit commanded();
    beginAudition(auditionedSeed_, auditionedOrigin_);
}

void GenerationController::beginAudition(std::optional<std::uint64_t> seed, const Origin& origin) {
    if (activity().isBusy() && !canAudition()) return;
    if (supplies_.modelIsUnopened) links_.openModelAgain();
    if (supplies_.modelIsLoading) {
        links_.whenModelIsLoaded([this, seed] {
            if (supplies_.hasModel) beginAudition(seed, {});
        });
        return;
    }
    if (!canAudition()) {
        emit notice(tr("There is no model to audition yet. Train one first, or press Generate."));
        return;
    }
    startAudition(links_.auditionRequest(seed), links_.preview(), origin);
}

void GenerationController::auditionAt(Origin origin) {
    if (isAuditioning_) {
        next_ = std::move(origin);
        return;
    }
    if (!supplies_.hasModel || activity().isBusy()) return;
    startAudition(links_.auditionRequest(auditionedSeed_), links_.generator(), std::move(origin));
}

void GenerationController::dropAudition() {
    next_ = {};
    followsNext_ = false;
    auditionIsDropped_ = isAuditioning_;
}

void GenerationController::forgetOrigins() {
    next_ = {};
    auditionedOrigin_ = {};
}

void GenerationController::follow() {
    if (isAuditioning_) {
        followsNext_ = true;
        auditionIsDropped_ = true;
        return;
    }
    if (!supplies_.hasModel || activity().isBusy()) return;
    const std::uint64_t seed = links_.presentSeed();
    const Origin origin = seed == auditionedSeed_ ? auditionedOrigin_ : Origin();
    startAudition(links_.auditionRequest(seed), links_.generator(), origin);
}

void GenerationController::startAudition(const AuditionRequest& request, const PreparedGenerator& generator,
                                         Origin origin) {
    emit errorRaised({});
    auditionIsDropped_ = false;
    assign(*this, isAuditioning_, true, &GenerationController::isAuditioningChanged);
    auditionedSeed_ = request.seed;
    auditionedOrigin_ = origin;
    tasks_.run(
        [generator, request, origin = std::move(origin), file = toPath(auditionURL())] {
            const auto ready = generator();
            const AuditionedSample made = origin ? remade(*ready, request, origin) : ready->audition(request);
            writeTemporarySound(made.samples, file, ready->sampleRate());
            return std::pair(made.origin.detailBasis, ready->bundle().metadata.steps == 0);
        },
        [this](const std::pair<DetailBasis, bool>& heard) {
            const auto [basis, isBeforeLearning] = heard;
            if (!auditionIsDropped_) {
                emit auditionFinished(auditionURL());
                if (basis == DetailBasis::noise) emit notice(noiseText(1, 1));
                if (isBeforeLearning) emit notice(tr("Before learning: this is the head start."));
            }
            auditionEnded();
        },
        [this](const TaskFailure& failure) {
            report(failure);
            auditionEnded();
        });
}

void GenerationController::auditionEnded() {
    assign(*this, isCancelling_, false, &GenerationController::isCancellingChanged);
    assign(*this, isAuditioning_, false, &GenerationController::isAuditioningChanged);
    const bool follows = std::exchange(followsNext_, false);
    if (next_) {
        auditionAt(std::exchange(next_, {}));
    } else if (follows) {
        follow();
    }
}

void GenerationController::cancel() {
    next_ = {};
    followsNext_ = false;
    if (generateCancel_) generateCancel_->cancel();
    auditionIsDropped_ = isAuditioning_;
    if (isAuditioning_) links_.cancelPreview();
    if (isGenerating_ || isAuditioning_)
        assign(*this, isCancelling_, true, &GenerationController::isCancellingChanged);
}

// ---- Values

bool GenerationController::canAudition() const {
    if (supplies_.hasModel) return !activity().isBusy();
    Activity otherwise = activity();
    otherwise.isTraining = false;
    return supplies_.canPreview && !otherwise.isBusy();
}

QString GenerationController::timeLeft() const {
    return isGenerating_ ? TimeText::left(clock_, done_, total_) : QString();
}

QUrl GenerationController::auditionURL() const {
    return toUrl(environment().temporaryFolder / "Quillmere-audition.wav");
}

}  // namespace quillmere
