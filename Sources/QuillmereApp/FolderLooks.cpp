#include "QuillmereApp/FolderLooks.h"

#include <condition_variable>
#include <map>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "QuillmereCore/Util/ThreadSafety.h"

namespace quillmere {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

const Place unknown{.kind = Place::Kind::noAnswer, .resolved = {}};

}  // namespace

struct FolderLooks::Shared {
    // One that has not ended.
    struct Running {
        Clock::time_point deadline;
        std::optional<Place> place;  // written and read under the mutex
    };

    explicit Shared(Look how) : look(std::move(how)) {}

    const Look look;
    Mutex mutex;
    std::condition_variable_any ended;
    std::map<fs::path, std::shared_ptr<Running>> running QUILLMERE_GUARDED_BY(mutex);
};

FolderLooks::FolderLooks(Look look, std::chrono::milliseconds patience)
    : shared_(std::make_shared<Shared>(std::move(look))), patience_(patience) {}

// From the top down, so that a mount that hangs costs one look and not one for each path in it.
Place FolderLooks::at(const fs::path& path) const {
    fs::path above;
    for (const fs::path& name : path.parent_path()) {
        above /= name;
        if (lookAt(above).kind == Place::Kind::noAnswer) return unknown;
    }
    return lookAt(path);
}

Place FolderLooks::lookAt(const fs::path& path) const {
    Shared& shared = *shared_;
    const MutexLock lock(shared.mutex);
    std::shared_ptr<Shared::Running> look;
    if (const auto found = shared.running.find(path); found != shared.running.end()) {
        look = found->second;
    } else {
        if (shared.running.size() >= mostLooks) return unknown;
        look = std::make_shared<Shared::Running>();
        look->deadline = Clock::now() + patience_;
        std::thread([kept = shared_, look, path] {
            Place place = kept->look(path);
            const MutexLock ending(kept->mutex);
            look->place = std::move(place);
            kept->running.erase(path);
            kept->ended.notify_all();
        }).detach();
        shared.running.emplace(path, look);
    }
    shared.ended.wait_until(shared.mutex, look->deadline, [&] { return look->place.has_value(); });
    return look->place.value_or(unknown);
}

fs::path FolderLooks::nearestFolder(const fs::path& path, const fs::path& otherwise) const {
    for (fs::path folder = path;; folder = folder.parent_path()) {
        switch (at(folder).kind) {
            case Place::Kind::folder:
                return folder;
            case Place::Kind::noAnswer:
                return otherwise;
            case Place::Kind::nothing:
            case Place::Kind::file:
                if (folder == folder.parent_path()) return otherwise;
        }
    }
}

Place FolderLooks::onDisk(const fs::path& path) {
    std::error_code ignored;  // what cannot be looked at is nothing that could be used
    const fs::file_status status = fs::status(path, ignored);
    Place place;
    if (fs::is_directory(status)) {
        place.kind = Place::Kind::folder;
    } else if (fs::exists(status)) {
        place.kind = Place::Kind::file;
    }
    place.resolved = fs::weakly_canonical(path, ignored);
    if (ignored) place.resolved = path;
    return place;
}

}  // namespace quillmere
