#include "Golden/GoldenAreas.h"
#include "QuillmereCore/Model/ModelConfig.h"
#include "QuillmereCore/Model/VAEArchitecture.h"

namespace quillmere::golden {
namespace {

Outputs framesForSeconds(const Case& vector) {
    Outputs out;
    out.value("frames", ModelConfig::framesForSeconds(vector.input.at("seconds").get<double>(),
                                                      vector.input.at("sampleRate").get<std::int64_t>(),
                                                      vector.input.at("hop").get<std::int64_t>()));
    return out;
}

Outputs derive(const Case& vector) {
    const ModelConfig config = ModelConfig::forSeconds(
        vector.input.at("sampleRate").get<std::int64_t>(), vector.input.at("seconds").get<double>(),
        profile(vector.input.at("profile")), vector.input.at("latentDim").get<std::int64_t>());
    Outputs out;
    out.value("config", Json::parse(encodeJSON(config)));
    out.value("clipSamples", config.clipSamples());
    out.value("clipSeconds", config.clipSeconds());
    return out;
}

Outputs profiles(const Case& /*vector*/) {
    Json raw = Json::array(), labels = Json::array();
    for (const AnalysisProfile profile : allAnalysisProfiles) {
        raw.push_back(rawValue(profile));
        labels.push_back(label(profile));
    }
    Outputs out;
    out.value("raw", raw);
    out.value("labels", labels);
    return out;
}

Outputs parameters(const Case& vector) {
    Json names = Json::array(), shapes = Json::array();
    std::vector<float> initStd, constants;
    std::int64_t elements = 0;
    for (const VAEArchitecture::Param& param :
         VAEArchitecture::params(modelConfig(vector.input.at("config")))) {
        names.push_back(param.name);
        shapes.push_back(param.shape);
        initStd.push_back(param.initStd);
        constants.push_back(param.constant);
        elements += param.elementCount();
    }
    Outputs out;
    out.value("names", names);
    out.value("shapes", shapes);
    out.array("initStd", initStd);
    out.array("constants", constants);
    out.value("elements", elements);
    return out;
}

Outputs initialWeights(const Case& vector) {
    const ModelConfig config = modelConfig(vector.input.at("config"));
    const std::vector<VAEArchitecture::Param> params = VAEArchitecture::params(config);
    const std::vector<std::vector<float>> weights =
        VAEArchitecture::initialWeights(config, word(vector.input.at("seed")));
    Outputs out;
    for (std::size_t i = 0; i < params.size(); ++i) {
        out.array(params[i].name, weights.at(i));
    }
    return out;
}

}  // namespace

Area configArea() {
    return {"config",
            {{"Config",
              {{"framesForSeconds", framesForSeconds},
               {"derive", derive},
               {"profiles", profiles},
               {"parameters", parameters},
               {"initialWeights", initialWeights}}}}};
}

}  // namespace quillmere::golden
