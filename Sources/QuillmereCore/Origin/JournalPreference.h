#pragma once

#include <filesystem>
#include <optional>

// Whether a user wants new files to be noted in the journal: a preference that all programs follow. They are,
// unless the user's folder of preferences has a file "no-journal", whatever is in it.
namespace quillmere::JournalPreference {

// no-journal in UserFolders::configuration(); nothing for a user without a home directory.
[[nodiscard]] std::optional<std::filesystem::path> place();

// Throws FileError where it cannot be told: whoever may have switched the journal off gets none.
[[nodiscard]] bool isOn();

// Creates the file, with its folder, or removes it. Throws FileError, and Failure for a user without a home
// directory.
void set(bool isOn);

}  // namespace quillmere::JournalPreference
