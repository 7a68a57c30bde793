#include "QuillmereCore/Util/Paths.h"

#include <system_error>

namespace quillmere {

namespace fs = std::filesystem;

fs::path Paths::plain(const fs::path& path) {
    std::error_code error;
    const fs::path absolute = fs::absolute(path, error);
    fs::path result;
    for (const fs::path& part : error ? path : absolute) {
        if (part.empty() || part == ".") continue;
        if (part != "..") {
            result /= part;
            continue;
        }
        const fs::path target = fs::is_symlink(result, error) ? fs::canonical(result, error) : result;
        result = (error ? result : target).parent_path();
    }
    return result;
}

}  // namespace quillmere
