#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <span>

#include "Schooling/Sounds/Blocks.h"

// What tests measure in sounds.
namespace quillmere::schooling::testing {

// Magnitude of one frequency in decibels: a full sine has -6.
inline double levelAt(std::span<const float> samples, double hz) {
    const std::complex<double> turn =
        std::polar(1.0, -2 * std::numbers::pi * hz / static_cast<double>(sampleRate));
    std::complex<double> now = 1;
    std::complex<double> sum = 0;
    for (const float sample : samples) {
        sum += static_cast<double>(sample) * now;
        now *= turn;
    }
    return 20 * std::log10(std::abs(sum) / static_cast<double>(samples.size()) + 1e-12);
}

inline double rootMeanSquare(std::span<const float> samples) {
    double sum = 0;
    for (const float sample : samples)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return std::sqrt(sum / static_cast<double>(samples.size()));
}

// Where the energy lies, in hertz: from the energy of the samples and of their differences.
inline double meanFrequency(std::span<const float> samples) {
    double energy = 0;
    double differences = 0;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        const double difference = static_cast<double>(samples[i]) - static_cast<double>(samples[i - 1]);
        energy += static_cast<double>(samples[i]) * static_cast<double>(samples[i]);
        differences += difference * difference;
    }
    const double sine = 0.5 * std::sqrt(differences / (energy + 1e-30));
    return std::asin(std::min(1.0, sine)) * sampleRate / std::numbers::pi;
}

}  // namespace quillmere::schooling::testing
