#include "QuillmereCore/Origin/JournalPreference.h"

#include <span>
#include <string_view>
#include <system_error>

#include "QuillmereCore/Util/AtomicFile.h"
#include "QuillmereCore/Util/Failure.h"
#include "QuillmereCore/Util/UserFolders.h"

namespace quillmere::JournalPreference {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view content =
    "While this file is here, no journal is kept of the files that are made.\n";

}  // namespace

std::optional<fs::path> place() {
    const std::optional<fs::path> folder = UserFolders::configuration();
    if (!folder) return std::nullopt;
    return *folder / "no-journal";
}

bool isOn() {
    const std::optional<fs::path> file = place();
    if (!file) return true;
    std::error_code error;
    const fs::file_status status = fs::symlink_status(*file, error);
    if (status.type() == fs::file_type::not_found) return true;
    if (error) throw FileError(*file, error);
    return false;
}

void set(bool isOn) {
    const std::optional<fs::path> file = place();
    if (!file) throw Failure("There is no home directory to keep preferences in.");
    std::error_code error;
    if (isOn) {
        fs::remove(*file, error);
        if (error) throw FileError(*file, error);
        return;
    }
    fs::create_directories(file->parent_path(), error);
    if (error) throw FileError(file->parent_path(), error);
    writeFileAtomically(*file, std::as_bytes(std::span(content)));
}

}  // namespace quillmere::JournalPreference
