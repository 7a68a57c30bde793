#pragma once

#include <QString>

namespace quillmere {

// What sounds are sorted by, and told apart.
struct SoundMeasure {
    double brightness = -1;  // 0 (the lowest band alone) ... 1 (the highest); below 0: unknown
    double novelty = -1;     // dB to the nearest sound of the corpus; below 0: unknown

    // "copy", "close", "new", "far" (Kinship); empty while it is unknown.
    [[nodiscard]] QString noveltyText() const;
    // The same for people.
    [[nodiscard]] QString noveltyWord() const;

    friend bool operator==(const SoundMeasure&, const SoundMeasure&) = default;
};

}  // namespace quillmere
