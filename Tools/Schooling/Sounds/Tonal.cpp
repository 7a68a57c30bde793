#include "Schooling/Sounds/Tonal.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "Schooling/Sounds/Voices.h"

namespace quillmere::schooling {
namespace {

constexpr double twoPi = 2 * std::numbers::pi;

double note(Dice& dice, double lowest, double highest) {
    return dice.logBetween(lowest, highest);
}

// A level that is held and let go before the end.
Envelope held(Dice& dice, std::size_t count, double slowestAttack) {
    const double seconds = static_cast<double>(count) / sampleRate;
    return {.attack = dice.logBetween(0.003, slowestAttack),
            .hold = seconds * dice.between(0.2, 1),
            .decay = dice.logBetween(0.03, 0.5)};
}

Vibrato drawVibrato(Dice& dice) {
    return {dice.between(4, 7), dice.chance(0.6) ? dice.logBetween(0.001, 0.012) : 0, dice.between(0.1, 1),
            dice.phase()};
}

struct Organ {
    double hz;
    std::array<double, 9> drawbars;
};

Organ drawOrgan(Dice& dice, double hz) {
    Organ organ{hz, {}};
    for (double& level : organ.drawbars)
        level = dice.chance(0.6) ? dice.logBetween(0.05, 1) : 0;
    organ.drawbars[2] += 0.3;
    return organ;
}

void addOrgan(Dice& dice, const Organ& organ, std::span<float> samples) {
    constexpr std::array ratios{0.5, 1.5, 1.0, 2.0, 3.0, 4.0, 5.0, 6.0, 8.0};
    constexpr double endless = 1e6;
    for (std::size_t i = 0; i < ratios.size(); ++i)
        Partial{organ.hz * ratios[i], organ.drawbars[i], endless, dice.phase()}.addTo(samples);
}

// Saws that are a little apart, through a filter that opens or closes.
Samples detunedSaws(Dice& dice, std::size_t count, double hz, const Glide& cutoff) {
    Samples samples(count);
    const double apart = dice.logBetween(0.0005, 0.01);
    for (int i = dice.from(2, 5); i > 0; --i) {
        Saw saw(dice.between(0, 1));
        const double own = hz * (1 + apart * dice.normal());
        for (float& sample : samples)
            sample += saw.next(own);
    }
    Filter filter(Filter::Kind::low, cutoff.from, dice.logBetween(0.6, 4));
    const double q = dice.logBetween(0.6, 4);
    for (std::size_t i = 0; i < count; ++i) {
        if (i % 32 == 0) filter.tune(cutoff.at(static_cast<double>(i) / sampleRate), q);
        samples[i] = filter.next(samples[i]);
    }
    bringToPeak(samples, 1);
    return samples;
}

// Harmonics that follow the breath: the louder, the brighter.
Samples pipe(Dice& dice, std::size_t count, double hz) {
    Samples samples(count);
    const Vibrato vibrato = drawVibrato(dice);
    const bool oddOnly = dice.chance(0.35);
    const double slope = dice.between(0.8, 2.5);
    const int harmonics = std::min(dice.from(3, 24), static_cast<int>(15000 / hz));
    std::vector<double> levels;
    for (int n = 1; n <= harmonics; ++n)
        levels.push_back(dice.between(0.4, 1) * std::pow(n, -slope) * (oddOnly && n % 2 == 0 ? 0.05 : 1));
    const Envelope breath = held(dice, count, 0.2);
    double phase = dice.phase();
    for (std::size_t i = 0; i < count; ++i) {
        const double seconds = static_cast<double>(i) / sampleRate;
        phase += twoPi * hz * vibrato.factorAt(seconds) / sampleRate;
        const double level = breath.at(seconds);
        // sin(n phase) from the two before it.
        const double twice = 2 * std::cos(phase);
        double before = 0;
        double now = std::sin(phase);
        double bright = 1;
        double sum = 0;
        for (const double amplitude : levels) {
            sum += amplitude * bright * now;
            const double next = twice * now - before;
            before = now;
            now = next;
            bright *= 0.3 + 0.7 * level;
        }
        samples[i] = static_cast<float>(level * sum);
    }
    bringToPeak(samples, 1);
    Samples air = bandNoise(dice, count, 0.8 * hz, std::min(14000.0, dice.between(4, 20) * hz));
    breath.shape(air);
    add(samples, air, dice.logBetween(0.003, 0.2));
    return samples;
}

}  // namespace

Samples plucked(Dice& dice, std::size_t count) {
    const double hz = note(dice, 50, 1000);
    Samples samples = StringLoop{hz, dice.between(0.985, 0.9995), dice.between(0.1, 1)}.pluck(dice, count);
    Samples body = samples;
    Filter(Filter::Kind::band, dice.logBetween(90, 500), dice.between(1, 5)).run(body);
    add(samples, body, dice.between(0, 1.5));
    return samples;
}

Samples struck(Dice& dice, std::size_t count) {
    return struckString(dice, count, note(dice, 30, 2000));
}

Samples bell(Dice& dice, std::size_t count) {
    return modes(dice, count, note(dice, 100, 2000), dice.from(3, 14), dice.logBetween(0.2, 3));
}

Samples blown(Dice& dice, std::size_t count) {
    return pipe(dice, count, note(dice, 60, 1600));
}

Samples bowed(Dice& dice, std::size_t count) {
    Samples samples(count);
    const double hz = note(dice, 50, 1500);
    const Vibrato vibrato = drawVibrato(dice);
    Saw saw(dice.between(0, 1));
    for (std::size_t i = 0; i < count; ++i) {
        const double unsteady = 1 + 0.0006 * dice.normal();
        samples[i] = saw.next(hz * unsteady * vibrato.factorAt(static_cast<double>(i) / sampleRate));
    }
    add(samples, noise(dice, count), dice.logBetween(0.005, 0.08));
    Samples body(count);
    for (int i = dice.from(3, 6); i > 0; --i) {
        Samples resonance = samples;
        Filter(Filter::Kind::band, dice.logBetween(200, 4500), dice.between(1.5, 8)).run(resonance);
        add(body, resonance, dice.between(0.3, 1));
    }
    Filter(Filter::Kind::low, dice.logBetween(1500, 9000), 0.7).run(samples);
    add(samples, body, dice.between(0.3, 2));
    held(dice, count, 0.4).shape(samples);
    return samples;
}

Samples organ(Dice& dice, std::size_t count) {
    Samples samples(count);
    addOrgan(dice, drawOrgan(dice, note(dice, 50, 1000)), samples);
    bringToPeak(samples, 1);
    Samples key = bandNoise(dice, count, 1000, 9000);
    Envelope{.attack = 0.0005, .decay = 0.005}.shape(key);
    add(samples, key, dice.between(0, 0.3));
    held(dice, count, 0.05).shape(samples);
    return samples;
}

Samples electricKey(Dice& dice, std::size_t count) {
    return frequencyModulation(dice, count, note(dice, 45, 1500), dice.logBetween(0.3, 3));
}

Samples pad(Dice& dice, std::size_t count) {
    const double hz = note(dice, 60, 800);
    const Glide cutoff{dice.logBetween(200, 8000), dice.logBetween(300, 6000), dice.logBetween(0.2, 2)};
    Samples samples = detunedSaws(dice, count, hz, cutoff);
    held(dice, count, 1.5).shape(samples);
    return samples;
}

Samples bass(Dice& dice, std::size_t count) {
    const double hz = note(dice, 28, 200);
    const double low = hz * dice.between(1, 6);
    Samples samples =
        detunedSaws(dice, count, hz, {low * dice.logBetween(1, 20), low, dice.logBetween(0.03, 0.6)});
    Partial{hz, dice.between(0, 1), 1e6, dice.phase()}.addTo(samples);
    if (dice.chance(0.5)) {
        Envelope{.attack = 0.003, .decay = dice.logBetween(0.1, 2)}.shape(samples);
    } else {
        held(dice, count, 0.03).shape(samples);
    }
    return samples;
}

Samples voice(Dice& dice, std::size_t count) {
    Samples samples = singing(dice, count, note(dice, 75, 900));
    held(dice, count, 0.4).shape(samples);
    return samples;
}

Samples sentence(Dice& dice, std::size_t count) {
    return speech(dice, count, dice.logBetween(75, 280), dice.logBetween(0.06, 0.2));
}

Samples glide(Dice& dice, std::size_t count) {
    Samples samples(count);
    const double from = note(dice, 60, 2000);
    const Glide hz{from, from * dice.logBetween(0.25, 4), dice.logBetween(0.05, 1)};
    const bool bright = dice.chance(0.6);
    Saw saw(dice.between(0, 1));
    double phase = dice.phase();
    Filter filter(Filter::Kind::low, dice.logBetween(500, 10000), dice.logBetween(0.7, 4));
    for (std::size_t i = 0; i < count; ++i) {
        const double now = hz.at(static_cast<double>(i) / sampleRate);
        phase += twoPi * now / sampleRate;
        samples[i] = bright ? filter.next(saw.next(now)) : static_cast<float>(std::sin(phase));
    }
    held(dice, count, 0.3).shape(samples);
    return samples;
}

Samples chord(Dice& dice, std::size_t count) {
    constexpr std::array<std::array<double, 4>, 6> intervals{{{1, 1.25992, 1.49831, 2},
                                                              {1, 1.18921, 1.49831, 1.78180},
                                                              {1, 1.25992, 1.49831, 1.88775},
                                                              {1, 1.33484, 1.49831, 2},
                                                              {1, 1.49831, 2, 2.99661},
                                                              {1, 1.18921, 1.41421, 1.68179}}};
    const double lowest = note(dice, 60, 400);
    const auto& chosen = dice.pick(std::span<const std::array<double, 4>>(intervals));
    const int kind = dice.below(4);
    const double strum = dice.chance(0.4) ? dice.logBetween(0.005, 0.06) : 0;
    Samples samples(count);
    for (int i = 0, voices = dice.from(2, 4); i < voices; ++i) {
        const std::size_t begin = strum > 0 ? samplesIn(i * strum) : 0;
        if (begin >= count) break;
        const std::span<float> rest = std::span(samples).subspan(begin);
        const double hz = lowest * chosen[static_cast<std::size_t>(i)];
        Samples single(rest.size());
        if (kind == 0) single = struckString(dice, rest.size(), hz);
        if (kind == 1) single = StringLoop{hz, dice.between(0.99, 0.9995), 0.6}.pluck(dice, rest.size());
        if (kind == 2) addOrgan(dice, drawOrgan(dice, hz), single);
        if (kind == 3) single = detunedSaws(dice, rest.size(), hz, {3000, 1200, 0.5});
        add(rest, single, dice.between(0.5, 1));
    }
    if (kind >= 2) held(dice, count, 0.3).shape(samples);
    return samples;
}

Samples texture(Dice& dice, std::size_t count) {
    Samples samples(count);
    for (int i = dice.from(1, 4); i > 0; --i) {
        Samples band = noise(dice, count);
        Filter(Filter::Kind::band, dice.logBetween(60, 8000), dice.logBetween(0.7, 60)).run(band);
        const double hz = dice.logBetween(0.2, 12);
        const double depth = dice.between(0, 1);
        const double phase = dice.phase();
        for (std::size_t k = 0; k < count; ++k)
            band[k] *= static_cast<float>(
                1 - 0.5 * depth * (1 + std::sin(twoPi * hz * static_cast<double>(k) / sampleRate + phase)));
        bringToPeak(band, 1);
        add(samples, band, dice.between(0.3, 1));
    }
    held(dice, count, 1).shape(samples);
    return samples;
}

}  // namespace quillmere::schooling
