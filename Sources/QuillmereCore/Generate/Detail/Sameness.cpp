#include "QuillmereCore/Generate/Detail/Sameness.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace quillmere {
namespace {

// Lags that are worked on at once: sums side by side, so that each keeps its order.
constexpr std::size_t lanes = 16;
constexpr std::size_t lags = 64;

double energy(std::span<const float> samples) {
    double sum = 0;
    for (const float sample : samples)
        sum += static_cast<double>(sample) * static_cast<double>(sample);
    return sum;
}

// With silence behind it that the largest lag reads.
std::vector<float> padded(std::span<const float> samples, std::size_t size) {
    std::vector<float> result(samples.begin(), samples.end());
    result.resize(size + lags);
    return result;
}

// Largest absolute product sum of a with b that is 0 ... lags - 1 samples late.
float largestProduct(std::span<const float> a, std::span<const float> samples) {
    const std::vector<float> b = padded(samples, std::max(a.size(), samples.size()));
    float largest = 0;
    for (std::size_t lag = 0; lag < lags; lag += lanes) {
        std::array<float, lanes> sums{};
        for (std::size_t n = 0; n < a.size(); ++n) {
            for (std::size_t i = 0; i < lanes; ++i)
                sums[i] += a[n] * b[n + lag + i];
        }
        for (const float sum : sums)
            largest = std::max(largest, std::abs(sum));
    }
    return largest;
}

}  // namespace

float Detail::sameness(std::span<const float> a, std::span<const float> b) {
    constexpr float silence = 1e-9F;
    a = a.first(std::min(a.size(), samplesCompared));
    b = b.first(std::min(b.size(), samplesCompared));
    const auto both = static_cast<float>(std::sqrt(energy(a) * energy(b)));
    if (!(both > silence)) return 0;
    return std::min(1.0F, std::max(largestProduct(a, b), largestProduct(b, a)) / both);
}

}  // namespace quillmere
