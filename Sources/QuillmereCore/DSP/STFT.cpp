#include "QuillmereCore/DSP/STFT.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "QuillmereCore/DSP/BatchedFFT.h"
#include "QuillmereCore/DSP/VectorLanes.h"
#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

// Frames that are windowed into scratch memory and transformed at once: as many as a vector has lanes.
constexpr int batchFrames = static_cast<int>(maxLanes);

std::vector<float> periodicHann(int n) {
    std::vector<float> window(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        const float angle = 6.2831855F * static_cast<float>(i) / static_cast<float>(n);
        window[static_cast<std::size_t>(i)] = 0.5F - 0.5F * std::cos(angle);
    }
    return window;
}

// The part of a frame that lies inside a signal: count samples from frame position begin and signal position
// signalBegin.
struct Overlap {
    std::size_t begin, signalBegin, count;
};

// centre: signal position of the middle of the frame.
Overlap overlapOf(long long centre, int nFFT, std::size_t signalSize) {
    const long long start = centre - nFFT / 2;
    const long long begin = std::max(0LL, -start);
    const long long end = std::min<long long>(nFFT, static_cast<long long>(signalSize) - start);
    if (begin >= end) return {0, 0, 0};
    return {static_cast<std::size_t>(begin), static_cast<std::size_t>(start + begin),
            static_cast<std::size_t>(end - begin)};
}

}  // namespace

struct STFT::Plan {
    explicit Plan(int nFFT) : fft(nFFT), frames(maxLanes * static_cast<std::size_t>(nFFT)) {}
    BatchedFFT fft;
    std::vector<float> frames;  // [batchFrames][nFFT]
};

STFT::STFT(int nFFT, int hop) : nFFT_(nFFT), hop_(hop) {
    require(nFFT >= 1 && std::has_single_bit(static_cast<unsigned>(nFFT)), "STFT: nFFT is no power of two");
    require(hop >= 1, "STFT: hop must be positive");
    window_ = periodicHann(nFFT);
    float sum = 0;
    for (const float w : window_)
        sum += w;
    magnitudeNormalization_ = 2.0F / sum;
    plan_ = std::make_unique<Plan>(nFFT);
}

STFT::~STFT() = default;
STFT::STFT(STFT&&) noexcept = default;
STFT& STFT::operator=(STFT&&) noexcept = default;

int STFT::frameCount(long long samples) const {
    const long long frames = samples / hop_ + 1;
    require(samples >= 0 && frames <= std::numeric_limits<int>::max(), "STFT: frame count out of range");
    return static_cast<int>(frames);
}

STFT::Spectrum STFT::forward(std::span<const float> signal, std::optional<int> frames) {
    const int count = frames ? *frames : frameCount(static_cast<long long>(signal.size()));
    const std::size_t size = spectrumSize(count);
    Spectrum spectrum{std::vector<float>(size), std::vector<float>(size)};
    forward(signal, count, spectrum.re, spectrum.im);
    return spectrum;
}

void STFT::forward(std::span<const float> signal, int first, int frames, std::span<float> re,
                   std::span<float> im) {
    require(first >= 0, "STFT: negative frame number");
    forwardFrames(
        signal, frames, [&](int t) { return static_cast<long long>(first + t) * hop_; }, re, im);
}

void STFT::forwardAt(std::span<const float> signal, std::span<const long long> centres, std::span<float> re,
                     std::span<float> im) {
    const int frames = static_cast<int>(centres.size());
    forwardFrames(
        signal, frames, [&](int t) { return centres[static_cast<std::size_t>(t)]; }, re, im);
}

template <class Centre>
void STFT::forwardFrames(std::span<const float> signal, int frames, const Centre& centreOf,
                         std::span<float> re, std::span<float> im) {
    const std::size_t size = spectrumSize(frames);
    require(re.size() >= size && im.size() >= size, "STFT: spectrum too small");
    for (int t = 0; t < frames; t += batchFrames) {
        const int count = std::min(batchFrames, frames - t);
        for (int i = 0; i < count; ++i)
            cutFrame(signal, centreOf(t + i), scratchFrame(i));
        const std::size_t row = static_cast<std::size_t>(t) * static_cast<std::size_t>(bins());
        plan_->fft.forward(plan_->frames, static_cast<std::size_t>(count), re.subspan(row), im.subspan(row));
    }
}

std::vector<float> STFT::inverse(std::span<const float> re, std::span<const float> im, int frames,
                                 long long length) {
    const std::size_t size = spectrumSize(frames);
    require(re.size() >= size && im.size() >= size, "STFT: spectrum too small");
    require(length >= 0, "STFT: negative length");
    std::vector<float> samples(static_cast<std::size_t>(length));
    std::vector<float> weights(samples.size());
    for (int t = 0; t < frames; t += batchFrames) {
        const int count = std::min(batchFrames, frames - t);
        const std::size_t row = static_cast<std::size_t>(t) * static_cast<std::size_t>(bins());
        plan_->fft.inverse(re.subspan(row), im.subspan(row), static_cast<std::size_t>(count), plan_->frames);
        for (int i = 0; i < count; ++i)
            overlapAdd(scratchFrame(i), t + i, samples, weights);
    }
    const float floor = weightFloor();
    for (std::size_t n = 0; n < samples.size(); ++n)
        samples[n] /= std::max(weights[n], floor);
    return samples;
}

std::size_t STFT::spectrumSize(int frames) const {
    require(frames >= 0, "STFT: negative frame count");
    return static_cast<std::size_t>(checkedMultiply(frames, bins()));
}

std::span<float> STFT::scratchFrame(int index) {
    const auto size = static_cast<std::size_t>(nFFT_);
    return std::span(plan_->frames).subspan(static_cast<std::size_t>(index) * size, size);
}

void STFT::cutFrame(std::span<const float> signal, long long centre, std::span<float> out) const {
    const Overlap part = overlapOf(centre, nFFT_, signal.size());
    std::fill_n(out.begin(), part.begin, 0.0F);
    const float* const from = signal.data() + part.signalBegin;
    for (std::size_t i = 0; i < part.count; ++i)
        out[part.begin + i] = from[i] * window_[part.begin + i];
    std::fill(out.begin() + static_cast<std::ptrdiff_t>(part.begin + part.count), out.end(), 0.0F);
}

// The transform's scale, n, is a power of two: dividing by it is exact.
void STFT::overlapAdd(std::span<const float> frame, int index, std::span<float> samples,
                      std::span<float> weights) const {
    const Overlap part = overlapOf(static_cast<long long>(index) * hop_, nFFT_, samples.size());
    const float scale = 1.0F / static_cast<float>(nFFT_);
    float* const to = samples.data() + part.signalBegin;
    float* const weight = weights.data() + part.signalBegin;
    for (std::size_t i = 0; i < part.count; ++i) {
        const float w = window_[part.begin + i];
        to[i] += frame[part.begin + i] * scale * w;
        weight[i] += w * w;
    }
}

float STFT::weightFloor() const noexcept {
    return static_cast<float>(nFFT_) * 0.075F / static_cast<float>(hop_);
}

}  // namespace quillmere
