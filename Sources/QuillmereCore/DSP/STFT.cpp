#include "QuillmereCore/DSP/STFT.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <complex>
#include <limits>
#include <numbers>
#include <utility>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere {
namespace {

using Complex = std::complex<float>;

std::vector<Complex> rootsOfUnity(std::size_t n, std::size_t count) {
    std::vector<Complex> roots(count);
    for (std::size_t k = 0; k < count; ++k) {
        const double angle = -2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n);
        roots[k] = Complex(static_cast<float>(std::cos(angle)), static_cast<float>(std::sin(angle)));
    }
    return roots;
}

// Without the NaN recovery of operator*, which costs more than the product.
Complex product(Complex a, Complex b) {
    return {a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real()};
}

// Real FFT of a power of two: a complex Stockham transform of half the length and a pass that separates
// the spectra of the even and the odd samples.
class RealFFT {
public:
    explicit RealFFT(std::size_t n)
        : n_(n), half_(n / 2), roots_(rootsOfUnity(n, n / 2 + 1)), a_(half_), b_(half_) {}

    // samples [n] to re and im [n / 2 + 1].
    void forward(const float* samples, float* re, float* im) {
        if (n_ == 1) {
            re[0] = samples[0];
            im[0] = 0;
            return;
        }
        for (std::size_t j = 0; j < half_; ++j)
            a_[j] = Complex(samples[2 * j], samples[2 * j + 1]);
        const Complex* const z = transform();
        for (std::size_t k = 0; k <= half_; ++k) {
            const Complex p = z[k % half_];
            const Complex q = std::conj(z[(half_ - k) % half_]);
            const Complex d = product(roots_[k], p - q);
            re[k] = 0.5F * (p.real() + q.real() + d.imag());
            im[k] = 0.5F * (p.imag() + q.imag() - d.real());
        }
        im[0] = 0;
        im[half_] = 0;
    }

    // re and im [n / 2 + 1] to samples [n], scaled by n; ignores im of DC and Nyquist.
    void inverse(const float* re, const float* im, float* samples) {
        if (n_ == 1) {
            samples[0] = re[0];
            return;
        }
        const auto bin = [&](std::size_t k) { return Complex(re[k], k == 0 || k == half_ ? 0.0F : im[k]); };
        for (std::size_t k = 0; k < half_; ++k) {
            const Complex p = bin(k);
            const Complex q = std::conj(bin(half_ - k));
            const Complex odd = product(p - q, std::conj(roots_[k]));
            // z = even + i odd, handed to the forward transform as its conjugate.
            a_[k] = std::conj((p + q) + Complex(-odd.imag(), odd.real()));
        }
        const Complex* const z = transform();
        for (std::size_t j = 0; j < half_; ++j) {
            samples[2 * j] = z[j].real();
            samples[2 * j + 1] = -z[j].imag();
        }
    }

private:
    // Complex DFT of a_; the result lies in one of the two buffers.
    const Complex* transform() {
        Complex* from = a_.data();
        Complex* to = b_.data();
        for (std::size_t length = half_, stride = 1; length > 1; length /= 2, stride *= 2) {
            const std::size_t m = length / 2;
            for (std::size_t p = 0; p < m; ++p) {
                const Complex root = roots_[2 * p * stride];
                for (std::size_t q = 0; q < stride; ++q) {
                    const Complex x = from[q + stride * p];
                    const Complex y = from[q + stride * (p + m)];
                    to[q + stride * 2 * p] = x + y;
                    to[q + stride * (2 * p + 1)] = product(x - y, root);
                }
            }
            std::swap(from, to);
        }
        return from;
    }

    std::size_t n_;
    std::size_t half_;
    std::vector<Complex> roots_;
    std::vector<Complex> a_, b_;
};

std::vector<float> periodicHann(int n) {
    std::vector<float> window(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) {
        const float angle = 6.2831855F * static_cast<float>(i) / static_cast<float>(n);
        window[static_cast<std::size_t>(i)] = 0.5F - 0.5F * std::cos(angle);
    }
    return window;
}

// The part of a frame that lies inside a signal: frame positions [begin, end) are signal positions
// [begin + start, end + start).
struct Overlap {
    long long start, begin, end;
};

Overlap overlapOf(int frame, int hop, int nFFT, long long length) {
    const long long start = static_cast<long long>(frame) * hop - nFFT / 2;
    const long long begin = std::clamp<long long>(-start, 0, nFFT);
    return {start, begin, std::clamp<long long>(length - start, begin, nFFT)};
}

}  // namespace

struct STFT::Plan {
    explicit Plan(int nFFT) : fft(static_cast<std::size_t>(nFFT)), frame(static_cast<std::size_t>(nFFT)) {}
    RealFFT fft;
    std::vector<float> frame;
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
    const auto size = static_cast<std::size_t>(checkedMultiply(count, bins()));
    Spectrum spectrum{std::vector<float>(size), std::vector<float>(size)};
    forward(signal, count, spectrum.re, spectrum.im);
    return spectrum;
}

void STFT::forward(std::span<const float> signal, int frames, std::span<float> re, std::span<float> im) {
    const auto rowSize = static_cast<std::size_t>(bins());
    const auto size = static_cast<std::size_t>(checkedMultiply(frames, bins()));
    require(frames >= 0 && re.size() >= size && im.size() >= size, "STFT: spectrum too small");
    std::vector<float>& frame = plan_->frame;
    for (int t = 0; t < frames; ++t) {
        const Overlap part = overlapOf(t, hop_, nFFT_, static_cast<long long>(signal.size()));
        std::fill(frame.begin(), frame.end(), 0.0F);
        for (long long i = part.begin; i < part.end; ++i)
            frame[static_cast<std::size_t>(i)] =
                signal[static_cast<std::size_t>(part.start + i)] * window_[static_cast<std::size_t>(i)];
        const std::size_t row = static_cast<std::size_t>(t) * rowSize;
        plan_->fft.forward(frame.data(), re.data() + row, im.data() + row);
    }
}

std::vector<float> STFT::inverse(std::span<const float> re, std::span<const float> im, int frames,
                                 long long length) {
    const auto rowSize = static_cast<std::size_t>(bins());
    const auto size = static_cast<std::size_t>(checkedMultiply(frames, bins()));
    require(frames >= 0 && re.size() >= size && im.size() >= size, "STFT: spectrum too small");
    require(length >= 0, "STFT: negative length");
    std::vector<float> samples(static_cast<std::size_t>(length));
    std::vector<float> weights(samples.size());
    std::vector<float>& frame = plan_->frame;
    const float scale = 1.0F / static_cast<float>(nFFT_);
    for (int t = 0; t < frames; ++t) {
        const Overlap part = overlapOf(t, hop_, nFFT_, length);
        if (part.begin == part.end) continue;
        const std::size_t row = static_cast<std::size_t>(t) * rowSize;
        plan_->fft.inverse(re.data() + row, im.data() + row, frame.data());
        for (long long i = part.begin; i < part.end; ++i) {
            const float w = window_[static_cast<std::size_t>(i)];
            const auto n = static_cast<std::size_t>(part.start + i);
            samples[n] += frame[static_cast<std::size_t>(i)] * scale * w;
            weights[n] += w * w;
        }
    }
    // One fifth of the steady-state sum of the squared window, which is 0.375 * nFFT / hop. Keeps the edges,
    // where few frames overlap, from being blown up.
    const float floor = static_cast<float>(nFFT_) * 0.075F / static_cast<float>(hop_);
    for (std::size_t n = 0; n < samples.size(); ++n)
        samples[n] /= std::max(weights[n], floor);
    return samples;
}

}  // namespace quillmere
