#include <algorithm>

#include "Golden/GoldenAreas.h"
#include "QuillmereCore/Audio/AudioIO.h"
#include "QuillmereCore/Model/ClipPreparation.h"

namespace quillmere::golden {
namespace {

int sampleRate(const Case& vector) {
    return vector.input.at("sampleRate").get<int>();
}

DecodedClip clip(const Case& vector) {
    DecodedClip result;
    result.samples = floats(vector.input.at("signal"));
    return result;
}

Outputs mixToMono(const Case& vector) {
    const std::vector<std::vector<float>> channels = floatArrays(vector.input.at("channels"));
    const std::size_t frames =
        channels.empty() ? vector.input.at("frames").get<std::size_t>() : channels.front().size();
    const bool even = std::all_of(channels.begin(), channels.end(), [&](const std::vector<float>& channel) {
        return channel.size() == frames;
    });
    if (!even) throw std::invalid_argument("channels of different lengths");
    Outputs out;
    out.array("samples", AudioIO::mixToMono(channels, frames));
    return out;
}

Outputs decode(const Case& vector) {
    const auto samples =
        ClipPreparation::trimAndNormalise(floats(vector.input.at("signal")), sampleRate(vector));
    Outputs out;
    out.value("silent", !samples.has_value());
    if (samples) out.array("samples", *samples);
    return out;
}

Outputs effectiveSeconds(const Case& vector) {
    Outputs out;
    out.value("seconds", clip(vector).effectiveSeconds(sampleRate(vector)));
    return out;
}

Outputs flatness(const Case& vector) {
    Outputs out;
    out.value("flatness", clip(vector).flatness(sampleRate(vector)));
    return out;
}

Outputs cutAndFade(const Case& vector) {
    const std::vector<float> signal = floats(vector.input.at("signal"));
    Outputs out;
    out.array("samples", ClipPreparation::cutAndFade(
                             signal, vector.input.at("clipSamples").get<std::int64_t>(), sampleRate(vector)));
    return out;
}

}  // namespace

Area clipsArea() {
    return {"clips",
            {{"Clips",
              {{"mixToMono", mixToMono},
               {"decode", decode},
               {"effectiveSeconds", effectiveSeconds},
               {"flatness", flatness},
               {"cutAndFade", cutAndFade}}}}};
}

}  // namespace quillmere::golden
