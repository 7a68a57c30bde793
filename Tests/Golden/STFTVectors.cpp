#include <optional>

#include "Golden/GoldenAreas.h"
#include "QuillmereCore/DSP/STFT.h"

namespace quillmere::golden {
namespace {

STFT transform(const Json& input) {
    return {input.at("nFFT").get<int>(), input.at("hop").get<int>()};
}

Outputs window(const Case& vector) {
    const STFT stft = transform(vector.input);
    Outputs out;
    out.array("window", stft.window());
    out.value("magnitudeNormalization", stft.magnitudeNormalization());
    return out;
}

Outputs frameCount(const Case& vector) {
    // The frame length has no influence.
    const STFT stft(vector.input.value("nFFT", 1024), vector.input.at("hop").get<int>());
    Outputs out;
    out.value("frames", stft.frameCount(vector.input.at("samples").get<long long>()));
    return out;
}

Outputs forward(const Case& vector) {
    STFT stft = transform(vector.input);
    const std::vector<float> signal = floats(vector.input.at("signal"));
    std::optional<int> frames;
    if (vector.input.contains("frames")) frames = vector.input.at("frames").get<int>();
    const STFT::Spectrum spectrum = stft.forward(signal, frames);
    Outputs out;
    out.value("frames", spectrum.re.size() / static_cast<std::size_t>(stft.bins()));
    out.array("re", spectrum.re);
    out.array("im", spectrum.im);
    return out;
}

Outputs inverse(const Case& vector) {
    STFT stft = transform(vector.input);
    Outputs out;
    out.array("samples",
              stft.inverse(floats(vector.input.at("re")), floats(vector.input.at("im")),
                           vector.input.at("frames").get<int>(), vector.input.at("length").get<long long>()));
    return out;
}

Outputs roundTrip(const Case& vector) {
    STFT stft = transform(vector.input);
    const std::vector<float> signal = floats(vector.input.at("signal"));
    const auto length = static_cast<long long>(signal.size());
    const int frames = stft.frameCount(length);
    const STFT::Spectrum spectrum = stft.forward(signal);
    Outputs out;
    out.value("frames", frames);
    out.array("samples", stft.inverse(spectrum.re, spectrum.im, frames, length));
    return out;
}

}  // namespace

Area stftArea() {
    return {"stft",
            {{"STFT",
              {{"window", window},
               {"frameCount", frameCount},
               {"forward", forward},
               {"inverse", inverse},
               {"roundTrip", roundTrip}}}}};
}

}  // namespace quillmere::golden
