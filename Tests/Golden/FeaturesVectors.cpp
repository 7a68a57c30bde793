#include "Golden/GoldenAreas.h"
#include "QuillmereCore/Model/Features.h"

namespace quillmere::golden {
namespace {

template <float (*convert)(float)>
Outputs converted(const Case& vector) {
    std::vector<float> values = floats(vector.input.at("values"));
    for (float& value : values) {
        value = convert(value);
    }
    Outputs out;
    out.array("values", values);
    return out;
}

Outputs features(const Case& vector) {
    const FeatureExtractor extractor(modelConfig(vector.input.at("config")));
    STFT stft = extractor.makeSTFT();
    Outputs out;
    out.array("image", extractor.features(floats(vector.input.at("signal")), stft));
    return out;
}

Outputs linearMagnitude(const Case& vector) {
    const FeatureExtractor extractor(modelConfig(vector.input.at("config")));
    Outputs out;
    out.array("magnitude",
              extractor.linearMagnitude(floats(vector.input.at("imageDB")),
                                        vector.input.at("frames").get<int>(), extractor.makeSTFT()));
    return out;
}

}  // namespace

Area featuresArea() {
    return {"features",
            {{"Features",
              {{"toNetwork", converted<Level::toNetwork>},
               {"toDB", converted<Level::toDB>},
               {"features", features},
               {"linearMagnitude", linearMagnitude}}}}};
}

}  // namespace quillmere::golden
