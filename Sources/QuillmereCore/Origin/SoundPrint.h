#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "QuillmereCore/Model/Corpus.h"
#include "QuillmereCore/Model/Features.h"

namespace quillmere {

// A sound as it is compared with others: its mel image at a fixed rate, from its onset on, at a common level.
// Neither model nor corpus has a part in it, so that any two sounds may be compared, whatever made them.
//
//   1. Mono at 44,100 Hz; silence before the onset is cut as in ClipPreparation::trimAndNormalise.
//   2. Magnitudes of 2048 samples every 512, in 64 mel bands, in decibels (FeatureExtractor); the first 352
//      frames, about 4 s.
//   3. The loudest value becomes 0 dB, and what is 80 dB below it or more the floor; all are rounded to half
//      decibels.
//   4. Frames at the end that lie wholly on the floor are cut: what is left are the active frames.
struct SoundPrint {
    static constexpr int sampleRate = 44100;
    static constexpr int bands = 64;
    static constexpr int mostFrames = 352;
    static constexpr double stepDB = 0.5;
    static constexpr int top = 160;  // the loudest value, in steps above the floor

    std::vector<std::uint8_t> levels;  // [frames][bands], steps above the floor; at least one frame

    [[nodiscard]] int frames() const { return static_cast<int>(levels.size()) / bands; }

    friend bool operator==(const SoundPrint&, const SoundPrint&) = default;
};

// The distance of two sounds in decibels: the root mean square difference of their levels over all bands of
// the active frames. Both begin at their onsets; where one has ended, it is on the floor, and the longer one
// says how many frames count. 0 for the same sound at any level; symmetric; at most 80.
[[nodiscard]] double distance(const SoundPrint& a, const SoundPrint& b);

// What a distance means. The limits lie where recordings of drums part; docs/relatives.md has the
// measurement.
enum class Kinship {
    copy,   // the same recording: what another file format or a little processing leaves of it
    close,  // a variant of the same sound
    fresh,  // a sound of its own, of the kind
    far,    // little in common
};
inline constexpr double copyBelowDB = 2;
inline constexpr double closeBelowDB = 6;
inline constexpr double farFromDB = 14;
[[nodiscard]] Kinship kinship(double distanceDB);
[[nodiscard]] std::string_view rawValue(Kinship kinship);  // "copy", "close", "new", "far"

// Makes prints. Immutable; several threads may share one.
class SoundPrinter {
public:
    SoundPrinter();

    // samples: mono, from the onset on, at SoundPrint::sampleRate.
    [[nodiscard]] SoundPrint print(std::span<const float> samples) const;
    // Of a file; nothing for a silent one. Throws AudioIOError.
    [[nodiscard]] std::optional<SoundPrint> print(const CorpusFile& file) const;

private:
    FeatureExtractor extractor_;
};

// Finds the nearest of many sounds, exactly. Immutable after construction; any thread.
//
// A lower bound of each distance comes first: over blocks of 8 bands and 8 frames the sum of squared
// differences is at least the square of the difference of the sums over the number of cells. Whatever is
// nearer than the last of those found so far by this bound is measured, in order of the bound, until no bound
// is nearer.
class SoundIndex {
public:
    explicit SoundIndex(std::span<const SoundPrint> prints);

    [[nodiscard]] std::size_t size() const { return sounds_.size(); }

    struct Neighbour {
        std::size_t position = 0;  // in the prints that were given
        double distance = 0;       // dB

        friend bool operator==(const Neighbour&, const Neighbour&) = default;
    };
    // The nearest, at most count, nearest first; of equal ones the first.
    [[nodiscard]] std::vector<Neighbour> nearest(const SoundPrint& sound, std::size_t count) const;

private:
    // Where a sound is in the arrays below.
    struct Sound {
        std::size_t levels = 0;  // its first
        std::size_t blocks = 0;  // its first sum
        std::size_t tails = 0;   // its first tail
        int frames = 0;
    };
    std::vector<Sound> sounds_;
    std::vector<std::uint8_t> levels_;
    std::vector<std::int32_t> sums_;  // [columns][rows] of each: the levels of a block, added
    std::vector<double> tails_;  // [columns + 1] of each: squared levels from a column of blocks to the end
};

}  // namespace quillmere
