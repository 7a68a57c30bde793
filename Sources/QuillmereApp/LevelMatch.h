#pragma once

#include <span>

// How loud sounds are, and how loud each of two is to be played so that none wins by being the louder one.
// Any thread.
namespace quillmere::LevelMatch {

struct Level {
    double peak = 0;      // the largest |sample|
    double loudness = 0;  // root mean square of where it sounds; 0 for silence
};

// A sound sounds where blocks of 10 ms have at least a thousandth of the energy of the one that has most:
// silence around it makes it no softer. samples: mono, finite; sampleRate in Hz.
[[nodiscard]] Level measure(std::span<const float> samples, double sampleRate);

struct Gains {
    float first = 1, second = 1;
};
// Both as loud as the first is, or, where the second one would exceed full scale, softer. 1 for silence.
[[nodiscard]] Gains gains(const Level& first, const Level& second);

// Decibels of a part of full scale; -100 or more.
[[nodiscard]] double decibels(double part);

}  // namespace quillmere::LevelMatch
