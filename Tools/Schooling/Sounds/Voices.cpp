#include "Schooling/Sounds/Voices.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace quillmere::schooling {
namespace {

constexpr double twoPi = 2 * std::numbers::pi;

// Frequencies of a circular membrane and of a free bar, relative to the lowest.
constexpr std::array<double, 12> membraneRatios{1,    1.59, 2.14, 2.30, 2.65, 2.92,
                                                3.16, 3.50, 3.60, 3.65, 4.06, 4.15};
constexpr std::array<double, 6> barRatios{1, 2.756, 5.404, 8.933, 13.345, 18.64};

using Formants = std::array<double, 3>;
// Of vowels between open, front and back (Peterson and Barney, 1952).
constexpr std::array<Formants, 10> vowels{{{270, 2290, 3010},
                                           {390, 1990, 2550},
                                           {530, 1840, 2480},
                                           {660, 1720, 2410},
                                           {730, 1090, 2440},
                                           {570, 840, 2410},
                                           {440, 1020, 2240},
                                           {300, 870, 2240},
                                           {640, 1190, 2390},
                                           {490, 1350, 1690}}};

enum class Spectrum { harmonic, stretched, scattered, membrane, bar };

double ratioOf(Spectrum spectrum, int partial, double stretch, Dice& dice) {
    const auto index = static_cast<std::size_t>(partial);
    const double number = partial + 1;
    switch (spectrum) {
        case Spectrum::harmonic:
            return number;
        case Spectrum::stretched:
            return std::pow(number, stretch);
        case Spectrum::scattered:
            return partial == 0 ? 1 : dice.between(1, 10);
        case Spectrum::membrane:
            return membraneRatios[index % membraneRatios.size()] * (index < membraneRatios.size() ? 1 : 2.1);
        case Spectrum::bar:
            return barRatios[index % barRatios.size()] * (index < barRatios.size() ? 1 : 1.5);
    }
    return number;
}

// Three resonances in parallel whose places move.
class Throat {
public:
    Throat(const Formants& formants, double size) : size_(size), now_(formants) {
        for (std::size_t i = 0; i < now_.size(); ++i)
            filters_.emplace_back(Filter::Kind::band, size * now_[i], quality[i]);
    }

    // A step of the way to these formants.
    void moveTowards(const Formants& formants, double share) {
        for (std::size_t i = 0; i < now_.size(); ++i) {
            now_[i] += share * (formants[i] - now_[i]);
            filters_[i].tune(size_ * now_[i], quality[i]);
        }
    }

    [[nodiscard]] float next(float input) {
        float sum = 0;
        for (std::size_t i = 0; i < filters_.size(); ++i)
            sum += level[i] * filters_[i].next(input);
        return sum;
    }

private:
    static constexpr Formants quality{6, 10, 12};
    static constexpr std::array<float, 3> level{1, 0.6F, 0.35F};

    double size_;
    Formants now_;
    std::vector<Filter> filters_;
};

enum class Segment { vowel, hum, hiss, voicedHiss, stop };

// How loud voice and hiss are in a segment.
struct Levels {
    double voice, hiss;
};

Levels levelsOf(Segment segment) {
    switch (segment) {
        case Segment::vowel:
            return {1, 0};
        case Segment::hum:
            return {0.4, 0};
        case Segment::hiss:
            return {0, 0.5};
        case Segment::voicedHiss:
            return {0.3, 0.25};
        case Segment::stop:
            return {0, 0};
    }
    return {0, 0};
}

// What one segment adds to the throat and beside it.
struct Articulation {
    Segment kind = Segment::vowel;
    Formants formants{};
    double hissLow = 3000, hissHigh = 8000;
    std::size_t length = 0;
};

Articulation drawArticulation(Dice& dice, double segment, bool afterConsonant) {
    constexpr std::array consonants{Segment::hum, Segment::hiss, Segment::voicedHiss, Segment::stop,
                                    Segment::stop};
    Articulation result;
    const bool vowel = afterConsonant || dice.chance(0.3);
    result.kind = vowel ? Segment::vowel : dice.pick(std::span<const Segment>(consonants));
    result.formants = dice.pick(std::span<const Formants>(vowels));
    result.hissLow = dice.logBetween(800, 6000);
    result.hissHigh = result.hissLow * dice.between(1.4, 4);
    result.length = samplesIn(segment * dice.logBetween(0.5, 1.8) * (vowel ? 1 : 0.6));
    return result;
}

}  // namespace

Samples modes(Dice& dice, std::size_t count, double lowest, int partials, double decay) {
    Samples samples(count);
    const auto spectrum = static_cast<Spectrum>(dice.below(5));
    const double stretch = dice.between(1, 2);
    const double slope = dice.between(0, 1.5);
    const double damping = dice.between(0, 1);
    for (int i = 0; i < partials; ++i) {
        const double detune = 1 + 0.004 * dice.normal();
        Partial{.hz = lowest * ratioOf(spectrum, i, stretch, dice) * detune,
                .amplitude = dice.between(0.1, 1) / std::pow(i + 1, slope),
                .decay = decay / (1 + damping * i),
                .phase = dice.phase()}
            .addTo(samples);
    }
    Envelope{.attack = dice.logBetween(0.0003, 0.01), .hold = 1e6}.shape(samples);
    bringToPeak(samples, 1);
    return samples;
}

Samples struckString(Dice& dice, std::size_t count, double hz) {
    Samples samples(count);
    const double stiffness = dice.logBetween(5e-5, 2e-3);
    const double slope = dice.between(0.6, 2);
    const double decay = dice.logBetween(0.15, 3) * std::sqrt(220 / hz);
    const double place = dice.between(0.08, 0.3);  // of the hammer along the string
    const int partials = std::min(40, static_cast<int>(16000 / hz));
    for (int n = 1; n <= partials; ++n) {
        const double amplitude =
            (0.05 + std::abs(std::sin(std::numbers::pi * n * place))) * std::pow(n, -slope);
        const double own = decay / (1 + 0.15 * n);
        const double frequency = hz * n * std::sqrt(1 + stiffness * n * n);
        Partial{frequency, amplitude, 0.25 * own, dice.phase()}.addTo(samples);
        Partial{frequency * (1 + 3e-4 * dice.normal()), 0.35 * amplitude, own, dice.phase()}.addTo(samples);
    }
    bringToPeak(samples, 1);
    Samples hammer = bandNoise(dice, count, 80, dice.logBetween(800, 6000));
    Envelope{.attack = 0.001, .decay = dice.logBetween(0.004, 0.03)}.shape(hammer);
    add(samples, hammer, dice.logBetween(0.01, 0.4));
    Envelope{.attack = dice.logBetween(0.0005, 0.004), .hold = 1e6}.shape(samples);
    bringToPeak(samples, 1);
    return samples;
}

Samples frequencyModulation(Dice& dice, std::size_t count, double hz, double decay) {
    constexpr std::array ratios{0.5, 1.0, 1.41, 2.0, 3.0, 3.5, 3.7, 7.1, 14.0};
    const double ratio = dice.pick(std::span<const double>(ratios));
    const Glide depth{dice.logBetween(0.3, 10), dice.chance(0.5) ? 0 : dice.between(0, 1), decay * 0.5};
    const Envelope level{.attack = dice.logBetween(0.0003, 0.02), .decay = decay};
    const double start = dice.phase();
    const double angle = twoPi * hz / sampleRate;
    Samples samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double seconds = static_cast<double>(i) / sampleRate;
        const double phase = angle * static_cast<double>(i);
        samples[i] = static_cast<float>(
            level.at(seconds) * std::sin(phase + start + depth.at(seconds) * std::sin(ratio * phase)));
    }
    bringToPeak(samples, 1);
    return samples;
}

Samples speech(Dice& dice, std::size_t count, double hz, double segment) {
    Samples samples(count);
    const double size = dice.between(0.9, 1.25);
    const double breath = dice.logBetween(0.005, 0.1);
    const double fall = dice.between(-0.35, 0.15);
    Throat throat(dice.pick(std::span<const Formants>(vowels)), size);
    Saw cords(0);
    Filter softening(Filter::Kind::low, dice.logBetween(800, 3000), 0.6);
    double voice = 0, hiss = 0;  // levels, which never jump
    bool afterConsonant = false;
    for (std::size_t begin = 0; begin < count;) {
        const Articulation now = drawArticulation(dice, segment, afterConsonant);
        afterConsonant = now.kind != Segment::vowel;
        Filter hissFilter(Filter::Kind::band, std::sqrt(now.hissLow * now.hissHigh), 1.5);
        const std::size_t end = std::min(count, begin + now.length);
        const Levels aim = levelsOf(now.kind);
        const std::size_t burst = begin + now.length / 2;  // of a stop, after its silence
        for (std::size_t i = begin; i < end; ++i) {
            const double done = static_cast<double>(i) / static_cast<double>(count);
            const bool bursts = now.kind == Segment::stop && i >= burst && i < burst + samplesIn(0.012);
            voice += 0.0015 * (aim.voice - voice);
            hiss += bursts ? 0.05 * (1 - hiss) : 0.002 * (aim.hiss - hiss);
            if (i % 64 == 0) throat.moveTowards(now.kind == Segment::hum ? vowels[7] : now.formants, 0.04);
            const auto air = static_cast<float>(dice.normal());
            const float pulses = softening.next(cords.next(hz * (1 + fall * done)));
            const float source = static_cast<float>(voice) * (pulses + static_cast<float>(breath) * air);
            samples[i] = throat.next(source) + static_cast<float>(0.3 * hiss) * hissFilter.next(air);
        }
        begin = end;
    }
    bringToPeak(samples, 1);
    return samples;
}

Samples singing(Dice& dice, std::size_t count, double hz) {
    Samples samples(count);
    const double size = dice.between(0.85, 1.3);
    const Vibrato vibrato{dice.between(4, 7), dice.logBetween(0.001, 0.02), dice.between(0.1, 1),
                          dice.phase()};
    const double breath = dice.logBetween(0.003, 0.1);
    const Formants first = dice.pick(std::span<const Formants>(vowels));
    const Formants second = dice.chance(0.5) ? first : dice.pick(std::span<const Formants>(vowels));
    const double change = dice.between(0.2, 0.9);
    Throat throat(first, size);
    Saw cords(0);
    Filter softening(Filter::Kind::low, dice.logBetween(700, 4000), 0.6);
    for (std::size_t i = 0; i < count; ++i) {
        const double seconds = static_cast<double>(i) / sampleRate;
        if (i % 64 == 0 && static_cast<double>(i) > change * static_cast<double>(count))
            throat.moveTowards(second, 0.01);
        const float pulses = softening.next(cords.next(hz * vibrato.factorAt(seconds)));
        samples[i] = throat.next(pulses + static_cast<float>(breath * dice.normal()));
    }
    bringToPeak(samples, 1);
    return samples;
}

}  // namespace quillmere::schooling
