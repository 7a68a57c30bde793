#include <stdexcept>

#include "Golden/GoldenAreas.h"

namespace quillmere::golden {
namespace {

std::string_view caseName(ParameterSpec::Group group) {
    switch (group) {
        case ParameterSpec::Group::latent:
            return "latent";
        case ParameterSpec::Group::spectral:
            return "spectral";
        case ParameterSpec::Group::signal:
            return "signal";
        case ParameterSpec::Group::output:
            return "output";
    }
    throw std::invalid_argument("unknown group");
}

const ParameterSpec& specOf(const Case& vector) {
    const auto id = vector.input.at("id").get<std::string>();
    const ParameterSpec* const spec = Aesthetics::spec(id);
    if (spec == nullptr) throw std::invalid_argument("unknown parameter " + id);
    return *spec;
}

// The one key of the JSON form whose value spec reads and writes.
std::string fieldOf(const ParameterSpec& spec) {
    constexpr double unusual = 12345.5;
    Aesthetics changed;
    changed.*(spec.keyPath) = unusual;
    const Json json = Json::parse(encodeJSON(changed));
    std::string field;
    for (const auto& entry : json.items()) {
        if (entry.value() == unusual) field += entry.key();
    }
    return field;
}

Json specObject(const ParameterSpec& spec) {
    return {{"field", fieldOf(spec)},
            {"id", spec.id},
            {"title", spec.title},
            {"group", caseName(spec.group)},
            {"lower", spec.lower},
            {"upper", spec.upper},
            {"step", spec.step},
            {"unit", spec.unit},
            {"logarithmic", spec.logarithmic},
            {"help", spec.help}};
}

Outputs specs(const Case& /*vector*/) {
    Json list = Json::array();
    for (const ParameterSpec& spec : Aesthetics::specs()) {
        list.push_back(specObject(spec));
    }
    Outputs out;
    out.value("specs", list);
    return out;
}

Outputs groups(const Case& /*vector*/) {
    Json cases = Json::array(), titles = Json::array();
    for (const ParameterSpec::Group group : allParameterGroups) {
        cases.push_back(caseName(group));
        titles.push_back(rawValue(group));
    }
    Outputs out;
    out.value("cases", cases);
    out.value("titles", titles);
    return out;
}

Outputs defaults(const Case& /*vector*/) {
    const auto json = nlohmann::ordered_json::parse(encodeJSON(Aesthetics{}));
    Json keys = Json::array();
    for (const auto& entry : json.items()) {
        keys.push_back(entry.key());
    }
    Outputs out;
    out.value("aesthetics", Json(json));
    out.value("jsonKeys", keys);
    return out;
}

Outputs presets(const Case& /*vector*/) {
    Json list = Json::array();
    for (const Preset& preset : Preset::all()) {
        list.push_back(Json{{"name", preset.name},
                            {"id", preset.id()},
                            {"blurb", preset.blurb},
                            {"aesthetics", Json::parse(encodeJSON(preset.aesthetics))}});
    }
    Outputs out;
    out.value("presets", list);
    return out;
}

Outputs format(const Case& vector) {
    Outputs out;
    out.value("text", specOf(vector).format(vector.input.at("value").get<double>()));
    return out;
}

Outputs set(const Case& vector) {
    const ParameterSpec& spec = specOf(vector);
    Aesthetics changed;
    changed.set(spec, vector.input.at("value").get<double>());
    Outputs out;
    out.value("stored", spec.value(changed));
    return out;
}

Outputs findSpec(const Case& vector) {
    const ParameterSpec* const spec = Aesthetics::spec(vector.input.at("id").get<std::string>());
    Outputs out;
    out.value("field", spec == nullptr ? Json() : Json(spec->field));
    return out;
}

Outputs findPreset(const Case& vector) {
    const Preset* const preset = Preset::named(vector.input.at("name").get<std::string>());
    Outputs out;
    out.value("name", preset == nullptr ? Json() : Json(preset->name));
    return out;
}

}  // namespace

Area aestheticsArea() {
    return {"aesthetics",
            {{"Aesthetics",
              {{"specs", specs},
               {"groups", groups},
               {"defaults", defaults},
               {"presets", presets},
               {"format", format},
               {"set", set},
               {"findSpec", findSpec},
               {"findPreset", findPreset}}}}};
}

}  // namespace quillmere::golden
