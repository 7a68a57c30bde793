#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quillmere {

// Training effort, as people choose it.
enum class Quality { quick, standard, thorough };

struct QualityInfo {
    Quality quality;
    std::string_view name;   // on a command line
    std::string_view label;  // in a window
    std::string_view help;
    std::int64_t steps;  // TrainingOptions::steps
};

// In the order in which they are offered; the index is the enumerator's value.
inline constexpr std::array<QualityInfo, 3> allQualities{{
    {Quality::quick, "quick", "Quick", "Minutes-ish. Blurrier, good for trying things out.", 800},
    {Quality::standard, "standard", "Standard", "Balanced.", 2000},
    {Quality::thorough, "thorough", "Thorough", "Longest. Sharpest reconstructions.", 5000},
}};

[[nodiscard]] constexpr const QualityInfo& info(Quality quality) {
    return allQualities[static_cast<std::size_t>(quality)];
}

// Nothing for a name that none of them has.
[[nodiscard]] constexpr std::optional<Quality> qualityNamed(std::string_view name) {
    for (const QualityInfo& entry : allQualities) {
        if (entry.name == name) return entry.quality;
    }
    return std::nullopt;
}

}  // namespace quillmere
