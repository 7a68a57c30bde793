#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <numbers>
#include <span>
#include <vector>

// Transforms by their formulas, in double: what the library's transforms are compared with.
namespace quillmere::testing {

using ComplexDouble = std::complex<double>;

// e^(-2 pi i k / n) for all k < n.
inline std::vector<ComplexDouble> circle(std::size_t n) {
    std::vector<ComplexDouble> roots(n);
    for (std::size_t k = 0; k < n; ++k)
        roots[k] = std::polar(1.0, -2 * std::numbers::pi * static_cast<double>(k) / static_cast<double>(n));
    return roots;
}

// The n / 2 + 1 bins of the plain DFT of real samples.
inline std::vector<ComplexDouble> naiveDFT(std::span<const float> samples) {
    const std::size_t n = samples.size();
    const std::vector<ComplexDouble> roots = circle(n);
    std::vector<ComplexDouble> bins(n / 2 + 1);
    for (std::size_t k = 0; k < bins.size(); ++k) {
        std::size_t turn = 0;  // k * i modulo n
        for (std::size_t i = 0; i < n; ++i) {
            bins[k] += static_cast<double>(samples[i]) * roots[turn];
            turn += k;
            if (turn >= n) turn -= n;
        }
    }
    return bins;
}

// The n real samples with the given n / 2 + 1 bins; the imaginary parts of DC and Nyquist are ignored.
inline std::vector<double> naiveInverseDFT(std::span<const float> re, std::span<const float> im,
                                           std::size_t n) {
    const std::vector<ComplexDouble> roots = circle(n);
    std::vector<double> samples(n);
    for (std::size_t i = 0; i < n; ++i) {
        double sum = re[0];
        std::size_t turn = i;  // k * i modulo n
        for (std::size_t k = 1; k < n / 2; ++k) {
            sum += 2 * (static_cast<double>(re[k]) * roots[turn].real() +
                        static_cast<double>(im[k]) * roots[turn].imag());
            turn += i;
            if (turn >= n) turn -= n;
        }
        if (n > 1) sum += (i % 2 == 0 ? 1.0 : -1.0) * static_cast<double>(re[n / 2]);
        samples[i] = sum / static_cast<double>(n);
    }
    return samples;
}

// Root mean square of the values, as the scale of rounding errors.
inline double rms(std::span<const float> values) {
    double sum = 0;
    for (const float value : values)
        sum += static_cast<double>(value) * value;
    return values.empty() ? 0 : std::sqrt(sum / static_cast<double>(values.size()));
}

}  // namespace quillmere::testing
