#include "QuillmereCore/Generate/Detail/Donor.h"

#include <algorithm>
#include <cmath>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {

void Detail::addScaled(std::span<const float> samples, float share, std::span<float> out) {
    const std::size_t count = std::min(samples.size(), out.size());
    for (std::size_t n = 0; n < count; ++n)
        out[n] += share * samples[n];
}

std::vector<float> Detail::syntheticDonor(std::size_t samples, int sampleRate, SeededRNG& rng) {
    constexpr float deviation = 0.05F;
    std::vector<float> donor(samples);
    const std::size_t start = std::min(samples, static_cast<std::size_t>(std::max(sampleRate, 0) / 1000));
    for (std::size_t n = start; n < samples; ++n)
        donor[n] = deviation * rng.gaussian();
    if (start < samples) donor[start] += 1.0F;
    return donor;
}

std::vector<float> Detail::readFaster(std::span<const float> samples, double ratio) {
    require(std::isfinite(ratio) && ratio > 0, "Detail: impossible ratio");
    const double length = std::max(1.0, std::floor(static_cast<double>(samples.size()) / ratio));
    std::vector<float> out(static_cast<std::size_t>(length));
    // One sample of silence before and three behind: no position needs more.
    std::vector<float> padded(samples.size() + 4);
    std::ranges::copy(samples, padded.begin() + 1);
    for (std::size_t n = 0; n < out.size(); ++n) {
        const double position = static_cast<double>(n) * ratio;
        const auto index = static_cast<std::size_t>(position);
        const auto f = static_cast<float>(position - static_cast<double>(index));
        const float* const at = &padded[index];
        const float a = at[0];
        const float b = at[1];
        const float c = at[2];
        const float d = at[3];
        const float third = 3.0F * (b - c) + d - a;
        const float second = 2.0F * a - 5.0F * b + 4.0F * c - d;
        out[n] = b + 0.5F * f * (c - a + f * (second + f * third));
    }
    return out;
}

std::vector<long long> Detail::donorCentres(int frames, int hop, double length) {
    const int locked = std::min(attackPace, frames - 1);
    const double start = static_cast<double>(locked) * hop;
    const double step = std::max(0.0, (length - start) / std::max(1, frames - locked));
    std::vector<long long> centres;
    for (int t = 0; t < frames; ++t) {
        const double position =
            t <= locked ? static_cast<double>(t) * hop : start + static_cast<double>(t - locked) * step;
        centres.push_back(std::llround(position));
    }
    return centres;
}

}  // namespace quillmere
