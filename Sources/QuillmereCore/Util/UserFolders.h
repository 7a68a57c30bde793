#pragma once

#include <filesystem>
#include <optional>

// Where a user's own files are. Computed on each call; nothing on disk is created or looked at. Nothing for a
// user without a home directory, which is $HOME if that is an absolute path, else that of the user database.
// Any thread, while nobody changes the environment.
namespace quillmere::UserFolders {

// Models and the journal: $XDG_DATA_HOME if it is an absolute path, else ~/.local/share, then Quillmere.
[[nodiscard]] std::optional<std::filesystem::path> data();

// Preferences: $XDG_CONFIG_HOME if it is an absolute path, else ~/.config, then Quillmere.
[[nodiscard]] std::optional<std::filesystem::path> configuration();

}  // namespace quillmere::UserFolders
