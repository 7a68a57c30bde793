#include "QuillmereCore/Model/ModelPlace.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <span>
#include <system_error>
#include <utility>

#include "QuillmereCore/Model/ModelFiles.h"
#include "QuillmereCore/Model/ModelStore.h"
#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/AtomicFolder.h"
#include "QuillmereCore/Util/Descriptor.h"
#include "QuillmereCore/Util/Digest.h"
#include "QuillmereCore/Util/Paths.h"

namespace quillmere {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view oldSuffix = ".old";
constexpr std::string_view newInfix = ".new-";

// The folder as an absolute path without a slash at its end.
fs::path modelFolderOf(const fs::path& path) {
    const fs::path folder = Paths::plain(path);
    std::error_code ignored;  // then it is no link, or one that leads nowhere
    const fs::path target = fs::is_symlink(folder, ignored) ? fs::canonical(folder, ignored) : fs::path();
    return target.empty() ? folder : target;
}

// File systems allow 255 bytes.
std::string stemOf(const std::string& name) {
    constexpr std::size_t longest = 200;
    constexpr std::size_t kept = 160;
    if (name.size() <= longest) return name;
    return name.substr(0, kept) + "~" + sha256(std::as_bytes(std::span(name))).substr(0, 16);
}

bool isNumber(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// Whether text is PID-N.
bool isRunNumber(std::string_view text) {
    const std::size_t dash = text.find('-');
    return dash != std::string_view::npos && isNumber(text.substr(0, dash)) &&
           isNumber(text.substr(dash + 1));
}

bool isFolder(const fs::path& path) {
    std::error_code ignored;
    return fs::is_directory(fs::symlink_status(path, ignored));
}

bool isWrittenByStore(const fs::path& entry) {
    std::error_code ignored;
    if (!fs::is_regular_file(fs::symlink_status(entry, ignored))) return false;
    const std::string name = entry.filename().string();
    return std::ranges::find(ModelFiles::names, name) != ModelFiles::names.end() ||
           name.starts_with(".quillmere-");
}

// What a look at path has found out, by its result. A look that failed says nothing of what is there.
bool found(const fs::path& path, int result) {
    if (result == 0) return true;
    if (errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG) return false;
    throw FileError(path, lastError());
}

// The type of file that has that name, links not followed; 0 for none. Throws FileError when that cannot be
// found out.
mode_t typeOf(const fs::path& path) {
    struct stat status {};
    return found(path, ::lstat(path.c_str(), &status)) ? status.st_mode & S_IFMT : 0;
}

// Whether a name is known to be free.
bool isFree(const fs::path& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

// The entries of a folder as far as they can be read.
std::vector<fs::path> entriesOf(const fs::path& folder, std::error_code& error) {
    std::vector<fs::path> entries;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
        entries.push_back(it->path());
    return entries;
}

// The folder's name with that ending. Of a name that leaves it no room as much as does.
fs::path withEnding(const fs::path& folder, const std::string& ending) {
    constexpr std::size_t longestName = 255;  // bytes, of the usual file systems
    std::string name = folder.filename().string();
    name.resize(std::min(name.size(), longestName - ending.size()));
    return folder.parent_path() / (name + ending);
}

// The first free one of NAME.damaged, NAME.damaged-2, ... for a suffix of ".damaged": the folder has it now.
fs::path setAside(const fs::path& folder, const std::string& suffix) {
    for (int number = 1;; ++number) {
        fs::path aside = withEnding(folder, number == 1 ? suffix : suffix + "-" + std::to_string(number));
        if (moveFolder(folder, aside)) return aside;
    }
}

void moveIn(const fs::path& fresh, const fs::path& folder) {
    if (!moveFolder(fresh, folder)) throw FileError(folder, std::make_error_code(std::errc::file_exists));
}

// As moveIn, for a name that the folder now called before has given up. It gets the name back on failure.
void moveInAfter(const fs::path& before, const fs::path& fresh, const fs::path& folder) {
    try {
        moveIn(fresh, folder);
    } catch (const FileError&) {
        (void)moveFolder(before, folder);
        throw;
    }
}

}  // namespace

// ---- Names

ModelPlace::ModelPlace(const fs::path& modelFolder)
    : folder_(modelFolderOf(modelFolder)), stem_(stemOf(folder_.filename().string())) {}

fs::path ModelPlace::hidden(const std::string& suffix) const {
    return root() / ("." + stem_ + "." + suffix);
}

fs::path ModelPlace::freeHiddenName() const {
    for (int number = 0;; ++number) {
        fs::path name = hidden("new-" + std::to_string(::getpid()) + "-" + std::to_string(number));
        if (!ModelFolder::isThere(name)) return name;
    }
}

std::optional<std::string> ModelPlace::stem(const std::string& hiddenName) {
    if (!hiddenName.starts_with('.')) return std::nullopt;
    const std::string name = hiddenName.substr(1);
    if (name.ends_with(oldSuffix)) return name.substr(0, name.size() - oldSuffix.size());
    const std::size_t infix = name.rfind(newInfix);
    if (infix == std::string::npos || !isRunNumber(name.substr(infix + newInfix.size()))) return std::nullopt;
    return name.substr(0, infix);
}

// ---- Locks

FileLock ModelPlace::lock(std::chrono::milliseconds patience, const std::stop_token& stop) const {
    std::optional<FileLock> lock = FileLock::acquire(hidden("lock"), patience, stop);
    if (!lock) throw ModelBusyError();
    return *std::move(lock);
}

void ModelPlace::removeAbandonedLock() const {
    const fs::path file = hidden("lock");
    if (ModelFolder::isThere(file)) (void)FileLock::acquire(file, {});  // gone when it is given up
}

// ---- Remains

void ModelPlace::bringBack() const {
    if (!ModelFolder::isThere(folder_) && isFolder(former())) (void)moveFolder(former(), folder_);
}

void ModelPlace::tryToBringBack() const {
    std::error_code ignored;
    if (fs::exists(fs::symlink_status(folder_, ignored)) || !isFolder(former())) return;
    try {
        const auto lock = FileLock::acquire(hidden("lock"), {});
        if (lock && !lock->isWithoutEffect()) bringBack();
    } catch (const FileError&) {
        return;  // whoever asks reads it where it is
    }
}

std::vector<fs::path> ModelPlace::remains() const {
    std::error_code ignored;  // of a root that cannot be read nothing is known to be left
    const bool hasModel = fs::exists(fs::symlink_status(folder_, ignored));
    std::vector<fs::path> remains;
    for (const fs::path& entry : entriesOf(root(), ignored)) {
        if (stem(entry.filename().string()) != stem_ || !isFolder(entry)) continue;
        if (hasModel || entry != former()) remains.push_back(entry);
    }
    std::ranges::sort(remains);
    return remains;
}

void ModelPlace::sweep() const {
    for (fs::path& folder : remains()) {
        // Taken apart it must not pass for the model.
        if (folder == former()) {
            const fs::path name = freeHiddenName();
            if (!moveFolder(folder, name)) continue;
            folder = name;
        }
        ModelFolder::discard(folder, folder_);
    }
}

// ---- A hidden folder

HiddenFolder::HiddenFolder(const ModelPlace& place) : place_(place) {
    constexpr mode_t permissions = 0777;  // before the umask
    while (true) {
        path_ = place_.freeHiddenName();
        if (::mkdir(path_.c_str(), permissions) == 0) return;
        if (errno != EEXIST) throw FileError(place_.folder(), lastError());
    }
}

HiddenFolder::~HiddenFolder() {
    ModelFolder::discard(path_, place_.folder());
}

void HiddenFolder::write(std::string_view name, const std::string& content) const {
    try {
        createFile(path_ / name, std::as_bytes(std::span(content)));
    } catch (const FileError& error) {
        throw FileError(place_.folder() / name, error.reason());
    }
}

void HiddenFolder::takePlace(std::string_view aside) const {
    const fs::path& folder = place_.folder();
    if (const std::error_code error = syncFolder(path_)) throw FileError(folder, error);
    if (!aside.empty()) {
        moveInAfter(setAside(folder, std::string(aside)), path_, folder);
    } else if (!ModelFolder::isThere(folder)) {
        moveIn(path_, folder);
    } else {
        exchange();
    }
    // The model is stored, even if a power cut might still take it back.
    (void)syncFolder(place_.root());
}

void HiddenFolder::exchange() const {
    const fs::path& folder = place_.folder();
    if (!isFolder(folder)) throw FileError(folder, std::make_error_code(std::errc::not_a_directory));
    if (exchangeFolders(path_, folder)) return;
    const fs::path former = place_.former();
    moveIn(folder, former);
    moveInAfter(former, path_, folder);
    ::rename(former.c_str(), path_.c_str());  // failing that, it stays for the next sweep
}

// ---- What folders hold

bool ModelFolder::isThere(const fs::path& path) {
    struct stat status {};
    return found(path, ::lstat(path.c_str(), &status));
}

bool ModelFolder::leadsSomewhere(const fs::path& path) {
    struct stat status {};
    return found(path, ::stat(path.c_str(), &status));
}

bool ModelFolder::isLink(const fs::path& path) {
    return typeOf(path) == S_IFLNK;
}

bool ModelFolder::holdsPart(const fs::path& folder) {
    if (typeOf(folder) != S_IFDIR) return false;
    const auto isPart = [&](std::string_view name) { return typeOf(folder / name) == S_IFREG; };
    return isPart(ModelFiles::manifestName) || isPart(ModelFiles::weightsName);
}

bool ModelFolder::holdsNothingElse(const fs::path& folder) {
    std::error_code error;
    const std::vector<fs::path> entries = entriesOf(folder, error);
    if (error) throw FileError(folder, error);
    return std::ranges::all_of(entries, isWrittenByStore);
}

std::uintmax_t ModelFolder::size(const fs::path& folder) {
    std::error_code ignored;
    std::uintmax_t bytes = 0;
    for (const fs::path& entry : entriesOf(folder, ignored)) {
        if (!isWrittenByStore(entry)) continue;
        const std::uintmax_t size = fs::file_size(entry, ignored);
        if (!ignored) bytes += size;
    }
    return bytes;
}

void ModelFolder::discard(const fs::path& folder, const fs::path& heir) {
    std::error_code ignored;
    for (const fs::path& entry : entriesOf(folder, ignored)) {
        if (isWrittenByStore(entry)) {
            ::unlink(entry.c_str());
        } else if (isFolder(heir) && isFree(heir / entry.filename())) {
            ::rename(entry.c_str(), (heir / entry.filename()).c_str());
        }
    }
    ::rmdir(folder.c_str());
}

}  // namespace quillmere
