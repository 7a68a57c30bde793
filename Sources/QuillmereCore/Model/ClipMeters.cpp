#include "QuillmereCore/Model/ClipMeters.h"

#include <algorithm>
#include <cmath>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

// About -45 dB: quieter 10 ms blocks at the end do not count as sounding.
constexpr float soundingRMS = 0.0056F;

}  // namespace

SoundingMeter::SoundingMeter(int sampleRate)
    : sampleRate_(sampleRate), blockLength_(static_cast<std::size_t>(std::max(sampleRate / 100, 1))) {}

void SoundingMeter::add(std::span<const float> samples) {
    for (const float sample : samples) {
        sum_ += sample * sample;
        ++count_;
        if (++inBlock_ < blockLength_) continue;
        if (isSounding()) end_ = count_;
        sum_ = 0;
        inBlock_ = 0;
    }
}

double SoundingMeter::seconds() const {
    const std::size_t end = inBlock_ > 0 && isSounding() ? count_ : end_;
    return static_cast<double>(end) / sampleRate_;
}

bool SoundingMeter::isSounding() const {
    return std::sqrt(sum_ / static_cast<float>(inBlock_)) > soundingRMS;
}

FlatnessMeter::FlatnessMeter(int sampleRate)
    : low_(static_cast<std::size_t>(60 * nFFT / sampleRate)),
      high_(static_cast<std::size_t>(std::min(nFFT / 2, 6000 * nFFT / sampleRate))) {}

void FlatnessMeter::add(std::span<const float> samples, const std::stop_token& stop) {
    if (low_ >= high_) return;
    // A whole block needs the samples of the second half of its last frame.
    constexpr std::size_t wanted = std::size_t{context + blockFrames - 1} * hop + nFFT / 2;
    while (!samples.empty()) {
        const auto taken =
            samples.first(std::min(samples.size(), wanted - std::min(wanted - 1, signal_.size())));
        signal_.insert(signal_.end(), taken.begin(), taken.end());
        count_ += static_cast<std::int64_t>(taken.size());
        samples = samples.subspan(taken.size());
        const std::int64_t reach = (std::int64_t{next_} + blockFrames - 1) * hop + nFFT / 2;
        if (count_ < reach) continue;
        throwIfCancelled(stop);
        addBlock(blockFrames);
    }
}

double FlatnessMeter::finish(const std::stop_token& stop) {
    if (low_ >= high_) return 1.0;
    const int frames = stft_.frameCount(count_);
    while (next_ < frames) {
        throwIfCancelled(stop);
        addBlock(std::min(blockFrames, frames - next_));
    }
    return meanOfLoud();
}

void FlatnessMeter::addBlock(int count) {
    // From a little earlier, so that the first frame sees what lies before it.
    const int before = next_ - start_;
    stft_.forward(signal_, before + count, re_, im_);
    for (int t = before; t < before + count; ++t)
        addFrame(bandOf(static_cast<std::size_t>(t)));
    next_ += count;
    const int start = std::max(next_ - context, 0);
    const auto done = std::min(static_cast<std::size_t>(start - start_) * hop, signal_.size());
    signal_.erase(signal_.begin(), signal_.begin() + static_cast<std::ptrdiff_t>(done));
    start_ = start;
}

void FlatnessMeter::addFrame(const Band& audible) {
    Frame frame;
    frame.energy = audible.energy();
    largestEnergy_ = std::max(largestEnergy_, frame.energy);
    if (isLoud(frame)) frame.flatness = audible.flatness();
    frames_.push_back(frame);
}

float FlatnessMeter::Band::energy() const {
    float sum = 0;
    for (std::size_t k = 0; k < re.size(); ++k)
        sum += re[k] * re[k] + im[k] * im[k];
    return sum;
}

// Geometric over arithmetic mean of the magnitudes.
float FlatnessMeter::Band::flatness() const {
    const auto count = static_cast<float>(re.size());
    float logSum = 0;
    float sum = 0;
    for (std::size_t k = 0; k < re.size(); ++k) {
        const float magnitude = std::hypot(re[k], im[k]) + 1.0e-9F;
        logSum += std::log(magnitude);
        sum += magnitude;
    }
    return std::exp(logSum / count) / (sum / count);
}

FlatnessMeter::Band FlatnessMeter::bandOf(std::size_t frame) const {
    const std::size_t first = frame * bins + low_;
    const std::size_t count = high_ - low_ + 1;
    return {std::span(re_).subspan(first, count), std::span(im_).subspan(first, count)};
}

double FlatnessMeter::meanOfLoud() const {
    double sum = 0;
    int count = 0;
    for (const Frame& frame : frames_) {
        if (!isLoud(frame)) continue;
        sum += static_cast<double>(frame.flatness);
        ++count;
    }
    return count > 0 ? sum / count : 1.0;
}

}  // namespace quillmere
