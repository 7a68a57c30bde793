#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "QuillmereCore/Util/FileLock.h"

namespace quillmere {

// The name of a model folder and the hidden names beside it, which are its own:
//
//   NAME                the model
//   .NAME.lock          there while a program changes any of this
//   .NAME.new-PID-N     a model that is being written, or one that is being deleted
//   .NAME.old           the former model where the file system cannot exchange two names: for a moment
//                       there is no NAME, and this is the model
//
// A folder of the last two kinds that nobody holds the lock for was left behind by a program that was killed.
class ModelPlace {
public:
    // A symbolic link is followed: what it leads to is the model folder.
    explicit ModelPlace(const std::filesystem::path& modelFolder);

    [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }
    [[nodiscard]] std::filesystem::path root() const { return folder_.parent_path(); }
    [[nodiscard]] std::filesystem::path former() const { return hidden("old"); }

    // The lock, which is without effect where none can be made. Throws as ModelStore::replace.
    [[nodiscard]] FileLock lock(std::chrono::milliseconds patience, const std::stop_token& stop) const;
    [[nodiscard]] bool isLocked() const { return FileLock::isHeld(hidden("lock")); }
    // Removes the file of a lock that a killed program held, where nothing else would: no model is there.
    void removeAbandonedLock() const;

    // Gives .NAME.old its name back if there is no NAME. Only who holds the lock may ask. Throws FileError.
    void bringBack() const;
    // The same for who holds no lock: nothing happens if that cannot be had at once.
    void tryToBringBack() const;

    // The hidden folders other than a .NAME.old that is the model itself.
    [[nodiscard]] std::vector<std::filesystem::path> remains() const;
    // Deletes them. Only who holds the lock may ask. What cannot be deleted stays.
    void sweep() const;

    // A free name for a hidden folder.
    [[nodiscard]] std::filesystem::path freeHiddenName() const;

    // What the names of its hidden folders have in common.
    [[nodiscard]] const std::string& stem() const { return stem_; }
    // The stem of a hidden folder's name; nothing for any other name.
    [[nodiscard]] static std::optional<std::string> stem(const std::string& hiddenName);

private:
    [[nodiscard]] std::filesystem::path hidden(const std::string& suffix) const;

    std::filesystem::path folder_;
    std::string stem_;  // NAME, or a shorter form of one that leaves no room for more
};

// A new hidden folder of a place. On destruction whatever has its name then is deleted: a model that has not
// taken its place, or the one that has given it up.
class HiddenFolder {
public:
    // Throws FileError naming the model folder.
    explicit HiddenFolder(const ModelPlace& place);
    ~HiddenFolder();
    HiddenFolder(const HiddenFolder&) = delete;
    HiddenFolder& operator=(const HiddenFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

    // Writes a file and forces it to the disk. Throws FileError naming that file of the model folder.
    void write(std::string_view name, const std::string& content) const;
    // Lets the folder become the model folder. The one before gets the name of this one, or, unless aside is
    // empty, its own with aside (and a number) added, at which it stays. Throws FileError; everything is as
    // before then.
    void takePlace(std::string_view aside) const;

private:
    void exchange() const;

    ModelPlace place_;
    std::filesystem::path path_;
};

namespace ModelFolder {

// Whether something has that name. Throws FileError when that cannot be found out.
[[nodiscard]] bool isThere(const std::filesystem::path& path);
// The same for what a link leads to.
[[nodiscard]] bool leadsSomewhere(const std::filesystem::path& path);
// Whether path is a symbolic link. Throws as isThere.
[[nodiscard]] bool isLink(const std::filesystem::path& path);
// Whether folder, itself no symbolic link, holds at least a part of a model. Throws as isThere.
[[nodiscard]] bool holdsPart(const std::filesystem::path& folder);
// Whether it holds only what the store writes, unfinished files of a crash included. Throws FileError.
[[nodiscard]] bool holdsNothingElse(const std::filesystem::path& folder);
// Bytes of what the store has written there.
[[nodiscard]] std::uintmax_t size(const std::filesystem::path& folder);
// Deletes what the store has written there, and the folder. What others have put there moves into heir; what
// cannot be moved stays, and so does the folder.
void discard(const std::filesystem::path& folder, const std::filesystem::path& heir);

}  // namespace ModelFolder

}  // namespace quillmere
