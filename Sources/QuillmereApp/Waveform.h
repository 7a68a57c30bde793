#pragma once

#include <QList>
#include <filesystem>
#include <span>

namespace quillmere::Waveform {

// The largest |sample| of each of count stretches of nearly equal length, within 0 ... 1; one value per
// sample when there are fewer. NaN counts as 0.
[[nodiscard]] QList<qreal> peaks(std::span<const float> samples, int count);

// The same of a file. Throws AudioIOError. Any thread.
[[nodiscard]] QList<qreal> peaks(const std::filesystem::path& file, int count);

}  // namespace quillmere::Waveform
