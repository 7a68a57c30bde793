#include "Schooling/Sounds/Percussive.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "Schooling/Sounds/Voices.h"

namespace quillmere::schooling {
namespace {

constexpr double twoPi = 2 * std::numbers::pi;

// A sine along a glide.
Samples glidingSine(const Glide& hz, double phase, std::size_t count) {
    Samples samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = static_cast<float>(std::sin(phase));
        phase += twoPi * hz.at(static_cast<double>(i) / sampleRate) / sampleRate;
    }
    return samples;
}

Samples shapedNoise(Dice& dice, std::size_t count, double low, double high, const Envelope& envelope) {
    Samples samples = bandNoise(dice, count, low, high);
    envelope.shape(samples);
    return samples;
}

Envelope hit(Dice& dice, double slowestAttack, double shortest, double longest) {
    return {.attack = dice.logBetween(0.0003, slowestAttack),
            .hold = dice.chance(0.3) ? dice.logBetween(0.005, 0.1) : 0,
            .decay = dice.logBetween(shortest, longest)};
}

}  // namespace

Samples kick(Dice& dice, std::size_t count) {
    const double low = dice.logBetween(35, 90);
    const Glide hz{low + dice.logBetween(60, 900), low, dice.logBetween(0.005, 0.08)};
    Samples samples = glidingSine(hz, dice.phase(), count);
    hit(dice, 0.008, 0.04, 0.6).shape(samples);
    const double high = dice.logBetween(4000, 18000);
    add(samples,
        shapedNoise(dice, count, dice.logBetween(300, 3000), high,
                    {.attack = 0.0003, .decay = dice.logBetween(0.002, 0.03)}),
        dice.between(0, 0.6));
    return samples;
}

Samples snare(Dice& dice, std::size_t count) {
    Samples samples =
        modes(dice, count, dice.logBetween(120, 400), dice.from(2, 6), dice.logBetween(0.02, 0.25));
    const double tone = dice.between(0.2, 1);
    for (float& sample : samples)
        sample *= static_cast<float>(tone);
    const double high = dice.logBetween(5000, 20000);
    add(samples, shapedNoise(dice, count, dice.logBetween(300, 3000), high, hit(dice, 0.006, 0.02, 0.3)),
        dice.between(0.3, 1.2));
    return samples;
}

Samples hat(Dice& dice, std::size_t count) {
    Samples metal(count);
    const double metallic = dice.between(0, 0.6);
    for (int i = dice.from(2, 7); i > 0; --i) {
        Pulse pulse(dice.between(0, 1), 0.5);
        const double hz = dice.logBetween(200, 9000);
        for (float& sample : metal)
            sample += pulse.next(hz);
    }
    add(metal, noise(dice, count), dice.between(0.1, 1) / std::max(metallic, 0.05));
    passBand(dice, metal, dice.logBetween(2000, 9000), 20000);
    hit(dice, 0.004, 0.01, 0.6).shape(metal);
    return metal;
}

Samples clap(Dice& dice, std::size_t count) {
    Samples samples = bandNoise(dice, count, dice.logBetween(400, 1500), dice.logBetween(2000, 9000));
    Samples level(count);
    const int hands = dice.from(2, 5);
    const double distance = dice.logBetween(0.006, 0.02);
    for (int i = 0; i < hands; ++i) {
        const std::size_t begin = samplesIn(i * distance * dice.between(0.8, 1.2));
        const Envelope single{.attack = 0.0005, .decay = dice.logBetween(0.003, 0.01)};
        for (std::size_t k = begin; k < count; ++k)
            level[k] += static_cast<float>(single.at(static_cast<double>(k - begin) / sampleRate));
    }
    const Envelope tail{.attack = 0.02, .decay = dice.logBetween(0.03, 0.3)};
    const double tailLevel = dice.between(0.2, 0.8);
    for (std::size_t k = 0; k < count; ++k)
        samples[k] *= level[k] + static_cast<float>(tailLevel * tail.at(static_cast<double>(k) / sampleRate));
    return samples;
}

Samples rim(Dice& dice, std::size_t count) {
    Samples samples =
        modes(dice, count, dice.logBetween(350, 2200), dice.from(2, 6), dice.logBetween(0.006, 0.06));
    add(samples,
        shapedNoise(dice, count, dice.logBetween(800, 4000), 16000,
                    {.attack = 0.0003, .decay = dice.logBetween(0.001, 0.01)}),
        dice.between(0.1, 0.8));
    return samples;
}

Samples shaker(Dice& dice, std::size_t count) {
    Samples samples(count);
    const double low = dice.logBetween(2000, 7000);
    const int shakes = dice.from(1, 3);
    for (int i = 0; i < shakes; ++i) {
        const std::size_t begin = samplesIn(i * dice.between(0.05, 0.15));
        if (begin >= count) break;
        const Samples grains =
            shapedNoise(dice, count - begin, low, 18000,
                        {.attack = dice.logBetween(0.005, 0.06), .decay = dice.logBetween(0.01, 0.12)});
        add(std::span(samples).subspan(begin), grains, dice.between(0.3, 1));
    }
    return samples;
}

Samples handDrum(Dice& dice, std::size_t count) {
    const double low = dice.logBetween(60, 450);
    const Glide hz{low * dice.between(1, 1.5), low, dice.logBetween(0.01, 0.15)};
    Samples samples = glidingSine(hz, dice.phase(), count);
    hit(dice, 0.004, 0.03, 0.5).shape(samples);
    add(samples,
        modes(dice, count, low * dice.between(1.4, 2.4), dice.from(3, 10), dice.logBetween(0.01, 0.3)),
        dice.between(0.1, 1));
    const double high = dice.logBetween(2500, 15000);
    add(samples,
        shapedNoise(dice, count, dice.logBetween(300, 2000), high,
                    {.attack = 0.0005, .decay = dice.logBetween(0.003, 0.06)}),
        dice.between(0, 0.9));
    return samples;
}

Samples struckBar(Dice& dice, std::size_t count) {
    return modes(dice, count, dice.logBetween(60, 2500), dice.from(1, 13), dice.logBetween(0.02, 1.2));
}

Samples plate(Dice& dice, std::size_t count) {
    Samples samples(count);
    const double lowest = dice.logBetween(150, 1500);
    const double decay = dice.logBetween(0.05, 1.5);
    for (int i = dice.from(15, 45); i > 0; --i) {
        const double hz = lowest * dice.logBetween(1, 14000 / lowest);
        Partial{hz, dice.logBetween(0.1, 1), decay * std::pow(lowest / hz, 0.3) * dice.between(0.4, 1.2),
                dice.phase()}
            .addTo(samples);
    }
    bringToPeak(samples, 1);
    add(samples, shapedNoise(dice, count, 2 * lowest, 18000, hit(dice, 0.01, 0.02, decay)),
        dice.between(0, 1));
    Envelope{.attack = dice.logBetween(0.0003, 0.02), .hold = 1e6}.shape(samples);
    return samples;
}

Samples shortPluck(Dice& dice, std::size_t count) {
    return StringLoop{dice.logBetween(60, 1200), dice.between(0.9, 0.999), dice.between(0.1, 1)}.pluck(dice,
                                                                                                       count);
}

Samples shortKey(Dice& dice, std::size_t count) {
    return struckString(dice, count, dice.logBetween(45, 2000));
}

Samples modulated(Dice& dice, std::size_t count) {
    return frequencyModulation(dice, count, dice.logBetween(40, 2500), dice.logBetween(0.03, 0.6));
}

Samples burst(Dice& dice, std::size_t count) {
    const double low = dice.logBetween(40, 6000);
    return shapedNoise(dice, count, low, low * dice.logBetween(1.3, 30), hit(dice, 0.15, 0.01, 0.6));
}

Samples clicks(Dice& dice, std::size_t count) {
    Samples samples(count);
    const double hz = dice.logBetween(250, 5000);
    for (int i = dice.from(1, 5); i > 0; --i) {
        const std::size_t begin = i == 1 ? 0 : samplesIn(dice.logBetween(0.002, 0.2));
        if (begin >= count) continue;
        const std::span<float> rest = std::span(samples).subspan(begin);
        const double level = dice.logBetween(0.1, 1);
        add(rest,
            modes(dice, rest.size(), hz * dice.between(0.6, 2), dice.from(2, 8),
                  dice.logBetween(0.001, 0.03)),
            level);
        add(rest,
            shapedNoise(dice, rest.size(), dice.logBetween(200, 2000), dice.logBetween(4000, 18000),
                        {.attack = 0.0005, .decay = dice.logBetween(0.001, 0.03)}),
            level * dice.between(0.1, 1));
    }
    return samples;
}

Samples zap(Dice& dice, std::size_t count) {
    const double from = dice.logBetween(80, 8000);
    Samples samples =
        glidingSine({from, from * dice.logBetween(0.05, 3), dice.logBetween(0.02, 0.4)}, dice.phase(), count);
    if (dice.chance(0.4)) {
        const double hz = dice.logBetween(8, 400);
        for (std::size_t i = 0; i < count; ++i)
            samples[i] *= static_cast<float>(std::sin(twoPi * hz * static_cast<double>(i) / sampleRate));
    }
    hit(dice, 0.03, 0.03, 0.6).shape(samples);
    return samples;
}

Samples word(Dice& dice, std::size_t count) {
    Samples samples = speech(dice, count, dice.logBetween(75, 280), dice.logBetween(0.06, 0.16));
    const double ends = static_cast<double>(count) / sampleRate * dice.between(0.4, 0.9);
    Envelope{.attack = 0.005, .hold = ends, .decay = 0.02}.shape(samples);
    return samples;
}

}  // namespace quillmere::schooling
