#include "QuillmereApp/Waveform.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "QuillmereCore/Audio/AudioIO.h"

namespace quillmere {

QList<qreal> Waveform::peaks(std::span<const float> samples, int count) {
    const std::size_t stretches = std::min(samples.size(), static_cast<std::size_t>(count));
    QList<qreal> values;
    values.reserve(static_cast<qsizetype>(stretches));
    for (std::size_t i = 0; i < stretches; ++i) {
        const std::size_t start = i * samples.size() / stretches;
        const std::size_t end = (i + 1) * samples.size() / stretches;
        float peak = 0;
        for (const float sample : samples.subspan(start, end - start))
            peak = std::max(peak, std::abs(sample));  // false for NaN: peak stays
        values.append(std::min(peak, 1.0F));
    }
    return values;
}

QList<qreal> Waveform::peaks(const std::filesystem::path& file, int count) {
    return peaks(AudioIO::readMono(file).samples, count);
}

}  // namespace quillmere
