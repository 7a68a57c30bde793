#include "QuillmereCore/Origin/SoundPrint.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "QuillmereCore/Model/ClipPreparation.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

constexpr int blockBands = 8;
constexpr int blockFrames = 8;
constexpr int blockRows = SoundPrint::bands / blockBands;
constexpr double blockCells = blockBands * blockFrames;
constexpr std::size_t bands = SoundPrint::bands;

constexpr ModelConfig printConfig{.sampleRate = SoundPrint::sampleRate,
                                  .nFFT = 2048,
                                  .hop = 512,
                                  .nMels = SoundPrint::bands,
                                  .frames = SoundPrint::mostFrames,
                                  .latentDim = 1,
                                  .profile = AnalysisProfile::percussive};

using Levels = std::span<const std::uint8_t>;

int columnsOf(int frames) {
    return (frames + blockFrames - 1) / blockFrames;
}

// Sum of squares; levels are small enough for 32 bits over all of a print.
std::int64_t energy(Levels levels) {
    std::int32_t sum = 0;
    for (const std::uint8_t level : levels)
        sum += std::int32_t{level} * level;
    return sum;
}

std::int64_t squaredDifferences(Levels a, Levels b) {
    std::int32_t sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        const std::int32_t difference = std::int32_t{a[i]} - std::int32_t{b[i]};
        sum += difference * difference;
    }
    return sum;
}

// Between sounds of which one may go on longer.
std::int64_t squaredDistance(Levels a, Levels b) {
    const std::size_t common = std::min(a.size(), b.size());
    return squaredDifferences(a.first(common), b.first(common)) + energy(a.subspan(common)) +
           energy(b.subspan(common));
}

// From a sum of squares of steps to decibels.
double inDecibels(double squares, int framesA, int framesB) {
    const double cells = static_cast<double>(bands) * std::max(framesA, framesB);
    return SoundPrint::stepDB * std::sqrt(squares / cells);
}

// The sums of all blocks, [columns][rows].
void appendSums(Levels levels, std::vector<std::int32_t>& sums) {
    const std::size_t frames = levels.size() / bands;
    const std::size_t first = sums.size();
    sums.resize(first + static_cast<std::size_t>(columnsOf(static_cast<int>(frames)) * blockRows));
    for (std::size_t frame = 0; frame < frames; ++frame) {
        for (std::size_t band = 0; band < bands; ++band)
            sums[first + frame / blockFrames * blockRows + band / blockBands] += levels[frame * bands + band];
    }
}

// Squared levels from each column of blocks to the end, and a zero.
void appendTails(Levels levels, std::vector<double>& tails) {
    constexpr std::size_t columnCells = bands * blockFrames;
    const std::size_t columns = (levels.size() + columnCells - 1) / columnCells;
    for (std::size_t column = 0; column <= columns; ++column)
        tails.push_back(
            static_cast<double>(energy(levels.subspan(std::min(column * columnCells, levels.size())))));
}

}  // namespace

double distance(const SoundPrint& a, const SoundPrint& b) {
    return inDecibels(static_cast<double>(squaredDistance(a.levels, b.levels)), a.frames(), b.frames());
}

Kinship kinship(double distanceDB) {
    if (distanceDB < copyBelowDB) return Kinship::copy;
    if (distanceDB < closeBelowDB) return Kinship::close;
    return distanceDB < farFromDB ? Kinship::fresh : Kinship::far;
}

std::string_view rawValue(Kinship kinship) {
    switch (kinship) {
        case Kinship::copy:
            return "copy";
        case Kinship::close:
            return "close";
        case Kinship::fresh:
            return "new";
        case Kinship::far:
            break;
    }
    return "far";
}

SoundPrinter::SoundPrinter() : extractor_(printConfig) {}

SoundPrint SoundPrinter::print(std::span<const float> samples) const {
    STFT stft = extractor_.makeSTFT();
    const std::vector<float> image = extractor_.features(samples, stft);
    const float loudest = Level::toDB(*std::ranges::max_element(image));
    SoundPrint result;
    result.levels.resize(image.size());
    std::size_t active = 1;
    for (std::size_t band = 0; band < bands; ++band) {
        for (std::size_t frame = 0; frame < SoundPrint::mostFrames; ++frame) {
            const float dB = Level::toDB(image[band * SoundPrint::mostFrames + frame]) - loudest;
            const float steps = std::round(dB / static_cast<float>(SoundPrint::stepDB)) + SoundPrint::top;
            const auto level = static_cast<std::uint8_t>(std::max(steps, 0.0F));
            result.levels[frame * bands + band] = level;
            if (level > 0) active = std::max(active, frame + 1);
        }
    }
    result.levels.resize(active * bands);
    result.levels.shrink_to_fit();
    return result;
}

std::optional<SoundPrint> SoundPrinter::print(const CorpusFile& file) const {
    const std::optional<DecodedClip> clip = ClipPreparation::decode(file, SoundPrint::sampleRate);
    if (!clip) return std::nullopt;
    return print(clip->samples);
}

SoundIndex::SoundIndex(std::span<const SoundPrint> prints) {
    sounds_.reserve(prints.size());
    for (const SoundPrint& print : prints) {
        require(print.frames() >= 1 && print.frames() <= SoundPrint::mostFrames, "a print of another size");
        sounds_.push_back({levels_.size(), sums_.size(), tails_.size(), print.frames()});
        levels_.insert(levels_.end(), print.levels.begin(), print.levels.end());
        appendSums(print.levels, sums_);
        appendTails(print.levels, tails_);
    }
}

std::vector<SoundIndex::Neighbour> SoundIndex::nearest(const SoundPrint& sound, std::size_t count) const {
    if (count == 0 || sounds_.empty()) return {};
    std::vector<std::int32_t> sums;
    std::vector<double> tails;
    appendSums(sound.levels, sums);
    appendTails(sound.levels, tails);
    const int columns = columnsOf(sound.frames());

    // A heap with the nearest bound on top.
    const auto isFarther = [](const Neighbour& a, const Neighbour& b) {
        return std::pair(a.distance, a.position) > std::pair(b.distance, b.position);
    };
    std::vector<Neighbour> bounds(sounds_.size());
    for (std::size_t i = 0; i < sounds_.size(); ++i) {
        const Sound& other = sounds_[i];
        const int common = std::min(columns, columnsOf(other.frames));
        const std::int32_t* const theirs = sums_.data() + other.blocks;
        double squares = 0;
        for (std::size_t k = 0; k < static_cast<std::size_t>(common) * blockRows; ++k) {
            const auto difference = static_cast<double>(sums[k] - theirs[k]);
            squares += difference * difference;
        }
        const auto end = static_cast<std::size_t>(common);
        const double tail = tails[end] + tails_[other.tails + end];
        bounds[i] = {i, inDecibels(squares / blockCells + tail, sound.frames(), other.frames)};
    }
    std::ranges::make_heap(bounds, isFarther);

    std::vector<Neighbour> found;  // a heap with the farthest on top
    const auto isNearer = [&](const Neighbour& a, const Neighbour& b) { return isFarther(b, a); };
    while (!bounds.empty()) {
        std::ranges::pop_heap(bounds, isFarther);
        const Neighbour bound = bounds.back();
        bounds.pop_back();
        if (found.size() == count && bound.distance > found.front().distance) break;
        const Sound& other = sounds_[bound.position];
        const Levels theirs =
            Levels(levels_).subspan(other.levels, bands * static_cast<std::size_t>(other.frames));
        const auto squares = static_cast<double>(squaredDistance(sound.levels, theirs));
        found.push_back({bound.position, inDecibels(squares, sound.frames(), other.frames)});
        std::ranges::push_heap(found, isNearer);
        if (found.size() > count) {
            std::ranges::pop_heap(found, isNearer);
            found.pop_back();
        }
    }
    std::ranges::sort(found, isNearer);
    return found;
}

}  // namespace quillmere
