#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "QuillmereCore/Picture/Drawing.h"

namespace quillmere {

// Sounds beside one another: of each its title, its waveform and its mel image. All have one scale of time,
// up to the end of the longest, and one of level.
struct ContactSheet {
    struct Cell {
        std::string title;
        std::vector<float> samples;  // mono
    };
    std::string title;
    double sampleRate = 44100;  // Hz, of all
    std::size_t columns = 1;    // at least 1
    std::vector<Cell> cells;    // row by row

    [[nodiscard]] Drawing draw() const;
};

}  // namespace quillmere
