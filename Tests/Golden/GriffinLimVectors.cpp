#include <cmath>

#include "Golden/GoldenAreas.h"
#include "QuillmereCore/DSP/GriffinLim.h"

namespace quillmere::golden {
namespace {

// || |STFT(samples)| - magnitude || / || magnitude ||.
double spectralConvergence(std::span<const float> samples, std::span<const float> magnitude, int frames,
                           STFT& stft) {
    const STFT::Spectrum spectrum = stft.forward(samples, frames);
    double difference = 0, norm = 0;
    for (std::size_t i = 0; i < magnitude.size(); ++i) {
        const double re = spectrum.re[i], im = spectrum.im[i], target = magnitude[i];
        const double distance = std::sqrt(re * re + im * im) - target;
        difference += distance * distance;
        norm += target * target;
    }
    return std::sqrt(difference) / std::sqrt(norm);
}

Outputs reconstruct(const Case& vector) {
    const Json& input = vector.input;
    STFT stft(input.at("nFFT").get<int>(), input.at("hop").get<int>());
    SeededRNG rng = seededGenerator(input);
    const int frames = input.at("frames").get<int>();
    const std::vector<float> magnitude = floats(input.at("magnitude"));
    const std::vector<float> samples = GriffinLim::reconstruct(
        magnitude, frames, input.at("length").get<long long>(), input.at("iterations").get<long long>(), stft,
        rng, input.at("momentum").get<float>());
    Outputs out;
    out.array("samples", samples);
    out.value("stateAfter", stateText(rng));
    out.value("spectralConvergence", spectralConvergence(samples, magnitude, frames, stft));
    return out;
}

}  // namespace

Area griffinLimArea() {
    return {"griffinlim", {{"GriffinLim", {{"reconstruct", reconstruct}}}}};
}

}  // namespace quillmere::golden
