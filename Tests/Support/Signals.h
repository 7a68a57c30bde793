#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <vector>

#include "QuillmereCore/Util/RNG.h"

namespace quillmere::testing {

inline std::vector<float> sine(double hz, double rate, std::size_t count, double amplitude = 1.0) {
    std::vector<float> samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double phase = 2 * std::numbers::pi * hz * static_cast<double>(i) / rate;
        samples[i] = static_cast<float>(amplitude * std::sin(phase));
    }
    return samples;
}

// Uniform in [-amplitude, amplitude).
inline std::vector<float> noise(std::uint64_t seed, std::size_t count, float amplitude = 1.0F) {
    SeededRNG rng(seed);
    std::vector<float> samples(count);
    for (float& sample : samples)
        sample = amplitude * rng.signedUniform();
    return samples;
}

}  // namespace quillmere::testing
