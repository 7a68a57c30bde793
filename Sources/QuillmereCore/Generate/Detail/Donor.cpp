#include "QuillmereCore/Generate/Detail/Donor.h"

#include <algorithm>
#include <cmath>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

// The way through a donor behind its attack.
class Stroll {
public:
    // step: of the place where it should be, for each frame. Keeps a reference to rng.
    Stroll(double start, double hop, double step, SeededRNG& rng)
        : start_(start), hop_(hop), step_(step), position_(start), rng_(rng) {
        if (isLonger()) leash_ = drawLeash();
    }

    // The position for one frame after the other, beginning with the first.
    [[nodiscard]] double at(int frame) {
        const double place = start_ + static_cast<double>(frame) * step_;
        if (!isLonger()) return place;
        position_ += direction_ * hop_;
        if (direction_ * (position_ - place) > leash_ || position_ <= start_) {
            direction_ = -direction_;
            leash_ = drawLeash();
        }
        position_ = std::max(position_, start_);
        return position_;
    }

private:
    // The last digits of a step that should be a hop do not make a variation longer.
    [[nodiscard]] bool isLonger() const { return step_ > 0 && step_ < 0.999 * hop_; }

    // How far it may go from its place: the slower that moves, the farther, up to eight hops on average. That
    // is what it takes to hear noise as such; a glide is no longer followed at once.
    [[nodiscard]] double drawLeash() const {
        constexpr double farthest = 8;
        const double hops = std::min(farthest, hop_ / step_ - 1);
        return (0.5 + static_cast<double>(rng_.uniform())) * hops * hop_;
    }

    double start_, hop_, step_;
    double position_;
    double direction_ = 1;
    double leash_ = 0;
    SeededRNG& rng_;
};

}  // namespace

void Detail::addScaled(std::span<const float> samples, float share, std::span<float> out) {
    const std::size_t count = std::min(samples.size(), out.size());
    for (std::size_t n = 0; n < count; ++n)
        out[n] += share * samples[n];
}

std::vector<float> Detail::hiss(std::size_t samples, SeededRNG& rng) {
    constexpr float deviation = 0.05F;
    std::vector<float> noise(samples);
    for (float& sample : noise)
        sample = deviation * rng.gaussian();
    return noise;
}

std::vector<float> Detail::syntheticDonor(std::size_t samples, int sampleRate, SeededRNG& rng) {
    const std::size_t start = std::min(samples, static_cast<std::size_t>(std::max(sampleRate, 0) / 1000));
    std::vector<float> donor(samples);
    std::ranges::copy(hiss(samples - start, rng), donor.begin() + static_cast<std::ptrdiff_t>(start));
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

std::vector<long long> Detail::donorCentres(int frames, int hop, double length, SeededRNG& rng) {
    const double start = static_cast<double>(attackPace) * hop;
    const double step = std::max(0.0, (length - start) / std::max(1, frames - attackPace));
    Stroll stroll(start, hop, step, rng);
    std::vector<long long> centres;
    for (int t = 0; t < frames; ++t) {
        const double position = t <= attackPace ? static_cast<double>(t) * hop : stroll.at(t - attackPace);
        centres.push_back(std::llround(position));
    }
    return centres;
}

}  // namespace quillmere
