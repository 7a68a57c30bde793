#include "QuillmereApp/LevelMatch.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

namespace quillmere::LevelMatch {
namespace {

constexpr double blockSeconds = 0.01;
constexpr double silentBelow = 0.001;  // of the energy of the loudest block

}  // namespace

Level measure(std::span<const float> samples, double sampleRate) {
    const auto block = std::max<std::size_t>(1, static_cast<std::size_t>(sampleRate * blockSeconds));
    Level level;
    std::vector<double> energies;  // per sample of each block
    for (std::size_t start = 0; start < samples.size(); start += block) {
        const auto part = samples.subspan(start, std::min(block, samples.size() - start));
        double sum = 0;
        for (const float sample : part) {
            const auto value = static_cast<double>(sample);
            level.peak = std::max(level.peak, std::abs(value));
            sum += value * value;
        }
        energies.push_back(sum / static_cast<double>(part.size()));
    }
    if (!(level.peak > 0)) return level;
    const double limit = silentBelow * *std::ranges::max_element(energies);
    double sum = 0;
    double count = 0;
    for (const double energy : energies) {
        if (energy < limit) continue;
        sum += energy;
        ++count;
    }
    level.loudness = std::sqrt(sum / count);
    return level;
}

Gains gains(const Level& first, const Level& second) {
    if (!(first.loudness > 0) || !(second.loudness > 0)) return {};
    const double wanted = first.loudness / second.loudness;
    const double softer = std::min(1.0, 1 / (wanted * second.peak));
    return {static_cast<float>(softer), static_cast<float>(wanted * softer)};
}

double decibels(double part) {
    constexpr double floor = -100;
    return part > 0 ? std::max(floor, 20 * std::log10(part)) : floor;
}

}  // namespace quillmere::LevelMatch
