#pragma once

#include <array>
#include <cstdint>

namespace quillmere {

// Training effort chosen by the user, with what the window shows of it.
enum class Quality { quick, standard, thorough };

struct QualityInfo {
    Quality quality;
    const char* label;
    const char* help;
    std::int64_t steps;
};

// In the order of the picker; the index is the enumerator's value.
inline constexpr std::array<QualityInfo, 3> allQualities{{
    {Quality::quick, "Quick", "Minutes-ish. Blurrier, good for trying things out.", 800},
    {Quality::standard, "Standard", "Balanced.", 2000},
    {Quality::thorough, "Thorough", "Longest. Sharpest reconstructions.", 5000},
}};

[[nodiscard]] constexpr const QualityInfo& info(Quality quality) {
    return allQualities[static_cast<std::size_t>(quality)];
}

}  // namespace quillmere
