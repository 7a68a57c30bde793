#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace quillmere {

// Short-time Fourier transform of a mono signal, and its inverse.
//
// Spectra are two float arrays, re and im, frame-major: frame t, bin k is at t * bins + k.
// Frame t is centred on sample t * hop; samples outside the signal count as 0. The window is a periodic Hann
// window. forward() is the plain DFT (negative exponent, no 1/nFFT). inverse() is the windowed overlap-add
// divided by the summed squared window, the least-squares inverse of Griffin and Lim (1984); it ignores the
// imaginary parts of DC and Nyquist.
// Threads: an instance owns scratch memory; one thread at a time.
class STFT {
public:
    struct Spectrum {
        std::vector<float> re, im;  // [frames][bins]
    };

    // nFFT: frame length, a power of two >= 1. hop: samples between frame centres, > 0.
    // Anything else is a programming error and stops the program.
    STFT(int nFFT, int hop);
    ~STFT();
    STFT(STFT&&) noexcept;
    STFT& operator=(STFT&&) noexcept;

    [[nodiscard]] int nFFT() const noexcept { return nFFT_; }
    [[nodiscard]] int hop() const noexcept { return hop_; }
    [[nodiscard]] int bins() const noexcept { return nFFT_ / 2 + 1; }
    [[nodiscard]] std::span<const float> window() const noexcept { return window_; }
    // 2 / sum of the window: a full-scale sinusoid on a bin centre gets magnitude 1.
    [[nodiscard]] float magnitudeNormalization() const noexcept { return magnitudeNormalization_; }
    // The least divisor of inverse(): one fifth of the steady-state sum of the squared window, which is
    // 0.375 * nFFT / hop. Keeps the edges, where few frames overlap, from being blown up.
    [[nodiscard]] float weightFloor() const noexcept;

    // samples / hop + 1.
    [[nodiscard]] int frameCount(long long samples) const;

    [[nodiscard]] Spectrum forward(std::span<const float> signal, std::optional<int> frames = {});
    // Overwrites the first frames * bins values of re and im. Allocates nothing.
    void forward(std::span<const float> signal, int frames, std::span<float> re, std::span<float> im) {
        forward(signal, 0, frames, re, im);
    }
    // The same for the frames from number first on.
    void forward(std::span<const float> signal, int first, int frames, std::span<float> re,
                 std::span<float> im);
    // The same for frames that are centred on the given samples, of which any may lie outside the signal.
    void forwardAt(std::span<const float> signal, std::span<const long long> centres, std::span<float> re,
                   std::span<float> im);

    // re and im: at least frames * bins values. Returns exactly length samples.
    [[nodiscard]] std::vector<float> inverse(std::span<const float> re, std::span<const float> im, int frames,
                                             long long length);

private:
    struct Plan;

    [[nodiscard]] std::size_t spectrumSize(int frames) const;
    [[nodiscard]] std::span<float> scratchFrame(int index);
    // centreOf(t): the sample on which frame t is centred.
    template <class Centre>
    void forwardFrames(std::span<const float> signal, int frames, const Centre& centreOf, std::span<float> re,
                       std::span<float> im);
    // Windows the frame of the signal around sample number centre into out [nFFT].
    void cutFrame(std::span<const float> signal, long long centre, std::span<float> out) const;
    // Adds the windowed frame to the samples and the squared window to their weights.
    void overlapAdd(std::span<const float> frame, int index, std::span<float> samples,
                    std::span<float> weights) const;
    int nFFT_;
    int hop_;
    float magnitudeNormalization_ = 0;
    std::vector<float> window_;
    std::unique_ptr<Plan> plan_;
};

}  // namespace quillmere
