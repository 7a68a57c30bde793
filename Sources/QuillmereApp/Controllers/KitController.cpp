#include "QuillmereApp/Controllers/KitController.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/Controllers/Noting.h"
#include "QuillmereApp/Controllers/RecipeBases.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Origin/RecipeLookup.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

// "Drums Kit", or the first of "Drums Kit 2", "Drums Kit 3" … whose folder is not there.
std::string freeName(const fs::path& parent, const std::string& corpus) {
    const std::string name = corpus + " Kit";
    std::string numbered = name;
    for (int number = 2;; ++number) {
        std::error_code unknown;  // making the folder tells
        if (!fs::exists(parent / Kit::plainName(numbered), unknown)) return numbered;
        numbered = name + " " + std::to_string(number);
    }
}

void requireItsModel(const std::vector<KitFolder::Chosen>& sounds, const SampleGenerator& generator) {
    for (const KitFolder::Chosen& sound : sounds) {
        if (sound.recipe.model != generator.identity())
            throw Failure(
                Words::tr("A sound of these was made by another model: %1. Choose sounds of one model.")
                    .arg(toQString(sound.source.filename()))
                    .toStdString());
        requireFit(sound.recipe, generator.bundle());
    }
}

}  // namespace

struct KitController::Made {
    fs::path folder;
    QString noteProblem;
};

struct KitController::Work {
    std::vector<KitFolder::Chosen> sounds;
    fs::path parent;
    std::uint64_t seed = 0;
    PreparedGenerator generator;
    std::shared_ptr<network::ChosenDevice> device;
    std::shared_ptr<const FolderLooks> looks;
    Noting noting;
    KitFolder::Progress progress;
    // The folder of a kit that was begun and could not be finished.
    std::shared_ptr<fs::path> left = std::make_shared<fs::path>();
};

KitController::KitController(const Environment& environment, Links links)
    : Controller(environment), links_(std::move(links)) {
    connect(this, &Controller::activityChanged, this, &KitController::canMakeChanged);
}

KitController::~KitController() {
    if (cancel_) cancel_->cancel();
}

void KitController::setHasModel(bool hasModel) {
    assign(*this, hasModel_, hasModel, &KitController::canMakeChanged);
}

void KitController::make(std::vector<KitFolder::Chosen> sounds) {
    if (activity().isBusy()) {
        emit notice(Activity::waitNotice());
        return;
    }
    if (sounds.empty() || !hasModel_) {
        emit notice(tr("Choose sounds that the present model has made."));
        return;
    }
    if (sounds.size() > Kit::mostInstruments) {
        emit notice(tr("A kit has keys for %1 sounds. Choose fewer.").arg(Kit::mostInstruments));
        return;
    }
    const std::optional<QUrl> folder = links_.outputFolder();
    if (!folder) {
        emit errorRaised(tr("Choose an output folder first."));
        return;
    }
    emit errorRaised({});
    total_ = static_cast<int>(static_cast<std::int64_t>(sounds.size()) * Kit::Size().sounds());
    begin({.sounds = std::move(sounds),
           .parent = toPath(*folder),
           .seed = environment().freshSeed(),
           .generator = links_.generator(),
           .device = links_.device ? links_.device() : nullptr,
           .looks = environment().looks,
           .noting = Noting(environment()),
           .progress = [this](std::size_t files) {
               tasks_.post([this, files] {
                   done_ = static_cast<int>(files);
                   emit progressed();
               });
               watched(Run::generation, static_cast<std::int64_t>(files));
           }});
}

void KitController::begin(Work work) {
    done_ = 0;
    emit progressed();
    cancel_ = std::make_shared<CancelFlag>();
    emit isMakingChanged();
    const auto left = work.left;
    tasks_.run([work = std::move(work), stop = cancel_->token()] { return makeIn(work, stop); },
               [this](const Made& kit) {
                   ended();
                   emit notice(tr("Kit written: %1")
                                   .arg(Folders::displayed(toQString(kit.folder), environment().homeFolder)));
                   if (!kit.noteProblem.isEmpty()) emit notice(kit.noteProblem);
                   emit made(toUrl(kit.folder));
               },
               [this, left](const TaskFailure& failure) {
                   ended();
                   report(failure);
                   if (left->empty()) return;
                   emit notice(tr("The kit is not complete: %1")
                                   .arg(Folders::displayed(toQString(*left), environment().homeFolder)));
               });
}

KitController::Made KitController::makeIn(const Work& work, const std::stop_token& stop) {
    if (work.looks->at(work.parent).kind == Place::Kind::noAnswer)
        throw Failure(Folders::noAnswer(toQString(work.parent)).toStdString());
    const auto generator = work.generator();
    requireItsModel(work.sounds, *generator);
    QString noteProblem;
    KitFolder kit({.parent = work.parent,
                   .name = freeName(work.parent, generator->bundle().metadata.corpusName),
                   .size = {},
                   .seed = work.seed,
                   .carriers = work.noting.carriers(noteProblem)},
                  work.progress);
    const std::string device = recipeBaseOf(*generator, work.device).device;
    try {
        for (KitFolder::Chosen sound : work.sounds) {
            throwIfCancelled(stop);
            sound.parents = {fileDigest(sound.source, stop)};
            kit.addInstrument(sound, *generator, device, stop);
        }
        kit.finish();
    } catch (...) {
        std::error_code ignored;
        if (fs::exists(kit.folder(), ignored)) *work.left = kit.folder();
        throw;
    }
    if (noteProblem.isEmpty() && kit.journalProblem()) noteProblem = Noting::notNoted(*kit.journalProblem());
    return {.folder = kit.folder(), .noteProblem = noteProblem};
}

void KitController::ended() {
    cancel_.reset();
    emit isMakingChanged();
}

void KitController::cancel() {
    if (!isMaking()) return;
    cancel_->cancel();
    emit isMakingChanged();
}

}  // namespace quillmere
