#include "QuillmereCore/Model/ModelStore.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cmath>
#include <set>
#include <span>
#include <system_error>
#include <variant>

#include "QuillmereCore/Model/ModelFiles.h"
#include "QuillmereCore/Model/ModelPlace.h"
#include "QuillmereCore/Model/VAEArchitecture.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/AtomicFolder.h"
#include "QuillmereCore/Util/Paths.h"
#include "QuillmereCore/Util/Text.h"
#include "QuillmereCore/Util/UserFolders.h"

namespace quillmere {

std::string_view rawValue(ModelStart::Kind kind) {
    switch (kind) {
        case ModelStart::Kind::headStart:
            return "head-start";
        case ModelStart::Kind::model:
            return "model";
    }
    fatal("unknown kind of start");
}

}  // namespace quillmere

namespace quillmere::ModelStore {
namespace {

namespace fs = std::filesystem;

Message message(const fs::path& file, const Message& problem) {
    return Message("{0}: {1}", file, problem);
}

bool allFinite(std::span<const float> values) {
    return std::ranges::all_of(values, [](float value) { return std::isfinite(value); });
}

bool allFinite(const std::vector<std::vector<float>>& arrays) {
    return std::ranges::all_of(arrays, [](const auto& array) { return allFinite(array); });
}

void write(const fs::path& file, const std::string& content) {
    writeFileAtomically(file, std::as_bytes(std::span(content)));
}

// ---- Dates

// The digits of text as a number, or nothing.
std::optional<int> digits(std::string_view text) {
    int value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        value = 10 * value + (c - '0');
    }
    return value;
}

std::string padded(long long value, std::size_t width) {
    std::string text = std::to_string(value);
    return text.size() < width ? std::string(width - text.size(), '0') + text : text;
}

// "Z", or a fraction before it.
bool isDateEnd(std::string_view text) {
    if (!text.ends_with('Z')) return false;
    text.remove_suffix(1);
    return text.empty() || (text.size() > 1 && text[0] == '.' &&
                            text.find_first_not_of("0123456789", 1) == std::string_view::npos);
}

// ---- Models

void requireFinite(const ModelBundle& bundle) {
    const std::array<float, 2> results{bundle.metadata.finalLoss, bundle.metadata.finalReconstructionError};
    if (allFinite(results) && allFinite(bundle.latents) && allFinite(bundle.weights)) return;
    throw CorruptModelError("The model of {0} holds values that are not finite and cannot be saved",
                            bundle.metadata.corpusName);
}

// Whether trouble says nothing of what it met with: there will be memory, or open files, another time.
bool isShortage(const std::error_code& reason) {
    return reason == std::errc::not_enough_memory || reason == std::errc::too_many_files_open ||
           reason == std::errc::too_many_files_open_in_system;
}

// What is added to the name of a model that is kept.
constexpr std::string_view damagedSuffix = ".damaged";
constexpr std::string_view keptSuffix = ".kept";

// Whether the folder holds a model with which nothing can be done.
bool isUnusable(const fs::path& modelFolder) {
    try {
        const auto files = ModelFiles::read(modelFolder);
        if (const auto* bundle = std::get_if<ModelBundle>(&files)) validate(*bundle, modelFolder);
        return false;
    } catch (const FileError& error) {
        if (isShortage(error.reason())) throw;
        return true;
    } catch (const Failure&) {
        return true;
    }
}

// The folders in root, links not followed, in any order; none without a root. Throws FileError.
std::vector<fs::path> foldersIn(const fs::path& root) {
    std::error_code error;
    std::vector<fs::path> folders;
    for (fs::directory_iterator it(root, error), end; !error && it != end; it.increment(error)) {
        std::error_code ignored;
        if (fs::is_directory(it->symlink_status(ignored))) folders.push_back(it->path());
    }
    if (error && error != std::errc::no_such_file_or_directory) throw FileError(root, error);
    return folders;
}

// What cannot be looked into is not known to hold anything.
bool isKnownToHoldPart(const fs::path& folder) {
    try {
        return ModelFolder::holdsPart(folder);
    } catch (const FileError&) {
        return false;
    }
}

// What look finds in the model folder, or in the hidden one that stands for it while it changes its name on a
// file system that cannot exchange two.
template <typename Look>
auto found(const ModelPlace& place, const Look& look) {
    constexpr int attempts = 100;  // the change may come between two looks, even again and again
    for (int attempt = 0; attempt < attempts; ++attempt) {
        for (const fs::path& folder : {place.folder(), place.former()}) {
            if (auto result = look(folder)) return result;
        }
        if (!place.isLocked()) break;
    }
    return look(place.folder());
}

bool holdsBothFiles(const fs::path& folder) {
    return ModelFolder::leadsSomewhere(folder / ModelFiles::manifestName) &&
           ModelFolder::leadsSomewhere(folder / ModelFiles::weightsName);
}

bool isTooLong(const fs::path& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) != 0 && errno == ENAMETOOLONG;
}

}  // namespace

fs::path rootDirectory() {
    const std::optional<fs::path> data = UserFolders::data();
    require(data.has_value(), "the user has no home directory");
    return *data / "Models";
}

fs::path directory(const CorpusSummary& corpus) {
    return directory(corpus, rootDirectory());
}

fs::path directory(const CorpusSummary& corpus, const fs::path& root) {
    return root / folderName(corpusName(corpus.directory), corpus.fingerprint());
}

std::string folderName(std::string corpusFolder, const std::string& fingerprint) {
    std::ranges::replace(corpusFolder, '/', '_');
    return corpusFolder + "-" + fingerprint;
}

fs::path corpusPath(const fs::path& corpusFolder) {
    return Paths::plain(corpusFolder);
}

std::string corpusName(const fs::path& corpusFolder) {
    const fs::path path = corpusPath(corpusFolder);
    return path.has_filename() ? path.filename().string() : path.string();
}

bool exists(const fs::path& modelFolder) {
    std::error_code ignored;
    return fs::exists(modelFolder / ModelFiles::manifestName, ignored) &&
           fs::exists(modelFolder / ModelFiles::weightsName, ignored);
}

bool isStored(const fs::path& modelFolder) {
    const ModelPlace place(modelFolder);
    place.tryToBringBack();
    return found(place, holdsBothFiles);
}

void requireRoom(const fs::path& modelFolder) {
    const ModelPlace place(modelFolder);
    std::error_code error;
    fs::create_directories(place.root(), error);
    if (error) throw FileError(place.root(), error);
    if (isTooLong(place.folder()) || isTooLong(place.freeHiddenName()))
        throw Failure(
            "The name of this folder is too long for a model of it to be stored. Give the folder a shorter "
            "name.");
    if (::access(place.root().c_str(), W_OK | X_OK) != 0)
        throw FileError(place.root(), std::error_code(errno, std::generic_category()));
}

std::optional<Message> problemWithNumber(std::span<const std::string> clipNames, std::int64_t latentDim) {
    const std::uint64_t size = ModelFiles::manifestBound(clipNames, latentDim);
    if (size <= ModelFiles::maxManifestSize) return std::nullopt;
    const auto clips = static_cast<std::uint64_t>(clipNames.size());
    return Message::counted(
        std::ssize(clipNames),
        "A model of {0} samples could not be opened again: at most about {1} are possible. Learn a folder "
        "with fewer samples.",
        "A model of {0} samples could not be opened again: at most about {1} are possible. Learn a folder "
        "with fewer samples.",
        clips * ModelFiles::maxManifestSize / size);
}

void save(const ModelBundle& bundle, const fs::path& modelFolder) {
    requireFinite(bundle);
    std::error_code error;
    fs::create_directories(modelFolder, error);
    if (error) throw FileError(modelFolder, error);
    write(modelFolder / ModelFiles::weightsName, weightsBlob(bundle.weights));
    write(modelFolder / ModelFiles::manifestName, ModelFiles::manifestText(bundle));
    // Last, so that a pair that is not one never passes: until here the digests were those of the old one.
    for (const std::string_view name : {ModelFiles::digestsName, ModelFiles::soundsName}) {
        fs::remove(modelFolder / name, error);
        if (error) throw FileError(modelFolder / name, error);
    }
}

ModelBundle load(const fs::path& modelFolder) {
    auto files = ModelFiles::read(modelFolder);
    if (const auto* missing = std::get_if<FileError>(&files)) throw *missing;
    return std::get<ModelBundle>(std::move(files));
}

ModelBundle open(const fs::path& modelFolder) {
    const ModelPlace place(modelFolder);
    place.tryToBringBack();
    std::optional<ModelBundle> bundle = found(place, [](const fs::path& folder) {
        auto files = ModelFiles::read(folder);
        if (std::holds_alternative<FileError>(files)) return std::optional<ModelBundle>();
        validate(std::get<ModelBundle>(files), folder);
        return std::optional(std::get<ModelBundle>(std::move(files)));
    });
    if (!bundle) {
        bundle = load(modelFolder);  // says which file is missing
        validate(*bundle, modelFolder);
    }
    return *std::move(bundle);
}

void replace(const ModelBundle& bundle, const fs::path& modelFolder, const std::stop_token& stop,
             std::chrono::milliseconds patience, Former former, const std::string& sounds) {
    requireFinite(bundle);
    const ModelPlace place(modelFolder);
    std::error_code error;
    fs::create_directories(place.root(), error);
    if (error) throw FileError(place.root(), error);
    const FileLock lock = place.lock(patience, stop);
    if (!lock.isWithoutEffect()) {
        place.bringBack();
        place.sweep();
    }
    std::string_view aside;  // empty: the former model goes
    if (isUnusable(place.folder())) {
        aside = damagedSuffix;
    } else if (former == Former::kept && ModelFolder::isThere(place.folder())) {
        aside = keptSuffix;
    }
    const HiddenFolder fresh(place);
    const std::string weights = weightsBlob(bundle.weights);
    const std::string manifest = ModelFiles::manifestText(bundle);
    fresh.write(ModelFiles::weightsName, weights);
    fresh.write(ModelFiles::manifestName, manifest);
    if (!sounds.empty()) fresh.write(ModelFiles::soundsName, sounds);
    fresh.write(ModelFiles::digestsName, ModelFiles::digestsText(manifest, weights, sounds));
    fresh.takePlace(aside);
}

bool remove(const fs::path& modelFolder, const std::stop_token& stop, std::chrono::milliseconds patience) {
    if (ModelFolder::isLink(modelFolder)) return false;
    const ModelPlace place(modelFolder);
    if (!ModelFolder::holdsPart(place.folder()) && !ModelFolder::holdsPart(place.former()) &&
        place.remains().empty()) {
        place.removeAbandonedLock();
        return false;
    }
    const FileLock lock = place.lock(patience, stop);
    place.bringBack();
    place.sweep();
    if (!ModelFolder::holdsPart(place.folder())) return true;
    if (!ModelFolder::holdsNothingElse(place.folder()))
        throw Failure("{0} holds other files too; nothing was removed.", place.folder());
    // What is half deleted must not pass for a model.
    const fs::path hidden = place.freeHiddenName();
    if (!moveFolder(place.folder(), hidden))
        throw FileError(place.folder(), std::make_error_code(std::errc::file_exists));
    (void)syncFolder(place.root());  // or a power cut might bring its name back and not its files
    ModelFolder::discard(hidden, {});
    return true;
}

std::vector<StoredFolder> list(const fs::path& root) {
    for (const fs::path& folder : foldersIn(root)) {
        if (const auto stem = ModelPlace::stem(folder.filename().string()))
            ModelPlace(root / *stem).tryToBringBack();
    }
    std::set<std::string> stems;
    std::vector<StoredFolder> models;
    const auto add = [&](const ModelPlace& place) {
        if (!stems.insert(place.stem()).second) return;
        const bool isThere = isKnownToHoldPart(place.folder());
        const fs::path present = isThere ? place.folder() : place.former();
        StoredFolder model{place.folder(), isKnownToHoldPart(present), ModelFolder::size(present), 0};
        if (!place.isLocked()) {
            for (const fs::path& remains : place.remains())
                model.remains += ModelFolder::size(remains);
        }
        if (model.holdsModel || model.remains > 0) models.push_back(std::move(model));
    };
    const std::vector<fs::path> folders = foldersIn(root);
    for (const fs::path& folder : folders) {
        if (!ModelPlace::stem(folder.filename().string()) && isKnownToHoldPart(folder))
            add(ModelPlace(folder));
    }
    for (const fs::path& folder : folders) {
        if (const auto stem = ModelPlace::stem(folder.filename().string())) add(ModelPlace(root / *stem));
    }
    std::ranges::sort(models, {}, &StoredFolder::folder);
    return models;
}

void validate(const ModelBundle& bundle, const fs::path& modelFolder) {
    const fs::path file = modelFolder / ModelFiles::manifestName;
    if (bundle.latents.empty()) throw CorruptModelError(message(file, Message("holds no latent vectors")));
    const auto dim = static_cast<std::size_t>(bundle.config.latentDim);
    for (const std::vector<float>& latent : bundle.latents) {
        if (latent.size() < dim || !allFinite(latent))
            throw CorruptModelError(
                message(file, Message::counted(dim, "holds a latent vector without {0} finite values",
                                               "holds a latent vector without {0} finite values")));
    }
}

std::string isoDate(std::chrono::sys_seconds time) {
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss clock(time - day);
    return padded(static_cast<int>(date.year()), 4) + "-" + padded(static_cast<unsigned>(date.month()), 2) +
           "-" + padded(static_cast<unsigned>(date.day()), 2) + "T" + padded(clock.hours().count(), 2) + ":" +
           padded(clock.minutes().count(), 2) + ":" + padded(clock.seconds().count(), 2) + "Z";
}

std::optional<std::chrono::sys_seconds> parseISODate(std::string_view text) {
    constexpr std::string_view form = "YYYY-MM-DDTHH:MM:SS";
    if (text.size() < form.size() || !isDateEnd(text.substr(form.size()))) return std::nullopt;
    for (const std::size_t separator : {4, 7, 10, 13, 16}) {
        if (text[separator] != form[separator]) return std::nullopt;
    }
    const auto year = digits(text.substr(0, 4));
    const auto month = digits(text.substr(5, 2));
    const auto day = digits(text.substr(8, 2));
    const auto hour = digits(text.substr(11, 2));
    const auto minute = digits(text.substr(14, 2));
    const auto second = digits(text.substr(17, 2));
    if (!year || !month || !day || !hour || !minute || !second) return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(*year),
                                           std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok() || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
    return std::chrono::sys_days(date) + std::chrono::hours(*hour) + std::chrono::minutes(*minute) +
           std::chrono::seconds(*second);
}

std::string weightsBlob(const std::vector<std::vector<float>>& weights) {
    std::size_t count = 0;
    for (const std::vector<float>& array : weights)
        count += array.size();
    std::string blob(count * sizeof(float), '\0');
    char* out = blob.data();
    for (const std::vector<float>& array : weights) {
        for (const float value : array) {
            const auto bits = std::bit_cast<std::uint32_t>(value);
            for (int shift = 0; shift < 32; shift += 8)
                *out++ = static_cast<char>(bits >> shift);
        }
    }
    return blob;
}

std::int64_t weightsSize(const ModelConfig& config) {
    return checkedMultiply(4, VAEArchitecture::weightCount(config));
}

}  // namespace quillmere::ModelStore
