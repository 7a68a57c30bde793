#pragma once

#include <cstdint>
#include <span>

#include "QuillmereCore/Model/ModelConfig.h"
#include "Schooling/Sounds/Percussive.h"

// One-shots made by rule: nobody's samples. A sound is a draw of a family, sometimes of two, and of what
// happens to it on its way: drive, a room, a filter, hiss, an end that is cut.
namespace quillmere::schooling {

// The families of an analysis (percussive or tonal).
[[nodiscard]] std::span<const Family> familiesFor(AnalysisProfile profile);

// Sound number index of a series: the same for the same arguments, whichever others are made. At
// sampleRate, a peak of 1, never silent.
[[nodiscard]] Samples makeSound(AnalysisProfile profile, std::uint64_t series, std::uint64_t index);

// What can happen to a sound, each with settings of its own.
void drive(Dice& dice, std::span<float> samples);
void addRoom(Dice& dice, std::span<float> samples);
void addHiss(Dice& dice, std::span<float> samples);
// Cuts the sound somewhere and fades what is left, quickly.
void cutAndFade(Dice& dice, Samples& samples);

}  // namespace quillmere::schooling
