#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/Training/TrainingStart.h"
#include "QuillmereCore/Network/Backend.h"

// How a network is taught: lessons of growing width, each with sounds of its own.
namespace quillmere::schooling {

// One training. Narrow lessons are cheap and teach the convolutions; wide ones add what a long image needs.
struct Lesson {
    std::int64_t frames = 0;
    std::int64_t sounds = 0;
    std::int64_t steps = 0;
    float learningRate = 0.001F;
};

// The lessons for an analysis (percussive or tonal).
[[nodiscard]] std::vector<Lesson> lessonsFor(AnalysisProfile profile);
// The same with a share of their sounds and steps, at least one of each: for trials.
[[nodiscard]] std::vector<Lesson> shortened(std::vector<Lesson> lessons, double share);

// Sounds first ... first + count - 1 of a series as images, prepared like the samples of a folder.
[[nodiscard]] std::vector<std::vector<float>> soundImages(const ModelConfig& config, std::uint64_t series,
                                                          std::uint64_t first, std::int64_t count);

using Report = std::function<void(const std::string& line)>;

// Teaches a network the lessons one after the other. The same arguments give the same bits, for any number
// of threads. report may be empty.
[[nodiscard]] TaughtNetwork teach(AnalysisProfile profile, std::span<const Lesson> lessons,
                                  std::uint64_t series, network::Backend& backend, const Report& report);

}  // namespace quillmere::schooling
