#include "QuillmereApp/TemporarySound.h"

#include <system_error>

#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Util/AtomicFile.h"

namespace quillmere {

void writeTemporarySound(std::span<const float> samples, const std::filesystem::path& file, int sampleRate) {
    std::error_code ignored;  // what is wrong with the folder, the file has, too
    std::filesystem::create_directories(file.parent_path(), ignored);
    // A link of that name could lead anywhere.
    if (std::error_code error;
        std::filesystem::is_symlink(file, ignored) && !std::filesystem::remove(file, error) && error)
        throw FileError(file, error);
    removeAbandonedFiles(file.parent_path());
    AudioIO::write(samples, file, sampleRate, OutputFormat::wav16, Durability::disposable);
}

}  // namespace quillmere
