#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>

namespace quillmere {

// What is at a path.
struct Place {
    enum class Kind { nothing, folder, file, noAnswer };

    Kind kind = Kind::nothing;
    std::filesystem::path resolved;  // without links and dots as far as it exists; empty without an answer
};

// Looks at folders that may never answer, as those of a network mount whose server is gone. Each look has a
// thread of its own, which is left behind when it hangs; there is never more than one for a path, and none
// below a folder that hangs. Whoever asks gets noAnswer after a while, and at once where a look hangs
// already.
//
// Threads: any, but not the user-interface thread, because who asks waits.
class FolderLooks {
public:
    using Look = std::function<Place(const std::filesystem::path&)>;

    static constexpr std::chrono::milliseconds usualPatience{3000};
    // Looks that may hang at a time. Beyond them every path has no answer.
    static constexpr std::size_t mostLooks = 16;

    explicit FolderLooks(Look look = onDisk, std::chrono::milliseconds patience = usualPatience);

    [[nodiscard]] Place at(const std::filesystem::path& path) const;
    // The folder itself or the nearest one above it that exists, where a folder chooser can start; otherwise
    // where one of them does not answer.
    [[nodiscard]] std::filesystem::path nearestFolder(const std::filesystem::path& path,
                                                      const std::filesystem::path& otherwise) const;

    // The look itself: as long as the file system takes.
    [[nodiscard]] static Place onDisk(const std::filesystem::path& path);

private:
    struct Shared;

    // Looks at this path alone.
    [[nodiscard]] Place lookAt(const std::filesystem::path& path) const;

    std::shared_ptr<Shared> shared_;  // outlives this for threads that are left behind
    std::chrono::milliseconds patience_;
};

}  // namespace quillmere
