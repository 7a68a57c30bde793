#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <stop_token>

#include "QuillmereCore/Util/Descriptor.h"

namespace quillmere {

// The right to be the only one, of all threads and programs that ask with the same file. The system takes it
// back from a program that ends in whatever way. The file is there while somebody holds the lock; one that a
// killed program left behind is no obstacle. It goes by flock, so another machine on the same share may not
// be kept out.
class FileLock {
public:
    // Waits for at most patience; 0 is a single attempt. Nothing: somebody else holds it still. Throws
    // CancellationError when stop is requested meanwhile, and FileError when the lock cannot be opened for
    // another reason than those of isWithoutEffect.
    [[nodiscard]] static std::optional<FileLock> acquire(const std::filesystem::path& file,
                                                         std::chrono::milliseconds patience,
                                                         const std::stop_token& stop = {});

    // Whether somebody holds the lock at this moment. Creates nothing.
    [[nodiscard]] static bool isHeld(const std::filesystem::path& file);

    ~FileLock();
    FileLock(FileLock&&) noexcept = default;
    FileLock& operator=(FileLock&&) = delete;

    // Nobody is kept out, because the folder cannot be written to or the file system knows no locks.
    [[nodiscard]] bool isWithoutEffect() const { return !descriptor_.isOpen(); }

private:
    FileLock(std::filesystem::path file, Descriptor descriptor);

    std::filesystem::path file_;
    Descriptor descriptor_;  // none: without effect
};

}  // namespace quillmere
