#include "QuillmereCore/Generate/Detail/TailCurve.h"

#include <algorithm>
#include <cmath>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::Detail {
namespace {

constexpr float silence = -1.0F;
constexpr float width = (TailCurve::highest - TailCurve::lowest) / static_cast<float>(TailCurve::cells);

// Levels beyond either end count to the cell there.
std::size_t cellOf(float level) {
    const float cell = std::floor((level - TailCurve::lowest) / width);
    return static_cast<std::size_t>(std::clamp(cell, 0.0F, static_cast<float>(TailCurve::cells - 1)));
}

float median(std::vector<float>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle);
    if (values.size() % 2 == 1) return *middle;
    return 0.5F * (*std::max_element(values.begin(), middle) + *middle);
}

float valueOf(std::vector<float>& real, float middle) {
    constexpr std::size_t few = 8;
    constexpr float identityFrom = -0.3F;
    constexpr float silentBelow = -0.9F;
    if (middle >= identityFrom) return middle;
    if (real.size() >= few) return std::min(median(real), middle);
    return middle < silentBelow ? silence : middle;
}

}  // namespace

TailCurve::TailCurve(std::span<const Levels> frames) {
    std::array<std::vector<float>, cells> real;
    for (const Levels& levels : frames)
        real[cellOf(levels.decoded)].push_back(levels.real);
    float before = valueOf(real[0], middle(0));
    for (std::size_t cell = 0; cell < cells; ++cell) {
        before = std::max(before, valueOf(real[cell], middle(cell)));
        values_[cell] = std::min(before, std::max(middle(cell), silence));
    }
}

float TailCurve::middle(std::size_t cell) {
    return lowest + width * (static_cast<float>(cell) + 0.5F);
}

float TailCurve::change(float decoded) const {
    if (!(decoded < middle(cells - 1))) return 0;
    if (decoded <= middle(0)) return std::min(0.0F, values_.front() - decoded);
    const float position = (decoded - middle(0)) / width;
    const auto cell = std::min(static_cast<std::size_t>(position), cells - 2);
    const float fraction = position - static_cast<float>(cell);
    const float real = values_[cell] + fraction * (values_[cell + 1] - values_[cell]);
    return std::min(0.0F, real - decoded);
}

void TailCurve::apply(std::span<float> image, std::size_t frames, float amount) const {
    std::vector<float> changes = framePeaks(image, frames);
    for (float& value : changes)
        value = amount * change(value);
    for (std::size_t start = 0; start < image.size(); start += frames) {
        for (std::size_t t = 0; t < frames; ++t)
            image[start + t] += changes[t];
    }
}

std::vector<float> framePeaks(std::span<const float> image, std::size_t frames) {
    require(frames > 0 && !image.empty() && image.size() % frames == 0,
            "Detail: a size does not match its buffer");
    std::vector<float> peaks(image.begin(), image.begin() + static_cast<std::ptrdiff_t>(frames));
    for (std::size_t start = frames; start < image.size(); start += frames) {
        for (std::size_t t = 0; t < frames; ++t)
            peaks[t] = std::max(peaks[t], image[start + t]);
    }
    return peaks;
}

}  // namespace quillmere::Detail
