#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <numbers>
#include <vector>

// The files of Tests/Data/Audio and the signals that scripts/make-audio-fixtures.py put into them.
namespace quillmere::testing {

inline std::filesystem::path audioFixture(const std::string& name) {
    return std::filesystem::path(QUILLMERE_TESTS_DIR) / "Data/Audio" / name;
}

// All of them, by name.
inline std::vector<std::filesystem::path> audioFixtures() {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(audioFixture("")))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

// The ramp of lossless files: integers of the given number of bits.
inline constexpr std::size_t rampFrames = 1003;
inline constexpr double rampRate = 22050;
inline std::int64_t rampCode(std::size_t index, std::size_t channel, int bits) {
    const auto range = std::uint64_t{1} << bits;
    const std::uint64_t quadratic = range / 676 | 1;
    const std::uint64_t linear = range / 64 | 1;
    const std::uint64_t code = index * index * quadratic + index * linear * (channel + 1);
    return static_cast<std::int64_t>(code % range) - static_cast<std::int64_t>(range / 2);
}

// One array per channel; a code divided by full scale, rounded once.
inline std::vector<std::vector<float>> ramps(std::size_t channels, int bits, std::size_t frames) {
    std::vector<std::vector<float>> result(channels, std::vector<float>(frames));
    for (std::size_t c = 0; c < channels; ++c) {
        for (std::size_t i = 0; i < frames; ++i) {
            const auto code = static_cast<double>(rampCode(i, c, bits));
            result[c][i] = static_cast<float>(std::ldexp(code, 1 - bits));
        }
    }
    return result;
}

// The sweep of lossy files, as the mean of the channels.
inline constexpr std::size_t sweepFrames = 8011;
inline constexpr double sweepRate = 44100;
inline std::vector<double> sweep(std::size_t channels) {
    std::vector<double> mono(sweepFrames);
    for (std::size_t i = 0; i < sweepFrames; ++i) {
        const double t = static_cast<double>(i) / sweepRate;
        const double envelope =
            std::pow(std::sin(std::numbers::pi * (static_cast<double>(i) + 0.5) / sweepFrames), 2);
        for (std::size_t c = 0; c < channels; ++c) {
            const double cycles = 300 * static_cast<double>(c + 1) * t + 2500 * t * t;
            mono[i] +=
                0.6 * envelope * std::sin(2 * std::numbers::pi * cycles) / static_cast<double>(channels);
        }
    }
    return mono;
}

}  // namespace quillmere::testing
