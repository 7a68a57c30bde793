#include "QuillmereApp/Trash.h"

#include <system_error>

#include "QuillmereApp/MoveFile.h"

namespace quillmere {

bool Trash::restore(const std::filesystem::path& place, const std::filesystem::path& file) {
    if (!moveFile(place, file)) return false;
    // What the trash knows of it: ../info/NAME.trashinfo. Without one the file is back all the same.
    std::error_code ignored;
    std::filesystem::remove(
        place.parent_path().parent_path() / "info" / (place.filename().native() + ".trashinfo"), ignored);
    return true;
}

}  // namespace quillmere
