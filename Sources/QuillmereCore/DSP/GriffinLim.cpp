#include "QuillmereCore/DSP/GriffinLim.h"

#include <cmath>
#include <utility>

#include "QuillmereCore/Util/Failure.h"

namespace quillmere::GriffinLim {
namespace {

// The magnitudes with random phases; one draw per entry, in index order.
STFT::Spectrum withRandomPhase(std::span<const float> mag, SeededRNG& rng) {
    STFT::Spectrum estimate{std::vector<float>(mag.size()), std::vector<float>(mag.size())};
    for (std::size_t i = 0; i < mag.size(); ++i) {
        const float u = rng.uniform();
        const float phase = (u + u) * 3.1415927F;
        estimate.re[i] = mag[i] * std::cos(phase);
        estimate.im[i] = mag[i] * std::sin(phase);
    }
    return estimate;
}

// Extrapolates from the previous consistent spectrum to the new one and gives the result the magnitudes mag.
void accelerate(std::span<const float> mag, const STFT::Spectrum& fresh, const STFT::Spectrum& previous,
                float momentum, STFT::Spectrum& estimate) {
    for (std::size_t i = 0; i < mag.size(); ++i) {
        const float a = (fresh.re[i] - previous.re[i]) * momentum + fresh.re[i];
        const float b = (fresh.im[i] - previous.im[i]) * momentum + fresh.im[i];
        const float r = std::sqrt(a * a + b * b);
        if (r > 1e-12F) {
            const float scale = mag[i] / r;
            estimate.re[i] = a * scale;
            estimate.im[i] = b * scale;
        } else {  // vanished, or not a number
            estimate.re[i] = mag[i];
            estimate.im[i] = 0;
        }
    }
}

}  // namespace

std::vector<float> reconstruct(std::span<const float> mag, int frames, long long length, long long iterations,
                               STFT& stft, SeededRNG& rng, float momentum) {
    const auto size = static_cast<std::size_t>(checkedMultiply(frames, stft.bins()));
    require(frames >= 0 && mag.size() >= size, "GriffinLim: magnitude too small");
    mag = mag.first(size);
    STFT::Spectrum estimate = withRandomPhase(mag, rng);
    STFT::Spectrum fresh{std::vector<float>(size), std::vector<float>(size)};
    STFT::Spectrum previous{std::vector<float>(size), std::vector<float>(size)};
    for (long long pass = 0; pass < iterations; ++pass) {
        const std::vector<float> samples = stft.inverse(estimate.re, estimate.im, frames, length);
        stft.forward(samples, frames, fresh.re, fresh.im);
        // There is nothing to extrapolate from in the first pass.
        accelerate(mag, fresh, previous, pass == 0 ? 0.0F : momentum, estimate);
        std::swap(fresh, previous);
    }
    return stft.inverse(estimate.re, estimate.im, frames, length);
}

}  // namespace quillmere::GriffinLim
