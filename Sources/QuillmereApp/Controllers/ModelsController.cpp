#include "QuillmereApp/Controllers/ModelsController.h"

#include <QVariantMap>
#include <algorithm>
#include <chrono>
#include <map>
#include <system_error>
#include <utility>

#include "QuillmereApp/Controllers/Assign.h"
#include "QuillmereApp/Controllers/Folders.h"
#include "QuillmereApp/FilePath.h"
#include "QuillmereApp/ModelText.h"
#include "QuillmereApp/Trash.h"
#include "QuillmereApp/Words.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

std::variant<ModelMetadata, QString> contentOf(const ModelStore::StoredFolder& stored) {
    if (!stored.holdsModel) return Words::tr("Only remains of a model that was being stored.");
    try {
        // The whole model: only its weights and latents tell whether they fit.
        return ModelStore::open(stored.folder).metadata;
    } catch (const Failure& failure) {
        return Words::of(failure);
    }
}

QString detailOf(const ModelMetadata& metadata) {
    const auto clips = static_cast<int>(metadata.clipNames.size());
    const QString samples = clips == 1 ? Words::tr("1 sample") : Words::tr("%n samples", nullptr, clips);
    return Words::tr("%1 · trained %2 · %3")
        .arg(samples, ModelText::learnedAt(metadata), ModelText::effort(metadata));
}

enum class Sameness { none, names, sizes };

// Whether a model was learned from files with the names of a corpus's and, where its own folder is there to
// be looked at, their sizes.
Sameness samenessOf(const ModelMetadata& model, const CorpusSummary& corpus, const FolderLooks& looks) {
    constexpr double most = 0.9;  // of the files: silent and unreadable ones are not learned
    const auto learned = static_cast<double>(model.clipNames.size());
    if (learned < most * static_cast<double>(corpus.files.size())) return Sameness::none;
    std::map<std::string, std::uintmax_t> sizes;
    for (const CorpusFile& file : corpus.files)
        sizes.emplace(file.relativePath, static_cast<std::uintmax_t>(file.size));
    const bool canCompare = looks.at(model.corpusPath).kind == Place::Kind::folder;
    Sameness sameness = canCompare ? Sameness::sizes : Sameness::names;
    for (const std::string& clip : model.clipNames) {
        const auto file = sizes.find(clip);
        if (file == sizes.end()) return Sameness::none;
        if (!canCompare) continue;
        std::error_code gone;
        const auto size = std::filesystem::file_size(std::filesystem::path(model.corpusPath) / clip, gone);
        if (gone) {
            sameness = Sameness::names;
        } else if (size != file->second) {
            return Sameness::none;
        }
    }
    return sameness;
}

}  // namespace

ModelsController::~ModelsController() {
    if (look_) look_->cancel();
    if (offering_) offering_->cancel();
}

QString ModelsController::Entry::name() const {
    return metadata() ? QString::fromStdString(metadata()->corpusName) : toQString(stored.folder.filename());
}

void ModelsController::setOpen(const std::filesystem::path& folder) {
    open_ = folder;
    if (!folder.empty()) withdrawOffer();
    emit modelsChanged();
}

std::vector<ModelsController::Entry> ModelsController::entriesIn(const std::filesystem::path& root,
                                                                 const std::stop_token& stop) {
    std::vector<Entry> entries;
    for (ModelStore::StoredFolder& stored : ModelStore::list(root)) {
        throwIfCancelled(stop);
        auto content = contentOf(stored);
        entries.push_back({std::move(stored), std::move(content)});
    }
    std::ranges::stable_sort(entries, std::ranges::greater(), [](const Entry& entry) {
        return entry.metadata() ? entry.metadata()->trainedAt : std::chrono::sys_seconds::min();
    });
    return entries;
}

void ModelsController::look() {
    assign(*this, isLooking_, true, &ModelsController::isLookingChanged);
    if (look_) look_->cancel();
    look_ = std::make_shared<CancelFlag>();
    tasks_.run([root = environment().modelsRoot, stop = look_->token()] { return entriesIn(root, stop); },
               [this, look = look_](std::vector<Entry> entries) {
                   if (look != look_) return;
                   look_.reset();
                   entries_ = std::move(entries);
                   emit modelsChanged();
                   assign(*this, isLooking_, false, &ModelsController::isLookingChanged);
               },
               [this, look = look_](const TaskFailure& failure) {
                   if (look != look_) return;
                   look_.reset();
                   report(failure);
                   assign(*this, isLooking_, false, &ModelsController::isLookingChanged);
               });
}

void ModelsController::stopLooking() {
    if (!look_) return;
    std::exchange(look_, nullptr)->cancel();
    assign(*this, isLooking_, false, &ModelsController::isLookingChanged);
}

// ---- A model of the same samples

void ModelsController::offerFor(std::shared_ptr<const CorpusSummary> corpus) {
    withdrawOffer();
    if (!corpus || corpus->files.empty()) return;
    offering_ = std::make_shared<CancelFlag>();
    tasks_.run([root = environment().modelsRoot, corpus = std::move(corpus), looks = environment().looks,
                stop = offering_->token()] { return offerIn(root, *corpus, *looks, stop); },
               [this, wanted = offering_](std::optional<Offer> offer) {
                   if (wanted->isCancelled()) return;
                   if (offer) offer->name = Folders::displayed(offer->name, environment().homeFolder);
                   offered_ = std::move(offer);
                   emit offerChanged();
               },
               [](const TaskFailure&) {});  // nobody has asked
}

std::optional<ModelsController::Offer> ModelsController::offerIn(const std::filesystem::path& root,
                                                                 const CorpusSummary& corpus,
                                                                 const FolderLooks& looks,
                                                                 const std::stop_token& stop) {
    const std::string fingerprint = corpus.fingerprint();
    std::optional<Offer> byNames;
    for (const ModelStore::StoredFolder& stored : ModelStore::list(root)) {
        throwIfCancelled(stop);
        const auto content = stored.holdsModel ? contentOf(stored) : std::variant<ModelMetadata, QString>();
        const ModelMetadata* const model = std::get_if<ModelMetadata>(&content);
        if (!stored.holdsModel || !model) continue;
        const Sameness sameness =
            model->fingerprint == fingerprint ? Sameness::sizes : samenessOf(*model, corpus, looks);
        if (sameness == Sameness::none) continue;
        const Offer offer{.name = QString::fromStdString(model->corpusPath),
                          .folder = stored.folder,
                          .isByNames = sameness == Sameness::names};
        if (!offer.isByNames) return offer;
        if (!byNames) byNames = offer;
    }
    return byNames;
}

void ModelsController::withdrawOffer() {
    if (offering_) offering_->cancel();
    if (std::exchange(offered_, std::nullopt)) emit offerChanged();
}

void ModelsController::useOffered() {
    if (!offered_) return;
    if (activity().isBusy()) {
        emit notice(Activity::waitNotice());
        return;
    }
    const std::filesystem::path folder = offered_->folder;
    withdrawOffer();
    emit loadRequested(folder);
}

const ModelsController::Entry* ModelsController::at(int row) const {
    return row >= 0 && row < std::ssize(entries_) ? &entries_[static_cast<std::size_t>(row)] : nullptr;
}

void ModelsController::open(int row) {
    const Entry* const entry = at(row);
    if (!entry || !entry->metadata() || entry->stored.folder == open_) return;
    if (activity().isTraining || activity().isGenerating) {
        emit notice(Activity::waitNotice());
        return;
    }
    const QString path = QString::fromStdString(entry->metadata()->corpusPath);
    tasks_.run([looks = environment().looks, path = toPath(path)] { return looks->at(path).kind; },
               [this, path, folder = entry->stored.folder](Place::Kind kind) {
                   const QString refusal = Folders::refusal(kind, path);
                   if (refusal.isEmpty()) {
                       emit openRequested(QUrl::fromLocalFile(path), folder);
                   } else {
                       emit errorRaised(refusal);
                   }
               },
               [this](const TaskFailure& failure) { report(failure); });
}

void ModelsController::remove(int row) {
    const Entry* const entry = at(row);
    if (!entry || entry->stored.folder == open_) return;
    const std::filesystem::path folder = entry->stored.folder;
    if (!leaving_.insert(folder).second) return;
    tasks_.run(
        [folder, isRemains = !entry->stored.holdsModel,
         trash = environment().moveToTrash]() -> std::optional<std::filesystem::path> {
            if (isRemains) {
                // Hidden files beside the place of a model, of no use to anybody.
                (void)ModelStore::remove(folder, {}, std::chrono::milliseconds(0));
                return std::nullopt;
            }
            std::optional<std::filesystem::path> inTrash = trash(folder);
            if (!inTrash)
                throw Failure(
                    tr("The model could not be moved to the trash. Delete it with: quillmere-cli models "
                       "remove")
                        .toStdString());
            return inTrash;
        },
        [this, removed = *entry](const std::optional<std::filesystem::path>& inTrash) {
            leaving_.erase(removed.stored.folder);
            if (inTrash) removed_.push_back({.entry = removed, .inTrash = *inTrash});
            std::erase_if(entries_,
                          [&](const Entry& other) { return other.stored.folder == removed.stored.folder; });
            emit modelsChanged();
        },
        [this, folder](const TaskFailure& failure) {
            leaving_.erase(folder);
            report(failure);
        });
}

void ModelsController::restore() {
    if (removed_.empty()) return;
    const Removed last = removed_.back();
    removed_.pop_back();
    emit modelsChanged();
    tasks_.run(
        [from = last.inTrash, to = last.entry.stored.folder] {
            // Never over a model that has been learned meanwhile.
            if (!Trash::restore(from, to)) throw FileError(to, std::make_error_code(std::errc::file_exists));
        },
        [this] { look(); },
        [this, last](const TaskFailure& failure) {
            removed_.push_back(last);
            emit modelsChanged();
            report(failure);
        });
}

// ---- Values

QVariantList ModelsController::models() const {
    QVariantList rows;
    for (const Entry& entry : entries_) {
        const ModelMetadata* const metadata = entry.metadata();
        const QString path = metadata ? QString::fromStdString(metadata->corpusPath) : QString();
        rows.append(QVariantMap{
            {QStringLiteral("name"), entry.name()},
            {QStringLiteral("path"), Folders::displayed(path, environment().homeFolder)},
            {QStringLiteral("detail"), metadata ? detailOf(*metadata) : QString()},
            {QStringLiteral("sizeText"), ModelText::size(entry.stored.bytes + entry.stored.remains)},
            {QStringLiteral("problem"), metadata ? QString() : std::get<QString>(entry.content)},
            {QStringLiteral("isRemains"), !entry.stored.holdsModel},
            {QStringLiteral("isOpen"), entry.stored.folder == open_},
            {QStringLiteral("folder"), toQString(entry.stored.folder)}});
    }
    return rows;
}

QString ModelsController::totalText() const {
    std::uintmax_t bytes = 0;
    for (const Entry& entry : entries_)
        bytes += entry.stored.bytes + entry.stored.remains;
    const auto count = static_cast<int>(entries_.size());
    return (count == 1 ? tr("1 model, %1") : tr("%n models, %1", nullptr, count)).arg(ModelText::size(bytes));
}

QString ModelsController::removedName() const {
    return removed_.empty() ? QString() : removed_.back().entry.name();
}

}  // namespace quillmere
