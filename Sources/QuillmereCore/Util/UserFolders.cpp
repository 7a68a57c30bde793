#include "QuillmereCore/Util/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

namespace quillmere::UserFolders {
namespace {

namespace fs = std::filesystem;

std::optional<fs::path> home() {
    const char* const home = std::getenv("HOME");
    if (home != nullptr && fs::path(home).is_absolute()) return home;
    std::array<char, 16384> buffer{};
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
        *found->pw_dir != '\0')
        return found->pw_dir;
    return std::nullopt;
}

// variable names the folder; belowHome is what stands for it without the variable.
std::optional<fs::path> ownFolder(const char* variable, const fs::path& belowHome) {
    constexpr const char* program = "Quillmere";
    const char* const given = std::getenv(variable);
    if (given != nullptr && fs::path(given).is_absolute()) return fs::path(given) / program;
    const std::optional<fs::path> folder = home();
    if (!folder) return std::nullopt;
    return *folder / belowHome / program;
}

}  // namespace

std::optional<fs::path> data() {
    return ownFolder("XDG_DATA_HOME", ".local/share");
}

std::optional<fs::path> configuration() {
    return ownFolder("XDG_CONFIG_HOME", ".config");
}

}  // namespace quillmere::UserFolders
