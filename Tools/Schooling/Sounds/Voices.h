#pragma once

#include "Schooling/Sounds/Blocks.h"

// Sources that percussive and tonal families share. Each gives count samples with a peak of 1.
namespace quillmere::schooling {

// Sines at frequencies of a bar, a string, a membrane, a plate or none in particular, each with a decay of
// its own. lowest: of the first; partials: how many; decay: of the first.
[[nodiscard]] Samples modes(Dice& dice, std::size_t count, double lowest, int partials, double decay);

// A struck string: partials that are a little too high and die away in two stages, and the hammer.
[[nodiscard]] Samples struckString(Dice& dice, std::size_t count, double hz);

// One sine whose phase another one moves, less and less (Chowning, 1973).
[[nodiscard]] Samples frequencyModulation(Dice& dice, std::size_t count, double hz, double decay);

// A throat: pulses or breath through moving formants; vowels, hisses, stops and hums in a row, as words are.
// hz: of the voice; segment: seconds that one of them lasts, about.
[[nodiscard]] Samples speech(Dice& dice, std::size_t count, double hz, double segment);

// One vowel after another, sung.
[[nodiscard]] Samples singing(Dice& dice, std::size_t count, double hz);

}  // namespace quillmere::schooling
