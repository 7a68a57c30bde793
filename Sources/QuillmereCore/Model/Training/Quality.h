#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "QuillmereCore/Model/Training/TrainingOptions.h"
#include "QuillmereCore/Util/Message.h"

namespace quillmere {

// Training effort, as people choose it.
enum class Quality { quick, standard, thorough };

struct QualityInfo {
    Quality quality;
    std::string_view name;   // on a command line
    std::string_view label;  // in a window
    std::string_view help;
    std::int64_t steps;           // TrainingOptions::steps
    std::int64_t stepsFromStart;  // the same for a training that does not begin from random weights

    // Options of this effort. start may be null: random weights.
    [[nodiscard]] TrainingOptions training(std::shared_ptr<const TrainingStart> start) const;
};

// Peak step size of a training from a start. A larger one forgets what the start knows: chosen, like the
// steps, for sounds that are not in the folder.
inline constexpr float startLearningRate = 0.0005F;

// In the order in which they are offered; the index is the enumerator's value.
inline constexpr std::array<QualityInfo, 3> allQualities{{
    {Quality::quick, "quick", translatable("Quick"),
     translatable("Minutes-ish. Blurrier, good for trying things out."), 800, 100},
    {Quality::standard, "standard", translatable("Standard"), translatable("Balanced."), 2000, 300},
    {Quality::thorough, "thorough", translatable("Thorough"),
     translatable("Longest. Sharpest reconstructions."), 5000, 1000},
}};

[[nodiscard]] constexpr const QualityInfo& info(Quality quality) {
    return allQualities[static_cast<std::size_t>(quality)];
}

inline TrainingOptions QualityInfo::training(std::shared_ptr<const TrainingStart> start) const {
    TrainingOptions options;
    options.steps = start ? stepsFromStart : steps;
    if (start) options.learningRate = startLearningRate;
    options.start = std::move(start);
    return options;
}

// Nothing for a name that none of them has.
[[nodiscard]] constexpr std::optional<Quality> qualityNamed(std::string_view name) {
    for (const QualityInfo& entry : allQualities) {
        if (entry.name == name) return entry.quality;
    }
    return std::nullopt;
}

}  // namespace quillmere
