#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "QuillmereCore/Generate/Aesthetics.h"

// One sound along a range of a parameter, or over a grid of two. Any thread.
namespace quillmere::Sweep {

struct Axis {
    const ParameterSpec* spec = nullptr;
    double from = 0, to = 0;  // both inclusive, within the parameter's range
    std::int64_t count = 2;   // of values, at equal distances; at least 2

    [[nodiscard]] double value(std::int64_t step) const;
};

struct Point {
    std::vector<double> values;  // one per axis
    Aesthetics aesthetics;
};

// Every combination of the values, the first axis changing fastest; each has the other parameters of start.
[[nodiscard]] std::vector<Point> points(const Aesthetics& start, std::span<const Axis> axes);

// "pitch -12" or "pitch -12, drift 0.5".
[[nodiscard]] std::string title(const Point& point, std::span<const Axis> axes);
// prefix, and for each axis "_pitch_-12"; then ".wav".
[[nodiscard]] std::string fileName(const std::string& prefix, const Point& point, std::span<const Axis> axes);

}  // namespace quillmere::Sweep
