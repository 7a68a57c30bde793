#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <stop_token>
#include <vector>

#include "QuillmereCore/DSP/STFT.h"

// What a clip's sound says of it, measured while its samples pass: the same results, bit for bit, whatever
// the pieces. Internal to ClipPreparation; one thread at a time.
namespace quillmere {

namespace clipLevels {
// Peaks up to this (-80 dB) are silence.
inline constexpr float silence = 1.0e-4F;
// The onset is where a clip first reaches -40 dB of its peak.
inline constexpr float onset = 0.01F;
}  // namespace clipLevels

// Finds the end of the last 10 ms block louder than about -45 dB.
class SoundingMeter {
public:
    explicit SoundingMeter(int sampleRate);  // Hz, > 0

    void add(std::span<const float> samples);
    // Of all samples so far; 0 when none sounds.
    [[nodiscard]] double seconds() const;

private:
    [[nodiscard]] bool isSounding() const;

    int sampleRate_;
    std::size_t blockLength_;
    float sum_ = 0;            // of squares in the block that is not yet whole
    std::size_t inBlock_ = 0;  // its samples
    std::size_t end_ = 0;      // of the last sounding block among the whole ones
    std::size_t count_ = 0;
};

// Mean spectral flatness of the loud frames between 60 and 6000 Hz.
class FlatnessMeter {
public:
    explicit FlatnessMeter(int sampleRate);  // Hz, > 0

    // Throws CancellationError when asked to stop.
    void add(std::span<const float> samples, const std::stop_token& stop);
    // Of all samples; nothing may be added afterwards. 1 when no frame is loud.
    [[nodiscard]] double finish(const std::stop_token& stop);

private:
    static constexpr int nFFT = 4096;
    static constexpr int hop = 1024;
    static constexpr std::size_t bins = nFFT / 2 + 1;
    static constexpr int context = nFFT / 2 / hop;  // frames whose centres a frame reaches back to
    static constexpr int blockFrames = 64;
    static constexpr float loudShare = 0.001F;  // of the loudest frame's energy: -30 dB

    struct Frame {
        float energy = 0;
        float flatness = 0;  // 0 when too quiet to count
    };

    // One frame's bins from low to high, both included.
    struct Band {
        std::span<const float> re, im;
        [[nodiscard]] float energy() const;
        [[nodiscard]] float flatness() const;
    };

    // Transforms the next frames and forgets the samples that no later frame needs.
    void addBlock(int count);
    void addFrame(const Band& audible);
    // Before the last frame this is an early answer: the loudest frame may be yet to come. A frame that is
    // quiet then stays quiet; a loud one may turn out to be quiet.
    [[nodiscard]] bool isLoud(const Frame& frame) const { return frame.energy > loudShare * largestEnergy_; }
    [[nodiscard]] Band bandOf(std::size_t frame) const;
    [[nodiscard]] double meanOfLoud() const;

    std::size_t low_, high_;  // bins of 60 and 6000 Hz
    STFT stft_{nFFT, hop};
    std::vector<float> re_ = std::vector<float>((context + blockFrames) * bins);  // [frames][bins]
    std::vector<float> im_ = std::vector<float>(re_.size());
    std::vector<float> signal_;  // from the centre of frame start_ on
    int start_ = 0;
    int next_ = 0;            // the first frame that is not yet transformed
    std::int64_t count_ = 0;  // samples so far
    std::vector<Frame> frames_;
    float largestEnergy_ = 0;
};

}  // namespace quillmere
