#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <span>

// Files that are complete or not there at all.
//
// The bytes go to a hidden temporary name in the destination's folder, which then takes the destination's
// name in one step: a reader never sees half a file, and a failure (a full disk included) leaves no trace.
// The bytes are on the disk before the name is theirs, so that a power cut leaves no half file either. The
// file gets the permissions that the umask leaves of rw-rw-rw-. Any thread; several threads and processes may
// write into one folder at once.
namespace quillmere {

enum class Durability {
    onDisk,      // the file outlives a power cut once the call has returned
    disposable,  // it may be lost or cut off: for what can be made again, and soon
};

// Replaces file, or creates it. A symbolic link to a file stays and its target is replaced; a name that
// belongs to a folder or a device is refused. Throws FileError naming file.
void writeFileAtomically(const std::filesystem::path& file, std::span<const std::byte> bytes,
                         Durability durability = Durability::onDisk);

// Creates file only if nothing has that name, a dangling symbolic link included: false, with nothing
// written, when the name is taken. Of several writers that try one name at once, exactly one gets it. The
// bytes are on the disk when the call returns; the name is with syncFolder, once for many files. Throws
// FileError naming file.
[[nodiscard]] bool writeNewFile(const std::filesystem::path& file, std::span<const std::byte> bytes);

// Creates file under its own name, with its bytes on the disk when the call returns: for a folder that nobody
// knows of yet. Throws FileError naming file, also when the name is taken; half a file may be there then.
void createFile(const std::filesystem::path& file, std::span<const std::byte> bytes);

// Removes the temporary files in folder whose writers ended without doing so: those that nobody has locked.
// Nothing where the folder cannot be read or the file system knows no locks.
void removeAbandonedFiles(const std::filesystem::path& folder);

// The ways in which a finished temporary file can take a name that must be free, in order of preference;
// not every file system offers each. True: from is now called to. False: the name is taken. Nothing: the
// file system does not offer this way. Throws FileError naming to. Exposed for tests.
namespace NameClaim {
[[nodiscard]] std::optional<bool> byExclusiveRename(const std::filesystem::path& from,
                                                    const std::filesystem::path& to);
[[nodiscard]] std::optional<bool> byHardLink(const std::filesystem::path& from,
                                             const std::filesystem::path& to);
// Works everywhere, but other programs can see an empty file for a moment.
[[nodiscard]] bool byPlaceholder(const std::filesystem::path& from, const std::filesystem::path& to);
}  // namespace NameClaim

}  // namespace quillmere
