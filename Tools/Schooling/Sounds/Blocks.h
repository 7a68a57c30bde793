#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "QuillmereCore/Util/RNG.h"

// What sounds by rule are composed of: chances, envelopes, oscillators, filters. Small values, single
// threads, times in seconds, frequencies in hertz, mono samples at one rate.
namespace quillmere::schooling {

inline constexpr int sampleRate = 44100;

using Samples = std::vector<float>;

// As many samples as last for seconds; at least one.
[[nodiscard]] std::size_t samplesIn(double seconds);

// Seeded draws.
class Dice {
public:
    explicit Dice(std::uint64_t seed) : rng_(seed) {}

    [[nodiscard]] double between(double low, double high);
    // Even over the logarithm: for frequencies, times and levels. Both positive.
    [[nodiscard]] double logBetween(double low, double high);
    [[nodiscard]] bool chance(double probability);
    [[nodiscard]] int below(int n);                   // 0 ... n - 1
    [[nodiscard]] int from(int lowest, int highest);  // both inclusive
    [[nodiscard]] double normal();
    [[nodiscard]] double phase();  // radians
    template <typename T>
    [[nodiscard]] T pick(std::span<const T> choices) {
        return choices[static_cast<std::size_t>(below(static_cast<int>(choices.size())))];
    }

private:
    SeededRNG rng_;
};

// A level over time: a straight attack, a hold, an exponential decay.
struct Envelope {
    double attack = 0.001;
    double hold = 0;
    double decay = 0.1;  // time constant

    [[nodiscard]] double at(double seconds) const;
    void shape(std::span<float> samples) const;
};

// An exponential approach from one value to another.
struct Glide {
    double from = 0;
    double to = 0;
    double time = 0.1;  // time constant

    [[nodiscard]] double at(double seconds) const;
};

// Slow, shallow movement of a pitch that sets in late, as players do it.
struct Vibrato {
    double hz = 5;
    double depth = 0;  // share of the frequency
    double onset = 0.3;
    double phase = 0;

    [[nodiscard]] double factorAt(double seconds) const;
};

// Adds a sine that decays from its first sample on. Nothing at or above half the rate.
struct Partial {
    double hz = 440;
    double amplitude = 1;
    double decay = 1;  // time constant
    double phase = 0;

    void addTo(std::span<float> samples) const;
};

// A saw, or the difference of two, without most of what would fold back (polynomial steps: Valimaki and
// Huovilainen, 2007).
class Saw {
public:
    explicit Saw(double phase) : phase_(phase) {}  // 0 ... 1
    [[nodiscard]] float next(double hz);

private:
    double phase_;
};

class Pulse {
public:
    Pulse(double phase, double width) : rising_(phase), falling_(phase + width) {}
    [[nodiscard]] float next(double hz) { return rising_.next(hz) - falling_.next(hz); }

private:
    Saw rising_, falling_;
};

// Two poles, three outputs, steady while it is swept (Simper's form of the state variable filter, 2013).
class Filter {
public:
    enum class Kind { low, band, high };

    Filter(Kind kind, double hz, double q) : kind_(kind) { tune(hz, q); }
    void tune(double hz, double q);  // hz: brought to below half the rate
    [[nodiscard]] float next(float input);
    void run(std::span<float> samples);

private:
    Kind kind_;
    double g_ = 0, k_ = 0, first_ = 0, second_ = 0;
};

// Normal noise.
[[nodiscard]] Samples noise(Dice& dice, std::size_t count);
// Noise between two frequencies with edges of 12 or 24 dB per octave.
[[nodiscard]] Samples bandNoise(Dice& dice, std::size_t count, double low, double high);
// Removes what is below and above.
void passBand(Dice& dice, std::span<float> samples, double low, double high);

// A string: noise in a loop that loses its high frequencies and its level (Karplus and Strong, 1983).
struct StringLoop {
    double hz = 220;
    double loss = 0.996;      // level from one round to the next
    double brightness = 0.5;  // of the pick, 0 ... 1

    [[nodiscard]] Samples pluck(Dice& dice, std::size_t count) const;
};

void add(std::span<float> sum, std::span<const float> what, double gain);
// To a largest absolute value of peak; silence stays.
void bringToPeak(std::span<float> samples, double peak);

}  // namespace quillmere::schooling
