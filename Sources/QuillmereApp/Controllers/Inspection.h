#pragma once

#include <QImage>
#include <QList>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "QuillmereApp/LevelMatch.h"
#include "QuillmereApp/Player.h"
#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Origin/SoundPrint.h"
#include "QuillmereCore/Util/ThreadSafety.h"

// What is found out about a sound that is looked at closely. Takes its time: for work in the background.
namespace quillmere::Inspection {

struct Facts {
    PlayableSound sound;
    LevelMatch::Level level;
    QList<qreal> peaks;               // as ResultsModel has them, but more
    QImage picture;                   // its mel image over its whole length
    std::optional<SoundPrint> print;  // nothing for a silent one
};

// Throws AudioIOError.
[[nodiscard]] PlayableSound read(const std::filesystem::path& file);
[[nodiscard]] Facts factsOf(const PlayableSound& sound);
// Its print alone; null for a silent one.
[[nodiscard]] std::shared_ptr<const SoundPrint> printOf(const PlayableSound& sound);
// Where the energy of a sound lies among the bands of its print: 0 in the lowest ... 1 in the highest one.
[[nodiscard]] double brightness(const SoundPrint& print);

// What has been measured of the files of one corpus: an attempt that is stopped leaves it to the next one.
// Any thread.
class MeasuredFiles {
public:
    // Of the file of that number: null for one that has no print; nothing while it has not been measured.
    [[nodiscard]] std::optional<std::shared_ptr<const SoundPrint>> of(std::size_t file) const;
    void add(std::size_t file, std::shared_ptr<const SoundPrint> print);

private:
    mutable Mutex mutex_;
    std::map<std::size_t, std::shared_ptr<const SoundPrint>> prints_ QUILLMERE_GUARDED_BY(mutex_);
};

// The prints of a corpus's files, to find those that a sound is near to. Silent and unreadable files have
// none. Immutable once made.
class CorpusPrints {
public:
    enum class Pace {
        quick,  // on all processors
        calm,   // on the calling thread alone
    };

    // Reads and measures all files but those that known has, to which the others are added; progress(done)
    // counts both and comes from several threads. Throws AudioIOError for the system's trouble, and
    // CancellationError.
    CorpusPrints(std::shared_ptr<const CorpusSummary> corpus,
                 const std::function<void(std::int64_t done)>& progress, const std::stop_token& stop,
                 Pace pace = Pace::quick,
                 const std::shared_ptr<MeasuredFiles>& known = std::make_shared<MeasuredFiles>());

    struct Neighbour {
        std::string name;     // of the file, below its corpus
        double distance = 0;  // dB
    };
    // At most count, nearest first.
    [[nodiscard]] std::vector<Neighbour> nearest(const SoundPrint& print, std::size_t count) const;

private:
    std::shared_ptr<const CorpusSummary> corpus_;
    std::vector<std::size_t> files_;  // of the corpus, one per print
    std::optional<SoundIndex> index_;
};

}  // namespace quillmere::Inspection
