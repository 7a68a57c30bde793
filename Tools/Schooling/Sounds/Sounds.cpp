#include "Schooling/Sounds/Sounds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "Schooling/Sounds/Tonal.h"

namespace quillmere::schooling {
namespace {

// A delay that feeds itself, ever duller.
class Comb {
public:
    Comb(std::size_t delay, double feedback, double damping)
        : line_(delay), feedback_(static_cast<float>(feedback)), damping_(static_cast<float>(damping)) {}

    [[nodiscard]] float next(float input) {
        const float output = line_[at_];
        dull_ += (1 - damping_) * (output - dull_);
        line_[at_] = input + feedback_ * dull_;
        at_ = at_ + 1 == line_.size() ? 0 : at_ + 1;
        return output;
    }

private:
    Samples line_;
    float feedback_, damping_;
    float dull_ = 0;
    std::size_t at_ = 0;
};

// Shortest and longest sound in seconds.
struct Lengths {
    double shortest, longest;
};

Lengths lengthsFor(AnalysisProfile profile) {
    return profile == AnalysisProfile::tonal ? Lengths{0.3, 4.5} : Lengths{0.06, 2.6};
}

Samples draw(Dice& dice, std::span<const Family> families, std::size_t count) {
    Samples samples = dice.pick(families).make(dice, count);
    bringToPeak(samples, 1);
    return samples;
}

void treat(Dice& dice, Samples& samples) {
    if (dice.chance(0.3)) drive(dice, samples);
    if (dice.chance(0.35)) addRoom(dice, samples);
    if (dice.chance(0.3)) passBand(dice, samples, dice.logBetween(20, 300), dice.logBetween(2000, 20000));
    bringToPeak(samples, 1);
    if (dice.chance(0.3)) addHiss(dice, samples);
    if (dice.chance(0.45)) cutAndFade(dice, samples);
    bringToPeak(samples, 1);
}

}  // namespace

std::span<const Family> familiesFor(AnalysisProfile profile) {
    if (profile == AnalysisProfile::tonal) return tonalFamilies;
    return percussiveFamilies;
}

Samples makeSound(AnalysisProfile profile, std::uint64_t series, std::uint64_t index) {
    constexpr std::uint64_t seriesStep = 0xD1B54A32D192ED03;
    constexpr std::uint64_t indexStep = 0x9E3779B97F4A7C15;
    Dice dice(series * seriesStep + index * indexStep);
    const Lengths lengths = lengthsFor(profile);
    const std::size_t count = samplesIn(dice.logBetween(lengths.shortest, lengths.longest));
    const std::span<const Family> families = familiesFor(profile);
    Samples samples = draw(dice, families, count);
    if (dice.chance(0.25)) add(samples, draw(dice, families, count), dice.between(0.2, 0.8));
    treat(dice, samples);
    return samples;
}

void drive(Dice& dice, std::span<float> samples) {
    const auto gain = static_cast<float>(dice.logBetween(1, 12));
    for (float& sample : samples)
        sample = std::tanh(gain * sample);
}

// Four combs side by side (Schroeder, 1962), without his all-passes: the room is small.
void addRoom(Dice& dice, std::span<float> samples) {
    const double size = dice.logBetween(0.004, 0.04);  // of the shortest way there and back, in seconds
    const double tail = dice.logBetween(0.06, 0.8);    // until it is 60 dB down
    const double damping = dice.between(0.1, 0.8);
    const double level = dice.logBetween(0.03, 0.5);
    std::vector<Comb> combs;
    for (const double ratio : {1.0, 1.17, 1.31, 1.53}) {
        const double seconds = size * ratio * dice.between(0.95, 1.05);
        combs.emplace_back(samplesIn(seconds), std::pow(10.0, -3 * seconds / tail), damping);
    }
    for (float& sample : samples) {
        float room = 0;
        for (Comb& comb : combs)
            room += comb.next(sample);
        sample += static_cast<float>(level) * room;
    }
}

void addHiss(Dice& dice, std::span<float> samples) {
    const double level = std::pow(10.0, dice.between(-78, -42) / 20);
    add(samples, noise(dice, samples.size()), level);
}

void cutAndFade(Dice& dice, Samples& samples) {
    const std::size_t shortest = samplesIn(0.04);
    if (dice.chance(0.5) && samples.size() > shortest)
        samples.resize(std::max(
            shortest, static_cast<std::size_t>(dice.between(0.3, 1) * static_cast<double>(samples.size()))));
    const std::size_t fade = std::min(samples.size(), samplesIn(dice.logBetween(0.002, 0.08)));
    for (std::size_t i = 0; i < fade; ++i)
        samples[samples.size() - 1 - i] *= static_cast<float>(i) / static_cast<float>(fade);
}

}  // namespace quillmere::schooling
